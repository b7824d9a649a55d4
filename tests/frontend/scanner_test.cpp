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

// The code of an expression that is called behind others so many times.
std::string Nested(int depth, const std::string& opening, const std::string& end, int expected_result) {
    std::string source;
    for (int i = 0; i < depth; ++i)
        source += opening;
    Scan scan(source + end, START_EXPRESSION);
    EXPECT_EQ(scan.result, expected_result) << scan.events;
    return scan.Written();
}

TEST(InlineCall, Nested_Call_Is_Compiled_First) {
    const std::string scratch =
        "__scratch_funcdo_0_d41d8cd98f00b204e9800998ecf8427e"; // by the empty file name
    EXPECT_EQ(Nested(1, "", "[ l.f ].g( [ l.h ].i() )", 0),
              "\n.local\tl_0\t\"f\"\n\tlineno\t1\n\tpushl\tl_0\n.local\tl_1\t\"h\"\n\tpushl\tl_1"
              "\n.string\ts_0\t\"i()\"\n\tpushc\ts_0\n\tdo_function\n.local\tl_2\t\"" +
                  scratch + "\"\n\tpopl\tl_2\n.string\ts_1\t\"g( l." + scratch +
                  " )\"\n\tpushc\ts_1\n\tdo_function");
    EXPECT_EQ(Count(Nested(1, "", "['f'].a(['f'].b(['f'].c()), ['f'].d())", 0), ".local"), 2u); // d has c's
}

// The text of a bracket is short by its parentheses: that cuts numbers, but no name.
TEST(InlineCall, Parentheses_In_A_Bracket) {
    EXPECT_EQ(Count(Nested(1, "", "['q'].f([ (l.dir) $ l.name ].g())", 0), "\tl_1\t\"name\"\n"), 1u);
    EXPECT_EQ(Count(Nested(1, "", "['q'].f([ (1) + 1234 ].g())", 0), "\tpushi\t123\n"), 1u);
}

TEST(InlineCall, Depth_Is_Not_Bounded_By_The_Stack) {
    const int depth = 50000;
    const std::string code = Nested(depth, "['f'].a(", "1" + std::string(depth, ')'), 0);
    EXPECT_EQ(Count(code, "\tdo_function"), static_cast<std::size_t>(depth));
    EXPECT_EQ(Count(Nested(depth, "['f'].a([", "", 1), "\tdo_function"), 0u);
}

using Source_File = File_Tree;

TEST_F(Source_File, Opened_Or_Refused) {
    Put("some", "a b");
    Put("none", "");
    Put("page", std::string(4096, ' '));
    Put("huge", "");
    std::filesystem::resize_file("huge", std::uintmax_t{1} << 31);
    const struct {
        const char* path;
        std::string error; // empty when it opens
        int length = 0;    // of the first token
    } cases[] = {{"some", "", 1},
                 {"none", ""},
                 {"page", "", 4096},
                 {"root", "Is a directory"},
                 {"absent", System_Text(ENOENT)},
                 {"huge", System_Text(EFBIG)}};
    for (const auto& c : cases) {
        Tokenizer tokenizer(manager.get());
        EXPECT_EQ(tokenizer.Open(c.path), c.error.empty()) << c.path;
        EXPECT_EQ(tokenizer.lasterror.text(), c.error);
        const char* text;
        int length = 0;
        tokenizer.Get_Next_Token(&text, length);
        EXPECT_EQ(length, c.length) << c.path;
    }
}

// Takes the page away when the file is opened that it includes.
struct Taking_Manager : UNIXFileManager {
    using UNIXFileManager::UNIXFileManager;
    File* Open(const char* path, int mode) override {
        if (!strcmp(path, "taker"))
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
    char program[] = "tnc";
    char* arguments[] = {program, nullptr};
    Taking_Application application(1, arguments);
    auto* page = new Tokenizer(&application.taking);
    EXPECT_TRUE(page->Open("page"));
    const Scan scan(page, START_FILE, &application);
    EXPECT_EQ(scan.events,
              "value(taker) text(d) CE_186(Unable to reopen file 'page': " + System_Text(ENOENT) + ") ");
}

} // namespace
