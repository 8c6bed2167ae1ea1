// One planar 4:2:0 picture in a single buffer: luma, then Cb, then Cr, rows without padding.
#pragma once

#include "media/h264/types.h"

namespace h264 {

enum Plane : u32 { Luma = 0, Cb = 1, Cr = 2, Planes = 3 };

struct PictureSize {
    u32 widthInMbs = 0;
    u32 heightInMbs = 0;

    u32 Mbs() const { return widthInMbs * heightInMbs; }
    u32 LumaWidth() const { return widthInMbs * MbSize; }
    u32 LumaHeight() const { return heightInMbs * MbSize; }
    u32 ChromaWidth() const { return widthInMbs * MbChromaSize; }
    u32 ChromaHeight() const { return heightInMbs * MbChromaSize; }
    u32 Bytes() const { return Mbs() * SamplesPerMb; }

    // Start of a plane within the picture's buffer.
    u32 PlaneOffset(Plane plane) const {
        return plane == Luma ? 0 : Mbs() * (LumaSamplesPerMb + (plane == Cr ? ChromaSamplesPerMb : 0));
    }
    u32 Stride(Plane plane) const { return plane == Luma ? LumaWidth() : ChromaWidth(); }

    bool operator==(const PictureSize&) const = default;
};

struct Image {
    u8* data = nullptr; // borrowed
    PictureSize size;

    // Upper left sample of a macroblock.
    u8* MbSamples(Plane plane, u32 mbX, u32 mbY) const {
        const u32 side = plane == Luma ? MbSize : MbChromaSize;
        return data + size.PlaneOffset(plane) + size_t{mbY} * side * size.Stride(plane) + size_t{mbX} * side;
    }
};

} // namespace h264
