#include "core/list.h"
#include "core/stack.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

using Element = std::shared_ptr<int>;

TEST(List, Does_What_A_Vector_With_A_Cursor_Does) {
    using Walk = int* (List<int>::*)();
    const Walk walks[] = {&List<int>::First, &List<int>::Last, &List<int>::Next, &List<int>::Previous};
    std::mt19937 random(1);
    int numbers[64];
    List<int> list(0);
    std::vector<int*> model;
    int entries = 0, current = -1; // index in the model, -1 for none
    for (int step = 0; step < 20000; ++step) {
        const auto p = static_cast<ListPosition>(random() % 4); // the last one is none
        int* const e = &numbers[random() % 64];
        const int size = static_cast<int>(model.size());
        const int at = p == LIST_FIRST ? std::min(size, 1) - 1 : p == LIST_CURRENT ? current : size - 1;
        const bool names_a_node = p <= LIST_LAST && at >= 0;
        switch (const unsigned choice = random() % 8) {
        case 0:
        case 1:
            ++entries;
            ASSERT_EQ(list.Insert(e, p) != nullptr, !size || names_a_node);
            if (!size || names_a_node) {
                current = size ? at + (p == LIST_LAST) : 0;
                model.insert(model.begin() + current, e);
            }
            break;
        case 2:
            --entries;
            ASSERT_EQ(list.Remove(p), names_a_node ? model[at] : nullptr);
            if (names_a_node) {
                model.erase(model.begin() + at);
                if (at < current || (at == current && (p == LIST_LAST || at == size - 1)))
                    current = at == current && p != LIST_LAST ? -1 : current - 1;
            }
            break;
        case 3: {
            const auto found = std::find(model.begin(), model.end(), e) - model.begin();
            current = found == size ? -1 : static_cast<int>(found);
            ASSERT_EQ(list.Seek(e), current < 0 ? nullptr : e);
            break;
        }
        default:
            const int next = current >= 0 && current + 1 < size ? current + 1 : -1;
            const int moved[] = {std::min(size, 1) - 1, size - 1, next, std::max(current - 1, -1)};
            current = moved[choice - 4];
            ASSERT_EQ((list.*walks[choice - 4])(), current < 0 ? nullptr : model[current]);
        }
        ASSERT_EQ(list.Current(), current < 0 ? nullptr : model[current]) << step;
        ASSERT_EQ(list.Entries(), entries);
    }
}

TEST(List, Owner_Deletes_What_It_Still_Holds) {
    Element element = std::make_shared<int>();
    {
        List<Element> list(1), guest(0);
        guest.Insert(&element, LIST_LAST);
        list.Insert(new Element(element), LIST_LAST);
        list.Insert(nullptr, LIST_LAST);
        list.Dump();
        EXPECT_EQ(element.use_count(), 1);
        list.Insert(&element, LIST_LAST);
        list.RemoveAll();
        EXPECT_EQ(list.Entries(), 0);
        list.Insert(new Element(element), LIST_LAST);
    }
    EXPECT_EQ(element.use_count(), 1);
}

TEST(Stack, Owner_Deletes_What_It_Discards) {
    const Element element = std::make_shared<int>();
    Stack<Element> stack(1);
    for (int i = 0; i < 3; ++i)
        stack.Push(new Element(element));
    stack.Peek();
    const std::unique_ptr<Element> popped(stack.Pop());
    EXPECT_EQ(element.use_count(), 3); // what stood above is gone
    stack.Dump();
    EXPECT_EQ(element.use_count(), 2);
    EXPECT_EQ(stack.Peek(), nullptr);
    EXPECT_EQ(stack.Top(), nullptr);
    EXPECT_EQ(stack.Entries(), 1); // as it was
}

TEST(Stack, Does_What_A_Vector_With_A_Cursor_Does) {
    std::mt19937 random(2);
    int numbers[16];
    Stack<int> stack(0);
    std::vector<int*> model;
    int cursor = -1; // index in the model, -1 for below the bottom
    for (int step = 0; step < 20000; ++step) {
        const int choice = random() % 5;
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

} // namespace
