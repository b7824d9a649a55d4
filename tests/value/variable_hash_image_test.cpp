#include "core/string_hash.h"
#include "files/unix_file_manager.h"
#include "image/dictionary.h"
#include "image/tagged_file.h"
#include "value/cloned_variable_hash.h"
#include "value/reference_variable_hash.h"
#include "value/system_variable_hash.h"
#include "value_fixture.h"

#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>

// Tables are written to and read from a section of a file of their own.
class VariableHashImageTest : public ValueTest {
  protected:
    static constexpr int tag = 0x72617673;

    VariableHashImageTest()
        : path(testing::TempDir() + "variable_hash_image_test." + std::to_string(getpid())) {
        for (const char* name : {"first", "Second", "third", "fourth", "fifth"})
            table.Insert(name, -1);
    }
    ~VariableHashImageTest() override { std::remove(path.c_str()); }

    std::string Written(VariableHash& written) {
        TaggedFile file(&files);
        EXPECT_TRUE(file.Create(path.c_str(), nullptr, 0));
        EXPECT_TRUE(written.Write(&file, tag));
        file.Section_Flush();
        file.Close();
        EXPECT_TRUE(file.Open(path.c_str(), 0));
        std::string bytes(10000, '\0');
        bytes.resize(static_cast<size_t>(file.Section_Read(tag, 0, bytes.data(), 10000)));
        return bytes;
    }
    // Another section follows, which must not be taken for this one's rest.
    bool Read(VariableHash& into, std::string bytes) {
        TaggedFile file(&files);
        EXPECT_TRUE(file.Create(path.c_str(), nullptr, 0));
        std::string other(1000, '\0');
        file.Section_Start(tag);
        file.Section_Write(bytes.data(), static_cast<int>(bytes.size()));
        file.Section_End();
        file.Section_Start(tag + 1);
        file.Section_Write(other.data(), static_cast<int>(other.size()));
        file.Section_End();
        file.Section_Flush();
        file.Close();
        EXPECT_TRUE(file.Open(path.c_str(), 0));
        return into.Read(&file, tag);
    }
    static void Expect_Names(VariableHash& read) {
        int slot = 0;
        for (const char* name : {"FIRST", "second", "third", "fourth", "fifth"})
            EXPECT_EQ(read.Seek(-1, name, -1, nullptr), slot++) << name;
        EXPECT_EQ(read.Seek(-1, "sixth", -1, nullptr), -1);
    }
    std::string path;
    UNIXFileManager files{nullptr};
    Dictionary dictionary;
    VariableHash table{&dictionary, 2, 2, 0};
};

TEST_F(VariableHashImageTest, Table_Comes_Back_Without_Variables) {
    table.SetVariable("first", -1, "1", 1);
    VariableHash read(&dictionary, 12, 512, 0);
    read.SetVariable("first", -1, "gone", -1);
    ASSERT_TRUE(Read(read, Written(table)));
    Expect_Names(read);
    EXPECT_EQ(read.Size(), 5);
    EXPECT_EQ(read.Index(0, 0), nullptr);
    Variable* found = nullptr;
    EXPECT_TRUE(read.Find(&found, "SECOND", -1, 1));
    EXPECT_EQ(found->name().view(), "Second");
    EXPECT_TRUE(found->IsNULL());
    EXPECT_EQ(Written(read), Written(table));
    EXPECT_EQ(read.Insert("sixth", -1), 5);
    EXPECT_EQ(read.Seek(-1, "Sixth", -1, nullptr), 5);
}

TEST_F(VariableHashImageTest, Bytes_Are_Those_Of_The_Format) {
    Dictionary names;
    names.Entry_Add("unused", -1);
    VariableHash small(&names, 3, 0, 0);
    small.Insert("x", 1);
    const char bucket = static_cast<char>(hashi("x", 1, 0) & 7);
    const std::string bytes{1, 0, 3, 1, 0, 0, 0, bucket, 0, 0, 0, 0, 0, 1, 0, 0, 0, -1, -1, -1, -1};
    EXPECT_EQ(Written(small), bytes);
}

TEST_F(VariableHashImageTest, Fields_Out_Of_Range_Are_Refused) {
    const std::string bytes = Written(table);
    ASSERT_GT(bytes[0], 1); // buckets in use
    const struct {
        size_t at;
        std::string patch;
        const char* error;
    } cases[] = {
        {2, "\x21", "variable_hash_header.bucket_bits out of range"},
        {2, "\x1d", "read_bucket_size out of range"},
        {3, std::string("\0\0\0\x08", 4), "variable_hash_header.variable_count out of range"},
        {3, "\xff\xff\xff\xff", "variable_hash_header.variable_count out of range"},
        {0, "\xff\xff", "variable_hash_header.bucket_entries out of range"},
        {0, "\xff\xff\x21", "variable_hash_header.bucket_bits out of range"}, // the first that is looked at
        {7, "\x04", "variable_hash_bucket.index out of range"},
        {13, std::string("\x00\x80", 2), "variable_hash_bucket.index out of range"},
    };
    for (const auto& c : cases) {
        std::string changed = bytes;
        changed.replace(c.at, c.patch.size(), c.patch);
        EXPECT_FALSE(Read(table, changed)) << c.error;
        EXPECT_EQ(table.error().view(), c.error);
        Expect_Names(table);
    }
}

TEST_F(VariableHashImageTest, Cut_Table_Is_Refused) {
    const std::string bytes = Written(table);
    for (size_t length = 0; length < bytes.size(); length++)
        EXPECT_FALSE(Read(table, bytes.substr(0, length))) << length;
    std::string counts = bytes;
    counts.replace(3, 4, "\xff\xff\xff\x07");
    EXPECT_FALSE(Read(table, counts));
    Expect_Names(table);
    EXPECT_TRUE(Read(table, bytes + "more"));
}

// Heads, links and ids that point anywhere: whatever is read, searches end and stay inside.
TEST_F(VariableHashImageTest, Damaged_Chains_End) {
    const std::string bytes = Written(table);
    const size_t first_bucket = 7;
    for (size_t at = first_bucket; at < bytes.size(); at++)
        for (char value : {0, 1, 2, 4, 5, 0x7f, 0x80, 0xff}) {
            std::string changed = bytes;
            changed[at] = value;
            VariableHash read(&dictionary, 4, 0, 0);
            if (!Read(read, changed))
                continue;
            for (const char* name : {"first", "second", "third", "fourth", "fifth", "sixth"})
                Look(read, name, 1);
            for (int i = 0; i < 4; i++)
                read.Insert(("new" + std::to_string(i)).c_str(), -1);
            EXPECT_EQ(Look(read, "NEW3"), "-");
            for (int slot = 0; slot < read.Entries(); slot++)
                EXPECT_NE(read.Index(slot, 1), nullptr);
        }
}

TEST_F(VariableHashImageTest, Bucket_Bits_Of_32_Are_One_Bucket) {
    VariableHash single(&dictionary, 0, 0, 0);
    for (const char* name : {"first", "second", "third", "fourth", "fifth"})
        single.Insert(name, -1);
    std::string bytes = Written(single);
    bytes[2] = 32;
    VariableHash read(&dictionary, 4, 0, 0);
    ASSERT_TRUE(Read(read, bytes));
    Expect_Names(read);
    EXPECT_EQ(Written(read), bytes);
}

TEST_F(VariableHashImageTest, View_Knows_Names_By_Its_Own_Numbers) {
    Dictionary target_names;
    SystemVariableHash target(&target_names, 4, 0);
    target.SetVariable("other", -1, "0", 1);
    target.SetVariable("SECOND", -1, "2", 1);
    ReferenceVariableHash view(&dictionary, &target, 4, 0);
    ASSERT_TRUE(Read(view, Written(table)));
    EXPECT_EQ(Look(view, "first"), "-"); // a slot here, none there
    EXPECT_EQ(view.Index(0, 0), nullptr);
    EXPECT_EQ(view.Index(0, 1)->name().view(), "first");
    EXPECT_EQ(Look(target, "first"), "");
    EXPECT_EQ(Look(view, "other"), "0"); // a slot there, none here
    view.SetVariable("third", -1, "3", 1);
    EXPECT_EQ(Text(*view.Index(2, 0)), "3");
    view.SetVariable_Reference(3, target.Index(0, 0));
    EXPECT_EQ(Look(target, "fourth"), "0");
    EXPECT_EQ(view.Index(5, 1), nullptr);
    view.Insert("sixth", -1);
    EXPECT_EQ(view.Entries(), 6);
    EXPECT_EQ(view.Size(), 5);
    Variable* found = nullptr;
    EXPECT_FALSE(view.LookupVariable_Fancy(&found, "first[", -1, 1));
    EXPECT_EQ(view.error().view(), "Array index must be positive integer");
}

TEST_F(VariableHashImageTest, Clone_Of_A_View_Has_Its_Own_Target) {
    Dictionary target_names;
    VariableHash plain(&target_names, 4, 0, 0);
    SystemVariableHash system(&target_names, 4, 0);
    for (VariableHash* target : {&plain, static_cast<VariableHash*>(&system)}) {
        target->SetVariable("first", -1, "1", 1);
        ReferenceVariableHash view(&dictionary, target, 4, 0);
        ASSERT_TRUE(Read(view, Written(table)));
        const int names = target_names.Entry_Add("", 0);
        ClonedVariableHash clone(nullptr, &dictionary, view, true);
        EXPECT_EQ(Text(*clone.Index(0, 0)), "1");
        clone.SetVariable("first", -1, "changed", -1);
        EXPECT_EQ(Text(*view.Index(0, 0)), "1");
        clone.SetVariable("added", -1, "x", 1);
        EXPECT_EQ(target_names.Entry_Add("", 0), names + 1); // the clone's names are its own, too
        clone.Push();
        EXPECT_EQ(clone.Pop(), target == &system);
    }
}
