// The index and the tree of an aggregate's elements.

#include "value/aggregate.h"

#include "core/text_search.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

AggregateIndex::AggregateIndex() = default;

AggregateIndex::AggregateIndex(const AggregateIndex& other) : number(other.number) {
    name = other.name;
}

AggregateIndex::AggregateIndex(const String& name) {
    this->name = name;
}

AggregateIndex::AggregateIndex(const char* name, int name_length) : name(name, name_length) {
}

AggregateIndex::AggregateIndex(int number) : number(std::max(number, 0)) {
}

int AggregateIndex::Compare_Names(const AggregateIndex& other) const {
    const int length = name.length();
    const int other_length = other.name.length();
    const int order =
        memcmpi(other.name.text(), name.text(), static_cast<std::size_t>(std::min(length, other_length)));
    return order ? order : (other_length > length) - (other_length < length);
}

void AggregateIndex::Renumber(int n) {
    number = std::max(n, 0);
    name.destroy();
    serialized_.destroy();
}

AggregateIndex::operator String&() {
    if (number >= 0 && !name.length())
        name = String() + number;
    return name;
}

const String& AggregateIndex::serialized() {
    if (!serialized_.length()) {
        const String& text = *this;
        serialized_.assign(number >= 0 ? "[" : ":", 1);
        serialized_.cat(text.text(), text.length());
        if (number >= 0)
            serialized_.cat("]", 1);
    }
    return serialized_;
}

AggregateElement::AggregateElement(const AggregateIndex& index, Variable* variable)
    : index_(index), var_(Hold(variable)) {
}

AggregateElement::AggregateElement(const AggregateIndex& index) : index_(index), var_(new Variable) {
}

AggregateElement::AggregateElement(const AggregateElement& other)
    : index_(other.index_), var_(new Variable(*other.var_)) {
}

AggregateElement::~AggregateElement() = default;

AggregateIndex& AggregateElement::index() {
    return index_;
}

Variable* AggregateElement::var() {
    return var_.get();
}

void AggregateElement::SetVariable(Variable* variable) {
    var_ = Hold(variable);
}

AggregateElementTree::AggregateElementTree() : SplayTree(1) {
}

AggregateElementTree::~AggregateElementTree() {
    AggregateElementTree::Dump();
}

AggregateElementTree::Node* AggregateElementTree::Detach() {
    Node* tree = root;
    root = nullptr;
    entries = 0;
    return tree;
}

// Rotates each tree into a list as it goes, and takes the elements of an aggregate that dies with its element
// along.
void AggregateElementTree::Dump() {
    std::vector<Node*> nested;
    for (Node* node = Detach(); node;) {
        if (Node* left = node->left) {
            node->left = left->right;
            left->right = node;
            node = left;
            continue;
        }
        if (AggregateElementTree* inner = node->element->var()->Dying_Elements())
            nested.push_back(inner->Detach());
        Node* done = node;
        node = node->right;
        Purge(done->element);
        delete done;
        while (!node && !nested.empty()) {
            node = nested.back();
            nested.pop_back();
        }
    }
}

namespace {

void Shift(AggregateElement* element, int delta) {
    const std::int64_t number = static_cast<std::int64_t>(element->index().Number()) + delta;
    element->index().Renumber(static_cast<int>(std::clamp<std::int64_t>(number, 0, INT_MAX)));
}

} // namespace

void AggregateElementTree::AppendToList_For_Copy(List<AggregateElement>& list) const {
    if (entries > most_recursive_entries)
        For_Each_From_The_Top(root, [&](const Node* node) { list.Insert(node->element, LIST_LAST); });
    else
        AppendToList(list);
}

void AggregateElementTree::Displace(int from, int delta) {
    if (!delta || !root)
        return;
    Splay(from);
    if (root->element->index().Number() >= from)
        Shift(root->element, delta);
    if (entries > most_recursive_entries)
        DisplaceStack(delta, root->right);
    else
        DisplaceRecurse(delta, root->right);
}

void AggregateElementTree::DisplaceRecurse(int delta, SplayTreeNode<AggregateElement>* node) {
    if (!node)
        return;
    DisplaceRecurse(delta, node->left);
    Shift(node->element, delta);
    DisplaceRecurse(delta, node->right);
}

void AggregateElementTree::DisplaceStack(int delta, SplayTreeNode<AggregateElement>* node) {
    For_Each_From_The_Top(node, [delta](const Node* node) { Shift(node->element, delta); });
}
