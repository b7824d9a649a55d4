#ifndef VALUE_ELEMENT_WALK_H
#define VALUE_ELEMENT_WALK_H

#include "core/list.h"

#include <memory>
#include <unordered_set>
#include <vector>

class AggregateElement;
class AggregateElementTree;

enum class ElementOrder {
    Of_Keys,
    Of_Copies, // the one in which a copy of the tree has to insert them
};

// Visits the elements of an aggregate, depth first, and those of the aggregates in it that the user enters.
// It keeps a stack of its own, since how deep aggregates are nested is up to the script. An aggregate that
// comes up inside itself, by a reference, can't be entered there.
class ElementWalk {
  public:
    explicit ElementWalk(ElementOrder order = ElementOrder::Of_Keys) : order(order) {}

    // The elements of tree come next. False, and nothing happens, if they are being walked already.
    bool Enter(AggregateElementTree* tree);
    // The next element of what was entered last; at its end null, and the walk is back where it was before.
    AggregateElement* Next();

  private:
    struct Level {
        AggregateElementTree* tree;
        std::unique_ptr<List<AggregateElement>> elements;
    };
    ElementOrder order;
    std::vector<Level> levels;
    std::unordered_set<AggregateElementTree*> entered;
};

#endif
