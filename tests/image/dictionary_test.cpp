#include "image/dictionary.h"

#include "image_fixture.h"

#include <climits>

namespace {

class DictionaryTest : public ImageTest {
  protected:
    DictionaryTest() {
        for (const char* text : {"main", "sum", "max", "a", "b"})
            dictionary.Entry_Add(text, -1);
    }
    void Expect_Names(Dictionary& read) {
        const char* const names[] = {"main", "sum", "max", "a", "b"};
        for (int i = 0; i < 5; i++)
            EXPECT_EQ(Text(read, i), names[i]);
    }
    Dictionary dictionary;
};

TEST(DictionaryDataBlock, Shares_What_It_Has) {
    const struct {
        const char* text;
        int offset;
    } cases[] = {
        {"abc", 0},                             // an empty block can't have it
        {"", 0},     {"xabcx", 3}, {"abcx", 0}, // across two texts
        {"abcd", 8}, {"bcdx", -1},              // no room
        {"xa", 3},   {"cab", -1},  {"dd", 12},  // fills the block
        {"cdd", 10}, {"ee", -1},
    };
    DictionaryDataBlock block(14);
    for (const auto& c : cases)
        EXPECT_EQ(block.Add(c.text, static_cast<int>(strlen(c.text))), c.offset) << c.text;
}

TEST_F(DictionaryTest, Equal_Names_Have_Their_Own_Indices) {
    EXPECT_EQ(dictionary.Entry_Add("abc", 1), 5);
    EXPECT_EQ(dictionary.Entry_Add(std::string("\0b", 2).data(), 2), 6);
    EXPECT_EQ(dictionary.Entry_Add("", -1), 7);
    EXPECT_EQ(Text(dictionary, 5), "a");
    EXPECT_EQ(Text(dictionary, 6), std::string("\0b", 2));
    EXPECT_EQ(Text(dictionary, 7), "");
    for (int index : {-1, 8, INT_MIN, INT_MAX})
        EXPECT_EQ(Text(dictionary, index), "none 0");
}

TEST_F(DictionaryTest, Long_Texts_Get_A_Block) {
    for (int length : {8180, 8191, 8192, 8193, 100000}) {
        const std::string text(static_cast<size_t>(length), static_cast<char>('a' + length % 26));
        EXPECT_EQ(Text(dictionary, dictionary.Entry_Add(text.data(), -1)), text);
    }
    Dictionary copy(dictionary);
    Expect_Names(copy);
    EXPECT_EQ(Written(copy), Written(dictionary));
    copy.Entry_Add("new", -1);
    EXPECT_EQ(Text(dictionary, 10), "none 0");
}

TEST_F(DictionaryTest, Compress_Shares_Across_Blocks) {
    const std::string filler(8181, '-');
    dictionary.Entry_Add(filler.data(), -1); // fills the first block
    dictionary.Entry_Add("summary", -1);
    dictionary.Entry_Add("mmary", -1);
    dictionary.Entry_Add("main", -1);
    dictionary.Compress();
    Expect_Names(dictionary);
    EXPECT_EQ(Text(dictionary, 5), filler);
    EXPECT_EQ(Text(dictionary, 6), "summary");
    EXPECT_EQ(Text(dictionary, 7), "mmary");
    EXPECT_EQ(Text(dictionary, 8), "main");
    // Nine entries, and the second "main" takes no bytes any more.
    EXPECT_EQ(Written(dictionary).substr(32, 8), Dwords({9, 11 + 8181 + 7}));
    Dictionary empty;
    empty.Compress();
    EXPECT_EQ(empty.Entry_Add("x", -1), 0);
}

TEST_F(DictionaryTest, Compress_Keeps_Texts_That_Only_A_File_Could_Overlap) {
    Dictionary read;
    ASSERT_TRUE(Read(read, {{"dict", Dwords({3, 3, 0, 0, 2, 1, 2, 0, 3}) + "xyz"}}));
    read.Compress();
    EXPECT_EQ(Text(read, 0) + "," + Text(read, 1) + "," + Text(read, 2), "xy,yz,xyz");
}

TEST_F(DictionaryTest, Has_The_Bytes_Of_The_Format) {
    EXPECT_EQ(Written(dictionary), Image({{"dict", Dictionary_Section()}}));
    const std::vector<Section> sections = {{"dict", Dictionary_Section(0x01020304)}};
    Dictionary read;
    read.Entry_Add("gone", -1);
    ASSERT_TRUE(Read(read, sections));
    Expect_Names(read);
    EXPECT_EQ(Text(read, 5), "none 0");
    EXPECT_EQ(Written(read), Image(sections));
    EXPECT_EQ(read.Entry_Add("inS", -1), 5);
    EXPECT_EQ(read.Entry_Add("insu", -1), 6); // found in what was read
    EXPECT_EQ(Written(read).substr(32, 8), Dwords({7, 14}));
    const std::vector<Section> nothing = {{"dict", Dwords({0, 0, 0})}};
    ASSERT_TRUE(Read(read, nothing));
    EXPECT_EQ(Written(read), Image(nothing));
}

TEST_F(DictionaryTest, Fields_Out_Of_Range_Are_Refused) {
    const char* const entries = "dictionary_header.entries out of range";
    const char* const data_size = "( dictionary_header.data_size / TF_DATA_BLOCK_SIZE ) + 1 out of range";
    const char* const offset = "dictionary_entry.offset out of range";
    const char* const sum = "dictionary_entry.offset + dictionary_entry.size out of range";
    const char* const cut = "Unexpected end of file";
    const Refusal cases[] = {
        {0, Dwords({0x8000000}), entries},
        {0, Dwords({0xfffffff}), entries},
        {0, Dwords({-1}), entries},
        {0, Dwords({0x7ffffff}), cut},
        {0, Dwords({6}), sum}, // one entry more leaves three bytes of data
        {4, Dwords({0x3ffff * 8192LL}), data_size},
        {4, Dwords({-1}), data_size},
        {4, Dwords({0x3ffff * 8192LL - 1}), cut},
        {4, Dwords({12}), cut},
        {4, Dwords({10}), offset},
        {4, Dwords({0}), offset},
        {12, Dwords({-1}), offset},
        {12, Dwords({11, 0}), offset},
        {12, Dwords({INT_MAX}), offset},
        {12, Dwords({8}), sum},
        {16, Dwords({12}), sum},
        {16, Dwords({INT_MAX}), sum},
        {20, Dwords({4, -1}), sum},
    };
    for (const Refusal& c : cases) {
        EXPECT_FALSE(Read(dictionary, {{"dict", Patched(Dictionary_Section(), c.at, c.patch)}})) << c.at;
        EXPECT_EQ(dictionary.error().view(), c.error) << c.at;
        Expect_Names(dictionary);
    }
    // A stored empty text behind the last byte.
    EXPECT_FALSE(Read(dictionary, {{"dict", Dwords({2, 1, 0, 0, 1, 1, 0}) + "x"}}));
    EXPECT_EQ(dictionary.error().view(), offset);
    EXPECT_FALSE(Read(dictionary, {{"tcid", ""}}));
    EXPECT_EQ(dictionary.error().view(), "Invalid section");
    for (size_t length = 0; length < Dictionary_Section().size(); length++)
        EXPECT_FALSE(
            Read(dictionary, {{"dict", Dictionary_Section().substr(0, length)}, {"more", "........"}}));
    Expect_Names(dictionary);
}

} // namespace
