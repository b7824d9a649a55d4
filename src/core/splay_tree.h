#ifndef CORE_SPLAY_TREE_H
#define CORE_SPLAY_TREE_H

#include "core/list.h"
#include "core/stack.h"

// The order of the fields is part of the binary interface.
template <class T>
struct SplayTreeNode {
    SplayTreeNode* left;
    SplayTreeNode* right;
    T* element;
};

// What a tree has to know about its elements stands beside their class, as two overloads:
//     K Splay_Key(const T& element);
//     int Splay_Compare(K key, const T& element);
// The second answers below 0 when the key sorts ahead of the element, 0 when they are equal.
inline int Splay_Key(const int& element) {
    return element;
}

inline int Splay_Compare(int key, const int& element) {
    return (key > element) - (key < element);
}

// A top-down splay tree (Sleator and Tarjan, "Self-Adjusting Binary Search Trees", 1985) of element pointers
// ordered by a key taken from the element; K is what keys are passed as, an int or a const reference. The
// flag of the constructor says whether the tree deletes what it holds at Dump and destruction. Equal keys are
// not refused.
//
// A search of any kind brings what it found to the root, so that even const operations change the shape; it
// can come out as a list, for which reason a tree of more than 99 entries is never walked by recursion.
template <class T, class K>
class SplayTree {
  public:
    explicit SplayTree(int own) : own(own) {}
    // An owning tree's elements are copied by their copy constructor, otherwise they are shared.
    SplayTree(const SplayTree& other);
    SplayTree& operator=(const SplayTree&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~SplayTree();
    // To the root. An element with equal keys in the tree comes to stand behind one of those.
    virtual void Insert(T* e);
    // Takes out one element with this key and hands it over; null when there is none. One case is known to
    // lose order, see below at Remove_Root: users' data depend on the shape that it leaves.
    virtual T* Remove(K k);
    virtual T* Find(K k) const;
    // The element with the least key above k, and with the greatest below k; null when there is none.
    virtual T* Next(K k) const;
    virtual T* Previous(K k) const;
    // The least and the greatest, found without changing the shape; null when empty.
    virtual T* First() const { return root ? Leftmost(root)->element : nullptr; }
    virtual T* Last() const { return root ? Rightmost(root)->element : nullptr; }
    // Empties the tree; an owning tree purges every element.
    virtual void Dump();
    virtual void Purge(T* e) { delete e; }
    virtual K Key(T* e) const { return Splay_Key(*e); }
    virtual int Compare(K k, T* e) const { return Splay_Compare(k, *e); }

    int Entries() const { return entries; }
    // Inserts all elements at the end of the list, in the order of keys.
    void AppendToList(List<T>& out) const;

  protected:
    using Node = SplayTreeNode<T>;

    static constexpr int most_recursive_entries = 99;

    // Brings the node with key k, or one that k would stand next to, to the root. The tree must not be empty.
    void Splay(K k) const;

    // Calls visit(node) for each node ahead of those below it, first to its right and then to its left,
    // without recursion. The node may be deleted there.
    template <class Visit>
    static void For_Each_From_The_Top(Node* top, Visit visit);

    // The order of the fields is part of the binary interface.
    int own;
    int entries = 0;
    mutable Node* root = nullptr;

  private:
    static Node* Leftmost(Node* node);
    static Node* Rightmost(Node* node);

    void Insert_Copy(T* e) { Insert(own ? new T(*e) : e); }
    void Copy_Recurse(Node* node);
    void Append_Recurse(Node* node, List<T>& out) const;
    void Append_Stack(Node* node, List<T>& out) const;
    void Dump_Recurse(Node* node);
    void Free(Node* node);
    void Remove_Root();
    void Replace_Root(Node* node);
    void Replace_Root_By_Leftmost();
};

template <class T, class K>
SplayTree<T, K>::SplayTree(const SplayTree& other) : SplayTree(other.own) {
    if (other.entries > most_recursive_entries)
        For_Each_From_The_Top(other.root, [this](Node* node) { Insert_Copy(node->element); });
    else
        Copy_Recurse(other.root);
}

template <class T, class K>
SplayTree<T, K>::~SplayTree() {
    if (root)
        SplayTree::Dump();
}

template <class T, class K>
void SplayTree<T, K>::Insert(T* e) {
    Node* node = new Node{nullptr, nullptr, e};
    ++entries;
    if (root) {
        K k = Key(e);
        Splay(k);
        if (Compare(k, root->element) < 0) {
            node->left = root->left;
            node->right = root;
            root->left = nullptr;
        } else {
            node->right = root->right;
            node->left = root;
            root->right = nullptr;
        }
    }
    root = node;
}

template <class T, class K>
T* SplayTree<T, K>::Remove(K k) {
    if (!root)
        return nullptr;
    Splay(k);
    if (Compare(k, root->element) != 0)
        return nullptr;
    --entries;
    T* e = root->element;
    Remove_Root();
    return e;
}

template <class T, class K>
T* SplayTree<T, K>::Find(K k) const {
    if (!root)
        return nullptr;
    Splay(k);
    return Compare(k, root->element) == 0 ? root->element : nullptr;
}

template <class T, class K>
T* SplayTree<T, K>::Next(K k) const {
    if (!root)
        return nullptr;
    Splay(k);
    if (Compare(k, root->element) < 0)
        return root->element;
    return root->right ? Leftmost(root->right)->element : nullptr;
}

template <class T, class K>
T* SplayTree<T, K>::Previous(K k) const {
    if (!root)
        return nullptr;
    Splay(k);
    if (Compare(k, root->element) > 0)
        return root->element;
    return root->left ? Rightmost(root->left)->element : nullptr;
}

template <class T, class K>
void SplayTree<T, K>::Dump() {
    Node* tree = root;
    const bool recurse = entries <= most_recursive_entries;
    root = nullptr;
    entries = 0;
    if (recurse)
        Dump_Recurse(tree);
    else
        For_Each_From_The_Top(tree, [this](Node* node) { Free(node); });
}

template <class T, class K>
void SplayTree<T, K>::AppendToList(List<T>& out) const {
    if (entries > most_recursive_entries)
        Append_Stack(root, out);
    else
        Append_Recurse(root, out);
}

template <class T, class K>
void SplayTree<T, K>::Splay(K k) const {
    // Its right collects what sorts before k, its left what sorts behind.
    Node aside{nullptr, nullptr, nullptr};
    Node* before = &aside;
    Node* behind = &aside;
    for (;;) {
        const int order = Compare(k, root->element);
        if (order < 0) {
            if (!root->left)
                break;
            if (Compare(k, root->left->element) < 0) {
                Node* child = root->left;
                root->left = child->right;
                child->right = root;
                root = child;
                if (!root->left)
                    break;
            }
            behind->left = root;
            behind = root;
            root = root->left;
        } else if (order > 0) {
            if (!root->right)
                break;
            if (Compare(k, root->right->element) > 0) {
                Node* child = root->right;
                root->right = child->left;
                child->left = root;
                root = child;
                if (!root->right)
                    break;
            }
            before->right = root;
            before = root;
            root = root->right;
        } else
            break;
    }
    before->right = root->left;
    behind->left = root->right;
    root->left = aside.right;
    root->right = aside.left;
}

template <class T, class K>
SplayTreeNode<T>* SplayTree<T, K>::Leftmost(Node* node) {
    while (node->left)
        node = node->left;
    return node;
}

template <class T, class K>
SplayTreeNode<T>* SplayTree<T, K>::Rightmost(Node* node) {
    while (node->right)
        node = node->right;
    return node;
}

template <class T, class K>
void SplayTree<T, K>::Copy_Recurse(Node* node) {
    if (!node)
        return;
    Copy_Recurse(node->left);
    Insert_Copy(node->element);
    Copy_Recurse(node->right);
}

template <class T, class K>
template <class Visit>
void SplayTree<T, K>::For_Each_From_The_Top(Node* top, Visit visit) {
    Stack<Node> open(0);
    if (top)
        open.Push(top);
    while (Node* node = open.Pop()) {
        if (node->left)
            open.Push(node->left);
        if (node->right)
            open.Push(node->right);
        visit(node);
    }
}

template <class T, class K>
void SplayTree<T, K>::Append_Recurse(Node* node, List<T>& out) const {
    if (!node)
        return;
    Append_Recurse(node->left, out);
    out.Insert(node->element, LIST_LAST);
    Append_Recurse(node->right, out);
}

template <class T, class K>
void SplayTree<T, K>::Append_Stack(Node* node, List<T>& out) const {
    Stack<Node> open(0);
    while (node || open.Top()) {
        for (; node; node = node->left)
            open.Push(node);
        node = open.Pop();
        out.Insert(node->element, LIST_LAST);
        node = node->right;
    }
}

template <class T, class K>
void SplayTree<T, K>::Dump_Recurse(Node* node) {
    if (!node)
        return;
    Dump_Recurse(node->left);
    Dump_Recurse(node->right);
    Free(node);
}

template <class T, class K>
void SplayTree<T, K>::Free(Node* node) {
    if (own)
        Purge(node->element);
    delete node;
}

template <class T, class K>
void SplayTree<T, K>::Remove_Root() {
    Node* right = root->right;
    if (!root->left || !right)
        Replace_Root(root->left ? root->left : right);
    else if (right->left && right->right)
        Replace_Root_By_Leftmost();
    else {
        // With a left child only, that child's smaller keys come to stand to the right of the element moved
        // up, where a later search can miss them. Established behaviour: what users' trees hold afterwards
        // follows from it.
        root->element = right->element;
        root->right = right->left ? right->left : right->right;
        delete right;
    }
}

template <class T, class K>
void SplayTree<T, K>::Replace_Root(Node* node) {
    delete root;
    root = node;
}

template <class T, class K>
void SplayTree<T, K>::Replace_Root_By_Leftmost() {
    Node* parent = root->right;
    while (parent->left->left)
        parent = parent->left;
    Node* least = parent->left;
    parent->left = least->right;
    least->left = root->left;
    least->right = root->right;
    Replace_Root(least);
}

#endif
