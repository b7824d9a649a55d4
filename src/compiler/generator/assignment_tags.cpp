// Stores and references. The target of a tag is a name with its qualifiers, an index and a member; an array
// block gives any number of dimensions and members between its opening and its closing tag, which writes the
// code.

#include "backend/instructions/engine_version.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

namespace {

// The four tags put what they share into the same elements.
constexpr int value_element = element_of<Tag::Assign, Attribute::Value>;
constexpr int name_element = element_of<Tag::Assign, Attribute::Name>;
constexpr int index_element = element_of<Tag::Assign, Attribute::Index>;
constexpr int member_element = element_of<Tag::Assign, Attribute::Member>;
constexpr int copy_element = element_of<Tag::Reference, Attribute::Copy>;
static_assert(element_of<Tag::Reference, Attribute::Variable> == value_element &&
              element_of<Tag::Reference, Attribute::Name> == name_element &&
              element_of<Tag::Reference, Attribute::Index> == index_element &&
              element_of<Tag::Reference, Attribute::Member> == member_element);
static_assert(element_of<Tag::Assignarray, Attribute::Value> == value_element &&
              element_of<Tag::Assignarray, Attribute::Name> == name_element);
static_assert(element_of<Tag::Referencearray, Attribute::Variable> == value_element &&
              element_of<Tag::Referencearray, Attribute::Name> == name_element &&
              element_of<Tag::Referencearray, Attribute::Copy> == copy_element);

const char* Array_Block_Name(int kind) {
    return Tag_Word(kind == ARRAY_ASSIGN ? Tag::Assignarray : Tag::Referencearray);
}

int Array_Block_Kind(int tag) {
    return tag == Tag::Assignarray ? ARRAY_ASSIGN : ARRAY_REFERENCE;
}

bool Can_Be_Reference(Variable_Scope scope) {
    return scope == SCOPE_LOCAL || scope == SCOPE_GLOBAL || scope == SCOPE_UNSCOPED;
}

// What a tag stores to or binds.
struct Target {
    Target(AttributeValueArray& values, int name, int index, int member)
        : name(values.Element(name)), parts{Part(values, index), Part(values, member)} {}

    // Null for an attribute that the tag doesn't have or was not given.
    static AttributeValue* Part(AttributeValueArray& values, int element) {
        AttributeValue* part = element == -1 ? nullptr : values.Element(element);
        return part && part->Is_Set() ? part : nullptr;
    }

    bool Has_Path() const { return name->qualifiers || parts[0] || parts[1]; }
    bool Is_Plain_Variable() const {
        return name->type == ATTREXPR_TARGET && !name->expression && !name->qualifiers;
    }

    // Pushes the variable and leads down its path.
    ParserStatus Push(CompilerParser* parser) const {
        name->Output(parser, 0, 0, 0);
        int length;
        const char* qualifiers = name->Aggregate_Qualifiers(&length);
        if (qualifiers && name->Parse_Aggregate_Qualifier_Code(parser, qualifiers, length, nullptr, 0))
            return parser->Report_Stored_Error(*name);
        for (AttributeValue* part : parts)
            if (part)
                part->Output(parser, 0, 0, 0);
        return PARSER_OK;
    }

    AttributeValue* name;
    AttributeValue* parts[2]; // index and member
};

} // namespace

// A tag that lacks both attributes gets both reports.
ParserStatus CompilerParser::Check_Value_And_Name(Message value_missing, Message name_missing) {
    ParserStatus status = PARSER_OK;
    if (!attribute_values->Element(value_element)->Is_Set())
        status = Report_Message(value_missing);
    if (!attribute_values->Element(name_element)->Is_Set())
        status = Report_Message(name_missing);
    return status;
}

ParserStatus CompilerParser::Generate_Assign(int) {
    if (const ParserStatus status =
            Check_Value_And_Name(Message::Assign_Requires_Value, Message::Assign_Requires_Name))
        return status;
    return attribute_values->Output_Assignment(value_element, name_element, index_element, member_element,
                                               nullptr, 0);
}

ParserStatus CompilerParser::Generate_Reference(int) {
    if (const ParserStatus status =
            Check_Value_And_Name(Message::Reference_Requires_Variable, Message::Reference_Requires_Name))
        return status;
    return attribute_values->Output_Reference(value_element, name_element, index_element, member_element,
                                              nullptr, 0);
}

ParserStatus CompilerParser::Open_Array_Block(int tag) {
    const int kind = Array_Block_Kind(tag);
    if (array_values)
        return Report<Message::Array_Block_Nested>(Array_Block_Name(kind));
    array_count = 0;
    array_kind = kind;
    array_values = std::make_unique<AttributeValueArray>(this, 10, 10);
    return PARSER_OK;
}

ParserStatus CompilerParser::Check_Reference_Array(int) {
    if (!attribute_values->Element(value_element)->Is_Set())
        return Report<Message::Referencearray_Requires_Variable>();
    if (!attribute_values->Element(name_element)->Is_Set())
        return Report<Message::Referencearray_Requires_Name>();
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_Array_Block(int tag) {
    const int kind = Array_Block_Kind(tag);
    const char* closing = Array_Block_Name(kind);
    if (!array_values)
        return Report<Message::Array_Block_Unopened>(closing, closing);
    if (kind != array_kind)
        return Report<Message::Array_Block_Mismatched>(closing, Array_Block_Name(array_kind));
    const auto output = kind == ARRAY_ASSIGN ? &AttributeValueArray::Output_Assignment
                                             : &AttributeValueArray::Output_Reference;
    const ParserStatus status = (attribute_values.get()->*output)(
        value_element, name_element, index_element, member_element, array_values.get(), array_count);
    array_values.reset();
    array_kind = ARRAY_NONE;
    array_count = 0;
    return status;
}

ParserStatus AttributeValueArray::Output_Assignment(int value, int name, int index, int member,
                                                    AttributeValueArray* array, int count) {
    const int highest = last_used; // ahead of looking at any element
    if (value != -1)
        Output(value + 1, value);
    const Target target(*this, name, index, member);
    OpcodeQueue* queue = parser->Opcode_Queue();
    if (highest == name_element && !array && target.Is_Plain_Variable()) {
        queue->Queue_Variable_Instruction(1, target.name->ident, target.name->scope,
                                          target.name->member_ident, 0);
        return PARSER_OK;
    }
    if (target.name->type == ATTREXPR_WHOLE_NAME || (!array && !target.Has_Path())) {
        target.name->Output(parser, 1, 0, 0);
        return PARSER_OK;
    }
    if (const ParserStatus status = target.Push(parser))
        return status;
    if (array)
        array->Output(count, 0);
    queue->Queue_Opcode(OPCODE_STORE, 0, 0);
    return PARSER_OK;
}

// The dimensions of an array block lead on from what is referred to, not from the name as in an assignment.
ParserStatus AttributeValueArray::Output_Reference(int variable, int name, int index, int member,
                                                   AttributeValueArray* array, int count) {
    const bool copy = Element(copy_element)->Is_Set();
    const Target target(*this, name, index, member);
    if (!copy && target.name->ident != -1 && !Can_Be_Reference(target.name->scope))
        return parser->Report<Message::Reference_Scope>();
    if (AttributeValue* source = Element(variable); source->Parse_String_Variable(parser)) {
        if (const ParserStatus status = parser->Report_Stored_Error(*source))
            return status;
    }
    if (!array && !target.Has_Path()) {
        target.name->Output(parser, 1, 0, !copy);
        return PARSER_OK;
    }
    if (array)
        array->Output(count, 0);
    if (const ParserStatus status = target.Push(parser))
        return status;
    parser->Opcode_Queue()->Queue_Opcode(copy ? OPCODE_STORE : OPCODE_REFER, 0, 0);
    if (!copy)
        (void)parser->Output_Version(file_version_major, FILE_VERSION_REFERENCES); // counts by itself
    return PARSER_OK;
}
