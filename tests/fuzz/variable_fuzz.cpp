// Variables, aggregates and tables of variables beside models of them. The first byte chooses which.
#include "app/services/tarn_application.h"
#include "image/dictionary.h"
#include "input.h"
#include "value/aggregate.h"
#include "value/cloned_variable_hash.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/system_variable_hash.h"
#include "value/user_variable_hash.h"

#include <map>
#include <mpdecimal.h>
#include <optional>
#include <utility>
#include <vector>

namespace {

std::string Text(Variable& variable) {
    return std::string(variable.value().view());
}

AggregateIndex Name(const char* name) {
    return {name, -1};
}

// A variable without trees, counts or cached forms.
struct Model {
    AggregateType type = AGGREGATE_NONE;
    std::string text;
    std::map<std::pair<int, std::string>, Model> elements; // by number, or by -1 and the name in lower case

    static Model Scalar(const std::string& text) { return {AGGREGATE_NONE, text, {}}; }
    Model& At(int number, const std::string& name) {
        Become(number < 0 ? AGGREGATE_STRUCTURE : AGGREGATE_ARRAY);
        return elements[{number, name}];
    }
    void Become(AggregateType wanted) {
        if (type != wanted)
            *this = {wanted, "", {}};
    }
    int Min() const { return elements.empty() ? 0 : elements.begin()->first.first; }
    int Max() const { return elements.empty() ? 0 : elements.rbegin()->first.first; }
    std::string Text(std::string before = "") const {
        if (type == AGGREGATE_NONE)
            before += (before.empty() ? "" : ",") + text;
        for (const auto& [key, element] : elements)
            before = element.Text(before);
        return before;
    }
    void Displace(int from, int delta) {
        std::map<std::pair<int, std::string>, Model> moved;
        for (const auto& [key, element] : elements)
            moved[{key.first < from ? key.first : key.first + delta, ""}] = element;
        elements = moved;
    }
    void Insert(int position, const Model& element) {
        position = type == AGGREGATE_ARRAY && position < 1 ? Max() + 1 : std::max(position, 1);
        Become(AGGREGATE_ARRAY);
        Displace(position, 1);
        At(position, "") = element;
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
    void Take(const Model& from, int start, int count, int dest, bool merge) {
        Become(AGGREGATE_ARRAY);
        const Model source = from;
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
                At(key.first - start + dest, "") = element;
    }
};

struct Pair {
    VariableHold real{new Variable};
    Model model;
};

// Deleting an element can lose the order of the tree; it doesn't when the next one was looked up before.
void Delete(Variable& variable, int number, bool collapse) {
    if (int next = variable.Next(number); next > 0)
        (void)variable.Element(next, 0);
    variable.DeleteElement(number, collapse);
}

void Change(Input& input, Pair& to, const Pair& from) {
    Variable& real = *to.real;
    Model& model = to.model;
    const int number = input.Between(0, 12);
    const int start = input.Between(0, 8);
    const int count = input.Between(-1, 6);
    const bool flag = input.Below(2);
    const Model copied = flag ? from.model : Model::Scalar(std::to_string(number));
    const VariableHold copy(flag ? new Variable(*from.real) : new Variable("", 0, copied.text.c_str(), -1));
    switch (input.Between(0, 8)) {
    case 0:
        real.SetValue(*copy);
        model = copied;
        break;
    case 1:
        real.SetElement(number, copy.get());
        model.At(number, "") = copied;
        break;
    case 2:
        real.Element(Name(number % 2 ? "ab" : "A"), 1)->SetValue(*copy);
        model.At(-1, number % 2 ? "ab" : "a") = copied;
        break;
    case 3:
        real.InsertElement(number - 2, copy.get());
        model.Insert(number - 2, copied);
        break;
    case 4:
        Delete(real, number, flag);
        if (model.type == AGGREGATE_ARRAY)
            model.Delete(number, 1, flag);
        break;
    case 5:
        CHECK(real.CollapseElements() == (model.Min() < 0 ? 0 : static_cast<int>(model.elements.size())));
        if (model.type == AGGREGATE_ARRAY)
            model.Collapse();
        if (start < 1)
            break;
        real.DeleteElements(start, count, flag); // without gaps this keeps the order
        model.Become(AGGREGATE_ARRAY);
        model.Delete(start, count, flag);
        break;
    case 6:
        real.MergeElements(from.real.get(), start, count, number, true);
        model.Take(from.model, start, count, number, true);
        break;
    default:
        real.CopyElements(from.real.get(), start, count, number, true);
        model.Take(from.model, start, count, number, false);
    }
}

void Compare(Input& input, Variable& real, const Model& model) {
    CHECK(Text(real) == model.Text());
    CHECK(real.aggregatetype() == model.type);
    CHECK(real.ElementsUsed() == static_cast<int>(model.elements.size()));
    CHECK(real.Max() == model.Max());
    CHECK(real.Min() == model.Min());
    const int number = input.Between(0, 12);
    CHECK((real.Element(number, 0) != nullptr) == model.elements.contains({number, ""}));
    const auto next = model.elements.lower_bound({number + 1, ""});
    const int next_number = next == model.elements.end() ? 0 : next->first.first;
    CHECK(real.Next(number) == (model.type == AGGREGATE_STRUCTURE ? -1 : next_number));
    const auto from = model.elements.lower_bound({number, ""});
    const int previous = from == model.elements.begin() ? 0 : std::prev(from)->first.first;
    CHECK(real.Previous(number) == (model.type == AGGREGATE_STRUCTURE ? -1 : previous));
}

void Try_Elements(Input input) {
    Pair pairs[3], locked{VariableHold(new ImmutableVariable), {}};
    pairs[2].real.reset(new ReferenceVariable("r", 1, VariableHold(new Variable).get()));
    for (int step = 0; input.More(); ++step) {
        Pair& to = input.One_Of(pairs);
        Change(input, to, input.One_Of(pairs));
        Compare(input, *to.real, to.model);
        if (step % 16 == 0) { // what is locked stays as it is, whatever is done to it
            static_cast<ImmutableVariable&>(*locked.real).Unlock();
            locked.real->SetValue(*to.real);
            static_cast<ImmutableVariable&>(*locked.real).Lock();
            locked.model = to.model;
        }
        const Model kept = locked.model;
        Change(input, locked, to);
        Compare(input, *locked.real, locked.model = kept);
        if (to.model.Text().size() > 200) {
            step % 2 ? to.real->SetNULL() : to.real->Convert_Aggregate(AGGREGATE_NONE);
            to.model = Model();
            CHECK(to.real->IsNULL());
        }
    }
}

// Of a name: its variable's text, "-" without a variable, "none" without a slot.
std::string Look(VariableHash& table, const char* name, int create = 0) {
    Variable* variable = nullptr;
    if (!table.Find(&variable, name, -1, create))
        return "none";
    return variable ? Text(*variable) : "-";
}

// Scopes are of the table with them; what they recorded is put back in this order.
void Try_Table(Input input, VariableHash& real, bool scoped) {
    using Content = std::optional<std::string>;
    std::map<std::string, int> slots;
    std::vector<Content> contents;
    std::vector<std::vector<std::pair<int, Content>>> scopes;
    auto store = [&](const std::string& name, const Content& content) {
        const auto [place, is_new] = slots.try_emplace(name, static_cast<int>(contents.size()));
        if (is_new)
            contents.emplace_back();
        if (!scopes.empty())
            scopes.back().emplace_back(place->second, contents[place->second]);
        contents[place->second] = content;
    };
    for (int step = 0; input.More(); ++step) {
        const std::string name = "name" + std::to_string(input.Below(20));
        const std::string value = std::to_string(step);
        const auto place = slots.find(name);
        Content* there = place == slots.end() ? nullptr : &contents[place->second];
        const bool has_value = there && *there;
        switch (input.Below(9)) {
        case 0:
            real.SetVariable(new Variable(name.c_str(), -1, value.c_str(), -1)), store(name, value);
            break;
        case 1:
            if (!scopes.empty() || !there)
                real.Insert(name.c_str(), -1), store(name, std::nullopt);
            break;
        case 2:
            real.SetVariable(name.c_str(), -1, value.c_str(), -1);
            has_value ? void(*there = value) : store(name, value); // in place, which no scope takes back
            break;
        case 3:
            Look(real, name.c_str(), 1);
            if (there && !has_value)
                store(name, "");
            break;
        case 4:
            if (there)
                real.SetVariable_Reference(place->second, VariableHold(new Variable("", 0, step)).get()),
                    store(name, value);
            break;
        case 5:
            CHECK(real.ClearVariable(name.c_str(), -1) == has_value);
            if (has_value)
                *there = "";
            break;
        case 6:
            real.Push();
            scopes.resize(scopes.size() + scoped);
            break;
        default:
            CHECK(real.Pop() == !scopes.empty());
            if (scopes.empty())
                break;
            for (const auto& [slot, content] : scopes.back())
                contents[slot] = content;
            scopes.pop_back();
        }
        const auto now = slots.find(name);
        CHECK(Look(real, name.c_str()) ==
              (now == slots.end() ? "none" : contents[now->second].value_or("-")));
        CHECK(real.Entries() == static_cast<int>(contents.size()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Input input(data, size);
    UserVariableHash table;
    Dictionary dictionary;
    switch (input.Below(8)) {
    case 0: Try_Table(input, table, false); break;
    case 1: { // holds its variables itself
        ClonedVariableHash clone(nullptr, &dictionary, table, true);
        Try_Table(input, clone, false);
        CHECK(clone.RealIdentity() == &clone && table.Entries() == 0);
        break;
    }
    case 2: {
        SystemVariableHash system(&dictionary, 4, 0);
        Try_Table(input, system, true);
        break;
    }
    default: Try_Elements(input);
    }
    return 0;
}
