// Where the value of each attribute of each tag goes.
#ifndef COMPILER_ATTRIBUTE_ROUTES_H
#define COMPILER_ATTRIBUTE_ROUTES_H

#include "app/diagnostics.h"

#include <optional>

// What becomes of a value: the first line is a plain value, the second one in braces. An expression without
// an element is compiled where it stands, like one in a tag that is passed on as text.
enum class Convert : unsigned char {
    Constant,            // a string constant; a value
    Constant_No_Element, // a string constant; no element
    Target_Variable,     // a variable to write to; its name
    Whole_Name,          // likewise, with a name that has no scope prefix
    Index,               // an array index
    Member,              // a member name
    Variable_Name,       // a variable, looked up by the generator; its name
    Reference_Name,      // likewise; a value
    Positive_Number,     // a positive integer; a value
    Text,                // text for the generator, pushed as a constant; a value
    Directive_Text,      // text for the generator; no element
    Dynamic_Text,        // source of an expression that is kept for run time, braces and all

    Constant_Flag, // the constant "1" whatever the value, if there is one; no element
    Flag,          // 1 whatever the value, if there is one; refused
    Copy_Flag,     // likewise; refused, yet compiled

    Certificate_Type, // a constant of two; a value
    Row_Position,     // a constant, of "top" and "bottom" their number; a value
    Array_Index,      // an Index, for the open array block
    Array_Member,     // a Member, for the open array block

    // Directives act when they are read.
    Include_Interpret,
    Output_Level,
    Capture_Level,
    Localized_Level, // takes an expression, which is never output
    Error_Level,
    Interpret,
    Ident,
    Tag_Error
};

struct Attribute_Route {
    int tag;
    int attribute;
    int element; // in the values of the tag, -1 for none
    Convert convert;
    std::optional<Message> refusal = {}; // the report of an expression
};

// The values of CompilerParser::current_attribute: no attribute, one whose value is dropped, or a route's
// index plus ATTRIBUTE_FIRST_ROUTE.
enum Attribute_State { ATTRIBUTE_NONE = 0, ATTRIBUTE_IGNORED = 1, ATTRIBUTE_FIRST_ROUTE = 2 };

// The state of an attribute of a tag, ATTRIBUTE_NONE where the tag doesn't use it. Ids out of range are
// taken.
int Find_Attribute_Route(int tag, int attribute);
// Whether the tag uses any attribute at all.
bool Tag_Has_Attributes(int tag);
// The state of <tagname>_ERROR, which no attribute id stands for.
int Tag_Error_Route();
// The route of a state, null for those below ATTRIBUTE_FIRST_ROUTE.
const Attribute_Route* Route_Of(int state);

#endif
