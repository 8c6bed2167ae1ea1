// The files of the live page, carried by the program itself.
#pragma once

#include <span>
#include <string_view>

namespace desktop {

struct WebFile {
    std::string_view path; // "/app.js"
    std::string_view type; // MIME type with charset
    std::string_view content;
};

std::span<const WebFile> WebFiles();
const WebFile* FindWebFile(std::string_view path);

} // namespace desktop
