// The seven ways to divide a picture into slice groups (8.2.2.1 to 8.2.2.7).
#include "media/h264/slice_groups.h"

#include <algorithm>

namespace h264 {

namespace {

struct MapBuilder {
    const PicParamSet& pps;
    u32 width;  // PicWidthInMbs
    u32 height; // PicHeightInMapUnits
    u32 size;   // PicSizeInMapUnits
    u32 mapUnitsInSliceGroup0;
    u32* map; // mapUnitToSliceGroupMap

    void Interleaved() const;
    void Dispersed() const;
    void ForegroundAndLeftOver() const;
    void BoxOut() const;
    void RasterScan() const;
    void Wipe() const;
    void Explicit() const;

    // Types 4 and 5: how many map units the upper left group has.
    u32 SizeOfUpperLeftGroup() const {
        return pps.slice_group_change_direction_flag ? size - mapUnitsInSliceGroup0 : mapUnitsInSliceGroup0;
    }
};

// 8.2.2.1
void MapBuilder::Interleaved() const {
    u32 i = 0;
    while (i < size) {
        for (u32 group = 0; group < pps.num_slice_groups && i < size; ++group) {
            const u64 end = std::min<u64>(u64{i} + pps.run_length_minus1[group] + 1, size);
            std::fill(map + i, map + end, group);
            i = static_cast<u32>(end);
        }
    }
}

// 8.2.2.2
void MapBuilder::Dispersed() const {
    for (u32 i = 0; i < size; ++i)
        map[i] = (i % width + ((i / width * pps.num_slice_groups) / 2)) % pps.num_slice_groups;
}

// 8.2.2.3: the lowest group that covers a unit has it, hence the order.
void MapBuilder::ForegroundAndLeftOver() const {
    const u32 leftOver = pps.num_slice_groups - 1;
    std::fill(map, map + size, leftOver);
    for (u32 group = leftOver; group-- > 0;) {
        const u32 left = pps.top_left[group] % width;
        const u32 right = pps.bottom_right[group] % width;
        for (u32 y = pps.top_left[group] / width; y <= pps.bottom_right[group] / width; ++y)
            std::fill(map + y * width + left, map + y * width + right + 1, group);
    }
}

// 8.2.2.4: a spiral from the centre, clockwise or not.
void MapBuilder::BoxOut() const {
    std::fill(map, map + size, 1u);
    const i32 direction = pps.slice_group_change_direction_flag ? 1 : 0;
    i32 x = (static_cast<i32>(width) - direction) / 2;
    i32 y = (static_cast<i32>(height) - direction) / 2;
    i32 leftBound = x, rightBound = x, topBound = y, bottomBound = y;
    i32 xDir = direction - 1;
    i32 yDir = direction;
    for (u32 k = 0; k < mapUnitsInSliceGroup0;) {
        u32& unit = map[static_cast<u32>(y) * width + static_cast<u32>(x)];
        if (unit == 1) {
            unit = 0;
            ++k;
        }
        if (xDir == -1 && x == leftBound) {
            leftBound = std::max(leftBound - 1, 0);
            x = leftBound;
            xDir = 0;
            yDir = 2 * direction - 1;
        } else if (xDir == 1 && x == rightBound) {
            rightBound = std::min(rightBound + 1, static_cast<i32>(width) - 1);
            x = rightBound;
            xDir = 0;
            yDir = 1 - 2 * direction;
        } else if (yDir == -1 && y == topBound) {
            topBound = std::max(topBound - 1, 0);
            y = topBound;
            xDir = 1 - 2 * direction;
            yDir = 0;
        } else if (yDir == 1 && y == bottomBound) {
            bottomBound = std::min(bottomBound + 1, static_cast<i32>(height) - 1);
            y = bottomBound;
            xDir = 2 * direction - 1;
            yDir = 0;
        } else {
            x += xDir;
            y += yDir;
        }
    }
}

// 8.2.2.5
void MapBuilder::RasterScan() const {
    const u32 first = pps.slice_group_change_direction_flag ? 1 : 0;
    const u32 upperLeft = SizeOfUpperLeftGroup();
    std::fill(map, map + upperLeft, first);
    std::fill(map + upperLeft, map + size, 1 - first);
}

// 8.2.2.6
void MapBuilder::Wipe() const {
    const u32 first = pps.slice_group_change_direction_flag ? 1 : 0;
    const u32 upperLeft = SizeOfUpperLeftGroup();
    u32 k = 0;
    for (u32 x = 0; x < width; ++x) {
        for (u32 y = 0; y < height; ++y)
            map[y * width + x] = k++ < upperLeft ? first : 1 - first;
    }
}

// 8.2.2.7
void MapBuilder::Explicit() const {
    std::copy(pps.slice_group_id.data, pps.slice_group_id.data + size, map);
}

} // namespace

void BuildSliceMap(const PicParamSet& pps, u32 picWidthInMbs, u32 picHeightInMbs,
                   u32 slice_group_change_cycle, u32* sliceMap) {
    const u32 size = picWidthInMbs * picHeightInMbs;
    const u64 changed = slice_group_change_cycle * pps.SliceGroupChangeRate();
    const MapBuilder builder{
        pps, picWidthInMbs, picHeightInMbs, size, static_cast<u32>(std::min<u64>(changed, size)), sliceMap};
    if (pps.num_slice_groups == 1) {
        std::fill(sliceMap, sliceMap + size, 0u);
        return;
    }
    switch (pps.slice_group_map_type) {
    case 0:
        return builder.Interleaved();
    case 1:
        return builder.Dispersed();
    case 2:
        return builder.ForegroundAndLeftOver();
    case 3:
        return builder.BoxOut();
    case 4:
        return builder.RasterScan();
    case 5:
        return builder.Wipe();
    default:
        return builder.Explicit();
    }
}

} // namespace h264
