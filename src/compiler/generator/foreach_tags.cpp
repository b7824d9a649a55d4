// TnFOREACH: walks the indices of an array that have an element. The walk calls built-in functions of the
// engine; those that skip missing elements came with an engine that the target may be older than, and the
// code then asks the running engine at run time and counts by itself on an older one.

#include "backend/instructions/engine_version.h"
#include "compiler/generator/loop_code.h"

namespace {

constexpr int iterator_element = element_of<Tag::Foreach, Attribute::Iterator>;
constexpr int array_element = element_of<Tag::Foreach, Attribute::Array>;
constexpr int first_element = element_of<Tag::Foreach, Attribute::First>;
constexpr int next_element = element_of<Tag::Foreach, Attribute::Next>;
constexpr int last_element = element_of<Tag::Foreach, Attribute::Last>;
constexpr int index_element = element_of<Tag::Foreach, Attribute::Index>;
constexpr int count_element = element_of<Tag::Foreach, Attribute::Count>;

// The scratch variables of one block.
class Foreach_Code : public Loop_Code {
  public:
    Foreach_Code(CompilerParser* parser, AttributeValueArray* values, int depth, int label)
        : Loop_Code(parser, values, label), array(parser->Find_ScratchVariable_Ident("foreach_array", depth)),
          index(parser->Find_ScratchVariable_Ident("foreach_index", label)),
          last(parser->Find_ScratchVariable_Ident("foreach_last", depth)),
          tests_version(parser->Engine_Version() < array_walk_engine) {
        if (tests_version) {
            version = parser->Find_Variable_Ident(engine_version_variable.data(),
                                                  engine_version_variable.size(), SCOPE_SYSTEM);
        }
    }

    ParserStatus Push_Named_Variable(int element);
    void Set_Last(int limit);
    void Set_First(int first, bool counted);
    void Set_Next(int next, bool counted);

    int array; // a reference to the array
    int index;
    int last;

  private:
    void Find_First();
    void Find_Next();
    void Test_Version(ParserLabelType walk_label);
    void Start_At_Element();
    void Leave_At_End();

    bool tests_version;
    int version = 0;
};

// Jumps to the label when the running engine can walk arrays.
void Foreach_Code::Test_Version(ParserLabelType walk_label) {
    Queue(OPCODE_PUSHS, version);
    queue->Queue_Opcode(OPCODE_PUSHF, array_walk_engine);
    Queue(OPCODE_GE);
    Jump(OPCODE_JMP_NE, walk_label);
}

// Enters the block when the index has an element.
void Foreach_Code::Start_At_Element() {
    Leave_Above(index, last);
    Push(array);
    Push(index);
    Call("tarn_element_exists", 2);
    Jump(OPCODE_JMP_NE, LABEL_START);
}

// The functions of the engine answer 0 when there is no further element.
void Foreach_Code::Leave_At_End() {
    Pop(index);
    Push(index);
    Jump(OPCODE_JMP_LE, LABEL_END);
}

void Foreach_Code::Find_First() {
    if (tests_version) {
        Test_Version(LABEL_VERSIONTEST_A_NEW);
        Push_Integer(1);
        Pop(index);
        Label(LABEL_VERSIONTEST_A_LOOP);
        Start_At_Element();
        Increment(index);
        Jump(OPCODE_JMP, LABEL_VERSIONTEST_A_LOOP);
        Label(LABEL_VERSIONTEST_A_NEW);
    }
    Push(array);
    Call("tarn_array_min", 1);
    Leave_At_End();
}

void Foreach_Code::Find_Next() {
    if (tests_version) {
        Test_Version(LABEL_VERSIONTEST_B_NEW);
        Label(LABEL_VERSIONTEST_B_LOOP);
        Increment(index);
        Start_At_Element();
        Jump(OPCODE_JMP, LABEL_VERSIONTEST_B_LOOP);
        Label(LABEL_VERSIONTEST_B_NEW);
    }
    Push(array);
    Push(index);
    Call("tarn_array_next", 2);
    Leave_At_End();
}

ParserStatus Foreach_Code::Push_Named_Variable(int element) {
    AttributeValue* name = values->Element(element);
    return name->Parse_String_Variable(parser) ? parser->Report_Stored_Error(*name) : PARSER_OK;
}

void Foreach_Code::Set_Last(int limit) {
    if (Given(limit)) {
        Push_Integer_Value(limit);
    } else {
        Push(array);
        Call("tarn_array_max", 1);
    }
    Pop(last);
}

// Behind this the block is left or entered.
void Foreach_Code::Set_First(int first, bool counted) {
    if (counted) {
        Push_Integer(1);
        Pop(index);
    } else if (Given(first)) {
        Push_Value(first);
        Pop(index);
    } else {
        Find_First();
    }
    Leave_Above(index, last);
    Jump(OPCODE_JMP, LABEL_START);
}

void Foreach_Code::Set_Next(int next, bool counted) {
    Label(LABEL_LOOP);
    if (counted) {
        Increment(index);
    } else if (Given(next)) {
        Push_Value(next);
        Pop(index);
    } else {
        Find_Next();
    }
    Leave_Above(index, last);
}

} // namespace

ParserStatus CompilerParser::Open_Foreach(int) {
    Open_Block(&foreach_stack);
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_Foreach(int tag) {
    return Close_Loop(Tag_Word(tag), &foreach_stack, OPCODE_JMP, LABEL_LOOP);
}

ParserStatus CompilerParser::Generate_Foreach(int) {
    const auto given = [this](int element) { return attribute_values->Element(element)->Is_Set(); };
    if (!given(iterator_element))
        return Report<Message::Foreach_Requires_Iterator>();
    if (!given(array_element))
        return Report<Message::Foreach_Requires_Array>();
    if (given(count_element) && (given(first_element) || given(next_element) || given(last_element)))
        return Report<Message::Foreach_Count_Excludes>();
    return attribute_values->Output_Foreach(foreach_stack.Entries(), foreach_stack.Top()->label,
                                            iterator_element, array_element, first_element, next_element,
                                            last_element, index_element, count_element);
}

ParserStatus AttributeValueArray::Output_Foreach(int depth, int label, int iterator, int array, int first,
                                                 int next, int last, int index, int count) {
    Foreach_Code code(parser, this, depth, label);
    if (code.Given(index)) {
        if (const ParserStatus status = code.Push_Named_Variable(index))
            return status;
        code.Bind(code.index);
    }
    if (const ParserStatus status = code.Push_Named_Variable(array))
        return status;
    code.Bind(code.array);

    const bool counted = code.Given(count);
    code.Set_Last(counted ? count : last);
    code.Set_First(first, counted);
    code.Set_Next(next, counted);

    code.Label(LABEL_START);
    code.Push(code.array);
    code.Push(code.index);
    code.Queue(OPCODE_ELEM);
    if (const ParserStatus status = code.Push_Named_Variable(iterator))
        return status;
    code.Queue(OPCODE_REFER);
    return PARSER_OK;
}
