// Values that are the text of a filter or of another expression that run time may evaluate: such a text is
// compiled now, or kept as a constant.

#include "backend/outputs/compiler_output.h"
#include "backend/writers/file_compiler_parser.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "frontend/values/attribute_value.h"
#include "frontend/values/text_pieces.h"

const char* AttributeValue::Chomped_Filter_String(int* length, int* had_braces) {
    *length = 0;
    if (had_braces)
        *had_braces = 0;
    if (!simple_text) {
        Store_Error<Message::Filter_Invalid>();
        return nullptr;
    }
    std::string_view text = simple_text->view();
    if (text.size() > 1 && text.front() == '{' && text.back() == '}') {
        text = text.substr(1, text.size() - 2);
        if (had_braces)
            *had_braces = 1;
    }
    text = Trimmed(text);
    *length = Length_Of(text);
    return text.data();
}

int AttributeValue::Make_Variable_Push(CompilerParser* parser) {
    int length;
    const char* text = Chomped_Filter_String(&length, nullptr);
    return text ? Set_Literal(parser, text, length, ATTREXPR_VARIABLE) : 1;
}

int AttributeValue::Make_Expression_Literal(CompilerParser* parser) {
    int length;
    int had_braces;
    const char* text = Chomped_Filter_String(&length, &had_braces);
    if (!text)
        return 1;
    if (!had_braces)
        return parser->Report<Message::Filter_Requires_Braces>();
    return Set_Literal(parser->Generate_String_Directive(text, length, EXPRESSION_STATE_FILTER),
                       ATTREXPR_VALUE);
}

int AttributeValue::Make_Filter_Expression(CompilerParser* parser, AttrExpr_Filter_Type filter_type,
                                           int text_has_braces) {
    switch (filter_type) {
    case FILTER_EXPRESSION: return Make_Expression_Literal(parser);
    case FILTER_VARIABLE: return Compile_Filter(parser, text_has_braces);
    default: return 1;
    }
}

// The code refers to the variables in force here, but counts its constants by itself. Its errors are the
// page's, and in a false conditional block it goes nowhere, so that it may name no variable first. Without a
// text the value is set all the same, to no code.
int AttributeValue::Compile_Filter(CompilerParser* parser, int text_has_braces) {
    StringOutput* fragment;
    if (Get_Expression(&fragment, type))
        return 1;
    int length;
    const char* filter_text = Get_Simple_Text(&length);
    auto* text = new Tokenizer(filter_text, length, !text_has_braces);
    FileCompilerParser filter(text, fragment, parser->external_calls, parser->app(), -1, -1, START_EXPRESSION,
                              parser->local_variables, parser->global_variables, parser->system_variables);
    if (!parser->Generating())
        filter.Suspend_Generation();
    const int failed = filter.Start();
    parser->error_count += failed;
    return failed;
}

int AttributeValue::Parse_String_Variable(CompilerParser* parser) {
    type = ATTREXPR_VARIABLE;
    if (!simple_text) {
        Output(parser, 0, 1, 0);
        return 0;
    }
    int status = Parse_Variable_Name(parser, simple_text->text(), simple_text->length());
    Output(parser, 0, 0, 0);
    if (qualifiers &&
        Parse_Aggregate_Qualifier_Code(parser, qualifiers->text(), qualifiers->length(), nullptr, 0))
        status = 1;
    return status;
}

AttrExpr_Filter_Type AttributeValue::Filter_Type() const {
    if (!simple_text)
        return ident != -1 || expression ? FILTER_INVALID : FILTER_EXPRESSION;
    if (simple_text->matches("variable", 0))
        return FILTER_VARIABLE;
    return simple_text->matches("expression", 0) ? FILTER_EXPRESSION : FILTER_INVALID;
}
