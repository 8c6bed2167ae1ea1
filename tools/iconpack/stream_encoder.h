// Encoder of the compressed blocks of icon archives (the format stands in foundation/decompressor.h).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace iconpack {

// The shortest stream, with the header byte 0x58, that decodes to this text. No stream of the format is
// shorter: what the window holds at a position does not depend on the tokens before it, so the best tokens
// are found exactly.
std::vector<uint8_t> EncodeStream(std::span<const uint8_t> text);

} // namespace iconpack
