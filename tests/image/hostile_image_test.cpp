// A whole image as this code writes it, damaged in every way.

#include "image/function_table.h"
#include "image/segment_manager.h"
#include "image_fixture.h"

#include <malloc.h>

namespace {

struct Parts {
    Dictionary names;
    SegmentManager segments;
    FunctionManager functions{&names, 3};

    bool Write(TaggedFile* file) {
        return names.Write(file) && segments.Write(file) && functions.Write(file);
    }
    // What was read answers all questions.
    void Use() {
        segments.Start()->Dump("/dev/null", "", 0);
        segments.Start()->Write_Byte(0, 1);
        for (int i = 0; Function* const function = functions.Function_At(i); ++i) {
            for (auto* p = function->parameters.First(); p; p = function->parameters.Next())
                function->locals.Index(p->ident, 1);
            function->AddParameter(0, function->name.text(), -1);
            functions.Function_Get(function->name.text(), -1);
        }
        functions.Function_Add("later", -1, 0);
        names.Compress();
    }
};

using HostileImageTest = ImageTest;

// Reads a part. A part that refuses the file says why.
template <class Part>
bool Take(Part& part, TaggedFile& file) {
    if (part.Read(&file))
        return true;
    const auto says = [&](const char* text) { return part.error().contains(text); };
    EXPECT_TRUE(says(" out of range") || says("Invalid ") || says("Unexpected end of file"));
    return false;
}

// At every offset, so at every field as well.
TEST_F(HostileImageTest, Any_Field_May_Have_Any_Value) {
    Parts parts;
    parts.functions.Function_Add(10, 20, "total", -1, "list, sum var", -1, 0);
    parts.functions.Function_Add("print", -1, 0);
    parts.segments.Start()->Write_Dword(parts.segments.Start()->Write_Word(0, 0x4001), 3);
    parts.segments.Segment_Add()->Write_Byte(0, 0x3b);
    const std::string image = Written(parts);
    std::vector<Patch> values = {{0, INT_MIN}};
    for (const std::int64_t limit :
         {0, 0x10000, 0x3ffff, 0x7ffffff, 0xaaaaaaa, 0xfffffff, 0x1fffffff, 0x3fffe * 8192,
          0x3ffff * 8192 - 1, static_cast<int>(image.size()), INT_MAX - 32, INT_MAX - 1})
        values.insert(values.end(), {{0, limit - 1}, {0, limit}, {0, limit + 1}});
    for (const std::int64_t value : {0, 1, 7, 8, 28, 29, 31, 32, 33, 0x7fff, 0x8000, 0xffff})
        values.push_back({0, value, value < 255 ? 1 : 2});
    for (std::size_t at = 0; at + 4 <= image.size(); ++at)
        for (const Patch& patch : values) {
            TaggedFile file(&files);
            if (!Open(file, Patch{at, patch.value, patch.width}(image)))
                continue;
            Parts read;
            Take(read.segments, file);
            Take(read.names, file);
            Take(read.functions, file);
            read.Use();
        }
}

std::string Twenty_Thousand(const std::string& record) {
    std::string bytes;
    for (int i = 0; i < 20000; ++i)
        bytes += record;
    return bytes;
}

// What the parts occupy once they were read. The sections promise far more than they have, and many things
// share one name or one piece of code.
TEST_F(HostileImageTest, Small_Files_Take_Little_Memory) {
    const std::string wide_locals =
        Number(28 << 16 | 1, 3) + Dwords({1}) + Number(0x7fff, 2) + Dwords({0, 0, -1});
    const std::string header = Number(28 << 16, 3) + Dwords({20000}) + Twenty_Thousand(Dwords({-1}));
    const std::string functions = header + Twenty_Thousand(std::string(27, '\0'));
    const std::string parameters =
        Number(0, 3) + Dwords({1, -1, 0, 20000, 0, 0, 0}) + Twenty_Thousand(Dwords({0, 0, 0})) + Number(0, 7);
    const auto segments = [](int size) {
        return Dwords({20000, 0}) + Twenty_Thousand(Dwords({0, size})) + std::string(size, 'x');
    };
    const struct {
        int name_length;
        std::string tag, section;
        bool whole;
    } cases[] = {
        {1, "func", header + Twenty_Thousand(Dwords({0, 0, 0, 0, 0}) + wide_locals), true},
        {100, "func", functions, true},
        {1000, "func", functions, false},
        {50, "func", parameters, true},
        {1000, "func", parameters, false},
        {1, "segs", segments(40), true},
        {1, "segs", segments(200), false},
    };
    const auto in_use = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    for (const auto& c : cases) {
        const std::string name = Dwords({1, c.name_length, 0, 0, c.name_length});
        const std::string bytes =
            Image({{"dict", name + std::string(c.name_length, 'n')}, {c.tag, c.section}});
        TaggedFile file(&files);
        Parts parts;
        ASSERT_TRUE(Open(file, bytes));
        const std::size_t before = in_use();
        EXPECT_TRUE(Take(parts.names, file));
        EXPECT_EQ(c.tag == "func" ? Take(parts.functions, file) : Take(parts.segments, file), c.whole);
        EXPECT_LE(in_use(), before + 16 * bytes.size() + (1 << 20)) << c.tag << c.name_length;
    }
}

} // namespace
