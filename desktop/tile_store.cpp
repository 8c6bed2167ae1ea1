#include "desktop/tile_store.h"

#include <algorithm>
#include <cstring>

namespace desktop {

namespace {

constexpr std::size_t RowBytes = std::size_t{FramePixels} * PixelBytes;
constexpr std::size_t TileRowBytes = std::size_t{TileStore::TilePixels} * PixelBytes;
constexpr std::size_t TilePixelCount = std::size_t{TileStore::TilePixels} * TileStore::TilePixels;
constexpr std::size_t PlainPixelBytes = 3;
constexpr std::uint8_t UpdateKind = 1;
enum class Coding : std::uint8_t { Plain = 0, Coded = 1 };

constexpr std::size_t TableSize = 64;
constexpr std::uint8_t OpTable = 0x00;
constexpr std::uint8_t OpChange = 0x40;
constexpr std::uint8_t OpRun = 0x80;
constexpr std::uint8_t OpLongRun = 0xC0;
constexpr std::uint8_t OpFull = 0xFF;
constexpr std::size_t ShortRun = 64;
constexpr std::size_t LongestRun = ShortRun + 0x1FFF + 1;

int Red(std::uint32_t p) {
    return static_cast<int>(p >> 16 & 0xFF);
}
int Green(std::uint32_t p) {
    return static_cast<int>(p >> 8 & 0xFF);
}
int Blue(std::uint32_t p) {
    return static_cast<int>(p & 0xFF);
}

std::size_t PlaceOf(std::uint32_t p) {
    return static_cast<std::size_t>(3 * Red(p) + 5 * Green(p) + 7 * Blue(p)) % TableSize;
}

// The difference of two channel values, the short way round modulo 256.
int Difference(int to, int from) {
    return static_cast<std::int8_t>(to - from);
}

class Encoder {
public:
    std::vector<std::uint8_t> Run(std::span<const std::uint32_t> pixels) {
        out.reserve(pixels.size());
        for (std::size_t i = 0; i < pixels.size();) {
            const std::size_t run = RunAt(pixels, i);
            if (run > 0)
                EmitRun(run);
            else
                EmitPixel(pixels[i]);
            i += std::max<std::size_t>(run, 1);
        }
        return std::move(out);
    }

private:
    std::size_t RunAt(std::span<const std::uint32_t> pixels, std::size_t from) const {
        std::size_t end = from;
        const std::size_t limit = std::min(pixels.size(), from + LongestRun);
        while (end < limit && pixels[end] == last)
            ++end;
        return end - from;
    }

    void Emit(int byte) { out.push_back(static_cast<std::uint8_t>(byte)); }

    void EmitRun(std::size_t count) {
        if (count <= ShortRun)
            return Emit(OpRun | static_cast<int>(count - 1));
        const int n = static_cast<int>(count - ShortRun - 1);
        Emit(OpLongRun | n >> 8);
        Emit(n & 0xFF);
    }

    void EmitPixel(std::uint32_t pixel) {
        const std::size_t place = PlaceOf(pixel);
        if (table[place] == pixel)
            Emit(OpTable | static_cast<int>(place));
        else if (!EmitChange(pixel))
            EmitFull(pixel);
        table[place] = pixel;
        last = pixel;
    }

    bool EmitChange(std::uint32_t pixel) {
        const int green = Difference(Green(pixel), Green(last));
        const int red = Difference(Difference(Red(pixel), Red(last)), green);
        const int blue = Difference(Difference(Blue(pixel), Blue(last)), green);
        if (green < -32 || green > 31 || red < -8 || red > 7 || blue < -8 || blue > 7)
            return false;
        Emit(OpChange | (green + 32));
        Emit((red + 8) << 4 | (blue + 8));
        return true;
    }

    void EmitFull(std::uint32_t pixel) {
        Emit(OpFull);
        Emit(Red(pixel));
        Emit(Green(pixel));
        Emit(Blue(pixel));
    }

    std::uint32_t last = 0;
    std::array<std::uint32_t, TableSize> table = {};
    std::vector<std::uint8_t> out;
};

std::vector<std::uint8_t> PlainPixels(std::span<const std::uint32_t> pixels) {
    std::vector<std::uint8_t> out;
    out.reserve(pixels.size() * PlainPixelBytes);
    for (const std::uint32_t pixel : pixels) {
        out.push_back(static_cast<std::uint8_t>(Red(pixel)));
        out.push_back(static_cast<std::uint8_t>(Green(pixel)));
        out.push_back(static_cast<std::uint8_t>(Blue(pixel)));
    }
    return out;
}

void AppendU16(std::vector<std::uint8_t>& out, std::size_t value) {
    out.push_back(static_cast<std::uint8_t>(value));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}

} // namespace

std::vector<std::uint8_t> EncodePixels(std::span<const std::uint32_t> pixels) {
    return Encoder().Run(pixels);
}

std::vector<std::uint32_t> DecodePixels(std::span<const std::uint8_t> bytes, std::size_t count) {
    std::vector<std::uint32_t> out;
    std::array<std::uint32_t, TableSize> table = {};
    std::uint32_t last = 0;
    std::size_t i = 0;
    const auto next = [&]() -> int { return i < bytes.size() ? bytes[i++] : 0; };
    const auto enter = [&](int red, int green, int blue) {
        last = static_cast<std::uint32_t>((red & 0xFF) << 16 | (green & 0xFF) << 8 | (blue & 0xFF));
        table[PlaceOf(last)] = last;
        out.push_back(last);
    };
    while (i < bytes.size() && out.size() < count) {
        const int op = next();
        if (op == OpFull) {
            const int red = next(), green = next();
            enter(red, green, next());
        } else if (op >= OpRun) {
            const int run = op < OpLongRun ? (op & 0x3F) + 1 : ((op & 0x1F) << 8 | next()) + 65;
            out.insert(out.end(), static_cast<std::size_t>(run), last);
        } else if (op >= OpChange) {
            const int green = (op & 0x3F) - 32, rest = next();
            enter(Red(last) + green + (rest >> 4) - 8, Green(last) + green,
                  Blue(last) + green + (rest & 15) - 8);
        } else {
            const std::uint32_t seen = table[static_cast<std::size_t>(op)];
            enter(Red(seen), Green(seen), Blue(seen));
        }
    }
    if (out.size() != count || i != bytes.size())
        out.clear();
    return out;
}

int TileStore::Update(std::span<const std::uint8_t> frame) {
    const bool first = pixels.empty();
    std::array<bool, TileCount> changed = {};
    changed.fill(first);
    for (std::size_t y = 0; !first && y < FramePixels; ++y) {
        const std::uint8_t* was = pixels.data() + y * RowBytes;
        const std::uint8_t* is = frame.data() + y * RowBytes;
        if (std::memcmp(was, is, RowBytes) == 0)
            continue;
        bool* row = changed.data() + y / TilePixels * TilesPerRow;
        for (std::size_t x = 0; x < TilesPerRow; ++x)
            row[x] = row[x] || std::memcmp(was + x * TileRowBytes, is + x * TileRowBytes, TileRowBytes) != 0;
    }
    const int count = static_cast<int>(std::count(changed.begin(), changed.end(), true));
    if (count == 0)
        return 0;
    ++serial;
    for (std::size_t i = 0; i < TileCount; ++i)
        if (changed[i])
            changedAt[i] = serial;
    pixels.assign(frame.begin(), frame.end());
    return count;
}

std::vector<std::uint8_t> TileStore::UpdateSince(std::uint32_t since) const {
    std::vector<std::uint32_t> colours;
    std::vector<std::uint8_t> indices;
    std::size_t tiles = 0;
    for (int i = 0; i < TileCount && !pixels.empty(); ++i) {
        if (changedAt[static_cast<std::size_t>(i)] <= since)
            continue;
        ++tiles;
        AppendU16(indices, static_cast<std::size_t>(i));
        AppendTile(i, colours);
    }
    std::vector<std::uint8_t> body = EncodePixels(colours);
    Coding coding = Coding::Coded;
    if (body.size() >= colours.size() * PlainPixelBytes) {
        body = PlainPixels(colours);
        coding = Coding::Plain;
    }
    std::vector<std::uint8_t> out = {UpdateKind, static_cast<std::uint8_t>(coding)};
    AppendU16(out, tiles);
    AppendU16(out, serial & 0xFFFF);
    AppendU16(out, serial >> 16);
    out.insert(out.end(), indices.begin(), indices.end());
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

void TileStore::AppendTile(int tile, std::vector<std::uint32_t>& to) const {
    const std::size_t row = static_cast<std::size_t>(tile / TilesPerRow) * TilePixels;
    const std::size_t column = static_cast<std::size_t>(tile % TilesPerRow);
    const std::size_t before = to.size();
    to.resize(before + TilePixelCount);
    for (std::size_t y = 0; y < TilePixels; ++y) {
        const std::uint8_t* in = pixels.data() + (row + y) * RowBytes + column * TileRowBytes;
        for (std::size_t x = 0; x < TilePixels; ++x, in += PixelBytes)
            to[before + y * TilePixels + x] =
                std::uint32_t{in[2]} << 16 | std::uint32_t{in[1]} << 8 | std::uint32_t{in[0]};
    }
}

} // namespace desktop
