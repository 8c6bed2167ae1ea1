#include "foundation/class_factory.h"

#include "foundation/log.h"

namespace {

struct ObjectType {
    uint32_t type;
    const char* suffix;
    const char* name; // for reading only
};

// Types without a row have no control on this display.
constexpr ObjectType kObjectTypes[] = {
    {458, "Intercom", "OT_INTERCOM"},
    {352, "GateController", "OT_GATECONTROLLER"},
    {484, "LightController2", "OT_LIGHTCONTROLLER2"},
    {469, "HeatIRoomController2", "OT_HEATIROOMCONTROLLER2"},
    {441, "SaunaController", "OT_SAUNACONTROLLER"},
    {442, "SaunaController", "OT_SAUNAVAPORCONTROLLER"},
    {348, "AutoJalousie2", "OT_AUTOJALOUSIE"},
    {476, "AutoJalousie2", "OT_AUTOJALOUSIE2"},
    {502, "AutoJalousie2", "OT_SHADEROOF"},
    {501, "RoofWindow", "OT_ROOFWINDOW"},
    {482, "WindowsMonitor", "OT_WINDOWSMONITOR"},
    {507, "MusicPlayer", "OT_MUSIC_PLAYER"},
    {342, "Switch", "OT_SWITCH"},
    {493, "PushButton", "OT_PUSHBUTTON"},
    {110, "Status", "TDD_GenenericIo"},
    {0, "", "OT_UNKNOWNTYPE"},
};

CVrxStringU PrefixedSuffix(const char* prefix, uint32_t type) {
    const char* suffix = CClassFactory::GetClassSuffix(type);
    return *suffix ? CVrxStringU(prefix) + suffix : CVrxStringU();
}

} // namespace

CClassFactory& CClassFactory::Instance() {
    static CClassFactory factory;
    return factory;
}

void CClassFactory::Register(const char* name, Creator creator) {
    m_classes.SetAt(name, creator);
}

CVrObject* CClassFactory::Create(const CVrxStringU& name) {
    const auto* entry = m_classes.Find(name);
    if (entry)
        return entry->value();
    LogUnknown(name);
    return nullptr;
}

void CClassFactory::LogUnknown(const CVrxStringU& name) {
    constexpr const char* kTag = "CClassFactory::Create";
    Log(LogError, kTag, "class %s not found", name.CStr());
    for (auto* entry = m_classes.GetFirst(); entry; entry = m_classes.GetNext())
        Log(LogError, kTag, "%s", entry->key.CStr());
}

const char* CClassFactory::GetClassSuffix(uint32_t type) {
    const ObjectType* row = kObjectTypes;
    while (*row->suffix && row->type != type)
        row++;
    return row->suffix;
}

CVrxStringU CClassFactory::GetGuiClassName(uint32_t type) {
    return PrefixedSuffix("CVrGui", type);
}

CVrxStringU CClassFactory::GetStructureClassName(uint32_t type) {
    return PrefixedSuffix("CVrStructureItem", type);
}
