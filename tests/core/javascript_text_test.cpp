#include "app/unix_compiler_application.h"
#include "core/link_buffer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

TEST(JavaScriptText, Table) {
    const struct {
        std::string text;
        const char *utf8, *bytes;
    } cases[] = {
        {"\b\t\n\f\r\"/\\", R"(\b\t\n\f\r\"\/\\)", R"(\b\t\n\f\r\"\/\\)"},
        {"azAZ09_ $+,-.:@", "azAZ09_ $+,-.:@", "azAZ09_ $+,-.:@"},
        {"!'<=>\x7F\x01", R"(\u0021\u0027\u003C\u003D\u003E\u007F\u0001)",
         R"(\u0021\u0027\u003C\u003D\u003E\u007F\u0001)"},
        {"x\xC3\xA9y", R"(x\u00E9y)", R"(x\u00C3\u00A9y)"},
        {"\xE2\x82\xAC!", R"(\u20AC\u0021)", R"(\u00E2\u0082\u00AC\u0021)"},
        {"\xF0\x9F\x98\x80", R"(\uD83D\uDE00)", R"(\u00F0\u009F\u0098\u0080)"},
        {"\xF0\xA0\x80\x80", R"(\uD800\uDC00)", R"(\u00F0\u00A0\u0080\u0080)"}, // beyond the first plane
        {"\xDF!", R"(\u07E1)", R"(\u00DF\u0021)"}, // what follows a lead byte is not checked
        {"a\xC3", R"(a\u00C3)", R"(a\u00C3)"},
        {"\xF0\x9F\x98", R"(\u00F0\u009F\u0098)", R"(\u00F0\u009F\u0098)"},
        {"\x80\xC1\x80\xF8\xFF", R"(\u0080\u00C1\u0080\u00F8\u00FF)", R"(\u0080\u00C1\u0080\u00F8\u00FF)"},
    };
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    UNIXCompilerApplication application(1, arguments);
    for (const bool is_utf8 : {true, false})
        for (const auto& c : cases) {
            application.SetCharacterSet(is_utf8 ? "UTF-8" : "iso-8859-1", -1);
            const std::string expected = is_utf8 ? c.utf8 : c.bytes;
            int length, size;
            const std::unique_ptr<char[]> result(
                application.EncodeJavaScriptString(c.text.data(), c.text.size(), &length, &size));
            EXPECT_EQ(result.get(), expected);
            EXPECT_GT(size, length);
            LinkBuffer given(1, 1);
            given.cat("given ", 6);
            TarnApplication::EncodeJavaScriptString(&application, c.text.data(), -1, &given);
            EXPECT_EQ(given.data(&length, nullptr), "given " + expected);
            const std::unique_ptr<LinkBuffer> made(
                TarnApplication::EncodeJavaScriptString(&application, c.text.data(), -1, nullptr));
            EXPECT_EQ(made->data(&length, nullptr), expected);
        }
}
