// Scaling of transform coefficients (clause 8.5.9) for the flat matrices, the only ones of the baseline
// tools.
#pragma once

#include <algorithm>

#include "media/h264/macroblock.h"

namespace h264 {

// Table 8-15: QP_C by qP_I; below 30 both are the same.
constexpr i32 ChromaQp(i32 qPI) {
    constexpr u8 Upper[] = {29, 30, 31, 32, 32, 33, 34, 34, 35, 35, 36,
                            36, 37, 37, 37, 38, 38, 38, 39, 39, 39, 39};
    const i32 clipped = std::clamp(qPI, 0, MaxQp);
    return clipped < 30 ? clipped : Upper[clipped - 30];
}

// 8.5.9: normAdjust4x4 shifted by the QP, so that level * LevelScale is the scaled coefficient. The
// standard's own LevelScale4x4 is 16 times that and its scaling divides it out again. The largest value is 29
// << 8.
struct LevelScaleTable {
    u16 scale[MaxQp + 1]
             [CoefficientsPerBlock]; // [QP][position]; symmetric, so rows and columns may change places
};

constexpr LevelScaleTable MakeLevelScaleTable() {
    constexpr u8 V[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16},
                            {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
    LevelScaleTable table{};
    for (u32 qp = 0; qp <= MaxQp; ++qp) {
        for (u32 i = 0; i < CoefficientsPerBlock; ++i) {
            const u32 odd = (i / 4 % 2) + (i % 4 % 2); // how many of row and column are odd
            const u32 kind = odd == 0 ? 0 : odd == 2 ? 1 : 2;
            table.scale[qp][i] = static_cast<u16>(V[qp % 6][kind] << (qp / 6));
        }
    }
    return table;
}

inline constexpr LevelScaleTable levelScaleTable = MakeLevelScaleTable();

inline const u16* LevelScale(i32 qp) {
    return levelScaleTable.scale[qp];
}

} // namespace h264
