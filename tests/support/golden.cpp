#include "support/golden.h"

#include <cstdlib>
#include <filesystem>
#include <png.h>

namespace golden {

namespace {

const std::filesystem::path kTruthFolder = std::filesystem::path(WALLSLATE_SOURCE_DIR) / "tests/golden";
const std::filesystem::path kOutputFolder = std::filesystem::path(WALLSLATE_BINARY_DIR) / "golden";

bool IsRenewing() {
    const char* mode = std::getenv("WALLSLATE_GOLDEN");
    return mode && std::string(mode) == "renew";
}

uint32_t MaskOf(Channels channels) {
    return channels == Channels::Rgb ? 0x00FFFFFFU : 0xFFFFFFFFU;
}

// Equal pixels fade to a light grey so that the picture can still be recognised; different ones are red.
Picture DifferenceOf(const Picture& expected, const Picture& actual, uint32_t mask) {
    Picture out{actual.width, actual.height, {}};
    const bool comparable = expected.width == actual.width && expected.height == actual.height;
    for (size_t i = 0; i < actual.pixels.size(); i++) {
        const uint32_t pixel = actual.pixels[i];
        const uint32_t grey = 192 + ((pixel >> 16 & 0xFF) + (pixel >> 8 & 0xFF) + (pixel & 0xFF)) / 12;
        const bool differs = !comparable || ((pixel ^ expected.pixels[i]) & mask);
        out.pixels.push_back(differs ? 0xFFE00000U : 0xFF000000U | grey * 0x010101U);
    }
    return out;
}

testing::AssertionResult Describe(const std::string& name, const Picture& expected, const Picture& actual,
                                  uint32_t mask) {
    auto failure = testing::AssertionFailure() << name << ".png: ";
    if (expected.width != actual.width || expected.height != actual.height)
        return failure << "is " << actual.width << "x" << actual.height << ", expected " << expected.width
                       << "x" << expected.height;
    size_t count = 0;
    size_t first = 0;
    for (size_t i = actual.pixels.size(); i-- > 0;) {
        if ((actual.pixels[i] ^ expected.pixels[i]) & mask) {
            count++;
            first = i;
        }
    }
    const size_t width = static_cast<size_t>(actual.width);
    return failure << count << " pixels differ, the first at " << first % width << "/" << first / width
                   << ": " << std::hex << actual.pixels[first] << ", expected " << expected.pixels[first];
}

bool IsEqual(const Picture& a, const Picture& b, uint32_t mask) {
    if (a.width != b.width || a.height != b.height)
        return false;
    for (size_t i = 0; i < a.pixels.size(); i++) {
        if ((a.pixels[i] ^ b.pixels[i]) & mask)
            return false;
    }
    return true;
}

} // namespace

testing::AssertionResult Matches(const std::string& name, const Picture& actual, Channels channels) {
    const std::string truthPath = kTruthFolder / (name + ".png");
    if (IsRenewing())
        return WritePng(truthPath, actual, channels)
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "cannot write " << truthPath;

    Picture expected;
    const bool found = ReadPng(truthPath, expected);
    const uint32_t mask = MaskOf(channels);
    if (found && IsEqual(expected, actual, mask))
        return testing::AssertionSuccess();

    std::filesystem::create_directories(kOutputFolder);
    const std::string actualPath = kOutputFolder / (name + ".actual.png");
    const std::string differencePath = kOutputFolder / (name + ".difference.png");
    WritePng(actualPath, actual, channels);
    if (!found)
        return testing::AssertionFailure() << truthPath << " is missing; the picture is " << actualPath;
    WritePng(differencePath, DifferenceOf(expected, actual, mask));
    return Describe(name, expected, actual, mask) << "; see " << actualPath << " and " << differencePath;
}

testing::AssertionResult Matches(const std::string& name, const uint32_t* pixels, int width, int height,
                                 Channels channels) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    return Matches(name, Picture{width, height, std::vector<uint32_t>(pixels, pixels + count)}, channels);
}

bool ReadPng(const std::string& path, Picture& out) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        return false;
    image.format =
        PNG_FORMAT_BGRA; // In memory blue, green, red, alpha: 0xAARRGGBB on a little-endian machine.
    out.width = static_cast<int>(image.width);
    out.height = static_cast<int>(image.height);
    out.pixels.assign(static_cast<size_t>(image.width) * image.height, 0);
    return png_image_finish_read(&image, nullptr, out.pixels.data(), 0, nullptr) != 0;
}

bool WritePng(const std::string& path, const Picture& picture, Channels channels) {
    Picture copy = picture;
    if (channels == Channels::Rgb) {
        for (uint32_t& pixel : copy.pixels)
            pixel |= 0xFF000000U;
    }
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(copy.width);
    image.height = static_cast<png_uint_32>(copy.height);
    image.format = PNG_FORMAT_BGRA;
    return png_image_write_to_file(&image, path.c_str(), 0, copy.pixels.data(), 0, nullptr) != 0;
}

} // namespace golden
