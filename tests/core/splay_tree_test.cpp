#include "core/splay_tree.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<int> In_Order(const SplayTree<int, int>& tree) {
    List<int> list(0);
    tree.AppendToList(list);
    std::vector<int> keys;
    for (int* e = list.First(); e; e = list.Next())
        keys.push_back(*e);
    return keys;
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

TEST(SplayTree, Answers_By_Key) {
    std::mt19937 random(4);
    int odd[20];
    SplayTree<int, int> tree(0);
    const auto at = [&](int i) { return i >= 0 && i < 20 ? &odd[i] : nullptr; };
    for (int i = 0; i < 20; ++i) {
        odd[i] = 2 * i + 1;
        tree.Insert(&odd[i]);
    }
    for (int step = 0; step < 1000; ++step) {
        const int k = static_cast<int>(random() % 42); // i is the place of the key, or of the next one above
        const int i = k / 2;
        switch (random() % 4) {
        case 0: ASSERT_EQ(tree.Find(k), k % 2 ? at(i) : nullptr); break;
        case 1: ASSERT_EQ(tree.Next(k), at(i + k % 2)); break;
        case 2: ASSERT_EQ(tree.Previous(k), at(i - 1)); break;
        case 3: ASSERT_EQ(k % 2 ? nullptr : tree.Remove(k), nullptr); break;
        }
        ASSERT_EQ(tree.First(), &odd[0]);
        ASSERT_EQ(tree.Last(), &odd[19]);
        ASSERT_EQ(tree.Entries(), 20);
    }
}

// Users' data depend on what a removal leaves, and so on every rotation ahead of it.
TEST(SplayTree, Shapes_That_Searches_And_Removals_Leave) {
    int numbers[] = {0, 1, 2, 3, 4, 5, 6, 7};
    const struct {
        std::vector<int> inserted, searched;
        int removed;
        const char* shape;
    } cases[] = {
        // Ascending keys hang to the left; a search folds its path to half the length.
        {{1, 2, 3, 4, 5, 6, 7}, {}, -1, "(((((((1)2)3)4)5)6)7)"},
        {{1, 2, 3, 4, 5, 6, 7}, {1}, -1, "(1(((2(3))4(5))6(7)))"},
        {{7, 6, 5, 4, 3, 2, 1}, {7}, -1, "(((1)2((3)4((5)6)))7)"},
        {{1, 2}, {0}, -1, "(1(2))"},
        {{2, 1}, {3}, -1, "((1)2)"},
        {{1, 2, 3, 4}, {2}, -1, "((1)2(3(4)))"},
        {{1, 3, 5, 7}, {4}, -1, "((1)3(5(7)))"},
        {{4, 3, 2, 1}, {4}, -1, "(((1)2(3))4)"},
        // Removed: without a right child, without a left one, with a right one that has a right child, two
        // children, the least of them further down; and with a left child alone, which loses order.
        {{1, 2, 3}, {}, 3, "((1)2)"},
        {{1, 2, 3, 4, 5, 6, 7}, {}, 1, "(((2(3))4(5))6(7))"},
        {{1, 2, 3, 4}, {2}, 2, "((1)3(4))"},
        {{1, 2, 3, 4, 5, 6, 7}, {}, 4, "((((1)2)3)5(6(7)))"},
        {{0, 1, 2, 3, 4, 5, 6, 7}, {}, 1, "((0)2(((3)4(5))6(7)))"},
        {{4, 3, 2, 1}, {4}, 2, "((1)4(3))"},
    };
    for (const auto& c : cases) {
        Watched_Tree tree(0);
        for (const int k : c.inserted)
            tree.Insert(&numbers[k]);
        for (const int k : c.searched)
            tree.Find(k);
        if (c.removed >= 0) {
            EXPECT_EQ(tree.Remove(c.removed), &numbers[c.removed]);
            EXPECT_EQ(tree.Entries(), static_cast<int>(c.inserted.size()) - 1);
        }
        EXPECT_EQ(tree.Shape(), c.shape);
    }
}

// Both sides of the limit between the walks by recursion, which copy in the order of keys, and those by a
// stack, which copy the root, then what is right of it, then what is left; and a shape too deep to recurse.
TEST(SplayTree, Walks_Trees_Of_Any_Size) {
    for (const int size : {0, 1, 99, 100, 400000}) {
        Watched_Tree tree(1);
        std::vector<int> expected;
        for (int k = 0; k < size; ++k) {
            tree.Insert(new int(k));
            expected.push_back(k);
        }
        if (size == 99 || size == 100)
            tree.Find(1);
        Watched_Tree copy(tree);
        if (size == 99 || size == 100) {
            EXPECT_EQ(copy.Root(), size == 99 ? 98 : 0); // what was copied last
        }
        EXPECT_EQ(In_Order(tree), expected);
        tree.Dump();
        EXPECT_EQ(tree.Entries(), 0);
        EXPECT_EQ(In_Order(copy), expected); // of copied elements
    }
}

TEST(SplayTree, Equal_Keys_Follow_Each_Other_And_The_Copy_Of_A_Guest_Shares) {
    int first = 5, second = 5, third = 7;
    Watched_Tree tree(0);
    for (int* e : {&first, &third, &second})
        tree.Insert(e);
    EXPECT_EQ(tree.Shape(), "((5)5(7))");
    const Watched_Tree copy(tree);
    EXPECT_EQ(copy.First(), &first);
    EXPECT_EQ(copy.Last(), &third);
}

} // namespace
