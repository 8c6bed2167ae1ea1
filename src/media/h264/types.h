// Fixed-width integers and the results that the stages of the decoder share.
#pragma once

#include <cstddef>
#include <cstdint>

namespace h264 {

using u8 = std::uint8_t;
using i8 = std::int8_t;
using u16 = std::uint16_t;
using i16 = std::int16_t;
using u32 = std::uint32_t;
using i32 = std::int32_t;
using u64 = std::uint64_t;
using i64 = std::int64_t;

// What one call of Decoder::h264Decode reports.
enum class Result {
    Ready = 0,         // NAL unit done, nothing to report
    PictureReady = 1,  // a whole picture was finished
    HeadersReady = 2,  // a new sequence is about to start; the same NAL unit comes again
    Error = 3,         // the NAL unit was dropped
    ParamSetError = 4, // no valid parameter set for the slice
    MemoryError = 5    // the pool is used up, or the picture is too large
};

constexpr u32 MbSize = 16;             // luma samples along a macroblock's side
constexpr u32 MbChromaSize = 8;        // chroma samples along a macroblock's side (4:2:0)
constexpr u32 SamplesPerMb = 384;      // 256 luma + 64 Cb + 64 Cr
constexpr u32 LumaSamplesPerMb = 256;  // of which the luma plane holds these
constexpr u32 ChromaSamplesPerMb = 64; // and each chroma plane these
constexpr i32 MaxQp = 51;              // QP of 8-bit video is 0..51
constexpr u32 MaxRefFrames = 16;       // num_ref_frames is 0..16
constexpr u32 MaxRefListEntries = 17;  // 16 active references and one place for the reordering
constexpr u32 MaxSliceGroups = 8;      // num_slice_groups_minus1 is 0..7
constexpr u32 MaxSeqParamSets = 32;    // ids 0..31
constexpr u32 MaxPicParamSets = 256;   // ids 0..255

// Values of the active ids that name no set. "Replaced" means that the active sequence parameter set was
// overwritten by other content: nothing is active, and the next activation counts as a change of sequence.
constexpr u32 NoSeqParamSet = MaxSeqParamSets;
constexpr u32 ReplacedSeqParamSet = MaxSeqParamSets + 1;
constexpr u32 NoPicParamSet = MaxPicParamSets;
constexpr u32 ReplacedPicParamSet = MaxPicParamSets + 1;

} // namespace h264
