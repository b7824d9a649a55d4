#include "core/list.h"
#include "value/aggregate.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/variable_list.h"
#include "value_fixture.h"

#include <algorithm>
#include <climits>
#include <map>
#include <random>
#include <utility>

namespace {

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

} // namespace

class ElementsTest : public ValueTest {
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
        const auto from = model.elements.lower_bound({number, ""});
        const int previous = from == model.elements.begin() ? 0 : std::prev(from)->first.first;
        ASSERT_EQ(real.Previous(number), model.type == AGGREGATE_STRUCTURE ? -1 : previous);
    }

    std::mt19937 random{20};
};

TEST_F(ElementsTest, Random_Operations_Agree_With_A_Model) {
    Pair pairs[3], locked{VariableHold(new ImmutableVariable), {}};
    pairs[2].real.reset(new ReferenceVariable("r", 1, New().get()));
    for (int step = 0; step < 20000 && !HasFatalFailure(); ++step) {
        Pair& to = pairs[Pick(0, 2)];
        Change(to, pairs[Pick(0, 2)]);
        Compare(*to.real, to.model);
        if (step % 100 == 0) { // what is locked stays as it is, whatever is done to it
            static_cast<ImmutableVariable&>(*locked.real).Unlock();
            locked.real->SetValue(*to.real);
            static_cast<ImmutableVariable&>(*locked.real).Lock();
            locked.model = to.model;
        }
        const Model kept = locked.model;
        Change(locked, to);
        Compare(*locked.real, locked.model = kept);
        if (to.model.Text().size() > 200) {
            step % 2 ? to.real->SetNULL() : to.real->Convert_Aggregate(AGGREGATE_NONE);
            to.model = Model();
            ASSERT_TRUE(to.real->IsNULL());
        }
    }
}

TEST_F(ElementsTest, Indices_Sort_And_Read) {
    const AggregateIndex ordered[] = {Name("A"), Name("ab"), Name("AC"), Name("acd"), {0}, {2}, {10}};
    for (int i = 0; i < 7; ++i)
        for (int j = 0; j < 7; ++j)
            EXPECT_EQ(ordered[i].Compare(ordered[j]), (j > i) - (j < i)) << i << " " << j;
    EXPECT_EQ(Name("Name").Compare(Name("nAME")), 0);
    AggregateIndex number(-3);
    EXPECT_EQ(number.serialized().view(), "[0]");
    number.Renumber(12);
    EXPECT_EQ(number.serialized().view(), "[12]");
    EXPECT_EQ(static_cast<String&>(number).view(), "12");
    EXPECT_EQ(Name("Member").serialized().view(), ":Member");
}

TEST_F(ElementsTest, No_Element_Goes_Beyond_The_Highest_Index) {
    VariableHold array = Make("a");
    array->Element(INT_MAX, 1)->SetValue("z", 1);
    for (int position : {0, 1})
        array->InsertElement(position, New("v").get());
    for (int dest : {0, 1})
        array->MergeElements(array.get(), 1, INT_MAX, dest, true);
    EXPECT_EQ(Elements(array), "1=a 2147483647=z");
    array->DeleteElement(INT_MAX, true);
    array->DeleteElements(2, INT_MAX, true);
    EXPECT_EQ(array->CollapseElements(), 1);
}

// Removing an element can leave greater keys ahead of lesser ones: what a tree then finds, and the order in
// which it is read, follow from the shape that every step before has left.
TEST_F(ElementsTest, Each_Step_Leaves_Its_Shape) {
    const struct {
        const char* inserted; // as they come, 1 with the value a
        int position;         // inserted at or, if negative, merged from within the array
        int looked_up;
        int deleted;
        const char* text;
    } cases[] = {
        {"3241", 4, 4, 2, "a,v,d,c"}, {"3241", 0, 4, 2, "a,d,v,c"}, {"54123", -5, 3, 4, "e,a,b,d,e"}};
    for (const auto& c : cases) {
        VariableHold array = New();
        for (const char* digit = c.inserted; *digit; ++digit) {
            const char letter = static_cast<char>('a' + *digit - '1');
            array->Element(*digit - '0', 1)->SetValue(&letter, 1);
        }
        if (c.position < 0)
            array->MergeElements(array.get(), -c.position, 1, 1, true);
        (void)array->Element(c.looked_up, 0);
        array->DeleteElement(c.deleted, false);
        if (c.position >= 0)
            array->InsertElement(c.position, New("v").get());
        EXPECT_EQ(Text(array), c.text);
    }
}

// A copy of more than 99 elements has another shape, and loses its order elsewhere.
TEST_F(ElementsTest, Copies_Have_The_Shape_Of_Trees) {
    for (const int count : {99, 100}) {
        const VariableHold outer = New();
        for (int i = 1; i <= count; ++i)
            outer->Element(1, 1)->Element(i, 1);
        const VariableHold copy(new Variable(*outer->Element(1, 0)));
        const VariableHold deep(new Variable(*outer));
        for (Variable* array : {copy.get(), deep->Element(1, 0)}) {
            (void)array->Element(count, 0);
            array->DeleteElement(3, false);
            EXPECT_EQ(array->Max(), 99) << count;
        }
    }
}

TEST_F(ElementsTest, Elements_Are_Shared_Unless_Cloned) {
    VariableHold array = Make("ab");
    VariableHold element = Hold(array->Element(1, 0));
    EXPECT_EQ(element->refcount(), 2);
    VariableHold other = New();
    other->MergeElements(array.get(), 1, 1, 1, false);
    EXPECT_EQ(other->Element(1, 0), element.get());
    other->CopyElements(array.get(), 1, 1, 2, true);
    EXPECT_NE(other->Element(2, 0), element.get());
    EXPECT_EQ(element->refcount(), 3);
    array->CopyElements(array.get(), 1, 1, 1, false);
    EXPECT_EQ(array->Element(1, 0), element.get());
    array->CopyElements(array.get(), 1, 1, 1, true);
    other.reset();
    EXPECT_EQ(element->refcount(), 1);
}

TEST_F(ElementsTest, Stored_Variable_May_Hang_On_What_Is_Dropped) {
    VariableHold array = Make("ab");
    Variable* element = array->Element(2, 0);
    array->SetElement(Name("m"), element);
    EXPECT_EQ(array->Element(Name("m"), 0), element);
    array->InsertElement(1, element);
    EXPECT_EQ(Elements(array), "1=b");
    array->Element(1, 0)->Element(1, 1)->SetValue("in", 2);
    array->SetElement(1, array->Element(1, 0)->Element(1, 0));
    EXPECT_EQ(Elements(array), "1=in");
    VariableHold outer = New();
    outer->Element(Name("x"), 1)->SetValue(*Make("pq"));
    outer->MergeElements(outer->Element(Name("x"), 0), 1, -1, 1, false);
    EXPECT_EQ(Elements(outer), "1=p 2=q");
}

TEST_F(ElementsTest, Large_Arrays_And_Deep_Ones_Take_No_Stack) {
    const int count = 100000;
    VariableHold array = New();
    for (int i = count; i > 0; --i)
        array->Element(i, 1); // as a list along one side
    VariableHold copy(new Variable(*array));
    copy->InsertElement(1, New("first").get());
    EXPECT_EQ(copy->Max(), count + 1);
    EXPECT_EQ(copy->Next(count), count + 1);
    EXPECT_EQ(copy->CollapseElements(), count + 1);
    EXPECT_EQ(Text(copy).substr(0, 6), "first,");
    VariableHold deep = New();
    Variable* inner = deep.get();
    for (int i = 0; i < count; ++i)
        inner = inner->Element(i % 2 ? AggregateIndex(1) : Name("m"), 1);
    inner->SetValue("leaf", 4);
    EXPECT_EQ(Text(*VariableHold(new Variable(*deep))), "leaf");
}

TEST_F(ElementsTest, Lists_Count_Variables) {
    VariableHold a = New("a");
    auto* list = new VariableList;
    list->Insert(a.get(), LIST_LAST);
    list->Insert(a.get(), LIST_FIRST);
    list->Insert(New("b").release(), LIST_LAST, 0);
    EXPECT_EQ(a->refcount(), 3);
    EXPECT_EQ(list->Remove(LIST_FIRST), a.get());
    a->DecRefCount();
    EXPECT_EQ(a->refcount(), 2);
    list->Destroy();
    EXPECT_EQ(a->refcount(), 1);
}
