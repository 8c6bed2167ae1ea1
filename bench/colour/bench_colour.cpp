// Colour conversion of a picture of 360 x 360, doubled to the whole screen, and of one of the screen's size.
#include <random>

#include "media/colour_convert.h"
#include "support/measure.h"

namespace {

constexpr uint32_t kScreen = 720; // pixels, in both directions
constexpr int kRounds = 500;

struct Samples {
    explicit Samples(uint32_t side) : bytes(side * side * 3 / 2) {
        std::mt19937 random(1);
        for (size_t i = 0; i < bytes.size(); i++) // bands of light and colour with some grain
            bytes[i] = static_cast<uint8_t>(i / 600 + random() % 16);
        const uint8_t* const chroma = bytes.data() + side * side;
        picture = {bytes.data(), chroma, chroma + side * side / 4, side, side, side};
    }

    std::vector<uint8_t> bytes;
    colour::PlanarPicture picture;
};

void CompareRoutines(bench::Report& report, const colour::Routines& routines, double limit) {
    static std::vector<uint32_t> screen(size_t{kScreen} * kScreen);
    const Samples half(kScreen / 2), whole(kScreen);
    const auto convert = [&](const Samples& samples, colour::Scale scale) {
        return
            [&, scale] { colour::ConvertPicture(routines, samples.picture, screen.data(), kScreen, scale); };
    };
    const std::string name = routines.name;
    report.CompareWithCopy(name + ": 360 x 360 doubled", convert(half, colour::Scale::Doubled), limit);
    report.CompareWithCopy(name + ": 720 x 720", convert(whole, colour::Scale::Same), 2 * limit);
}

} // namespace

int main() {
    bench::PinToOneCore();
    bench::Report report(kRounds);
    report.CompareWithCopy("M: memcpy of a screen", bench::CopyScreen, 1.5);
    CompareRoutines(report, colour::PlainRoutines(), 8);
    for (const colour::Routines* routines : {colour::Sse2Routines(), colour::Avx2Routines()}) {
        if (routines != nullptr)
            CompareRoutines(report, *routines, 1.5);
    }
    return report.ExitCode();
}
