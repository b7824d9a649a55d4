#include "core/list.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <list>
#include <memory>
#include <random>

namespace {

TEST(List, Does_What_A_Standard_List_With_A_Cursor_Does) {
    std::mt19937 random(1);
    int numbers[64];
    List<int> list(0);
    std::list<int*> model;
    int entries = 0;
    auto current = model.end(); // the end for none
    const auto element = [&] { return current == model.end() ? nullptr : *current; };
    const auto before = [&](auto it) { return it == model.begin() ? model.end() : std::prev(it); };
    for (int step = 0; step < 20000; step++) {
        const auto p = static_cast<ListPosition>(random() % 4); // the last one is none
        int* e = &numbers[random() % std::size(numbers)];
        auto at = p == LIST_FIRST ? model.begin() : p == LIST_CURRENT ? current : model.end();
        int* answer;
        switch (random() % 8) {
        case 0:
        case 1:
            entries++;
            if (p == LIST_FIRST || p == LIST_LAST || at != model.end() || model.empty()) {
                ASSERT_EQ(list.Insert(e, p)->element, e);
                current = model.insert(at, e);
            } else {
                ASSERT_EQ(list.Insert(e, p), nullptr);
            }
            answer = list.Current();
            break;
        case 2:
            at = p == LIST_LAST ? before(at) : at;
            entries--;
            ASSERT_EQ(list.Remove(p), at == model.end() ? nullptr : *at);
            if (at == current && at != model.end())
                current = p == LIST_LAST ? before(at) : std::next(at);
            if (at != model.end())
                model.erase(at);
            answer = list.Current();
            break;
        case 3: current = std::find(model.begin(), model.end(), e), answer = list.Seek(e); break;
        case 4: current = model.begin(), answer = list.First(); break;
        case 5: current = before(model.end()), answer = list.Last(); break;
        case 6: current = element() ? std::next(current) : current, answer = list.Next(); break;
        case 7: current = element() ? before(current) : current, answer = list.Previous(); break;
        }
        ASSERT_EQ(answer, element()) << step;
        ASSERT_EQ(list.Current(), answer);
        ASSERT_EQ(list.Entries(), entries);
    }
}

TEST(List, Owner_Deletes_What_It_Still_Holds) {
    using Element = std::shared_ptr<int>;
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
        list.Insert(new Element(element), LIST_LAST);
    }
    EXPECT_EQ(element.use_count(), 1);
}

} // namespace
