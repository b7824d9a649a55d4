#include "value/callback_variable.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value_fixture.h"

class KindsTest : public ValueTest {
  protected:
    static VariableHold Reference(const char* name, const VariableHold& target) {
        return VariableHold(new ReferenceVariable(name, -1, target.get()));
    }
};

TEST_F(KindsTest, Reference_Reads_Sets_And_Counts_Its_Target) {
    VariableHold target(new Variable("t", 1, "5", 1));
    VariableHold first = Reference("a", target);
    VariableHold second = Reference("b", first);
    EXPECT_EQ(second->value_integer(), 5);
    second->Element(2, 1)->SetValue("e", 1);
    EXPECT_EQ(Elements(target), "2=e");
    VariableHold copy(second->Clone(nullptr));
    EXPECT_EQ(copy->type(), VARIABLE_PLAIN);
    EXPECT_EQ(copy->name().view(), "b");
    second->SetNULL();
    EXPECT_EQ(Elements(copy), "2=e");
    second->SetValue(*first);
    EXPECT_TRUE(target->IsNULL());
    EXPECT_EQ(target->refcount(), 3);
    EXPECT_EQ(first->refcount(), 2);
    VariableHold again = Hold(second.get());
    EXPECT_EQ(target->refcount(), 4);
    EXPECT_EQ(second->RealIdentity(), target.get());
    EXPECT_EQ(static_cast<ReferenceVariable*>(second.get())->TypeReferredTo(), VARIABLE_REFERENCE);
    target->SetValue("x", 1);
    first.reset();
    second.reset();
    EXPECT_EQ(Text(again), "x");
    again.reset();
    EXPECT_EQ(target->refcount(), 1);
}

TEST_F(KindsTest, Variable_Becomes_A_Reference_In_Place) {
    VariableHold target = New("x");
    VariableHold variable(new Variable("v", 1, "old", 3));
    variable->Element(1, 1)->SetValue("e", 1);
    VariableHold second = Hold(variable.get());
    variable->Make_Reference(target.get());
    EXPECT_EQ(variable->type(), VARIABLE_REFERENCE);
    EXPECT_EQ(target->refcount(), 3);
    EXPECT_EQ(Text(second), "x");
    EXPECT_EQ(variable->name().view(), "v");
    target->Make_Reference(variable.get()); // would close a circle
    EXPECT_EQ(target->type(), VARIABLE_PLAIN);
    VariableHold other = New("y");
    variable->Make_Reference(other.get());
    EXPECT_EQ(target->refcount(), 1);
    EXPECT_EQ(other->refcount(), 3);
    VariableHold chained = Reference("c", variable);
    variable->Make_Reference(chained.get()); // ends where it is
    EXPECT_EQ(variable->NextIdentity(), other.get());
    // To an element of its own.
    VariableHold array = Make("i");
    array->Make_Reference(array->Element(1, 0));
    EXPECT_EQ(Text(array), "i");
}

TEST_F(KindsTest, Aggregate_Within_Itself_Ends) {
    VariableHold array = Make("abc");
    Variable* inner = array->Element(2, 0);
    inner->Make_Reference(array.get());
    EXPECT_EQ(Text(array), "a,c");
    EXPECT_EQ(Text(*VariableHold(new Variable(*array))), "a,,c");
    array->DeleteElement(2, false); // gives back its count
    EXPECT_EQ(array->refcount(), 1);
}

TEST_F(KindsTest, Locked_Variable_Ignores_Writes) {
    auto* immutable = new ImmutableVariable("i", 1);
    VariableHold held(immutable);
    immutable->SetElement(1, New("a").get());
    EXPECT_NE(immutable->Element(1, 0)->AsImmutable(), nullptr);
    immutable->Element(3, 1)->SetValue("c", 1);
    immutable->Lock();
    EXPECT_TRUE(immutable->SetValue("x", 1));
    EXPECT_TRUE(immutable->SetValue_Nocopy(tarn_strdup("freed"), 5, 6));
    EXPECT_TRUE(immutable->SetValue_mpd_Nocopy(TarnApplication::itompd(nullptr, 1)));
    EXPECT_TRUE(immutable->SetElement(1, New("x").get()));
    EXPECT_TRUE(immutable->SetNULL());
    EXPECT_TRUE(immutable->Convert_Aggregate(AGGREGATE_NONE));
    immutable->Element(1, 0)->SetValue_Integer(9);
    immutable->InsertElement(1, New("x").get());
    immutable->DeleteElement(1, true);
    immutable->DeleteElements(1, -1, true);
    immutable->MergeElements(immutable, 1, 2, 1, true);
    immutable->CopyElements(immutable, 1, 2, 2, true);
    immutable->Make_Reference(New().get());
    EXPECT_EQ(immutable->CollapseElements(), 2); // without renumbering
    EXPECT_EQ(Elements(held), "1=a 3=c");
    EXPECT_EQ(immutable->Element(2, 0), nullptr);
    EXPECT_EQ(immutable->Element(2, 1)->type(), VARIABLE_NULL);
    EXPECT_EQ(immutable->Element(2, 1), immutable->Element(Name("m"), 1));
    VariableHold clone(immutable->Clone(nullptr));
    clone->Element(1, 0)->SetValue("x", 1);
    EXPECT_EQ(Elements(clone), "1=a 3=c");
    EXPECT_NE(clone->Element(1, 0), immutable->Element(1, 0));
    immutable->Unlock();
    EXPECT_EQ(immutable->CollapseElements(), 2);
    immutable->Element(2, 0)->SetValue("d", 1);
    EXPECT_EQ(Elements(held), "1=a 2=d");
}

TEST_F(KindsTest, Immutable_Takes_Immutable_Copies) {
    VariableHold source = Make("ab");
    source->Element(2, 0)->SetValue(*Make("xy"));
    VariableHold shared(new ImmutableVariable);
    source->SetElement(3, shared.get());
    VariableHold immutable(new ImmutableVariable);
    immutable->SetValue(*source);
    EXPECT_EQ(Text(immutable), "a,x,y,");
    EXPECT_EQ(immutable->Element(3, 0), shared.get());
    EXPECT_NE(immutable->Element(2, 0)->Element(1, 0)->AsImmutable(), nullptr);
    VariableHold deep(new ImmutableVariable(source.get()));
    EXPECT_NE(deep->Element(3, 0), shared.get());
    immutable->SetElement(3, shared.get());
    EXPECT_EQ(shared->refcount(), 3);
}

TEST_F(KindsTest, NULL_Variable_Stays_NULL) {
    VariableHold null(new NULLVariable);
    static_cast<NULLVariable*>(null.get())->Unlock();
    null->SetValue("x", 1);
    EXPECT_TRUE(null->IsNULL());
    EXPECT_FALSE(null->IsTrue());
    EXPECT_EQ(Text(null), "");
    EXPECT_TRUE(mpd_iszero(null->value_mpd()));
    EXPECT_EQ(null->Element(Name("a"), 1)->Element(1, 1), null.get());
    EXPECT_EQ(null->Element(1, 0), nullptr);
    EXPECT_EQ(VariableHold(null->Clone(nullptr))->type(), VARIABLE_NULL);
}

namespace {

// An array whose element 2 is "2".
class Loading : public DynamicImmutableVariable {
  public:
    Loading() : DynamicImmutableVariable("d", 1) {}
    bool IsLoaded() override { return loaded; }
    void Load() override {
        loaded = true;
        Unlock();
        Element(2, 1)->SetValue("2", 1);
        Lock();
    }
    void Unload() override {
        Unlock();
        SetNULL();
        Lock();
        loaded = false;
    }

  private:
    bool loaded = false;
};

} // namespace

TEST_F(KindsTest, Dynamic_Variable_Loads_At_The_First_Reading) {
    VariableHold held(new Loading);
    auto fresh = [&]() -> Variable& { return static_cast<Loading*>(held.get())->Unload(), *held; };
    EXPECT_EQ(fresh().value().length() + fresh().IsTrue() + fresh().aggregatetype() + fresh().ElementsUsed(),
              4);
    EXPECT_EQ(fresh().aggregateelements()->Entries() + fresh().CollapseElements(), 2);
    EXPECT_EQ(fresh().Max() + fresh().Min() + fresh().Next(0) + fresh().Previous(3), 8);
    EXPECT_EQ(fresh().Element(2, 0)->value_integer() + Variable(fresh()).Max(), 4);
    EXPECT_EQ(fresh().IsNULL() + VariableHold(fresh().Clone(nullptr))->Max(), 2);
}

namespace {

int discarded;

// Knows the members "stored", which it puts into the structure, and "answer".
class Members : public CallbackVariableCallback {
  public:
    ~Members() override { discarded++; }
    bool Lookup(CallbackStructVariable* variable, AggregateIndex index) override {
        String& name = index;
        ++lookups;
        if (name.view() == "stored")
            variable->SetElement(index, VariableHold(new Variable("", 0, "kept", 4)).get());
        return_value()->SetValue("42", 2);
        return name.view() == "stored" || name.view() == "answer";
    }
    int lookups = 0;
};

} // namespace

TEST_F(KindsTest, Callback_Supplies_Members) {
    discarded = 0;
    auto* members = new Members;
    VariableHold variable(new Variable("v", 1, "text", 4));
    VariableHold second = Hold(variable.get());
    variable->Make_CallbackStruct(members);
    EXPECT_EQ(Text(variable), "text");
    EXPECT_EQ(variable->refcount(), 2);
    EXPECT_EQ(variable->Element(1, 0), nullptr);
    EXPECT_EQ(members->lookups, 0);
    EXPECT_EQ(variable->Element(Name("none"), 0), nullptr);
    EXPECT_EQ(variable->Element(Name("answer"), 0), members->return_value());
    EXPECT_EQ(variable->ElementsUsed(), 0);
    EXPECT_EQ(Text(*variable->Element(Name("stored"), 0)), "kept");
    EXPECT_EQ(variable->Element(Name("answer"), 1), members->return_value());
    EXPECT_TRUE(variable->Element(Name("none"), 1)->IsNULL());
    EXPECT_EQ(Text(*variable->Element(Name("STORED"), 0)), "kept"); // is there by now
    EXPECT_EQ(members->lookups, 5);
    variable->Make_CallbackStruct(new Members);
    EXPECT_EQ(discarded, 1);
    variable.reset();
    second.reset();
    EXPECT_EQ(discarded, 2);
}

TEST_F(KindsTest, Callback_Goes_With_Its_Last_Variable) {
    discarded = 0;
    auto* members = new Members;
    VariableHold first(new CallbackStructVariable(members));
    VariableHold second(new CallbackStructVariable(members));
    first.reset(); // was detached
    EXPECT_EQ(discarded, 0);
    second->Make_Reference(New("x").get());
    EXPECT_EQ(second->type(), VARIABLE_PLAIN);
    VariableHold reference = Reference("r", second);
    reference->Make_CallbackStruct(new Members);
    EXPECT_EQ(discarded, 1);
    for (int i = 0; i < 2; ++i) { // from either side
        members = new Members;
        second->Make_CallbackStruct(members);
        i ? members->Detach() : static_cast<CallbackVariable*>(second.get())->Detach();
        EXPECT_EQ(second->Element(Name("answer"), 0), nullptr);
        members->Discard();
    }
    VariableHold immutable(new ImmutableVariable);
    immutable->Make_CallbackStruct(new Members);
    EXPECT_EQ(discarded, 5);
}
