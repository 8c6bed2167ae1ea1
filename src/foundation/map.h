// Maps from a 32-bit key to a pointer: insertion and look-up in logarithmic time, values in ascending key
// order, no removal of single keys.
//
//     for (void* value = map.GetFirst(); map.IsIterating(); value = map.GetNext())
//
// The state of the iteration lies in the map: one at a time, and the map must not change during it.
#pragma once

#include <cstdint>

#include "foundation/avl_tree.h"

// Does not own the values.
class CVrMapIntToPtr {
public:
    CVrMapIntToPtr() = default;
    virtual ~CVrMapIntToPtr() = default;
    CVrMapIntToPtr(const CVrMapIntToPtr&) = delete;
    CVrMapIntToPtr& operator=(const CVrMapIntToPtr&) = delete;

    // Inserts, or replaces the value of an equal key. True unless memory ran out.
    bool SetAt(int32_t key, void* value) { return m_tree.SetAt(key, value); }

    // The value, null if the key is not there.
    void* Lookup(int32_t key) const {
        const auto* node = m_tree.Find(key);
        return node ? node->value : nullptr;
    }

    void RemoveAll() { m_tree.RemoveAll(); }

    // The values one after the other, null at the end.
    void* GetFirst() { return Step(m_tree.GetFirst()); }
    void* GetNext() { return Step(m_tree.GetNext()); }
    bool IsIterating() const { return m_tree.IsIterating(); }

    // Key of the value that GetFirst or GetNext gave last.
    int32_t GetCurrentKey() const { return m_currentKey; }

    int32_t GetCount() const { return m_tree.GetCount(); }
    bool IsEmpty() const { return m_tree.GetCount() == 0; }

private:
    static int CompareKeys(const int32_t& a, const int32_t& b) { return a < b ? -1 : a > b; }
    using Tree = foundation::AvlTree<int32_t, void*, CompareKeys>;

    void* Step(Tree::Node* node) {
        if (!node)
            return nullptr;
        m_currentKey = node->key;
        return node->value;
    }

    Tree m_tree;
    int32_t m_currentKey = 0;
};

// The same with values of type T, which it owns while autoDelete is set.
template <typename T>
class CVrTypedMapIntToPtr {
public:
    explicit CVrTypedMapIntToPtr(bool ownsValues = false) : autoDelete(ownsValues) {}
    virtual ~CVrTypedMapIntToPtr() { Clear(); }
    CVrTypedMapIntToPtr(const CVrTypedMapIntToPtr&) = delete;
    CVrTypedMapIntToPtr& operator=(const CVrTypedMapIntToPtr&) = delete;

    // Inserts, or replaces the value of an equal key; with autoDelete set a value that is replaced by another
    // one is destroyed. False, and the value is still the caller's, if memory ran out.
    bool SetAt(int32_t key, T* value) {
        T* former = Lookup(key);
        if (!m_map.SetAt(key, value))
            return false;
        if (autoDelete && former != value)
            delete former;
        return true;
    }

    T* Lookup(int32_t key) const { return static_cast<T*>(m_map.Lookup(key)); }
    T* GetFirst() { return static_cast<T*>(m_map.GetFirst()); }
    T* GetNext() { return static_cast<T*>(m_map.GetNext()); }
    bool IsIterating() const { return m_map.IsIterating(); }
    int32_t GetCurrentKey() const { return m_map.GetCurrentKey(); }
    int32_t GetCount() const { return m_map.GetCount(); }
    bool IsEmpty() const { return m_map.IsEmpty(); }

    // Forgets the values without destroying them.
    void RemoveAll() { m_map.RemoveAll(); }

    // With autoDelete set, destroys the values in ascending key order; empties the map in any case.
    void Clear() {
        if (autoDelete) {
            for (T* value = GetFirst(); IsIterating(); value = GetNext())
                delete value;
        }
        m_map.RemoveAll();
    }

private:
    CVrMapIntToPtr m_map;

public:
    bool autoDelete;
};
