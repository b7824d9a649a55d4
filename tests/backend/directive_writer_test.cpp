#include "backend/assembly_fixture.h"

#include <gtest/gtest.h>

namespace {

TEST(Directive_Writer, Each_Directive_Has_Its_Text) {
    const struct {
        void (*write)(Assembly_Parser& parser);
        const char* expected;
    } cases[] = {
        {[](auto& p) { p.Output_String_Directive(nullptr, "a\"b", 3, 7, EXPRESSION_STATE_TEXT); },
         "\n.string\ts_7\t\"a\\22b\""},
        {[](auto& p) { p.Output_Variable_Directive(nullptr, "a\\\\b\"\\.c\\", 8, 2, SCOPE_GLOBAL); },
         "\n.global\tl_2\t\"a\\b\".c\""},
        {[](auto& p) { p.Output_Variable_Directive(nullptr, "x", 1, 2, SCOPE_DATABASE); }, ""},
        {[](auto& p) { p.Output_Ident_Directive(nullptr, "a\\b", 3); }, "\n.ident\t\"a\\5cb\""},
        {[](auto& p) { p.Output_Localized_Directive("e\\n", 3, "i\\d", 3, "a\\b", 3); },
         "\n.localized\t\"en\"\t\"id\"\t\"a\\5cb\""},
    };
    Assembly_Parser parser;
    for (const auto& c : cases) {
        c.write(parser);
        EXPECT_EQ(parser.Written(), c.expected);
    }
}

TEST(Directive_Writer, Function_Head_Shows_Kind_And_Levels) {
    const struct {
        int kind;
        int stdout_level;
        int error_level;
        int access;
        const char* flags;
    } cases[] = {
        {0, 3, -1, -1, ""},
        {0, -1, -1, 1, "\tstdoutinherit"},
        {0, 7, 0, -1, "\terroroutputleveloff\tcompresswhitespace"},
        {1, -1, -1, -1, "\tunresolved\tstdoutinherit"},
        {2, -1, -1, -1, "\texternal\tstdoutinherit"},
        {3, 4, 1, 2,
         "\texternal\tunresolved\terroroutputlevelon\tcompresswhitespace\tprivate\n.version\t1.12"},
    };
    Assembly_Parser parser;
    for (const auto& c : cases) {
        parser.Output_Function_Directive("My_Function", 11, c.kind, c.stdout_level, c.error_level, c.access);
        EXPECT_EQ(parser.Written(), std::string("\n\n.function my_function") + c.flags);
    }
}

} // namespace
