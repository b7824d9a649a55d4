#include "core/splay_tree.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>
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
    // Whether the next removal of k would meet the case that loses order.
    bool Would_Lose_Order(int k) const {
        Splay(k);
        return root->left && root->right && root->right->left && !root->right->right;
    }
};

// Without equal keys, whose order depends on the shape, and without removals that lose order.
TEST(SplayTree, Does_What_A_Sorted_Set_Does) {
    std::mt19937 random(4);
    std::vector<int> numbers(200);
    Watched_Tree tree(0);
    std::set<int> model;
    for (int step = 0; step < 20000; step++) {
        const int k = static_cast<int>(random() % numbers.size());
        numbers[k] = k;
        const auto answer = [&](auto it) { return it == model.end() ? nullptr : &numbers[*it]; };
        const auto before = [&](auto it) { return it == model.begin() ? nullptr : &numbers[*std::prev(it)]; };
        switch (random() % 7) {
        case 0:
            if (model.insert(k).second)
                tree.Insert(&numbers[k]);
            break;
        case 1:
            if (model.empty() || !tree.Would_Lose_Order(k)) {
                ASSERT_EQ(tree.Remove(k), model.erase(k) ? &numbers[k] : nullptr);
            }
            break;
        case 2: ASSERT_EQ(tree.Find(k), answer(model.find(k))); break;
        case 3: ASSERT_EQ(tree.Next(k), answer(model.upper_bound(k))); break;
        case 4: ASSERT_EQ(tree.Previous(k), before(model.lower_bound(k))); break;
        case 5: ASSERT_EQ(tree.First(), answer(model.begin())); break;
        case 6: ASSERT_EQ(tree.Last(), before(model.end())); break;
        }
        ASSERT_EQ(tree.Entries(), static_cast<int>(model.size()));
    }
    EXPECT_EQ(In_Order(tree), std::vector<int>(model.begin(), model.end()));
}

// Both sides of the limit between the recursive walks and those by a stack, and a shape as deep as it gets.
TEST(SplayTree, Walks_Trees_Of_Any_Size) {
    for (const int size : {0, 1, 99, 100, 100000}) {
        SplayTree<int, int> tree(1);
        std::vector<int> expected;
        for (int k = 0; k < size; k++) {
            tree.Insert(new int(k));
            expected.push_back(k);
        }
        SplayTree<int, int> copy(tree);
        EXPECT_EQ(In_Order(tree), expected);
        tree.Dump();
        EXPECT_EQ(tree.Entries(), 0);
        EXPECT_EQ(In_Order(copy), expected); // of copied elements
    }
}

TEST(SplayTree, Equal_Keys_Follow_Each_Other_And_The_Copy_Of_A_Guest_Shares) {
    int first = 5, second = 5;
    SplayTree<int, int> tree(0);
    tree.Insert(&first);
    tree.Insert(&second);
    const SplayTree<int, int> copy(tree);
    EXPECT_EQ(copy.First(), &first);
    EXPECT_EQ(copy.Last(), &second);
}

TEST(SplayTree, Removal_Above_A_Lone_Left_Grandchild_Loses_Order) {
    int numbers[] = {0, 1, 2, 3, 4};
    Watched_Tree tree(0);
    for (const int k : {4, 3, 2, 1})
        tree.Insert(&numbers[k]);          // 1 to 4, a chain to the right
    tree.Find(4);                          // 4 over (2 over 1 and 3)
    ASSERT_TRUE(tree.Would_Lose_Order(2)); // 2 over 1 and (4 over 3)
    EXPECT_EQ(tree.Remove(2), &numbers[2]);
    EXPECT_EQ(tree.Entries(), 3);
    EXPECT_EQ(In_Order(tree), (std::vector<int>{1, 4, 3}));
    EXPECT_EQ(tree.Find(3), nullptr);
}

} // namespace
