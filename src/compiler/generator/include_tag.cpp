// TnINCLUDE: another file, compiled in place or printed unchanged.

#include "app/driver/compiler_application.h"
#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "files/file.h"
#include "files/file_manager.h"
#include "files/file_status.h"
#include "frontend/scanner/tokenizer.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <utility>

namespace {
constexpr const char* is_the_output = "it is the output";
}

// INTERPRET holds for one tag only.
ParserStatus CompilerParser::Open_Include(int) {
    include_interpret = 1;
    return PARSER_OK;
}

// Tags stand in the text of a filter only behind an error, and open no files there.
ParserStatus CompilerParser::Generate_Include(int) {
    if (start_state != START_FILE)
        return PARSER_ERROR;
    int length = 0;
    const char* text = Value<Tag::Include, Attribute::File>()->Get_Simple_Text(&length);
    const String name(text, length);
    // The current file is not among them: one that includes itself is met at the second nesting.
    if (Is_Suspended(name))
        return Fatal<Message::Include_Recursive>();
    return include_interpret ? Include_Source(name) : Include_Text(name);
}

ParserStatus CompilerParser::Include_Source(const String& name) {
    auto included = std::make_unique<Tokenizer>(application->filemanager());
    if (!included->Open(name))
        return Report<Message::Include_Not_Opened>(name, included->lasterror);
    if (application->Is_Output(included->Opened()))
        return Report<Message::Include_Not_Opened>(name, is_the_output);
    Enter_Included_File(std::move(included));
    return Start_Of_File();
}

ParserStatus CompilerParser::Include_Text(const String& name) {
    FileManager* manager = application->filemanager();
    const File_Stamp stamp(name.text());
    if (application->Is_Output(stamp))
        return Report<Message::Include_Not_Opened>(name, is_the_output);
    if (stamp.Is_Stream())
        return Report<Message::Include_Not_Opened>(name, std::strerror(ESPIPE));
    std::unique_ptr<File> file(manager->Open(name.text(), FILE_MODE_READ));
    if (!file)
        return Report<Message::Include_Not_Opened>(name, manager->error());
    const long size = file->Length();
    if (size > INT_MAX)
        return Report<Message::Include_Not_Opened>(name, std::strerror(EFBIG));
    const char* contents = size < 0 ? nullptr : file->Map(0, size);
    if (!contents && size != 0)
        return Report<Message::Include_Not_Mapped>(name, file->error());
    Queue(OPCODE_PUSHC,
          Generate_String_Directive(contents ? contents : "", static_cast<int>(size), EXPRESSION_STATE_TEXT));
    Queue(OPCODE_OUT);
    return stamp.Is_Changed(name.text()) ? Report<Message::Include_Not_Mapped>(name, file_changed)
                                         : PARSER_OK;
}
