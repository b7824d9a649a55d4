#include "core/list.h"

#include <gtest/gtest.h>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <vector>

namespace {

int numbers[64];

// A std::list with the cursor as an iterator, and a count that only Insert and Remove move.
struct Model {
    std::list<int*> items;
    std::list<int*>::iterator current = items.end();
    int entries = 0;

    int* Current() { return current == items.end() ? nullptr : *current; }

    void Insert(int* e, ListPosition p) {
        entries++;
        if (p == LIST_CURRENT && current == items.end() && !items.empty())
            return;
        current = items.insert(p == LIST_FIRST ? items.begin() : p == LIST_LAST ? items.end() : current, e);
    }

    int* Remove(ListPosition p) {
        entries--;
        if (items.empty() || (p == LIST_CURRENT && current == items.end()))
            return nullptr;
        auto at = p == LIST_FIRST ? items.begin() : p == LIST_LAST ? std::prev(items.end()) : current;
        int* e = *at;
        const bool was_current = at == current;
        at = items.erase(at);
        if (was_current)
            current = p == LIST_LAST && !items.empty() ? std::prev(at) : at;
        return e;
    }

    int* Step(int by) {
        if (current == items.end())
            return nullptr;
        if (by < 0 && current == items.begin())
            current = items.end();
        else
            std::advance(current, by);
        return Current();
    }

    int* Seek(int* e) {
        for (current = items.begin(); current != items.end() && *current != e;)
            ++current;
        return Current();
    }
};

TEST(List, Does_What_A_List_With_A_Cursor_Does) {
    std::mt19937 random(1);
    List<int> list(0);
    Model model;
    for (int step = 0; step < 20000; step++) {
        const auto position = static_cast<ListPosition>(random() % 3);
        int* e = &numbers[random() % std::size(numbers)];
        switch (random() % 9) {
        case 0:
        case 1:
            list.Insert(e, position);
            model.Insert(e, position);
            break;
        case 2:
        case 3: ASSERT_EQ(list.Remove(position), model.Remove(position)); break;
        case 4: ASSERT_EQ(list.Next(), model.Step(1)); break;
        case 5: ASSERT_EQ(list.Previous(), model.Step(-1)); break;
        case 6: ASSERT_EQ(list.Seek(e), model.Seek(e)); break;
        case 7:
            model.current = model.items.begin();
            ASSERT_EQ(list.First(), model.Current());
            break;
        case 8:
            model.current = model.items.empty() ? model.items.end() : std::prev(model.items.end());
            ASSERT_EQ(list.Last(), model.Current());
            break;
        }
        ASSERT_EQ(list.Current(), model.Current()) << step;
        ASSERT_EQ(list.Entries(), model.entries);
    }
    std::vector<int*> walked;
    for (int* e = list.First(); e; e = list.Next())
        walked.push_back(e);
    EXPECT_EQ(walked, std::vector<int*>(model.items.begin(), model.items.end()));
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
        for (Element* e : {new Element(element), static_cast<Element*>(nullptr), &taken})
            list.Insert(e, LIST_LAST);
        guest.Insert(&taken, LIST_LAST);
        EXPECT_EQ(list.Remove(LIST_LAST), &taken);
        list.Dump();
        EXPECT_EQ(element.use_count(), 2);
        EXPECT_EQ(list.Entries(), 0);
        list.Insert(&taken, LIST_LAST);
        list.RemoveAll();
        list.Insert(new Element(element), LIST_LAST);
    }
    EXPECT_EQ(element.use_count(), 2);
}

} // namespace
