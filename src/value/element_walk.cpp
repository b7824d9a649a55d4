// The walk through an aggregate and those in it: one list for each that is open.

#include "value/element_walk.h"

#include "value/aggregate.h"

bool ElementWalk::Enter(AggregateElementTree* tree) {
    if (!entered.insert(tree).second)
        return false;
    auto elements = std::make_unique<List<AggregateElement>>(0);
    if (order == ElementOrder::Of_Copies)
        tree->AppendToList_For_Copy(*elements);
    else
        tree->AppendToList(*elements);
    elements->First();
    levels.push_back({tree, std::move(elements)});
    return true;
}

AggregateElement* ElementWalk::Next() {
    if (levels.empty())
        return nullptr;
    AggregateElement* element = levels.back().elements->Current();
    levels.back().elements->Next();
    if (!element) {
        entered.erase(levels.back().tree);
        levels.pop_back();
    }
    return element;
}
