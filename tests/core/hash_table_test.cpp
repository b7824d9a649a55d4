#include "core/stat_hash_table.h"
#include "core/string.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <tuple>
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

template <class T>
struct Watched : HashTable<T> {
    using HashTable<T>::HashTable;
    mutable int compared = 0;
    int Compare(T* a, T* b) const override { return compared++, HashTable<T>::Compare(a, b); }
    int Compare(T* e, const char* key, int len) const override { return HashTable<T>::Compare(e, key, len); }
    int Used() const { return this->buckets_used; }
    int Capacity() const { return this->capacity; }
};

// Beside slots in the order of insertion that are searched one by one.
template <class T>
void Compare_With_Model(int case_insensitive, int bucket_bits) {
    std::mt19937 random(3);
    Watched<T> table(0, case_insensitive, bucket_bits, 4);
    std::vector<T*> slots;
    std::vector<std::unique_ptr<T>> made;
    int used = 0; // up by each new key, down by each removal
    for (int step = 0; step < 8000; ++step) {
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
            used = 0;
        } else if (choice < 200) {
            table.Insert(e);
            slots.push_back(e);
            used += !expected;
        } else if (choice < 400) {
            ASSERT_EQ(table.Remove(key.data(), len), expected);
            if (expected)
                used--, *found = nullptr;
            while (!slots.empty() && !slots.back())
                slots.pop_back();
        } else {
            ASSERT_EQ(table.Find(key.data(), len), expected);
            ASSERT_EQ(table.Find(e), expected);
        }
        ASSERT_EQ(table.Used(), used);
        ASSERT_EQ(table.Entries(), static_cast<int>(slots.size()));
        const int index = static_cast<int>(random() % 64);
        ASSERT_EQ(table.Index(index), index < table.Entries() ? slots[index] : nullptr);
    }
    const Watched<T> copy(table);
    EXPECT_EQ(copy.Current(), table.Index(0));
    EXPECT_EQ(copy.Used(), used);
    for (int i = 0; i < copy.Entries(); ++i) {
        ASSERT_EQ(copy.Index(i), table.Index(i));
        ASSERT_EQ(copy.Index(i) && !copy.Find(copy.Index(i)), false);
    }
}

TEST(HashTable, Does_What_A_Searched_Array_Does) {
    Compare_With_Model<Word>(1, 12);
    Compare_With_Model<Word>(0, 12);
    Compare_With_Model<Word>(0, 0);
    Compare_With_Model<String>(1, 12);
    // Hashed by case but compared without: equals where they meet in a bucket.
    Compare_With_Model<String>(0, 2);
}

TEST(HashTable, Keys_Compare_By_Length_And_Then_By_Case_Where_It_Counts) {
    Word a("a", 1), upper("A", 1), longer("Aa", 2);
    EXPECT_EQ(HashTable<Word>(0, 1, 12, 0).Compare(&a, &upper), 0);
    EXPECT_GT(HashTable<Word>(0, 0, 12, 0).Compare(&a, &upper), 0);
    EXPECT_LT(HashTable<Word>(0, 0, 12, 0).Compare(&a, &longer), 0);
    String string("a");
    EXPECT_EQ(HashTable<String>(0, 0, 12, 0).Compare(&string, "A", -1), 0);
    EXPECT_EQ(HashTable<String>(0, 1, 12, 0).hash("ABCDx", 4), 0x5ae61fa5u & 0xfff);
    EXPECT_EQ(HashTable<String>(0, 1, 31, 0).hash("abcd", -1), 0x5ae61fa5u & 0x3fffffff); // 30 at most
}

TEST(HashTable, Different_Keys_Stay_Apart_Whatever_The_Buckets) {
    for (const int case_insensitive : {0, 1}) {
        Watched<String> table(1, case_insensitive, 12, 10);
        for (int i = 0; i < 40000; ++i)
            table.Insert(new String(String("name_") + i));
        EXPECT_LT(table.compared, 10);
        EXPECT_EQ(table.Capacity(), 10 + 79 * 512);
    }
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
    table.Remove("d", 1); // what comes takes its slot
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

// Values of the published lookup2, as other libraries that offer it have them.
TEST(StringHash, Published_Results_And_The_Same_Of_Lower_Case) {
    std::string bytes;
    for (int byte = 0x80; byte < 0xa8; ++byte)
        bytes += static_cast<char>(byte);
    const std::tuple<std::string, std::uint32_t, std::uint32_t> cases[] = {
        // clang-format off
        {"", 0, 0xbd49d10d}, {"a", 0, 0x29eec818}, {"abcd", 0, 0x5ae61fa5}, {"abcdefgh", 0, 0x053f775e},
        {"abcdefghi", 0, 0x3a7b0a5f}, {"abcdefghijk", 0, 0xe52b8e4c}, {"abcdefghijkl", 0, 0x0b1b3ea5},
        {"abcdefghijklm", 1, 0x9cf6da4e}, {bytes, 0, 0xd8bfcb63},
        {"This is the time for all good men to come to the aid of their country...", 0, 0xc9291ecd},
        // clang-format on
    };
    for (const auto& [key, seed, expected] : cases)
        EXPECT_EQ(hash(key.data(), static_cast<std::uint32_t>(key.size()), seed), expected) << key;
    // Every byte at every offset of the blocks and of the rest: what tolower leaves alone is left alone.
    for (int i = 0; i < 256 * 23; ++i) {
        std::string key(23, 'Q'), lower(23, 'q');
        key[i % 23] = static_cast<char>(i / 23);
        lower[i % 23] = static_cast<char>(std::tolower(i / 23));
        ASSERT_EQ(hashi(key.data(), 23, 7), hash(lower.data(), 23, 7)) << i;
    }
}

} // namespace
