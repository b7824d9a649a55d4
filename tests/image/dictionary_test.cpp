#include "image/dictionary.h"
#include "image_fixture.h"

namespace {

class DictionaryTest : public ImageTest {
  protected:
    // All texts, each with a space behind it.
    static std::string Texts(Dictionary& names) {
        std::string texts;
        int size = 0;
        for (int i = 0; const char* text = names.Entry(i, &size); ++i)
            texts += std::string(text, size) + " ";
        return texts;
    }
    // The five names, of which "a" is a part of "main".
    static std::string Bytes(int header_word) {
        return Dwords({5, 11, header_word, 0, 4, 4, 3, 7, 3, 1, 1, 10, 1}) + "mainsummaxb";
    }
};

TEST(DictionaryDataBlock, Shares_What_It_Has) {
    const std::pair<std::string, int> cases[] = {
        {"abc", 0},  {"", 0},    {"xabcx", 3}, {"abcx", 0}, // across two texts
        {"abcd", 8}, {"xa", 3},  {"bcdx", -1},              // no room
        {"dd", 12},                                         // fills the block
        {"cdd", 10}, {"ee", -1},
    };
    DictionaryDataBlock block(14);
    for (const auto& [text, offset] : cases)
        EXPECT_EQ(block.Add(text.data(), static_cast<int>(text.size())), offset) << text;
}

TEST_F(DictionaryTest, Names_Keep_Their_Indices_Through_Blocks_And_Copies) {
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

TEST_F(DictionaryTest, Compress_Shares_Across_Blocks) {
    const std::string filler(8181, '-'); // for the first block
    for (const char* text : {filler.data(), "summary", "mmary", "main"})
        names.Entry_Add(text, -1);
    names.Compress();
    EXPECT_EQ(Texts(names), "main sum max a b " + filler + " summary mmary main ");
    EXPECT_EQ(Written(names).substr(32, 8), Dwords({9, 11 + 8181 + 7})); // one "main"
    Dictionary empty;
    empty.Compress();
    EXPECT_EQ(empty.Entry_Add("x", -1), 0);
    ASSERT_TRUE(Read(empty, {"dict", Dwords({3, 3, 0, 0, 2, 1, 2, 0, 3}) + "xyz"})); // overlapping texts
    empty.Compress();
    EXPECT_EQ(Texts(empty), "xy yz xyz ");
}

TEST_F(DictionaryTest, Has_The_Bytes_Of_The_Format) {
    EXPECT_EQ(Written(names), Image({{"dict", Bytes(0)}}));
    Dictionary read;
    read.Entry_Add("gone", -1);
    ASSERT_TRUE(Read(read, {"dict", Bytes(0x01020304)}));
    EXPECT_EQ(Texts(read), "main sum max a b ");
    Dictionary copy(read);
    EXPECT_EQ(Written(copy), Image({{"dict", Bytes(0x01020304)}}));
    read.Entry_Add("insu", -1); // found in what was read
    read.Entry_Add("inS", -1);
    EXPECT_EQ(Written(read).substr(32, 8), Dwords({7, 14}));
}

TEST_F(DictionaryTest, Fields_Out_Of_Range_Are_Refused) {
    constexpr std::int64_t blocks = 0x3ffff * 8192LL;
    Expect_Refused(
        names, {"dict", Bytes(0)},
        {{"dictionary_header.entries out of range", {{0, 0x8000000}, {0, 0x10000000}, {0, -1}}},
         {"( dictionary_header.data_size / TF_DATA_BLOCK_SIZE ) + 1 out of range", {{4, blocks}, {4, -1}}},
         {"Unexpected end of file", {{0, 0x7ffffff}, {4, blocks - 1}, {4, 12}}},
         // Behind the last byte not even an empty text may stand.
         {"dictionary_entry.offset out of range", {{4, 10}, {12, -1}, {12, 11}, {44, 11, 8}}},
         // One entry more leaves three bytes of data; sizes count unsigned.
         {"dictionary_entry.offset + dictionary_entry.size out of range",
          {{0, 6}, {12, 8}, {16, 12}, {16, INT_MAX}, {24, -1}}}});
}

// Where the data can't be read it isn't the entries that are at fault.
TEST_F(DictionaryTest, Failed_Read_Tells_What_The_File_Says) {
    const std::string section = Dwords({1, 100, 0, 0, 5}) + std::string(100, 'x');
    const std::int64_t at = INT_MAX - 30; // too near the end of all files for a hundred bytes
    TaggedFile file(&files);
    ASSERT_TRUE(Open(file, Patch{28, 1}(Image({})) + "dict" + Dwords({at, std::ssize(section)})));
    ASSERT_EQ(pwrite(descriptor, section.data(), section.size(), at), std::ssize(section));
    EXPECT_FALSE(names.Read(&file));
    EXPECT_EQ(names.error().view(), "Invalid size");
}

} // namespace
