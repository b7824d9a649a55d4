#include "core/list.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

namespace {

int numbers[64];

// A vector with the cursor as an index, -1 for none, and a count that only Insert and Remove move.
struct Model {
    std::vector<int*> items;
    int current = -1, entries = 0;

    int Size() const { return static_cast<int>(items.size()); }
    int* Go(int i) { return (current = i < Size() ? i : -1) < 0 ? nullptr : items[i]; }
    int* Step(int by) { return current < 0 ? nullptr : Go(current + by); }
    int* Seek(int* e) {
        return Go(static_cast<int>(std::find(items.begin(), items.end(), e) - items.begin()));
    }

    void Insert(int* e, ListPosition p) {
        entries++;
        const int i = items.empty() || p == LIST_FIRST ? 0 : p == LIST_LAST ? Size() : current;
        if (i >= 0)
            items.insert(items.begin() + i, e), current = i;
    }
    int* Remove(ListPosition p) {
        entries--;
        const int i = items.empty() || p == LIST_CURRENT ? current : p == LIST_FIRST ? 0 : Size() - 1;
        if (i < 0)
            return nullptr;
        int* e = items[i];
        items.erase(items.begin() + i);
        if (current > i)
            current--;
        else if (current == i)
            Go(p == LIST_LAST ? i - 1 : i);
        return e;
    }
};

TEST(List, Does_What_An_Array_With_A_Cursor_Does) {
    std::mt19937 random(1);
    List<int> list(0);
    Model model;
    for (int step = 0; step < 20000; step++) {
        const auto position = static_cast<ListPosition>(random() % 3);
        int* e = &numbers[random() % std::size(numbers)];
        switch (random() % 9) {
        case 0:
        case 1: list.Insert(e, position), model.Insert(e, position); break;
        case 2:
        case 3: ASSERT_EQ(list.Remove(position), model.Remove(position)); break;
        case 4: ASSERT_EQ(list.Next(), model.Step(1)); break;
        case 5: ASSERT_EQ(list.Previous(), model.Step(-1)); break;
        case 6: ASSERT_EQ(list.Seek(e), model.Seek(e)); break;
        case 7: ASSERT_EQ(list.First(), model.Go(0)); break;
        case 8: ASSERT_EQ(list.Last(), model.Go(model.Size() - 1)); break;
        }
        ASSERT_EQ(list.Current(), model.Go(model.current)) << step;
        ASSERT_EQ(list.Entries(), model.entries);
    }
}

TEST(List, Unknown_Position_Counts_And_Links_Nothing) {
    const auto unknown = static_cast<ListPosition>(7);
    List<int> list(0);
    EXPECT_NE(list.Insert(&numbers[0], unknown), nullptr); // every position is good in an empty list
    EXPECT_EQ(list.Insert(&numbers[1], unknown), nullptr);
    EXPECT_EQ(list.Entries(), 2);
    EXPECT_EQ(list.Remove(unknown), nullptr);
    EXPECT_EQ(list.First(), &numbers[0]);
    EXPECT_EQ(list.Next(), nullptr);
}

TEST(List, Owner_Deletes_What_It_Still_Holds) {
    using Element = std::shared_ptr<int>;
    const Element element = std::make_shared<int>();
    Element taken = element;
    {
        List<Element> list(1), guest(0);
        for (Element* e : {new Element(element), static_cast<Element*>(nullptr)})
            list.Insert(e, LIST_LAST);
        guest.Insert(&taken, LIST_LAST);
        list.Dump();
        EXPECT_EQ(element.use_count(), 2);
        list.Insert(&taken, LIST_LAST);
        list.RemoveAll();
        list.Insert(new Element(element), LIST_LAST);
    }
    EXPECT_EQ(element.use_count(), 2);
}

} // namespace
