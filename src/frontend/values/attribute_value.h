#ifndef FRONTEND_ATTRIBUTE_VALUE_H
#define FRONTEND_ATTRIBUTE_VALUE_H

#include "app/services/diagnostics.h"
#include "core/string.h"
#include "value/variable_scope.h"

#include <memory>
#include <string_view>

class CompilerParser;
class StringOutput;

// The kind of a value: how Output pushes it.
enum AttrExprType : int {
    ATTREXPR_MEMBER = 0,     // a member's name
    ATTREXPR_INDEX = 1,      // an array index
    ATTREXPR_TARGET = 2,     // the name of a variable to write to
    ATTREXPR_WHOLE_NAME = 3, // the same, but taken as spelled: no scope prefix, always local
    ATTREXPR_VARIABLE = 4,   // the name of a variable to read, or a string that holds one
    ATTREXPR_FLAG = 5,       // an attribute that was given without a value
    ATTREXPR_VALUE = 6,      // a constant or an expression
    ATTREXPR_TEXT = 7,       // text that becomes a string constant when it is pushed
};

// What the text of a filter is.
enum AttrExpr_Filter_Type : int {
    FILTER_VARIABLE = 0,   // a variable's name, compiled now
    FILTER_EXPRESSION = 1, // an expression that stays text for run time
    FILTER_INVALID = 2,
};

// AttributeValue holds what one attribute of the tag that is being read gave: text, the number of a variable
// or constant, or a fragment of code. An attribute arrives before the code of its tag can be written, so a
// fragment waits here until the generator puts it in its place.
//
// Operations that fail store a code and a text in error_code and error_message and answer 1; whoever knows
// the parser reports the pair. A value is "set" when any of text, number and fragment is there.
class AttributeValue {
  public:
    AttributeValue();
    virtual ~AttributeValue();
    AttributeValue(const AttributeValue&) = delete;
    AttributeValue& operator=(const AttributeValue&) = delete;

    // Frees what the value holds; scope, member_ident and the stored error stay.
    void Reset() {
        if (simple_text || qualifiers || expression)
            Drop();
        line = 0;
        ident = -1;
        type = ATTREXPR_VALUE;
    }
    // Takes over what the other value holds, and resets it.
    void Replace(AttributeValue& other);
    bool Is_Set() const { return simple_text || ident != -1 || expression; }

    // Keeps a copy of the text. Fails when there is one.
    [[nodiscard]] int Set_Simple_Text(const char* text, int length, AttrExprType type);
    // Made empty if there is none.
    String* Get_Simple_Text();
    // Null if there is none.
    const char* Get_Simple_Text(int* length) const;
    // The [...] and :... tail of a variable's name, null if there is none.
    const char* Aggregate_Qualifiers(int* length) const;
    // The number of the variable that the text names. Fails when there is a number or a fragment, and under
    // the pedantic rule for scopes.
    [[nodiscard]] int Set_Literal(CompilerParser* parser, const char* text, int length, AttrExprType type);
    // Fails when there is a number or a fragment.
    [[nodiscard]] int Set_Literal(int ident, AttrExprType type);
    // Makes the fragment that the expression's code is to be written to; this value stays its owner. Fails
    // when there is a number or a fragment.
    [[nodiscard]] int Get_Expression(StringOutput** fragment, AttrExprType type);

    // Bytes ahead of the first [ or :.
    static int Length_Of_Unqualified_Variable_Name(const char* text, int length);
    // Splits a variable's name into scope, number and qualifiers. Fails under the pedantic rule for scopes,
    // but sets all three.
    [[nodiscard]] int Parse_Variable_Name(CompilerParser* parser, const char* text, int length);
    // Writes the instructions of a tail like [1]:name[2]; count receives the number of its pieces, and may be
    // null. Fails at an index that doesn't end in a digit.
    [[nodiscard]] int Parse_Aggregate_Qualifier_Code(CompilerParser* parser, const char* text, int length,
                                                     int* count, int read_only);
    // Pushes the value, or stores to it, by its type. A value that is not set pushes the empty constant. By
    // reference, the file version that has references is demanded behind the instruction.
    void Output(CompilerParser* parser, int store, int read_only, int by_reference);

    // filter_value.cpp

    // The text without white space around it and, when it has them, its braces; had_braces may be null, and
    // is set to 1 or 0. Null, with a stored error, when there is no text. The text itself stays as it is.
    const char* Chomped_Filter_String(int* length, int* had_braces);
    // The chomped text as the name of a variable to read.
    [[nodiscard]] int Make_Variable_Push(CompilerParser* parser);
    // The text inside the braces as a constant. Reports the lack of braces itself; answers 1 without a report
    // when there is no text.
    [[nodiscard]] int Make_Expression_Literal(CompilerParser* parser);
    // Compiles the text into this value's fragment, or makes it a constant, by type.
    [[nodiscard]] int Make_Filter_Expression(CompilerParser* parser, AttrExpr_Filter_Type type,
                                             int text_has_braces);
    // Pushes the variable that the text names, its qualifiers included.
    [[nodiscard]] int Parse_String_Variable(CompilerParser* parser);
    AttrExpr_Filter_Type Filter_Type() const;

    // The order of the fields is part of the binary interface.
    int line = 0;                             // at which the value was read; 0 doesn't force one
    int ident = -1;                           // number of a string constant or variable, -1 for none
    std::unique_ptr<StringOutput> expression; // null for none
    String error_message;
    AttrExprType type = ATTREXPR_VALUE;
    ErrorCode error_code = 0;
    Variable_Scope scope = SCOPE_UNSCOPED;
    int member_ident = 0;                // for SCOPE_DATABASE, number of the constant that holds the alias
    std::unique_ptr<String> simple_text; // null for none
    std::unique_ptr<String> qualifiers;  // null for none

  private:
    template <Message message, typename... Arguments>
    int Store_Error(const Arguments&... arguments) {
        error_code = Code_Of_Message(message);
        error_message = Text_Of_Message<message>(arguments...);
        return 1;
    }

    void Drop();
    int Check_Scope(CompilerParser* parser, std::string_view text);
    int Output_Index(CompilerParser* parser, std::string_view index, int read_only);
    int Output_Member(CompilerParser* parser, std::string_view name, int read_only);
    void Output_Expression(CompilerParser* parser, int store, int read_only, int by_reference);
    void Output_Literal(CompilerParser* parser, int store, int read_only, int by_reference);
    void Push_Constant(CompilerParser* parser, const char* text, int length);
    int Compile_Filter(CompilerParser* parser, int text_has_braces);

    // The last fragment, kept for the next expression; null for none. Without it a page of code takes 9.1 %
    // more instructions, counted as recycled_memory.h tells.
    std::unique_ptr<StringOutput> spare_fragment;
    // The last text, unless it is long, kept for the next one; null for none. Without it, 0.4 % more.
    std::unique_ptr<String> spare_text;
};

#endif
