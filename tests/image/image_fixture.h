#ifndef TESTS_IMAGE_IMAGE_FIXTURE_H
#define TESTS_IMAGE_IMAGE_FIXTURE_H

#include "files/unix_file_manager.h"
#include "image/dictionary.h"
#include "image/tagged_file.h"

#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

inline std::string Word(unsigned value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}

inline std::string Dwords(std::initializer_list<int64_t> values) {
    std::string bytes;
    for (const int64_t value : values)
        bytes += Word(static_cast<unsigned>(value)) + Word(static_cast<unsigned>(value >> 16));
    return bytes;
}

// Images are put together by hand here, so that neither half of the code under test vouches for the other.
using Section = std::pair<std::string, std::string>; // tag, bytes

inline std::string Image(const std::vector<Section>& sections, const std::string& signature = "",
                         int version = 0x1000d) {
    std::string body;
    std::string directory;
    for (const auto& [tag, bytes] : sections) {
        directory += tag + Dwords({int64_t{32} + static_cast<int64_t>(body.size()),
                                   static_cast<int64_t>(bytes.size())});
        body += bytes;
    }
    std::string padded = signature;
    padded.resize(16);
    return "Tarn" + Dwords({version}) + padded +
           Dwords({static_cast<int64_t>(32 + body.size()), static_cast<int64_t>(sections.size())}) + body +
           directory;
}

inline std::string Patched(std::string bytes, size_t at, const std::string& patch) {
    return bytes.replace(at, patch.size(), patch);
}

// Five names, of which "a" is a part of "main".
inline std::string Dictionary_Section(int header_word = 0) {
    return Dwords({5, 11, header_word, 0, 4, 4, 3, 7, 3, 1, 1, 10, 1}) + "mainsummaxb";
}

class ImageTest : public testing::Test {
  protected:
    ~ImageTest() override { close(descriptor); }

    void Put(const std::string& bytes) const { std::ofstream(path, std::ios::binary) << bytes; }
    std::string Get() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Open(TaggedFile& file, const std::string& bytes) const {
        Put(bytes);
        return file.Open(path.c_str(), FILE_MODE_READ);
    }
    // Reads one part of an image that has these sections.
    template <class Part>
    bool Read(Part& part, const std::vector<Section>& sections) {
        TaggedFile file(&files);
        EXPECT_TRUE(Open(file, Image(sections)));
        return part.Read(&file);
    }
    template <class Part>
    std::string Written(Part& part) {
        TaggedFile file(&files);
        EXPECT_TRUE(file.Create(path.c_str(), nullptr, 0));
        EXPECT_TRUE(part.Write(&file));
        EXPECT_TRUE(file.Section_Flush());
        file.Close();
        return Get();
    }
    static std::string Text(Dictionary& dictionary, int index) {
        int size = -1;
        const char* text = dictionary.Entry(index, &size);
        return text ? std::string(text, static_cast<size_t>(size)) : "none " + std::to_string(size);
    }

    // The file is in memory: thousands of images are written.
    const int descriptor = memfd_create("image", 0);
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    UNIXFileManager files{nullptr};
};

// A section with one field changed, and what is said of it.
struct Refusal {
    size_t at;
    std::string patch;
    const char* error;
};

#endif
