// Ten covers of one series: flat shapes in a few printing inks over warm paper, and on each the same band at
// the foot with the number, ten dots that count, and the mark of the label.
#include "designs.h"

#include <array>

namespace covers {

namespace {

constexpr Color kPaper = Hex(0xF3EADB);
constexpr Color kInk = Hex(0x1C2030);
constexpr Color kRed = Hex(0xE2522F);
constexpr Color kOchre = Hex(0xF0A63C);
constexpr Color kTeal = Hex(0x1B7F86);
constexpr Color kBlue = Hex(0x27447F);
constexpr Color kRose = Hex(0xEFA9A3);
constexpr Color kGreen = Hex(0x5B9270);
constexpr Color kPlum = Hex(0x5A2A50);
constexpr Color kSky = Hex(0x9CCBD3);

constexpr double kBandTop = 0.84; // the picture ends here
constexpr double kArt = kBandTop; // its height

// --- The band ----

// Distance to the strokes of a digit in a box of 0.6 x 1 with the origin at its upper left.
double ToDigit(int digit, Point p) {
    constexpr double kQuarter = kPi / 2;
    const auto line = [p](double x0, double y0, double x1, double y1) {
        return ToSegment(p, {x0, y0}, {x1, y1});
    };
    const auto arc = [p](double x, double y, double r, double from, double sweep) {
        return ToArc(p, {x, y}, r, from, sweep);
    };
    switch (digit) {
    case 0:
        return std::abs(ToRoundBox(p, {0.3, 0.5}, 0.3, 0.5, 0.3));
    case 1:
        return std::min(line(0.36, 0, 0.36, 1), line(0.36, 0, 0.12, 0.2));
    case 2:
        return std::min(
            {arc(0.3, 0.3, 0.3, -2 * kQuarter, 2.55), line(0.549, 0.467, 0.02, 1), line(0.02, 1, 0.6, 1)});
    case 3:
        return std::min(arc(0.3, 0.27, 0.27, -2.6, 2.6 + kQuarter),
                        arc(0.3, 0.73, 0.27, -kQuarter, 2.6 + kQuarter));
    case 4:
        return std::min({line(0.44, 0, 0, 0.7), line(0, 0.7, 0.6, 0.7), line(0.44, 0, 0.44, 1)});
    case 5:
        return std::min(
            {line(0.54, 0, 0.09, 0), line(0.09, 0, 0.05, 0.48), arc(0.28, 0.69, 0.31, -2.4, 4.95)});
    case 6:
        return std::min(arc(0.3, 0.7, 0.3, 0, 4 * kQuarter), line(0.032, 0.565, 0.36, 0));
    case 7:
        return std::min(line(0, 0, 0.58, 0), line(0.58, 0, 0.18, 1));
    case 8:
        return std::min(arc(0.3, 0.25, 0.25, 0, 4 * kQuarter), arc(0.3, 0.72, 0.28, 0, 4 * kQuarter));
    default:
        return std::min(arc(0.3, 0.3, 0.3, 0, 4 * kQuarter), line(0.568, 0.435, 0.24, 1));
    }
}

bool InNumber(int number, Point p) {
    constexpr double kSize = 0.064;
    constexpr double kStroke = 0.0052;
    constexpr double kAdvance = 0.054;
    constexpr Point kAt{0.065, kBandTop + 0.048};
    for (int i = 0; i < 2; ++i) {
        const int digit = i == 0 ? number / 10 : number % 10;
        const Point inDigit = (p - kAt - Point{kAdvance * i, 0}) * (1 / kSize);
        if (ToDigit(digit, inDigit) * kSize < kStroke)
            return true;
    }
    return false;
}

// A small record: disc, groove, hole.
bool InMark(Point p) {
    const double distance = (p - Point{0.903, kBandTop + 0.08}).Length();
    const bool isGroove = distance > 0.0225 && distance < 0.0265;
    return distance < 0.034 && distance > 0.0085 && !isGroove;
}

Color PaintBand(int number, Point p, Color accent) {
    if (InNumber(number + 1, p) || InMark(p))
        return kInk;
    constexpr double kFirst = 0.36;
    constexpr double kStep = 0.031;
    constexpr double kRadius = 0.0078;
    for (int i = 0; i < kCovers; ++i) {
        const double distance = (p - Point{kFirst + i * kStep, kBandTop + 0.08}).Length();
        if (i == number && distance < kRadius * 1.45)
            return accent;
        if (i != number && distance < kRadius * 0.55)
            return Mix(kPaper, kInk, 0.45);
    }
    return kPaper;
}

// --- The pictures ----

// A sun of stripes that widen towards the water, and its reflection.
Color Sunrise(Point p) {
    constexpr double kHorizon = 0.56;
    constexpr double kRadius = 0.31;
    const Color sky = Mix(Hex(0xF7C873), kRose, p.y / kHorizon);
    const double fromSun = (p - Point{0.5, kHorizon - 0.03}).Length();
    if (p.y < kHorizon) {
        const double below = (p.y - (kHorizon - 0.03 - kRadius)) / kRadius;
        const double phase = std::fmod(below * 6.5, 1.0);
        const bool isGap = below > 0.45 && phase < 0.75 * (below - 0.4);
        return fromSun < kRadius && !isGap ? Mix(kRed, Hex(0xC53A35), below) : sky;
    }
    const double depth = (p.y - kHorizon) / (kArt - kHorizon);
    constexpr std::array<double, 6> kShifts{0.012, -0.02, 0.026, -0.014, 0.018, -0.008};
    for (size_t i = 0; i < kShifts.size(); ++i) {
        const auto line = static_cast<double>(i);
        const double halfWidth = kRadius * (0.93 - 0.135 * line);
        const double halfHeight = 0.0125 - 0.0011 * line;
        const Point centre{0.5 + kShifts[i], kHorizon + 0.028 + 0.044 * line};
        if (ToRoundBox(p, centre, halfWidth, halfHeight, halfHeight) < 0)
            return Mix(kRed, kOchre, line / 5);
    }
    return Mix(kBlue, kInk, depth);
}

// The grooves of a record from the corner, in rings of different inks.
Color Grooves(Point p) {
    const double radius = (p - Point{0.0, kArt}).Length();
    struct Ring {
        double outer;
        Color color;
    };
    constexpr std::array<Ring, 9> kRings{{{0.10, kPaper},
                                          {0.235, kRed},
                                          {0.27, kPaper},
                                          {0.42, kInk},
                                          {0.50, kOchre},
                                          {0.66, kTeal},
                                          {0.69, kPaper},
                                          {0.86, kBlue},
                                          {0.93, kRose}}};
    for (const Ring& ring : kRings) {
        if (radius >= ring.outer)
            continue;
        const bool isDark = ring.color.r < 0.2 && ring.color.b < 0.5;
        const bool isGroove = isDark && std::fmod(radius, 0.0155) < 0.0028;
        return isGroove ? Mix(ring.color, kPaper, 0.35) : ring.color;
    }
    return kPaper;
}

// Waves, one behind the other.
Color Waves(Point p) {
    constexpr std::array<Color, 7> kLayers{Hex(0xF6D9B0), Hex(0xF2B97A), kOchre, kRed,
                                           Hex(0xA83A4B), kPlum,         kInk};
    Color color = Mix(Hex(0xFBF1DF), Hex(0xF9E4C4), p.y / kArt);
    if ((p - Point{0.70, 0.185}).Length() < 0.085)
        color = kRed;
    for (size_t i = 0; i < kLayers.size(); ++i) {
        const double base = 0.25 + 0.088 * static_cast<double>(i);
        const double swell =
            0.045 * std::sin(p.x * (5.2 + 0.5 * static_cast<double>(i)) + 1.9 * static_cast<double>(i)) +
            0.016 * std::sin(p.x * 12.5 - 1.3 * static_cast<double>(i));
        if (p.y > base + swell)
            color = kLayers[i];
    }
    return color;
}

// Bars of a level meter, rounded at the top, standing on the band.
Color Levels(Point p) {
    constexpr std::array<double, 9> kHeights{0.22, 0.40, 0.31, 0.56, 0.69, 0.47, 0.62, 0.36, 0.25};
    constexpr std::array<Color, 9> kColors{kTeal, kSky, kPaper, kTeal, kOchre, kPaper, kRed, kSky, kTeal};
    constexpr double kMargin = 0.065;
    const double cell = (1 - 2 * kMargin) / static_cast<double>(kHeights.size());
    const double at = (p.x - kMargin) / cell;
    const Color ground = Mix(Hex(0x20304A), kInk, p.y / kArt);
    if (at < 0 || at >= static_cast<double>(kHeights.size()))
        return ground;
    const auto index = static_cast<size_t>(at);
    const double half = cell * 0.36;
    const Point centre{kMargin + (static_cast<double>(index) + 0.5) * cell, kArt - kHeights[index] + half};
    const bool isBar = std::abs(p.x - centre.x) < half && (p.y > centre.y || (p - centre).Length() < half);
    const bool isPeak = (p - (centre - Point{0, half + 0.052})).Length() < half * 0.62;
    return isBar || isPeak ? kColors[index] : ground;
}

// Three discs of transparent ink.
Color Discs(Point p) {
    constexpr double kRadius = 0.235;
    constexpr Point kCentre{0.5, 0.435};
    constexpr std::array<Color, 3> kInks{Hex(0xF2B33D), Hex(0xEE7B6C), Hex(0x55A9B4)};
    Color color = kPaper;
    for (int i = 0; i < 3; ++i) {
        const Point centre = kCentre + Point{0, -0.165}.Turned(i * 2 * kPi / 3);
        const double distance = (p - centre).Length();
        if (distance < kRadius)
            color = Multiply(color, kInks[static_cast<size_t>(i)]);
        if (std::abs(distance - kRadius * 0.36) < 0.0035 && distance < kRadius)
            color = Mix(color, kPaper, 0.85);
    }
    return color;
}

// Ranges of hills under a moon.
Color Hills(Point p) {
    Color color = Mix(Hex(0x1F2C4F), Hex(0xB8748A), p.y / 0.62);
    const double moon = (p - Point{0.31, 0.235}).Length();
    if (moon < 0.098)
        color = Hex(0xF8E6C2);
    constexpr std::array<Color, 4> kRanges{Hex(0x8C5A7E), Hex(0x5F4370), Hex(0x37315A), Hex(0x171B31)};
    for (size_t i = 0; i < kRanges.size(); ++i) {
        const auto layer = static_cast<double>(i);
        // A folded line of peaks: two triangle waves of different length.
        const auto fold = [](double t) { return std::abs(t - std::floor(t + 0.5)) * 2; };
        const double slope = fold(p.x * (1.55 + 0.35 * layer) + 0.37 * layer + 0.2);
        const double ridge = fold(p.x * (4.3 + 0.6 * layer) + 0.61 * layer);
        const double top = 0.395 + 0.108 * layer + 0.135 * slope + 0.035 * ridge;
        if (p.y > top)
            color = Mix(kRanges[i], Mix(kRanges[i], Hex(0xD58F96), 0.30),
                        (p.y - top) / 0.35 * (layer < 3 ? 1 : 0));
    }
    return color;
}

// Quarter circles in squares, turned so that they meet.
Color Tiles(Point p) {
    constexpr int kColumns = 5;
    constexpr double kEdge = 0.2;
    constexpr std::array<int, 25> kTurns{0, 1, 3, 2, 0, 3, 2, 0, 1, 1, 1, 0, 2,
                                         3, 2, 2, 3, 1, 0, 3, 0, 1, 2, 3, 1};
    constexpr std::array<int, 25> kInks{0, 1, 2, 0, 3, 2, 0, 3, 1, 0, 1, 3, 0,
                                        2, 1, 0, 2, 1, 3, 0, 3, 0, 2, 1, 2};
    constexpr std::array<Color, 4> kFront{kTeal, kOchre, kInk, kRed};
    constexpr std::array<Color, 4> kBack{kSky, kPaper, kRose, kPaper};
    const int column = std::clamp(static_cast<int>(p.x / kEdge), 0, kColumns - 1);
    const int row = std::clamp(static_cast<int>((p.y + 0.08) / kEdge), 0, 4);
    const auto index = static_cast<size_t>(row * kColumns + column);
    const Point within{p.x / kEdge - column, (p.y + 0.08) / kEdge - row};
    const Point turned = (within - Point{0.5, 0.5}).Turned(kTurns[index] * kPi / 2) + Point{0.5, 0.5};
    const auto ink = static_cast<size_t>(kInks[index]);
    const double radius = turned.Length();
    const bool isHole = radius < 0.36;
    return radius < 1 && !isHole ? kFront[ink] : isHole ? kPaper : kBack[ink];
}

// Straight strings whose crossings draw two curves, one in each of two opposite corners.
Color Strings(Point p) {
    constexpr int kCount = 27;
    constexpr double kLow = 0.07;
    constexpr double kWidth = 1 - 2 * kLow;
    constexpr double kHeight = kArt - 2 * kLow;
    constexpr double kString = 0.0019;
    constexpr double kPin = 0.0068;
    Color color = Mix(kPlum, Hex(0x2E1736), p.y / kArt);
    for (int i = 0; i < kCount; ++i) {
        const double t = i / static_cast<double>(kCount - 1);
        const Point left{kLow, kLow + kHeight * t};
        const Point foot{kLow + kWidth * t, kLow + kHeight};
        const Point right{kLow + kWidth, kLow + kHeight * t};
        const Point head{kLow + kWidth * t, kLow};
        if (ToSegment(p, left, foot) < kString)
            color = Mix(kOchre, kRed, t);
        if (ToSegment(p, head, right) < kString)
            color = Mix(kRose, kSky, t);
        const double toPin =
            std::min({(p - left).Length(), (p - foot).Length(), (p - right).Length(), (p - head).Length()});
        if (toPin < kPin)
            return kPaper;
    }
    return color;
}

// A blossom of leaves, each the lens of two circles.
Color Blossom(Point p) {
    constexpr int kLeaves = 12;
    constexpr double kReach = 0.345;
    constexpr double kBow = 0.235;
    const Point to = p - Point{0.5, 0.425};
    Color color = Hex(0xDDE3CB);
    for (int i = 0; i < kLeaves; ++i) {
        const Point turned = to.Turned(-i * 2 * kPi / kLeaves);
        const double offset = std::sqrt(kBow * kBow - kReach * kReach / 4);
        const Point middle{kReach / 2, 0};
        const bool isLeaf = (turned - middle - Point{0, offset}).Length() < kBow &&
                            (turned - middle + Point{0, offset}).Length() < kBow;
        if (isLeaf)
            color = Multiply(color, i % 3 == 0 ? Hex(0x86BE93) : i % 3 == 1 ? Hex(0x6FB0A8) : Hex(0xB7CF7E));
    }
    const double centre = to.Length();
    if (centre < 0.062)
        color = centre < 0.026 ? kPaper : kOchre;
    return color;
}

// A sphere out of dots: where the light falls they grow until they touch.
Color Dots(Point p) {
    constexpr double kStep = 0.03;
    constexpr double kRowStep = kStep * 0.866;
    constexpr Point kCentre{0.5, 0.42};
    constexpr double kRadius = 0.325;
    const double row = std::floor(p.y / kRowStep);
    const double shift = std::fmod(row, 2.0) * 0.5; // every other row stands in the gaps
    const double column = std::floor(p.x / kStep - shift);
    const Point dot{(column + 0.5 + shift) * kStep, (row + 0.5) * kRowStep};
    if ((p - kCentre).Length() > kRadius)
        return (p - dot).Length() < 0.0021 ? Hex(0xA9472E) : Hex(0xE2663F);
    const Point to = (dot - kCentre) * (1 / kRadius);
    const double depth = std::sqrt(std::max(0.0, 1 - to.x * to.x - to.y * to.y));
    const double light = (-0.55 * to.x - 0.6 * to.y + 0.58 * depth + 0.6) / 1.7;
    const double size = kStep * 0.54 * std::clamp(0.25 + 0.95 * light, 0.16, 1.0);
    return (p - dot).Length() < size ? Mix(Hex(0xF7C45E), kPaper, light) : Hex(0x8F2F2E);
}

using Design = Color (*)(Point);

struct Cover {
    Design paint;
    Color accent;
};

constexpr std::array<Cover, kCovers> kSeries{{{Sunrise, kRed},
                                              {Grooves, kTeal},
                                              {Waves, kRed},
                                              {Levels, kOchre},
                                              {Discs, kTeal},
                                              {Hills, kPlum},
                                              {Tiles, kRed},
                                              {Strings, kPlum},
                                              {Blossom, kGreen},
                                              {Dots, kRed}}};

} // namespace

Color PaintCover(int number, Point p) {
    const Cover& cover = kSeries[static_cast<size_t>(number)];
    return p.y < kBandTop ? cover.paint(p) : PaintBand(number, p, cover.accent);
}

Color PaintBuiltin(Point p) {
    constexpr Point kCentre{0.5, 0.5};
    const Point to = p - kCentre;
    const double radius = to.Length();
    if (radius > 0.43)
        return Mix(Hex(0xE7DCCA), Hex(0xD8CAB4), p.y);
    if (radius < 0.012)
        return Hex(0xE0D3BE);
    if (radius < 0.145)
        return radius > 0.128 && radius < 0.132 ? kPaper : Mix(kRed, Hex(0xC8402A), p.y);
    // Light falls on the grooves in two opposite fans.
    const double fan = std::pow(std::abs(std::cos(to.Angle() - kPi * 0.27)), 14);
    const double groove = std::fmod(radius, 0.0085) < 0.0022 ? 0.035 : 0;
    const bool isGap = std::abs(radius - 0.235) < 0.004 || std::abs(radius - 0.325) < 0.004;
    return Mix(isGap ? Hex(0x11141F) : kInk, kPaper, 0.33 * fan + (isGap ? 0 : groove));
}

} // namespace covers
