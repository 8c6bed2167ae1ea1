#include "platform/resources.h"

// Ends with a row whose id is 0. Weak: null in programs without the table.
extern "C" const platform::Resource wallslate_resource_table[] __attribute__((weak));

namespace platform {

Resource FindResource(uint32_t id) {
    const Resource* row = wallslate_resource_table;
    for (; row && row->id != 0; row++) {
        if (row->id == id)
            return *row;
    }
    return {id, 0, nullptr};
}

} // namespace platform
