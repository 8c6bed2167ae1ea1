// Writes icon archives (the layout stands in foundation/archive_format.h).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace iconpack {

// File names with their texts, in the order of the archive.
using Texts = std::map<std::string, std::string>;

// Sizes in bytes.
struct PackReport {
    size_t names = 0;
    size_t blocks = 0;   // fewer than names if some share a text
    size_t original = 0; // over all names
    size_t stored = 0;   // over all names
    size_t archive = 0;

    double Percent() const {
        return original ? 100.0 * static_cast<double>(stored) / static_cast<double>(original) : 0;
    }
};

// The archive: each text compressed, or plain with a NUL behind it where that is not shorter; one block for
// equal texts. Throws std::runtime_error for no texts, a name of 64 bytes or more, and an archive above 4
// GiB.
std::vector<uint8_t> WriteArchive(const Texts& texts, PackReport& report);

} // namespace iconpack
