// A borrowed pointer to an element that becomes null when the element is destroyed. Whatever may outlive the
// element it points to (the listener of a button, the element under the finger, the one that captured the
// touch) is held in one of these, and so is an element across a callback after which it may be gone:
//
//     CVrElementRef<> self(this);
//     OnTouchUp(point);
//     if (!self) return;
//
// Setting, clearing and destroying cost a few instructions and no memory: all references to one element form
// a list through the references themselves. GUI thread only.
#pragma once

#include <utility>

class CVrGuiElement;

class CVrElementRefBase {
protected:
    CVrElementRefBase() = default;
    explicit CVrElementRefBase(CVrGuiElement* target) { PointTo(target); }
    ~CVrElementRefBase() { PointTo(nullptr); }
    CVrElementRefBase(const CVrElementRefBase&) = delete;
    CVrElementRefBase& operator=(const CVrElementRefBase&) = delete;

    void PointTo(CVrGuiElement* target);

    CVrGuiElement* m_target = nullptr;

private:
    friend class CVrGuiElement;
    void Unlink();

    CVrElementRefBase* m_next = nullptr;
    CVrElementRefBase** m_link = nullptr; // the pointer that leads here; null while m_target is null
};

template <typename T = CVrGuiElement>
class CVrElementRef : public CVrElementRefBase {
public:
    CVrElementRef() = default;
    explicit CVrElementRef(T* target) : CVrElementRefBase(target) {}
    CVrElementRef(const CVrElementRef& other) : CVrElementRefBase(other.m_target) {}
    CVrElementRef& operator=(const CVrElementRef& other) {
        PointTo(other.m_target);
        return *this;
    }
    CVrElementRef& operator=(T* target) {
        PointTo(target);
        return *this;
    }

    T* Get() const { return static_cast<T*>(m_target); }
    operator T*() const { return Get(); }
    T* operator->() const { return Get(); }
    T& operator*() const { return *Get(); }

    // The element as the class that the caller knows it to be.
    template <typename U>
    U* As() const {
        return static_cast<U*>(Get());
    }
};
