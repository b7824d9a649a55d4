#include "core/list.h"
#include "value/aggregate.h"
#include "value/variable_list.h"
#include "value_fixture.h"

#include <climits>
#include <functional>

class ElementsTest : public ValueTest {};

TEST_F(ElementsTest, Indices_Sort_And_Read) {
    const struct {
        AggregateIndex low;
        AggregateIndex high;
    } ordered[] = {{{2}, {10}}, {Name("a"), Name("B")}, {Name("AB"), Name("abc")}, {Name("z"), {0}}};
    for (const auto& [low, high] : ordered) {
        EXPECT_LT(high.Compare(low), 0);
        EXPECT_GT(low.Compare(high), 0);
    }
    EXPECT_EQ(Name("Name").Compare(Name("nAME")), 0);
    AggregateIndex number(-3);
    EXPECT_EQ(number.Number(), 0);
    EXPECT_EQ(number.serialized().view(), "[0]");
    EXPECT_EQ(static_cast<String&>(number).view(), "0");
    number.Renumber(12);
    EXPECT_EQ(number.serialized().view(), "[12]");
    EXPECT_EQ(static_cast<String&>(number).view(), "12");
    AggregateIndex member = Name("Member");
    EXPECT_EQ(member.serialized().view(), ":Member");
    EXPECT_EQ(member.Kind(), AGGREGATE_STRUCTURE);
}

TEST_F(ElementsTest, Element_Makes_An_Aggregate_Of_The_Kind) {
    VariableHold variable = New("text");
    EXPECT_EQ(variable->Element(1, 0), nullptr);
    EXPECT_EQ(Text(variable), "text");
    Variable* first = variable->Element(Name("a"), 1);
    EXPECT_EQ(variable->aggregatetype(), AGGREGATE_STRUCTURE);
    EXPECT_EQ(variable->Element(Name("A"), 1), first);
    EXPECT_EQ(Text(variable), "");
    EXPECT_EQ(variable->Element(1, 0), nullptr);
    EXPECT_EQ(variable->Max(), -1);
    EXPECT_EQ(variable->Next(0), -1);
    variable->Element(0, 1);
    EXPECT_EQ(variable->aggregatetype(), AGGREGATE_ARRAY);
    variable->Element(1, 1);
    EXPECT_EQ(variable->ElementsUsed(), 2);
    EXPECT_EQ(variable->Next(0), 1);
    EXPECT_EQ(variable->Next(1), 0);
    EXPECT_EQ(variable->Previous(1), 0);
    variable->Convert_Aggregate(AGGREGATE_NONE);
    EXPECT_TRUE(variable->IsNULL());
    EXPECT_EQ(variable->Next(0), 0);
    EXPECT_EQ(variable->Max(), 0);
    EXPECT_EQ(variable->ElementsUsed(), 0);
}

TEST_F(ElementsTest, Arrays_Change_As_Told) {
    const struct {
        const char* what;
        VariableHold array;
        std::function<void(Variable&)> change;
        const char* result;
    } cases[] = {
        {"insert in the middle", Array({"a", "b", "c"}),
         [](Variable& a) { a.InsertElement(2, New("v").get()); }, "1=a 2=v 3=b 4=c"},
        {"insert at 0 appends", Array({"a", "", "c"}),
         [](Variable& a) { a.InsertElement(0, New("v").get()); }, "1=a 3=c 4=v"},
        {"insert beyond the end", Array({"a"}), [](Variable& a) { a.InsertElement(5, New("v").get()); },
         "1=a 5=v"},
        {"insert into a scalar", New("x"), [](Variable& a) { a.InsertElement(-1, New("v").get()); }, "1=v"},
        {"insert keeps its place", New("x"), [](Variable& a) { a.InsertElement(4, New("v").get()); }, "4=v"},
        {"delete", Array({"a", "b", "c"}), [](Variable& a) { a.DeleteElement(2, false); }, "1=a 3=c"},
        {"delete and collapse", Array({"a", "b", "c"}), [](Variable& a) { a.DeleteElement(2, true); },
         "1=a 2=c"},
        {"collapse what isn't there", Array({"a", "", "c"}), [](Variable& a) { a.DeleteElement(2, true); },
         "1=a 2=c"},
        {"delete by name", Array({"a"}), [](Variable& a) { a.DeleteElement(Name("1"), true); }, "1=a"},
        {"delete the rest", Array({"a", "b", "c"}), [](Variable& a) { a.DeleteElements(2, -1, false); },
         "1=a"},
        {"delete a range", Array({"a", "b", "c", "d"}), [](Variable& a) { a.DeleteElements(2, 2, false); },
         "1=a 4=d"},
        {"and collapse", Array({"a", "b", "c", "d"}), [](Variable& a) { a.DeleteElements(2, 2, true); },
         "1=a 2=d"},
        {"delete from 0", Array({"a", "b"}), [](Variable& a) { a.DeleteElements(0, 2, true); }, "1=a 2=b"},
        {"delete too many", Array({"a", "b"}), [](Variable& a) { a.DeleteElements(2, INT_MAX, true); },
         "1=a"},
        {"delete none", Array({"a", "b"}), [](Variable& a) { a.DeleteElements(1, -7, true); }, "1=a 2=b"},
        {"delete of a scalar", New("x"), [](Variable& a) { a.DeleteElements(1, 1, true); }, ""},
        {"collapse", Array({"", "b", "", "", "e"}), [](Variable& a) { EXPECT_EQ(a.CollapseElements(), 2); },
         "1=b 2=e"},
        {"merge all at the end", Array({"a", "b"}), [](Variable& a) { a.MergeElements(&a, 0, -1, 0, true); },
         "1=a 2=b 3=a 4=b"},
        {"merge into itself", Array({"a", "b", "c"}), [](Variable& a) { a.MergeElements(&a, 1, 3, 2, true); },
         "1=a 2=a 3=b 4=c 5=b 6=c"},
        {"merge from behind", Array({"a", "b", "c"}), [](Variable& a) { a.MergeElements(&a, 2, 2, 1, true); },
         "1=b 2=c 3=a 4=b 5=c"},
        {"a range ends where it ended", Array({"a", "b", "c", "d"}),
         [](Variable& a) { a.MergeElements(&a, 1, 2, 2, false); }, "1=a 2=a 3=b 4=b 5=c 6=d"},
        {"merge with gaps", Array({"a"}),
         [](Variable& a) {
             a.MergeElements(Array({"", "x", "", "y"}).get(), 1, 4, 1, false);
         },
         "2=x 4=y 5=a"},
        {"merge of a scalar opens a gap", Array({"a"}),
         [](Variable& a) { a.MergeElements(New("x").get(), 1, 2, 1, true); }, "3=a"},
        {"merge of none", Array({"a"}),
         [](Variable& a) { a.MergeElements(Array({"x"}).get(), 5, -1, 1, true); }, "1=a"},
        {"merge into a scalar", New("x"),
         [](Variable& a) {
             a.MergeElements(Array({"x", "y"}).get(), 0, -1, 3, true);
         },
         "3=x 4=y"},
        {"copy over", Array({"a", "b", "c"}),
         [](Variable& a) {
             a.CopyElements(Array({"x", "y"}).get(), 1, 2, 2, true);
         },
         "1=a 2=x 3=y"},
        {"copy up within", Array({"a", "b", "c"}), [](Variable& a) { a.CopyElements(&a, 1, 3, 2, true); },
         "1=a 2=a 3=b 4=c"},
        {"copy down within", Array({"a", "b", "c"}), [](Variable& a) { a.CopyElements(&a, 2, -1, 1, false); },
         "1=b 2=c 3=c"},
        {"copy behind", Array({"a", "b"}), [](Variable& a) { a.CopyElements(&a, 0, -1, 0, false); },
         "1=a 2=b 3=a 4=b"},
        {"copy of a scalar", Array({"a"}), [](Variable& a) { a.CopyElements(New("x").get(), 1, 1, 1, true); },
         "1=a"},
        {"copy beyond the highest index", Array({"a", "b"}),
         [](Variable& a) { a.CopyElements(&a, 1, INT_MAX, INT_MAX, true), a.DeleteElement(INT_MAX, true); },
         "1=a 2=b"},
        {"no element beyond the highest index", Array({"a"}),
         [](Variable& a) {
             a.Element(INT_MAX, 1)->SetValue("z", 1);
             a.InsertElement(0, New("v").get());
             a.InsertElement(1, New("v").get());
             a.MergeElements(&a, 1, INT_MAX, 1, true);
             a.MergeElements(&a, 1, INT_MAX, 0, true);
         },
         "1=a 2147483647=z"},
    };
    for (const auto& c : cases) {
        c.change(*c.array);
        EXPECT_EQ(Elements(c.array), c.result) << c.what;
    }
}

TEST_F(ElementsTest, Elements_Are_Shared_Unless_Cloned) {
    VariableHold array = Array({"a", "b"});
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
    VariableHold array = Array({"a", "b"});
    Variable* element = array->Element(2, 0);
    array->SetElement(Name("m"), element);
    EXPECT_EQ(array->Element(Name("m"), 0), element);
    array->InsertElement(1, element);
    EXPECT_EQ(Elements(array), "1=b");
    array->Element(1, 0)->Element(1, 1)->SetValue("in", 2);
    array->SetElement(1, array->Element(1, 0)->Element(1, 0));
    EXPECT_EQ(Elements(array), "1=in");
    VariableHold outer = New();
    outer->Element(Name("x"), 1)->SetValue(*Array({"p", "q"}));
    outer->MergeElements(outer->Element(Name("x"), 0), 1, -1, 1, false);
    EXPECT_EQ(Elements(outer), "1=p 2=q");
}

TEST_F(ElementsTest, Large_Arrays_And_Deep_Ones_Take_No_Stack) {
    const int count = 200000;
    VariableHold array = New();
    for (int i = count; i > 0; i--)
        array->Element(i, 1); // as a list along one side
    VariableHold copy(new Variable(*array));
    copy->InsertElement(1, New("first").get());
    EXPECT_EQ(copy->CollapseElements(), count + 1);
    EXPECT_EQ(copy->Max(), count + 1);
    EXPECT_EQ(Text(copy).substr(0, 6), "first,");
    VariableHold deep = New();
    Variable* inner = deep.get();
    for (int i = 0; i < count; i++)
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
