// jpegdump FILE.jpg OUT.ppm: decodes a picture with the decoder of the display. Exit code 0 and the picture,
// or exit code 1 and one line on standard error that says why there is none. "-" stands for standard input or
// output.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "media/jpeg/jpeg.h"

namespace {

constexpr size_t kReadStep = 1 << 16; // bytes
constexpr size_t kMaxFileSize = size_t{256}
                                << 20; // bytes; beyond that no picture of the display can be meant

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

struct Freer {
    void operator()(uint8_t* pixels) const { std::free(pixels); }
};
using Pixels = std::unique_ptr<uint8_t, Freer>;

int Fail(const std::string& text) {
    std::fprintf(stderr, "jpegdump: %s\n", text.c_str());
    return 1;
}

File OpenFile(const char* path, const char* mode, std::FILE* standard) {
    return File(std::strcmp(path, "-") == 0 ? standard : std::fopen(path, mode));
}

std::optional<std::vector<uint8_t>> ReadAll(const char* path) {
    const File file = OpenFile(path, "rb", stdin);
    if (!file)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    size_t got = 1;
    while (got > 0 && bytes.size() < kMaxFileSize) {
        const size_t before = bytes.size();
        bytes.resize(before + kReadStep);
        got = std::fread(bytes.data() + before, 1, kReadStep, file.get());
        bytes.resize(before + got);
    }
    if (std::ferror(file.get()))
        return std::nullopt;
    return bytes;
}

// Blue, green, red becomes red, green, blue.
void SwapChannels(uint8_t* pixels, size_t count) {
    for (size_t i = 0; i < count; ++i)
        std::swap(pixels[i * 3], pixels[i * 3 + 2]);
}

bool WritePpm(const char* path, const uint8_t* rgb, uint32_t width, uint32_t height) {
    File file = OpenFile(path, "wb", stdout);
    if (!file)
        return false;
    std::fprintf(file.get(), "P6\n%u %u\n255\n", width, height);
    const size_t bytes = size_t{width} * height * 3;
    const bool written = std::fwrite(rgb, 1, bytes, file.get()) == bytes;
    return std::fclose(file.release()) == 0 && written;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return Fail("usage: jpegdump FILE.jpg OUT.ppm");
    const auto data = ReadAll(argv[1]);
    if (!data)
        return Fail(std::string(argv[1]) + ": cannot be read");
    CJpeg decoder;
    const Pixels pixels(decoder.LoadJpeg(data->data(), static_cast<uint32_t>(data->size())));
    if (!pixels)
        return Fail(std::string(argv[1]) + ": refused: " + CJpeg::RefusalText(decoder.LastRefusal()));
    SwapChannels(pixels.get(), size_t{decoder.width} * decoder.height);
    if (!WritePpm(argv[2], pixels.get(), decoder.width, decoder.height))
        return Fail(std::string(argv[2]) + ": cannot be written");
    return 0;
}
