// Resources embedded in the program's own file. The build writes their table
// (cmake/WallSlateResources.cmake); programs that are linked without it, such as those that make resources,
// have none.
#pragma once

#include <cstdint>

namespace platform {

// Layout shared with the assembler table.
struct Resource {
    uint32_t id;
    uint32_t size; // bytes; one more, a zero byte, follows
    const uint8_t* bytes;
};

// Bytes for the life of the process; size 0 if there is no such resource.
Resource FindResource(uint32_t id);

} // namespace platform
