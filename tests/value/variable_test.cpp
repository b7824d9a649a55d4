#include "value/immutable_variable.h"
#include "value/variable.h"
#include "value_fixture.h"

namespace {

mpd_t* Decimal(const char* text) {
    int error = 0;
    return TarnApplication::stompd(nullptr, text, -1, 0, &error);
}

// A kind that an engine adds.
class Presenting : public Variable {
  public:
    Presenting(int kind, int preferred) : kind(kind), preferred(preferred) {}
    int type() const override { return kind; }
    int preferred_type() override { return preferred; }
    const String& value() override { return shown; }
    int value_integer() override { return 41; }

  private:
    int kind;
    int preferred;
    String shown = "shown";
};

} // namespace

class VariableTest : public ValueTest {};

TEST_F(VariableTest, Text_Is_Read_As_Number) {
    const struct {
        const char* text;
        int integer;
        const char* decimal;
        bool compares_as_text;
    } cases[] = {
        {"12", 12, "12", false},   {"12.7", 12, "12.7", false}, {"abc", 0, "0", true},
        {"0x10", 16, "16", false}, {"-5", -5, "-5", false},     {"", 0, "0", false},
        {" 1", 0, "0", true},      {"1e2", 100, "100", false},  {"-2.5", -2, "-2.5", false},
        {"1.2.3", 0, "0", true},
    };
    for (const auto& c : cases) {
        VariableHold variable = New(c.text);
        EXPECT_EQ(variable->value_integer(), c.integer) << c.text;
        VariableHold decimal(new Variable(nullptr, 0, variable->value_mpd()));
        EXPECT_EQ(Text(decimal), c.decimal) << c.text;
        EXPECT_EQ(Text(variable), c.text);
        EXPECT_EQ(variable->primary_type(), VALUE_STRING);
        int error = 7;
        (void)variable->value_compare(&error);
        EXPECT_EQ(error != 0, c.compares_as_text) << c.text;
    }
}

TEST_F(VariableTest, Numbers_Are_Read_In_Every_Form) {
    VariableHold variable = New();
    variable->SetValue_Integer(5);
    EXPECT_EQ(Text(variable), "5");
    EXPECT_EQ(variable->primary_type(), VALUE_INTEGER);
    mpd_t* decimal = Decimal("7.50");
    variable->SetValue_mpd(decimal);
    mpd_del(decimal);
    EXPECT_EQ(variable->value_integer(), 7);
    EXPECT_EQ(Text(variable), "7.5"); // from the decimal
    EXPECT_EQ(variable->primary_type(), VALUE_DECIMAL);
    variable->SetValue_mpd_Nocopy(Decimal("-0.25"));
    variable->SetValue_mpd(variable->value_mpd()); // its own
    EXPECT_EQ(Text(variable), "-0.25");
    VariableHold large(new Variable("n", 1, 4294967295U));
    EXPECT_EQ(Text(large), "4294967295");
    EXPECT_EQ(large->primary_type(), VALUE_DECIMAL);
    char* text = tarn_strdup("adopted");
    VariableHold adopted(new Variable("n", 1, text, 7, 8));
    EXPECT_EQ(adopted->value().text(), text);
    adopted->SetValue_Nocopy(tarn_strdup("exact"), 5, 5); // without room for the NUL
    EXPECT_EQ(Text(adopted), "exact");
    adopted->Convert_String(); // out of no other form
    EXPECT_EQ(Text(adopted), "");
}

TEST_F(VariableTest, Truth_Is_That_Of_Text_Or_Number) {
    for (const char* text : {"", "0", "000", "0.00", ".", "0.", ".0"})
        EXPECT_FALSE(New(text)->IsTrue()) << text;
    for (const char* text : {"0.0.", "-0", "0x0", " 0", "false", "..", "1", "0.01"})
        EXPECT_TRUE(New(text)->IsTrue()) << text;
    EXPECT_FALSE(New()->IsTrue());
    for (const int number : {0, -1})
        EXPECT_EQ(VariableHold(new Variable("", 0, number))->IsTrue(), number != 0);
    VariableHold decimal = New();
    for (const char* text : {"-0.00", "0.01"}) {
        decimal->SetValue_mpd_Nocopy(Decimal(text));
        EXPECT_EQ(decimal->IsTrue(), *text == '0') << text;
    }
    VariableHold array = Make("0");
    EXPECT_FALSE(array->IsTrue());
    array->Element(2, 1)->SetValue_Integer(0);
    EXPECT_TRUE(array->IsTrue()); // "0,0"
}

TEST_F(VariableTest, NULL_Is_Nothing_Or_Empty_Text) {
    VariableHold variable = New();
    EXPECT_TRUE(variable->IsNULL());
    int error = 7;
    EXPECT_TRUE(mpd_iszero(variable->value_compare(&error)));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(variable->value_integer(), 0);
    EXPECT_TRUE(mpd_iszero(variable->value_mpd()));
    EXPECT_TRUE(variable->IsNULL());
    EXPECT_FALSE(VariableHold(new Variable("", 0, 0))->IsNULL());
    EXPECT_TRUE(New("")->IsNULL());
    variable->SetValue("x", 1);
    variable->SetNULL();
    EXPECT_EQ(variable->primary_type(), VALUE_NONE);
    EXPECT_EQ(Text(variable), "");
    EXPECT_FALSE(Make("a")->IsNULL());
}

TEST_F(VariableTest, Aggregate_Reads_As_Its_Leaves) {
    VariableHold array = Make("a");
    VariableHold inner = Make("bc");
    array->SetElement(2, inner.get());
    EXPECT_EQ(Text(array), "a,b,c");
    EXPECT_EQ(array->value_integer(), 0);
    int error = 0;
    EXPECT_TRUE(mpd_iszero(array->value_compare(&error)));
    EXPECT_NE(error, 0);
    array->Convert_String();
    inner->Element(1, 0)->SetValue("d", 1);
    EXPECT_EQ(Text(array), "a,d,c"); // not what was converted
    array->SetValue("x", 1);
    EXPECT_EQ(array->aggregatetype(), AGGREGATE_NONE);
    EXPECT_EQ(inner->refcount(), 1);
}

TEST_F(VariableTest, Copy_Takes_All_Forms) {
    VariableHold source(new Variable("s", 1, "1.50", 4));
    EXPECT_EQ(source->value_integer(), 1);
    VariableHold copy(new Variable(*source));
    source->SetValue("2", 1);
    EXPECT_EQ(Text(copy), "1.50");
    EXPECT_EQ(copy->value_integer(), 1);
    EXPECT_EQ(copy->name().view(), "s");
    copy->SetValue(*copy);
    copy->SetValue(*New());
    EXPECT_TRUE(copy->IsNULL());
    VariableHold null(new NULLVariable);
    copy->SetValue_Integer(3);
    copy->SetValue(*null);
    EXPECT_EQ(copy->primary_type(), VALUE_NONE);
    EXPECT_EQ(Text(copy), "");
}

TEST_F(VariableTest, Copy_Of_An_Aggregate_Shares_Nothing) {
    VariableHold array = Make("ab");
    array->Element(1, 0)->SetName("first");
    VariableHold copy(array->Clone(nullptr));
    array->Element(1, 0)->SetValue("x", 1);
    EXPECT_EQ(Elements(copy), "1=a 2=b");
    EXPECT_EQ(copy->Element(1, 0)->name().view(), "first");
    // From what hangs on the variable itself, either way.
    copy->SetValue(*copy->Element(2, 0));
    EXPECT_EQ(Text(copy), "b");
    array->Element(2, 0)->SetValue(*array);
    EXPECT_EQ(Text(array), "x,x,b");
    array->SetValue(*array);
    EXPECT_EQ(Text(array), "x,x,b");
}

TEST_F(VariableTest, Copy_Follows_The_Kind_Of_The_Source) {
    const struct {
        int kind;
        int preferred;
        bool set; // to 9
        const char* text;
        int primary;
    } cases[] = {
        {VARIABLE_INTEGER, VALUE_STRING, false, "41", VALUE_INTEGER},
        {VARIABLE_TEXT, VALUE_INTEGER, true, "shown", VALUE_STRING},
        {VARIABLE_FIELDS, VALUE_INTEGER, false, "41", VALUE_INTEGER},
        {VARIABLE_FIELDS, VALUE_DECIMAL, false, "0", VALUE_DECIMAL},
        {VARIABLE_FIELDS, VALUE_NONE, false, "shown", VALUE_STRING},
        {VARIABLE_FIELDS, VALUE_STRING, true, "9", VALUE_INTEGER},
    };
    for (const auto& c : cases) {
        VariableHold source(new Presenting(c.kind, c.preferred));
        if (c.set)
            source->SetValue_Integer(9);
        VariableHold copy(new Variable(*source));
        EXPECT_EQ(Text(copy), c.text);
        EXPECT_EQ(copy->primary_type(), c.primary);
    }
}
