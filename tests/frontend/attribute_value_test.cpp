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

TEST(AttributeValue, Text_Is_Given_Once_Without_Reports_Without_End) {
    AttributeValue value;
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(value.Set_Simple_Text(i ? "b" : "a", 1, ATTREXPR_MEMBER), i > 0);
    EXPECT_EQ(Text_Of(value), "a");
    EXPECT_TRUE(value.error_message.length() > 64 && value.error_message.length() < 5000);
}

TEST(AttributeValue, Qualifiers_Become_Code_As_Far_As_They_Are_Good) {
    const struct {
        const char* text;
        int status, count;
        const char* written;
    } cases[] = {
        {" \t", 0, 0, ""},
        {"[]::", 0, 0, ""},
        {"[1]:n ", 0, 2, "\n\tpushi\t1\n\telem\n.string\ts_0\t\"n\"\n\tpushc\ts_0\n\tmemb"},
        {"[a1x]", 0, 1, "\n\tpushi\ta1\n\telem"},
        {"]m", 0, 1, "\n.string\ts_0\t\"m\"\n\tpushc\ts_0\n\tmemb"},
        {"[1][abc][2]", 1, 1, "\n\tpushi\t1\n\telem"},
    };
    for (const auto& c : cases) {
        Assembly_Parser parser;
        AttributeValue value;
        int count = 0;
        EXPECT_EQ(value.Parse_Aggregate_Qualifier_Code(&parser, c.text, -1, &count, 0), c.status) << c.text;
        EXPECT_EQ(count, c.count) << c.text;
        EXPECT_EQ(parser.Written(), c.written);
    }
}

TEST(AttributeValue, Filter_Needs_A_Text_And_A_Type) {
    Assembly_Parser parser;
    AttributeValue value;
    EXPECT_EQ(value.Make_Expression_Literal(&parser), 1);
    EXPECT_EQ(parser.Get_Last_Error().length(), 0);
    EXPECT_EQ(value.Set_Simple_Text("{", -1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(value.Make_Filter_Expression(&parser, FILTER_INVALID, 0), 1);
}

TEST(AttributeValueArray, Grows_And_Keeps_Its_Values) {
    AttributeValueArray row(nullptr, 15, 10);
    row.Reset(3);
    EXPECT_EQ(row.Check_Complete(1), 1);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(row.Element(i)->Set_Simple_Text("v", 1, ATTREXPR_VALUE), 0);
    EXPECT_EQ(row.Last_Used(), 2);
    row.Element(100);
    EXPECT_EQ(row.Last_Used(), 100);
    for (const int count : {3, 4, 200})
        EXPECT_EQ(row.Check_Complete(count), count > 3);
    EXPECT_EQ(Text_Of(*row.Element(1)), "v");
    row.Reset(2);
    EXPECT_EQ(Text_Of(*row.Element(1)) + Text_Of(*row.Element(2)), "(none)v");
    EXPECT_EQ(row.Last_Used(), 2);
}

} // namespace
