// Balanced search tree (AVL) behind the maps: insertion and look-up in logarithmic time, no removal of single
// keys. Nothing recurses. A tree of 2^32 nodes is at most 45 levels deep, which bounds every stack here.
//
// Insertion: on the way down each node notes its search direction; the deepest node that is not in balance
// (the pivot) is the only place where a rotation can be needed. Below the pivot all nodes were in balance and
// lean towards the new node afterwards.
#pragma once

#include <cstdint>
#include <new>
#include <utility>

namespace foundation {

// Compare(a, b) is below, equal to or above 0.
template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
class AvlTree {
public:
    static constexpr int32_t kMaxDepth = 45;

    struct Node {
        Node* left = nullptr;
        Node* right = nullptr;
        Key key{};
        Value value{};
        int8_t balance = 0;    // height of the right side minus the left: -1, 0, +1
        uint8_t direction = 0; // of the last insertion that passed: 0 left, 1 right
    };

    AvlTree() = default;
    AvlTree(const AvlTree&) = delete;
    AvlTree& operator=(const AvlTree&) = delete;
    ~AvlTree() { RemoveAll(); }

    // Inserts, or replaces the value of an equal key. False if memory ran out.
    bool SetAt(const Key& key, Value value);

    // The node with this key, null if there is none.
    Node* Find(const Key& key) const;

    // Iteration in ascending order of the keys. Its state lies in the tree: one at a time, no insertion
    // during one.
    Node* GetFirst();
    Node* GetNext();
    bool IsIterating() const { return m_isIterating; }

    void RemoveAll();
    int32_t GetCount() const { return m_count; }

private:
    static Node* Rotate(Node* pivot, bool isRight);
    static Node* RotateSingle(Node* pivot, Node* child, bool isRight);
    static Node* RotateDouble(Node* pivot, Node* child, bool isRight);
    static Node*& Child(Node* node, bool isRight) { return isRight ? node->right : node->left; }
    static int8_t Lean(bool isRight) { return isRight ? 1 : -1; }

    Node* m_root = nullptr;
    int32_t m_count = 0;
    bool m_isIterating = false;
    int32_t m_depth = 0;
    Node* m_current = nullptr; // where the next step starts: root of a sub-tree still to be visited
    Node* m_stack[kMaxDepth] = {};
};

template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
bool AvlTree<Key, Value, Compare>::SetAt(const Key& key, Value value) {
    Node** link = &m_root;
    Node** pivotLink = &m_root;
    while (Node* node = *link) {
        const int order = Compare(key, node->key);
        if (order == 0) {
            node->value = std::move(value);
            return true;
        }
        if (node->balance != 0)
            pivotLink = link;
        node->direction = order > 0;
        link = &Child(node, order > 0);
    }
    Node* added = new (std::nothrow) Node;
    if (!added)
        return false;
    added->key = key;
    added->value = std::move(value);
    *link = added;
    m_count++;

    Node* pivot = *pivotLink;
    if (pivot == added)
        return true;
    const bool isRight = pivot->direction != 0;
    for (Node* node = Child(pivot, isRight); node != added; node = Child(node, node->direction != 0))
        node->balance = Lean(node->direction != 0);

    if (pivot->balance == Lean(isRight))
        *pivotLink = Rotate(pivot, isRight);
    else
        pivot->balance = static_cast<int8_t>(pivot->balance + Lean(isRight));
    return true;
}

// The side towards isRight has become two levels higher; returns the new root of the sub-tree.
template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
auto AvlTree<Key, Value, Compare>::Rotate(Node* pivot, bool isRight) -> Node* {
    Node* child = Child(pivot, isRight);
    return child->balance == Lean(isRight) ? RotateSingle(pivot, child, isRight)
                                           : RotateDouble(pivot, child, isRight);
}

template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
auto AvlTree<Key, Value, Compare>::RotateSingle(Node* pivot, Node* child, bool isRight) -> Node* {
    Child(pivot, isRight) = Child(child, !isRight);
    Child(child, !isRight) = pivot;
    pivot->balance = 0;
    child->balance = 0;
    return child;
}

template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
auto AvlTree<Key, Value, Compare>::RotateDouble(Node* pivot, Node* child, bool isRight) -> Node* {
    Node* top = Child(child, !isRight);
    Child(child, !isRight) = Child(top, isRight);
    Child(top, isRight) = child;
    Child(pivot, isRight) = Child(top, !isRight);
    Child(top, !isRight) = pivot;
    pivot->balance = top->balance == Lean(isRight) ? Lean(!isRight) : int8_t{0};
    child->balance = top->balance == Lean(!isRight) ? Lean(isRight) : int8_t{0};
    top->balance = 0;
    return top;
}

template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
auto AvlTree<Key, Value, Compare>::Find(const Key& key) const -> Node* {
    Node* node = m_root;
    while (node) {
        const int order = Compare(key, node->key);
        if (order == 0)
            return node;
        node = order > 0 ? node->right : node->left;
    }
    return nullptr;
}

template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
auto AvlTree<Key, Value, Compare>::GetFirst() -> Node* {
    m_isIterating = true;
    m_depth = 0;
    m_current = m_root;
    return GetNext();
}

template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
auto AvlTree<Key, Value, Compare>::GetNext() -> Node* {
    if (!m_isIterating)
        return nullptr;
    for (; m_current; m_current = m_current->left)
        m_stack[m_depth++] = m_current;
    if (m_depth == 0) {
        m_isIterating = false;
        return nullptr;
    }
    Node* node = m_stack[--m_depth];
    m_current = node->right;
    return node;
}

// Post-order: a node goes when both its sides are gone.
template <typename Key, typename Value, int (*Compare)(const Key&, const Key&)>
void AvlTree<Key, Value, Compare>::RemoveAll() {
    Node* stack[kMaxDepth];
    int32_t depth = 0;
    if (m_root)
        stack[depth++] = m_root;
    while (depth > 0) {
        Node* node = stack[depth - 1];
        if (Node* child = std::exchange(node->left, nullptr)) {
            stack[depth++] = child;
        } else if (Node* other = std::exchange(node->right, nullptr)) {
            stack[depth++] = other;
        } else {
            delete node;
            depth--;
        }
    }
    m_root = nullptr;
    m_count = 0;
    m_isIterating = false;
    m_depth = 0;
    m_current = nullptr;
}

} // namespace foundation
