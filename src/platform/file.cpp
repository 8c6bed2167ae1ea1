#include "platform/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/places.h"

namespace platform {

namespace {

bool WriteAll(int descriptor, const void* bytes, uint64_t count) {
    const auto* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(descriptor, next, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        next += written;
        count -= static_cast<uint64_t>(written);
    }
    return true;
}

Path DirectoryOf(const char* path) {
    Path directory;
    snprintf(directory.text, kPathSize, "%s", path);
    char* slash = strrchr(directory.text, '/');
    if (!slash)
        strcpy(directory.text, ".");
    else
        slash[slash == directory.text ? 1 : 0] = '\0';
    return directory;
}

// The rename itself must reach the disk too.
void SyncDirectory(const char* path) {
    const int descriptor = open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    fsync(descriptor);
    close(descriptor);
}

bool WriteNewFile(const char* path, const void* bytes, uint64_t count, uint32_t mode) {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, mode);
    if (descriptor < 0)
        return false;
    const bool isWritten = WriteAll(descriptor, bytes, count) && fsync(descriptor) == 0;
    return close(descriptor) == 0 && isWritten;
}

} // namespace

bool InputFile::Open(const char* path) {
    Close();
    m_descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    return m_descriptor >= 0;
}

uint64_t InputFile::GetSize() const {
    struct stat status {};
    if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    return static_cast<uint64_t>(status.st_size);
}

uint64_t InputFile::Read(void* buffer, uint64_t count) {
    auto* next = static_cast<char*>(buffer);
    uint64_t total = 0;
    while (total < count) {
        const ssize_t got = read(m_descriptor, next + total, count - total);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        total += static_cast<uint64_t>(got);
    }
    return total;
}

void InputFile::Close() {
    if (m_descriptor >= 0)
        close(m_descriptor);
    m_descriptor = -1;
}

bool WriteFileAtomically(const char* path, const void* bytes, uint64_t count, uint32_t mode) {
    const Path directory = DirectoryOf(path);
    Path temporary;
    const int length = snprintf(temporary.text, kPathSize, "%s.%d.tmp", path, static_cast<int>(getpid()));
    if (length < 0 || static_cast<uint32_t>(length) >= kPathSize || !MakeDirectory(directory.text))
        return false;
    if (!WriteNewFile(temporary.text, bytes, count, mode) || rename(temporary.text, path) != 0) {
        unlink(temporary.text);
        return false;
    }
    SyncDirectory(directory.text);
    return true;
}

} // namespace platform
