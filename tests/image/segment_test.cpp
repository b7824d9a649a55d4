#include "image/segment_manager.h"

#include "image_fixture.h"

#include <climits>

namespace {

class SegmentTest : public ImageTest {
  protected:
    std::string Listing(const Segment& segment, const char* expression = "", int length = -1) {
        segment.Dump(path.c_str(), expression, length);
        return Get();
    }
    // Two segments, and an empty one between.
    const std::string section = Dwords({3, 2, 0, 3, 3, 0, 3, 2}) + "abcde";
};

TEST_F(SegmentTest, Numbers_Stand_Within_The_Size) {
    Segment segment(1);
    EXPECT_EQ(segment.Write_Byte(0, 0xfe), 1);
    EXPECT_EQ(segment.Write_Word(1, 0x8102), 3);
    EXPECT_EQ(segment.Write_Dword(3, -2), 7);
    EXPECT_EQ(segment.Write_Double(7, 1.0), 15);
    EXPECT_EQ(segment.Write_Word(17, 7), 19); // the two bytes between are zero
    TaggedFile file(&files);
    ASSERT_TRUE(file.Create(path.c_str(), nullptr, 0));
    EXPECT_TRUE(segment.Write(&file));
    EXPECT_EQ(Get().substr(32),
              std::string("\xfe\x02\x81\xfe\xff\xff\xff\0\0\0\0\0\0\xf0\x3f\0\0\x07\0", 19));

    uint8_t byte = 0;
    uint16_t word = 0;
    int32_t dword = 0;
    double number = 0;
    EXPECT_EQ(segment.Read_Byte(0, &byte), 1);
    EXPECT_EQ(segment.Read_Word(1, &word), 3);
    EXPECT_EQ(segment.Read_Dword(3, &dword), 7);
    EXPECT_EQ(segment.Read_Double(7, &number), 15);
    EXPECT_EQ(byte, 0xfe);
    EXPECT_EQ(word, 0x8102);
    EXPECT_EQ(dword, -2);
    EXPECT_EQ(number, 1.0);
    const struct {
        int offset;
        int next[4]; // of byte, word, dword, double
    } cases[] = {
        {11, {12, 13, 15, 19}},      {12, {13, 14, 16, -1}},          {15, {16, 17, 19, -1}},
        {16, {17, 18, -1, -1}},      {17, {18, 19, -1, -1}},          {18, {19, -1, -1, -1}},
        {19, {-1, -1, -1, -1}},      {-1, {-1, -1, -1, -1}},          {INT_MIN, {-1, -1, -1, -1}},
        {INT_MAX, {-1, -1, -1, -1}}, {INT_MAX - 3, {-1, -1, -1, -1}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(segment.Read_Byte(c.offset, &byte), c.next[0]) << c.offset;
        EXPECT_EQ(segment.Read_Word(c.offset, &word), c.next[1]) << c.offset;
        EXPECT_EQ(segment.Read_Dword(c.offset, &dword), c.next[2]) << c.offset;
        EXPECT_EQ(segment.Read_Double(c.offset, &number), c.next[3]) << c.offset;
    }
    EXPECT_EQ(segment.Write_Byte(-1, 0), -1);
    EXPECT_EQ(segment.Write_Double(INT_MAX - 7, 0), -1);
}

TEST_F(SegmentTest, Grows_In_Steps) {
    Segment segment(1);
    for (int offset : {8190, 8191, 8192, 16383, 16384, 100000}) {
        EXPECT_EQ(segment.Write_Word(offset, 0xabcd), offset + 2);
        uint16_t word = 0;
        EXPECT_EQ(segment.Read_Word(offset, &word), offset + 2);
        EXPECT_EQ(word, 0xabcd);
    }
    segment.Grow(-1);
    segment.Grow(1);
    uint8_t byte = 1;
    EXPECT_EQ(segment.Read_Byte(8189, &byte), 8190);
    EXPECT_EQ(byte, 0);
    // An adopted array has no room to spare.
    Segment adopted(2, new char[3]{1, 2, 3}, 3, 3);
    EXPECT_EQ(adopted.Write_Dword(2, 9), 6);
    EXPECT_EQ(adopted.Read_Byte(1, &byte), 2);
    EXPECT_EQ(byte, 2);
}

TEST_F(SegmentTest, Manager_Numbers_Segments) {
    SegmentManager manager;
    EXPECT_EQ(manager.Segment_Get(0), nullptr);
    Segment* const first = manager.Segment_Add();
    EXPECT_EQ(manager.Segment_Get(1), first);
    first->Write_Byte(0, 'x');
    EXPECT_EQ(Written(manager), Image({{"segs", Dwords({2, 0, 0, 0, 0, 1}) + "x"}}));
    SegmentManager copy(manager);
    EXPECT_NE(copy.Segment_Get(1), first);
    EXPECT_EQ(Written(copy), Written(manager));
    manager.Start()->Write_Byte(0, 's');
    EXPECT_EQ(manager.Start(), manager.Segment_Get(0));
    for (int i = 0; i < 100; i++)
        manager.Segment_Add();
    EXPECT_EQ(manager.Entries(), 102);
    EXPECT_EQ(copy.Entries(), 2);
    for (int id : {-1, 102, INT_MAX, INT_MIN})
        EXPECT_EQ(manager.Segment_Get(id), nullptr);
}

TEST_F(SegmentTest, Section_Is_Read_And_Written_Back) {
    SegmentManager manager;
    manager.Segment_Add();
    ASSERT_TRUE(Read(manager, {{"segs", section}}));
    EXPECT_EQ(manager.Entries(), 3);
    EXPECT_EQ(manager.Start(), manager.Segment_Get(2));
    uint8_t byte = 0;
    EXPECT_EQ(manager.Start()->Read_Byte(1, &byte), 2);
    EXPECT_EQ(byte, 'e');
    EXPECT_EQ(manager.Start()->Read_Byte(2, &byte), -1);
    EXPECT_EQ(manager.Segment_Get(1)->Read_Byte(0, &byte), -1);
    EXPECT_EQ(Written(manager), Image({{"segs", section}}));
}

TEST_F(SegmentTest, Fields_Out_Of_Range_Are_Refused) {
    const char* const start = "segment_list.start out of range";
    const char* const entries = "segment_list.entries out of range";
    const char* const size = "segment_header.size out of range";
    const char* const cut = "Unexpected end of file";
    const Refusal cases[] = {
        {4, Dwords({3}), start},
        {4, Dwords({-1}), start},
        {4, Dwords({INT_MAX}), start},
        {0, Dwords({2}), start},
        {0, Dwords({0, 0}), start},
        {0, Dwords({0x10000000}), entries},
        {0, Dwords({-1}), entries},
        {0, Dwords({0xfffffff}), cut},
        {0, Dwords({4}), cut},
        {12, Dwords({-1}), size},
        {28, Dwords({INT_MIN}), size},
        {12, Dwords({6}), cut},
        {12, Dwords({INT_MAX}), cut},
        {8, Dwords({3}), cut},
        {8, Dwords({-1}), cut},
        {16, Dwords({6}), cut},
        {16, Dwords({-32}), cut},
        {20, Dwords({1}), cut}, // more than the file has, if all were to stand apart
    };
    SegmentManager manager;
    manager.Start()->Write_Byte(0, 'x');
    const std::string before = Written(manager);
    for (const Refusal& c : cases) {
        EXPECT_FALSE(Read(manager, {{"segs", Patched(section, c.at, c.patch)}, {"more", "........"}}))
            << c.at;
        EXPECT_EQ(manager.error().view(), c.error) << c.at;
    }
    for (size_t length = 0; length < section.size(); length++)
        EXPECT_FALSE(Read(manager, {{"segs", section.substr(0, length)}, {"more", section}}));
    EXPECT_FALSE(Read(manager, {}));
    EXPECT_EQ(manager.error().view(), "Invalid section");
    EXPECT_EQ(Written(manager), before);
}

TEST_F(SegmentTest, Listing_Keeps_Step) {
    Segment segment(1);
    EXPECT_EQ(Listing(segment, "l.a + 1", 3), "\n\nExpression: l.a\n");
    int at = segment.Write_Dword(segment.Write_Word(0, 0x4001), -5);
    at = segment.Write_Double(segment.Write_Word(at, 0x8003), 1.5);
    at = segment.Write_Dword(segment.Write_Dword(segment.Write_Word(at, 0x5008), 1), 2);
    at = segment.Write_Word(at, 63);
    at = segment.Write_Dword(segment.Write_Dword(segment.Write_Word(at, 0x505c), 3), 4);
    at = segment.Write_Word(at, 0xc001); // no kind of operand
    at = segment.Write_Word(at, 0x3001); // nor this, and no line's end
    at = segment.Write_Double(segment.Write_Dword(segment.Write_Word(at, 0x6001), 7), 0.5);
    at = segment.Write_Dword(segment.Write_Word(at, 0x1001), 9);
    at = segment.Write_Word(at, 22);
    at = segment.Write_Word(segment.Write_Word(at, 0x4002), 1); // the code ends within the operand
    EXPECT_EQ(Listing(segment, "x"), "\n\nExpression: x\n"
                                     "0\tpushc\tdword:-5\n"
                                     "6\tpushf\tdouble:1.500000\n"
                                     "16\tpushdc\tdword:1, dword:2\n"
                                     "26\tIllegal Instruction\n\n"
                                     "28\tIllegal Instruction\ndword:3, dword:4\n"
                                     "38\tIllegal Instruction\n\n"
                                     "40\tIllegal Instruction\n"
                                     "42\tIllegal Instruction\ndword:7, double:0.500000\n"
                                     "56\tIllegal Instruction\n, dword:9\n"
                                     "62\tadd\t\n"
                                     "64\tpushi\t");
    segment.Dump("/nowhere/at/all", "x", -1);
    segment.Dump(nullptr, nullptr, -1);
}

TEST_F(SegmentTest, Listing_Has_Names_Of_Its_Own) {
    const struct {
        int opcode;
        const char* name; // null for none
    } cases[] = {
        {0, "noop"},
        {7, "pushd"},
        {15, "popd"},
        {37, "roundf"},
        {16396, "pops"},
        {16397, "popg"},
        {16402, "popnc"},
        {16461, "poplvnc"},
        {20496, "popdc"},
        {21249, "cmpgg"},
        {21250, "cmpgi"},
        {21251, "incg"},
        {21252, "modgg"},
        {21253, "storegi"},
        {69, "op_do_file"},
        {70, "op_do_function"},
        {264, "pop3delete"},
        {267, "op_smtp_end"},
        {532, "dbrevealstructuredb"},
        {533, "dbrevealstructureagg"},
        {16647, "pop3loop"},
        {16649, "pop3stop"},
        {16650, "op_smtp"},
        {16652, "op_http"},
        {16653, "op_http_loop"},
        {16654, "op_http_stop"},
        {16655, "op_commerce"},
        {16656, "op_commerce_loop"},
        {16657, "op_commerce_stop"},
        {87, "refer"},
        {530, "dbquery"},
        {531, "dbfilter"},
        {16445, "call"},
        {65, nullptr},
        {82, nullptr},
        {85, nullptr},
        {88, nullptr},
        {89, nullptr},
        {91, nullptr},
        {278, nullptr},
        {534, nullptr},
        {538, nullptr},
        {16468, nullptr},
        {16658, nullptr},
        {16661, nullptr},
        {20755, nullptr},
        {20756, nullptr},
        {20759, nullptr},
        {1, nullptr},
        {527, nullptr},
    };
    for (const auto& c : cases) {
        Segment segment(1);
        segment.Write_Word(0, static_cast<uint16_t>(c.opcode));
        const std::string name = c.name ? std::string(c.name) + "\t" : "Illegal Instruction\n";
        const bool operand = c.opcode >> 12 != 0; // which is missing
        EXPECT_EQ(Listing(segment), "\n\nExpression: \n0\t" + name + (operand ? "" : "\n")) << c.opcode;
    }
}

} // namespace
