// The pixel loops on 128-bit registers: every x86-64 processor has them.
#include "gui/pixel_ops_x86.h"

#if defined(__x86_64__)

#include "gui/pixel_kernels.h"
#include "gui/pixel_sse2.h"

const pixelops::Loops* pixelops::Sse2Loops() {
    static constexpr Loops loops = Kernels<Sse2>::Table("sse2");
    return &loops;
}

#else

const pixelops::Loops* pixelops::Sse2Loops() {
    return nullptr;
}

#endif
