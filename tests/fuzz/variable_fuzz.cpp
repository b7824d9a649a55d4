// Variables, aggregates and tables of variables beside models of them. The first byte chooses which.
#include "image/dictionary.h"
#include "input.h"
#include "value/cloned_variable_hash.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/system_variable_hash.h"
#include "value/user_variable_hash.h"
#include "value/value_support.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace {

// A variable without trees, counts or cached forms.
struct Model {
    using Elements = std::map<std::pair<int, std::string>, Model>; // by number, or by -1 and the name

    AggregateType type = AGGREGATE_NONE;
    std::string text;
    Elements elements;

    Model& At(int number, const std::string& name = "") {
        Become(number < 0 ? AGGREGATE_STRUCTURE : AGGREGATE_ARRAY);
        return elements[{number, name}];
    }
    void Become(AggregateType wanted) {
        if (type != wanted)
            *this = {wanted, "", {}};
    }
    int Min() const { return elements.empty() ? 0 : elements.begin()->first.first; }
    int Max() const { return elements.empty() ? 0 : elements.rbegin()->first.first; }
    // The numbers next to one, -1 in a structure.
    int Next(int number) const {
        const auto next = elements.lower_bound({number + 1, ""});
        return type == AGGREGATE_STRUCTURE ? -1 : next == elements.end() ? 0 : next->first.first;
    }
    int Previous(int number) const {
        const auto at = elements.lower_bound({number, ""});
        return type == AGGREGATE_STRUCTURE ? -1 : at == elements.begin() ? 0 : std::prev(at)->first.first;
    }
    std::string Text(std::string before = "") const {
        if (type == AGGREGATE_NONE)
            before += (before.empty() ? "" : ",") + text;
        for (const auto& [key, element] : elements)
            before = element.Text(before);
        return before;
    }
    void Displace(int from, int delta) {
        for (auto old = std::exchange(elements, {}); const auto& [key, element] : old)
            elements[{key.first < from ? key.first : key.first + delta, ""}] = element;
    }
    void Insert(int position, const Model& element) {
        position = type == AGGREGATE_ARRAY && position < 1 ? Max() + 1 : std::max(position, 1);
        Become(AGGREGATE_ARRAY);
        Displace(position, 1);
        At(position) = element;
    }
    void Delete(int start, int count, bool collapse) {
        const int end = count == -1 ? 1000 : start + count;
        elements.erase(elements.lower_bound({start, ""}), elements.lower_bound({end, ""}));
        if (collapse && count > 0)
            Displace(end, -count);
    }
    void Collapse() {
        int number = 0;
        for (auto old = std::exchange(elements, {}); const auto& [key, element] : old)
            elements[{++number, ""}] = element;
    }
    // Merge and copy, with the whole source set aside before anything moves.
    void Take(const Model source, int start, int count, int dest, bool merge) {
        Become(AGGREGATE_ARRAY);
        if (start < 1)
            start = merge ? std::max(source.Min(), 1) : source.Min();
        if (count < 0)
            count = source.Max() < 1 ? 0 : source.Max() - start + 1;
        if (dest < 1)
            dest = Max() + 1;
        if (start < 1 || count < 1)
            return;
        if (merge)
            Displace(dest, count);
        for (const auto& [key, element] : source.elements)
            if (key.first >= start && key.first < start + count)
                At(key.first - start + dest) = element;
    }
};

struct Pair {
    VariableHold real = New();
    Model model = {};
};

void Change(Input& input, Pair& to, const Pair& from) {
    Variable& real = *to.real;
    Model& model = to.model;
    const int number = input.Between(0, 12);
    const int start = input.Between(0, 8);
    const int count = input.Between(-1, 6);
    const bool flag = input.Below(2);
    const bool is_array = model.type == AGGREGATE_ARRAY;
    const std::pair key(is_array ? number : -1, is_array ? "" : "a");
    Variable* const own = real.Element(is_array ? AggregateIndex(number) : Name("A"), 0);
    const Model part = own ? model.elements.at(key) : Model();
    const Model copied = flag ? from.model : Model{AGGREGATE_NONE, std::to_string(number), {}};
    const VariableHold copy = flag ? VariableHold(new Variable(*from.real)) : New(copied.text.c_str());
    switch (const int choice = input.Between(0, 10)) {
    case 0: real.SetValue(*copy), model = copied; break;
    case 1: real.SetElement(number, copy.get()), model.At(number) = copied; break;
    case 2:
        real.Element(Name(number % 2 ? "ab" : "A"), 1)->SetValue(*copy);
        model.At(-1, number % 2 ? "ab" : "a") = copied;
        break;
    case 3: real.InsertElement(number - 2, copy.get()), model.Insert(number - 2, copied); break;
    case 4:
        // This can lose the order of the tree; it doesn't when the next element was looked up before.
        if (const int next = real.Next(number); next > 0)
            (void)real.Element(next, 0);
        real.DeleteElement(number, flag);
        if (is_array)
            model.Delete(number, 1, flag);
        break;
    case 5:
        CHECK(real.CollapseElements() == (is_array ? static_cast<int>(model.elements.size()) : 0));
        if (is_array)
            model.Collapse();
        if (start < 1)
            break;
        real.DeleteElements(start, count, flag); // without gaps this keeps the order
        model.Become(AGGREGATE_ARRAY);
        model.Delete(start, count, flag);
        break;
    case 6: // What is given hangs on what goes.
        if (own && flag)
            real.SetValue(*own), model = Model(part);
        else if (own && is_array)
            real.SetElement(Name("a"), own), model.At(-1, "a") = part;
        else if (own)
            real.InsertElement(1, own), model.Insert(1, part);
        break;
    case 7: // What is set hangs on what is given.
        if (own)
            own->SetValue(*from.real), model.elements[key] = Model(from.model);
        break;
    default:
        const auto take = choice == 8 ? &Variable::MergeElements : &Variable::CopyElements;
        const bool takes_own = own && !is_array && flag;
        (real.*take)(takes_own ? own : from.real.get(), start, count, number, true);
        model.Take(takes_own ? part : from.model, start, count, number, choice == 8);
    }
}

void Compare(Input& input, Variable& real, const Model& model) {
    const int number = input.Between(0, 12);
    if (model.type != AGGREGATE_NONE)
        real.Convert_String(); // what was converted isn't read
    CHECK(Text(real) == model.Text() && real.aggregatetype() == model.type);
    CHECK(real.ElementsUsed() == static_cast<int>(model.elements.size()));
    CHECK(real.Max() == model.Max() && real.Min() == model.Min());
    CHECK((real.Element(number, 0) != nullptr) == model.elements.contains({number, ""}));
    CHECK(real.Next(number) == model.Next(number) && real.Previous(number) == model.Previous(number));
}

void Try_Elements(Input input) {
    Pair pairs[3], locked{VariableHold(new ImmutableVariable)};
    auto& immutable = static_cast<ImmutableVariable&>(*locked.real);
    pairs[2].real.reset(new ReferenceVariable("r", 1, New().get()));
    for (int step = 0; input.More(); ++step) {
        Pair& to = input.One_Of(pairs);
        Change(input, to, input.One_Of(pairs));
        Compare(input, *to.real, to.model);
        if (step % 16 == 0) { // what is locked stays as it is, whatever is done to it
            immutable.Unlock();
            immutable.SetValue(*to.real);
            immutable.Lock();
            locked.model = to.model;
        }
        const Model kept = locked.model;
        Change(input, locked, to);
        Compare(input, immutable, locked.model = kept);
        if (to.model.Text().size() > 200) {
            step % 2 ? to.real->SetNULL() : to.real->Convert_Aggregate(AGGREGATE_NONE);
            to.model = Model();
            CHECK(to.real->IsNULL());
        }
    }
}

const char* const first_names[] = {"name0", "name1", "name2"};

// A table that holds the first names as their own values, and slots of its own for no others. Scopes are of
// the table with them; what they recorded is put back in this order.
void Try_Table(Input input, VariableHash& real, bool scoped) {
    using Content = std::optional<std::string>;
    std::map<std::string, int> slots;
    std::vector<Content> contents;
    std::vector<std::vector<std::pair<int, Content>>> scopes;
    const auto store = [&](const std::string& name, const Content& content) {
        const auto [place, is_new] = slots.try_emplace(name, static_cast<int>(contents.size()));
        if (is_new)
            contents.emplace_back();
        if (!scopes.empty())
            scopes.back().emplace_back(place->second, contents[place->second]);
        contents[place->second] = content;
    };
    for (const char* const name : first_names)
        store(name, name);
    for (int step = 0; input.More(); ++step) {
        const std::string key = "name" + std::to_string(input.Below(20)), value = std::to_string(step);
        const char* const name = key.c_str();
        const auto place = slots.find(key);
        Content* const there = place == slots.end() ? nullptr : &contents[place->second];
        const bool has_value = there && *there;
        switch (input.Below(9)) {
        case 0: real.SetVariable(new Variable(name, -1, value.c_str(), -1)), store(key, value); break;
        case 1:
            if (!scopes.empty() || !there)
                real.Insert(name, -1), store(key, std::nullopt);
            break;
        case 2:
            real.SetVariable(name, -1, value.c_str(), -1);
            has_value ? void(*there = value) : store(key, value); // in place, which no scope takes back
            break;
        case 3:
            Look(real, name, 1);
            if (there && !has_value)
                store(key, "");
            break;
        case 4:
            if (there) {
                VariableHash& numbered = place->second < 3 ? real : *real.RealIdentity();
                numbered.SetVariable_Reference(place->second, New(value.c_str()).get());
                store(key, value);
            }
            break;
        case 5:
            CHECK(real.ClearVariable(name, -1) == has_value);
            if (has_value)
                *there = "";
            break;
        case 6: real.Push(), scopes.resize(scopes.size() + scoped); break;
        default:
            CHECK(real.Pop() == !scopes.empty());
            if (scopes.empty())
                break;
            for (const auto& [slot, content] : scopes.back())
                contents[slot] = content;
            scopes.pop_back();
        }
        const auto now = slots.find(key);
        CHECK(Look(real, name) == (now == slots.end() ? "none" : contents[now->second].value_or("-")));
        CHECK(real.Entries() == static_cast<int>(contents.size()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Dictionary names;
    UserVariableHash plain;
    SystemVariableHash system(&names, 4, 0);
    for (const char* const name : first_names)
        plain.SetVariable(name, -1, name, -1), system.SetVariable(name, -1, name, -1);
    ClonedVariableHash clone(nullptr, plain.dictionary(), plain, true); // holds its variables itself
    ClonedVariableHash view(nullptr, &names, system, true);             // looks through to what has scopes
    VariableHash* const tables[] = {&plain, &clone, &system, &view};
    const unsigned choice = input.Below(10);
    if (choice < 4)
        Try_Table(input, *tables[choice], choice >= 2);
    else
        Try_Elements(input);
    for (const char* const name : first_names) {
        CHECK(choice == 0 || (plain.Entries() == 3 && Look(plain, name) == name));
        CHECK(choice == 2 || (system.Entries() == 3 && Look(system, name) == name));
    }
    return 0;
}
