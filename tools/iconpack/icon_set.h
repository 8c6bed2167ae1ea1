// Gathers the texts of an archive from folders of SVG files.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "archive_writer.h"

namespace iconpack {

struct IconSet {
    std::vector<std::filesystem::path> folders; // the first that has a file wins
    std::filesystem::path names;   // text file of the names to pack, one a line; empty: all files
    std::filesystem::path aliases; // JSON object: further name -> name of a file; empty: none
    bool keepsTexts = false;       // the files as they are
};

// Throws std::runtime_error, with the file or name in its text, for what is missing or malformed.
Texts GatherTexts(const IconSet& set);

std::string ReadFile(const std::filesystem::path& path);

// The file is complete or unchanged afterwards.
void WriteFile(const std::filesystem::path& path, const void* bytes, size_t size);

} // namespace iconpack
