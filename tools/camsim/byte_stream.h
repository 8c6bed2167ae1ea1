// Cuts an H.264 byte stream (Annex B) into the pieces that a camera sends.
#pragma once

#include <cstdint>
#include <vector>

namespace camsim {

using Bytes = std::vector<std::uint8_t>;

// NAL units with their start codes; nothing of the stream is lost.
std::vector<Bytes> SplitNalUnits(const Bytes& stream);

// Access units: all NAL units up to the next one that can begin a picture. A picture's slices are told by
// first_mb_in_slice = 0, so that a stream with slices in arbitrary order is cut more finely.
std::vector<Bytes> SplitAccessUnits(const Bytes& stream);

} // namespace camsim
