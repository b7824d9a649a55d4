#ifndef TESTS_IMAGE_IMAGE_FIXTURE_H
#define TESTS_IMAGE_IMAGE_FIXTURE_H

#include "files/unix_file_manager.h"
#include "image/dictionary.h"
#include "image/tagged_file.h"

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
inline std::string Number(int64_t value, int width) {
    std::string bytes;
    for (; width > 0; width--, value >>= 8)
        bytes += static_cast<char>(value);
    return bytes;
}

inline std::string Dwords(const std::vector<int64_t>& values) {
    std::string bytes;
    for (const int64_t value : values)
        bytes += Number(value, 4);
    return bytes;
}

using Section = std::pair<std::string, std::string>; // tag, bytes

inline std::string Image(const std::vector<Section>& sections, std::string signature = "",
                         int version = 0x1000d) {
    std::string body;
    std::string directory;
    for (const auto& [tag, bytes] : sections) {
        directory += tag + Number(32 + static_cast<int64_t>(body.size()), 4) +
                     Number(static_cast<int64_t>(bytes.size()), 4);
        body += bytes;
    }
    signature.resize(16);
    return "Tarn" + Number(version, 4) + signature + Number(32 + static_cast<int64_t>(body.size()), 4) +
           Number(static_cast<int64_t>(sections.size()), 4) + body + directory;
}

struct Patch {
    size_t at;
    int64_t value;
    int width = 4;

    std::string operator()(std::string bytes) const {
        return bytes.replace(at, static_cast<size_t>(width), Number(value, width));
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

    void Put(const std::string& bytes) const { std::ofstream(path, std::ios::binary) << bytes; }
    std::string Get() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Open(TaggedFile& file, const std::string& bytes) const {
        Put(bytes);
        return file.Open(path.c_str(), FILE_MODE_READ);
    }
    template <class Part>
    std::string Written(Part& part) {
        TaggedFile file(&files);
        EXPECT_TRUE(file.Create(path.c_str(), nullptr, 0));
        EXPECT_TRUE(part.Write(&file));
        EXPECT_TRUE(file.Section_Flush());
        return Get();
    }
    // Another section follows, which must not be taken for the rest of this one.
    template <class Part>
    bool Read(Part& part, const Section& section) {
        TaggedFile file(&files);
        EXPECT_TRUE(Open(file, Image({section, {"more", std::string(100, '\0')}})));
        return part.Read(&file);
    }
    // The section is refused with each of the changes and cut anywhere, and leaves the part as it was.
    template <class Part>
    void Expect_Refused(Part& part, const Section& section, const std::vector<Refusal>& refusals) {
        const std::string before = Written(part);
        for (const Refusal& refusal : refusals)
            for (const Patch& patch : refusal.patches) {
                EXPECT_FALSE(Read(part, {section.first, patch(section.second)})) << patch.at;
                EXPECT_EQ(part.error().view(), refusal.error) << patch.at << ": " << patch.value;
            }
        for (size_t length = 0; length < section.second.size(); length++)
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
