#include "desktop/temp_folder.h"

#include "desktop/fault.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace desktop {

namespace {

// A socket path has at most 107 bytes, so a long TMPDIR is of no use to us.
constexpr std::size_t LongestParent = 64;

std::filesystem::path ParentFolder() {
    const char* temporary = std::getenv("TMPDIR");
    const std::string text = temporary ? temporary : "";
    return text.empty() || text.size() > LongestParent ? "/tmp" : text;
}

} // namespace

TempFolder::TempFolder() {
    std::string pattern = (ParentFolder() / "wallslate-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw Fault("no temporary folder " + pattern + ": " + std::strerror(errno));
    path = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

} // namespace desktop
