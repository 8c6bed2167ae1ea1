// Any bytes as a script: parsed whole or refused with the line named, never worse.
#include "desktop/script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        desktop::ParseScript("fuzz", {reinterpret_cast<const char*>(data), size});
    } catch (const desktop::Fault& fault) {
        if (std::string_view(fault.what()).substr(0, 5) != "fuzz:")
            __builtin_trap();
    }
    return 0;
}
