// Random operations on a few variables, against a plain model that has no trees, counts or cached forms.

#include "value_fixture.h"

#include <algorithm>
#include <map>
#include <random>
#include <utility>

namespace {

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
        Variable& real = *to.real;
        Model& model = to.model;
        const int number = Pick(0, 12);
        const int start = Pick(0, 8);
        const int count = Pick(-1, 6);
        const bool flag = Pick(0, 1);
        const Model copied = flag ? from.model : Model::Scalar(std::to_string(number));
        const VariableHold copy(flag ? new Variable(*from.real) : New(copied.text.c_str()).release());
        switch (Pick(0, 8)) {
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
            EXPECT_EQ(real.CollapseElements(), model.Min() < 0 ? 0 : static_cast<int>(model.elements.size()));
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

    void Compare(Variable& real, const Model& model) {
        ASSERT_EQ(Text(real), model.Text());
        ASSERT_EQ(real.aggregatetype(), model.type);
        ASSERT_EQ(real.ElementsUsed(), static_cast<int>(model.elements.size()));
        ASSERT_EQ(real.Max(), model.Max());
        ASSERT_EQ(real.Min(), model.Min());
        const int number = Pick(0, 12);
        ASSERT_EQ(real.Element(number, 0) != nullptr, model.elements.count({number, ""}) > 0);
        const auto next = model.elements.lower_bound({number + 1, ""});
        const int next_number = next == model.elements.end() ? 0 : next->first.first;
        ASSERT_EQ(real.Next(number), model.type == AGGREGATE_STRUCTURE ? -1 : next_number);
    }

    std::mt19937 random{20};
};

TEST_F(VariableModelTest, Random_Operations_Agree) {
    Pair pairs[3];
    for (int step = 0; step < 20000 && !HasFatalFailure(); ++step) {
        Pair& to = pairs[Pick(0, 2)];
        Change(to, pairs[Pick(0, 2)]);
        Compare(*to.real, to.model);
        if (to.model.Text().size() > 200) {
            to.real->SetNULL();
            to.model = Model();
        }
    }
}
