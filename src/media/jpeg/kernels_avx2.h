// Vector routines for x86-64 processors with AVX2; internal to the decoder, see kernels.h.
#pragma once

#include <cstddef>
#include <cstdint>

#include "media/jpeg/kernels.h"

#if defined(__x86_64__) && defined(__GNUC__)
#define WALLSLATE_JPEG_AVX2 1

namespace jpeg {

void InverseDctAvx2(const int16_t* coefficients, const uint32_t* table, uint8_t* samples);
void ConvertMcuAvx2(const uint8_t* blocks, McuShape shape, uint8_t* target, size_t pitch);

} // namespace jpeg

#endif
