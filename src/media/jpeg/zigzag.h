// T.81, figure A.6: the zig-zag order of a block's coefficients, for blocks that lie column by column.
#pragma once

#include <array>
#include <cstdint>

#include "media/jpeg/kernels.h"

namespace jpeg {

// A run of zeros may lead this far behind the end of a block before it is noticed.
inline constexpr uint32_t kMaxRun = 15;

// [zig-zag index] -> u * 8 + v; the entries behind the block lead to its last place.
constexpr std::array<uint8_t, kBlockSize + kMaxRun + 1> MakeZigZagColumns() {
    std::array<uint8_t, kBlockSize + kMaxRun + 1> order{};
    order.fill(kBlockSize - 1);
    uint32_t u = 0;
    uint32_t v = 0;
    for (uint32_t i = 0; i < kBlockSize; ++i) {
        order[i] = static_cast<uint8_t>(u * kBlockEdge + v);
        const bool upward = (u + v) % 2 == 0;
        uint32_t& along = upward ? u : v; // grows with each step
        uint32_t& across = upward ? v : u;
        if (along == kBlockEdge - 1) {
            ++across; // the edge at the far side: turn
            continue;
        }
        ++along;
        if (across > 0)
            --across;
    }
    return order;
}

inline constexpr auto kZigZagColumns = MakeZigZagColumns();

} // namespace jpeg
