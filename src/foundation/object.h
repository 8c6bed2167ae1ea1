// Common base of all model and GUI classes: what the class factory makes and callers cast by name.
#pragma once

class CVrObject {
public:
    CVrObject() = default;
    virtual ~CVrObject() = default;
    CVrObject(const CVrObject&) = default;
    CVrObject& operator=(const CVrObject&) = default;
};
