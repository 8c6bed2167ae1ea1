// Access to the symbols by file name: SVG texts, kept compressed and decompressed on demand. There are two
// stores: the dynamic archive, which this object owns a copy of, and the static repository, the system's own
// symbols, which lie in the program's file and are the same for all. Whatever is missing or defective is
// reported as absent.
//
// Only the GUI thread uses archives.
#pragma once

#include <cstdint>

#include "foundation/archive_format.h"
#include "foundation/byte_array.h"

// The result of a lookup, all null or 0 if the file is not there. Goes back to the archive with ReleaseFile.
struct CVrArchiveFile {
    const char* name = nullptr; // the archive's
    const uint8_t* data = nullptr;
    uint32_t size = 0; // bytes; a NUL follows them
};

class CVrArchive {
public:
    CVrArchive() = default;
    ~CVrArchive();
    CVrArchive(const CVrArchive&) = delete;
    CVrArchive& operator=(const CVrArchive&) = delete;

    // Takes over a copy of a dynamic archive. False if it is none: too short, a wrong magic number, no
    // records or fewer than it says. Lookups find nothing then.
    bool Open(const uint8_t* bytes, uint32_t size);

    // The same with what the owner has written into blob.
    bool OpenBlob();

    CVrArchiveFile GetFile(const char* name);
    void ReleaseFile(CVrArchiveFile& file);

    uint32_t GetCount() const { return records ? header->count : 0; }
    const CVrArchiveRecord& GetRecord(uint32_t index) const { return records[index]; }

    bool isStatic = false; // selects the static repository; set once by the owner
private:
    CVrArchiveFile GetFileFromDynamicArchive(const char* name) const;
    CVrArchiveFile GetFileFromStaticRepository(const char* name) const;
    const CVrArchiveRecord* FindRecord(const char* name) const;

    const CVrArchiveHeader* header = nullptr;
    const CVrArchiveRecord* records = nullptr; // null unless the archive is open

public:
    CVrxByteArray blob;

private:
    const uint8_t* base = nullptr; // start of the blob
};

// Makes the archive at these bytes the static repository instead of the one that the program carries; null
// brings that one back. The bytes are used in place. All texts handed out before are void. For tools and
// tests.
bool SetStaticRepository(const uint8_t* bytes, uint32_t size);

// Symbols in the static repository.
uint32_t GetStaticIconCount();
