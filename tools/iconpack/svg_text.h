// The form in which SVG texts stand in an archive.
#pragma once

#include <string>
#include <string_view>

namespace iconpack {

// The same picture, drawn with the strokes of our family: comments, classes and texts are dropped, black
// stands for currentColor, lines of width 2 become 1.5 (a whole number of pixels at 32, 48, 64 and 80) while
// dots keep 2, and path data is written anew. One attribute a line in the root and one element a line: that
// repeats itself from text to text and packs well. Throws std::runtime_error for a text that is no SVG
// picture.
std::string NormalizeSvg(std::string_view text);

} // namespace iconpack
