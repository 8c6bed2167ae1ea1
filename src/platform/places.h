// Where the process keeps its files. All paths are absolute and NUL-terminated.
//
//   state  $WALLSLATE_STATE_DIR, else ${XDG_STATE_HOME:-$HOME/.local/state}/wallslate:
//          settings, diagnostic log
//   data   $WALLSLATE_DATA_DIR, else ../share/wallslate beside the binary, else resources/ of the project that
//          built it: translations, covers
#pragma once

#include <cstdint>

namespace platform {

constexpr uint32_t kPathSize = 4096; // bytes, terminator included

struct Path {
    char text[kPathSize] = "";

    bool IsEmpty() const { return text[0] == '\0'; }
};

Path StateDirectory();
Path DataDirectory();

// directory + "/" + name; empty if that is too long.
Path Joined(const Path& directory, const char* name);

bool DirectoryExists(const char* path);

// Makes the directory and the ones above it, for the owner only; true if it stands afterwards.
bool MakeDirectory(const char* path);

} // namespace platform
