#include "core/stack.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

struct Counted {
    explicit Counted(std::vector<int>& deleted, int number) : deleted(deleted), number(number) {}
    ~Counted() { deleted.push_back(number); }
    std::vector<int>& deleted;
    int number;
};

TEST(Stack, Pop_After_Peeks_Discards_What_Lies_Above) {
    std::vector<int> deleted;
    Stack<Counted> stack(1);
    for (int number = 1; number <= 4; number++)
        stack.Push(new Counted(deleted, number));
    EXPECT_EQ(stack.Top()->number, 4);
    EXPECT_EQ(stack.Peek()->number, 3);
    EXPECT_EQ(stack.Peek()->number, 2);
    delete stack.Pop();
    EXPECT_EQ(deleted, (std::vector<int>{4, 3, 2}));
    EXPECT_EQ(stack.Entries(), 1);
    EXPECT_EQ(stack.Top()->number, 1);
}

TEST(Stack, Push_Brings_The_Cursor_To_The_Top) {
    int a, b, c;
    Stack<int> stack(0);
    EXPECT_EQ(stack.Pop(), nullptr);
    stack.Push(&a);
    stack.Push(&b);
    EXPECT_EQ(stack.Peek(), &a);
    EXPECT_EQ(stack.Push(&c)->element, &c);
    EXPECT_EQ(stack.Pop(), &c);
    EXPECT_EQ(stack.Pop(), &b);
}

TEST(Stack, Cursor_Below_The_Bottom_Stays_There_Until_Top) {
    int a, b;
    Stack<int> stack(0);
    stack.Push(&a);
    stack.Push(&b);
    EXPECT_EQ(stack.Peek(), &a);
    EXPECT_EQ(stack.Peek(), nullptr);
    EXPECT_EQ(stack.Peek(), nullptr);
    EXPECT_EQ(stack.Pop(), &b); // as after Top
    EXPECT_EQ(stack.Entries(), 1);
}

TEST(Stack, Dump_Deletes_And_Keeps_The_Count) {
    std::vector<int> deleted;
    {
        Stack<Counted> stack(1);
        stack.Push(new Counted(deleted, 1));
        stack.Push(new Counted(deleted, 2));
        stack.Dump();
        EXPECT_EQ(deleted, (std::vector<int>{2, 1}));
        EXPECT_EQ(stack.Top(), nullptr);
        EXPECT_EQ(stack.Entries(), 2);
        stack.Push(new Counted(deleted, 3));
    }
    EXPECT_EQ(deleted.back(), 3);
}

TEST(Stack, Does_What_A_Vector_With_A_Cursor_Does) {
    std::mt19937 random(2);
    int numbers[16];
    Stack<int> stack(0);
    std::vector<int*> model;
    int cursor = -1; // index in the model, -1 for below the bottom
    for (int step = 0; step < 20000; step++) {
        int* e = &numbers[random() % 16];
        switch (random() % 5) {
        case 0:
        case 1:
            stack.Push(e);
            model.push_back(e);
            cursor = static_cast<int>(model.size()) - 1;
            break;
        case 2:
            cursor = static_cast<int>(model.size()) - 1;
            ASSERT_EQ(stack.Top(), model.empty() ? nullptr : model.back());
            break;
        case 3:
            cursor = std::max(cursor - 1, -1);
            ASSERT_EQ(stack.Peek(), cursor < 0 ? nullptr : model[cursor]);
            break;
        case 4: {
            if (cursor >= 0)
                model.resize(cursor + 1);
            int* expected = model.empty() ? nullptr : model.back();
            if (!model.empty())
                model.pop_back();
            cursor = static_cast<int>(model.size()) - 1;
            ASSERT_EQ(stack.Pop(), expected);
            break;
        }
        }
        ASSERT_EQ(stack.Entries(), static_cast<int>(model.size()));
    }
}

} // namespace
