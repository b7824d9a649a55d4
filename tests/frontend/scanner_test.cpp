#include "frontend/recording_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

struct Case {
    std::string source;
    const char* events;
};

void Check(const std::vector<Case>& cases, ParserStartState start_state) {
    for (const Case& c : cases) {
        Recording_Parser parser(c.source, start_state);
        int result = parser.Start();
        EXPECT_EQ(parser.events, c.events) << c.source;
        EXPECT_EQ(result, parser.events.find("CE_") != std::string::npos) << c.source;
    }
}

} // namespace

TEST(Scanner, Text_And_Html) {
    Check({{"", "end0"},
           {"a\nb", "text(a\nb) end0"},
           {"a < b", "text(a ) text(< b) end0"},
           {"a\0<br>"s, "text(a) end0"},
           {"<", "text(<) end0"},
           {"x<br/>y", "text(x) /> html(<br/>) text(y) end0"},
           {"<input disabled/><hr />", "html(<input disabled/>) /> html(<hr />) end0"},
           {"<a href=\"x\" b='y>\\'' c>z</a>", "html(<a href=\"x\" b='y>\\'' c>) text(z) html(</a>) end0"},
           {"<a b=\"\" c=''>", "html(<a b=\"\" c=''>) end0"},
           {"<a b=c+d e==f>", "html(<a b=c+d e==f>) end0"},
           {"<a b=>x</a>", "html(<a b=>x</a>) end0"},
           {"<!DOCTYPE html>x", "html(<!DOCTYPE) html( html>) text(x) end0"},
           {"<!-- a > b -->x", "html(<!--) html( a > b -->) text(x) end0"},
           {"<!-- a", "html(<!--) html( a) end0"},
           {"<![CDATA[x</TnIF>y", "html(<![) html(CDATA[x) /tag0 > html(>) text(y) end0"},
           {"<!", "html(<!) CE_111@1(Found end of file while looking for >)"},
           {"<tnfoo>",
            "CW_8(Tag name 'tnfoo' may be a misspelled or obsolete Tarn Script tag) html(<tnfoo>) end0"},
           {"<TN><tnt:foo>", "CW_8(Tag name 'TN' may be a misspelled or obsolete Tarn Script tag) html(<TN>) "
                             "html(<tnt:foo>) end0"}},
          START_FILE);
}

TEST(Scanner, Known_Tags) {
    Check({{"a<TnIF EXPR = \"x\">b</TnIF>", "text(a) tag0 name(EXPR) value(x) > text(b) /tag0 > end0"},
           {"<tnELSE/>", "tag1 /> > end0"},
           {"<TnX A=5>",
            "CW_8(Tag name 'TnX' may be a misspelled or obsolete Tarn Script tag) html(<TnX A=5>) end0"},
           {"<TnIF a b=\"\" c='d\"' e>", "tag0 name(a) name(b) value() name(c) value(d\") name(e) > end0"},
           {"<TnIF a=\"{\\\"\">",
            "tag0 name(a) { reset CE_175(Found unexpected \"\\\" in expression) "
            "CE_175(Found unexpected \"\\\" in expression on scan for end of expression.) "
            "CE_102(Found '' when looking for attribute name) end1"},
           {"<TnIF a=\"x{y}\" b='{z}'>", "tag0 name(a) value(x{y}) name(b) value({z}) > end0"},
           {"<TnIF a=-5 b=.5>", "tag0 name(a) value(-5) name(b) value(.5) > end0"},
           {"<TnIF a=\"v", "tag0 name(a) CE_106@1(Found end of file when looking for close quote)"},
           {"<TnIF a=\"v w", "tag0 name(a) value(v ) CE_102(Found '' when looking for attribute name) end1"},
           {"<TnIF a='", "tag0 name(a) CE_106@1(Found end of file when looking for close quote)"}},
          START_FILE);
}

TEST(Scanner, Errors_Are_Told_And_Passed) {
    Check({{"<TnIF \"x\">", "tag0 CE_102(Found '\"' when looking for attribute name) text(x\">) end1"},
           {"<TnIF *>", "tag0 CE_102(Found '*' when looking for attribute name) text(>) end1"},
           {"<TnIF a 'b'>", "tag0 name(a) CE_104(Found ''' when looking for equal sign) text(b'>) end1"},
           {"<TnIF a=abc>", "tag0 name(a) CE_105(Found 'abc' when looking for value) text(>) end1"},
           {"<TnIF a=+5>",
            "tag0 name(a) CE_103(Found operator + when looking for attribute value) value(5) > end1"},
           {"<TnIF a=5a>", "tag0 name(a) CE_182(\"5a\" is not a valid unquoted numeric constant) > end1"},
           {"</ b>", "CE_109(Found ' ' when looking for close tag identifier) text(</ b) end1"},
           {"</b >", "CE_110(Found ' ' when looking for close tag '>' symbol) html(</b ) end1"},
           {"<TnIF a", "tag0 name(a) CE_104(Found '' when looking for equal sign) end1"},
           {"<TnIF a=", "tag0 name(a) CE_105(Found '' when looking for value) end1"},
           {"<TnIF a=5", "tag0 name(a) value(5) CE_102(Found '' when looking for attribute name) end1"},
           {"<a b", "CE_104(Found '' when looking for equal sign) html(<a b) end1"},
           {"<a b=", "CE_102(Found '' when looking for attribute name) html(<a b=) end1"},
           {"<a b=c", "CE_102(Found '' when looking for attribute name) html(<a b=c) end1"}},
          START_FILE);
}

TEST(Scanner, Expressions_In_Values) {
    Check({{"<TnIF e=\"{g.x}\">", "tag0 name(e) { var1(x) } > end0"},
           {"<a h=\"{x}\" i=\"j\">", "html(<a h=\") { var5(x) } html(\" i=\"j\">) end0"},
           {"<TnIF e=\"{x} \">",
            "tag0 name(e) { CE_108(Found ' ' when looking for double quote at end of expression) "
            "text(\">) end1"},
           {"<TnIF e=\"{x", "tag0 name(e) { CE_107(Found end of file when looking for end of expression)"},
           {"<TnIF e=\"{x}", "tag0 name(e) { CE_106(Found end of file while looking for close quote)"},
           {"<TnIF e=\"{a<b}\" f=\"1\">",
            "tag0 name(e) { reset CE_175(Found unexpected \"<\" in expression) name(f) "
            "value(1) > end1"}},
          START_FILE);
}

TEST(Scanner, Captured_Expression_Is_A_Plain_Value) {
    Recording_Parser parser("<TnIF e=\"{g.x}\" f=\"{y}\">", START_FILE);
    parser.capturing_tag = Tag::If;
    EXPECT_EQ(parser.Start(), 0);
    EXPECT_EQ(parser.events, "tag0 name(e) { value({g.x}) name(f) { var5(y) } > end0");
}

TEST(Scanner, Passages_Read_In_One_Step) {
    std::string long_body(300, 'x');
    Check({{"a<TnCOMMENT> <b </tncomment>c", "text(a) comment( <b ) text(c) end0"},
           {"<TnCOMMENT x></TnCOMMENT>", "comment(x>) end0"},
           {"<TnCOMMENT></TnCOMMENT>", "comment() end0"},
           {"<TnCOMMENT</TnCOMMENT>", "comment() end0"},
           {"<TnCOMMENT", "end0"},
           {"\n<TnCOMMENT>\n", "text(\n) CE_101@2(Found end of file when looking for </TnCOMMENT>)"},
           {"<TnCOMMENT><tncomment></TnCOMMENT>",
            "CW_15@1(Found nested <TnCOMMENT> tags) comment(<tncomment>) end0"},
           {"<TnASSEMBLY>\tout\n</TnAssembly>x", "assembly(\tout\n) text(x) end0"},
           {"<TnASSEMBLY>0123456789abcdefghij", "assembly(0123456) end0"},
           {"<TnASSEMBLY>01", "assembly() end0"},
           {"<TnASSEMBLY", "CE_101@1(Found end of file when looking for </TnASSEMBLY>)"}},
          START_FILE);
    Recording_Parser parser("<TnCOMMENT>" + long_body + "<TNComment></TnCOMMENT>", START_FILE);
    parser.Start();
    EXPECT_EQ(parser.events.find("CW_15@1"), 0u);
}

TEST(Scanner, Text_That_Is_Not_Output_Is_Warned_Of) {
    struct Flag_Case {
        int flags;
        const char* events;
    };
    const Flag_Case cases[] = {
        {OUTPUT_HTML | OUTPUT_TEXT, "text( \n ) html(<b>) text(x  y) html(</b>) end0"},
        {OUTPUT_TEXT,
         "text( \n ) CW_17(HTML will not be output) text(x  y) CW_17(HTML will not be output) end0"},
        {OUTPUT_HTML, "html(<b>) CW_17(Text will not be output) html(</b>) end0"},
        {OUTPUT_TEXT | OUTPUT_HTML | OUTPUT_COMPRESS, "text( ) html(<b>) text(x y) html(</b>) end0"},
    };
    for (const Flag_Case& c : cases) {
        Recording_Parser parser(" \n <b>x  y</b>", START_FILE);
        parser.Set_Output_Flags(c.flags);
        parser.Start();
        EXPECT_EQ(parser.events, c.events);
    }
}

TEST(Scanner, Only_Errors_Are_Counted_Afresh) {
    Recording_Parser parser("<a b", START_FILE);
    EXPECT_EQ(parser.Start(), 1);
    EXPECT_STREQ(parser.Get_Last_Error().text(), "Found '' when looking for equal sign");
    delete parser.Set_Tokenizer(new Tokenizer("x", 1, 0));
    parser.events.clear();
    EXPECT_EQ(parser.Start(), 0);
    EXPECT_EQ(parser.events, "html(x) end0"); // unfinished HTML still marks the text
}

TEST(Expressions, Operands_And_Operators) {
    Check({{"a+1", "{ var5(a) op5 int(1) }"},
           {"a +1", "{ var5(a) op5 int(1) }"},
           {"-1", "{ int(-1) }"},
           {"1 -1", "{ int(1) op6 int(1) }"},
           {"- 1", "{ op6 int(1) }"},
           {"2 * -3", "{ int(2) op18 int(-3) }"},
           {"-(a)", "{ paren var5(a) close }"},
           {".5", "{ float(0.5) }"},
           {"-.5", "{ float(-0.5) }"},
           {"1.5", "{ float(1.5) }"},
           {"1.2.3", "{ float(1.2.3) CE_212(Invalid float value \"1.2.3\") }"},
           {"0x1F", "{ int(0x1F) }"},
           {"a eq b", "{ var5(a) op4 var5(b) }"},
           {"aeq", "{ var5(aeq) }"},
           {"NOT a", "{ op30 var5(a) }"},
           {"a.mod", "{ var5(a.mod) }"},
           {"a.fmt", "{ var5(a.fmt) }"},
           {"l.x eq g.y + s.z", "{ var0(x) op4 var1(y) op5 var2(z) }"},
           {"d.f $ a.d.f", "{ var3[](f) op14 var3[a](f) }"},
           {"l.a\\ b", "{ var0(a b) }"},
           {"l.x:y", "{ var0(x) op37 member(y) }"},
           {"l.x:y(", "{ var0(x) op37 CE_172(Expected member name, found '(') }"},
           {"a[1]", "{ var5(a) op22 int(1) op3 }"},
           {"a[1]-2", "{ var5(a) op22 int(1) op3 int(-2) }"},
           {"a[1]++", "{ var5(a) op22 int(1) op3 op29/2 }"},
           {"a++ + ++b", "{ var5(a) op29 op5 op29/2 var5(b) }"},
           {"f(1, 'x')", "{ call(f) int(1) op9 string(x) close }"},
           {"(1)(2)", "{ paren int(1) close paren int(2) close }"},
           {"a'x\\'y'", "{ string(x\\'y) var5(a) }"},
           {"'x' -1", "{ string(x) int(-1) }"},
           {"'a", "{ string() }"},
           {"'", "{ string() reset"},
           {"substr a", "{ CE_177(Operator \"substr\" is obsolete) var5(a) }"},
           {"a}b", "{ var5(a) }"},
           {"", "{ reset"},
           {"a=b",
            "{ reset CE_175(Found unexpected \"=\" in expression) CE_175(Found unexpected \"=\" in "
            "expression on scan for end of expression.) CE_102(Found '' when looking for attribute name) "
            "end1"}},
          START_EXPRESSION);
}

TEST(Expressions, Call_In_Another_File) {
    Check({{"[ 'f' ].g( a, (b) )", "{ op22/2 string(f) op3/3 do(g( a, (b) )) }"},
           {"['f'].g(')') + 1", "{ op22/2 string(f) op3/3 do(g(')')) op5 int(1) }"},
           {"['f'].g(a[1])", "{ op22/2 string(f) op3/3 do(g(a[1])) }"},
           {"['f'].g(",
            "{ op22/2 string(f) op3/3 CE_112(Missing close parenthesis in inline TnDO expression.) }"},
           {"['f'].g",
            "{ op22/2 string(f) op3/3 CE_175(Found unexpected end of file in inline TnDO expression.) }"},
           {"['f'].g(].h())",
            "{ op22/2 string(f) op3/3 CE_175(Found closing bracket without an opening bracket in "
            "inline TnDO expression)"},
           {"['f'].g('",
            "{ op22/2 string(f) op3/3 CE_112(Missing close parenthesis in inline TnDO expression.) reset"}},
          START_EXPRESSION);
}
