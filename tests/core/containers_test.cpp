#include "core/list.h"
#include "core/splay_tree.h"
#include "core/stack.h"
#include "core/stat_hash_table.h"
#include "core/string.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

// An element whose keys compare as the table's case flag says; String's never regard case.
struct Word {
    Word(const char* key, int len, std::shared_ptr<int> held = {}) : key(key, len), held(held) {}
    std::string key;
    std::shared_ptr<int> held;
};

std::string_view Hash_Key(const Word& word) {
    return word.key;
}

TEST(List, Does_What_A_Vector_With_A_Cursor_Does) {
    using Walk = int* (List<int>::*)();
    const Walk walks[] = {&List<int>::First, &List<int>::Last, &List<int>::Next, &List<int>::Previous};
    std::mt19937 random(1);
    int numbers[64], entries = 0;
    List<int> list(0);
    std::list<int*> model;
    auto current = model.end(); // for none
    const auto ahead_of = [&](auto at) { return at == model.begin() ? model.end() : std::prev(at); };
    const auto behind = [&](auto at) { return at == model.end() ? at : std::next(at); };
    for (int step = 0; step < 20000; ++step) {
        const auto p = static_cast<ListPosition>(random() % 4); // the last one is none
        const auto at = std::vector{model.begin(), current, ahead_of(model.end()), model.end()}[p];
        const bool linked = model.empty() || at != model.end();
        int* const e = &numbers[random() % 64];
        const unsigned choice = random() % 8;
        if (choice < 2) {
            ++entries;
            ASSERT_EQ(list.Insert(e, p) != nullptr, linked);
            if (linked)
                current = model.insert(p == LIST_LAST ? model.end() : at, e);
        } else if (choice == 2) {
            --entries;
            ASSERT_EQ(list.Remove(p), at == model.end() ? nullptr : *at);
            if (at == current)
                current = p == LIST_LAST ? ahead_of(at) : behind(at);
            if (at != model.end())
                model.erase(at);
        } else if (choice == 3) {
            current = std::find(model.begin(), model.end(), e);
            ASSERT_EQ(list.Seek(e), current == model.end() ? nullptr : e);
        } else {
            current = std::vector{model.begin(), ahead_of(model.end()), behind(current),
                                  current == model.end() ? current : ahead_of(current)}[choice - 4];
            const int* const answer = (list.*walks[choice - 4])();
            ASSERT_EQ(answer, list.Current());
        }
        ASSERT_EQ(list.Current(), current == model.end() ? nullptr : *current) << step;
        ASSERT_EQ(list.Entries(), entries);
    }
}

TEST(Stack, Does_What_A_Vector_With_A_Cursor_Does) {
    std::mt19937 random(2);
    int numbers[16];
    Stack<int> stack(0);
    std::vector<int*> model;
    int cursor = -1; // index in the model, -1 for below the bottom
    for (int step = 0; step < 20000; ++step) {
        const unsigned choice = random() % 5;
        if (choice == 3) {
            cursor = std::max(cursor - 1, -1);
            ASSERT_EQ(stack.Peek(), cursor < 0 ? nullptr : model[cursor]);
            continue;
        }
        if (choice < 2) {
            model.push_back(&numbers[random() % 16]);
            ASSERT_EQ(stack.Push(model.back())->element, model.back());
        } else if (choice == 2) {
            ASSERT_EQ(stack.Top(), model.empty() ? nullptr : model.back());
        } else {
            if (cursor >= 0) // below the bottom Pop takes the top
                model.resize(cursor + 1);
            ASSERT_EQ(stack.Pop(), model.empty() ? nullptr : model.back());
            if (!model.empty())
                model.pop_back();
        }
        cursor = static_cast<int>(model.size()) - 1;
        ASSERT_EQ(stack.Entries(), cursor + 1);
    }
}

TEST(Containers, Owners_Delete_What_They_Discard) {
    const auto held = std::make_shared<int>();
    const auto made = [&](const char* key) { return new Word(key, 1, held); };
    {
        List<Word> list(1);
        HashTable<Word> table(1, 1, 12, 512);
        Stack<Word> stack(1);
        for (int round = 0; round < 2; ++round) { // dumped, then destroyed
            list.Dump();
            table.Dump();
            stack.Dump();
            EXPECT_EQ(stack.Peek(), nullptr);
            EXPECT_EQ(stack.Entries(), round); // as it was
            EXPECT_EQ(held.use_count(), 1);
            const std::unique_ptr<Word> first(made("a"));
            list.Insert(first.get(), LIST_LAST);
            list.RemoveAll();
            EXPECT_EQ(list.Entries(), 0);
            list.Insert(made("a"), LIST_LAST);
            list.Insert(nullptr, LIST_LAST);
            table.Insert(made("a"));
            table.Insert(made("b"));
            const std::unique_ptr<Word> removed(table.Remove("b", -1));
            for (int i = 0; i < 3; ++i)
                stack.Push(made("a"));
            stack.Peek();
            const std::unique_ptr<Word> popped(stack.Pop()); // what stood above is gone
            EXPECT_EQ(held.use_count(), 7);
        }
    }
    EXPECT_EQ(held.use_count(), 1);
}

struct Watched_Tree : SplayTree<int, int> {
    using SplayTree::SplayTree;
    // The keys, a node's children in brackets around it.
    std::string Shape() const { return Shape(root); }
    int Root() const { return *root->element; }
    static std::string Shape(const Node* node) {
        return node ? "(" + Shape(node->left) + std::to_string(*node->element) + Shape(node->right) + ")"
                    : "";
    }
};

// Users' data depend on what a removal leaves, and so on every rotation ahead of it.
TEST(SplayTree, Shapes_That_Searches_And_Removals_Leave) {
    int numbers[] = {0, 1, 2, 3, 4, 5, 6, 7};
    const std::string cases[][2] = {
        // Digits are inserted, then searched behind '?' and removed behind '-'. Ascending keys hang to the
        // left; a
        // search folds its path to half the length; of equal keys the new one comes behind.
        // clang-format off
        {"1234567", "(((((((1)2)3)4)5)6)7)"}, {"1234567?1", "(1(((2(3))4(5))6(7)))"},
        {"7654321?7", "(((1)2((3)4((5)6)))7)"}, {"12?0", "(1(2))"}, {"21?3", "((1)2)"}, {"575", "((5)5(7))"},
        {"1234?2", "((1)2(3(4)))"}, {"1357?4", "((1)3(5(7)))"}, {"4321?4", "(((1)2(3))4)"},
        // Removed: without a right child, without a left one, with a right one that has a right child, two
        // children, the least of them further down; and with a left child alone, which loses order.
        {"123-3", "((1)2)"}, {"1234567-1", "(((2(3))4(5))6(7))"}, {"1234?2-2", "((1)3(4))"},
        {"1234567-4", "((((1)2)3)5(6(7)))"}, {"01234567-1", "((0)2(((3)4(5))6(7)))"},
        {"4321?4-2", "((1)4(3))"},
        // clang-format on
    };
    for (const auto& [script, shape] : cases) {
        Watched_Tree tree(0);
        char operation = '+';
        for (const char c : script) {
            int* const e = &numbers[c % 8];
            if (!std::isdigit(c))
                operation = c;
            else if (operation == '+')
                tree.Insert(e);
            else
                operation == '?' ? tree.Find(*e) : tree.Remove(*e);
        }
        EXPECT_EQ(tree.Shape(), shape) << script;
        const std::set<char> keys(shape.begin(), shape.end());
        for (int k = 0; k < 9 && script != "575" && script != "4321?4-2"; ++k) {
            const auto low = keys.lower_bound('0' + k), high = keys.upper_bound('0' + k);
            const auto key = [](const int* e) { return e ? '0' + *e : ')'; };
            EXPECT_EQ(key(tree.Find(k)), low == high ? ')' : *low);
            EXPECT_EQ(key(tree.Previous(k)), *std::prev(low));
            EXPECT_EQ(key(tree.Next(k)), high == keys.end() ? ')' : *high);
            EXPECT_EQ(low == high ? tree.Remove(k) : nullptr, nullptr);
            EXPECT_EQ(key(tree.First()), *keys.upper_bound(')')); // behind the brackets
            EXPECT_EQ(key(tree.Last()), *keys.rbegin());
        }
    }
}

// Both sides of the limit between the walks by recursion, which copy in the order of keys, and those by a
// stack, which copy the root, then what is right of it, then what is left; and a shape too deep to recurse.
TEST(SplayTree, Walks_Trees_Of_Any_Size) {
    for (const int size : {0, 1, 99, 100, 400000}) {
        Watched_Tree tree(1);
        for (int k = 0; k < size; ++k)
            tree.Insert(new int(k));
        if (size == 99 || size == 100)
            tree.Find(1);
        Watched_Tree copy(tree);
        if (size == 99 || size == 100) {
            EXPECT_EQ(copy.Root(), size == 99 ? 98 : 0); // what was copied last
        }
        for (const Watched_Tree* walked : {&tree, &copy}) {
            List<int> list(0);
            walked->AppendToList(list);
            int k = 0;
            for (int* e = list.First(); e; e = list.Next())
                ASSERT_EQ(*e, k++);
            EXPECT_EQ(k, size);
            if (walked == &tree)
                tree.Dump(); // the copy's elements are its own
        }
        EXPECT_EQ(tree.Entries(), 0);
    }
    int shared = 5;
    Watched_Tree guest(0);
    guest.Insert(&shared);
    EXPECT_EQ(Watched_Tree(guest).First(), &shared);
}

template <class T>
struct Watched : HashTable<T> {
    using HashTable<T>::HashTable;
    mutable int compared = 0;
    int Compare(T* a, T* b) const override { return compared++, HashTable<T>::Compare(a, b); }
    int Compare(T* e, const char* key, int len) const override { return HashTable<T>::Compare(e, key, len); }
    int Capacity() const { return this->capacity; }
};

// Beside slots in the order of insertion that are searched one by one.
template <class T>
void Compare_With_Model(int case_insensitive, int bucket_bits) {
    using Table = HashTable<T>;
    T* (Table::*const walks[])() = {&Table::First, &Table::Last, &Table::Previous, &Table::Next};
    std::mt19937 random(3);
    Watched<T> table(0, case_insensitive, bucket_bits, 4);
    std::vector<T*> slots;
    std::vector<std::unique_ptr<T>> made;
    int cursor = 0;
    bool behind = false;
    for (int step = 0; step < 8000; ++step) {
        std::string key(random() % 5, 'a');
        for (char& c : key)
            c = "abcABC_\x00"[random() % 8];
        if (!slots.empty() && random() % 4 == 0)
            key = Hash_Key(*slots.back());
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
        } else if (choice < 60) {
            ASSERT_EQ(table.Find_Or_Insert(e), expected ? expected : e);
            if (!expected)
                slots.push_back(e);
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
        const int size = static_cast<int>(slots.size());
        if (behind)
            cursor = std::min(cursor, size); // what comes takes the slots of what went
        if (choice % 3 == 0) {
            const unsigned move = choice ? std::min<unsigned>(random() % 9, 3) : 0;
            const int from[] = {0, size - 1, std::min(cursor, size) - 1, behind ? cursor : cursor + 1};
            for (cursor = from[move]; cursor >= 0 && cursor < size && !slots[cursor];)
                cursor += move % 3 ? -1 : 1;
            (table.*walks[move])();
            behind = cursor >= size;
            cursor = std::clamp(cursor, -1, size);
        }
        ASSERT_EQ(table.Current(), cursor >= 0 && cursor < size ? slots[cursor] : nullptr);
        const int index = static_cast<int>(random() % 64);
        ASSERT_EQ(table.Index(index), index < size ? slots[index] : nullptr);
        ASSERT_EQ(table.Entries(), size);
    }
    const Watched<T> copy(table);
    EXPECT_EQ(copy.Current(), table.Index(0));
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
    struct stat file {};
    HashTable<struct stat> files(0, 1, 12, 512);
    files.Insert(&file);
    for (const auto& [device, inode] : {std::pair(0, 0), {0, 2}, {2, 0}}) {
        struct stat other {};
        other.st_dev = device;
        other.st_ino = inode;
        EXPECT_EQ(files.Find(&other), device || inode ? nullptr : &file);
    }
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

} // namespace
