// The plain form of the colour conversion, by tables of the products, and the choice among the forms.
#include "media/colour_convert.h"

#include <algorithm>

namespace colour {

namespace {

// What each value of a sample adds to a channel. The factors are thousandths, and the division truncates.
struct Products {
    int16_t value[256] = {};

    constexpr Products(int thousandths, int zero) {
        for (int sample = 0; sample < 256; sample++)
            value[sample] = static_cast<int16_t>(thousandths * (sample - zero) / 1000);
    }
    constexpr int operator[](uint8_t sample) const { return value[sample]; }
};

constexpr int kBlack = 16;     // luma
constexpr int kNoColour = 128; // chroma

constexpr Products kLight(1164, kBlack);
constexpr Products kRedOfCr(1596, kNoColour);
constexpr Products kGreenOfCb(-391, kNoColour);
constexpr Products kGreenOfCr(-813, kNoColour);
constexpr Products kBlueOfCb(2018, kNoColour);

constexpr uint32_t kOpaque = 0xFF000000U;

uint32_t Channel(int value) {
    return static_cast<uint32_t>(std::clamp(value, 0, 255));
}

struct Tint {
    int red, green, blue;

    Tint(uint8_t cb, uint8_t cr)
        : red(kRedOfCr[cr]), green(kGreenOfCb[cb] + kGreenOfCr[cr]), blue(kBlueOfCb[cb]) {}

    uint32_t Pixel(uint8_t luma) const {
        const int light = kLight[luma];
        return kOpaque | Channel(light + red) << 16 | Channel(light + green) << 8 | Channel(light + blue);
    }
};

template <Scale scale>
void StorePixel(const RowPair& rows, size_t x, size_t y, uint32_t pixel) {
    constexpr size_t times = static_cast<size_t>(scale);
    uint32_t* const out = rows.out + y * times * rows.outStride + x * times;
    out[0] = pixel;
    if constexpr (scale == Scale::Doubled)
        out[1] = out[rows.outStride] = out[rows.outStride + 1] = pixel;
}

// The four samples of luma that share a colour at a time.
template <Scale scale>
void Convert(const RowPair& rows) {
    for (size_t x = 0; x < rows.width; x += 2) {
        const Tint tint(rows.cb[x / 2], rows.cr[x / 2]);
        for (size_t y : {0, 1}) {
            StorePixel<scale>(rows, x, y, tint.Pixel(rows.luma[y][x]));
            StorePixel<scale>(rows, x + 1, y, tint.Pixel(rows.luma[y][x + 1]));
        }
    }
}

constexpr Routines kPlain = {"plain", Convert<Scale::Same>, Convert<Scale::Doubled>};

const Routines& BestRoutines() {
    static const Routines& best = []() -> const Routines& {
        if (const Routines* avx2 = Avx2Routines())
            return *avx2;
        if (const Routines* sse2 = Sse2Routines())
            return *sse2;
        return kPlain;
    }();
    return best;
}

} // namespace

const Routines& PlainRoutines() {
    return kPlain;
}

void ConvertPicture(const Routines& routines, const PlanarPicture& picture, uint32_t* out, size_t outStride,
                    Scale scale) {
    const Routines::ConvertRowPair convert = scale == Scale::Doubled ? routines.doubled : routines.same;
    const size_t stride = picture.stride != 0 ? picture.stride : picture.width;
    for (size_t y = 0; y + 1 < picture.height; y += 2) {
        const uint8_t* const luma = picture.luma + y * stride;
        const size_t chroma = y / 2 * (stride / 2);
        convert({{luma, luma + stride},
                 picture.cb + chroma,
                 picture.cr + chroma,
                 picture.width,
                 out + y * static_cast<size_t>(scale) * outStride,
                 outStride});
    }
}

void ConvertPicture(const PlanarPicture& picture, uint32_t* out, size_t outStride, Scale scale) {
    ConvertPicture(BestRoutines(), picture, out, outStride, scale);
}

} // namespace colour
