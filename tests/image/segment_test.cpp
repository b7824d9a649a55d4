#include "image/segment_manager.h"

#include "image_fixture.h"

#include <climits>
#include <sstream>

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

TEST_F(SegmentTest, Listing_Keeps_Step) {
    const std::pair<std::string, std::string> lines[] = {
        {Number(0x4001, 2) + Dwords({-5}), "pushc\tdword:-5\n"},
        {Number(0x8003, 2) + Number(0x3ff8000000000000, 8), "pushf\tdouble:1.500000\n"},
        {Number(0x5008, 2) + Dwords({1, 2}), "pushdc\tdword:1, dword:2\n"},
        {Number(63, 2), "Illegal Instruction\n\n"},
        {Number(0x505c, 2) + Dwords({3, 4}), "Illegal Instruction\ndword:3, dword:4\n"},
        {Number(0xc001, 2), "Illegal Instruction\n\n"}, // bits of no kind
        {Number(0x3001, 2), "Illegal Instruction\n"},
        {Number(0x6001, 2) + Dwords({7, 0, 0x3fe00000}), "Illegal Instruction\ndword:7, double:0.500000\n"},
        {Number(0x1001, 2) + Dwords({9}), "Illegal Instruction\n, dword:9\n"},
        {Number(22, 2), "add\t\n"},
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

TEST_F(SegmentTest, Listing_Has_Names_Of_Its_Own) {
    std::istringstream cases(
        "0 noop 7 pushd 15 popd 37 roundf 16396 pops 16397 popg 16402 popnc 16461 poplvnc 20496 popdc "
        "21249 cmpgg 21250 cmpgi 21251 incg 21252 modgg 21253 storegi 69 op_do_file 70 op_do_function "
        "264 pop3delete 267 op_smtp_end 532 dbrevealstructuredb 533 dbrevealstructureagg 16647 pop3loop "
        "16649 pop3stop 16650 op_smtp 16652 op_http 16653 op_http_loop 16654 op_http_stop 16655 op_commerce "
        "16656 op_commerce_loop 16657 op_commerce_stop 87 refer 531 dbfilter 16445 call 63 - 65 - 82 - 85 - "
        "88 - 89 - 91 - 278 - 534 - 538 - 16468 - 16658 - 16661 - 20572 - 20755 - 20756 - 20759 - 1 - 527 -");
    int opcode = 0;
    std::string name;
    while (cases >> opcode >> name) {
        const std::string text = name == "-" ? "Illegal Instruction\n" : name + "\t";
        const char* const end = opcode >> 12 ? "" : "\n"; // an operand is missing
        EXPECT_EQ(Listing(Number(opcode, 2), "", -1), "\n\nExpression: \n0\t" + text + end);
    }
}

} // namespace
