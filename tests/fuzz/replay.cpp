// Runs a fuzz target over files, and over what is left of each when it is cut: replay PATH..., files or
// folders.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int replayed = 0;

void Replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    const std::size_t step = text.size() / 16 + 1;
    for (std::size_t length = text.size(); length > 0; length -= std::min(length, step)) {
        // A copy of its own, so that a sanitizer sees a read beyond the end.
        const std::string cut(text, 0, length);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(cut.data()), cut.size());
        ++replayed;
    }
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            Replay(argv[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
            if (entry.is_regular_file())
                Replay(entry.path());
        }
    }
    std::printf("replayed %d texts\n", replayed);
    return replayed == 0;
}
