#include "files/file_tree.h"
#include "frontend/recording_parser.h"

#include <cerrno>
#include <memory>

namespace {

std::string All_Text(Tokenizer& tokenizer) {
    std::string all;
    const char* text;
    int length;
    while (tokenizer.Get_Next_Token(&text, length) != TOKEN_EOF)
        all.append(text, static_cast<std::size_t>(length));
    return all;
}

// Reads the file that a value names in place of the tag's end, as an include does.
class Including_Parser : public Recording_Parser {
  public:
    explicit Including_Parser(FileManager* manager) : Recording_Parser("", START_FILE), manager(manager) {}

    ParserStatus Attribute_Value(const char* text, int length) override {
        included = String(text, length);
        return PARSER_OK;
    }
    ParserStatus End_Of_Tag(int) override {
        auto file = std::make_unique<Tokenizer>(manager);
        EXPECT_TRUE(file->Open(included));
        Enter_Included_File(file.release());
        if (included.matches("gone", 0))
            unlink("main");
        return PARSER_OK;
    }

    FileManager* manager;
    String included;
};

} // namespace

class Source_File : public File_Tree {
  protected:
    std::string Events_Of_Main() {
        Including_Parser parser(manager.get());
        auto* file = new Tokenizer(manager.get());
        EXPECT_TRUE(file->Open("main"));
        delete parser.Set_Tokenizer(file);
        parser.Start();
        return parser.events;
    }
};

TEST_F(Source_File, Opened_Or_Refused) {
    Put("some", "a\nb");
    Put("none", "");
    Put("page", std::string(4096, 'x'));
    Put("huge", "");
    std::filesystem::resize_file("huge", std::uintmax_t{1} << 31);
    struct Case {
        const char* path;
        std::string error; // empty when it opens
        std::string text;
    };
    const Case cases[] = {
        {"some", "", "a\nb"},
        {"none", "", ""},
        {"page", "", std::string(4096, 'x')},
        {"root", "Is a directory", ""},
        {"absent", System_Text(ENOENT), ""},
        {"huge", System_Text(EFBIG), ""},
    };
    for (const Case& c : cases) {
        Tokenizer tokenizer(manager.get());
        EXPECT_EQ(tokenizer.Open(c.path), c.error.empty()) << c.path;
        EXPECT_EQ(tokenizer.lasterror.text(), c.error);
        EXPECT_EQ(All_Text(tokenizer), c.text);
    }
}

TEST_F(Source_File, Scan_Goes_On_Behind_An_Include) {
    Put("main", "a\n<TnINCLUDE FILE=\"b\">c");
    Put("b", "<TnINCLUDE FILE=\"d\">e");
    Put("d", "f");
    EXPECT_EQ(Events_Of_Main(),
              "text(a\n) tag54 name(FILE) tag54 name(FILE) text(f) end0 text(e) end0 text(c) end0");
}

TEST_F(Source_File, Vanished_Behind_An_Include_Is_Reported) {
    Put("main", "<TnINCLUDE FILE=\"gone\">c");
    Put("gone", "d");
    EXPECT_EQ(Events_Of_Main(), "tag54 name(FILE) text(d) end0 CE_186(Unable to reopen file 'main': " +
                                    System_Text(ENOENT) + ") end1");
}
