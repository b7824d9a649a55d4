#include "image/segment_manager.h"

#include "image_fixture.h"

#include <climits>

namespace {

class SegmentTest : public ImageTest {
  protected:
    std::string Listing(const std::string& code, const char* expression, int length) {
        char* const bytes = new char[code.size()];
        code.copy(bytes, code.size());
        const int size = static_cast<int>(code.size());
        Segment(1, bytes, size, size).Dump(path.c_str(), expression, length);
        return Get();
    }
    // Two segments, and an empty one between. The program begins with the last.
    const std::string section = Dwords({3, 2, 0, 3, 3, 0, 3, 2}) + "abcde";
};

TEST_F(SegmentTest, Numbers_Stand_Within_The_Size) {
    SegmentManager manager;
    Segment& segment = *manager.Start();
    EXPECT_EQ(segment.Write_Byte(0, 0xfe), 1);
    EXPECT_EQ(segment.Write_Word(1, 0x8102), 3);
    EXPECT_EQ(segment.Write_Dword(3, -2), 7);
    EXPECT_EQ(segment.Write_Double(7, 1.0), 15);
    EXPECT_EQ(segment.Write_Word(17, 7), 19); // the two bytes between are zero
    EXPECT_EQ(segment.Write_Byte(-1, 0), -1);
    EXPECT_EQ(segment.Write_Double(INT_MAX - 7, 0), -1);
    const std::string bytes("\xfe\2\x81\xfe\xff\xff\xff\0\0\0\0\0\0\xf0\x3f\0\0\7\0", 19);
    EXPECT_EQ(Written(manager), Image({{"segs", Dwords({1, 0, 0, 19}) + bytes}}));

    uint8_t byte = 0;
    uint16_t word = 0;
    int32_t dword = 0;
    double number = 0;
    EXPECT_EQ(segment.Read_Byte(18, &byte) + segment.Read_Word(17, &word), 2 * 19);
    EXPECT_EQ(segment.Read_Dword(15, &dword) + segment.Read_Double(11, &number), 2 * 19);
    for (const int outside : {0, 1, INT_MAX - 19, INT_MIN, -20}) {
        EXPECT_EQ(segment.Read_Byte(19 + outside, &byte), -1) << outside;
        EXPECT_EQ(segment.Read_Word(18 + outside, &word), -1) << outside;
        EXPECT_EQ(segment.Read_Dword(16 + outside, &dword), -1) << outside;
        EXPECT_EQ(segment.Read_Double(12 + outside, &number), -1) << outside;
    }
    EXPECT_EQ(segment.Read_Byte(0, &byte) + segment.Read_Word(1, &word), 1 + 3);
    EXPECT_EQ(segment.Read_Dword(3, &dword) + segment.Read_Double(7, &number), 7 + 15);
    EXPECT_TRUE(byte == 0xfe && word == 0x8102 && dword == -2 && number == 1.0);
}

TEST_F(SegmentTest, Growing_Keeps_The_Code) {
    Segment adopted(1, new char[3]{1, 2, 3}, 3, 3);
    uint16_t word = 0;
    for (int offset : {2, 8190, 8191, 8192, 16383, 16384, 100000}) {
        adopted.Write_Word(offset, 0xabcd);
        adopted.Grow(offset - 5);
        EXPECT_EQ(adopted.Read_Word(offset, &word), offset + 2);
        EXPECT_EQ(word, 0xabcd);
    }
    EXPECT_EQ(adopted.Read_Word(0, &word), 2);
    EXPECT_EQ(word, 0x0201);
}

TEST_F(SegmentTest, Manager_Numbers_Segments) {
    SegmentManager manager;
    manager.Segment_Add()->Write_Byte(0, 'x');
    const std::string image = Image({{"segs", Dwords({2, 0, 0, 0, 0, 1}) + "x"}});
    EXPECT_EQ(Written(manager), image);
    SegmentManager copy(manager);
    manager.Start()->Write_Byte(0, 's');
    const Segment* const added = manager.Segment_Add();
    EXPECT_EQ(manager.Segment_Get(2), added);
    EXPECT_EQ(Written(manager), Image({{"segs", Dwords({3, 0, 0, 1, 1, 1, 2, 0}) + "sx"}}));
    EXPECT_EQ(Written(copy), image);
    ASSERT_TRUE(Read(manager, {"segs", section}));
    EXPECT_EQ(Written(manager), Image({{"segs", section}}));
    EXPECT_EQ(manager.Start(), manager.Segment_Get(2));
}

// Segments stand apart: {20, 1} asks for more than the file has.
TEST_F(SegmentTest, Fields_Out_Of_Range_Are_Refused) {
    SegmentManager manager;
    manager.Start()->Write_Byte(0, 'x');
    Expect_Refused(manager, {"segs", section},
                   {{"segment_list.start out of range", {{4, 3}, {4, -1}, {4, INT_MAX}, {0, 2}, {0, 0}}},
                    {"segment_list.entries out of range", {{0, 0x10000000}, {0, INT_MAX}, {0, -1}}},
                    {"segment_header.size out of range", {{12, -1}, {28, INT_MIN}}},
                    {"Invalid offset", {{8, -1}, {16, 6}, {16, -32}}},
                    {"Invalid size", {{0, 0xfffffff}, {12, INT_MAX}}},
                    {"Unexpected end of file", {{0, 4}, {12, 6}, {8, 3}, {20, 1}}}});
}

TEST_F(SegmentTest, Listing_Keeps_Step_And_Has_Names_Of_Its_Own) {
    const std::pair<std::string, std::string> lines[] = {
        {Number(0x4001, 2) + Dwords({-5}), "pushc\tdword:-5\n"},
        {Number(0x8003, 2) + Number(0x3ff8000000000000, 8), "pushf\tdouble:1.500000\n"},
        {Number(0x5008, 2) + Dwords({1, 2}), "pushdc\tdword:1, dword:2\n"},
        {Number(63, 2), "Illegal Instruction\n\n"},
        {Number(0xc001, 2), "Illegal Instruction\n\n"}, // bits of no kind
        {Number(0x3001, 2), "Illegal Instruction\n"},
        {Number(0x6001, 2) + Dwords({7, 0, 0x3fe00000}), "Illegal Instruction\ndword:7, double:0.500000\n"},
        {Number(0x1001, 2) + Dwords({9}), "Illegal Instruction\n, dword:9\n"},
        {Number(22, 2), "add\t\n"},
        {Number(37, 2), "roundf\t\n"}, // the engine's
        {Number(16421, 2) + Dwords({1}), "jmp\tdword:1\n"},
        {Number(16647, 2) + Dwords({1}), "pop3loop\tdword:1\n"}, // older spellings
        {Number(533, 2), "dbrevealstructureagg\t\n"},
        {Number(534, 2), "Illegal Instruction\n\n"}, // later than the listing
        {Number(20755, 2) + Dwords({1, 2}), "Illegal Instruction\ndword:1, dword:2\n"},
        {Number(0x4002, 2) + "..", "pushi\t"}, // ends within the operand
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

} // namespace
