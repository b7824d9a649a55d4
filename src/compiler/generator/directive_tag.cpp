// The TARN tag directs the compiler itself. Most of its attributes act as soon as they are read, in source
// order, and so do the output levels that other tags share with it; only ERRORMESSAGE and DISABLE-LOGGING
// wait for the end of the tag.

#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "compiler/generator/keyword_lists.h"
#include "compiler/records/attribute_routes.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"

namespace {

constexpr int errormessage_element = element_of<Tag::Tarn, Attribute::Errormessage>;

} // namespace

ParserStatus CompilerParser::Generate_Tarn(int) {
    if (Is_Given<Tag::Tarn, Attribute::Errormessage>()) {
        attribute_values->Output(errormessage_element + 1, errormessage_element);
        Queue(OPCODE_ERRMSG);
    }
    if (Is_Given<Tag::Tarn, Attribute::Disable_Logging>())
        Output_DisableLogging_Directive();
    return PARSER_OK;
}

ParserStatus CompilerParser::Run_Directive(const Attribute_Route& route, const char* text, int length) {
    switch (route.convert) {
    case Convert::Include_Interpret: return Set_Include_Interpret(text, length);
    case Convert::Output_Level: return Change_Output_Level(text, length);
    case Convert::Capture_Level: saved_capture_flags = output_flags; return Change_Output_Level(text, length);
    case Convert::Localized_Level: {
        const ParserStatus status = Change_Output_Level(text, length);
        localized_text_flags = output_flags;
        return status;
    }
    case Convert::Error_Level: return Change_Error_Level(text, length);
    case Convert::Interpret: return Tarn_Interpret(text, length);
    case Convert::Tag_Error: return Tag_Error_Value(text, length);
    default: Output_Ident_Directive(nullptr, text, length); return PARSER_OK;
    }
}

ParserStatus CompilerParser::Set_Include_Interpret(const char* text, int length) {
    const std::string_view word = Slice(text, length);
    if (Same_Word(word, "on"))
        include_interpret = 1;
    else if (Same_Word(word, "off"))
        include_interpret = 0;
    else
        return Report<Message::Include_Interpret_Word>(word);
    return PARSER_OK;
}

// The engine hears only of compression: the compiler leaves out the rest itself.
ParserStatus CompilerParser::Change_Output_Level(const char* text, int length) {
    const ParserStatus status = Set_StandardOutputLevel(&output_flags, text, length);
    if (status == PARSER_OK)
        Output_Compression_Level(output_flags);
    return status;
}

ParserStatus CompilerParser::Change_Error_Level(const char* text, int length) {
    int level;
    const ParserStatus status = Parse_ErrorOutputLevel(&level, text, length);
    if (status == PARSER_OK)
        Queue(OPCODE_ERROUTPUT, level);
    return status;
}

void CompilerParser::Output_Compression_Level(int flags) {
    Queue(OPCODE_STDOUTPUT, (flags & OUTPUT_COMPRESS) != 0);
}

ParserStatus CompilerParser::Set_StandardOutputLevel(int* result, const char* text, int length) {
    const ParserStatus status = Parse_StandardOutputLevel(result, text, length);
    if (status == PARSER_OK)
        Set_Output_Flags(*result);
    return status;
}

ParserStatus CompilerParser::Parse_StandardOutputLevel(int* result, const char* text, int length) {
    return String_To_Bitmap(result, text, length, standard_output_words);
}

ParserStatus CompilerParser::Parse_ErrorOutputLevel(int* result, const char* text, int length) {
    return String_To_Bitmap(result, text, length, error_output_words);
}

ParserStatus CompilerParser::Tag_Error_Value(const char* text, int length) {
    int level;
    const ParserStatus status = String_To_Bitmap(&level, text, length, tag_error_words);
    if (status == PARSER_OK)
        Queue(OPCODE_TAGERROR, tag_error_code, level);
    return status;
}

ParserStatus CompilerParser::Tarn_Interpret(const char* text, int length) {
    int words;
    const ParserStatus status = String_To_Bitmap(&words, text, length, interpret_words);
    if (status == PARSER_OK)
        interpret_expressions = words & INTERPRET_EXPRESSIONS;
    return status;
}
