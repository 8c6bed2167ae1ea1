// Layout of an icon archive, shared by the reader here and the packer in tools/iconpack.
//
//   0              magic, count
//   8              count records of 76 bytes, sorted by name
//   8 + 76 * count data blocks, each plain text or a compressed stream (decompressor.h)
//
// All integers are little-endian.
#pragma once

#include <bit>
#include <cstdint>

static_assert(std::endian::native == std::endian::little, "archives are read in place");

constexpr uint32_t kArchiveMagic = 0xFEEDBEEF;
constexpr uint32_t kArchiveNameSize = 64; // bytes, the terminator included

struct CVrArchiveHeader {
    uint32_t magic;
    uint32_t count; // records; not 0
};

struct CVrArchiveRecord {
    char name[kArchiveNameSize]; // file name with its extension, NUL-terminated
    uint32_t offset;             // of the block, from the start of the archive
    uint32_t originalSize;       // bytes of the text
    uint32_t storedSize;         // bytes of the block; equal to originalSize if it is plain text
};

static_assert(sizeof(CVrArchiveHeader) == 8 && sizeof(CVrArchiveRecord) == 76);
