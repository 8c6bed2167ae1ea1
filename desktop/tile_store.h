// The newest picture of the display, cut into tiles that know when they last changed, so that any number of
// viewers can each be sent what they have not seen yet without a copy of the picture for each.
//
// An update for a viewer, all integers little-endian:
//
//   u8  kind       1
//   u8  coding     0 plain, 1 coded (see EncodePixels)
//   u16 tiles      how many tiles follow
//   u32 serial     what the viewer has seen once it has taken the update
//   u16 index      [tiles] ascending; row by row, 49 a row
//   pixels         of these tiles one after the other, row by row, 16 x 16 each
//
// Plain pixels are three bytes each: red, green, blue.
#pragma once

#include "desktop/wire.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace desktop {

class TileStore {
public:
    static constexpr int TilePixels = 16;
    static constexpr int TilesPerRow = FramePixels / TilePixels; // 49
    static constexpr int TileCount = TilesPerRow * TilesPerRow;  // 2401
    static_assert(TilesPerRow * TilePixels == FramePixels);

    // Takes in a frame (FrameBytes) and returns how many tiles differ from the one before.
    int Update(std::span<const std::uint8_t> frame);

    // Raised by each frame that differs from the one before; 0: no frame yet.
    std::uint32_t Serial() const { return serial; }
    std::span<const std::uint8_t> Frame() const { return pixels; } // empty before the first

    // All tiles that changed after the serial number `since`; 0 asks for everything.
    std::vector<std::uint8_t> UpdateSince(std::uint32_t since) const;

private:
    void AppendTile(int tile, std::vector<std::uint32_t>& to) const;

    std::vector<std::uint8_t> pixels;
    std::array<std::uint32_t, TileCount> changedAt = {}; // serial of the last change
    std::uint32_t serial = 0;
};

// Pixels are 0x00RRGGBB. The coded form, byte by byte, with the last pixel (black at first) and a table of 64
// seen pixels (black at first, place (3 r + 5 g + 7 b) mod 64) on both sides:
//
//   00iiiiii                     the pixel at place i of the table
//   01gggggg rrrrbbbb            green changes by g - 32, red by r - 8 more than green, blue by b - 8 more
//   10nnnnnn                     the last pixel n + 1 times more
//   110nnnnn nnnnnnnn            the last pixel n + 65 times more
//   11111111 r g b               a pixel in full
//
// Runs leave the table alone, every other op enters its pixel.
std::vector<std::uint8_t> EncodePixels(std::span<const std::uint32_t> pixels);

// For tests: the twin of the page's decoder. Empty when the bytes do not hold exactly `count` pixels.
std::vector<std::uint32_t> DecodePixels(std::span<const std::uint8_t> bytes, std::size_t count);

} // namespace desktop
