#include "compiler/attribute_routes.h"

#include "frontend/attribute_lookup.h"
#include "frontend/tag_lookup.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

// Keys that share an id are one attribute: INDEX is also USER and USERNAME, MEMBER also TO.
constexpr Attribute_Route attribute_routes[] = {
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

constexpr int route_count = std::size(attribute_routes);
constexpr int tag_error_index = route_count - 1;
static_assert(attribute_routes[tag_error_index].convert == Convert::Tag_Error);

constexpr int One_Past_Highest(int Attribute_Route::*id) {
    int highest = 0;
    for (const Attribute_Route& route : attribute_routes)
        highest = std::max(highest, route.*id);
    return highest + 1;
}

constexpr int tag_limit = One_Past_Highest(&Attribute_Route::tag);
constexpr int attribute_limit = One_Past_Highest(&Attribute_Route::attribute);

// The state of each pair of tag and attribute, and whether a tag has any.
struct Route_Index {
    std::array<std::array<unsigned char, attribute_limit>, tag_limit> states;
    std::array<bool, tag_limit> used;
};

static_assert(route_count + ATTRIBUTE_FIRST_ROUTE <= 256, "states have to fit into a byte");

constexpr Route_Index route_index = [] {
    Route_Index index = {};
    for (int i = 0; i < tag_error_index; ++i) {
        const Attribute_Route& route = attribute_routes[i];
        index.states[route.tag][route.attribute] = static_cast<unsigned char>(ATTRIBUTE_FIRST_ROUTE + i);
        index.used[route.tag] = true;
    }
    return index;
}();

// No pair stands twice: each row is found where it stands.
static_assert([] {
    for (int i = 0; i < tag_error_index; ++i) {
        const Attribute_Route& route = attribute_routes[i];
        if (route_index.states[route.tag][route.attribute] != ATTRIBUTE_FIRST_ROUTE + i)
            return false;
    }
    return true;
}());

} // namespace

int Find_Attribute_Route(int tag, int attribute) {
    if (tag < 0 || tag >= tag_limit || attribute < 0 || attribute >= attribute_limit)
        return ATTRIBUTE_NONE;
    return route_index.states[tag][attribute];
}

bool Tag_Has_Attributes(int tag) {
    return tag >= 0 && tag < tag_limit && route_index.used[tag];
}

int Tag_Error_Route() {
    return ATTRIBUTE_FIRST_ROUTE + tag_error_index;
}

const Attribute_Route* Route_Of(int state) {
    return state < ATTRIBUTE_FIRST_ROUTE ? nullptr : &attribute_routes[state - ATTRIBUTE_FIRST_ROUTE];
}
