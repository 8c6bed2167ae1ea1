// A house as the host holds it: the four JSON texts of a folder.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>

namespace desktop {

// In the order of command 3's payload.
enum class HouseFile { Categories, Rooms, Symbols, Structure };
constexpr std::array HouseFiles = {HouseFile::Categories, HouseFile::Rooms, HouseFile::Symbols,
                                   HouseFile::Structure};

// "structure.json" and so on.
const char* FileNameOf(HouseFile file);

struct House {
    std::filesystem::path folder; // only a name when the house is not from disk
    bool fromDisk = false;
    std::array<std::string, HouseFiles.size()> texts; // [HouseFile]

    const std::string& Text(HouseFile file) const { return texts[static_cast<std::size_t>(file)]; }
    std::string& Text(HouseFile file) { return texts[static_cast<std::size_t>(file)]; }

    // The four texts one after the other, each with its NUL.
    std::string LoadPayload() const;
};

// Reads the four files; throws Fault with the file's name when one is missing or too large.
House ReadHouse(const std::filesystem::path& folder);

// Throws Fault with FILE:LINE:COLUMN when one of the texts is no JSON, or none that a display can read.
void RequireReadable(const House& house);

// The demonstration house that comes with the program.
std::filesystem::path DemoHouseFolder();

} // namespace desktop
