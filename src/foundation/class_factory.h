// Makes objects by class name. Each class registers itself in its own file:
//
//     VR_REGISTER_CLASS(CVrStructureItemSwitch)
//
// A layer whose objects need more than their constructor extends that with VR_REGISTER_CLASS_WITH, for
// instance
//
//     #define VR_REGISTER_ELEMENT(Class, row)
//         VR_REGISTER_CLASS_WITH(Class, object->type = (row); object->className = #Class)
//
// where `object` is the new Class*. Registration happens before main, on one thread; afterwards the table is
// only read.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>

#include "foundation/avl_tree.h"
#include "foundation/object.h"
#include "foundation/string.h"

class CClassFactory {
public:
    // Returns a new object, which the caller owns.
    using Creator = CVrObject* (*)();

    // The one factory of the process.
    static CClassFactory& Instance();

    // An existing name gets the new creator.
    void Register(const char* name, Creator creator);

    // A new object of the class, which the caller owns and casts by the name it asked for. For an unknown
    // name null, after log lines with the name and all registered ones; two such failures must not run at the
    // same time.
    CVrObject* Create(const CVrxStringU& name);

    bool IsRegistered(const CVrxStringU& name) const { return m_classes.Find(name) != nullptr; }
    int32_t GetCount() const { return m_classes.GetCount(); }

    // The suffix that both class names of an object type are built from; "" for a type without a control.
    static const char* GetClassSuffix(uint32_t type);

    // "CVrGui" or "CVrStructureItem" and the suffix; empty for a type without a control.
    static CVrxStringU GetGuiClassName(uint32_t type);
    static CVrxStringU GetStructureClassName(uint32_t type);

private:
    CClassFactory() = default;
    void LogUnknown(const CVrxStringU& name);

    static int CompareNames(const CVrxStringU& a, const CVrxStringU& b) { return a.Compare(b); }
    foundation::AvlTree<CVrxStringU, Creator, CompareNames> m_classes;
};

struct CClassRegistrar {
    CClassRegistrar(const char* name, CClassFactory::Creator creator) {
        CClassFactory::Instance().Register(name, creator);
    }
};

// A T on memory of zero bytes. No class may depend on the zeros: they make a forgotten member harmless, no
// more.
template <typename T>
T* VrNewZeroed() {
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    void* memory = ::operator new(sizeof(T));
    memset(memory, 0, sizeof(T));
    return ::new (memory) T;
}

#define VR_REGISTER_CLASS_WITH(Class, ...)                                                                   \
    static const CClassRegistrar g_registrar_##Class(#Class, []() -> CVrObject* {                            \
        Class* object = VrNewZeroed<Class>();                                                                \
        __VA_ARGS__;                                                                                         \
        return object;                                                                                       \
    });

#define VR_REGISTER_CLASS(Class) VR_REGISTER_CLASS_WITH(Class, (void)0)
