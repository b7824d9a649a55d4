// What the scanner makes of odd sources, and calls in other files. Most of it is shown by the pages.

#include "app/driver/unix_compiler_application.h"
#include "backend/assembly_fixture.h"
#include "files/file_tree.h"

namespace {

using namespace std::string_literals;

// Compiles a source, and notes what the scanner hands on of it.
struct Scan : Recording_Output, FileCompilerParser {
    Scan(Tokenizer* source, ParserStartState start_state, CompilerApplication* application = nullptr)
        : Recording_Output(1024), FileCompilerParser(source, this, nullptr, application, -1, -1, start_state,
                                                     nullptr, nullptr, nullptr) {
        result = Start();
    }
    Scan(const std::string& source, ParserStartState start_state)
        : Scan(new Tokenizer(source.data(), static_cast<int>(source.size()), start_state), start_state) {}

    ParserStatus CompileError(ErrorCode code, const String& message, int line, const String* file) override {
        Note((code > LAST_WARNING ? "CE_" : "CW_") + std::to_string(code), message.text(), message.length());
        return code > LAST_WARNING ? FileCompilerParser::CompileError(code, message, line, file) : PARSER_OK;
    }
    ParserStatus Unknown(const char* text, int length) override { return Note("html", text, length); }
    ParserStatus Unknown_Compress(const char* text, int length) override {
        return Note("text", text, length);
    }
    ParserStatus Attribute_Value(const char* text, int length) override {
        Note("value", text, length);
        return FileCompilerParser::Attribute_Value(text, length);
    }
    ParserStatus Expression_NumericLiteral(const char* text, int length) override {
        Note("int", text, length);
        return FileCompilerParser::Expression_NumericLiteral(text, length);
    }
    void Output_Comment(const char* text, int length) override { Note("comment", text, length); }

    std::string events;
    int result;

  private:
    ParserStatus Note(const std::string& event, const char* text, int length) {
        events += event + "(" + std::string(text, length) + ") ";
        return PARSER_OK;
    }
};

TEST(Scanner, Ends_And_Goes_On_Behind_Odd_Sources) {
    const struct {
        std::string source, events;
    } cases[] = {
        {"a\0<br>"s, "text(a) "},
        {"<", "text(<) "},
        {"<!", "html(<!) CE_111(Found end of file while looking for >) "},
        {"<a b=\"\" c=''>", "html(<a b=\"\" c=''>) "},
        {"<a b=c+d e==f>x", "html(<a b=c+d e==f>) text(x) "},
        {"<a b", "CE_104(Found '' when looking for equal sign) html(<a b) "},
        {"<a b=c", "CE_102(Found '' when looking for attribute name) html(<a b=c) "},
        {"<TnEVAL EXPR=\"{l.x} \">",
         "CE_108(Found ' ' when looking for double quote at end of expression) text(\">) "},
        {"<TnEVAL EXPR=\"{l.x", "CE_107(Found end of file when looking for end of expression) "},
        {"<TnEVAL EXPR=\"{l.x}", "CE_106(Found end of file while looking for close quote) "},
        {"<TnEVAL EXPR=\"v", "CE_106(Found end of file when looking for close quote) "},
        {"<TnEVAL EXPR='\"x\\'{1}'>", "value(\"x\\'{1}) "},
        {"<TnEVAL EXPR=\"{l.x - 1 -2 * -3}\">", "int(1) int(2) int(-3) "},
        {"<TnEVAL EXPR=\"{l.x * - 1}\">", "int(1) CE_178(Expression has too many operators) "},
        {"<TnCOMMENT", ""},
        {"<TnCOMMENT></TnCOMMENT>", "comment() "},
        {"<TnCOMMENT>" + std::string(400, 'x') + "</tncomment>", "comment(" + std::string(400, 'x') + ") "},
        {"<TnCOMMENT><tncomment></TnCOMMENT>", "CW_15(Found nested <TnCOMMENT> tags) comment(<tncomment>) "},
        {"<TnASSEMBLY>01", ""},
        {"<TnASSEMBLY", "CE_101(Found end of file when looking for </TnASSEMBLY>) "},
    };
    for (const auto& c : cases) {
        const Scan scan(c.source, START_FILE);
        EXPECT_EQ(scan.events, c.events) << c.source;
        EXPECT_EQ(scan.result, c.events.find("CE_") != std::string::npos) << c.source;
    }
}

std::size_t Count(const std::string& text, const char* word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

// What an expression comes to.
std::string Compiled(const std::string& source, int expected_result = 0) {
    Scan scan(source, START_EXPRESSION);
    EXPECT_EQ(scan.result, expected_result) << scan.events;
    return scan.Written();
}

TEST(InlineCall, Scratch_Variables_Are_Those_Of_The_Depth) {
    EXPECT_EQ(Count(Compiled("['f'].a(['f'].b(['f'].c()), ['f'].d())"), ".local"), 2u); // d has c's
}

// The text of a bracket is short by its parentheses: that cuts numbers, but no name.
TEST(InlineCall, Parentheses_In_A_Bracket) {
    EXPECT_EQ(Count(Compiled("['q'].f([ (l.dir) $ l.name ].g())"), "\tl_1\t\"name\"\n"), 1u);
    EXPECT_EQ(Count(Compiled("['q'].f([ (1) + 1234 ].g())"), "\tpushi\t123\n"), 1u);
}

TEST(InlineCall, Depth_Is_Not_Bounded_By_The_Stack) {
    const int depth = 50000;
    std::string calls, brackets;
    for (int i = 0; i < depth; ++i) {
        calls += "['f'].a(";
        brackets += "['f'].a([";
    }
    EXPECT_EQ(Count(Compiled(calls + "1" + std::string(depth, ')')), "\tdo_function"), 50000u);
    EXPECT_EQ(Count(Compiled(brackets, 1), "\tdo_function"), 0u);
}

using Source_File = File_Tree;

// Takes the page away when the file is opened that it includes.
struct Taking_Manager : UNIXFileManager {
    using UNIXFileManager::UNIXFileManager;
    File* Open(const char* path, int mode) override {
        if (path == "taker"s)
            unlink("page");
        return UNIXFileManager::Open(path, mode);
    }
};

struct Taking_Application : UNIXCompilerApplication {
    using UNIXCompilerApplication::UNIXCompilerApplication;
    FileManager* filemanager() override { return &taking; }
    Taking_Manager taking{nullptr};
};

TEST_F(Source_File, Vanished_Behind_An_Include_Is_Reported) {
    Put("page", "<TnINCLUDE FILE=\"taker\">c");
    Put("taker", "d");
    char program[] = "tnc", *arguments[] = {program, nullptr};
    Taking_Application application(1, arguments);
    auto* page = new Tokenizer(&application.taking);
    EXPECT_TRUE(page->Open("page"));
    const Scan scan(page, START_FILE, &application);
    EXPECT_EQ(scan.events,
              "value(taker) text(d) CE_186(Unable to reopen file 'page': " + System_Text(ENOENT) + ") ");
}

} // namespace
