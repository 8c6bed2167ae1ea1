#include "platform/places.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr mode_t kOwnerOnly = 0700;

const char* NonEmptyVariable(const char* name) {
    const char* value = getenv(name);
    return value && *value ? value : nullptr;
}

Path PathOf(const char* text) {
    Path path;
    if (strlen(text) < kPathSize)
        strcpy(path.text, text);
    return path;
}

Path BinaryDirectory() {
    Path path;
    const ssize_t length = readlink("/proc/self/exe", path.text, kPathSize - 1);
    path.text[length > 0 ? length : 0] = '\0';
    if (char* slash = strrchr(path.text, '/'))
        *slash = '\0';
    return path;
}

} // namespace

Path StateDirectory() {
    if (const char* chosen = NonEmptyVariable("WALLSLATE_STATE_DIR"))
        return PathOf(chosen);
    if (const char* base = NonEmptyVariable("XDG_STATE_HOME"))
        return Joined(PathOf(base), "wallslate");
    const char* home = NonEmptyVariable("HOME");
    return Joined(PathOf(home ? home : "/"), ".local/state/wallslate");
}

Path DataDirectory() {
    if (const char* chosen = NonEmptyVariable("WALLSLATE_DATA_DIR"))
        return PathOf(chosen);
    const Path installed = Joined(BinaryDirectory(), "../share/wallslate");
    return DirectoryExists(installed.text) ? installed : PathOf(WALLSLATE_PROJECT_RESOURCES);
}

Path Joined(const Path& directory, const char* name) {
    Path path;
    const int length = snprintf(path.text, kPathSize, "%s/%s", directory.text, name);
    if (length < 0 || static_cast<uint32_t>(length) >= kPathSize)
        path.text[0] = '\0';
    return path;
}

bool DirectoryExists(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool MakeDirectory(const char* path) {
    Path partial = PathOf(path);
    if (partial.IsEmpty())
        return false;
    for (char* slash = strchr(partial.text + 1, '/'); slash; slash = strchr(slash + 1, '/')) {
        *slash = '\0';
        mkdir(partial.text, kOwnerOnly);
        *slash = '/';
    }
    mkdir(partial.text, kOwnerOnly);
    return DirectoryExists(path);
}

} // namespace platform
