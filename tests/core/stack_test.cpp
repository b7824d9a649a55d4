#include "core/stack.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

TEST(Stack, Owner_Deletes_What_It_Discards) {
    using Element = std::shared_ptr<int>;
    Element elements[] = {std::make_shared<int>(), std::make_shared<int>(), std::make_shared<int>()};
    const auto is_held = [&](int i) { return elements[i].use_count() > 1; };
    Stack<Element> stack(1);
    for (const Element& e : elements)
        stack.Push(new Element(e));
    stack.Peek();
    const std::unique_ptr<Element> popped(stack.Pop());
    EXPECT_EQ(*popped, elements[1]);
    EXPECT_FALSE(is_held(2));
    EXPECT_TRUE(is_held(0));
    EXPECT_EQ(stack.Entries(), 1);
    stack.Dump();
    EXPECT_FALSE(is_held(0));
    EXPECT_EQ(stack.Top(), nullptr);
    EXPECT_EQ(stack.Entries(), 1); // as it was
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
        case 4:
            if (cursor >= 0) // below the bottom Pop takes the top
                model.resize(cursor + 1);
            ASSERT_EQ(stack.Pop(), model.empty() ? nullptr : model.back());
            if (!model.empty())
                model.pop_back();
            cursor = static_cast<int>(model.size()) - 1;
            break;
        }
        ASSERT_EQ(stack.Entries(), static_cast<int>(model.size()));
    }
}

} // namespace
