// The colour conversion for AVX2.
#include "media/colour_convert.h"

const colour::Routines* colour::Avx2Routines() {
    return nullptr;
}
