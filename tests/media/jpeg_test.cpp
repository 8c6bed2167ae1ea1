// What the decoder accepts, refuses and logs, and the pixels it makes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "foundation/log.h"
#include "media/jpeg/jpeg.h"
#include "media/jpeg/zigzag.h"
#include "media/jpeg_writer.h"
#include "support/log_capture.h"

using namespace jpegtest;

namespace {

struct Freer {
    void operator()(uint8_t* pixels) const { std::free(pixels); }
};
using Pixels = std::unique_ptr<uint8_t, Freer>;

class CJpegTest : public testing::Test {
protected:
    // The lines so far from their tag on.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines = log.All();
        for (std::string& line : lines)
            line.erase(0, line.find("RK ") + 3);
        return lines;
    }

    Pixels Load(const Bytes& bytes) {
        return Pixels(decoder.LoadJpeg(bytes.data(), static_cast<uint32_t>(bytes.size())));
    }

    LogCapture log{LogError};
    CJpeg decoder;
};

Picture RandomPicture(uint32_t seed, uint16_t width, uint16_t height, uint8_t sampling) {
    Picture picture;
    picture.width = width;
    picture.height = height;
    picture.sampling = sampling;
    picture.step = 3;
    std::mt19937 random(seed);
    const auto within = [&random](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    picture.blocks.resize(picture.BlockCount());
    for (Block& block : picture.blocks) {
        block.fill(0);
        block[0] = static_cast<int16_t>(within(-300, 300));
        for (int i = within(-4, 20); i > 0; --i)
            block[within(1, 63)] = static_cast<int16_t>(within(-40, 40));
    }
    return picture;
}

// The picture's pixels, worked out block by block without any of the decoder's reading.
std::vector<uint8_t> ExpectedPixels(const Picture& picture) {
    uint32_t table[64];
    for (uint32_t i = 0; i < 64; ++i)
        table[i] = static_cast<uint32_t>(picture.step * jpeg::TransformScale(i / 8, i % 8) * 8192 + 0.5);
    std::vector<std::array<uint8_t, 64>> samples(picture.blocks.size());
    for (size_t i = 0; i < samples.size(); ++i) {
        int16_t columns[64];
        for (uint32_t k = 0; k < 64; ++k)
            columns[jpeg::kZigZagColumns[k]] = picture.blocks[i][k];
        jpeg::PlainKernels().inverseDct(columns, table, samples[i].data());
    }
    std::vector<uint8_t> pixels(size_t{picture.width} * picture.height * 3);
    const uint32_t across = picture.Across();
    const uint32_t down = picture.Down();
    for (uint32_t y = 0; y < picture.height; ++y)
        for (uint32_t x = 0; x < picture.width; ++x) {
            const uint32_t mcu = y / (down * 8) * picture.McusAcross() + x / (across * 8);
            const auto* blocks = &samples[mcu * picture.BlocksPerMcu()];
            const uint32_t inX = x % (across * 8);
            const uint32_t inY = y % (down * 8);
            const uint32_t chroma = inY / down * 8 + inX / across;
            jpeg::ConvertPixel(blocks[inY / 8 * across + inX / 8][inY % 8 * 8 + inX % 8],
                               blocks[across * down][chroma], blocks[across * down + 1][chroma],
                               &pixels[(size_t{y} * picture.width + x) * 3]);
        }
    return pixels;
}

std::vector<uint8_t> ToVector(const Pixels& pixels, size_t count) {
    return pixels ? std::vector<uint8_t>(pixels.get(), pixels.get() + count) : std::vector<uint8_t>();
}

// A right one-MCU picture, of which a test spoils one segment.
struct Parts {
    Picture picture;
    Bytes quant = Join(QuantTable(0, 1), QuantTable(1, 1));
    Bytes huffman = Join(Join(DcTable(0), AcTable(0, 8)), Join(DcTable(1), AcTable(1, 8)));
    Bytes frame = Frame(picture);
    Bytes scan = Scan();
    uint8_t frameMarker = 0xC0;

    static Bytes Join(Bytes first, const Bytes& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }
    Bytes Make() {
        Writer out;
        out.Marker(0xD8)
            .Segment(0xDB, quant)
            .Segment(0xC4, huffman)
            .Segment(frameMarker, frame)
            .Segment(0xDA, scan);
        picture.blocks.assign(picture.BlockCount(), Block{});
        WriteScan(out, picture);
        return out.Marker(0xD9).bytes;
    }
};

const std::vector<std::string> kPrepareFailed{"CJpeg::PrepareInit: Failed to prepare"};
const std::vector<std::string> kDecompressFailed{"CJpeg::LoadJpeg: Failed to decompress"};

std::filesystem::path SharedPictures() {
    const char* dir = std::getenv("WALLSLATE_SHARED_DIR");
    const auto shared = dir ? std::filesystem::path(dir)
                            : std::filesystem::path(WALLSLATE_SOURCE_DIR).parent_path() / "shared";
    return shared / "jpeg";
}

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A packed PPM, without its header.
Bytes ReadPackedPpm(const std::filesystem::path& path) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(
        popen(("gzip -dc '" + path.string() + "'").c_str(), "r"), pclose);
    Bytes bytes;
    for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get()))
        bytes.push_back(static_cast<uint8_t>(c));
    size_t at = 0;
    for (int lines = 0; lines < 3 && at < bytes.size(); ++at)
        lines += bytes[at] == '\n';
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    return bytes;
}

} // namespace

// --- Pixels ---

TEST_F(CJpegTest, EverySamplingSizeAndRestartIntervalDecodesToItsPixels) {
    uint32_t seed = 1;
    for (const uint8_t sampling : std::initializer_list<uint8_t>{0x11, 0x21, 0x22})
        for (const uint16_t size : std::initializer_list<uint16_t>{1, 7, 8, 17, 33, 160})
            for (const uint16_t interval : std::initializer_list<uint16_t>{0, 1, 3}) {
                Picture picture = RandomPicture(seed++, size, static_cast<uint16_t>(size + 5), sampling);
                picture.restartInterval = interval;
                picture.acLength = seed % 2 ? 8 : 16;
                const auto expected = ExpectedPixels(picture);
                const Pixels pixels = Load(Encode(picture));
                ASSERT_TRUE(pixels) << CJpeg::RefusalText(decoder.LastRefusal());
                EXPECT_EQ(decoder.width, picture.width);
                EXPECT_EQ(decoder.height, picture.height);
                EXPECT_EQ(ToVector(pixels, expected.size()), expected)
                    << "sampling " << int{sampling} << " size " << size << " restart interval " << interval;
            }
    EXPECT_TRUE(Lines().empty());
}

TEST_F(CJpegTest, PlainAndVectorRoutinesGiveTheSamePicture) {
    if (!jpeg::VectorKernels())
        GTEST_SKIP() << "no vector routines on this processor";
    const Bytes bytes = Encode(RandomPicture(7, 333, 211, 0x22));
    decoder.SetKernels(jpeg::PlainKernels());
    const auto plain = ToVector(Load(bytes), 333 * 211 * 3);
    decoder.SetKernels(*jpeg::VectorKernels());
    EXPECT_EQ(ToVector(Load(bytes), 333 * 211 * 3), plain);
}

TEST_F(CJpegTest, HalvedPicturesAreAveragesAndTheThirdHalvingIsTheDcTerm) {
    const Picture picture = RandomPicture(9, 45, 27, 0x22);
    const Bytes bytes = Encode(picture);
    for (uint8_t scale = 0; scale <= CJpeg::kMaxScale; ++scale) {
        const uint32_t across = (45u + (1u << scale) - 1) >> scale;
        const uint32_t down = (27u + (1u << scale) - 1) >> scale;
        const Pixels pixels(
            decoder.LoadScaled(bytes.data(), static_cast<uint32_t>(bytes.size()), scale, true));
        ASSERT_TRUE(pixels);
        for (uint32_t i = 0; i < across * down; ++i)
            ASSERT_EQ(pixels.get()[i * 4 + 3], 255);
        if (scale < CJpeg::kMaxScale)
            continue;
        // Pixel (1, 2) stands for luma block 1 of the MCU (0, 1).
        const auto* mcu = &picture.blocks[3 * 6];
        const auto sample = [](int dc) {
            return static_cast<uint8_t>(std::clamp((dc * 3 + 4) / 8.0 + 128, 0.0, 255.0));
        };
        uint8_t expected[3];
        jpeg::ConvertPixel(sample(mcu[1][0]), sample(mcu[4][0]), sample(mcu[5][0]), expected);
        const uint8_t* pixel = pixels.get() + (2 * across + 1) * 4;
        EXPECT_EQ(std::vector<uint8_t>(pixel, pixel + 3), std::vector<uint8_t>(expected, expected + 3));
    }
    EXPECT_TRUE(Load(bytes));
    EXPECT_FALSE(decoder.bytesPerPixel4);
}

TEST_F(CJpegTest, APictureThatWasHandedOutIsNotTouchedByTheNextDecode) {
    const Picture first = RandomPicture(3, 40, 40, 0x11);
    const Picture second = RandomPicture(4, 40, 40, 0x11);
    const Pixels one = Load(Encode(first));
    EXPECT_FALSE(Load({0xFF, 0xD8}));
    const Pixels two = Load(Encode(second));
    EXPECT_EQ(ToVector(one, 4800), ExpectedPixels(first));
    EXPECT_EQ(ToVector(two, 4800), ExpectedPixels(second));
}

// --- Header ---

TEST_F(CJpegTest, HeaderDefectsAreRefusedWithOneLine) {
    using Refusal = JpegRefusal;
    const struct {
        const char* what;
        Refusal refusal;
        std::function<void(Parts&)> spoil;
    } defects[] = {
        {"progressive", Refusal::FrameKind, [](Parts& p) { p.frameMarker = 0xC2; }},
        {"extended", Refusal::FrameKind, [](Parts& p) { p.frameMarker = 0xC1; }},
        {"lossless", Refusal::FrameKind, [](Parts& p) { p.frameMarker = 0xC3; }},
        {"arithmetic", Refusal::FrameKind, [](Parts& p) { p.frameMarker = 0xC9; }},
        {"no frame", Refusal::NoFrame, [](Parts& p) { p.frameMarker = 0xE0; }},
        {"12-bit samples", Refusal::Precision, [](Parts& p) { p.frame[0] = 12; }},
        {"height 0", Refusal::NoFrame, [](Parts& p) { p.frame[1] = p.frame[2] = 0; }},
        {"width 0", Refusal::NoFrame, [](Parts& p) { p.frame[3] = p.frame[4] = 0; }},
        {"grey-scale", Refusal::ComponentCount, [](Parts& p) { p.frame[5] = 1; }},
        {"four components", Refusal::ComponentCount, [](Parts& p) { p.frame[5] = 4; }},
        {"vertical sub-sampling alone", Refusal::Sampling, [](Parts& p) { p.frame[7] = 0x12; }},
        {"4:1:1", Refusal::Sampling, [](Parts& p) { p.frame[7] = 0x41; }},
        {"sub-sampled Cb", Refusal::Sampling, [](Parts& p) { p.frame[10] = 0x21; }},
        {"quantisation table 4", Refusal::TableSelector, [](Parts& p) { p.frame[14] = 4; }},
        {"missing quantisation table", Refusal::MissingTable, [](Parts& p) { p.frame[14] = 3; }},
        {"frame cut short", Refusal::TruncatedHeader, [](Parts& p) { p.frame.resize(14); }},
        {"12-bit quantisation table", Refusal::QuantTable, [](Parts& p) { p.quant[0] = 0x10; }},
        {"quantisation table cut short", Refusal::QuantTable, [](Parts& p) { p.quant.pop_back(); }},
        {"Huffman class 2", Refusal::HuffmanTable, [](Parts& p) { p.huffman[0] = 0x20; }},
        {"Huffman id 2", Refusal::HuffmanTable, [](Parts& p) { p.huffman[0] = 0x02; }},
        {"DC size 12", Refusal::HuffmanTable, [](Parts& p) { p.huffman[17] = 12; }},
        {"too many codes of a length", Refusal::HuffmanTable, [](Parts& p) { p.huffman[1] = 3; }},
        {"more than 256 symbols", Refusal::HuffmanTable, [](Parts& p) { p.huffman[29 + 16] = 2; }},
        {"Huffman table cut short", Refusal::HuffmanTable, [](Parts& p) { p.huffman.pop_back(); }},
        {"missing Huffman table", Refusal::MissingTable, [](Parts& p) { p.huffman.resize(29); }},
        {"one component in the scan", Refusal::ScanComponents, [](Parts& p) { p.scan[0] = 1; }},
        {"mixed table selector", Refusal::TableSelector, [](Parts& p) { p.scan[4] = 0x10; }},
        {"table selector 2", Refusal::TableSelector, [](Parts& p) { p.scan[2] = 0x22; }},
        {"scan header cut short", Refusal::TruncatedHeader, [](Parts& p) { p.scan.resize(8); }},
    };
    for (const auto& defect : defects) {
        Parts parts;
        defect.spoil(parts);
        log.Clear();
        EXPECT_FALSE(Load(parts.Make())) << defect.what;
        EXPECT_EQ(decoder.LastRefusal(), defect.refusal)
            << defect.what << ": " << CJpeg::RefusalText(decoder.LastRefusal());
        EXPECT_EQ(Lines(), kPrepareFailed) << defect.what;
    }
    log.Clear();
    EXPECT_TRUE(Load(Parts().Make())) << "the unspoilt picture";
    EXPECT_TRUE(Lines().empty());
}

TEST_F(CJpegTest, WhatDoesNotBeginWithSoiIsSaidToMissIt) {
    const std::vector<std::string> expected{"CJpeg::Init: Missing SOI", kPrepareFailed[0]};
    for (const Bytes& bytes :
         {Bytes{}, Bytes{0xFF}, Bytes{0xFF, 0xD9, 0xFF, 0xD8}, Bytes{'G', 'I', 'F', '8'}}) {
        log.Clear();
        EXPECT_FALSE(Load(bytes));
        EXPECT_EQ(Lines(), expected);
    }
    EXPECT_EQ(decoder.LoadJpeg(nullptr, 100), nullptr);
}

TEST_F(CJpegTest, MarkersAndLengthsAreChecked) {
    const auto refusal = [this](std::initializer_list<int> tail) {
        EXPECT_FALSE(Load(Writer().Marker(0xD8).Raw(tail).bytes));
        return decoder.LastRefusal();
    };
    EXPECT_EQ(refusal({0xFE, 0xE0, 0, 4, 0, 0}), JpegRefusal::BadMarker);
    EXPECT_EQ(refusal({0xFF, 0xE0, 0, 2}), JpegRefusal::BadMarker) << "an empty segment";
    EXPECT_EQ(refusal({0xFF, 0xE0, 0, 9, 1, 2}), JpegRefusal::TruncatedHeader);
    EXPECT_EQ(refusal({0xFF, 0xE0, 0}), JpegRefusal::TruncatedHeader);
    EXPECT_EQ(refusal({0xFF, 0xFF, 0xFF}), JpegRefusal::TruncatedHeader);
    EXPECT_EQ(refusal({0xFF, 0xD9}), JpegRefusal::EndBeforeScan);
}

TEST_F(CJpegTest, UnknownSegmentsAndFillBytesAreSkipped) {
    Bytes bytes = Parts().Make();
    const Bytes comment = Writer().Raw({0xFF, 0xFF, 0xFF}).Segment(0xFE, Bytes(60000, 0xFF)).bytes;
    bytes.insert(bytes.begin() + 2, comment.begin(), comment.end());
    EXPECT_TRUE(Load(bytes));
}

TEST_F(CJpegTest, ASegmentThatIsUsedMustFitTheWindow) {
    Parts parts;
    while (parts.quant.size() + 65 <= jpeg::BitReader::kWindowSize)
        parts.quant = Parts::Join(QuantTable(2, 9), parts.quant);
    EXPECT_TRUE(Load(parts.Make()));
    parts.quant = Parts::Join(QuantTable(3, 9), parts.quant);
    EXPECT_FALSE(Load(parts.Make()));
    EXPECT_EQ(decoder.LastRefusal(), JpegRefusal::SegmentTooLong);
}

TEST_F(CJpegTest, AllTablesOfTheLargestMcuFitThePool) {
    Picture picture = RandomPicture(5, 100, 100, 0x22);
    Bytes bytes = Encode(picture);
    // Every slot is filled, the Huffman tables twice.
    Writer more;
    for (uint8_t id = 0; id < 16; ++id)
        more.Segment(0xDB, QuantTable(id, 200));
    for (const uint8_t id : std::initializer_list<uint8_t>{0, 1, 0, 1})
        more.Segment(0xC4, DcTable(id)).Segment(0xC4, AcTable(id, 16));
    bytes.insert(bytes.begin() + 2, more.bytes.begin(), more.bytes.end());
    SetLogLevel(LogEvent);
    const Pixels pixels = Load(bytes);
    EXPECT_EQ(ToVector(pixels, 30000), ExpectedPixels(picture));
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 1u);
    uint32_t used = 0;
    ASSERT_EQ(std::sscanf(lines[0].c_str(),
                          "CJpeg::PrepareInit: Image dimensions: 100x100. %u memory bytes used", &used),
              1)
        << lines[0];
    EXPECT_LE(used, CJpeg::kPoolSize);
}

TEST_F(CJpegTest, TheWidestPictureHasARowOf65535Bytes) {
    Parts parts;
    parts.picture.width = 21845;
    parts.frame = Frame(parts.picture);
    EXPECT_TRUE(Load(parts.Make()));
    parts.picture.width = 21846;
    parts.frame = Frame(parts.picture);
    EXPECT_FALSE(Load(parts.Make()));
    EXPECT_EQ(decoder.LastRefusal(), JpegRefusal::TooWide);
}

// --- Scan ---

TEST_F(CJpegTest, ASizeThatTheDataCannotHoldIsRefusedAtOnce) {
    Parts parts;
    parts.frame[1] = parts.frame[2] = 0xFF; // 65,535 rows of 21,845 pixels would be 4.3 GB
    parts.frame[3] = 0x55;
    parts.frame[4] = 0x55;
    EXPECT_FALSE(Load(parts.Make()));
    EXPECT_EQ(decoder.LastRefusal(), JpegRefusal::TruncatedScan);
    EXPECT_EQ(Lines(), kDecompressFailed);
}

TEST_F(CJpegTest, EveryTruncationIsRefused) {
    Picture picture = RandomPicture(11, 40, 24, 0x21);
    picture.restartInterval = 2;
    const Bytes whole = Encode(picture);
    ASSERT_TRUE(Load(whole));
    ASSERT_TRUE(Load(Bytes(whole.begin(), whole.end() - 2))) << "the EOI is not needed";
    for (size_t size = 0; size < whole.size() - 2; ++size)
        ASSERT_FALSE(Load(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
}

TEST_F(CJpegTest, RestartMarkersMustStandInTurn) {
    Picture picture = RandomPicture(12, 160, 8, 0x11); // 20 MCUs
    picture.restartInterval = 2;
    const Bytes good = Encode(picture);
    const auto find = [&good](uint8_t code) {
        size_t at = 2;
        while (good[at] != 0xFF || good[at + 1] != code)
            ++at;
        return static_cast<std::ptrdiff_t>(at);
    };
    const auto refused = [this](const Bytes& bytes) {
        log.Clear();
        EXPECT_FALSE(Load(bytes));
        EXPECT_EQ(Lines(), kDecompressFailed);
        return decoder.LastRefusal();
    };
    ASSERT_TRUE(Load(good)) << "RST7 is followed by RST0";
    Bytes wrongTurn = good;
    wrongTurn[static_cast<size_t>(find(0xD1)) + 1] = 0xD2;
    EXPECT_EQ(refused(wrongTurn), JpegRefusal::RestartMarker);
    Bytes missing = good;
    missing.erase(missing.begin() + find(0xD3), missing.begin() + find(0xD3) + 2);
    EXPECT_EQ(refused(missing), JpegRefusal::RestartMarker);
    Bytes surplus = good;
    surplus.insert(surplus.begin() + find(0xD4), 0x55);
    EXPECT_EQ(refused(surplus), JpegRefusal::RestartMarker);
}

TEST_F(CJpegTest, InvalidCodesEndTheDecode) {
    const struct {
        const char* what;
        std::function<void(Writer&)> write;
    } scans[] = {
        {"no such DC code", [](Writer& out) { out.Bits(0xF, 4); }},
        {"no such AC code", [](Writer& out) { out.Bits(0, 4), out.Bits(0xFF, 8); }},
        {"a run without a coefficient", [](Writer& out) { out.Bits(0, 4), out.Bits(0x30, 8); }},
        {"a coefficient behind the block",
         [](Writer& out) {
             out.Bits(0, 4);
             for (int i = 0; i < 4; ++i)
                 out.Bits(0xF1, 8), out.Bits(1, 1);
         }},
        {"zeros behind the block",
         [](Writer& out) {
             out.Bits(0, 4);
             for (int i = 0; i < 4; ++i)
                 out.Bits(0xF0, 8);
         }},
    };
    for (const auto& scan : scans) {
        Writer out = Header(Picture());
        scan.write(out);
        out.Flush();
        for (int i = 0; i < 40; ++i)
            out.Raw({0});
        log.Clear();
        EXPECT_FALSE(Load(out.bytes)) << scan.what;
        EXPECT_EQ(decoder.LastRefusal(), JpegRefusal::BadCode) << scan.what;
        EXPECT_EQ(Lines(), kDecompressFailed) << scan.what;
    }
}

TEST_F(CJpegTest, RandomlyDamagedPicturesNeverDoHarm) {
    Picture picture = RandomPicture(13, 64, 48, 0x22);
    picture.restartInterval = 3;
    const Bytes good = Encode(picture);
    std::mt19937 random(99);
    for (int round = 0; round < 3000; ++round) {
        Bytes bad = good;
        for (uint32_t i = 0; i <= random() % 4; ++i)
            bad[random() % bad.size()] = static_cast<uint8_t>(random());
        Load(bad);
    }
}

TEST_F(CJpegTest, TheCoversOfTheProgramAreAccepted) {
    const auto folder = std::filesystem::path(WALLSLATE_SOURCE_DIR) / "resources" / "cover";
    std::vector<std::string> names{"builtin.jpg"};
    for (int i = 0; i < 10; ++i)
        names.push_back("default_" + std::to_string(i) + ".jpg");
    for (const std::string& name : names) {
        EXPECT_TRUE(Load(ReadFile(folder / name)))
            << name << ": " << CJpeg::RefusalText(decoder.LastRefusal());
        EXPECT_EQ(decoder.width, 600) << name;
        EXPECT_EQ(decoder.height, 600) << name;
    }
}

// --- Shared pictures ---

TEST_F(CJpegTest, SharedPicturesComeOutAsAnotherDecoderHasThem) {
    if (!std::filesystem::exists(SharedPictures()))
        GTEST_SKIP() << "no folder " << SharedPictures();
    constexpr int kMost = 4;
    constexpr double kMean = 0.5;
    for (const auto& entry : std::filesystem::directory_iterator(SharedPictures())) {
        if (entry.path().extension() != ".jpg")
            continue;
        const Pixels pixels = Load(ReadFile(entry.path()));
        ASSERT_TRUE(pixels) << entry.path() << ": " << CJpeg::RefusalText(decoder.LastRefusal());
        auto oracle = entry.path();
        const bool isLarge = !std::filesystem::exists(oracle.replace_extension(".ppm.gz"));
        const uint32_t rowStep = isLarge ? 100 : 1; // of a large picture each hundredth row is kept
        const Bytes expected =
            ReadPackedPpm(isLarge ? oracle.replace_extension("").replace_extension(".rows.ppm.gz") : oracle);
        const size_t pitch = size_t{decoder.width} * 3;
        ASSERT_EQ(expected.size(), (decoder.height + rowStep - 1) / rowStep * pitch) << entry.path();
        double sum = 0;
        int worst = 0;
        for (size_t i = 0; i < expected.size(); ++i) {
            const size_t swapped = i / 3 * 3 + 2 - i % 3;
            const int difference =
                std::abs(expected[i] - pixels.get()[swapped / pitch * rowStep * pitch + swapped % pitch]);
            worst = std::max(worst, difference);
            sum += difference;
        }
        EXPECT_LE(worst, kMost) << entry.path();
        // In a single pixel the truncation of the colour formulas weighs too much for a mean.
        if (expected.size() > 3) {
            EXPECT_LE(sum / static_cast<double>(expected.size()), kMean) << entry.path();
        }
    }
}

TEST_F(CJpegTest, SharedRefusalsAreRefused) {
    if (!std::filesystem::exists(SharedPictures()))
        GTEST_SKIP() << "no folder " << SharedPictures();
    for (const auto& entry : std::filesystem::directory_iterator(SharedPictures() / "refuse")) {
        log.Clear();
        EXPECT_FALSE(Load(ReadFile(entry.path()))) << entry.path();
        EXPECT_FALSE(Lines().empty()) << entry.path();
    }
}
