// Random operations on a few variables, against a plain model that has no trees, counts or cached forms.

#include "value_fixture.h"

#include <algorithm>
#include <map>
#include <random>

namespace {

struct Model {
    AggregateType type = AGGREGATE_NONE;
    std::string text;
    std::map<int, Model> array;
    std::map<std::string, Model> members; // by their names in lower case

    static Model Scalar(const std::string& text) { return {AGGREGATE_NONE, text, {}, {}}; }
    void Become(AggregateType wanted) {
        if (type != wanted)
            *this = Model{wanted, "", {}, {}};
    }
    int Edge(bool last) const {
        if (!members.empty())
            return -1;
        return array.empty() ? 0 : last ? array.rbegin()->first : array.begin()->first;
    }
    int Next(int number) const {
        auto next = array.upper_bound(number);
        return type == AGGREGATE_STRUCTURE ? -1 : next == array.end() ? 0 : next->first;
    }
    void Serialize(std::string& out) const {
        if (type == AGGREGATE_NONE)
            out += (out.empty() ? "" : ",") + text;
        for (const auto& [number, element] : array)
            element.Serialize(out);
        for (const auto& [name, element] : members)
            element.Serialize(out);
    }
    std::string Text() const {
        std::string out;
        Serialize(out);
        return out;
    }
    void Displace(int from, int delta) {
        std::map<int, Model> moved;
        for (auto& [number, element] : array)
            moved[number < from ? number : number + delta] = element;
        array = moved;
    }
    void Insert(int position, const Model& element) {
        position = type == AGGREGATE_ARRAY && position < 1 ? Edge(true) + 1 : std::max(position, 1);
        Become(AGGREGATE_ARRAY);
        Displace(position, 1);
        array[position] = element;
    }
    void Delete(int start, int count, bool collapse) {
        const int end = count == -1 ? 1000 : start + count;
        array.erase(array.lower_bound(start), array.lower_bound(end));
        if (collapse && count > 0)
            Displace(end, -count);
    }
    // Merge and copy, with the whole source set aside before anything moves.
    void Take(const Model& from, int start, int count, int dest, bool merge) {
        const bool self = &from == this;
        Become(AGGREGATE_ARRAY);
        const Model source = self ? *this : from;
        if (start < 1)
            start = merge ? std::max(source.Edge(false), 1) : source.Edge(false);
        if (count < 0)
            count = source.Edge(true) < 1 ? 0 : source.Edge(true) - start + 1;
        if (dest < 1)
            dest = Edge(true) + 1;
        if (start < 1 || count < 1)
            return;
        if (merge)
            Displace(dest, count);
        if (source.type == AGGREGATE_ARRAY)
            for (const auto& [number, element] : source.array)
                if (number >= start && number < start + count)
                    array[number - start + dest] = element;
    }
};

} // namespace

class VariableModelTest : public ValueTest {
  protected:
    struct Pair {
        VariableHold real = New();
        Model model;
    };

    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    // Deleting an element can lose the order of the tree; it doesn't when the next one was looked up before.
    static void Delete(Variable& variable, int number, bool collapse) {
        if (int next = variable.Next(number); next > 0)
            (void)variable.Element(next, 0);
        variable.DeleteElement(number, collapse);
    }

    void Change(Pair& to, const Pair& from) {
        const int number = Pick(0, 12);
        const int start = Pick(0, 8);
        const int count = Pick(-1, 6);
        const bool flag = Pick(0, 1);
        const Model text = Model::Scalar(std::to_string(Pick(-3, 3)));
        const VariableHold element = New(text.text.c_str());
        switch (Pick(0, 11)) {
        case 0:
            to.real->SetValue_Integer(number);
            to.model = Model::Scalar(std::to_string(number));
            break;
        case 1:
            to.real->SetValue(*from.real);
            to.model = Model(from.model);
            break;
        case 2: {
            const Model copied = from.model;
            const VariableHold copy(new Variable(*from.real));
            to.real->SetElement(number, copy.get());
            to.model.Become(AGGREGATE_ARRAY);
            to.model.array[number] = copied;
            break;
        }
        case 3:
            to.real->Element(Name(flag ? "ab" : "A"), 1)->SetValue(*element);
            to.model.Become(AGGREGATE_STRUCTURE);
            to.model.members[flag ? "ab" : "a"] = text;
            break;
        case 4:
            to.real->InsertElement(number - 2, element.get());
            to.model.Insert(number - 2, text);
            break;
        case 5:
            Delete(*to.real, number, flag);
            if (to.model.type == AGGREGATE_ARRAY) {
                to.model.Delete(number, 1, flag);
            }
            break;
        case 6:
            if (start < 1)
                break;
            to.real->CollapseElements(); // without gaps the order stays, see above
            to.real->DeleteElements(start, count, flag);
            Collapse(to.model);
            to.model.Become(AGGREGATE_ARRAY);
            to.model.Delete(start, count, flag);
            break;
        case 7:
            EXPECT_EQ(to.real->CollapseElements(), static_cast<int>(to.model.array.size()));
            Collapse(to.model);
            break;
        case 8:
        case 9:
            to.real->MergeElements(from.real.get(), start, count, number, true);
            to.model.Take(from.model, start, count, number, true);
            break;
        default:
            to.real->CopyElements(from.real.get(), start, count, number, true);
            to.model.Take(from.model, start, count, number, false);
        }
    }

    static void Collapse(Model& model) {
        std::map<int, Model> renumbered;
        for (auto& [number, element] : model.array)
            renumbered.emplace(static_cast<int>(renumbered.size()) + 1, element);
        model.array = renumbered;
    }

    void Compare(const Pair& pair) {
        Variable& real = *pair.real;
        ASSERT_EQ(Text(real), pair.model.Text());
        ASSERT_EQ(real.aggregatetype(), pair.model.type);
        ASSERT_EQ(real.ElementsUsed(), static_cast<int>(pair.model.array.size() + pair.model.members.size()));
        ASSERT_EQ(real.Max(), pair.model.Edge(true));
        ASSERT_EQ(real.Min(), pair.model.Edge(false));
        const int number = Pick(0, 12);
        ASSERT_EQ(real.Next(number), pair.model.Next(number));
        ASSERT_EQ(real.Element(number, 0) != nullptr, pair.model.array.count(number) > 0);
    }

    std::mt19937 random{20};
};

TEST_F(VariableModelTest, Random_Operations_Agree) {
    Pair pairs[3];
    for (int step = 0; step < 20000 && !HasFatalFailure(); step++) {
        Pair& to = pairs[Pick(0, 2)];
        Change(to, pairs[Pick(0, 2)]);
        Compare(to);
        if (to.model.Text().size() > 200) {
            to.real->SetNULL();
            to.model = Model();
        }
    }
}
