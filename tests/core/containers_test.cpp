#include "core/list.h"
#include "core/splay_tree.h"
#include "core/stack.h"
#include "core/stat_hash_table.h"
#include "core/string.h"

#include <cctype>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>

namespace {

TEST(Containers, Owners_Delete_What_They_Discard) {
    using Element = std::shared_ptr<int>;
    const Element held = std::make_shared<int>();
    {
        List<Element> list(1);
        Stack<Element> stack(1);
        for (int round = 0; round < 2; ++round) { // dumped, then destroyed
            list.Dump();
            stack.Dump();
            EXPECT_EQ(stack.Peek(), nullptr);
            EXPECT_EQ(stack.Entries(), round); // as it was
            EXPECT_EQ(held.use_count(), 1);
            Element first(held);
            list.Insert(&first, LIST_LAST);
            list.RemoveAll();
            EXPECT_EQ(list.Entries(), 0);
            list.Insert(new Element(held), LIST_LAST);
            list.Insert(nullptr, LIST_LAST);
            for (int i = 0; i < 3; ++i)
                stack.Push(new Element(held));
            stack.Peek();
            delete stack.Pop();
            EXPECT_EQ(held.use_count(), 4); // what stood above is gone
        }
    }
    EXPECT_EQ(held.use_count(), 1);
}

struct Watched_Tree : SplayTree<int, int> {
    using SplayTree::SplayTree;
    // The keys, a node's children in brackets around it.
    std::string Shape() const { return Shape(root); }
    static std::string Shape(const Node* node) {
        return node ? "(" + Shape(node->left) + std::to_string(*node->element) + Shape(node->right) + ")"
                    : "";
    }
};

// Users' data depend on what a removal leaves, and so on every rotation ahead of it.
TEST(SplayTree, Shapes_That_Searches_And_Removals_Leave) {
    int numbers[] = {0, 1, 2, 3, 4, 5, 6, 7};
    const std::pair<std::string, std::string> cases[] = {
        // Digits are inserted, then searched behind '?' and removed behind '-'. Ascending keys hang to the
        // left; a search folds its path to half the length; of equal keys the new one comes behind.
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
        for (const char c : script)
            switch (int* const e = &numbers[c % 8]; std::isdigit(c) ? operation : 0) {
            case '+': tree.Insert(e); break;
            case '?': tree.Find(*e); break;
            case '-': tree.Remove(*e); break;
            default: operation = c;
            }
        EXPECT_EQ(tree.Shape(), shape) << script;
    }
}

TEST(SplayTree, Walks_Of_Deep_Trees_Take_No_Stack) {
    const int size = 400000;
    Watched_Tree tree(1);
    for (int k = 0; k < size; ++k)
        tree.Insert(new int(k));
    Watched_Tree copy(tree);
    List<int> list(0);
    copy.AppendToList(list);
    EXPECT_EQ(list.Entries(), size);
    tree.Dump();
    EXPECT_EQ(tree.Entries(), 0);
    int shared = 5;
    Watched_Tree guest(0);
    guest.Insert(&shared);
    EXPECT_EQ(Watched_Tree(guest).First(), &shared);
}

TEST(HashTable, Buckets_Have_30_Bits_And_Files_Two_Numbers) {
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

struct Watched_Table : HashTable<String> {
    using HashTable::HashTable, HashTable::Compare;
    int Compare(String* a, String* b) const override { return ++compared, HashTable::Compare(a, b); }
    int Capacity() const { return capacity; }
    mutable int compared = 0;
};

TEST(HashTable, Different_Keys_Stay_Apart_Whatever_The_Buckets) {
    for (const int case_insensitive : {0, 1}) {
        Watched_Table table(1, case_insensitive, 12, 10);
        for (int i = 0; i < 40000; ++i)
            table.Insert(new String(String("name_") + i));
        EXPECT_LT(table.compared, 10);
        EXPECT_EQ(table.Capacity(), 10 + 79 * 512);
    }
}

} // namespace
