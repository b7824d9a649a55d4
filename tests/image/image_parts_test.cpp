// The parts of an image: the dictionary, the segments and the functions, and the file that holds them.

#include "image/dictionary.h"
#include "image/function_table.h"
#include "image/segment_manager.h"
#include "image_fixture.h"

#include <malloc.h>
#include <sstream>
#include <tuple>

namespace {

class PartsTest : public ImageTest {
  protected:
    // All texts, each with a space behind it.
    static std::string Texts(Dictionary& names) {
        std::string texts;
        int size = 0;
        for (int i = 0; const char* text = names.Entry(i, &size); ++i)
            texts += std::string(text, size) + " ";
        return texts;
    }
    std::string Listing(const std::string& code, const char* expression, int length) {
        Segment segment(1);
        for (int offset = 0; const char byte : code)
            offset = segment.Write_Byte(offset, static_cast<std::uint8_t>(byte));
        segment.Dump(path.c_str(), expression, length);
        return Get();
    }
    // "index name(flags: parameter slot/flags ...)" for a function, "" for none.
    static std::string Told(Function* function) {
        std::ostringstream text;
        if (function)
            text << function->index << ' ' << function->name.text() << '(' << function->flags << ':';
        for (auto* p = function ? function->parameters.First() : nullptr; p; p = function->parameters.Next())
            text << ' ' << p->name.text() << ' ' << p->ident << '/' << p->flags;
        return text.str() + (function ? ")" : "");
    }

    FunctionManager table{&names, 0};
    SegmentManager segments;
    // The five names, of which "a" is a part of "main".
    static std::string Names_Section(int header_word) {
        return Dwords({5, 11, header_word, 0, 4, 4, 3, 7, 3, 1, 1, 10, 1}) + "mainsummaxb";
    }
    // Two segments, and an empty one between. The program begins with the last.
    const std::string segments_section = Dwords({3, 2, 0, 3, 3, 0, 3, 2}) + "abcde";
    // One bucket: max, sum, main. The function sum has the parameters a and b; main is known by its name.
    static constexpr int head = 9, links = 13, first = 25, second = first + 27;
    const std::string no_locals = Number(8 << 16, 7);
    const std::string locals = Number(1, 3) + Dwords({2}) + Number(0, 2) + Dwords({0, 3, 1, 4, -1});
    const std::string section = Number(1, 3) + Dwords({3}) + Number(0, 2) + Dwords({2, -1, 0, 1}) +
                                Dwords({0, 0, 1, -1, -1}) + no_locals +
                                Dwords({1, 2, 4, 100, 200, 3, 0, 0, 4, 1, 1}) + locals +
                                Dwords({2, 0, 0, 300, 400}) + no_locals;
};

TEST_F(PartsTest, Names_Keep_Their_Indices_Through_Blocks_And_Copies) {
    EXPECT_EQ(names.Entry_Add("abc", 1), 5);
    EXPECT_EQ(names.Entry_Add("b\0m", 3), 6);
    EXPECT_EQ(names.Entry_Add("", -1), 7);
    std::string texts("main sum max a b a b\0m  ", 24);
    for (const int length : {8180, 8191, 8192, 8193, 100000}) {
        const std::string text(length, static_cast<char>('a' + length % 26));
        names.Entry_Add(text.data(), -1);
        texts += text + " ";
    }
    Dictionary copy(names);
    EXPECT_EQ(Written(copy), Written(names));
    names.Entry_Add("new", -1);
    names.Compress(); // frees what a copy must not share
    EXPECT_EQ(Texts(copy), texts);
    EXPECT_EQ(Texts(names), texts + "new ");
    int size = -1;
    EXPECT_EQ(names.Entry(-1, &size), nullptr);
    EXPECT_EQ(size, 0);
}

TEST_F(PartsTest, Compress_Shares_Across_Blocks) {
    const std::string filler(8181, '-'); // for the first block
    for (const char* text : {filler.data(), "summary", "mmary", "main"})
        names.Entry_Add(text, -1);
    names.Compress();
    EXPECT_EQ(Texts(names), "main sum max a b " + filler + " summary mmary main ");
    EXPECT_EQ(Written(names).substr(32, 8), Dwords({9, 11 + 8181 + 7})); // one "main"
    Dictionary empty;
    empty.Compress();
    EXPECT_EQ(empty.Entry_Add("x", -1) + empty.Entry_Add("x", -1), 1);
    EXPECT_EQ(Written(empty).substr(32, 8), Dwords({2, 1}));
    ASSERT_TRUE(Read(empty, {"dict", Dwords({3, 3, 0, 0, 2, 1, 2, 0, 3}) + "xyz"})); // overlapping texts
    empty.Compress();
    EXPECT_EQ(Texts(empty), "xy yz xyz ");
}

TEST_F(PartsTest, Has_The_Bytes_Of_The_Format) {
    EXPECT_EQ(Written(names), Image({{"dict", Names_Section(0)}}));
    Dictionary read;
    read.Entry_Add("gone", -1);
    ASSERT_TRUE(Read(read, {"dict", Names_Section(0x01020304)}));
    EXPECT_EQ(Texts(read), "main sum max a b ");
    Dictionary copy(read);
    EXPECT_EQ(Written(copy), Image({{"dict", Names_Section(0x01020304)}}));
    read.Entry_Add("insu", -1); // found in what was read
    read.Entry_Add("inS", -1);
    EXPECT_EQ(Written(read).substr(32, 8), Dwords({7, 14}));
}

// Where the data can't be read it isn't the entries that are at fault.
TEST_F(PartsTest, Failed_Read_Tells_What_The_File_Says) {
    const std::string section = Dwords({1, 100, 0, 0, 5}) + std::string(100, 'x');
    const std::int64_t at = INT_MAX - 30; // too near the end of all files for a hundred bytes
    TaggedFile file(&files);
    ASSERT_TRUE(Open(file, Patch{28, 1}(Image({})) + "dict" + Dwords({at, std::ssize(section)})));
    ASSERT_EQ(pwrite(descriptor, section.data(), section.size(), at), std::ssize(section));
    EXPECT_FALSE(names.Read(&file));
    EXPECT_EQ(names.error().view(), "Invalid size");
}

TEST_F(PartsTest, Numbers_Stand_Within_The_Size) {
    Segment& segment = *segments.Start();
    EXPECT_EQ(segment.Write_Double(3, 1.0), 11); // what is passed over is zero
    EXPECT_EQ(segment.Write_Byte(10, 0x3f), 11); // its last byte, again
    EXPECT_EQ(Written(segments).substr(32 + 16),
              std::string(3, '\0') + Dwords({0, 0x3ff00000}) + "segs" + Dwords({32, 16 + 11}));
    double found = 0;
    for (const int outside : {4, 11, INT_MAX, INT_MIN, -1})
        EXPECT_EQ(segment.Read_Double(outside, &found), -1) << outside;
    for (const int outside : {-1, INT_MIN, INT_MAX - 7})
        EXPECT_EQ(segment.Write_Double(outside, 1.0), -1) << outside;
    for (const int offset : {0, 3, 8183, 8184, 8185, 16384, 100000}) {
        EXPECT_EQ(segment.Write_Double(offset, offset), offset + 8);
        segment.Grow(offset - 5);
        EXPECT_EQ(segment.Read_Double(offset, &found), offset + 8);
        EXPECT_EQ(found, offset);
    }
    EXPECT_EQ(segment.Read_Double(8185, &found), 8193);
    EXPECT_EQ(found, 8185); // one that crossed the room of that time

    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::int32_t dword = 0;
    EXPECT_EQ(segment.Write_Dword(1, -2) + segment.Write_Word(2, 0x8102) + segment.Write_Byte(0, 7),
              5 + 4 + 1);
    EXPECT_EQ(segment.Read_Dword(0, &dword) + segment.Read_Word(3, &word) + segment.Read_Byte(1, &byte),
              4 + 5 + 2);
    EXPECT_TRUE(dword == static_cast<int>(0x8102fe07) && word == 0xff81 && byte == 0xfe);
}

TEST_F(PartsTest, Manager_Numbers_Segments) {
    segments.Segment_Add()->Write_Byte(0, 'x');
    const std::string image = Image({{"segs", Dwords({2, 0, 0, 0, 0, 1}) + "x"}});
    EXPECT_EQ(Written(segments), image);
    SegmentManager copy(segments);
    segments.Start()->Write_Byte(0, 's');
    segments.Segment_Get(1)->Write_Byte(0, 'y');
    const Segment* const added = segments.Segment_Add();
    EXPECT_EQ(segments.Segment_Get(2), added);
    EXPECT_EQ(Written(segments), Image({{"segs", Dwords({3, 0, 0, 1, 1, 1, 2, 0}) + "sy"}}));
    EXPECT_EQ(Written(copy), image);
    EXPECT_NE(copy.Segment_Get(0), nullptr);

    ASSERT_TRUE(Read(segments, {"segs", segments_section}));
    EXPECT_EQ(Written(segments), Image({{"segs", segments_section}}));
    EXPECT_EQ(segments.Start(), segments.Segment_Get(2));
    segments.Start()->Write_Word(9000, 0x7a7a); // what was read has room for its own size alone
    EXPECT_EQ(Written(segments).substr(32 + 32, 6), std::string("abcde\0", 6));
    ASSERT_TRUE(Read(segments, {"segs", Dwords({2, 0, 0, 3, 1, 2}) + "abc"})); // bytes of two segments
    EXPECT_EQ(Written(segments), Image({{"segs", Dwords({2, 0, 0, 3, 3, 2}) + "abcbc"}}));
}

TEST_F(PartsTest, Listing_Keeps_Step_And_Has_Names_Of_Its_Own) {
    const std::pair<std::string, std::string> lines[] = {
        {Number(0x4001, 2) + Dwords({-5}), "pushc\tdword:-5\n"},
        {Number(0x8003, 2) + Number(0x3ff8000000000000, 8), "pushf\tdouble:1.500000\n"},
        {Number(0x5008, 2) + Dwords({1, 2}), "pushdc\tdword:1, dword:2\n"},
        {Number(0xc001, 2), "Illegal Instruction\n\n"}, // bits of no kind
        {Number(0x3001, 2), "Illegal Instruction\n"},
        {Number(0x6001, 2) + Dwords({7, 0, 0x3fe00000}), "Illegal Instruction\ndword:7, double:0.500000\n"},
        {Number(0x1001, 2) + Dwords({9}), "Illegal Instruction\n, dword:9\n"},
        {Number(37, 2), "roundf\t\n"}, // the engine's
        {Number(264, 2), "pop3delete\t\n"},
        {Number(533, 2), "dbrevealstructureagg\t\n"},
        {Number(16647, 2) + Dwords({1}), "pop3loop\tdword:1\n"}, // older spelling
        {Number(534, 2), "Illegal Instruction\n\n"},             // later than the listing
        {Number(0x4002, 2) + "..", "pushi\t"},                   // ends within the operand
    };
    std::string code;
    std::string text;
    for (const auto& [bytes, line] : lines) {
        text += std::to_string(code.size()) + "\t" + line;
        code += bytes;
    }
    EXPECT_EQ(Listing(code, "x", -1), "\n\nExpression: x\n" + text);
    EXPECT_EQ(Listing("", "l.a + 1", 3), "\n\nExpression: l.a\n");
    Segment(1).Dump("/nowhere/at/all", "x", -1);
}

TEST_F(PartsTest, Chains_Are_Sorted_And_Ignore_Case) {
    for (const char* name : {"bb", "c", "BA", "aa", "_a", "ccc", "bB"})
        table.Function_Add(name, -1, 4);
    // The head and the links: c, _a, aa, BA, bb, bB, ccc.
    EXPECT_EQ(Written(table).substr(32 + head, 4 * 8), Dwords({1, 6, 4, 0, 2, 3, -1, 5}));
    EXPECT_EQ(Told(table.Function_Get("BB", -1)), "0 bb(5:)");
    EXPECT_EQ(Told(table.Function_Get("ba..", 2)), "2 BA(5:)");
    for (const char* name : {"", "ab", "bc", "dddd"})
        EXPECT_EQ(table.Function_Get(name, -1), nullptr) << name;
    Function* const named = new Function(&names, 0);
    named->name = "Max";
    named->name_index = 2;
    EXPECT_EQ(Told(table.Function_Add(named)), "7 Max(0:)");
    EXPECT_EQ(table.Function_Get("maX", -1), named);
}

TEST_F(PartsTest, Parameters_Are_Split_As_Written) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "0 f(0:)"},
        {" x ,\ty var, z\n", "1 f(0: x 0/0 y 1/1 z 2/0)"},
        {"x \t VAR ,", "2 f(0: x 0/1)"},
        {"x variable,y va,z a var", "3 f(0: x 0/0 y 1/0 z 2/0)"},
        {"x,,x", "4 f(0: x 0/0  1/0 x 2/0)"},
        {"\fvar\v", "5 f(0: var 0/0)"},
        {"\vx\f\vvar\f", "6 f(0: x 0/1)"},
    };
    for (const auto& [text, told] : cases)
        EXPECT_EQ(Told(table.Function_Add(1, 2, "f", 1, text, -1, 0)), told);
    const int index = names.Entry_Add("last", -1);
    Function* const function = table.Function_Add(1, 2, "f", -1, "x", -1, 0);
    EXPECT_EQ(function->AddParameter(1, "y...", 1), 1);
    EXPECT_EQ(function->locals.Seek(-1, "Y", 1, nullptr), 1);
    EXPECT_EQ(function->name_index, index + 1); // one entry for each name, in the order of a program
    EXPECT_EQ(function->parameters.First()->name_index, index + 2);
}

TEST_F(PartsTest, Section_Is_Read_And_Written_Back) {
    table.Function_Add("gone", -1, 0);
    ASSERT_TRUE(Read(table, {"func", section}));
    Dictionary copied_names(names);
    FunctionManager copy(nullptr, &copied_names, table);
    for (FunctionManager* functions : {&table, &copy}) {
        for (const char* told : {"0 main(1:)", "1 sum(4: a 0/0 b 1/1)", "2 max(0:)"})
            EXPECT_EQ(Told(functions->Function_Get(told + 2, static_cast<int>(strcspn(told, "(") - 2))),
                      told);
        EXPECT_EQ(functions->Function_Get("gone", -1), nullptr);
        EXPECT_EQ(functions->Function_At(1)->locals.Seek(-1, "B", 1, nullptr), 1);
        EXPECT_EQ(Written(*functions), Image({{"func", section}}));
    }
    EXPECT_EQ(copy.Function_Get("sum", -1)->locals.dictionary(), &copied_names);
    copy.Function_At(1)->AddParameter(0, "c", 1);
    copy.Function_Add("mi", -1, 0);
    EXPECT_EQ(Told(copy.Function_Get("sum", -1)), "1 sum(4: a 0/0 b 1/1 c 2/0)");
    EXPECT_EQ(Written(table), Image({{"func", section}}));

    const std::string wrapped = Patch{2, 32, 1}(section); // to one bucket
    ASSERT_TRUE(Read(table, {"func", wrapped}));
    EXPECT_EQ(Told(table.Function_Get("max", -1)), "2 max(0:)");
    EXPECT_EQ(Written(table), Image({{"func", wrapped}}));
}

TEST_F(PartsTest, Parts_With_Fields_Out_Of_Range_Are_Refused) {
    constexpr std::int64_t blocks = 0x3ffff * 8192LL;
    Expect_Refused(
        names, {"dict", Names_Section(0)},
        {{"dictionary_header.entries out of range", {{0, 0x8000000}, {0, 0x10000000}, {0, -1}}},
         {"( dictionary_header.data_size / TF_DATA_BLOCK_SIZE ) + 1 out of range", {{4, blocks}, {4, -1}}},
         {"Unexpected end of file", {{0, 0x7ffffff}, {4, blocks - 1}, {4, 12}}},
         // Behind the last byte not even an empty text may stand.
         {"dictionary_entry.offset out of range", {{4, 10}, {12, -1}, {12, 11}, {44, 11, 8}}},
         // One entry more leaves three bytes of data; sizes count unsigned.
         {"dictionary_entry.offset + dictionary_entry.size out of range",
          {{0, 6}, {12, 8}, {16, 12}, {16, INT_MAX}, {24, -1}}}});
    segments.Start()->Write_Byte(0, 'x');
    Expect_Refused(segments, {"segs", segments_section},
                   {{"segment_list.start out of range", {{4, 3}, {4, -1}, {4, INT_MAX}, {0, 2}, {0, 0}}},
                    {"segment_list.entries out of range", {{0, 0x10000000}, {0, INT_MAX}, {0, -1}}},
                    {"segment_header.size out of range", {{12, -1}, {28, INT_MIN}}},
                    {"Invalid offset", {{8, -1}, {16, 6}, {16, -32}}},
                    {"Invalid size", {{0, 0xfffffff}, {12, INT_MAX}}},
                    {"Unexpected end of file", {{0, 4}, {12, 6}, {8, 3}, {20, 3}}}});
    ASSERT_TRUE(Read(table, {"func", section}));
    Expect_Refused(
        table, {"func", section},
        {{"function_list_header.bucket_bits out of range", {{2, 33, 1}, {2, -1, 1}, {0, 0x218000, 3}}},
         {"read_bucket_size out of range", {{2, 29, 1}, {2, 31, 1}, {second + 46, 29, 1}}},
         {"function_list_header.function_count out of range", {{3, 0x10000000}, {3, INT_MAX}, {3, -1}}},
         {"function_list_header.bucket_entries out of range", {{0, -1, 2}, {0, 0x8000, 2}}},
         {"function_hash_bucket.index out of range", {{7, 1, 2}, {7, -1, 2}, {7, 0x7fff, 2}}},
         {"Invalid function header name index", {{first, 5}, {first, -1}, {second, INT_MAX}}},
         {"function_header.parameter_count out of range", {{second + 4, 0xaaaaaab}, {second + 4, -1}}},
         {"Invalid function parameter name index", {{second + 20, 5}, {second + 32, -1}}},
         {"variable_hash_header.bucket_bits out of range", {{second + 46, 33, 1}, {second + 44, -1}}},
         {"variable_hash_header.variable_count out of range", {{second + 47, 0x8000000}, {second + 47, -1}}},
         {"variable_hash_header.bucket_entries out of range", {{second + 44, -1, 2}}},
         {"variable_hash_bucket.index out of range", {{second + 51, 1, 2}, {second + 51, -1, 2}}},
         {"Invalid size", {{second + 4, 0xaaaaaaa}}},
         {"Unexpected end of file", {{0, 0x7fff, 2}, {3, 0xfffffff}, {second + 47, 0x7ffffff}}}});
}

TEST_F(PartsTest, Damaged_Chains_End) {
    for (const Patch& patch : {Patch{links, 2}, {links, 0}, {links, 3}, {head, 3}, {head, -2}}) {
        FunctionManager read(&names, 8);
        ASSERT_TRUE(Read(read, {"func", patch(section)}));
        EXPECT_EQ(Told(read.Function_Get("sum", -1)), patch.at == head ? "" : "1 sum(4: a 0/0 b 1/1)");
        EXPECT_EQ(read.Function_Get("zzzz", -1), nullptr);
        Function* const added = read.Function_Add("zzzz", -1, 0);
        EXPECT_EQ(read.Function_Get("ZZZZ", -1), added);
    }
}

// What the parts occupy once they were read. The sections promise far more than they have, and many things
// share one name or one piece of code.
TEST_F(PartsTest, Small_Files_Take_Little_Memory) {
    const auto many = [](const std::string& record) {
        std::string bytes;
        for (int i = 0; i < 20000; ++i)
            bytes += record;
        return bytes;
    };
    const std::string wide_locals =
        Number(28 << 16 | 1, 3) + Dwords({1}) + Number(0x7fff, 2) + Dwords({0, 0, -1});
    const std::string header = Number(28 << 16, 3) + Dwords({20000}) + many(Dwords({-1}));
    const std::string functions = header + many(std::string(27, '\0'));
    const std::string parameters =
        Number(0, 3) + Dwords({1, -1, 0, 20000, 0, 0, 0}) + many(Dwords({0, 0, 0})) + Number(0, 7);
    const auto segments = [&](int size) {
        return Dwords({20000, 0}) + many(Dwords({0, size})) + std::string(size, 'x');
    };
    const std::tuple<int, std::string, std::string, bool> cases[] = {
        {1, "func", header + many(Dwords({0, 0, 0, 0, 0}) + wide_locals), true},
        {100, "func", functions, true},
        {1000, "func", functions, false},
        {50, "func", parameters, true},
        {1000, "func", parameters, false},
        {1, "segs", segments(40), true},
        {1, "segs", segments(200), false},
    };
    const auto in_use = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    for (const auto& [length, tag, section, whole] : cases) {
        const std::string name = Dwords({1, length, 0, 0, length}) + std::string(length, 'n');
        const std::string bytes = Image({{"dict", name}, {tag, section}});
        TaggedFile file(&files);
        Dictionary read_names;
        FunctionManager functions(&read_names, 3);
        SegmentManager code;
        ASSERT_TRUE(Open(file, bytes));
        const std::size_t before = in_use();
        EXPECT_TRUE(read_names.Read(&file));
        EXPECT_EQ(tag == "func" ? functions.Read(&file) : code.Read(&file), whole);
        EXPECT_LE(in_use(), before + 16 * bytes.size() + (1 << 20)) << tag << length;
    }
}

} // namespace
