// The colour conversion for SSE2, which every x86-64 processor has.
#include "media/colour_convert.h"

const colour::Routines* colour::Sse2Routines() {
    return nullptr;
}
