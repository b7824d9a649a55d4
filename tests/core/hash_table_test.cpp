#include "core/stat_hash_table.h"
#include "core/string.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

// An element whose keys compare as the table's case flag says; String's never regard case.
struct Word {
    Word(const char* key, int len) : key(key, len) {}
    std::string key;
    std::shared_ptr<int> held{};
};

std::string_view Hash_Key(const Word& word) {
    return word.key;
}

// Beside slots in the order of insertion that are searched one by one.
template <class T>
void Compare_With_Model(int case_insensitive, int bucket_bits) {
    std::mt19937 random(3);
    HashTable<T> table(0, case_insensitive, bucket_bits, 4);
    std::vector<T*> slots;
    std::vector<std::unique_ptr<T>> made;
    for (int step = 0; step < 8000; step++) {
        std::string key(random() % 5, 'a');
        for (char& c : key)
            c = "abcABC_\x00"[random() % 8];
        const auto len = static_cast<int>(key.size());
        made.push_back(std::make_unique<T>(key.data(), len));
        T* const e = made.back().get();
        const auto same_key = [&](T* other) {
            return other && table.hash(other) == table.hash(key.data(), len) && table.Compare(other, e) == 0;
        };
        const auto found = std::find_if(slots.begin(), slots.end(), same_key);
        T* const expected = found == slots.end() ? nullptr : *found;
        const unsigned choice = random() % 500;
        if (choice == 0) {
            table.Dump();
            slots.clear();
        } else if (choice < 200) {
            table.Insert(e);
            slots.push_back(e);
        } else if (choice < 400) {
            ASSERT_EQ(table.Remove(key.data(), len), expected);
            if (expected)
                *found = nullptr;
            while (!slots.empty() && !slots.back())
                slots.pop_back();
        } else {
            ASSERT_EQ(table.Find(key.data(), len), expected);
            ASSERT_EQ(table.Find(e), expected);
        }
        ASSERT_EQ(table.Entries(), static_cast<int>(slots.size()));
        const int index = static_cast<int>(random() % 64);
        ASSERT_EQ(table.Index(index), index < table.Entries() ? slots[index] : nullptr);
    }
    const HashTable<T> copy(table);
    EXPECT_EQ(copy.Current(), table.Index(0));
    for (int i = 0; i < copy.Entries(); i++)
        ASSERT_EQ(copy.Index(i), table.Index(i));
}

TEST(HashTable, Does_What_A_Searched_Array_Does) {
    Compare_With_Model<Word>(1, 12);
    Compare_With_Model<Word>(0, 12);
    Compare_With_Model<Word>(0, 0);
    Compare_With_Model<String>(1, 12);
    Compare_With_Model<String>(0,
                               2); // hashed by case but compared without: equals where they meet in a bucket
}

TEST(HashTable, Keys_Compare_By_Length_And_Then_By_Case_Where_It_Counts) {
    Word a("a", 1), upper("A", 1), longer("Aa", 2);
    EXPECT_EQ(HashTable<Word>(0, 1, 12, 0).Compare(&a, &upper), 0);
    EXPECT_GT(HashTable<Word>(0, 0, 12, 0).Compare(&a, &upper), 0);
    EXPECT_LT(HashTable<Word>(0, 0, 12, 0).Compare(&a, &longer), 0);
    String string("a");
    EXPECT_EQ(HashTable<String>(0, 0, 12, 0).Compare(&string, "A", -1), 0);
    EXPECT_EQ(HashTable<String>(0, 1, 12, 0).hash("ABCDx", 4), 0x5ae61fa5u & 0xfff);
}

TEST(HashTable, Cursor_Skips_Gaps_And_Meets_What_Comes) {
    String a(""), b("b"), c("c"), d("d");
    String* const nothing = nullptr;
    HashTable<String> table(0, 1, 12, 512);
    EXPECT_EQ(table.First(), nullptr);
    for (String* e : {&a, &b, &c})
        table.Insert(e);
    table.Remove("b", 1);
    EXPECT_EQ(table.Find(nullptr, 0), &a); // the empty key
    table.First();
    for (String* e : {&c, nothing, nothing})
        EXPECT_EQ(table.Next(), e);
    EXPECT_EQ(table.Current(), nullptr);
    table.Insert(&d);
    for (String* e : {&d, nothing})
        EXPECT_EQ(table.Next(), e);
    for (String* e : {&d, &c, &a, nothing})
        EXPECT_EQ(table.Previous(), e);
    EXPECT_EQ(table.Next(), &a);
    EXPECT_EQ(table.Last(), &d);
}

TEST(HashTable, Owner_Deletes_What_It_Still_Holds) {
    const auto held = std::make_shared<int>();
    {
        HashTable<Word> table(1, 1, 12, 512);
        for (const char* key : {"a", "b"}) {
            auto* e = new Word(key, 1);
            e->held = held;
            table.Insert(e);
        }
        const std::unique_ptr<Word> taken(table.Remove("b", -1));
        table.Dump();
        EXPECT_EQ(held.use_count(), 2);
        table.Insert(new Word(*taken));
    }
    EXPECT_EQ(held.use_count(), 1);
}

TEST(HashTable, Files_Are_Known_By_Device_And_Inode) {
    struct stat file {};
    struct stat other = file;
    HashTable<struct stat> table(0, 1, 12, 512);
    table.Insert(&file);
    EXPECT_EQ(table.Find(&other), &file);
    other.st_dev = 2;
    EXPECT_EQ(table.Find(&other), nullptr);
    std::swap(other.st_dev, other.st_ino);
    EXPECT_EQ(table.Find(&other), nullptr);
}

} // namespace
