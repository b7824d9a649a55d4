// What a value of an attribute is, and the code that it becomes.

#include "frontend/values/attribute_value.h"

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"
#include "value/variable_hash.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

constexpr int longest_added_error = 4096;
constexpr int longest_spare_text = 1024;

bool Is_Separator(char byte) {
    return byte == '[' || byte == ']' || byte == ':';
}

const char* Bytes_Of(const String* text, int* length) {
    *length = text ? text->length() : 0;
    return text ? text->text() : nullptr;
}

} // namespace

AttributeValue::AttributeValue() = default;

AttributeValue::~AttributeValue() = default;

void AttributeValue::Replace(AttributeValue& other) {
    Drop();
    line = other.line;
    ident = other.ident;
    expression = std::move(other.expression);
    type = other.type;
    simple_text = std::move(other.simple_text);
    qualifiers = std::move(other.qualifiers);
    other.Reset();
}

// Nearly every tag has an expression or a text, and a fragment has a large buffer.
void AttributeValue::Drop() {
    qualifiers.reset();
    if (simple_text) {
        spare_text = std::move(simple_text);
        if (spare_text->capacity() > longest_spare_text)
            spare_text.reset();
    }
    if (expression)
        spare_fragment = std::move(expression);
}

// Nothing clears the text of an error, so that of this one adds up; but a page of nothing else must not make
// reports without end.
int AttributeValue::Set_Simple_Text(const char* text, int length, AttrExprType new_type) {
    if (simple_text) {
        error_code = Code_Of_Message(Message::Attribute_Repeated);
        if (error_message.length() < longest_added_error)
            error_message += Text_Of_Message<Message::Attribute_Repeated>();
        return 1;
    }
    type = new_type;
    if (spare_text)
        spare_text->assign(text, length);
    simple_text = spare_text ? std::move(spare_text) : std::make_unique<String>(text, length);
    return 0;
}

String* AttributeValue::Get_Simple_Text() {
    if (!simple_text)
        simple_text = std::make_unique<String>("", 0);
    return simple_text.get();
}

const char* AttributeValue::Get_Simple_Text(int* length) const {
    return Bytes_Of(simple_text.get(), length);
}

const char* AttributeValue::Aggregate_Qualifiers(int* length) const {
    return Bytes_Of(qualifiers.get(), length);
}

int AttributeValue::Set_Literal(CompilerParser* parser, const char* text, int length, AttrExprType new_type) {
    type = new_type;
    if (ident != -1 || expression)
        return Store_Error<Message::Name_Repeated>();
    return Parse_Variable_Name(parser, text, length);
}

int AttributeValue::Set_Literal(int new_ident, AttrExprType new_type) {
    if (ident != -1 || expression)
        return Store_Error<Message::Attribute_Repeated>();
    ident = new_ident;
    type = new_type;
    return 0;
}

int AttributeValue::Get_Expression(StringOutput** fragment, AttrExprType new_type) {
    if (ident != -1 || expression)
        return Store_Error<Message::Attribute_Repeated>();
    type = new_type;
    expression = std::move(spare_fragment);
    if (expression)
        expression->Clear();
    else
        expression = std::make_unique<StringOutput>();
    *fragment = expression.get();
    return 0;
}

int AttributeValue::Length_Of_Unqualified_Variable_Name(const char* text, int length) {
    const char* end = text + Text_Length(text, length);
    auto starts_tail = [](char byte) { return byte == '[' || byte == ':'; };
    return static_cast<int>(std::find_if(text, end, starts_tail) - text);
}

int AttributeValue::Parse_Variable_Name(CompilerParser* parser, const char* text, int length) {
    length = Text_Length(text, length);
    const int bare_length = Length_Of_Unqualified_Variable_Name(text, length);
    if (bare_length < length)
        qualifiers = std::make_unique<String>(text + bare_length, length - bare_length);
    if (Has_Space(View(text, bare_length)))
        parser->Note<Message::Variable_Name_Spaces>(View(text, bare_length));

    const char* name = text;
    int name_length = length;
    const char* alias = nullptr;
    int alias_length = 0;
    scope = type == ATTREXPR_WHOLE_NAME
                ? SCOPE_LOCAL_BY_NAME
                : VariableHash::Scope(text, bare_length, &name, &name_length, &alias, &alias_length);
    const int status = Check_Scope(parser, View(text, length));
    ident = parser->Find_Variable_Ident(name, name_length, scope);
    if (scope == SCOPE_DATABASE)
        member_ident = parser->Generate_String_Directive(alias, alias_length, EXPRESSION_STATE_ESCAPED);
    return status;
}

int AttributeValue::Check_Scope(CompilerParser* parser, std::string_view text) {
    if (scope != SCOPE_UNSCOPED)
        return 0;
    const Parser::Complaint complaint = parser->Complaint_Of_Scope(text);
    if (complaint.code == 0)
        return 0;
    error_code = complaint.code;
    error_message = complaint.text;
    return 1;
}

int AttributeValue::Parse_Aggregate_Qualifier_Code(CompilerParser* parser, const char* text, int length,
                                                   int* count, int read_only) {
    const char* end = text + Text_Length(text, length);
    while (end > text && Is_Space(end[-1]))
        --end;
    int written = 0;
    int status = 0;
    char separator = ':';
    for (const char* piece = text; piece < end && status == 0;) {
        const char* piece_end = std::find_if(piece, end, Is_Separator);
        if (piece_end > piece) {
            const std::string_view content(piece, piece_end);
            status = separator == '[' ? Output_Index(parser, content, read_only)
                                      : Output_Member(parser, content, read_only);
            written += status == 0;
        }
        if (piece_end < end)
            separator = *piece_end++;
        piece = piece_end;
    }
    if (count)
        *count = written;
    return status;
}

// Only the end of the index is checked; what stands ahead of its last digit goes out as it is spelled.
int AttributeValue::Output_Index(CompilerParser* parser, std::string_view index, int read_only) {
    while (!index.empty() && !Is_Digit(index.back()))
        index.remove_suffix(1);
    if (index.empty())
        return Store_Error<Message::Index_Not_Positive>();
    OpcodeQueue* queue = parser->Opcode_Queue();
    queue->Queue_Opcode(OPCODE_PUSHI, index.data(), Length_Of(index), 0);
    queue->Queue_Opcode(read_only ? OPCODE_ELEM_RO : OPCODE_ELEM, 0, 0);
    return 0;
}

int AttributeValue::Output_Member(CompilerParser* parser, std::string_view name, int read_only) {
    const int name_ident =
        parser->Generate_String_Directive(name.data(), Length_Of(name), EXPRESSION_STATE_ESCAPED);
    OpcodeQueue* queue = parser->Opcode_Queue();
    queue->Queue_Opcode(OPCODE_PUSHC, name_ident, 0);
    queue->Queue_Opcode(read_only ? OPCODE_MEMB_RO : OPCODE_MEMB, 0, 0);
    return 0;
}

// The element instruction of an index stands behind the line that was forced for its value.
void AttributeValue::Output(CompilerParser* parser, int store, int read_only, int by_reference) {
    if (expression) {
        Output_Expression(parser, store, read_only, by_reference);
    } else {
        if (line != 0)
            parser->Force_LineNo(line);
        Output_Literal(parser, store, read_only, by_reference);
        if (line != 0)
            parser->Unforce_LineNo();
    }
    if (type == ATTREXPR_INDEX)
        parser->Opcode_Queue()->Queue_Opcode(read_only ? OPCODE_ELEM_RO : OPCODE_ELEM, 0, 0);
    parser->Opcode_Queue()->Flush();
}

void AttributeValue::Output_Expression(CompilerParser* parser, int store, int read_only, int by_reference) {
    parser->Output_Fragment(expression.get());
    OpcodeQueue* queue = parser->Opcode_Queue();
    switch (type) {
    case ATTREXPR_TARGET:
    case ATTREXPR_WHOLE_NAME:
        queue->Queue_Opcode(by_reference ? OPCODE_POPRN : store ? OPCODE_POPN : OPCODE_PUSHN, 0, 0);
        if (by_reference)
            parser->Output_Version(file_version_major, FILE_VERSION_REFERENCES);
        break;
    case ATTREXPR_VARIABLE: queue->Queue_Opcode(OPCODE_PUSHN, 0, 0); break;
    case ATTREXPR_MEMBER: queue->Queue_Opcode(read_only ? OPCODE_MEMB_RO : OPCODE_MEMB, 0, 0); break;
    default: break;
    }
}

void AttributeValue::Output_Literal(CompilerParser* parser, int store, int read_only, int by_reference) {
    OpcodeQueue* queue = parser->Opcode_Queue();
    int length;
    const char* text = Get_Simple_Text(&length);
    switch (type) {
    case ATTREXPR_TARGET:
    case ATTREXPR_WHOLE_NAME:
        queue->Queue_Variable_Instruction(store, ident, scope, member_ident, by_reference);
        if (by_reference)
            parser->Output_Version(file_version_major, FILE_VERSION_REFERENCES);
        break;
    case ATTREXPR_VARIABLE: queue->Queue_Variable_Instruction(0, ident, scope, member_ident, 0); break;
    case ATTREXPR_MEMBER:
        if (text)
            (void)Parse_Aggregate_Qualifier_Code(parser, text, length, nullptr,
                                                 read_only); // an index goes unseen
        break;
    case ATTREXPR_TEXT: Push_Constant(parser, text, length); break;
    default:
        if (ident == -1)
            Push_Constant(parser, "", 0);
        else
            queue->Queue_Opcode(OPCODE_PUSHC, ident, 0);
        break;
    }
}

void AttributeValue::Push_Constant(CompilerParser* parser, const char* text, int length) {
    const int constant = parser->Generate_String_Directive(text, length, EXPRESSION_STATE_ESCAPED);
    parser->Opcode_Queue()->Queue_Opcode(OPCODE_PUSHC, constant, 0);
}
