// Whole files: reading regular files into memory that the caller provides, writing so that a power cut leaves
// the old file or the new one, never a part.
#pragma once

#include <cstdint>

namespace platform {

// A regular file opened for reading.
class InputFile {
public:
    InputFile() = default;
    ~InputFile() { Close(); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // False if the file cannot be opened. Never waits, not even for a pipe with that name.
    bool Open(const char* path);

    // Size in bytes; 0 if this is no regular file.
    uint64_t GetSize() const;

    // Bytes read, which is less than count only at the end of the file or on an error.
    uint64_t Read(void* buffer, uint64_t count);

    void Close();

private:
    int m_descriptor = -1;
};

// Replaces the file's content: temporary file beside it, synchronised, renamed. Makes a missing directory.
// mode: access rights of the new file before the process's mask.
bool WriteFileAtomically(const char* path, const void* bytes, uint64_t count, uint32_t mode);

} // namespace platform
