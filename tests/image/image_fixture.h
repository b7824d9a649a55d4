#ifndef TESTS_IMAGE_IMAGE_FIXTURE_H
#define TESTS_IMAGE_IMAGE_FIXTURE_H

#include "files/unix_file_manager.h"
#include "image/dictionary.h"
#include "image/tagged_file.h"

#include <climits>
#include <cstdint>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

// Images are put together by hand here, so that neither half of the code under test vouches for the other.
inline std::string Number(std::int64_t value, int width) {
    std::string bytes;
    for (; width > 0; width--, value >>= 8)
        bytes += static_cast<char>(value);
    return bytes;
}

inline std::string Dwords(const std::vector<std::int64_t>& values) {
    std::string bytes;
    for (const std::int64_t value : values)
        bytes += Number(value, 4);
    return bytes;
}

using Section = std::pair<std::string, std::string>; // tag, bytes

inline std::string Image(const std::vector<Section>& sections) {
    std::string body;
    std::string directory;
    for (const auto& [tag, bytes] : sections) {
        directory += tag + Dwords({32 + std::ssize(body), std::ssize(bytes)});
        body += bytes;
    }
    return "Tarn" + Dwords({0x1000d, 0, 0, 0, 0, 32 + std::ssize(body), std::ssize(sections)}) + body +
           directory;
}

struct Patch {
    std::size_t at;
    std::int64_t value;
    int width = 4;

    std::string operator()(std::string bytes) const {
        return bytes.replace(at, static_cast<std::size_t>(width), Number(value, width));
    }
};

// What is said of each of these changes.
struct Refusal {
    const char* error;
    std::vector<Patch> patches;
};

class ImageTest : public testing::Test {
  protected:
    ImageTest() {
        for (const char* text : {"main", "sum", "max", "a", "b"})
            names.Entry_Add(text, -1);
    }
    ~ImageTest() override { close(descriptor); }

    std::string Get() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Open(TaggedFile& file, const std::string& bytes) const {
        std::ofstream(path, std::ios::binary) << bytes;
        return file.Open(path.c_str(), FILE_MODE_READ);
    }
    template <class Part>
    std::string Written(Part& part) {
        TaggedFile file(&files);
        EXPECT_TRUE(file.Create(path.c_str(), nullptr, 0) && part.Write(&file) && file.Section_Flush());
        return Get();
    }
    // Another section follows, which must not be taken for the rest of this one. Whatever comes of it, the
    // part leaves no section in use.
    template <class Part>
    bool Read(Part& part, const Section& section) {
        TaggedFile file(&files);
        EXPECT_TRUE(Open(file, Image({section, {"more", std::string(100, '\0')}})));
        const bool read = part.Read(&file);
        EXPECT_FALSE(file.Section_Holds(0));
        return read;
    }
    // The section is refused with each of the changes and cut anywhere, and leaves the part as it was.
    template <class Part>
    void Expect_Refused(Part& part, const Section& section, const std::vector<Refusal>& refusals) {
        const std::string before = Written(part);
        for (const auto& [error, patches] : refusals)
            for (const Patch& patch : patches) {
                EXPECT_FALSE(Read(part, {section.first, patch(section.second)})) << patch.at;
                EXPECT_EQ(part.error().view(), error) << patch.at << ": " << patch.value;
            }
        for (std::size_t length = 0; length < section.second.size(); ++length)
            EXPECT_FALSE(Read(part, {section.first, section.second.substr(0, length)})) << length;
        EXPECT_FALSE(Read(part, {"none", section.second}));
        EXPECT_EQ(part.error().view(), "Invalid section");
        EXPECT_EQ(Written(part), before);
    }

    // The file is in memory: thousands of images are written.
    const int descriptor = memfd_create("image", 0);
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    UNIXFileManager files{nullptr};
    Dictionary names;
};

#endif
