// Filters: text that the engine compiles at run time is checked here, once; filters of type variable become
// code now.

#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "compiler/generator/filter_parser.h"
#include "frontend/scanner/tokenizer.h"
#include "frontend/values/text_pieces.h"

ParserStatus CompilerParser::Check_Dynamic_Expression_String(const char* text, int length, const char* what) {
    if (!filter_parser)
        filter_parser = std::make_unique<FilterParser>(this, &referenced_functions, &called_functions);
    const bool bare = length == 0 || text[0] != '{';
    delete filter_parser->Set_Tokenizer(new Tokenizer(text, length, bare));
    const auto status = static_cast<ParserStatus>(filter_parser->Start());
    if (status == PARSER_OK)
        return PARSER_OK;
    const String& reason = filter_parser->Get_Last_Error();
    if (const int line = filter_parser->Linenumber(); line != 1)
        Note<Message::Dynamic_Expression_Error_At>(what, line, reason);
    else
        Note<Message::Dynamic_Expression_Error>(what, reason);
    return status;
}

// What a filter in braces of type variable leaves is the name of the variable that holds the filter.
ParserStatus CompilerParser::Compile_Filter(AttributeValue* filter, AttributeValue* type_value,
                                            int had_braces) {
    const AttrExpr_Filter_Type type = type_value->Filter_Type();
    if (type == FILTER_INVALID)
        return Report<Message::Filter_Type_Unknown>(Text_Of(*type_value));
    if (filter->Make_Filter_Expression(this, type, had_braces))
        return PARSER_ERROR; // has reported
    if (had_braces && type == FILTER_VARIABLE)
        filter->type = ATTREXPR_VARIABLE;
    return PARSER_OK;
}

// The type comes first: with an unknown one the filter is not looked at, and stores no error.
ParserStatus CompilerParser::Generate_Filter(int) {
    AttributeValue* filter = Value<Tag::Filter, Attribute::Filter>();
    AttributeValue* type_value = Value<Tag::Filter, Attribute::Filter_Type>();
    if (type_value->Filter_Type() == FILTER_INVALID)
        return Report<Message::Filter_Type_Unknown>(Text_Of(*type_value));
    int length = 0;
    int had_braces = 0;
    (void)filter->Chomped_Filter_String(&length,
                                        &had_braces); // without a filter the stored error stays unseen
    if (filter->Is_Set()) {
        if (const ParserStatus status = Compile_Filter(filter, type_value, had_braces))
            return status;
    }
    if (length == 0)
        filter->Reset();
    attribute_values->Output(element_of<Tag::Filter, Attribute::Filter_Type>, 0);
    Queue(OPCODE_DBFILTER);
    return PARSER_OK;
}
