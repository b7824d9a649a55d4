// Arrays and structures: the element operations of Variable. A variable that is being stored may hang on what
// the operation drops, so it is held until it stands at its place.
//
// Removing an element can leave greater keys to the left of lesser ones (see SplayTree::Remove). First, Last,
// Next and Previous then answer what stands where the least, the greatest or a neighbour should be, and Find
// misses keys. Scripts see that, so nothing here mends it; loops over such a tree only have to end.

#include "value/aggregate.h"
#include "value/element_walk.h"
#include "value/immutable_variable.h"
#include "value/variable.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

namespace {

constexpr std::int64_t highest_index = INT_MAX;

// The number of a tree's last or first element.
int Number_Of(AggregateElement* element) {
    return element ? element->index().Number() : 0;
}

void Insert_Element(AggregateElementTree& tree, std::unique_ptr<AggregateElement> element) {
    tree.Insert(element.get());
    (void)element.release();
}

// Moves the elements from the number from on up by count. False, and nothing moves, if the last one would go
// too far. A number behind the last one is no exception, since the last one need not be the greatest.
bool Open_Gap(AggregateElementTree& tree, std::int64_t from, std::int64_t count) {
    const std::int64_t last = Number_Of(tree.Last());
    if (from <= last && last + count > highest_index)
        return false;
    if (from <= highest_index)
        tree.Displace(static_cast<int>(from), static_cast<int>(count));
    return true;
}

// The last element below the number end.
AggregateElement* Last_Below(const AggregateElementTree& tree, std::int64_t end) {
    return end > highest_index ? tree.Last() : tree.Previous(static_cast<int>(end));
}

// Puts an element's variable, or a copy of it, at a place of target.
void Store(Variable* target, std::int64_t number, Variable* variable, bool clone) {
    if (number > highest_index)
        return;
    const VariableHold stored = clone ? VariableHold(new Variable(*variable)) : Hold(variable);
    target->SetElement(static_cast<int>(number), stored.get());
}

// Stores the elements of tree from start up to but excluding end, each offset places further on; backward
// begins with the last of them. Both stop at a number that is no further than the one before.
void Store_Forward(Variable* target, const AggregateElementTree& tree, std::int64_t start, std::int64_t end,
                   std::int64_t offset, bool clone) {
    std::int64_t number = start - 1;
    while (number < highest_index) {
        AggregateElement* element = tree.Next(static_cast<int>(number));
        if (!element || element->index().Number() <= number || element->index().Number() >= end)
            return;
        number = element->index().Number();
        Store(target, number + offset, element->var(), clone);
    }
}

void Store_Backward(Variable* target, const AggregateElementTree& tree, std::int64_t start, std::int64_t end,
                    std::int64_t offset, bool clone) {
    std::int64_t number = end;
    AggregateElement* element = Last_Below(tree, end);
    while (element && element->index().Number() < number && element->index().Number() >= start) {
        number = element->index().Number();
        Store(target, number + offset, element->var(), clone);
        element = tree.Previous(static_cast<int>(number));
    }
}

// False if there is no element there, or if it isn't found again by its number.
bool Delete_Last_Between(AggregateElementTree& tree, int start, std::int64_t end) {
    AggregateElement* last = Last_Below(tree, end);
    if (!last || last->index().Number() < start)
        return false;
    const std::unique_ptr<AggregateElement> removed(tree.Remove(last->index()));
    return removed != nullptr;
}

VariableHold Empty_Copy(const Variable& original, bool immutable) {
    VariableHold copy(immutable ? new ImmutableVariable : new Variable);
    copy->SetName(original.name());
    return copy;
}

} // namespace

Variable* Variable::Element(const AggregateIndex& index, int create) {
    if (aggregate == index.Kind())
        if (AggregateElement* element = elements->Find(index))
            return element->var();
    if (!create)
        return nullptr;
    auto element = std::make_unique<AggregateElement>(index);
    Variable* variable = element->var();
    Convert_Aggregate(index.Kind());
    Insert_Element(*elements, std::move(element));
    return variable;
}

bool Variable::SetElement(const AggregateIndex& index, Variable* variable) {
    if (aggregate == index.Kind())
        if (AggregateElement* element = elements->Find(index)) {
            element->SetVariable(variable);
            return true;
        }
    auto element = std::make_unique<AggregateElement>(index, variable);
    Convert_Aggregate(index.Kind());
    Insert_Element(*elements, std::move(element));
    return true;
}

void Variable::InsertElement(int position, Variable* variable) {
    const bool append = aggregate == AGGREGATE_ARRAY && position < 1;
    const std::int64_t number = append ? std::int64_t{Variable::Max()} + 1 : std::max(position, 1);
    if (number > highest_index)
        return;
    auto element = std::make_unique<AggregateElement>(static_cast<int>(number), variable);
    Convert_Aggregate(AGGREGATE_ARRAY);
    if (append || Open_Gap(*elements, number, 1))
        Insert_Element(*elements, std::move(element));
}

void Variable::DeleteElement(const AggregateIndex& index, bool collapse) {
    if (aggregate != index.Kind())
        return;
    const int number = index.Number();
    delete elements->Remove(index);
    if (aggregate == AGGREGATE_ARRAY && collapse && number < highest_index)
        elements->Displace(number + 1, -1);
}

void Variable::DeleteElements(int start, int count, bool collapse) {
    if (start < 1)
        return;
    Convert_Aggregate(AGGREGATE_ARRAY);
    const std::int64_t end = count == -1 ? highest_index + 1 : std::int64_t{start} + count;
    while (Delete_Last_Between(*elements, start, end)) {
    }
    if (collapse && count > 0 && end <= highest_index)
        elements->Displace(static_cast<int>(end), -count);
}

void Variable::MergeElements(Variable* source, int start, int count, int dest, bool clone) {
    const VariableHold held = Hold(source->RealIdentity());
    source = held.get();
    Convert_Aggregate(AGGREGATE_ARRAY);
    std::int64_t first = start < 1 ? std::max(source->Min(), 1) : start;
    std::int64_t wanted = count;
    if (count < 0) {
        wanted = source->Max();
        if (wanted >= 1)
            wanted += 1 - first;
    }
    const std::int64_t target = dest < 1 ? std::int64_t{Variable::Max()} + 1 : dest;
    if (wanted < 1 || !Open_Gap(*elements, target, wanted) || source->aggregatetype() != AGGREGATE_ARRAY)
        return;
    std::int64_t end = first + wanted;
    std::int64_t offset = target - first;
    // The gap has moved what of this array's own range stood behind it.
    if (source == this && end > target) {
        if (first < target)
            Store_Forward(this, *elements, first, target, offset, clone);
        first = std::max(first, target) + wanted;
        end += wanted;
        offset -= wanted;
    }
    Store_Forward(this, *source->aggregateelements(), first, end, offset, clone);
}

void Variable::CopyElements(Variable* source, int start, int count, int dest, bool clone) {
    const VariableHold held = Hold(source->RealIdentity());
    source = held.get();
    Convert_Aggregate(AGGREGATE_ARRAY);
    if (source->aggregatetype() != AGGREGATE_ARRAY)
        return;
    const std::int64_t first = start < 1 ? source->Min() : start;
    if (first < 1 || (count < 0 && source->Max() < 1))
        return;
    const std::int64_t end = count < 0 ? std::int64_t{source->Max()} + 1 : first + count;
    const std::int64_t target = dest < 1 ? std::int64_t{Variable::Max()} + 1 : dest;
    if (source == this && first == target && !clone)
        return;
    // The order in which an overlap is read before it is overwritten.
    auto store = first <= target ? Store_Backward : Store_Forward;
    store(this, *source->aggregateelements(), first, end, target - first, clone);
}

int Variable::CollapseElements() {
    if (aggregate != AGGREGATE_ARRAY)
        return 0;
    List<AggregateElement> in_order(0);
    elements->AppendToList(in_order);
    int number = 0;
    for (AggregateElement* element = in_order.First(); element; element = in_order.Next())
        element->index().Renumber(++number);
    return number;
}

int Variable::Max() {
    return elements ? Number_Of(elements->Last()) : 0;
}

int Variable::Min() {
    return elements ? Number_Of(elements->First()) : 0;
}

int Variable::Next(int index) {
    if (!elements || aggregate != AGGREGATE_ARRAY)
        return elements ? -1 : 0;
    return Number_Of(elements->Next(index));
}

int Variable::Previous(int index) {
    if (!elements || aggregate != AGGREGATE_ARRAY)
        return elements ? -1 : 0;
    return Number_Of(elements->Previous(index));
}

int Variable::ElementsUsed() {
    return elements ? elements->Entries() : 0;
}

bool Variable::Convert_Aggregate(AggregateType type) {
    if (aggregate != type)
        Replace_Elements(type == AGGREGATE_NONE ? nullptr : std::make_unique<AggregateElementTree>(), type);
    return true;
}

std::unique_ptr<AggregateElementTree> Variable::Copy_Tree(AggregateElementTree& source,
                                                          ElementCopies copies) {
    auto copy = std::make_unique<AggregateElementTree>();
    ElementWalk walk(ElementOrder::Of_Copies);
    walk.Enter(&source);
    std::vector<AggregateElementTree*> open{copy.get()};
    while (!open.empty()) {
        AggregateElement* element = walk.Next();
        if (!element) {
            open.pop_back();
            continue;
        }
        Variable* original = element->var();
        const bool shared = copies == ElementCopies::Immutable_Shared && original->AsImmutable();
        VariableHold stored = shared ? Hold(original) : Empty_Copy(*original, copies != ElementCopies::Plain);
        Insert_Element(*open.back(), std::make_unique<AggregateElement>(element->index(), stored.get()));
        if (shared)
            continue;
        Variable* real = original->RealIdentity();
        AggregateElementTree* inner = real->aggregateelements();
        if (!inner)
            stored->Variable::SetValue(*original);
        else if (walk.Enter(inner)) {
            stored->Variable::Convert_Aggregate(real->aggregatetype());
            open.push_back(stored->elements.get());
        }
    }
    return copy;
}

AggregateElementTree* Variable::Dying_Elements() {
    Variable* last = this;
    while (last->type() == VARIABLE_REFERENCE)
        last = last->NextIdentity();
    return last->refcount_ == 1 ? last->elements.get() : nullptr;
}
