// The frame of a source file: its name at the start, the checks and the end marker at its end, and the line
// numbers between them.

#include "backend/instructions/opcode.h"
#include "compiler/generator/block_tables.h"
#include "core/md5.h"
#include "frontend/scanner/tokenizer.h"

ParserStatus CompilerParser::Start_Of_File() {
    if (const std::string_view file = Current_File()->view(); digested_file != file)
        Set_File_Ident(file);
    if (start_state == START_FILE)
        Queue_Source_File();
    return PARSER_OK;
}

void CompilerParser::Set_File_Ident(std::string_view file) {
    digested_file = file;
    source_name = nullptr;
    source_constant = -1;
    unsigned char digest[16];
    MD5Encoder().Encode(reinterpret_cast<const unsigned char*>(file.data()),
                        static_cast<unsigned>(file.size()), digest);
    MD5Encoder::Make_Printable(digest, file_ident);
}

void CompilerParser::Queue_Source_File() {
    Queue(OPCODE_SOURCEFILE, Source_Constant());
}

int CompilerParser::Source_Constant() {
    if (source_constant != -1 && Generating())
        return source_constant;
    const String* file = Current_File();
    const int ident = Generate_String_Directive(file->text(), file->length(), EXPRESSION_STATE_TEXT);
    if (Generating())
        source_constant = ident;
    return ident;
}

const String* CompilerParser::Current_File() const {
    return &tokenizer->filename;
}

const String* CompilerParser::Keep_Source_Name() {
    const String& file = *Current_File();
    source_name = &source_names.try_emplace(std::string(file.view()), file).first->second;
    return source_name;
}

ParserStatus CompilerParser::End_Of_File(ParserStatus status) {
    if (tokenizer_stack.Entries() > 0) { // an included file
        if (status == PARSER_OK)
            Output_End_Of_File();
        return status;
    }
    status = Check_Open_Blocks(status);
    status = Resolve_Calls(status);
    Declare_External_Functions();
    if (status == PARSER_OK)
        Output_End_Of_File();
    return status;
}

ParserStatus CompilerParser::Check_Open_Blocks(ParserStatus status) {
    for (const Block_Family& family : block_families) {
        status = family.stack ? Check_State_Empty(&(this->*family.stack), Tag_Word(family.tag), status)
                              : Check_State_Empty(&ifdef_stack, status);
    }
    status = Check_Single_Block(smtp_block.get(), Tag::Smtp, status);
    status = Check_Single_Block(async_block.get(), Tag::Asynchronous, status);
    if (Inside_Function())
        status = Report<Message::Function_Unclosed>();
    return status;
}

ParserStatus CompilerParser::Check_Single_Block(const Resolution_Info* block, int tag, ParserStatus status) {
    if (!block)
        return status;
    return Report_At<Message::Single_Block_Unclosed>(block->line, block->file, Tag_Word(tag), Tag_Word(tag));
}

void CompilerParser::Output_LineNo() {
    if (lineno_forced)
        return;
    const int line = Line();
    if (line != last_lineno) {
        last_lineno = line;
        Queue(OPCODE_LINENO, line);
    }
}

void CompilerParser::Force_LineNo(int line) {
    lineno_forced = 1;
    if (line != last_lineno) {
        last_lineno = line;
        Queue(OPCODE_LINENO, line);
    }
}

void CompilerParser::Unforce_LineNo() {
    lineno_forced = 0;
}

void CompilerParser::Reset_LineNo() {
    last_lineno = 0;
}
