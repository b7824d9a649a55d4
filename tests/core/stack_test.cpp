#include "core/stack.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

TEST(Stack, Owner_Deletes_What_It_Discards) {
    using Element = std::shared_ptr<int>;
    const Element element = std::make_shared<int>();
    Stack<Element> stack(1);
    for (int i = 0; i < 3; i++)
        stack.Push(new Element(element));
    stack.Peek();
    const std::unique_ptr<Element> popped(stack.Pop());
    EXPECT_EQ(element.use_count(), 3); // what stood above is gone
    stack.Dump();
    EXPECT_EQ(element.use_count(), 2);
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
        const int choice = random() % 5;
        if (choice == 3) {
            cursor = std::max(cursor - 1, -1);
            ASSERT_EQ(stack.Peek(), cursor < 0 ? nullptr : model[cursor]);
            continue;
        }
        if (choice < 2) {
            model.push_back(&numbers[random() % 16]);
            stack.Push(model.back());
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

} // namespace
