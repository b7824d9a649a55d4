// Runs a fuzz target where libFuzzer doesn't: replay COUNT|PATH..., over so many inputs of random bytes, the
// same in every run, or over files and folders, and over what is left of each file when it is cut.
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int replayed = 0;

// The text is a copy of its own, so that a sanitizer sees a read beyond the end.
void Replay(const std::string& text) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    ++replayed;
}

void Replay_File(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    const std::size_t step = text.size() / 16 + 1;
    for (std::size_t length = text.size(); length > 0; length -= std::min(length, step))
        Replay(text.substr(0, length));
}

// Of up to 2^12 bytes, the more the rarer.
void Replay_Random(unsigned seed) {
    std::mt19937 random(seed);
    std::string text(random() % (16u << random() % 9), '\0');
    for (char& byte : text)
        byte = static_cast<char>(random());
    Replay(text);
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::isdigit(static_cast<unsigned char>(*argv[i])))
            for (unsigned seed = 0; seed < std::strtoul(argv[i], nullptr, 10); ++seed)
                Replay_Random(seed);
        else if (!std::filesystem::is_directory(argv[i]))
            Replay_File(argv[i]);
        else
            for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    Replay_File(entry.path());
    }
    std::printf("replayed %d inputs\n", replayed);
    return replayed == 0;
}
