// The code generator: scanner events in, calls of the back end out.
//
// It is one class, though its generators go by subject and stand in a source for each: the virtual operations
// are one list and the fields one row, both part of the binary interface, and most generators need the values
// of the tag, the queue, the reports, the versions and the open blocks at once. A handler outside would take
// a context as wide as this header.
#ifndef COMPILER_COMPILER_PARSER_H
#define COMPILER_COMPILER_PARSER_H

#include "backend/instructions/labels.h"
#include "compiler/generator/recent_names.h"
#include "compiler/generator/value_stack.h"
#include "compiler/records/attribute_routes.h"
#include "compiler/records/constant_table.h"
#include "compiler/records/resolution_info.h"
#include "core/hash_table.h"
#include "core/stack.h"
#include "frontend/scanner/attribute_lookup.h"
#include "frontend/scanner/operator_lookup.h"
#include "frontend/scanner/parser.h"
#include "frontend/scanner/tag_lookup.h"
#include "frontend/values/attribute_value.h"
#include "frontend/values/attribute_value_array.h"
#include "value/variable.h"

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CompilerOutput;
class ExternalCallManager;
class FilterParser;
class OpcodeQueue;
class QueuedOpcode;
class StringOutput;
struct _String_To_Bitmap_Entry;
struct Keyword_List;

// An operator that waits for its right operand. The order of the fields is part of the binary interface.
struct Operator {
    int id;
    int priority; // of the operator table, plus the bias of the open brackets
    int operands; // 0, 1 or 2
    int flags;    // as handed to Expression_Operator
};

// What opened a subexpression.
enum Subexpression_Kind {
    SUBEXPRESSION_CALL = 1,
    SUBEXPRESSION_PAREN = 2,
    SUBEXPRESSION_BRACKET = 3,
    SUBEXPRESSION_WHOLE = 4
};

// Bookkeeping of an open subexpression: how many values it has on the stack so far.
struct SubexpressionStatistic {
    int count;
    int type; // Operand_Type
    int kind; // Subexpression_Kind
};

// Kinds of an open TnASSIGNARRAY or TnREFERENCEARRAY block.
enum Array_Kind { ARRAY_NONE = 0, ARRAY_ASSIGN = 1, ARRAY_REFERENCE = 2 };

// Bits of Generate_Function_Directive: heads that stand for a function without a body here.
enum Function_Kind { FUNCTION_DEFINED = 0, FUNCTION_UNRESOLVED = 1, FUNCTION_EXTERNAL = 2 };

// What every name table and function table of the compiler is built with.
inline constexpr int table_bucket_bits = 12;
inline constexpr int table_initial_slots = 512;

// CompilerParser turns the events of the scanner into calls of the Output_ operations, which a back end
// implements. One object lives through all source files of a compilation: its tables, counters and labels
// carry over from file to file. It does not own the call manager, the application or tables that it was
// given; it owns all the rest.
//
// All events answer a ParserStatus: PARSER_OK, PARSER_ERROR when a report was made (the scanner resets the
// output and goes on), PARSER_FATAL to stop. The status that CompileError gave is handed on unchanged. A
// length of -1 means up to the NUL, a line of -1 the current line and a null file name the current file.
class CompilerParser : public Parser {
  public:
    // Null tables are made here and owned; null locals are the globals. Defaults of -1 are not set.
    CompilerParser(Tokenizer* tokenizer, ExternalCallManager* external_calls,
                   CompilerApplication* application, int function_stdout_default, int function_access_default,
                   ParserStartState start_state, HashTable<Variable>* locals, HashTable<Variable>* globals,
                   HashTable<Variable>* system);
    ~CompilerParser() override;
    CompilerParser(const CompilerParser&) = delete;
    CompilerParser& operator=(const CompilerParser&) = delete;

    // Events of the scanner, see Parser.
    void Reset_Expression() override;
    ParserStatus Start_Of_Expression() override;
    ParserStatus End_Of_Expression() override;
    void Reset_Output() override;
    ParserStatus Start_Of_Tag(int tag, int closing, int required, int optional, const char* name) override;
    ParserStatus Attribute_Name(const char* text, int length) override;
    ParserStatus Attribute_Value(const char* text, int length) override;
    ParserStatus End_Of_Tag(int self_closing) override;
    ParserStatus Unknown(const char* text, int length) override;
    ParserStatus Unknown_Compress(const char* text, int length) override;
    ParserStatus Expression_Variable(const char* name, int length, Variable_Scope scope, const char* alias,
                                     int alias_length, const char* full_text, int full_length) override;
    ParserStatus Expression_Operator(int id, int priority, int operands, int type, int flags) override;
    ParserStatus Expression_StartParen() override;
    ParserStatus Expression_StartFunctionCall(const char* name, int length, int dynamic) override;
    ParserStatus Expression_CloseParen() override;
    ParserStatus Expression_StringLiteral(const char* text, int length) override;
    ParserStatus Expression_NumericLiteral(const char* text, int length) override;
    ParserStatus Expression_FloatLiteral(const char* text, int length) override;
    ParserStatus Expression_Member(const char* name, int length) override;
    ParserStatus Start_Of_File() override;
    ParserStatus End_Of_File(ParserStatus status) override;
    void Set_Output_Flags(int flags) override;

    // Services for attribute values and the expression scanner.
    OpcodeQueue* Opcode_Queue() override;
    // The number of a variable, made with its directive on first mention. Scopes without a table answer the
    // number of a string constant that holds the name. Inside a false conditional block unknown names answer
    // 0.
    int Find_Variable_Ident(const char* name, int length, Variable_Scope scope) override;
    // The printable digest of the current source file's name, for names of variables that no source can
    // spell.
    String ScratchVariable_Ident() override;
    void Output_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                     int by_reference) override = 0;
    // One value has left the stack of the innermost subexpression behind the scanner's back.
    void Decrement_Stackcount() override;
    void Output_Assembly(const char* text, int length) override = 0;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual int Find_ScratchVariable_Ident(const char* base, int number);
    virtual void Flush_Opcode_Queue();
    virtual ParserStatus Check_State_Empty(Stack<Resolution_Info>* stack, const char* tag_word,
                                           ParserStatus status);
    virtual ParserStatus Check_State_Empty(Stack<Ifdef_Resolution_Info>* stack, ParserStatus status);
    virtual ParserStatus Unknown_Common(const char* text, int length, int opcode);
    virtual ParserStatus Expression_Operator_Close_Elem(int flags);
    virtual ParserStatus Flush_Operator_Queue_Until(int id);
    virtual ParserStatus Flush_Operator_Queue(int priority);
    virtual ParserStatus end_subexpression(int* count, int expected);
    virtual ParserStatus Output_Operator(Operator* op);
    virtual ParserStatus Output_Operator_IncrementDecrement(int id, int flags);

    // The contract of a back end. Generators call the opcode queue, never these: the queue decides whether an
    // instruction goes out now or when its expression is complete.
    virtual void Generate_Label(ParserLabelType type, int number) = 0;
    // A null output means the current one, here and in the two directives below that take an output.
    virtual void Output_String_Directive(CompilerOutput* target, const char* text, int length, int ident,
                                         ExpressionState state) = 0;
    virtual void Output_Variable_Directive(CompilerOutput* target, const char* name, int length, int ident,
                                           Variable_Scope scope) = 0;
    virtual void Output_Generated_Label(ParserLabelType type, int number) = 0;
    virtual void Output_Opcode_With_Label(int opcode, ParserLabelType type, int number) = 0;
    virtual void Output_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                        int immediate) = 0;
    virtual void Output_Opcode(int opcode, double value) = 0;
    virtual void Output_Opcode(int opcode, int first, int second) = 0;
    virtual void Output_Opcode(int opcode, const char* text, int length, int lower) = 0;
    virtual void Output_Call(const char* name, int length, int parameters, int lower);
    virtual void Force_LineNo(int line);
    virtual void Output_LineNo();
    virtual void Unforce_LineNo();
    virtual void Reset_LineNo();
    // Demands a file version; answers the status of the warning when the target engine is older.
    virtual ParserStatus Output_Version(int major, int minor) = 0;
    virtual void Output_Localized_Directive(const char* language, int language_length, const char* id,
                                            int id_length, const char* text, int text_length) = 0;
    virtual void Output_Function_Directive(const char* name, int length, int kind, int stdout_level,
                                           int error_level, int access) = 0;
    virtual void Output_End_Function_Directive() = 0;
    virtual void Output_Parameter_Directive(const char* name, int length, int ident, int by_value) = 0;
    virtual void Output_Ident_Directive(CompilerOutput* target, const char* text, int length) = 0;
    virtual void Output_DisableLogging_Directive() = 0;
    virtual void Output_End_Of_File() = 0;
    // Answers the output that was in force.
    virtual CompilerOutput* Set_Output(CompilerOutput* output) = 0;
    // Moves the code of a fragment to the output; answers the bytes moved.
    virtual int Output_Fragment(StringOutput* fragment) = 0;
    virtual void Output_Directive_Quoted_String(const char* text, int length, ExpressionState state) = 0;
    virtual void Last_File();
    // Writes the record, and as many as it can of those behind it up to end; answers the first that is left.
    // A back end that writes plain records by itself forces their line first.
    virtual QueuedOpcode* Output_Run(QueuedOpcode* first, const QueuedOpcode* end);
    // About so many bytes of code come next.
    virtual void Expect_Code(std::size_t length);
    // Writes pushc and, behind it, an instruction without operands.
    virtual void Output_Pushed_Constant(int ident, int opcode);

    // The number of a string constant, written on first use with the state of that use. Inside a false
    // conditional block the answer is 0 and nothing is recorded.
    int Generate_String_Directive(const char* text, int length, ExpressionState state);
    // The number of a constant that has to be a positive integer; reports one that is not, and makes it all
    // the same.
    int Generate_Integral_String_Directive(const char* text, int length, ExpressionState state);
    // Makes a boolean of the condition on the stack, unless it is one by its operators.
    void Check_Conditional();
    ParserStatus Check_Types(int type);
    // Scans the text of an expression that is kept for run time; what names it in the report.
    ParserStatus Check_Dynamic_Expression_String(const char* text, int length, const char* what);

    double Engine_Version() const;
    // Output_LineNo, for the many instructions whose line is forced without a call.
    void Follow_LineNo() {
        if (!lineno_forced && Line() != last_lineno)
            Output_LineNo();
    }
    // Gives a value that is not set a constant.
    void Set_Default(AttributeValue* value, std::string_view text);
    // Reports the error that a value has stored.
    ParserStatus Report_Stored_Error(const AttributeValue& value);

  protected:
    friend class AttributeValue; // compiles the text of a filter with the tables in force

    // compiler_parser.cpp
    bool Generating() const { return suspended_output == nullptr; }
    bool Inside_Function() const { return local_variables == &function_variables; }
    void Queue(int opcode, int first = 0, int second = 0); // Queue_Opcode of the queue in force
    // The value of an attribute of the tag that is being read.
    template <int tag, int attribute>
    AttributeValue* Value() const {
        return attribute_values->Element(element_of<tag, attribute>);
    }
    template <int tag, int attribute>
    bool Is_Given() const {
        return Value<tag, attribute>()->Is_Set();
    }
    String Engine_Version_Text() const; // without trailing zeros

    // source_frame.cpp
    const String* Current_File() const;
    // The same for records, which it outlives.
    const String* Source_Name() { return source_name ? source_name : Keep_Source_Name(); }
    const String* Keep_Source_Name();
    int Source_Constant(); // its number
    void Set_File_Ident(std::string_view file);
    void Queue_Source_File();
    ParserStatus Check_Open_Blocks(ParserStatus status);
    ParserStatus Check_Single_Block(const Resolution_Info* block, int tag, ParserStatus status);

    // call_resolution.cpp
    const Function_Resolution_Info* Definition_Of(Function_Resolution_Info* call); // null when there is none
    ParserStatus Resolve_Calls(ParserStatus status);
    ParserStatus Declare_Unresolved_Function(const Function_Call& call);
    void Declare_External_Functions();
    void Generate_Function_Directive(const char* name, int length, int kind, int stdout_level,
                                     int error_level, int access);

    // string_constants.cpp
    int Find_Constant(const char* text, int length, ExpressionState state);

    // literal_text.cpp
    int Literal_Piece_Length() const; // 0 where nothing is split
    void Output_Text_Piece(const char* text, int length, int opcode);
    void Push_Literal_Piece(const char* text, int length);
    void Push_Split_Literal(const char* text, int length, int piece_length);
    void Push_Joined_Piece(const char* text, int length, bool first);

    // variables.cpp
    HashTable<Variable>* Variables_Of(Variable_Scope scope) const; // null where the scope has no table
    int Find_In_Table(const char* name, int length, Variable_Scope scope);
    std::string_view Scratch_Key(std::string_view base, int number);
    void Make_Scratch_Variable(std::string_view base, int number, int ident);

    // expression_operands.cpp
    void Push_Statistic(Subexpression_Kind kind) { subexpressions.Push({0, OPERAND_NONE, kind}); }
    void Count_Value() {
        if (SubexpressionStatistic* statistic = subexpressions.Top())
            ++statistic->count;
    }
    ParserStatus Output_Remaining_Operators(int* written);
    void Check_Last_Subexpression(int operators_written, ParserStatus* status);

    // operator_stack.cpp
    ParserStatus Separate_Argument(int priority);
    ParserStatus Output_Top_Operator();
    bool Needs_Writable_Access();
    int Element_Opcode();
    int Member_Opcode();
    void Pass_On_Mixed_Type(const SubexpressionStatistic& inner);
    ParserStatus Close_Paren();
    ParserStatus Close_Call();
    ParserStatus Push_Dynamic_Call(const char* text, int length);

    // increment_operators.cpp
    void Output_Scratch_Increment(int arithmetic, bool prefix);
    void Output_Stack_Increment(int arithmetic, bool prefix);
    void Queue_Step(int arithmetic);
    void Queue_Value_Copy();

    // function_calls.cpp
    Function_Resolution_Info* Find_Called(const char* name, int length);
    void Open_Call(const char* name, int length);
    ParserStatus Output_Pending_Call();
    ParserStatus Record_Call(Pending_Call& call);
    void Record_Spelling(Pending_Call& call);

    // What a tag does at one of its events. The id comes along because current_tag is -1 while a closing
    // tag is handled.
    using Tag_Operation = ParserStatus (CompilerParser::*)(int tag);
    struct Tag_Actions {
        int tag;
        Tag_Operation at_open;  // Start_Of_Tag, ahead of the attributes
        Tag_Operation at_close; // Start_Of_Tag of the closing tag
        Tag_Operation at_end;   // End_Of_Tag, behind the attributes
    };
    static const Tag_Actions tag_actions[]; // by tag id, null where a tag does nothing
    static constexpr bool Has_Stack(int family);
    template <Tag_Operation operation, int tag>
    static constexpr bool Has_Its_Row();
    template <int... tags>
    static constexpr bool Actions_Are_Sound(std::integer_sequence<int, tags...>);

    // tag_dispatch.cpp
    // Reports a message without placeholders that a table has chosen.
    ParserStatus Report_Message(Message message);
    int Take_Label(); // the next number of a block's labels
    ParserStatus Unimplemented_Tag(int tag);
    ParserStatus Reject_Closing_Else(int tag);
    ParserStatus Reject_Closing_Comment(int tag);

    // attribute_dispatch.cpp
    ParserStatus Ignore_Unknown_Attribute(std::string_view name);
    ParserStatus Ignore_Unused_Attribute(std::string_view name);
    ParserStatus Select_Tag_Error(std::string_view name);
    // A flag counts also when no value follows its name.
    void Close_Valueless_Attribute() {
        if (const Attribute_Route* route = Route_Of(current_attribute); route && Is_Flag(route->convert))
            Set_Flag(*route);
    }
    void Set_Flag(const Attribute_Route& route);
    void Output_Captured_Value(const char* text, int length);
    ParserStatus Check_Value(const Attribute_Route& route, const char* text, int length);
    ParserStatus Store_Value(const Attribute_Route& route, const char* text, int length);
    int Convert_Value(const Attribute_Route& route, AttributeValue* value, const char* text, int length);
    int Constant(std::string_view text); // numbers of string constants
    int Positive_Constant(const char* text, int length);
    int Row_Constant(std::string_view row);
    AttributeValue* Route_Element(const Attribute_Route& route);
    ParserStatus Report_Outside_Array_Block(int tag);

    // attribute_expressions.cpp
    ParserStatus Start_Attribute_Expression(const Attribute_Route& route);
    ParserStatus Start_Text_Expression();
    ParserStatus Capture_Braces();
    ParserStatus Start_Fragment(AttributeValue* value, AttrExprType type);

    // keyword_lists.cpp
    // Reads a list of words into the bits that they stand for.
    ParserStatus String_To_Bitmap(int* result, const char* text, int length, const Keyword_List& list);
    ParserStatus Check_Keyword(const Keyword_List& list, const _String_To_Bitmap_Entry& entry,
                               std::string_view word, int uses);

    // directive_tag.cpp
    ParserStatus Generate_Tarn(int tag);
    ParserStatus Run_Directive(const Attribute_Route& route, const char* text, int length);
    ParserStatus Set_Include_Interpret(const char* text, int length);
    ParserStatus Change_Output_Level(const char* text, int length);
    ParserStatus Change_Error_Level(const char* text, int length);
    // Reads the words of a STANDARDOUTPUTLEVEL into result and puts them in force.
    ParserStatus Set_StandardOutputLevel(int* result, const char* text, int length);
    ParserStatus Parse_StandardOutputLevel(int* result, const char* text, int length);
    ParserStatus Parse_ErrorOutputLevel(int* result, const char* text, int length);
    ParserStatus Tag_Error_Value(const char* text, int length);
    ParserStatus Tarn_Interpret(const char* text, int length);
    void Output_Compression_Level(int flags); // stdoutput by OUTPUT_COMPRESS

    // plain_tags.cpp
    ParserStatus Generate_Plain_Tag(int tag); // the tags of plain_tags.h
    ParserStatus Generate_Exit(int tag);

    // block_stacks.cpp, with the tables of block_tables.h
    struct Block_Family;
    static const Block_Family block_families[];
    struct Block_Jump;
    static const Block_Jump block_jumps[];
    struct Loop_Block;
    static const Loop_Block loop_blocks[];
    Stack<Resolution_Info>& Blocks_Of(int family); // the stack of a family that has records of this class
    ParserStatus Generate_End_Block_Code(const char* tag_word, Stack<Resolution_Info>* stack,
                                         int loop_opcode);
    ParserStatus Jump_In_Block(int tag);           // the stop, continue and delete tags
    int Open_Block(Stack<Resolution_Info>* stack); // answers the block's label
    ParserStatus Close_Loop(const char* tag_word, Stack<Resolution_Info>* stack, int loop_opcode,
                            ParserLabelType back_to);

    // if_tags.cpp, while_tags.cpp, for_tags.cpp, foreach_tags.cpp
    ParserStatus Generate_If(int tag);
    ParserStatus Generate_Else(int tag);
    ParserStatus Generate_Elseif(int tag);
    ParserStatus Generate_End_If(int tag);
    ParserStatus Open_While(int tag);
    ParserStatus Close_While(int tag);
    ParserStatus Generate_While(int tag);
    ParserStatus Open_For(int tag);
    ParserStatus Close_For(int tag);
    ParserStatus Generate_For(int tag);
    ParserStatus Open_Foreach(int tag);
    ParserStatus Close_Foreach(int tag);
    ParserStatus Generate_Foreach(int tag);

    // assignment_tags.cpp
    ParserStatus Check_Value_And_Name(Message value_missing, Message name_missing);
    ParserStatus Generate_Assign(int tag);
    ParserStatus Generate_Reference(int tag);
    ParserStatus Open_Array_Block(int tag);
    ParserStatus Check_Reference_Array(int tag);
    ParserStatus Close_Array_Block(int tag);

    // function_tags.cpp
    ParserStatus Open_Function(int tag);
    ParserStatus Close_Function(int tag);
    ParserStatus Generate_Function(int tag);
    ParserStatus Check_Function_Name(std::string_view name);
    ParserStatus Discard_Function(std::string_view name);
    ParserStatus Read_Function_Levels(int* stdout_level, int* error_level);
    ParserStatus Read_Function_Access(int* access);
    ParserStatus Declare_Parameters(Function_Resolution_Info* definition);
    ParserStatus Check_Return_Placement(int tag); // also at the closing form, ahead of its refusal
    ParserStatus Reject_Closing_Return(int tag);
    ParserStatus Generate_Function_Return(int tag);
    ParserStatus Parse_Access(int* result, const char* text, int length);
    ParserStatus Parameter_Directive(const char* text, int length);
    ParserStatus Generate_Do(int tag);
    ParserStatus Output_Do_Call(AttributeValue* value, AttributeValue* name);

    // conditional_tags.cpp, include_tag.cpp
    ParserStatus Process_IFDEF(int tag); // TnIFNDEF negates
    ParserStatus Process_End_IFDEF(int tag);
    bool Inside_False_Block();
    void Suspend_Generation();
    void Resume_Generation();
    bool Debugging();                   // whether the notices of conditional compilation were asked for
    ParserStatus Open_Include(int tag); // at the closing form too
    ParserStatus Generate_Include(int tag);
    ParserStatus Include_Source(const String& name);
    ParserStatus Include_Text(const String& name);

    // filter_tags.cpp
    ParserStatus Generate_Filter(int tag);
    ParserStatus Compile_Filter(AttributeValue* filter, AttributeValue* type_value, int had_braces);

    // loop_block_tags.cpp, call_tag.cpp, mail_tag.cpp
    ParserStatus Generate_Import(int tag);
    ParserStatus Generate_Pop3(int tag);
    ParserStatus Generate_Commerce(int tag);
    ParserStatus Generate_Call(int tag);
    ParserStatus Close_Loop_Block(int tag); // import, pop, commerce and call
    void Output_Loop_Opening(int tag, int opcode);
    int Highest_Set_Element();
    ParserStatus Output_Counted_Call(int label, int count);
    ParserStatus Check_Call_Attributes(int count);
    ParserStatus Output_Old_Call(int label, int count);
    ParserStatus Generate_Smtp(int tag);
    ParserStatus Close_Smtp(int tag);

    // region_tags.cpp
    ParserStatus Open_Capture(int tag);
    ParserStatus Close_Capture(int tag);
    ParserStatus Generate_Capture(int tag);
    ParserStatus Close_Lockfile(int tag);
    ParserStatus Generate_Lockfile(int tag);
    ParserStatus Close_Asynchronous(int tag);
    ParserStatus Generate_Asynchronous(int tag);

    // database_tags.cpp, sql_fields.cpp
    ParserStatus Generate_Open(int tag);
    ParserStatus Generate_Move(int tag); // skip and go
    ParserStatus Generate_Primary(int tag);
    ParserStatus Generate_Makeindex(int tag);
    ParserStatus Generate_Create(int tag);
    ParserStatus Generate_Revealstructure(int tag);
    ParserStatus Generate_Openview(int tag);
    ParserStatus Generate_Query(int tag);
    void Output_Database_Command(int operands, int opcode);
    void Output_Reveal(AttributeValue* target, int opcode);
    void Validate_SQL_Fields(const AttributeValue& fields);
    void Validate_SQL_Fields(const char* text, int length);
    void Validate_SQL_Field(const char* text, int length);

    // localized_tags.cpp
    ParserStatus Open_Localized(int tag);
    ParserStatus Close_Localized(int tag);
    ParserStatus Check_Localized_ID(int tag);
    void Make_Localized_ID(AttributeValue* value, const String& stem);
    ParserStatus Open_Localized_Text(int tag);
    ParserStatus Close_Localized_Text(int tag);
    ParserStatus Check_Token_Placement(int tag); // at the closing form too
    ParserStatus Generate_Localized_Token(int tag);
    ParserStatus Generate_Localized_Directive();

    // The order of the fields is part of the binary interface, so that some subjects come twice.
    ExternalCallManager* external_calls;
    Constant_Table string_table;  // every string constant written so far, with its number
    int function_stdout_default;  // output flags that every TnFUNCTION starts with, -1 for none
    int function_access_default;  // Function_Access of every TnFUNCTION without ACCESS
    int saved_function_flags = 0; // output flags to go back to behind the open function

    // Localized text.
    int saved_localized_flags = OUTPUT_HTML | OUTPUT_TEXT;
    int localized_text_flags = OUTPUT_HTML | OUTPUT_TEXT;
    int localized_text_count = 0;

    int saved_capture_flags = -1; // -1 when the TnCAPTURE being read changed none

    int output_flags = OUTPUT_HTML | OUTPUT_TEXT; // Output_Flag bits, mirrored into the scanner
    int tag_error_code = 0;                       // tag id of a pending <tagname>_ERROR attribute

    // The expression being compiled.
    int conditional_operators = 0; // boolean operators outside all brackets
    Value_Stack<SubexpressionStatistic> subexpressions;

    // The tag being read.
    int current_tag = -1;                   // -1 outside any tag
    const char* tag_name = nullptr;         // its table key
    int current_attribute = ATTRIBUTE_NONE; // index of its route, see attribute_routes.h

    // Localized text, the rest.
    // Every id of this compilation.
    HashTable<String> localized_ids{1, 1, table_bucket_bits, table_initial_slots};
    int localized_sequence = 0;             // behind ids that are made up
    std::unique_ptr<String> localized_text; // while set, text is gathered here instead of compiled

    // Names.
    HashTable<Variable>* local_variables;  // what local scope means now
    HashTable<Variable>* global_variables; // owned when owns_globals is set
    HashTable<Variable>* system_variables; // owned when owns_system is set
    HashTable<Variable> function_variables{1, 1, table_bucket_bits, table_initial_slots};
    Constant_Table* scratch_variables = &file_scratch_variables; // the scratch table that counts now
    Constant_Table file_scratch_variables;
    Constant_Table function_scratch_variables;
    char file_ident[32]; // printable digest of the current source file's name
    AttributeLookup attribute_lookup;
    int next_string_ident = 0;

    // The expression being compiled, the rest.
    int priority_bias = 0;
    Value_Stack<Operator> operators;

    // Functions.
    Function_Records referenced_functions; // of all that was called
    // The first call of each name.
    HashTable<Function_Resolution_Info> called_functions{0, 1, table_bucket_bits, table_initial_slots};
    // Those that were reported as undefined.
    HashTable<Function_Resolution_Info> unresolved_functions{0, 1, table_bucket_bits, table_initial_slots};
    HashTable<Function_Resolution_Info> defined_functions{1, 1, table_bucket_bits, table_initial_slots};
    std::vector<Pending_Call> open_calls;
    std::deque<Function_Call> call_list; // in source order

    // Open blocks.
    int next_label = 1;
    Stack<Resolution_Info> while_stack{1};
    Stack<Resolution_Info> if_stack{1}; // of If_Resolution_Info
    Stack<Ifdef_Resolution_Info> ifdef_stack{1};
    Stack<Resolution_Info> import_stack{1};
    Stack<Resolution_Info> commerce_stack{1};
    Stack<Resolution_Info> pop_stack{1};
    Stack<Resolution_Info> lockfile_stack{1};
    Stack<Resolution_Info> call_stack{1};
    Stack<Resolution_Info> foreach_stack{1};
    Stack<Resolution_Info> for_stack{1};
    Stack<Resolution_Info> capture_stack{1}; // of Capture_Resolution_Info
    int async_depth = 0;
    std::unique_ptr<Resolution_Info> async_block; // null when not open
    std::unique_ptr<Resolution_Info> smtp_block;  // null when not open

    // Output.
    int last_lineno = 0;
    unsigned char lineno_forced = 0;
    // The real output while an expression goes into a fragment, and while a false conditional block discards
    // code.
    CompilerOutput* saved_output = nullptr;
    CompilerOutput* suspended_output = nullptr;

    // The tag being read, the rest: its values.
    std::unique_ptr<AttributeValueArray> attribute_values;
    int array_kind = ARRAY_NONE; // Array_Kind
    int array_count = 0;
    std::unique_ptr<AttributeValueArray> array_values; // dimensions of the open array block
    AttributeValue discard_value;                      // takes an expression that is compiled and dropped
    AttrExprType expression_type = ATTREXPR_VALUE;     // kind of value that the current expression yields
    int interpret_expressions = 1;

    std::unique_ptr<FilterParser> filter_parser; // made on first use
    unsigned char owns_globals = 0;
    unsigned char owns_system = 0;
    OpcodeQueue* opcode_queue; // owned, never null
    int include_interpret = 1; // 0 when TnINCLUDE prints the file unchanged

    std::unique_ptr<CompilerOutput> null_output; // in force while output is suspended
    std::optional<std::string> digested_file;    // the name whose digest file_ident is
    std::string scratch_name;                    // made last, or its key, for the room
    std::map<std::string, String> source_names;  // of records
    const String* source_name = nullptr;         // the current file's among them, null while not asked for
    int source_constant = -1;                    // of the current file's name, -1 while not asked for

    // Of the tables that are never emptied.
    Recent_Names recent_globals;
    Recent_Names recent_calls; // places in referenced_functions
    // One more than the number of each constant of one byte, 0 for none. Without it a page of code takes
    // 2.4 % more instructions, counted as recycled_memory.h tells.
    std::array<int, 256> byte_constants{};
};

#endif
