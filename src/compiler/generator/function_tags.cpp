// TnFUNCTION with its parameters, TnFUNCTIONRETURN, and TnDO, which runs a function of another compiled file.

#include "app/driver/compiler_application.h"
#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"

#include <algorithm>
#include <memory>

namespace {

bool Can_Start_Name(char c) {
    return Is_Name_Character(c) && !Is_Digit(c);
}

} // namespace

// A function's tables start empty, so that its first parameter is number 0 and no name outlives it. The
// output flags are set ahead of the attributes.
ParserStatus CompilerParser::Open_Function(int) {
    if (Inside_Function())
        return Report<Message::Function_Nested>();
    function_scratch_variables.Clear();
    function_variables.Dump();
    local_variables = &function_variables;
    scratch_variables = &function_scratch_variables;
    saved_function_flags = output_flags;
    Set_Output_Flags(OUTPUT_HTML | OUTPUT_TEXT);
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_Function(int) {
    if (local_variables == global_variables)
        return Report<Message::Function_Unopened>();
    Output_End_Function_Directive();
    local_variables = global_variables;
    scratch_variables = &file_scratch_variables;
    Set_Output_Flags(saved_function_flags);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Function(int) {
    if (!Is_Given<Tag::Function, Attribute::Name>())
        return Report<Message::Function_Requires_Name>();
    const std::string_view name = Text_Of(*Value<Tag::Function, Attribute::Name>());
    if (const ParserStatus status = Check_Function_Name(name))
        return status;
    if (!Generating())
        return Discard_Function(name);
    const int length = Length_Of(name);
    auto made = std::make_unique<Function_Resolution_Info>(Linenumber(), name.data(), length, Source_Name());
    if (defined_functions.Find_Or_Insert(made.get()) != made.get())
        return Report<Message::Function_Redefined>(name);
    Function_Resolution_Info* definition = made.release(); // the table's now

    int stdout_level = function_stdout_default;
    int error_level = -1;
    int access = function_access_default;
    if (const ParserStatus status = Read_Function_Levels(&stdout_level, &error_level))
        return status;
    if (const ParserStatus status = Read_Function_Access(&access))
        return status;
    Generate_Function_Directive(name.data(), length, FUNCTION_DEFINED, stdout_level, error_level, access);
    return Declare_Parameters(definition);
}

ParserStatus CompilerParser::Check_Function_Name(std::string_view name) {
    if (!name.empty() && !Can_Start_Name(name.front()))
        return Report<Message::Function_Name_Start>(name);
    if (name.empty() || !Has_Name_Characters_Only(name))
        return Report<Message::Function_Name_Characters>(name);
    return PARSER_OK;
}

ParserStatus CompilerParser::Discard_Function(std::string_view name) {
    return Debugging() ? Report<Message::Function_Discarded>(name) : PARSER_OK;
}

ParserStatus CompilerParser::Read_Function_Levels(int* stdout_level, int* error_level) {
    AttributeValue* stdout_value = Value<Tag::Function, Attribute::Standardoutputlevel>();
    if (stdout_value->Is_Set()) {
        const std::string_view words = Text_Of(*stdout_value);
        if (const ParserStatus status = Set_StandardOutputLevel(stdout_level, words.data(), Length_Of(words)))
            return status;
    } else if (function_stdout_default != -1) {
        Set_Output_Flags(function_stdout_default);
    }
    AttributeValue* error_value = Value<Tag::Function, Attribute::Erroroutputlevel>();
    if (error_value->Is_Set()) {
        const std::string_view words = Text_Of(*error_value);
        return Parse_ErrorOutputLevel(error_level, words.data(), Length_Of(words));
    }
    return PARSER_OK;
}

ParserStatus CompilerParser::Read_Function_Access(int* access) {
    AttributeValue* value = Value<Tag::Function, Attribute::Access>();
    if (!value->Is_Set())
        return PARSER_OK;
    if (Engine_Version() < file_version_engines[FILE_VERSION_PRIVATE_FUNCTIONS])
        return Report<Message::Access_Version>(Engine_Version_Text());
    const std::string_view word = Text_Of(*value);
    return Parse_Access(access, word.data(), Length_Of(word));
}

ParserStatus CompilerParser::Parse_Access(int* result, const char* text, int length) {
    const std::string_view word = Trimmed(Slice(text, length));
    if (word.empty())
        *result = function_access_default;
    else if (Same_Word(word, "public"))
        *result = ACCESS_PUBLIC;
    else if (Same_Word(word, "private"))
        *result = ACCESS_PRIVATE;
    else
        return Report<Message::Access_Word>(Slice(text, length));
    return PARSER_OK;
}

// Pieces that are refused count as parameters like the others.
ParserStatus CompilerParser::Declare_Parameters(Function_Resolution_Info* definition) {
    AttributeValue* value = Value<Tag::Function, Attribute::Parameters>();
    if (!value->Is_Set() || Text_Of(*value).empty())
        return PARSER_OK;
    ParserStatus status = PARSER_OK;
    For_Each_Comma_Piece(Text_Of(*value), [&](std::string_view piece) {
        ++definition->parameters;
        if (const ParserStatus refused = Parameter_Directive(piece.data(), Length_Of(piece)))
            status = refused;
    });
    return status;
}

ParserStatus CompilerParser::Parameter_Directive(const char* text, int length) {
    const std::string_view parameter = Trimmed(Slice(text, length));
    if (parameter.empty())
        return Report<Message::Parameter_Blank>();
    const std::string_view name(parameter.begin(),
                                std::find_if(parameter.begin(), parameter.end(), Is_Space));
    if (!Has_Name_Characters_Only(name))
        return Report<Message::Parameter_Characters>(name);
    const std::string_view mode = Trimmed(parameter.substr(name.size()));
    if (!mode.empty() && !Same_Word(mode, "var"))
        return Report<Message::Parameter_Spaces>(parameter);
    const int name_length = Length_Of(name);
    const int ident = local_variables->Entries();
    local_variables->Find_Or_Make(name.data(), name_length,
                                  [&] { return new Variable(name.data(), name_length, ident); });
    if (local_variables->Entries() == ident)
        return Report<Message::Parameter_Repeated>(name);
    Output_Parameter_Directive(name.data(), name_length, ident, mode.empty());
    return PARSER_OK;
}

// With both sides of a check on, locks and captures report the warning and the error, an asynchronous block
// the warning alone.
ParserStatus CompilerParser::Check_Return_Placement(int) {
    const int warn = application ? application->Pedantic_Warn() : 0;
    const int error = application ? application->Pedantic_Error() : 0;
    ParserStatus status = PARSER_OK;
    if (lockfile_stack.Top()) {
        if (warn & PEDANTIC_LOCK)
            status = Report<Message::Return_In_Lockfile_Warning>();
        if (error & PEDANTIC_LOCK)
            status = Report<Message::Return_In_Lockfile_Error>();
    }
    if (capture_stack.Top()) {
        if (warn & PEDANTIC_CAPTURE)
            status = Report<Message::Return_In_Capture_Warning>();
        if (error & PEDANTIC_CAPTURE)
            status = Report<Message::Return_In_Capture_Error>();
    }
    if (async_block) {
        if (warn & PEDANTIC_ASYNC)
            status = Report<Message::Return_In_Asynchronous_Warning>();
        else if (error & PEDANTIC_ASYNC)
            status = Report<Message::Return_In_Asynchronous_Error>();
    }
    return status;
}

ParserStatus CompilerParser::Reject_Closing_Return(int tag) {
    (void)Check_Return_Placement(tag); // the refusal below is an error anyhow
    return Report<Message::Closing_Tag_Not_Supported>(Tag_Word(tag), Tag_Word(tag), Tag_Word(tag));
}

ParserStatus CompilerParser::Generate_Function_Return(int tag) {
    if (!Inside_Function())
        return Report<Message::Return_Outside_Function>();
    if (!Is_Given<Tag::Function_Return, Attribute::Value>()) {
        Queue(OPCODE_RETN);
        return PARSER_OK;
    }
    attribute_values->Output(Slots(tag), 0);
    Queue(OPCODE_RET);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Do(int) {
    AttributeValue* file = Value<Tag::Do, Attribute::File>();
    AttributeValue* name = Value<Tag::Do, Attribute::Name>();
    AttributeValue* value = Value<Tag::Do, Attribute::Value>();
    ParserStatus status = PARSER_OK;
    if (!file->Is_Set())
        status = Report<Message::Do_Requires_File>();
    else if (value->Is_Set() && !name->Is_Set())
        status = Report<Message::Do_Result_Discarded>();
    if (status != PARSER_OK)
        return status;
    file->Output(this, 0, 0, 0);
    if (!value->Is_Set()) {
        Queue(OPCODE_DO_FILE);
        return PARSER_OK;
    }
    return Output_Do_Call(value, name);
}

ParserStatus CompilerParser::Output_Do_Call(AttributeValue* value, AttributeValue* name) {
    const std::string_view call = Text_Of(*value);
    if (const ParserStatus status =
            Check_Dynamic_Expression_String(call.data(), Length_Of(call), "TnDO value"))
        return status;
    if (const int failure = value->Make_Expression_Literal(this))
        return static_cast<ParserStatus>(failure);
    value->Output(this, 0, 0, 0);
    Queue(OPCODE_DO_FUNCTION);
    if (!name->Is_Set()) {
        Queue(OPCODE_POP);
        return PARSER_OK;
    }
    return attribute_values->Output_Assignment(-1, element_of<Tag::Do, Attribute::Name>, -1, -1, nullptr, 0);
}
