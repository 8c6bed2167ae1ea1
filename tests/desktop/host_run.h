// Helpers of the host's tests: folders and files of their own, runs of the host's program, PNG files read
// back.
#pragma once

#include "desktop/temp_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <png.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace desktop_test {

inline std::filesystem::path BinaryPath(const char* name) {
    return std::filesystem::path(WALLSLATE_BINARY_DIR) / name;
}

inline std::string ReadText(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void WriteText(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

struct RunResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// Runs a shell line and catches both outputs.
inline RunResult RunShell(const std::string& line) {
    desktop::TempFolder folder;
    const auto out = folder.Path() / "out";
    const auto err = folder.Path() / "err";
    const int raw = std::system((line + " >" + out.string() + " 2>" + err.string()).c_str());
    RunResult result;
    result.exitCode = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    result.out = ReadText(out);
    result.err = ReadText(err);
    return result;
}

struct Png {
    unsigned width = 0;
    unsigned height = 0;
    std::vector<unsigned char> rgb;

    // 0xRRGGBB
    unsigned At(unsigned x, unsigned y) const {
        const unsigned char* p = rgb.data() + (std::size_t{y} * width + x) * 3;
        return unsigned{p[0]} << 16 | unsigned{p[1]} << 8 | p[2];
    }
};

inline Png ReadPng(const std::filesystem::path& path) {
    Png result;
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return result;
    image.format = PNG_FORMAT_RGB;
    result.width = image.width;
    result.height = image.height;
    result.rgb.resize(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, result.rgb.data(), 0, nullptr);
    return result;
}

// A folder with the four files of a house without anything in it.
inline void WriteEmptyHouse(const std::filesystem::path& folder) {
    for (const char* name : {"categories.json", "rooms.json", "symbols.json", "structure.json"})
        WriteText(folder / name, "[]\n");
}

} // namespace desktop_test
