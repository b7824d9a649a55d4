// Strings, lists, stacks, tables and trees do what the containers of the standard library do under the same
// script. The first byte chooses which.
#include "core/hash_table.h"
#include "core/list.h"
#include "core/splay_tree.h"
#include "core/stack.h"
#include "core/string.h"
#include "input.h"

#include <list>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace {

// An element whose keys compare as the table's case flag says.
struct Word {
    Word(const char* key, int len) : key(key, len) {}
    std::string key;
};

std::string_view Hash_Key(const Word& word) {
    return word.key;
}

int numbers[64];

// Text and capacity as the rules have them. Neither shows that long texts have spare room underneath.
void Try_String(Input input) {
    std::string text;
    String s;
    int capacity = 0;
    while (input.More() && text.size() < 100000) {
        const std::string piece(input.Below(60), "ab"[input.Below(2)]), before = text;
        const int len = static_cast<int>(piece.size()), room = input.Between(0, 29);
        const std::size_t size = text.size(), part = std::min<std::size_t>(size, input.Below(100));
        const auto kept = static_cast<unsigned>(size - part);
        const auto array = [&] {
            return static_cast<char*>(std::memcpy(new char[len + room], piece.data(), len));
        };
        bool stores = true; // with a NUL behind the text, and the capacity that this takes
        switch (input.Below(40)) {
        case 0: s.assign(piece.data(), len), text = piece; break;
        case 1: s.assign(nullptr, 5), s.assign('c'), text = "c"; break;
        case 2: s.assign_nocopy(nullptr, 3, 10), text = "", capacity = 0; break;
        case 3: s.assign_nocopy(array(), len, len + room), text = piece, capacity = len + room; break;
        case 4: s.assign(s.text() + part, static_cast<int>(kept)), text.erase(0, part); break;
        case 5: {
            s.truncate(kept), text.resize(kept);
            String moved(std::move(s)); // with a NUL again
            CHECK(moved.text()[kept] == '\0');
            s = std::move(moved);
            stores = capacity > 0, capacity = 0;
            break;
        }
        case 6: s = String(piece.c_str()), text = piece; break;
        case 7: s = String(), s += String(), stores = false; break;
        case 8: delete[] s.release(nullptr, nullptr), text = "", capacity = 0, stores = false; break;
        case 9: s += s, text += text, stores = capacity > 0; break;
        case 10:
            CHECK(s.chop(static_cast<int>(size) + 3) == -3);
            CHECK(s.chop(static_cast<int>(part)) == static_cast<int>(kept));
            text.resize(kept), stores = false;
            break;
        case 11:
            s.truncate(static_cast<unsigned>(size + 3)), s.truncate(kept);
            text.resize(kept), stores = false;
            break;
        case 12: s.prepend(piece.c_str(), -1), text.insert(0, piece); break;
        case 13: s.prepend('!'), s.prepend('\0'), text.insert(0, "!"); break;
        default:
            if (room % 2 && capacity) { // a byte more than needed stays free
                capacity += static_cast<int>(size) + 2 < capacity ? 0 : 24 - capacity % 24;
                s.cat('!'), text += '!';
            } else
                s.cat(piece.c_str(), -1), text += piece;
        }
        if (stores && static_cast<int>(text.size()) >= capacity)
            capacity = static_cast<int>((text.size() + 24) / 24 * 24);
        std::int32_t field; // that stands behind the pointer
        std::memcpy(&field, reinterpret_cast<const char*>(&s) + sizeof(char*), sizeof field);
        CHECK(field == capacity && s.view() == text);
        if (stores || text.size() < size) // what cuts the text off writes no NUL
            CHECK(s.text()[text.size()] == (stores || !capacity ? '\0' : before[text.size()]));
        CHECK(s.search(piece.c_str(), room) == (len ? static_cast<int>(text.find(piece, room)) : -1));
        CHECK(s.at(room, len).view() ==
              (room < std::min<int>(len, text.size()) ? text.substr(room, len - room) : ""));
    }
}

// Beside a list with a cursor, which is at the end for none.
void Try_List(Input input) {
    using Walk = int* (List<int>::*)();
    const Walk walks[] = {&List<int>::First, &List<int>::Last, &List<int>::Next, &List<int>::Previous};
    int entries = 0;
    List<int> list(0);
    std::list<int*> model;
    auto current = model.end();
    const auto ahead_of = [&](auto at) { return at == model.begin() ? model.end() : std::prev(at); };
    const auto behind = [&](auto at) { return at == model.end() ? at : std::next(at); };
    while (input.More()) {
        const auto p = static_cast<ListPosition>(input.Below(4)); // the last one is none
        const auto at = std::vector{model.begin(), current, ahead_of(model.end()), model.end()}[p];
        const bool linked = model.empty() || at != model.end();
        int* const e = &input.One_Of(numbers);
        const unsigned choice = input.Below(8);
        if (choice < 2) {
            ++entries;
            CHECK((list.Insert(e, p) != nullptr) == linked);
            if (linked)
                current = model.insert(p == LIST_LAST ? model.end() : at, e);
        } else if (choice == 2) {
            --entries;
            CHECK(list.Remove(p) == (at == model.end() ? nullptr : *at));
            if (at == current)
                current = p == LIST_LAST ? ahead_of(at) : behind(at);
            if (at != model.end())
                model.erase(at);
        } else if (choice == 3) {
            current = std::find(model.begin(), model.end(), e);
            CHECK(list.Seek(e) == (current == model.end() ? nullptr : e));
        } else {
            current = std::vector{model.begin(), ahead_of(model.end()), behind(current),
                                  current == model.end() ? current : ahead_of(current)}[choice - 4];
            CHECK((list.*walks[choice - 4])() == list.Current());
        }
        CHECK(list.Current() == (current == model.end() ? nullptr : *current));
        CHECK(list.Entries() == entries);
    }
}

void Try_Stack(Input input) {
    Stack<int> stack(0);
    std::vector<int*> model;
    int cursor = -1; // index in the model, -1 for below the bottom
    while (input.More()) {
        switch (input.Below(5)) {
        case 0: CHECK(stack.Top() == (model.empty() ? nullptr : model.back())); break;
        case 1:
            cursor = std::max(cursor - 1, -1);
            CHECK(stack.Peek() == (cursor < 0 ? nullptr : model[cursor]));
            continue;
        case 2:
            if (cursor >= 0) // below the bottom Pop takes the top
                model.resize(cursor + 1);
            CHECK(stack.Pop() == (model.empty() ? nullptr : model.back()));
            if (!model.empty())
                model.pop_back();
            break;
        default:
            model.push_back(&input.One_Of(numbers));
            CHECK(stack.Push(model.back())->element == model.back());
        }
        cursor = static_cast<int>(model.size()) - 1;
        CHECK(stack.Entries() == cursor + 1);
    }
}

// Beside slots in the order of insertion that are searched one by one.
template <class T>
void Try_Table(Input input, int case_insensitive, int bucket_bits) {
    using Table = HashTable<T>;
    T* (Table::*const walks[])() = {&Table::First, &Table::Last, &Table::Previous, &Table::Next};
    Table table(1, case_insensitive, bucket_bits, 4);
    std::vector<T*> slots;
    const bool folds = case_insensitive || std::is_same_v<T, String>; // whose keys never regard case
    const auto rank = [&](std::string_view key) {                     // the shorter first
        std::string text(key);
        std::ranges::transform(text, text.begin(), [&](char c) { return folds ? std::tolower(c) : c; });
        return std::pair(text.size(), text);
    };
    int cursor = 0;
    bool behind = false;
    while (input.More()) {
        std::string key = input.Text(4, std::string_view("abcABC_\0", 8));
        if (!slots.empty() && input.Below(4) == 0)
            key = Hash_Key(*slots.back());
        const int key_size = static_cast<int>(key.size()), len = key.find('\0') == key.npos ? -1 : key_size;
        auto e = std::make_unique<T>(key.data(), key_size);
        const auto same_key = [&](T* other) {
            return other && table.hash(other) == table.hash(key.data(), len) &&
                   table.Compare(other, key.data(), len) == 0;
        };
        if (!slots.empty()) {
            const auto ours = rank(key), last = rank(Hash_Key(*slots.back()));
            const int order = table.Compare(e.get(), slots.back());
            CHECK((order < 0) == (ours < last) && (order > 0) == (ours > last));
        }
        const auto found = std::find_if(slots.begin(), slots.end(), same_key);
        T* const expected = found == slots.end() ? nullptr : *found;
        const unsigned choice = input.Below(256);
        if (choice == 0) {
            table.Dump();
            slots.clear();
        } else if (choice < 30) {
            CHECK(table.Find_Or_Insert(e.get()) == (expected ? expected : e.get()));
            if (!expected)
                slots.push_back(e.release());
        } else if (choice < 100) {
            table.Insert(e.get());
            slots.push_back(e.release());
        } else if (choice < 200) {
            const std::unique_ptr<T> removed(table.Remove(key.data(), len));
            CHECK(removed.get() == expected);
            if (expected)
                *found = nullptr;
            while (!slots.empty() && !slots.back())
                slots.pop_back();
        } else {
            CHECK(table.Find(key.data(), len) == expected);
            CHECK(table.Find(e.get()) == expected);
        }
        const int size = static_cast<int>(slots.size());
        if (behind && choice > 0)
            cursor = std::min(cursor, size); // what comes takes the slots of what was removed
        if (choice % 3 == 0) {
            const unsigned move = std::min(input.Below(9), 3u);
            const int from[] = {0, size - 1, std::min(cursor, size) - 1, behind ? cursor : cursor + 1};
            for (cursor = from[move]; cursor >= 0 && cursor < size && !slots[cursor];)
                cursor += move % 3 ? -1 : 1;
            (table.*walks[move])();
            behind = cursor >= size;
            cursor = std::clamp(cursor, -1, size);
        }
        CHECK(table.Current() == (cursor >= 0 && cursor < size ? slots[cursor] : nullptr));
        const int index = input.Between(-1, 63);
        CHECK(table.Index(index) == (index >= 0 && index < size ? slots[index] : nullptr));
        CHECK(table.Entries() == size);
    }
    Table copy(table);
    copy.Disown();
    CHECK(copy.Current() == table.Index(0));
    for (int i = 0; i < copy.Entries(); ++i) {
        CHECK(copy.Index(i) == table.Index(i));
        CHECK(!copy.Index(i) || copy.Find(copy.Index(i)));
    }
}

struct Open_Tree : SplayTree<int, int> {
    using SplayTree::SplayTree;
    // Whether removing the root loses order: what stands left of the right child comes to stand right of it.
    bool Root_Is_Of_The_Known_Case() const {
        const Node* const right = root->right;
        return root->left && right && right->left && !right->right;
    }
    // What a copy takes in last: up to 99 elements are taken in order, more from the root on, the left last.
    const int* Last_Copied() const {
        const Node* last = root;
        for (const Node* next = root; next; next = Entries() > 99 && next->left ? next->left : next->right)
            last = next;
        return last ? last->element : nullptr;
    }
    const int* Root() const { return root ? root->element : nullptr; }
};

// Beside a set of keys, without the removals that lose order.
void Try_Tree(Input input) {
    Open_Tree tree(1);
    std::set<int> model;
    const auto is = [&](const int* e, auto at) {
        return e ? at != model.end() && *e == *at : at == model.end();
    };
    while (input.More()) {
        const int key = input.Between(0, 199);
        const auto low = model.lower_bound(key), high = model.upper_bound(key);
        const auto found = low == high ? model.end() : low;
        switch (input.Below(10)) {
        case 0: CHECK(is(tree.Next(key), high)); break;
        case 1: CHECK(is(tree.Previous(key), low == model.begin() ? model.end() : std::prev(low))); break;
        case 2: CHECK(is(tree.First(), model.begin())); break;
        case 3: CHECK(is(tree.Last(), model.empty() ? model.end() : std::prev(model.end()))); break;
        case 4:
        case 5: {
            CHECK(is(tree.Find(key), found));
            if (found != model.end() && tree.Root_Is_Of_The_Known_Case())
                break;
            CHECK(is(std::unique_ptr<int>(tree.Remove(key)).get(), found));
            if (found != model.end())
                model.erase(found);
            break;
        }
        default:
            if (model.insert(key).second)
                tree.Insert(new int(key));
        }
        CHECK(tree.Entries() == static_cast<int>(model.size()));
    }
    const int* const last = tree.Last_Copied();
    Open_Tree copy(tree);
    CHECK(last ? *copy.Root() == *last : !copy.Root());
    for (Open_Tree* const walked : {&tree, &copy}) {
        List<int> list(0);
        walked->AppendToList(list);
        const int* e = list.First();
        for (const int key : model)
            CHECK(e && *std::exchange(e, list.Next()) == key);
        CHECK(!e);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    switch (input.Below(9)) {
    case 0: Try_List(input); break;
    case 1: Try_Stack(input); break;
    case 2: Try_Table<Word>(input, 1, 12); break;
    case 3: Try_Table<Word>(input, 0, 12); break;
    case 4: Try_Table<Word>(input, 0, 0); break;
    case 5: Try_Table<String>(input, 1, 12); break;
    case 6: Try_Table<String>(input, 0, 2); break; // equals where they meet in a bucket
    case 7: Try_String(input); break;
    default: Try_Tree(input);
    }
    return 0;
}
