#include "core/stat_hash_table.h"
#include "core/string.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

// An element whose keys compare as the table's case flag says; String's never regard case.
struct Word {
    std::string text;
};

std::string_view Hash_Key(const Word& word) {
    return word.text;
}

// Slots in the order of insertion, searched one by one.
template <class T>
struct Model {
    const HashTable<T>& table; // only for its hash
    bool folds;
    std::vector<T*> slots;

    T** Find(std::string_view key) {
        const int len = static_cast<int>(key.size());
        for (T*& e : slots) {
            const std::string_view other = e ? Hash_Key(*e) : "";
            if (e && other.size() == key.size() && table.hash(e) == table.hash(key.data(), len) &&
                (folds ? memcmpi(other.data(), key.data(), len) == 0 : other == key))
                return &e;
        }
        return nullptr;
    }
    T* Take(std::string_view key) {
        T** const slot = Find(key);
        T* e = slot ? std::exchange(*slot, nullptr) : nullptr;
        while (!slots.empty() && !slots.back())
            slots.pop_back();
        return e;
    }
};

template <class T, class Make>
void Compare_With_Model(int case_insensitive, int bucket_bits, bool folds, Make make) {
    std::mt19937 random(3);
    HashTable<T> table(0, case_insensitive, bucket_bits, 4);
    Model<T> model{table, folds, {}};
    std::vector<std::unique_ptr<T>> made;
    for (int step = 0; step < 8000; step++) {
        std::string key(random() % 5, 'a');
        for (char& c : key)
            c = "abcABC_\x00"[random() % 8];
        const auto len = static_cast<int>(key.size());
        const unsigned choice = random() % 500;
        if (choice == 0) {
            table.Dump();
            model.slots.clear();
        } else if (choice < 200) {
            made.emplace_back(make(key));
            table.Insert(made.back().get());
            model.slots.push_back(made.back().get());
        } else if (choice < 400)
            ASSERT_EQ(table.Remove(key.data(), len), model.Take(key));
        else {
            T** const found = model.Find(key);
            ASSERT_EQ(table.Find(key.data(), len), found ? *found : nullptr);
            ASSERT_EQ(table.Find(std::unique_ptr<T>(make(key)).get()), found ? *found : nullptr);
        }
        ASSERT_EQ(table.Entries(), static_cast<int>(model.slots.size()));
        const int index = static_cast<int>(random() % 64);
        ASSERT_EQ(table.Index(index), index < table.Entries() ? model.slots[index] : nullptr);
    }
    const HashTable<T> copy(table);
    EXPECT_EQ(copy.Current(), table.Index(0));
    for (int i = 0; i < copy.Entries(); i++)
        ASSERT_EQ(copy.Index(i), table.Index(i));
}

TEST(HashTable, Does_What_A_Searched_Array_Does) {
    const auto make_word = [](const std::string& key) { return new Word{key}; };
    const auto make_string = [](const std::string& key) {
        return new String(key.data(), static_cast<int>(key.size()));
    };
    Compare_With_Model<Word>(1, 12, true, make_word);
    Compare_With_Model<Word>(0, 12, false, make_word);
    Compare_With_Model<Word>(0, 0, false, make_word);
    Compare_With_Model<String>(1, 12, true, make_string);
    // Hashed by case but compared without: equals only where they meet in a bucket.
    Compare_With_Model<String>(0, 2, true, make_string);
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
    EXPECT_EQ(table.hash("ABCDx", 4), 0x5ae61fa5u & 0xfff);
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
    EXPECT_EQ(table.Index(-1), nullptr);
}

TEST(HashTable, Owner_Deletes_What_It_Still_Holds) {
    const auto element = std::make_shared<int>();
    const auto held = [&] { return element.use_count() - 1; };
    struct Holder : Word {
        std::shared_ptr<int> element;
    };
    {
        HashTable<Holder> table(1, 1, 12, 512);
        for (const char* key : {"a", "b", "c"})
            table.Insert(new Holder{{key}, element});
        const std::unique_ptr<Holder> taken(table.Remove("b", -1));
        table.Dump();
        EXPECT_EQ(held(), 1);
        table.Insert(new Holder{{"a"}, element});
    }
    EXPECT_EQ(held(), 0);
}

TEST(HashTable, Files_Are_Known_By_Device_And_Inode) {
    struct stat file {};
    file.st_dev = 1;
    file.st_ino = 2;
    struct stat same = file, other_device = file, other_inode = file;
    other_device.st_dev = 2;
    other_inode.st_ino = 1;
    HashTable<struct stat> table(0, 1, 12, 512);
    table.Insert(&file);
    EXPECT_EQ(table.Find(&same), &file);
    EXPECT_EQ(table.Find(&other_device), nullptr);
    EXPECT_EQ(table.Find(&other_inode), nullptr);
}

} // namespace
