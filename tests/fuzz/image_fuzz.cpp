// An image written from an input comes back; with bytes of it changed it is refused, or answers all questions
// and comes back as well.
#include "files/unix_file_manager.h"
#include "image/dictionary.h"
#include "image/function_table.h"
#include "image/segment_manager.h"
#include "image/tagged_file.h"
#include "input.h"

#include <climits>
#include <fstream>
#include <iterator>
#include <memory>
#include <sys/mman.h>

namespace {

// In memory.
const std::string path = "/proc/self/fd/" + std::to_string(memfd_create("image", 0));
UNIXFileManager files(nullptr);

struct Parts {
    Dictionary names;
    SegmentManager segments;
    FunctionManager functions{&names, 3};

    std::string Written() {
        TaggedFile file(&files);
        CHECK(file.Create(path.c_str(), nullptr, 0) && segments.Write(&file) && names.Write(&file));
        CHECK(functions.Write(&file) && file.Section_Flush());
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

template <class Part>
bool Take(Part& part, TaggedFile& file) {
    const bool taken = part.Read(&file);
    CHECK(taken || part.error().length() > 0);
    return taken;
}

// Null when anything is refused. What is refused leaves its part as it was, so that the others can be read.
std::unique_ptr<Parts> Read(const std::string& image) {
    std::ofstream(path, std::ios::binary) << image;
    TaggedFile file(&files);
    if (!file.Open(path.c_str(), FILE_MODE_READ)) {
        CHECK(file.error().length() > 0);
        return nullptr;
    }
    auto parts = std::make_unique<Parts>();
    const bool segments = Take(parts->segments, file), names = Take(parts->names, file);
    return Take(parts->functions, file) && names && segments ? std::move(parts) : nullptr;
}

void Fill(Input& input, Parts& parts) {
    const std::string_view letters = "abcABC";
    for (unsigned left = input.Below(8); left > 0; --left) {
        const std::string name = input.Text(3, letters) + "f", list = input.Text(9, "ab , var");
        Function* const added = parts.functions.Function_Add(input.Between(-1, 9), 2, name.c_str(), -1,
                                                             list.c_str(), -1, input.Between(0, 1));
        CHECK(parts.functions.Function_At(added->index) == added);
        CHECK(parts.functions.Function_Get(name.c_str(), -1)->index <= added->index);
        parts.names.Entry_Add("end", 3); // behind parameters without a name
    }
    for (unsigned left = input.Below(4); left > 0; --left)
        for (Segment* const segment = parts.segments.Segment_Add(); input.Below(8) > 0;)
            segment->Write_Word(input.Between(0, 300), static_cast<std::uint16_t>(input.Below(1 << 16)));
}

// Any of the four bytes at any offset, so that every field gets the values at its limits.
void Damage(Input& input, std::string& image) {
    const int size = static_cast<int>(image.size());
    const int limits[] = {0,         1,         29,        32,         0x7fff,     0xffff, 0x3ffff,
                          0x7ffffff, 0xaaaaaaa, 0xfffffff, 0x1fffffff, 0x7fffc000, size,   INT_MAX - 32,
                          INT_MAX,   -1};
    const std::size_t at = input.Below(static_cast<unsigned>(image.size()));
    const unsigned value = static_cast<unsigned>(input.One_Of(limits)) + input.Below(3) - 1;
    if (input.Below(16) == 0)
        image.resize(at);
    for (std::size_t i = at, width = input.Between(1, 4); i < image.size() && i < at + width; ++i)
        image[i] = static_cast<char>(value >> 8 * (i - at));
}

void Use(Parts& parts) {
    parts.segments.Start()->Dump("/dev/null", "", 0);
    parts.segments.Start()->Write_Byte(0, 1);
    for (int i = 0; Function* const function = parts.functions.Function_At(i); ++i) {
        Variable* variable;
        for (auto* p = function->parameters.First(); p; p = function->parameters.Next()) {
            function->locals.Index(p->ident, 1);
            function->locals.Find(&variable, p->name.text(), -1, 1);
        }
        const int slot = function->AddParameter(0, "_new", 4);
        CHECK(function->locals.Seek(-1, "_NEW", 4, nullptr) == slot);
        parts.functions.Function_Get(function->name.text(), -1);
    }
    Function* const added = parts.functions.Function_Add("_later", -1, 0);
    CHECK(parts.functions.Function_Get("_Later", -1) == added);
    parts.names.Compress();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Parts parts;
    Fill(input, parts);
    std::string image = parts.Written();
    const unsigned changes = input.Below(8);
    for (unsigned i = 0; i < changes && !image.empty(); ++i)
        Damage(input, image);
    const std::unique_ptr<Parts> read = Read(image);
    CHECK(read || changes > 0);
    if (!read)
        return 0;
    const std::string written = read->Written();
    CHECK(written == image || changes > 0);
    const std::unique_ptr<Parts> again = Read(written);
    CHECK(again && again->Written() == written);
    Use(*read);
    return 0;
}
