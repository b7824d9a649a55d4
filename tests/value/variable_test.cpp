#include "value/callback_variable.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/variable.h"
#include "value_fixture.h"

#include <tuple>

namespace {

mpd_t* Decimal(const char* text) {
    return TarnApplication::stompd(nullptr, text, -1, 0, nullptr);
}

// A kind that an engine adds.
struct Presenting : Variable {
    Presenting(int kind, int preferred) : kind(kind), preferred(preferred) {}
    int type() const override { return kind; }
    int preferred_type() override { return preferred; }
    const String& value() override { return shown; }
    int value_integer() override { return 41; }
    int kind, preferred;
    String shown = "shown";
};

// An array whose element 2 is "2".
struct Loading : DynamicImmutableVariable {
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
    bool loaded = false;
};

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

class VariableTest : public ValueTest {
  protected:
    static VariableHold Reference(const char* name, const VariableHold& target) {
        return VariableHold(new ReferenceVariable(name, -1, target.get()));
    }
};

TEST_F(VariableTest, Text_Is_Read_As_Number_And_Truth) {
    const struct {
        const char* text;
        int integer;
        const char* decimal;
        bool compares_as_text, is_true;
    } cases[] = {
        // clang-format off
        {"12", 12, "12", false, true}, {"12.7", 12, "12.7", false, true}, {"abc", 0, "0", true, true},
        {"0x10", 16, "16", false, true}, {"", 0, "0", false, false}, {" 1", 0, "0", true, true},
        {"1e2", 100, "100", false, true}, {"-2.5", -2, "-2.5", false, true}, {"1.2.3", 0, "0", true, true},
        {"000", 0, "0", false, false}, {"0.00", 0, "0", false, false}, {".", 0, "0", true, false},
        {"0.0.", 0, "0", true, true}, {"-0", 0, "-0", false, true}, {" 0", 0, "0", true, true},
        // clang-format on
    };
    for (const auto& c : cases) {
        VariableHold variable = New(c.text);
        EXPECT_EQ(variable->IsTrue(), c.is_true) << c.text;
        EXPECT_EQ(variable->value_integer(), c.integer) << c.text;
        EXPECT_EQ(Text(VariableHold(new Variable(nullptr, 0, variable->value_mpd()))), c.decimal) << c.text;
        EXPECT_EQ(Text(variable), c.text);
        EXPECT_EQ(variable->primary_type(), VALUE_STRING);
        int error = 7;
        (void)variable->value_compare(&error);
        EXPECT_EQ(error != 0, c.compares_as_text) << c.text;
    }
}

TEST_F(VariableTest, Numbers_Are_Read_In_Every_Form) {
    VariableHold variable = New();
    for (const int number : {0, 5}) {
        variable->SetValue_Integer(number);
        EXPECT_EQ(variable->IsTrue(), number != 0);
        EXPECT_FALSE(variable->IsNULL());
    }
    EXPECT_EQ(Text(variable), "5");
    EXPECT_EQ(variable->primary_type(), VALUE_INTEGER);
    variable->SetValue_mpd_Nocopy(Decimal("7.50"));
    EXPECT_EQ(variable->value_integer(), 7);
    EXPECT_EQ(Text(variable), "7.5"); // from the decimal
    EXPECT_EQ(variable->primary_type(), VALUE_DECIMAL);
    for (const char* text : {"0.00", "-0.25"}) {
        variable->SetValue_mpd_Nocopy(Decimal(text));
        EXPECT_EQ(variable->IsTrue(), *text == '-') << text;
    }
    variable->SetValue_mpd(variable->value_mpd()); // its own
    EXPECT_EQ(Text(variable), "-0.25");
    EXPECT_EQ(Text(VariableHold(new Variable("n", 1, 4294967295U))), "4294967295");
    char* text = tarn_strdup("adopted");
    VariableHold adopted(new Variable("n", 1, text, 7, 8));
    EXPECT_EQ(adopted->value().text(), text);
    adopted->SetValue_Nocopy(tarn_strdup("exact"), 5, 5); // without room for the NUL
    EXPECT_EQ(Text(adopted), "exact");
    adopted->Convert_String(); // out of no other form
    EXPECT_EQ(Text(adopted), "");
}

TEST_F(VariableTest, NULL_Is_Nothing_Or_Empty_Text) {
    VariableHold variable = New(), nothing = New(), null(new NULLVariable);
    static_cast<NULLVariable*>(null.get())->Unlock();
    null->SetValue("x", 1);
    for (Variable* v : {nothing.get(), null.get()}) {
        int error = 7;
        EXPECT_TRUE(mpd_iszero(v->value_compare(&error)));
        EXPECT_EQ(error, 0);
        EXPECT_EQ(v->value_integer(), 0);
        EXPECT_TRUE(mpd_iszero(v->value_mpd()));
        EXPECT_TRUE(v->IsNULL());
        EXPECT_FALSE(v->IsTrue());
        EXPECT_EQ(Text(*v), "");
        EXPECT_EQ(v->Element(1, 0), nullptr);
    }
    EXPECT_EQ(null->Element(Name("a"), 1)->Element(1, 1), null.get());
    EXPECT_EQ(VariableHold(null->Clone(nullptr))->type(), VARIABLE_NULL);
    EXPECT_TRUE(New("")->IsNULL());
    for (Variable* source : {nothing.get(), null.get()}) {
        variable->SetValue_Integer(3);
        variable->SetValue(*source);
        EXPECT_TRUE(variable->IsNULL());
        EXPECT_EQ(variable->primary_type(), VALUE_NONE);
    }
    variable->SetValue("x", 1);
    variable->SetNULL();
    EXPECT_EQ(variable->primary_type(), VALUE_NONE);
    EXPECT_EQ(Text(variable), "");
    EXPECT_FALSE(Make("a")->IsNULL());
}

TEST_F(VariableTest, Aggregate_Reads_As_Its_Leaves) {
    VariableHold array = Make("0"), inner = Make("bc");
    EXPECT_FALSE(array->IsTrue());
    array->SetElement(2, inner.get());
    EXPECT_TRUE(array->IsTrue()); // by its text
    EXPECT_EQ(Text(array), "0,b,c");
    EXPECT_EQ(array->value_integer(), 0);
    int error = 0;
    EXPECT_TRUE(mpd_iszero(array->value_compare(&error)));
    EXPECT_NE(error, 0);
    array->Convert_String();
    inner->Element(1, 0)->SetValue("d", 1);
    EXPECT_EQ(Text(array), "0,d,c"); // not what was converted
    array->SetValue("x", 1);
    EXPECT_EQ(array->aggregatetype(), AGGREGATE_NONE);
    EXPECT_EQ(inner->refcount(), 1);
}

TEST_F(VariableTest, Copy_Takes_All_Forms_And_Shares_Nothing) {
    VariableHold source(new Variable("s", 1, "1.50", 4));
    EXPECT_EQ(source->value_integer(), 1);
    VariableHold copy(new Variable(*source));
    source->SetValue("2", 1);
    copy->SetValue(*copy);
    EXPECT_EQ(Text(copy), "1.50");
    EXPECT_EQ(copy->value_integer(), 1);
    EXPECT_EQ(copy->name().view(), "s");
    VariableHold array = Make("ab");
    array->Element(1, 0)->SetName("first");
    copy.reset(array->Clone(nullptr));
    array->Element(1, 0)->SetValue("x", 1);
    EXPECT_EQ(Elements(copy), "1=a 2=b");
    EXPECT_EQ(copy->Element(1, 0)->name().view(), "first");
    // From what hangs on the variable itself, either way.
    copy->SetValue(*copy->Element(2, 0));
    EXPECT_EQ(Text(copy), "b");
    array->Element(2, 0)->SetValue(*array);
    array->SetValue(*array);
    EXPECT_EQ(Text(array), "x,x,b");
}

TEST_F(VariableTest, Copy_Follows_The_Kind_Of_The_Source) {
    const std::tuple<int, int, const char*, int> cases[] = {
        // Kind, preferred type, and the copy's text and type.
        {VARIABLE_INTEGER, VALUE_STRING, "41", VALUE_INTEGER},
        {VARIABLE_TEXT, VALUE_STRING, "shown", VALUE_STRING},
        {VARIABLE_FIELDS, VALUE_INTEGER, "41", VALUE_INTEGER},
        {VARIABLE_FIELDS, VALUE_DECIMAL, "0", VALUE_DECIMAL},
        {VARIABLE_FIELDS, VALUE_NONE, "shown", VALUE_STRING},
        {VARIABLE_FIELDS, VALUE_STRING, "9", VALUE_INTEGER},
    };
    for (const auto& [kind, preferred, text, primary] : cases) {
        VariableHold source(new Presenting(kind, preferred));
        if (*text == '9' || kind == VARIABLE_TEXT)
            source->SetValue_Integer(9);
        VariableHold copy(new Variable(*source));
        EXPECT_EQ(Text(copy), text);
        EXPECT_EQ(copy->primary_type(), primary);
    }
}

TEST_F(VariableTest, Reference_Reads_Sets_And_Counts_Its_Target) {
    VariableHold target = New("5"), first = Reference("a", target), second = Reference("b", first);
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
    EXPECT_EQ(target->refcount() + first->refcount(), 3 + 2);
    VariableHold again = Hold(second.get());
    EXPECT_EQ(target->refcount(), 4);
    EXPECT_EQ(second->RealIdentity(), target.get());
    EXPECT_EQ(static_cast<ReferenceVariable*>(second.get())->TypeReferredTo(), VARIABLE_REFERENCE);
    first.reset();
    second.reset();
    EXPECT_EQ(target->refcount(), 2);
    again.reset();
    EXPECT_EQ(target->refcount(), 1);
}

TEST_F(VariableTest, Variable_Becomes_A_Reference_In_Place) {
    VariableHold target = New("x"), other = New("y"), variable(new Variable("v", 1, "old", 3));
    variable->Element(1, 1)->SetValue("e", 1);
    VariableHold second = Hold(variable.get());
    variable->Make_Reference(target.get());
    EXPECT_EQ(variable->type(), VARIABLE_REFERENCE);
    EXPECT_EQ(Text(second), "x");
    EXPECT_EQ(variable->name().view(), "v");
    EXPECT_EQ(target->refcount(), 3);
    target->Make_Reference(variable.get()); // would close a circle
    EXPECT_EQ(target->type(), VARIABLE_PLAIN);
    variable->Make_Reference(other.get());
    EXPECT_EQ(target->refcount(), 1);
    EXPECT_EQ(other->refcount(), 3);
    VariableHold chained = Reference("c", variable);
    variable->Make_Reference(chained.get()); // ends where it is
    EXPECT_EQ(variable->NextIdentity(), other.get());
    VariableHold array = Make("i");
    array->Make_Reference(array->Element(1, 0)); // an element of its own
    EXPECT_EQ(Text(array), "i");
    array = Make("abc");
    array->Element(2, 0)->Make_Reference(array.get()); // walks of an aggregate within itself end
    EXPECT_EQ(Text(array), "a,c");
    EXPECT_EQ(Text(*VariableHold(new Variable(*array))), "a,,c");
    array->DeleteElement(2, false); // gives back its count
    EXPECT_EQ(array->refcount(), 1);
}

TEST_F(VariableTest, Locked_Variable_Ignores_Writes) {
    auto* immutable = new ImmutableVariable("i", 1);
    VariableHold held(immutable);
    immutable->SetElement(1, New("a").get());
    EXPECT_NE(immutable->Element(1, 0)->AsImmutable(), nullptr);
    immutable->Element(3, 1)->SetValue("c", 1);
    immutable->Lock();
    EXPECT_TRUE(immutable->SetValue("x", 1));
    EXPECT_TRUE(immutable->SetValue_Nocopy(tarn_strdup("freed"), 5, 6));
    EXPECT_TRUE(immutable->SetValue_mpd_Nocopy(TarnApplication::itompd(nullptr, 1)));
    EXPECT_TRUE(immutable->Convert_Aggregate(AGGREGATE_NONE));
    EXPECT_TRUE(immutable->SetNULL());
    immutable->Element(1, 0)->SetValue_Integer(9);
    immutable->Make_Reference(New().get());
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

TEST_F(VariableTest, Immutable_Takes_Immutable_Copies) {
    VariableHold source = Make("ab"), shared(new ImmutableVariable), immutable(new ImmutableVariable);
    source->Element(2, 0)->SetValue(*Make("xy"));
    source->SetElement(3, shared.get());
    immutable->SetValue(*source);
    EXPECT_EQ(Text(immutable), "a,x,y,");
    EXPECT_EQ(immutable->Element(3, 0), shared.get());
    EXPECT_NE(immutable->Element(2, 0)->Element(1, 0)->AsImmutable(), nullptr);
    EXPECT_NE(VariableHold(new ImmutableVariable(source.get()))->Element(3, 0), shared.get());
    immutable->SetElement(3, shared.get());
    EXPECT_EQ(shared->refcount(), 3);
}

TEST_F(VariableTest, Dynamic_Variable_Loads_At_The_First_Reading) {
    VariableHold held(new Loading);
    auto fresh = [&]() -> Variable& { return static_cast<Loading*>(held.get())->Unload(), *held; };
    EXPECT_EQ(fresh().value().length() + fresh().IsTrue() + fresh().aggregatetype() + fresh().ElementsUsed(),
              4);
    EXPECT_EQ(fresh().aggregateelements()->Entries() + fresh().CollapseElements(), 2);
    EXPECT_EQ(fresh().Max() + fresh().Min() + fresh().Next(0) + fresh().Previous(3), 8);
    EXPECT_EQ(fresh().Element(2, 0)->value_integer() + Variable(fresh()).Max(), 4);
    EXPECT_EQ(fresh().IsNULL() + VariableHold(fresh().Clone(nullptr))->Max(), 2);
}

TEST_F(VariableTest, Callback_Supplies_Members) {
    discarded = 0;
    auto* members = new Members;
    VariableHold variable(new Variable("v", 1, "text", 4));
    variable->Make_CallbackStruct(members);
    EXPECT_EQ(Text(variable), "text");
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
    EXPECT_EQ(discarded, 2);
}

TEST_F(VariableTest, Callback_Goes_With_Its_Last_Variable) {
    discarded = 0;
    auto* members = new Members;
    VariableHold first(new CallbackStructVariable(members)), second(new CallbackStructVariable(members));
    first.reset(); // was detached
    EXPECT_EQ(discarded, 0);
    second->Make_Reference(New("x").get());
    EXPECT_EQ(second->type(), VARIABLE_PLAIN);
    Reference("r", second)->Make_CallbackStruct(new Members);
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
