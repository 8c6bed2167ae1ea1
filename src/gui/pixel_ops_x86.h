// Where the loops of the instruction sets come from: null when this build or this processor lacks the set.
#pragma once

#include "gui/pixel_ops.h"

namespace pixelops {

const Loops* Sse2Loops();
const Loops* Avx2Loops();

} // namespace pixelops
