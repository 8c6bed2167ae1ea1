// What the tests of the H.264 decoder share: a decoder with its pool, and the pictures that come out of it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "../../tools/h264dump/md5.h"
#include "media/h264/decoder.h"
#include "media/h264_stream_writer.h"
#include "support/log_capture.h"

namespace h264test {

// A picture as it came out, copied.
struct Frame {
    std::uint32_t width = 0; // luma samples
    std::uint32_t height = 0;
    Bytes planes;
    std::uint32_t numErrMbs = 0;
    h264::CropWindow crop{};

    std::string Sum() const { return Md5::Of(planes.data(), planes.size()); }
    std::uint8_t Luma(std::uint32_t x, std::uint32_t y) const { return planes[y * width + x]; }
    std::uint8_t Cb(std::uint32_t x, std::uint32_t y) const {
        return planes[width * height + y * width / 2 + x];
    }
    std::uint8_t Cr(std::uint32_t x, std::uint32_t y) const {
        return planes[width * height * 5 / 4 + y * width / 2 + x];
    }
    // The planes of the part that the stream wants shown.
    Bytes Shown() const {
        Bytes shown;
        std::size_t plane = 0;
        for (const std::uint32_t step : {1u, 2u, 2u}) {
            for (std::uint32_t y = crop.y / step; y < (crop.y + crop.height) / step; ++y) {
                const auto row =
                    planes.begin() + static_cast<std::ptrdiff_t>(plane + y * width / step + crop.x / step);
                shown.insert(shown.end(), row, row + crop.width / step);
            }
            plane += std::size_t{width} * height / step / step;
        }
        return shown;
    }
};

// Length of the NAL unit at the front of `data` with its start code and the zeros behind it.
inline std::size_t UnitLength(const std::uint8_t* data, std::size_t size) {
    for (std::size_t i = 3; i + 3 <= size; ++i) {
        if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1)
            return data[i - 1] == 0 ? i - 1 : i;
    }
    return size;
}

enum class Feeding { ByUnit, AtOnce };

class TestDecoder {
public:
    explicit TestDecoder(std::uint32_t poolBytes = h264::PoolBytes)
        : memory(static_cast<std::uint8_t*>(::operator new (poolBytes, std::align_val_t{16}))) {
        decoder.InitDecoder(memory.get(), poolBytes);
    }

    // All pictures of a stream, which may be fed in pieces over several calls.
    std::vector<Frame> Decode(Bytes stream, Feeding feeding = Feeding::ByUnit) {
        std::vector<Frame> frames;
        for (std::size_t at = 0; at < stream.size();) {
            const std::size_t left = stream.size() - at;
            const std::size_t length =
                feeding == Feeding::AtOnce ? left : UnitLength(stream.data() + at, left);
            Feed(stream.data() + at, length, &frames);
            at += length;
        }
        return frames;
    }

    h264::Decoder decoder;

private:
    void Feed(std::uint8_t* data, std::size_t size, std::vector<Frame>* frames) {
        auto result = decoder.DecodeAccessUnit(data, static_cast<std::uint32_t>(size));
        for (;;) {
            if (result == h264::AccessUnitResult::Picture)
                frames->push_back(Copy(decoder.OutputPicture()));
            if (!decoder.HasPendingInput())
                return;
            result = decoder.DecodeAccessUnit(nullptr, 0);
        }
    }

    static Frame Copy(const h264::DecodedPicture& picture) {
        const std::size_t size = std::size_t{picture.width} * picture.height * 3 / 2;
        return {picture.width, picture.height, Bytes(picture.planes, picture.planes + size),
                picture.numErrMbs, picture.crop};
    }

    struct Deleter {
        void operator()(std::uint8_t* bytes) const { ::operator delete (bytes, std::align_val_t{16}); }
    };
    std::unique_ptr<std::uint8_t, Deleter> memory;
};

// Decodes written streams and looks at pictures and log lines.
class WrittenStreams : public testing::Test {
protected:
    std::vector<Frame> Decode(const std::string& text) { return test.Decode(WriteStream(text)); }

    // The lines so far, from their tag on.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines = log.All();
        for (std::string& line : lines)
            line.erase(0, line.find("RK ") + 3);
        return lines;
    }
    // How often this line of the decoder was logged; `line` is "OPERATION: TEXT".
    std::size_t Logged(const std::string& line) const {
        const std::vector<std::string> lines = Lines();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), "Ch264VideoDecoder::" + line));
    }

    LogCapture log{LogEvent};
    TestDecoder test;
};

// The luma of each macroblock, row by row: "10 20/30 40"; "?" where its samples differ.
inline std::string LumaMap(const Frame& frame) {
    std::string map;
    for (std::uint32_t y = 0; y < frame.height; y += 16) {
        for (std::uint32_t x = 0; x < frame.width; x += 16) {
            bool flat = true;
            for (std::uint32_t i = 0; i < 256; ++i)
                flat = flat && frame.Luma(x + i % 16, y + i / 16) == frame.Luma(x, y);
            map += x > 0 ? " " : y > 0 ? "/" : "";
            map += flat ? std::to_string(frame.Luma(x, y)) : "?";
        }
    }
    return map;
}

// The same of all pictures.
inline std::vector<std::string> LumaMaps(const std::vector<Frame>& frames) {
    std::vector<std::string> maps;
    for (const Frame& frame : frames)
        maps.push_back(LumaMap(frame));
    return maps;
}

inline Bytes ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The shared streams lie beside the checkout, or where WALLSLATE_SHARED_DIR says.
inline std::filesystem::path SharedVideo() {
    const char* dir = std::getenv("WALLSLATE_SHARED_DIR");
    const std::filesystem::path shared = dir != nullptr
                                             ? std::filesystem::path(dir)
                                             : std::filesystem::path(WALLSLATE_SOURCE_DIR) / ".." / "shared";
    return shared / "video";
}

} // namespace h264test
