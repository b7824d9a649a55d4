#include "backend/assembly_fixture.h"
#include "frontend/values/attribute_value.h"
#include "frontend/values/attribute_value_array.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string Text_Of(const AttributeValue& value) {
    int length;
    const char* text = value.Get_Simple_Text(&length);
    return text ? std::string(text, static_cast<std::size_t>(length)) : "(none)";
}

} // namespace

TEST(AttributeValue, Given_Twice) {
    Assembly_Parser parser;
    AttributeValue value;
    StringOutput* fragment;
    EXPECT_EQ(value.Set_Simple_Text("a", 1, ATTREXPR_MEMBER), 0);
    EXPECT_EQ(value.Get_Expression(&fragment, ATTREXPR_VALUE), 0); // text does not count here
    EXPECT_EQ(value.Set_Simple_Text("b", 1, ATTREXPR_MEMBER), 1);
    EXPECT_EQ(Text_Of(value), "a");
    EXPECT_EQ(value.error_code, 171);
    EXPECT_EQ(value.Set_Literal(7, ATTREXPR_VALUE), 1);
    EXPECT_EQ(value.Get_Expression(&fragment, ATTREXPR_VALUE), 1);
    EXPECT_STREQ(value.error_message.text(), "Attribute is used more than once");
    EXPECT_EQ(value.Set_Simple_Text("b", 1, ATTREXPR_MEMBER), 1);
    EXPECT_STREQ(value.error_message.text(),
                 "Attribute is used more than onceAttribute is used more than once");
    for (int i = 0; i < 1000; ++i)
        (void)value.Set_Simple_Text("b", 1, ATTREXPR_MEMBER);
    EXPECT_LT(value.error_message.length(), 5000);
    EXPECT_EQ(value.Set_Literal(&parser, "l.a", 3, ATTREXPR_TARGET), 1);
    EXPECT_EQ(value.error_code, 170);

    value.Reset();
    EXPECT_FALSE(value.Is_Set());
    EXPECT_EQ(value.Set_Literal(7, ATTREXPR_VALUE), 0);
}

TEST(AttributeValue, Fragment_Starts_Empty_After_A_Reset) {
    AttributeValue value;
    StringOutput* fragment;
    ASSERT_EQ(value.Get_Expression(&fragment, ATTREXPR_VALUE), 0);
    fragment->Write("dropped", -1);
    value.Reset();
    ASSERT_EQ(value.Get_Expression(&fragment, ATTREXPR_VALUE), 0);
    int length;
    fragment->Contents(&length);
    EXPECT_EQ(length, 0);
}

TEST(AttributeValue, Names) {
    struct Case {
        const char* text;
        AttrExprType type;
        Variable_Scope scope;
        const char* qualifiers;
        const char* written;
    };
    const Case cases[] = {
        {"l.a", ATTREXPR_TARGET, SCOPE_LOCAL, "", "\n.local\tl_0\t\"a\""},
        {"g.a[1]:b", ATTREXPR_TARGET, SCOPE_GLOBAL, "[1]:b", "\n.global\tl_0\t\"a\""},
        {"d.f", ATTREXPR_VARIABLE, SCOPE_DATABASE, "", "\n.string\ts_0\t\"f\"\n.string\ts_1\t\"\""},
        {"db.d.f:m", ATTREXPR_VARIABLE, SCOPE_DATABASE, ":m", "\n.string\ts_0\t\"f\"\n.string\ts_1\t\"db\""},
        {"x.y", ATTREXPR_TARGET, SCOPE_UNSCOPED, "", "\n.string\ts_0\t\"x.y\""},
        {"l.a[1]", ATTREXPR_WHOLE_NAME, SCOPE_LOCAL_BY_NAME, "[1]", "\n.string\ts_0\t\"l.a[1]\""},
    };
    for (const Case& c : cases) {
        Assembly_Parser parser;
        AttributeValue value;
        EXPECT_EQ(value.Set_Literal(&parser, c.text, -1, c.type), 0);
        EXPECT_EQ(value.scope, c.scope) << c.text;
        EXPECT_EQ(parser.Written(), c.written);
        int length;
        const char* qualifiers = value.Aggregate_Qualifiers(&length);
        EXPECT_EQ(qualifiers ? std::string(qualifiers, static_cast<std::size_t>(length)) : "", c.qualifiers);
    }
}

TEST(AttributeValue, Spaces_In_A_Name_Are_Reported) {
    Assembly_Parser parser;
    AttributeValue value;
    EXPECT_EQ(value.Set_Literal(&parser, "l.a b[c d]", -1, ATTREXPR_TARGET), 0);
    EXPECT_STREQ(parser.Get_Last_Error().text(), "Variable name contains spaces \"l.a b\"");
}

TEST(AttributeValue, Qualifiers) {
    struct Case {
        const char* text;
        int count;
        const char* written;
    };
    const Case cases[] = {
        {"", 0, ""},
        {" \t", 0, ""},
        {"[]::", 0, ""},
        {"[1]", 1, "\n\tpushi\t1\n\telem"},
        {"[1]:n[2] ", 3,
         "\n\tpushi\t1\n\telem\n.string\ts_0\t\"n\"\n\tpushc\ts_0\n\tmemb\n\tpushi\t2\n\telem"},
        {"n", 1, "\n.string\ts_0\t\"n\"\n\tpushc\ts_0\n\tmemb"},
        {"[a1x]", 1, "\n\tpushi\ta1\n\telem"},
        {"]m", 1, "\n.string\ts_0\t\"m\"\n\tpushc\ts_0\n\tmemb"},
    };
    for (const Case& c : cases) {
        Assembly_Parser parser;
        AttributeValue value;
        int count = -1;
        EXPECT_EQ(value.Parse_Aggregate_Qualifier_Code(&parser, c.text, -1, &count, 0), 0) << c.text;
        EXPECT_EQ(count, c.count) << c.text;
        EXPECT_EQ(parser.Written(), c.written) << c.text;
    }
    Assembly_Parser parser;
    AttributeValue value;
    EXPECT_EQ(value.Parse_Aggregate_Qualifier_Code(&parser, "[1][abc][2]", -1, nullptr, 0), 1);
    EXPECT_EQ(value.error_code, 118);
    EXPECT_EQ(parser.Written(), "\n\tpushi\t1\n\telem");
}

TEST(AttributeValue, Output_By_Type) {
    struct Case {
        AttrExprType type;
        int store;
        const char* literal; // of the constant or local number 4, with the text t
        const char* expression;
    };
    const Case cases[] = {
        {ATTREXPR_MEMBER, 0, "\n.string\ts_0\t\"t\"\n\tpushc\ts_0\n\tmemb", "code\n\tmemb"},
        {ATTREXPR_INDEX, 0, "\n\tpushc\ts_4\n\telem", "code\n\telem"},
        {ATTREXPR_TARGET, 0, "\n\tpushl\tl_4", "code\n\tpushn"},
        {ATTREXPR_TARGET, 1, "\n\tpopl\tl_4", "code\n\tpopn"},
        {ATTREXPR_WHOLE_NAME, 1, "\n\tpopl\tl_4", "code\n\tpopn"},
        {ATTREXPR_VARIABLE, 1, "\n\tpushl\tl_4", "code\n\tpushn"},
        {ATTREXPR_FLAG, 0, "\n\tpushc\ts_4", "code"},
        {ATTREXPR_VALUE, 0, "\n\tpushc\ts_4", "code"},
        {ATTREXPR_TEXT, 0, "\n.string\ts_0\t\"t\"\n\tpushc\ts_0", "code"},
    };
    for (const Case& c : cases) {
        Assembly_Parser parser;
        AttributeValue literal;
        ASSERT_EQ(literal.Set_Simple_Text("t", 1, c.type), 0);
        ASSERT_EQ(literal.Set_Literal(4, c.type), 0);
        literal.scope = SCOPE_LOCAL;
        literal.Output(&parser, c.store, 0, 0);
        EXPECT_EQ(parser.Written(), c.literal) << c.type;

        AttributeValue value;
        StringOutput* fragment;
        ASSERT_EQ(value.Get_Expression(&fragment, c.type), 0);
        fragment->Write("code", 4);
        value.Output(&parser, c.store, 0, 0);
        EXPECT_EQ(parser.Written(), c.expression) << c.type;
    }
    Assembly_Parser parser;
    AttributeValue unset;
    unset.Output(&parser, 0, 0, 0);
    EXPECT_EQ(parser.Written(), "\n.string\ts_0\t\"\"\n\tpushc\ts_0");
}

TEST(AttributeValue, Line_Is_Forced_For_The_Value_Alone) {
    Assembly_Parser parser;
    parser.line = 9;
    AttributeValue value;
    ASSERT_EQ(value.Set_Literal(4, ATTREXPR_INDEX), 0);
    value.line = 3;
    value.Output(&parser, 0, 0, 0);
    EXPECT_EQ(parser.Written(), "\n\tlineno\t3\n\tpushc\ts_4\n\tlineno\t9\n\telem");
}

TEST(AttributeValue, Filters) {
    struct Case {
        const char* text;
        const char* chomped;
        int braces;
        AttrExpr_Filter_Type type;
    };
    const Case cases[] = {
        {"{ a GT 1 }", "a GT 1", 1, FILTER_INVALID},
        {" {a} ", "{a}", 0, FILTER_INVALID},
        {"{}", "", 1, FILTER_INVALID},
        {"{", "{", 0, FILTER_INVALID},
        {"", "", 0, FILTER_INVALID},
        {"Variable", "Variable", 0, FILTER_VARIABLE},
        {"EXPRESSION", "EXPRESSION", 0, FILTER_EXPRESSION},
    };
    for (const Case& c : cases) {
        AttributeValue value;
        ASSERT_EQ(value.Set_Simple_Text(c.text, -1, ATTREXPR_VALUE), 0);
        int length;
        int braces;
        const char* chomped = value.Chomped_Filter_String(&length, &braces);
        EXPECT_EQ(std::string(chomped, static_cast<std::size_t>(length)), c.chomped);
        EXPECT_EQ(braces, c.braces) << c.text;
        EXPECT_EQ(value.Filter_Type(), c.type) << c.text;
    }
    Assembly_Parser parser;
    AttributeValue value;
    EXPECT_EQ(value.Filter_Type(), FILTER_EXPRESSION);
    EXPECT_EQ(value.Make_Expression_Literal(&parser), 1);
    EXPECT_EQ(parser.Get_Last_Error().length(), 0);
    EXPECT_EQ(value.error_code, 145);
    ASSERT_EQ(value.Set_Literal(1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(value.Filter_Type(), FILTER_INVALID);
}

TEST(AttributeValue, Filter_Compiled_Or_Kept) {
    Assembly_Parser parser;
    AttributeValue compiled;
    ASSERT_EQ(compiled.Set_Simple_Text("l.f", -1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(compiled.Make_Filter_Expression(&parser, FILTER_VARIABLE, 0), 0);
    compiled.Output(&parser, 0, 0, 0);
    EXPECT_EQ(parser.Written(), "\n.local\tl_0\t\"f\"\n\tlineno\t1\n\tpushl\tl_0");

    AttributeValue kept;
    ASSERT_EQ(kept.Set_Simple_Text("{ a GT 1 }", -1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(kept.Make_Filter_Expression(&parser, FILTER_EXPRESSION, 1), 0);
    kept.Output(&parser, 0, 0, 0);
    EXPECT_EQ(parser.Written(), "\n.string\ts_0\t\"a GT 1\"\n\tpushc\ts_0");

    AttributeValue plain;
    ASSERT_EQ(plain.Set_Simple_Text("a GT 1", -1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(plain.Make_Filter_Expression(&parser, FILTER_EXPRESSION, 0), 1);
    EXPECT_STREQ(parser.Get_Last_Error().text(), "Non-variable filter statements require \"{}\"");
    EXPECT_EQ(plain.Make_Filter_Expression(&parser, FILTER_INVALID, 0), 1);
}

TEST(AttributeValueArray, Grows_And_Keeps_Its_Values) {
    AttributeValueArray row(nullptr, 15, 10);
    row.Reset(3);
    EXPECT_EQ(row.Check_Complete(1), 1);
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(row.Element(i)->Set_Simple_Text("v", 1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(row.Last_Used(), 2);
    row.Element(100);
    EXPECT_EQ(row.Last_Used(), 100);
    EXPECT_EQ(row.Check_Complete(3), 0);
    EXPECT_EQ(row.Check_Complete(4), 1);
    EXPECT_EQ(row.Check_Complete(200), 1);
    EXPECT_EQ(Text_Of(*row.Element(1)), "v");
    row.Reset(2);
    EXPECT_EQ(Text_Of(*row.Element(1)), "(none)");
    EXPECT_EQ(Text_Of(*row.Element(2)), "v");
    EXPECT_EQ(row.Last_Used(), 2);
}

TEST(AttributeValueArray, Output_Up_To_The_Last_Element_Used) {
    Assembly_Parser parser;
    AttributeValueArray row(&parser, 4, 4);
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(row.Element(i)->Set_Literal(i, ATTREXPR_VALUE), 0);
    row.Output(-1, 1);
    EXPECT_EQ(parser.Written(), "\n\tpushc\ts_1\n\tpushc\ts_2");
    row.Output(2, 0);
    EXPECT_EQ(parser.Written(), "\n\tpushc\ts_0\n\tpushc\ts_1");
}
