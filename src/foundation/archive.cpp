#include "foundation/archive.h"

#include <cstdlib>
#include <cstring>

#include "foundation/array.h"
#include "foundation/decompressor.h"
#include "foundation/files.h"
#include "foundation/log.h"

namespace {

// No token gives more bytes than it has bits. It keeps a wrong size from asking for gigabytes.
constexpr uint64_t kLargestExpansion = 8;

struct Block {
    const char* name;
    const uint8_t* data;
    uint32_t storedSize;
    uint32_t originalSize;

    bool IsPlain() const { return storedSize == originalSize; }
};

// text has room for one byte more than the original size.
bool DecompressBlock(const Block& block, uint8_t* text, const char* tag) {
    // With the terminator's byte as room, a text that is too long shows in the number of bytes.
    CVrDecompressState state;
    CVrDecompressCode code = Decompress(state, text, block.originalSize + 1, block.data, block.storedSize);
    if (code >= DecompressInputEnded) {
        Log(LogError, tag, "Error %d decompressing %s", static_cast<int>(code), block.name);
        return false;
    }
    if (state.total != block.originalSize) {
        Log(LogError, tag,
            "Error decompressing %s: The size of the decompressed data (%d) does not match the expected size "
            "(%d).",
            block.name, static_cast<int>(state.total), static_cast<int>(block.originalSize));
        return false;
    }
    return true;
}

// The block's text from malloc, with a NUL behind it; null without memory or for a defective block.
uint8_t* MakeText(const Block& block, const char* tag) {
    uint8_t* text = static_cast<uint8_t*>(malloc(size_t{block.originalSize} + 1));
    if (!text)
        return nullptr;
    if (block.IsPlain()) {
        memcpy(text, block.data, block.originalSize);
    } else if (!DecompressBlock(block, text, tag)) {
        free(text);
        return nullptr;
    }
    text[block.originalSize] = 0;
    return text;
}

bool IsSound(const CVrArchiveRecord& record, uint32_t archiveSize) {
    return record.offset <= archiveSize && record.storedSize <= archiveSize - record.offset &&
           record.originalSize <= record.storedSize * kLargestExpansion;
}

// The header of the archive, null if the bytes are too short for it, its magic or its count.
const CVrArchiveHeader* CheckHeader(const uint8_t* bytes, uint32_t size) {
    if (size < sizeof(CVrArchiveHeader))
        return nullptr;
    const CVrArchiveHeader* header = reinterpret_cast<const CVrArchiveHeader*>(bytes);
    if (header->magic != kArchiveMagic || header->count == 0)
        return nullptr;
    uint64_t needed = sizeof(CVrArchiveHeader) + uint64_t{header->count} * sizeof(CVrArchiveRecord);
    return size >= needed ? header : nullptr;
}

const CVrArchiveRecord* RecordsOf(const CVrArchiveHeader* header) {
    return reinterpret_cast<const CVrArchiveRecord*>(header + 1);
}

// The name cannot be longer than kArchiveNameSize - 1, so that an unterminated record never equals it.
bool HasName(const char* recordName, const char* name) {
    return strncmp(recordName, name, kArchiveNameSize) == 0;
}

bool IsPossibleName(const char* name) {
    return name && strnlen(name, kArchiveNameSize) < kArchiveNameSize;
}

// One symbol of the static repository.
struct CVrStaticIcon {
    const char* name = nullptr;
    const uint8_t* data = nullptr; // the block in the program's file
    uint32_t storedSize = 0;
    uint32_t originalSize = 0;
    uint8_t* cache = nullptr; // the decompressed text; null until asked for
    bool isPlain = false;     // the block is text with a NUL behind it, used in place
};

// The table of the system's own symbols, one for the process.
class StaticRepository {
public:
    static StaticRepository& Get() {
        // Never destroyed: an archive may outlive any other object.
        static StaticRepository& repository = *new StaticRepository;
        return repository;
    }

    bool Load(const uint8_t* bytes, uint32_t size) {
        FreeCaches();
        m_icons.Clear();
        const CVrArchiveHeader* header = CheckHeader(bytes, size);
        for (uint32_t i = 0; header && i < header->count; i++)
            AddRecord(RecordsOf(header)[i], bytes, size);
        return header != nullptr;
    }

    bool LoadFromProgram() {
        uint32_t size = 0;
        const uint8_t* bytes = GetResource(ResourceStaticIcons, size);
        return Load(bytes, size);
    }

    CVrStaticIcon* Find(const char* name) {
        if (!IsPossibleName(name))
            return nullptr;
        for (CVrStaticIcon& icon : m_icons) {
            if (HasName(icon.name, name))
                return &icon;
        }
        return nullptr;
    }

    uint32_t GetCount() const { return m_icons.GetSize(); }

    void FreeCaches() {
        for (CVrStaticIcon& icon : m_icons)
            FreeCache(icon);
    }

    static void FreeCache(CVrStaticIcon& icon) {
        free(icon.cache);
        icon.cache = nullptr;
    }

private:
    StaticRepository() { LoadFromProgram(); }

    void AddRecord(const CVrArchiveRecord& record, const uint8_t* bytes, uint32_t size) {
        if (!IsSound(record, size) || record.name[kArchiveNameSize - 1] != 0) {
            Log(LogError, "CVrArchive::GetFileFromStaticRepository", "The record of %.63s is damaged.",
                record.name);
            return;
        }
        CVrStaticIcon icon;
        icon.name = record.name;
        icon.data = bytes + record.offset;
        icon.storedSize = record.storedSize;
        icon.originalSize = record.originalSize;
        icon.isPlain = IsPlainInPlace(record, bytes, size);
        m_icons.Add(icon);
    }

    // Whether the block is text that can be handed out where it lies: a NUL follows it.
    static bool IsPlainInPlace(const CVrArchiveRecord& record, const uint8_t* bytes, uint32_t size) {
        uint32_t end = record.offset + record.storedSize;
        return record.storedSize == record.originalSize && end < size && bytes[end] == 0;
    }

    VrArray<CVrStaticIcon> m_icons;
};

} // namespace

CVrArchive::~CVrArchive() {
    if (isStatic)
        StaticRepository::Get().FreeCaches();
}

bool CVrArchive::Open(const uint8_t* bytes, uint32_t size) {
    blob.Assign(bytes, size);
    return OpenBlob();
}

bool CVrArchive::OpenBlob() {
    records = nullptr;
    base = blob.GetData();
    header = reinterpret_cast<const CVrArchiveHeader*>(base);
    if (!CheckHeader(base, blob.GetSize()))
        return false;
    records = RecordsOf(header);
    return true;
}

CVrArchiveFile CVrArchive::GetFile(const char* name) {
    return isStatic ? GetFileFromStaticRepository(name) : GetFileFromDynamicArchive(name);
}

void CVrArchive::ReleaseFile(CVrArchiveFile& file) {
    if (!isStatic)
        free(const_cast<uint8_t*>(file.data));
    else if (CVrStaticIcon* icon = StaticRepository::Get().Find(file.name))
        StaticRepository::FreeCache(*icon);
    file = {};
}

const CVrArchiveRecord* CVrArchive::FindRecord(const char* name) const {
    if (!records || !IsPossibleName(name))
        return nullptr;
    for (uint32_t i = 0; i < header->count; i++) {
        if (HasName(records[i].name, name))
            return &records[i];
    }
    return nullptr;
}

CVrArchiveFile CVrArchive::GetFileFromDynamicArchive(const char* name) const {
    constexpr const char* kTag = "CVrArchive::GetFileFromDynamicArchive";
    const CVrArchiveRecord* record = FindRecord(name);
    if (!record)
        return {};
    if (!IsSound(*record, blob.GetSize())) {
        Log(LogError, kTag, "The record of %s is damaged.", name);
        return {};
    }
    const uint8_t* text =
        MakeText({record->name, base + record->offset, record->storedSize, record->originalSize}, kTag);
    return text ? CVrArchiveFile{record->name, text, record->originalSize} : CVrArchiveFile{};
}

CVrArchiveFile CVrArchive::GetFileFromStaticRepository(const char* name) const {
    CVrStaticIcon* icon = StaticRepository::Get().Find(name);
    if (!icon)
        return {};
    if (icon->isPlain)
        return {icon->name, icon->data, icon->originalSize};
    if (!icon->cache)
        icon->cache = MakeText({icon->name, icon->data, icon->storedSize, icon->originalSize},
                               "CVrArchive::GetFileFromStaticRepository");
    return icon->cache ? CVrArchiveFile{icon->name, icon->cache, icon->originalSize} : CVrArchiveFile{};
}

bool SetStaticRepository(const uint8_t* bytes, uint32_t size) {
    StaticRepository& repository = StaticRepository::Get();
    return bytes ? repository.Load(bytes, size) : repository.LoadFromProgram();
}

uint32_t GetStaticIconCount() {
    return StaticRepository::Get().GetCount();
}
