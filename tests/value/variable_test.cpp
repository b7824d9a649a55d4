#include "value/callback_variable.h"
#include "value/immutable_variable.h"
#include "value/reference_variable.h"
#include "value/value_support.h"
#include "value/variable.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

// A kind that an engine adds.
struct Presenting : Variable {
    Presenting(int kind, int preferred) : kind(kind), preferred(preferred) {}
    Presenting(int kind, int preferred, int number)
        : Variable("", 0, number), kind(kind), preferred(preferred) {}
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

struct VariableTest : testing::Test {
    static VariableHold Integer(int number) { return VariableHold(new Variable("", 0, number)); }
    static VariableHold Decimal(const char* text) {
        VariableHold variable = New();
        variable->SetValue_mpd_Nocopy(TarnApplication::stompd(nullptr, text, -1, 0, nullptr));
        return variable;
    }
    static VariableHold Null() { return VariableHold(new NULLVariable); }
    static VariableHold Copy(Variable* source) { return VariableHold(new Variable(*VariableHold(source))); }
    static VariableHold Set(VariableHold variable, const VariableHold& value) {
        variable->SetValue(*value);
        return variable;
    }
    static VariableHold Reference(const char* name, const VariableHold& target) {
        return VariableHold(new ReferenceVariable(name, -1, target.get()));
    }
    // "text: kind, truth integer decimal" and what it compares by. Numbers are read first: the text is made
    // of what they left.
    static std::string Told(Variable& variable) {
        const auto number = [](mpd_t* decimal) { return Text(VariableHold(new Variable("", 0, decimal))); };
        int by_text = 7;
        const bool null = variable.IsNULL(), truth = !null && variable.IsTrue();
        const std::string integer = std::to_string(variable.value_integer());
        const std::string decimal = number(variable.value_mpd());
        const std::string compared = number(variable.value_compare(&by_text));
        EXPECT_EQ(variable.IsTrue(), truth);
        return Text(variable) + ": " + (null ? "NULL " : "") + kinds[variable.primary_type()] +
               (truth ? ", true " : ", false ") + integer + " " + decimal + " " +
               (by_text ? "as text" : compared);
    }
    static constexpr const char* kinds[] = {"none", "text", "integer", "decimal"};
};

TEST_F(VariableTest, Values_Are_Read_In_Every_Form) {
    const std::pair<VariableHold, const char*> cases[] = {
        // clang-format off
        {New("12"), "12: text, true 12 12 12"}, {New("12.7"), "12.7: text, true 12 12.7 12.7"},
        {New("abc"), "abc: text, true 0 0 as text"}, {New("0x10"), "0x10: text, true 16 16 16"},
        {New(" 1"), " 1: text, true 0 0 as text"}, {New("1e2"), "1e2: text, true 100 100 100"},
        {New("-2.5"), "-2.5: text, true -2 -2.5 -2.5"}, {New("1.2.3"), "1.2.3: text, true 0 0 as text"},
        {New("000"), "000: text, false 0 0 0"}, {New("0.00"), "0.00: text, false 0 0 0"},
        {New("."), ".: text, false 0 0 as text"}, {New("0.0."), "0.0.: text, true 0 0 as text"},
        {New("-0"), "-0: text, true 0 -0 -0"}, {New(" 0"), " 0: text, true 0 0 as text"},
        {New("4294967297"), "4294967297: text, true 1 4294967297 4294967297"},

        {Integer(0), "0: integer, false 0 0 0"}, {Integer(5), "5: integer, true 5 5 5"},
        {Decimal("0.00"), "0: decimal, false 0 0 0"},
        {Decimal("-0.25"), "-0.25: decimal, true 0 -0.25 -0.25"},
        {Decimal("7.50"), "7.5: decimal, true 7 7.5 7.5"}, // the text is that of the decimal

        {New(), ": NULL none, false 0 0 0"}, {New(""), ": NULL text, false 0 0 0"},
        {Null(), ": NULL none, false 0 0 0"}, {Set(Integer(3), New()), ": NULL none, false 0 0 0"},
        {Set(Integer(3), Null()), ": NULL none, false 0 0 0"}, {Make("0"), "0: none, false 0 0 as text"},
        {Make("10"), "1,0: none, true 0 0 as text"}, // by its text

        // Copies of kinds that an engine adds, which always present what they say, or prefer to.
        {Copy(new Presenting(VARIABLE_INTEGER, VALUE_STRING)), "41: integer, true 41 41 41"},
        {Copy(new Presenting(VARIABLE_TEXT, VALUE_STRING, 9)), "shown: text, true 0 0 as text"},
        {Copy(new Presenting(VARIABLE_FIELDS, VALUE_INTEGER)), "41: integer, true 41 41 41"},
        {Copy(new Presenting(VARIABLE_FIELDS, VALUE_DECIMAL)), "0: decimal, false 0 0 0"},
        {Copy(new Presenting(VARIABLE_FIELDS, VALUE_NONE)), "shown: text, true 0 0 as text"},
        {Copy(new Presenting(VARIABLE_FIELDS, VALUE_STRING, 9)), "9: integer, true 9 9 9"},
        // clang-format on
    };
    for (const auto& [variable, told] : cases)
        EXPECT_EQ(Told(*variable), told);
}

TEST_F(VariableTest, Given_Arrays_And_Numbers_Are_Taken) {
    char* text = tarn_strdup("adopted");
    VariableHold variable(new Variable("n", 1, text, 7, 8));
    EXPECT_EQ(variable->value().text(), text);
    variable->SetValue_Nocopy(tarn_strdup("exact"), 5, 5); // without room for the NUL
    EXPECT_EQ(Text(variable), "exact");
    variable->Convert_String(); // out of no other form
    EXPECT_EQ(Text(variable), "");
    variable = Decimal("-0.25");
    variable->SetValue_mpd(variable->value_mpd());
    EXPECT_EQ(Text(variable), "-0.25");
    EXPECT_EQ(Text(VariableHold(new Variable("n", 1, 4294967295U))), "4294967295");
}

TEST_F(VariableTest, NULL_Stays_NULL) {
    VariableHold null = Null();
    static_cast<NULLVariable*>(null.get())->Unlock();
    null->SetValue("x", 1);
    EXPECT_EQ(Text(null), "");
    EXPECT_EQ(null->Element(1, 0), nullptr);
    EXPECT_EQ(null->Element(Name("a"), 1)->Element(1, 1), null.get());
    EXPECT_EQ(VariableHold(null->Clone(nullptr))->type(), VARIABLE_NULL);
}

TEST_F(VariableTest, Reference_Reads_Sets_And_Counts_Its_Target) {
    VariableHold target = New("5"), first = Reference("a", target), second = Reference("b", first);
    EXPECT_EQ(second->value_integer(), 5);
    const VariableHold copy(second->Clone(nullptr));
    EXPECT_EQ(copy->type(), VARIABLE_PLAIN);
    EXPECT_EQ(copy->name().view(), "b");
    EXPECT_EQ(second->RealIdentity(), target.get());
    EXPECT_EQ(static_cast<ReferenceVariable*>(second.get())->TypeReferredTo(), VARIABLE_REFERENCE);
    VariableHold again = Hold(second.get());
    EXPECT_EQ(target->refcount() + first->refcount(), 4 + 3);
    second.reset();
    EXPECT_EQ(target->refcount() + first->refcount(), 3 + 2);
    first.reset();
    EXPECT_EQ(target->refcount(), 2);
    again.reset();
    EXPECT_EQ(target->refcount(), 1);
}

TEST_F(VariableTest, Variable_Becomes_A_Reference_In_Place) {
    VariableHold target = New("x"), other = New("y"), variable(new Variable("v", 1, "old", 3));
    variable->Element(1, 1)->SetValue("e", 1);
    const VariableHold second = Hold(variable.get());
    variable->Make_Reference(target.get());
    EXPECT_EQ(Text(second), "x");
    EXPECT_EQ(variable->name().view(), "v");
    EXPECT_EQ(target->refcount(), 3);
    target->Make_Reference(variable.get()); // would close a circle
    EXPECT_EQ(target->type(), VARIABLE_PLAIN);
    variable->Make_Reference(other.get());
    EXPECT_EQ(target->refcount(), 1);
    EXPECT_EQ(other->refcount(), 3);
    const VariableHold chained = Reference("c", variable);
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
    const VariableHold held(immutable);
    const VariableHold source = Make("a-c");
    source->Element(1, 0)->SetName("first");
    immutable->SetValue(*source);
    immutable->Lock();
    EXPECT_TRUE(immutable->SetValue("x", 1));
    EXPECT_TRUE(immutable->SetValue_Nocopy(tarn_strdup("freed"), 5, 6));
    EXPECT_TRUE(immutable->SetValue_mpd_Nocopy(TarnApplication::itompd(nullptr, 1)));
    EXPECT_TRUE(immutable->Convert_Aggregate(AGGREGATE_NONE) && immutable->SetNULL());
    immutable->Element(1, 0)->SetValue_Integer(9);
    immutable->Make_Reference(New().get());
    EXPECT_EQ(immutable->Element(2, 0), nullptr);
    EXPECT_EQ(immutable->Element(2, 1)->type(), VARIABLE_NULL);
    EXPECT_EQ(immutable->Element(2, 1), immutable->Element(Name("m"), 1));
    const VariableHold clone(immutable->Clone(nullptr));
    clone->Element(1, 0)->SetValue("x", 1);
    EXPECT_EQ(Elements(*clone), "[1]a[3]c");
    EXPECT_NE(clone->Element(1, 0), immutable->Element(1, 0));
    EXPECT_EQ(clone->name().view(), "i");
    EXPECT_EQ(clone->Element(1, 0)->name().view(), "first");
}

TEST_F(VariableTest, Immutable_Takes_Immutable_Copies) {
    const VariableHold source = Make("ab"), shared(new ImmutableVariable), immutable(new ImmutableVariable);
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
    const VariableHold held(new Loading);
    const auto fresh = [&]() -> Variable& { return static_cast<Loading*>(held.get())->Unload(), *held; };
    EXPECT_EQ(fresh().value().length() + fresh().IsTrue() + fresh().aggregatetype(), 3);
    EXPECT_EQ(fresh().ElementsUsed() + fresh().aggregateelements()->Entries() + fresh().CollapseElements(),
              3);
    EXPECT_EQ(fresh().Max() + fresh().Min() + fresh().Next(0) + fresh().Previous(3), 8);
    EXPECT_EQ(fresh().Element(2, 0)->value_integer() + Variable(fresh()).Max(), 4);
    EXPECT_EQ(fresh().IsNULL() + VariableHold(fresh().Clone(nullptr))->Max(), 2);
}

TEST_F(VariableTest, Callback_Supplies_Members) {
    auto* members = new Members;
    const VariableHold variable(new Variable("v", 1, "text", 4));
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
    VariableHold(new ImmutableVariable)->Make_CallbackStruct(new Members);
    EXPECT_EQ(discarded, 5);
    second->Make_CallbackStruct(new Members);
    second.reset();
    EXPECT_EQ(discarded, 6);
}
