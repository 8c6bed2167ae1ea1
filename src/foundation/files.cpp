#include "foundation/files.h"

#include "foundation/log.h"
#include "platform/file.h"
#include "platform/places.h"
#include "platform/resources.h"

namespace {

constexpr uint32_t kSettingsMode = 0666; // read and write for all; the process's mask narrows it

// Opens the file and answers its size, 0 after a log line if it cannot be read.
uint32_t OpenForReading(platform::InputFile& file, const char* path, const char* tag) {
    if (!file.Open(path)) {
        Log(LogError, tag, "Open error %s", path);
        return 0;
    }
    const uint64_t size = file.GetSize();
    if (size == 0 || size > kFileSizeLimit) {
        Log(LogError, tag, "Read error %s", path);
        return 0;
    }
    return static_cast<uint32_t>(size);
}

} // namespace

bool LoadStringFromFile(const char* path, CVrxStringU& string) {
    string.Clear();
    platform::InputFile file;
    const uint32_t size = OpenForReading(file, path, "LoadStringFromFile");
    if (size == 0 || !string.SetZeros(size))
        return false;
    file.Read(string.GetBuffer(), size);
    return true;
}

bool LoadArrayFromFile(const char* path, CVrxByteArray& array) {
    array.Clear();
    platform::InputFile file;
    const uint32_t size = OpenForReading(file, path, "LoadArrayFromFile");
    if (size == 0 || !array.SetSize(size))
        return false;
    file.Read(array.GetData(), size);
    return true;
}

CVrxStringU GetSettingsFilePath() {
    return platform::Joined(platform::StateDirectory(), "settings.json").text;
}

CVrxStringU GetDataFilePath(const char* name) {
    return platform::Joined(platform::DataDirectory(), name).text;
}

bool SaveSettingsFile(const CVrxStringU& string) {
    const CVrxStringU path = GetSettingsFilePath();
    return !path.IsEmpty() &&
           platform::WriteFileAtomically(path.CStr(), string.CStr(), string.GetLength(), kSettingsMode);
}

bool LoadResourceData(uint32_t id, CVrxByteArray& array) {
    array.Clear();
    uint32_t size = 0;
    const uint8_t* bytes = GetResource(id, size);
    return bytes && array.Assign(bytes, size);
}

const uint8_t* GetResource(uint32_t id, uint32_t& size) {
    const platform::Resource resource = platform::FindResource(id);
    size = resource.size;
    return resource.size > 0 ? resource.bytes : nullptr;
}
