// The back end of assembly: file versions, fragments, ends of files. Directives and instructions have sources
// of their own.

#include "backend/writers/file_compiler_parser.h"

#include "app/services/tarn_application.h"
#include "backend/outputs/assembly_item.h"

#include <utility>

FileCompilerParser::FileCompilerParser(Tokenizer* tokenizer, CompilerOutput* output,
                                       ExternalCallManager* external_calls, CompilerApplication* application,
                                       int function_stdout_default, int function_access_default,
                                       ParserStartState start_state, HashTable<Variable>* locals,
                                       HashTable<Variable>* globals, HashTable<Variable>* system)
    : CompilerParser(tokenizer, external_calls, application, function_stdout_default, function_access_default,
                     start_state, locals, globals, system),
      output(output) {
}

FileCompilerParser::~FileCompilerParser() = default;

ParserStatus FileCompilerParser::End_Of_File(ParserStatus status) {
    return last_file ? CompilerParser::End_Of_File(status) : status;
}

// The item is written also when the target engine is too old for it, and at each demand.
ParserStatus FileCompilerParser::Output_Version(int major, int minor) {
    if (minor > file_version_limit)
        return Report<Message::Internal_File_Version>(minor);
    ParserStatus status = PARSER_OK;
    if (TaggedFileVersions[minor] > Engine_Version())
        status = Report_Old_Engine();
    Assembly_Item(output).Text("\n.version\t").Number(major).Text(".").Number(minor);
    return status;
}

ParserStatus FileCompilerParser::Report_Old_Engine() {
    int length;
    int size;
    String version;
    char* text = TarnApplication::dtos(Engine_Version(), &length, &size);
    version.assign_nocopy(text, length, size);
    return Report<Message::Version_Not_Supported>(version);
}

void FileCompilerParser::Output_End_Of_File() {
    Output_LineNo();
    if (tokenizer_stack.Entries() == 0) {
        Assembly_Item(output).Text("\n; end of compiled file\n");
        return;
    }
    const String* file = Current_File();
    Assembly_Item(output).Text("\n; end of included file ");
    output->Write(file->text(), file->length());
    Assembly_Item(output).Text("\n");
}

CompilerOutput* FileCompilerParser::Set_Output(CompilerOutput* replacement) {
    return std::exchange(output, replacement);
}

int FileCompilerParser::Output_Fragment(StringOutput* fragment) {
    return fragment->Move_Contents(output);
}

void FileCompilerParser::Expect_Code(std::size_t length) {
    output->Expect(length);
}

void FileCompilerParser::Last_File() {
    last_file = 1;
}
