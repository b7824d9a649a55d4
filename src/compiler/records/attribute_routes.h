// Where the value of each attribute of each tag goes. The rows are the only place where the number of an
// element stands.
#ifndef COMPILER_ATTRIBUTE_ROUTES_H
#define COMPILER_ATTRIBUTE_ROUTES_H

#include "app/services/diagnostics.h"
#include "frontend/scanner/attribute_lookup.h"
#include "frontend/scanner/tag_lookup.h"

#include <algorithm>
#include <optional>

// What becomes of a value: the first line is a plain value, the second one in braces. An expression without
// an element is compiled where it stands, like one in a tag that is passed on as text.
enum class Convert : unsigned char {
    Constant,            // a string constant; a value
    Constant_No_Element, // a string constant; no element
    Target_Variable,     // a variable to write to; its name
    Whole_Name,          // a variable to write to, by a name that has no scope prefix; its name
    Index,               // an array index
    Member,              // a member name
    Variable_Name,       // a variable, looked up by the generator; its name
    Reference_Name,      // a variable, looked up by the generator; a value
    Positive_Number,     // a positive integer; a value
    Text,                // text for the generator, pushed as a constant; a value
    Directive_Text,      // text for the generator; no element
    Dynamic_Text,        // source of an expression that is kept for run time, braces and all

    Constant_Flag, // the constant "1" whatever the value, if there is one; no element
    Flag,          // 1 whatever the value, if there is one; refused
    Copy_Flag,     // 1 whatever the value, if there is one; refused, yet compiled

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

constexpr bool Is_Flag(Convert convert) {
    return convert >= Convert::Constant_Flag && convert <= Convert::Copy_Flag;
}

struct Attribute_Route {
    int tag;
    int attribute;
    int element; // in the values of the tag, -1 for none
    Convert convert;
    std::optional<Message> refusal = {}; // the report of an expression
};

// Keys that share an id are one attribute: INDEX is also USER and USERNAME, MEMBER also TO.
inline constexpr Attribute_Route attribute_routes[] = {
    {Tag::If, Attribute::Expression, 0, Convert::Constant},
    {Tag::Import, Attribute::File, 0, Convert::Constant},
    {Tag::Import, Attribute::Delimiter, 1, Convert::Constant},
    {Tag::Import, Attribute::Fields, 2, Convert::Constant},
    {Tag::Import, Attribute::Filter, 3, Convert::Dynamic_Text},
    {Tag::Import, Attribute::Filter_Type, 4, Convert::Directive_Text, Message::Filter_Type_Expression},
    {Tag::Export, Attribute::File, 0, Convert::Constant},
    {Tag::Export, Attribute::Delimiter, 1, Convert::Constant},
    {Tag::Export, Attribute::Fields, 2, Convert::Constant},
    {Tag::Assign, Attribute::Value, 0, Convert::Constant},
    {Tag::Assign, Attribute::Name, 1, Convert::Target_Variable},
    {Tag::Assign, Attribute::Index, 2, Convert::Index},
    {Tag::Assign, Attribute::Member, 3, Convert::Member},
    {Tag::Eval, Attribute::Expression, 0, Convert::Constant},
    {Tag::Hide, Attribute::Fields, 0, Convert::Constant},
    {Tag::Pop, Attribute::Mailhost, 0, Convert::Constant},
    {Tag::Pop, Attribute::Login, 1, Convert::Constant},
    {Tag::Pop, Attribute::Password, 2, Convert::Constant},
    {Tag::Pop, Attribute::Directory, 3, Convert::Constant},
    {Tag::Smtp, Attribute::Member, 0, Convert::Constant}, // TO
    {Tag::Smtp, Attribute::From, 1, Convert::Constant},
    {Tag::Smtp, Attribute::Mailhost, 2, Convert::Constant},
    {Tag::Smtp, Attribute::Cc, 3, Convert::Constant},
    {Tag::Smtp, Attribute::Subject, 4, Convert::Constant},
    {Tag::Smtp, Attribute::Port, 5, Convert::Constant},
    {Tag::Smtp, Attribute::Flags, 6, Convert::Constant},
    {Tag::Smtp, Attribute::Index, 7, Convert::Constant}, // USER
    {Tag::Smtp, Attribute::Password, 8, Convert::Constant},
    {Tag::While, Attribute::Expression, 0, Convert::Constant},
    {Tag::Call, Attribute::Action, 0, Convert::Constant},
    {Tag::Call, Attribute::Method, 1, Convert::Constant},
    {Tag::Call, Attribute::Fields, 2, Convert::Constant},
    {Tag::Call, Attribute::Files, 3, Convert::Constant},
    {Tag::Call, Attribute::Content_Type, 4, Convert::Constant},
    {Tag::Call, Attribute::Certfile, 5, Convert::Constant},
    {Tag::Call, Attribute::Certtype, 6, Convert::Certificate_Type},
    {Tag::Call, Attribute::Headers, 7, Convert::Constant},
    {Tag::Call, Attribute::Timeout, 8, Convert::Constant},
    {Tag::Call, Attribute::Certpass, 9, Convert::Constant},
    {Tag::Call, Attribute::Certvalue, 10, Convert::Constant},
    {Tag::Call, Attribute::Flags, 11, Convert::Constant},
    {Tag::Call, Attribute::Pin_Algorithm, 12, Convert::Constant},
    {Tag::Call, Attribute::Pin_Digest, 13, Convert::Constant},
    {Tag::Function, Attribute::Name, 0, Convert::Directive_Text, Message::Function_Name_Expression},
    {Tag::Function, Attribute::Parameters, 1, Convert::Directive_Text},
    {Tag::Function, Attribute::Standardoutputlevel, 2, Convert::Directive_Text},
    {Tag::Function, Attribute::Erroroutputlevel, 3, Convert::Directive_Text},
    {Tag::Function, Attribute::Access, 4, Convert::Directive_Text},
    {Tag::Function_Return, Attribute::Value, 0, Convert::Constant},
    {Tag::Elseif, Attribute::Expression, 0, Convert::Constant},
    {Tag::Commerce, Attribute::Method, 0, Convert::Constant},
    {Tag::Commerce, Attribute::Action, 1, Convert::Constant},
    {Tag::Commerce, Attribute::Fields, 2, Convert::Constant},
    {Tag::Do, Attribute::File, 0, Convert::Constant},
    {Tag::Do, Attribute::Name, 1, Convert::Target_Variable},
    {Tag::Do, Attribute::Value, 2, Convert::Dynamic_Text},
    {Tag::Lockfile, Attribute::File, 0, Convert::Constant},
    {Tag::Localized, Attribute::Id, 3, Convert::Directive_Text},
    {Tag::Localized, Attribute::Name, 5, Convert::Target_Variable},
    {Tag::Localized, Attribute::Standardoutputlevel, 6, Convert::Localized_Level},
    {Tag::Localized_Token, Attribute::Value, 0, Convert::Constant},
    {Tag::Localized_Token, Attribute::Name, 1, Convert::Whole_Name},
    {Tag::Localized_Text, Attribute::Language, 2, Convert::Directive_Text,
     Message::Localized_Language_Expression},
    {Tag::Open, Attribute::Name, 0, Convert::Constant},
    {Tag::Open, Attribute::Database, 1, Convert::Constant},
    {Tag::Open, Attribute::Indexes, 2, Convert::Constant},
    {Tag::Open, Attribute::Type, 3, Convert::Constant},
    {Tag::Open, Attribute::Index, 4, Convert::Constant}, // USER
    {Tag::Open, Attribute::Password, 5, Convert::Constant},
    {Tag::Open, Attribute::Flags, 6, Convert::Constant},
    {Tag::Close, Attribute::Name, 0, Convert::Constant},
    {Tag::Skip, Attribute::Name, 0, Convert::Constant},
    {Tag::Skip, Attribute::View, 1, Convert::Constant},
    {Tag::Skip, Attribute::Rows, 2, Convert::Constant},
    {Tag::Go, Attribute::Name, 0, Convert::Constant},
    {Tag::Go, Attribute::View, 1, Convert::Constant},
    {Tag::Go, Attribute::Row, 2, Convert::Row_Position},
    {Tag::Primary, Attribute::Name, 0, Convert::Constant},
    {Tag::Primary, Attribute::View, 1, Convert::Constant},
    {Tag::Primary, Attribute::Index, 2, Convert::Constant},
    {Tag::Find, Attribute::Name, 0, Convert::Constant},
    {Tag::Find, Attribute::View, 1, Convert::Constant},
    {Tag::Find, Attribute::Value, 2, Convert::Constant},
    {Tag::Find, Attribute::Exact, 3, Convert::Constant_Flag},
    {Tag::Setindex, Attribute::Name, 0, Convert::Constant},
    {Tag::Setindex, Attribute::View, 1, Convert::Constant},
    {Tag::Setindex, Attribute::Indexes, 2, Convert::Constant},
    {Tag::Update, Attribute::Name, 0, Convert::Constant},
    {Tag::Update, Attribute::View, 1, Convert::Constant},
    {Tag::Delete, Attribute::Name, 0, Convert::Constant},
    {Tag::Delete, Attribute::View, 1, Convert::Constant},
    {Tag::Undelete, Attribute::Name, 0, Convert::Constant},
    {Tag::Add, Attribute::Name, 0, Convert::Constant},
    {Tag::Makeindex, Attribute::Name, 0, Convert::Constant},
    {Tag::Makeindex, Attribute::Indexfile, 1, Convert::Constant},
    {Tag::Makeindex, Attribute::Expression, 2, Convert::Dynamic_Text},
    {Tag::Makeindex, Attribute::Flags, 3, Convert::Constant},
    {Tag::Makeindex, Attribute::Expression_Type, 4, Convert::Directive_Text, Message::Filter_Type_Expression},
    {Tag::Pack, Attribute::Name, 0, Convert::Constant},
    {Tag::Reindex, Attribute::Name, 0, Convert::Constant},
    {Tag::Create, Attribute::Name, 0, Convert::Constant},
    {Tag::Create, Attribute::Database, 1, Convert::Constant},
    {Tag::Create, Attribute::Type, 2, Convert::Constant},
    {Tag::Create, Attribute::Fields, 3, Convert::Constant},
    {Tag::Revealstructure, Attribute::Name, 0, Convert::Constant},
    {Tag::Revealstructure, Attribute::Variable, 1, Convert::Target_Variable},
    {Tag::Revealstructure, Attribute::View, 2, Convert::Constant},
    {Tag::Revealstructure, Attribute::Database, 3, Convert::Constant},
    {Tag::Openview, Attribute::Name, 0, Convert::Constant},
    {Tag::Openview, Attribute::View, 1, Convert::Constant},
    {Tag::Openview, Attribute::Query, 2, Convert::Constant},
    {Tag::Openview, Attribute::Fields, 3, Convert::Text},
    {Tag::Closeview, Attribute::Name, 0, Convert::Constant},
    {Tag::Closeview, Attribute::View, 1, Convert::Constant},
    {Tag::Query, Attribute::Name, 0, Convert::Constant},
    {Tag::Query, Attribute::Query, 1, Convert::Constant},
    {Tag::Query, Attribute::Fields, 2, Convert::Text},
    {Tag::Filter, Attribute::Name, 0, Convert::Constant},
    {Tag::Filter, Attribute::View, 1, Convert::Constant},
    {Tag::Filter, Attribute::Filter, 2, Convert::Dynamic_Text},
    {Tag::Filter, Attribute::Filter_Type, 3, Convert::Directive_Text},
    {Tag::Tarn, Attribute::Errormessage, 3, Convert::Constant},
    {Tag::Tarn, Attribute::Errormessage_Suffix, 4, Convert::Constant},
    {Tag::Tarn, Attribute::Disable_Logging, 5, Convert::Flag, Message::Directive_Expression},
    {Tag::Tarn, Attribute::Erroroutputlevel, -1, Convert::Error_Level, Message::Directive_Expression},
    {Tag::Tarn, Attribute::Ident, -1, Convert::Ident, Message::Directive_Expression},
    {Tag::Tarn, Attribute::Interpret, -1, Convert::Interpret},
    {Tag::Tarn, Attribute::Standardoutputlevel, -1, Convert::Output_Level, Message::Directive_Expression},
    {Tag::Assignarray, Attribute::Value, 0, Convert::Constant},
    {Tag::Assignarray, Attribute::Name, 1, Convert::Target_Variable},
    {Tag::Dimension, Attribute::Index, -1, Convert::Array_Index},
    {Tag::Member, Attribute::Name, -1, Convert::Array_Member},
    {Tag::Commit, Attribute::Name, 0, Convert::Constant},
    {Tag::Rollback, Attribute::Name, 0, Convert::Constant},
    {Tag::Include, Attribute::File, 0, Convert::Directive_Text, Message::Include_File_Expression},
    {Tag::Include, Attribute::Interpret, -1, Convert::Include_Interpret},
    {Tag::Transact, Attribute::Name, 0, Convert::Constant},
    {Tag::Reference, Attribute::Variable, 0, Convert::Reference_Name},
    {Tag::Reference, Attribute::Name, 1, Convert::Target_Variable},
    {Tag::Reference, Attribute::Index, 2, Convert::Index},
    {Tag::Reference, Attribute::Member, 3, Convert::Member},
    {Tag::Reference, Attribute::Copy, 4, Convert::Copy_Flag, Message::Copy_Expression},
    {Tag::Referencearray, Attribute::Variable, 0, Convert::Reference_Name},
    {Tag::Referencearray, Attribute::Name, 1, Convert::Target_Variable},
    {Tag::Referencearray, Attribute::Copy, 4, Convert::Copy_Flag, Message::Copy_Expression},
    {Tag::Dbcommand, Attribute::Name, 0, Convert::Constant},
    {Tag::Dbcommand, Attribute::Command, 1, Convert::Constant},
    {Tag::Dbcommand, Attribute::Parameter, 2, Convert::Constant},
    {Tag::Capture, Attribute::Variable, 0, Convert::Reference_Name},
    {Tag::Capture, Attribute::Standardoutputlevel, -1, Convert::Capture_Level,
     Message::Capture_Level_Expression},
    {Tag::Ifdef, Attribute::Name, 0, Convert::Directive_Text, Message::Conditional_Name_Expression},
    {Tag::Ifndef, Attribute::Name, 0, Convert::Directive_Text, Message::Conditional_Name_Expression},
    {Tag::Foreach, Attribute::Iterator, 0, Convert::Variable_Name},
    {Tag::Foreach, Attribute::Array, 1, Convert::Variable_Name},
    {Tag::Foreach, Attribute::First, 2, Convert::Positive_Number},
    {Tag::Foreach, Attribute::Next, 3, Convert::Positive_Number},
    {Tag::Foreach, Attribute::Last, 4, Convert::Positive_Number},
    {Tag::Foreach, Attribute::Index, 5, Convert::Variable_Name},
    {Tag::Foreach, Attribute::Count, 6, Convert::Positive_Number},
    {Tag::For, Attribute::Index, 0, Convert::Variable_Name},
    {Tag::For, Attribute::First, 1, Convert::Constant},
    {Tag::For, Attribute::Next, 2, Convert::Constant},
    {Tag::For, Attribute::Last, 3, Convert::Constant},
    {Tag::For, Attribute::Count, 4, Convert::Constant},
    {Tag::For, Attribute::Expression, 5, Convert::Constant},
    {Tag::Asynchronous, Attribute::Isolation, 0, Convert::Constant_No_Element},

    // Named by no attribute id: the name holds that of a tag.
    {Tag::Tarn, -1, -1, Convert::Tag_Error},
};

constexpr int Find_Element(int tag, int attribute) {
    for (const Attribute_Route& route : attribute_routes)
        if (route.tag == tag && route.attribute == attribute)
            return route.element;
    return -1;
}

// Code that needs a value takes its element from here, by name: what has none does not compile.
template <int tag, int attribute>
inline constexpr int element_of = [] {
    constexpr int element = Find_Element(tag, attribute);
    static_assert(element != -1, "the tag has no element for the attribute");
    return element;
}();

// How many elements the attributes of a tag fill, counted up to the last.
template <int tag>
inline constexpr int elements_of = [] {
    int count = 0;
    for (const Attribute_Route& route : attribute_routes)
        if (route.tag == tag)
            count = std::max(count, route.element + 1);
    return count;
}();

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
inline const Attribute_Route* Route_Of(int state) {
    return state < ATTRIBUTE_FIRST_ROUTE ? nullptr : &attribute_routes[state - ATTRIBUTE_FIRST_ROUTE];
}

#endif
