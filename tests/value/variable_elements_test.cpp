#include "core/list.h"
#include "value/aggregate.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/value_support.h"
#include "value/variable_list.h"

#include <climits>
#include <gtest/gtest.h>

TEST(Elements, Indices_Sort_And_Read) {
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

TEST(Elements, No_Element_Goes_Beyond_The_Highest_Index) {
    VariableHold array = Make("a");
    array->Element(INT_MAX, 1)->SetValue("z", 1);
    for (int position : {0, 1})
        array->InsertElement(position, New("v").get());
    for (int dest : {0, 1})
        array->MergeElements(array.get(), 1, INT_MAX, dest, true);
    EXPECT_EQ(Elements(*array), "[1]a[2147483647]z");
    array->DeleteElement(INT_MAX, true);
    array->DeleteElements(2, INT_MAX, true);
    array->Element(INT_MAX, 1);
    array->DeleteElements(INT_MAX, -1, true);
    EXPECT_EQ(array->CollapseElements(), 1);
}

// Removing an element can leave greater keys ahead of lesser ones: what a tree then finds, and the order in
// which it is read, follow from the shape that every step before has left.
TEST(Elements, Each_Step_Leaves_Its_Shape) {
    const struct {
        std::string inserted; // as they come, 1 with the value a
        int position;         // inserted at or, if negative, merged from within the array
        int looked_up, deleted;
        const char* text;
    } cases[] = {
        {"3241", 4, 4, 2, "a,v,d,c"}, {"3241", 0, 4, 2, "a,d,v,c"}, {"54123", -5, 3, 4, "e,a,b,d,e"}};
    for (const auto& [inserted, position, looked_up, deleted, text] : cases) {
        VariableHold array = New();
        for (const char digit : inserted)
            array->Element(digit - '0', 1)->SetValue(&"abcde"[digit - '1'], 1);
        if (position < 0)
            array->MergeElements(array.get(), -position, 1, 1, true);
        (void)array->Element(looked_up, 0);
        array->DeleteElement(deleted, false);
        if (position >= 0)
            array->InsertElement(position, New("v").get());
        EXPECT_EQ(Text(array), text);
        New()->MergeElements(array.get(), 1, 9, 1, true); // loops over such a tree end
        New()->CopyElements(array.get(), 1, 9, 1, true);
    }
}

// A copy of more than 99 elements has another shape, and loses its order elsewhere.
TEST(Elements, Copies_Have_The_Shape_Of_Trees) {
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

TEST(Elements, Elements_Are_Shared_Unless_Cloned) {
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
    array->Element(1, 0)->Element(1, 1)->SetValue("in", 2);
    array->SetElement(1, array->Element(1, 0)->Element(1, 0)); // which hangs on what goes
    EXPECT_EQ(Elements(*array), "[1]in[2]b");
    array->SetValue(array->Element(1, 0)->value().text(), -1);
    EXPECT_EQ(Text(array), "in");
}

TEST(Elements, Large_Arrays_And_Deep_Ones_Take_No_Stack) {
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

TEST(Elements, Lists_Count_Variables) {
    VariableHold a = New("a");
    auto* list = new VariableList;
    list->Insert(a.get(), LIST_LAST);
    list->Insert(Hold(a.get()).release(), LIST_FIRST, 0);
    EXPECT_EQ(a->refcount(), 3);
    VariableHold(list->Remove(LIST_FIRST)).reset();
    EXPECT_EQ(a->refcount(), 2);
    list->Destroy();
    EXPECT_EQ(a->refcount(), 1);
}
