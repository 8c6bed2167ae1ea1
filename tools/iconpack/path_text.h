// Path data of SVG, rewritten so that every reader takes it: the flags of arcs stand apart ("0 01.5" is legal
// but not widely understood), and numbers have two decimals.
#pragma once

#include <string>
#include <string_view>

namespace iconpack {

// The same path; rounding errors do not add up along it. Throws std::runtime_error for malformed data.
std::string NormalizePath(std::string_view data);

// Whether the path is only dots: lines too short to be seen but for their round ends.
bool IsDots(std::string_view data);

} // namespace iconpack
