// Any bytes as an archive, as the dynamic one and as the static repository; every name that it has is asked
// for.
#include <cstdlib>
#include <cstring>
#include <string>

#include "foundation/archive.h"
#include "foundation/log.h"

namespace {

void TakeAll(CVrArchive& archive, const CVrArchive& directory) {
    for (uint32_t i = 0; i < directory.GetCount(); i++) {
        const char* recordName = directory.GetRecord(i).name;
        std::string name(recordName, strnlen(recordName, kArchiveNameSize));
        CVrArchiveFile file = archive.GetFile(name.c_str());
        if (file.data && file.data[file.size] != 0)
            abort();
        if (i % 2 == 0)
            archive.ReleaseFile(file);
        else if (!archive.isStatic)
            free(const_cast<uint8_t*>(file.data));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    SetLogSlot([](const char*) {});
    // An archive lies at an address that its integers may have.
    std::string bytes(data, data + size);
    const uint8_t* aligned = reinterpret_cast<const uint8_t*>(bytes.data());

    CVrArchive archive;
    bool isArchive = archive.Open(aligned, static_cast<uint32_t>(size));
    if (isArchive != SetStaticRepository(aligned, static_cast<uint32_t>(size)))
        abort();
    TakeAll(archive, archive);
    CVrArchive repository;
    repository.isStatic = true;
    TakeAll(repository, archive);
    return 0;
}
