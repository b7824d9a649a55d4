#include "image/segment_manager.h"
#include "image_fixture.h"

namespace {

class SegmentTest : public ImageTest {
  protected:
    template <class T>
    void Expect_Number(int (Segment::*write)(int, T), int (Segment::*read)(int, T*) const, T number,
                       const std::string& bytes) {
        constexpr int width = sizeof(T);
        SegmentManager manager;
        Segment& segment = *manager.Start();
        EXPECT_EQ((segment.*write)(3, number), 3 + width); // what is passed over is zero
        EXPECT_EQ(Written(manager).substr(32 + 16),
                  std::string(3, '\0') + bytes + "segs" + Dwords({32, 16 + 3 + width}));
        T found{};
        for (const int outside : {4, 3 + width, INT_MAX, INT_MIN, -1})
            EXPECT_EQ((segment.*read)(outside, &found), -1) << outside;
        for (const int outside : {-1, INT_MIN, INT_MAX - width + 1})
            EXPECT_EQ((segment.*write)(outside, number), -1) << outside;
        for (const int offset : {0, 3, 8192 - width - 1, 8192 - width, 8193 - width, 16384, 100000}) {
            EXPECT_EQ((segment.*write)(offset, number), offset + width);
            segment.Grow(offset - 5);
            found = {};
            EXPECT_EQ((segment.*read)(offset, &found), offset + width);
            EXPECT_EQ(found, number);
        }
        EXPECT_EQ((segment.*read)(8193 - width, &found), 8193);
        EXPECT_EQ(found, number); // one that crossed the room of that time
    }
    std::string Listing(const std::string& code, const char* expression, int length) {
        Segment segment(1);
        for (int offset = 0; const char byte : code)
            offset = segment.Write_Byte(offset, static_cast<std::uint8_t>(byte));
        segment.Dump(path.c_str(), expression, length);
        return Get();
    }
    // Two segments, and an empty one between. The program begins with the last.
    const std::string section = Dwords({3, 2, 0, 3, 3, 0, 3, 2}) + "abcde";
};

TEST_F(SegmentTest, Numbers_Stand_Within_The_Size) {
    Expect_Number<std::uint8_t>(&Segment::Write_Byte, &Segment::Read_Byte, 0xfe, "\xfe");
    Expect_Number<std::uint16_t>(&Segment::Write_Word, &Segment::Read_Word, 0x8102, "\x02\x81");
    Expect_Number<std::int32_t>(&Segment::Write_Dword, &Segment::Read_Dword, -2, "\xfe\xff\xff\xff");
    Expect_Number<double>(&Segment::Write_Double, &Segment::Read_Double, 1.0, Dwords({0, 0x3ff00000}));
}

TEST_F(SegmentTest, Manager_Numbers_Segments) {
    SegmentManager manager;
    manager.Segment_Add()->Write_Byte(0, 'x');
    const std::string image = Image({{"segs", Dwords({2, 0, 0, 0, 0, 1}) + "x"}});
    EXPECT_EQ(Written(manager), image);
    SegmentManager copy(manager);
    manager.Start()->Write_Byte(0, 's');
    manager.Segment_Get(1)->Write_Byte(0, 'y');
    const Segment* const added = manager.Segment_Add();
    EXPECT_EQ(manager.Segment_Get(2), added);
    EXPECT_EQ(Written(manager), Image({{"segs", Dwords({3, 0, 0, 1, 1, 1, 2, 0}) + "sy"}}));
    EXPECT_EQ(Written(copy), image);
    EXPECT_NE(copy.Segment_Get(0), nullptr);

    ASSERT_TRUE(Read(manager, {"segs", section}));
    EXPECT_EQ(Written(manager), Image({{"segs", section}}));
    EXPECT_EQ(manager.Start(), manager.Segment_Get(2));
    manager.Start()->Write_Word(9000, 0x7a7a); // what was read has room for its own size alone
    EXPECT_EQ(Written(manager).substr(32 + 32, 6), std::string("abcde\0", 6));
    ASSERT_TRUE(Read(manager, {"segs", Dwords({2, 0, 0, 3, 1, 2}) + "abc"})); // bytes of two segments
    EXPECT_EQ(Written(manager), Image({{"segs", Dwords({2, 0, 0, 3, 3, 2}) + "abcbc"}}));
}

TEST_F(SegmentTest, Fields_Out_Of_Range_Are_Refused) {
    SegmentManager manager;
    manager.Start()->Write_Byte(0, 'x');
    Expect_Refused(manager, {"segs", section},
                   {{"segment_list.start out of range", {{4, 3}, {4, -1}, {4, INT_MAX}, {0, 2}, {0, 0}}},
                    {"segment_list.entries out of range", {{0, 0x10000000}, {0, INT_MAX}, {0, -1}}},
                    {"segment_header.size out of range", {{12, -1}, {28, INT_MIN}}},
                    {"Invalid offset", {{8, -1}, {16, 6}, {16, -32}}},
                    {"Invalid size", {{0, 0xfffffff}, {12, INT_MAX}}},
                    {"Unexpected end of file", {{0, 4}, {12, 6}, {8, 3}, {20, 3}}}});
}

TEST_F(SegmentTest, Listing_Keeps_Step_And_Has_Names_Of_Its_Own) {
    const std::pair<std::string, std::string> lines[] = {
        {Number(0x4001, 2) + Dwords({-5}), "pushc\tdword:-5\n"},
        {Number(0x8003, 2) + Number(0x3ff8000000000000, 8), "pushf\tdouble:1.500000\n"},
        {Number(0x5008, 2) + Dwords({1, 2}), "pushdc\tdword:1, dword:2\n"},
        {Number(0xc001, 2), "Illegal Instruction\n\n"}, // bits of no kind
        {Number(0x3001, 2), "Illegal Instruction\n"},
        {Number(0x6001, 2) + Dwords({7, 0, 0x3fe00000}), "Illegal Instruction\ndword:7, double:0.500000\n"},
        {Number(0x1001, 2) + Dwords({9}), "Illegal Instruction\n, dword:9\n"},
        {Number(37, 2), "roundf\t\n"},                           // the engine's
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

} // namespace
