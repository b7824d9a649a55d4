// The routes by tag and attribute.

#include "compiler/records/attribute_routes.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

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

// An element of a tag takes the value of one attribute, and stands among the slots of the tag. A tag without
// slots fills those of the tag around it.
static_assert([] {
    for (const Attribute_Route& route : attribute_routes) {
        if (route.element == -1)
            continue;
        if (Required_Slots(route.tag) != NO_SLOTS && route.element >= Slots(route.tag))
            return false;
        for (const Attribute_Route& other : attribute_routes)
            if (&other != &route && other.tag == route.tag && other.element == route.element)
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
