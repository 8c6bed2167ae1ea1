// Long texts from pieces. GCC 12 warns of overlapping copies where a literal is added to a temporary string;
// these append to a named one instead.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

inline std::string Joined(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces)
        text += piece;
    return text;
}

inline std::string Repeated(std::string_view piece, int count) {
    std::string text;
    text.reserve(piece.size() * static_cast<size_t>(count));
    for (int i = 0; i < count; i++)
        text += piece;
    return text;
}
