// Sections: coordinates; the cells of a band; following lines and curves; sweeping; the bands.
#include "gui/vector/scan_converter.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

namespace vec {

namespace {

// --- Coordinates ---
//
// Points are 24.8. Where an edge crosses the border of a pixel, the crossing is worked out with 16 fraction
// bits, so that the rounding of many crossings in a pixel stays far below one step of coverage.

constexpr int32_t kPixelBits = 8;
constexpr int32_t kPixel = 1 << kPixelBits; // 24.8
constexpr int32_t kFineBits = 16;
constexpr int32_t kFine = 1 << kFineBits;
constexpr int32_t kToFine = kFine / kPixel;
constexpr int32_t kOutlineToPixel = kPixel / kFixedOne; // 26.6 to 24.8

// Longer lines are not drawn, as nothing of them could be meant.
constexpr int64_t kLongestLine = 10'000'000; // 24.8

constexpr int32_t kMinPixel = -32768;
constexpr int32_t kMaxPixel = 32767;

// Twice the area of a pixel in fine units, and the shift that makes 256 of a wholly covered one.
constexpr int32_t kAreaShift = 2 * kFineBits + 1 - 8;

struct Point {
    int32_t x = 0; // 24.8
    int32_t y = 0;
};

Point ToPoint(FixedPoint point) {
    return {point.x * kOutlineToPixel, point.y * kOutlineToPixel};
}
Point Middle(Point a, Point b) {
    return {(a.x + b.x) >> 1, (a.y + b.y) >> 1};
}

// value * factor / divisor, rounded to nearest, for a divisor above 0. |value * factor| below 2^62.
int64_t Proportion(int64_t value, int64_t factor, int64_t divisor) {
    const int64_t product = value * factor;
    return (product < 0 ? product - divisor / 2 : product + divisor / 2) / divisor;
}

// --- The cells of a band ---

struct Cell {
    int64_t area = 0;    // twice the area right of the pixel's left border, fine units squared
    int32_t cover = 0;   // fine units
    uint16_t column = 0; // 0: all that lies left of the band; 1: its first pixel
    uint16_t next = 0;   // index in the pool; kNone at the end of the line
};
static_assert(sizeof(Cell) == 16);

constexpr uint16_t kNone = 0xFFFF;

// Lines of a band and their cells. The pool begins with one link for each line; the rest are cells.
class CellPool {
public:
    // False if the lines alone fill the pool.
    bool begin(const VRect& band) {
        m_left = band.left - 1;
        m_top = band.top;
        const auto lines = static_cast<uint32_t>(band.bottom - band.top);
        const uint32_t firstCell = (lines * kLinkBytes + kCellBytes - 1) / kCellBytes;
        if (firstCell + 1 >= kCells)
            return false;
        m_lines = reinterpret_cast<uint16_t*>(m_memory);
        std::fill_n(m_lines, lines, kNone);
        m_used = static_cast<uint16_t>(firstCell);
        m_recent = kNone;
        return true;
    }

    // Adds to the cell of a pixel; false if the pool ran out.
    bool add(int32_t x, int32_t y, int32_t cover, int64_t area) {
        Cell* cell = find(static_cast<uint16_t>(x - m_left), y - m_top);
        if (!cell)
            return false;
        // Wraps at 32,768 edges through one pixel in the same direction.
        cell->cover = static_cast<int32_t>(static_cast<uint32_t>(cell->cover) + static_cast<uint32_t>(cover));
        cell->area += area;
        return true;
    }

    const Cell* first(int32_t y) const { return at(m_lines[y - m_top]); }
    const Cell* next(const Cell* cell) const { return at(cell->next); }
    int32_t xOf(const Cell* cell) const { return cell->column + m_left; }

private:
    static constexpr uint32_t kLinkBytes = sizeof(uint16_t);
    static constexpr uint32_t kCellBytes = sizeof(Cell);
    static constexpr uint32_t kCells = kPoolBytes / kCellBytes;

    const Cell* at(uint16_t index) const { return index == kNone ? nullptr : cells() + index; }
    Cell* cells() { return reinterpret_cast<Cell*>(m_memory); }
    const Cell* cells() const { return reinterpret_cast<const Cell*>(m_memory); }

    // The cells of a line are chained by their column. Edges come as runs from left to right, so the search
    // goes on from the last cell where it can.
    Cell* find(uint16_t column, int32_t line) {
        uint16_t* link = &m_lines[line];
        if (m_recent != kNone && m_recentLine == line && cells()[m_recent].column <= column) {
            if (cells()[m_recent].column == column)
                return &cells()[m_recent];
            link = &cells()[m_recent].next;
        }
        while (*link != kNone && cells()[*link].column < column)
            link = &cells()[*link].next;
        if (*link == kNone || cells()[*link].column != column) {
            if (m_used == kCells)
                return nullptr;
            cells()[m_used] = {0, 0, column, *link};
            *link = m_used++;
        }
        m_recent = *link;
        m_recentLine = line;
        return &cells()[m_recent];
    }

    alignas(Cell) uint8_t m_memory[kPoolBytes];
    uint16_t* m_lines = nullptr; // [line of the band], index of its first cell
    int32_t m_left = 0;          // x of column 0
    int32_t m_top = 0;
    uint16_t m_used = 0;
    uint16_t m_recent = kNone; // the cell found last
    int32_t m_recentLine = 0;
};

// --- Following lines and curves ---

// Follows the edges of an outline through one band and notes them in the cells.
class BandTracer final : public OutlineSink {
public:
    BandTracer(CellPool& cells, const VRect& band) : m_cells(cells), m_band(band) {}

    OutlineError moveTo(FixedPoint to, bool) override {
        m_pen = ToPoint(to);
        return OutlineOk;
    }
    OutlineError lineTo(FixedPoint to) override { return line(ToPoint(to)); }
    OutlineError conicTo(FixedPoint control, FixedPoint to) override {
        return conic(ToPoint(control), ToPoint(to));
    }
    OutlineError cubicTo(FixedPoint control1, FixedPoint control2, FixedPoint to) override {
        return cubic(ToPoint(control1), ToPoint(control2), ToPoint(to));
    }
    // Every contour is filled as if it were closed.
    OutlineError endContour(FixedPoint first, bool) override { return line(ToPoint(first)); }

private:
    // A curve that is as flat as the stated limits is drawn in this many chords, which bring its deviation
    // below a thirtieth of a pixel.
    static constexpr int kChords = 4;

    static constexpr int32_t kConicFlat = kPixel / 4;
    static constexpr int32_t kCubicFlat = kPixel / 2;
    static constexpr int kMaxSplits = 32;

    OutlineError line(Point to) {
        const Point from = m_pen;
        m_pen = to;
        const bool isTooLong = std::abs(int64_t{to.x} - from.x) > kLongestLine ||
                               std::abs(int64_t{to.y} - from.y) > kLongestLine;
        if (isTooLong || from.y == to.y)
            return OutlineOk;
        const bool drawn = from.y < to.y ? descend(from, to, 1) : descend(to, from, -1);
        return drawn ? OutlineOk : OutlinePoolExhausted;
    }

    // A line from its upper to its lower end, cut at the borders of the scan lines. sign: 1 if that is its
    // direction.
    bool descend(Point upper, Point lower, int32_t sign) {
        const int32_t first = std::max(upper.y >> kPixelBits, m_band.top);
        const int32_t last = std::min((lower.y - 1) >> kPixelBits, m_band.bottom - 1);
        const auto xAt = [&](int32_t y) {
            return int64_t{upper.x} * kToFine + Proportion((int64_t{lower.x} - upper.x) * kToFine,
                                                           int64_t{y} - upper.y, int64_t{lower.y} - upper.y);
        };
        int32_t y = std::max(upper.y, first * kPixel);
        int64_t x = first <= last ? xAt(y) : 0;
        for (int32_t row = first; row <= last; ++row) {
            const int32_t nextY = std::min(lower.y, (row + 1) * kPixel);
            const int64_t nextX = xAt(nextY);
            if (!crossRow(row, x, nextX, (nextY - y) * kToFine, sign))
                return false;
            x = nextX;
            y = nextY;
        }
        return true;
    }

    // The part of a line within one scan line, followed from the left.
    struct RowPart {
        int64_t left;   // fine
        int64_t right;  // fine
        int32_t height; // fine
        int32_t sign;   // 1: the line goes downward

        // The height climbed when the line reaches x.
        int32_t climbed(int64_t x) const {
            return x >= right ? height : static_cast<int32_t>(Proportion(x - left, height, right - left));
        }
    };

    // From x at the top to nextX at the bottom of a height, all fine.
    bool crossRow(int32_t row, int64_t x, int64_t nextX, int32_t height, int32_t sign) {
        const RowPart part{std::min(x, nextX), std::max(x, nextX), height, sign};
        const int64_t clipLeft = int64_t{m_band.left} * kFine;
        const int64_t clipRight = int64_t{m_band.right} * kFine;
        if (part.left >= clipRight)
            return true; // fills nothing that is seen
        if (part.right <= clipLeft)
            return m_cells.add(m_band.left - 1, row, sign * height, 0);
        if (part.left >= clipLeft)
            return crossPixels(row, part, part.left, std::min(part.right, clipRight), 0);
        const int32_t before = part.climbed(clipLeft);
        return m_cells.add(m_band.left - 1, row, sign * before, 0) &&
               crossPixels(row, part, clipLeft, std::min(part.right, clipRight), before);
    }

    // Pixel by pixel from x to end. done: what the part has climbed at x. An upright part lies in one pixel.
    bool crossPixels(int32_t row, const RowPart& part, int64_t x, int64_t end, int32_t done) {
        do {
            const int64_t pixel = x >> kFineBits;
            const int64_t pixelLeft = pixel << kFineBits;
            const int64_t next = std::min(pixelLeft + kFine, part.right);
            const int32_t climbed = part.climbed(next);
            const int32_t cover = part.sign * (climbed - done);
            const int64_t meanTwice = (x - pixelLeft) + (next - pixelLeft);
            if (!m_cells.add(static_cast<int32_t>(pixel), row, cover, meanTwice * cover))
                return false;
            done = climbed;
            x = next;
        } while (x < end);
        return true;
    }

    // Both curves are split in the middle until they are flat, with a stack of fixed depth instead of
    // recursion: each entry is one level deeper than the one before.
    OutlineError conic(Point control, Point to) {
        struct Arc {
            Point a, b, c;
            int level;
        };
        Arc stack[kMaxSplits + 2];
        int top = 0;
        stack[0] = {m_pen, control, to, 0};
        while (top >= 0) {
            const Arc arc = stack[top--];
            const bool isFlat = secondDifference(arc.a, arc.b, arc.c) <= kConicFlat;
            if (isFlat || arc.level == kMaxSplits || isOutside({arc.a, arc.b, arc.c})) {
                for (int i = 1; i <= kChords; ++i)
                    if (const OutlineError error = line(conicAt(arc.a, arc.b, arc.c, i)); error != OutlineOk)
                        return error;
                continue;
            }
            const Point ab = Middle(arc.a, arc.b);
            const Point bc = Middle(arc.b, arc.c);
            const Point middle = Middle(ab, bc);
            stack[++top] = {middle, bc, arc.c, arc.level + 1};
            stack[++top] = {arc.a, ab, middle, arc.level + 1};
        }
        return OutlineOk;
    }

    OutlineError cubic(Point control1, Point control2, Point to) {
        struct Arc {
            Point a, b, c, d;
            int level;
        };
        Arc stack[kMaxSplits + 2];
        int top = 0;
        stack[0] = {m_pen, control1, control2, to, 0};
        while (top >= 0) {
            const Arc arc = stack[top--];
            const bool isFlat = secondDifference(arc.a, arc.b, arc.c) <= kCubicFlat &&
                                secondDifference(arc.b, arc.c, arc.d) <= kCubicFlat;
            if (isFlat || arc.level == kMaxSplits || isOutside({arc.a, arc.b, arc.c, arc.d})) {
                for (int i = 1; i <= kChords; ++i)
                    if (const OutlineError error = line(cubicAt(arc.a, arc.b, arc.c, arc.d, i));
                        error != OutlineOk)
                        return error;
                continue;
            }
            const Point ab = Middle(arc.a, arc.b);
            const Point bc = Middle(arc.b, arc.c);
            const Point cd = Middle(arc.c, arc.d);
            const Point abc = Middle(ab, bc);
            const Point bcd = Middle(bc, cd);
            const Point middle = Middle(abc, bcd);
            stack[++top] = {middle, bcd, cd, arc.d, arc.level + 1};
            stack[++top] = {arc.a, ab, abc, middle, arc.level + 1};
        }
        return OutlineOk;
    }

    static int64_t secondDifference(Point a, Point b, Point c) {
        return std::max(std::abs(int64_t{a.x} - 2 * int64_t{b.x} + c.x),
                        std::abs(int64_t{a.y} - 2 * int64_t{b.y} + c.y));
    }

    // Whether a curve lies wholly above or below the band, where nothing of it is noted.
    bool isOutside(std::initializer_list<Point> points) const {
        const auto [low, high] =
            std::minmax_element(points.begin(), points.end(), [](Point a, Point b) { return a.y < b.y; });
        return high->y <= m_band.top * kPixel || low->y >= m_band.bottom * kPixel;
    }

    // Points at i / kChords of a curve.
    static Point conicAt(Point a, Point b, Point c, int i) {
        const int64_t t = i;
        const int64_t s = kChords - i;
        const auto at = [s, t](int64_t p, int64_t q, int64_t r) {
            return static_cast<int32_t>((s * s * p + 2 * s * t * q + t * t * r) / (kChords * kChords));
        };
        return {at(a.x, b.x, c.x), at(a.y, b.y, c.y)};
    }

    static Point cubicAt(Point a, Point b, Point c, Point d, int i) {
        const int64_t t = i;
        const int64_t s = kChords - i;
        const auto at = [s, t](int64_t p, int64_t q, int64_t r, int64_t o) {
            return static_cast<int32_t>(
                (s * s * s * p + 3 * s * s * t * q + 3 * s * t * t * r + t * t * t * o) /
                (kChords * kChords * kChords));
        };
        return {at(a.x, b.x, c.x, d.x), at(a.y, b.y, c.y, d.y)};
    }

    CellPool& m_cells;
    VRect m_band; // pixels
    Point m_pen;
};

// --- Sweeping ---

// Collects spans and hands them on in batches.
class SpanBatch {
public:
    explicit SpanBatch(SpanSink& sink) : m_sink(sink) {}

    void add(int32_t x, int32_t y, int32_t length, uint8_t coverage) {
        length = std::min(length, kMaxPixel - x);
        if (coverage == 0 || length <= 0)
            return;
        m_box = {std::min(m_box.left, x), std::min(m_box.top, y), std::max(m_box.right, x + length),
                 std::max(m_box.bottom, y + 1)};
        if (!lengthen(x, y, length, coverage))
            append(
                {static_cast<int16_t>(x), static_cast<int16_t>(y), static_cast<uint16_t>(length), coverage});
    }

    void flush() {
        if (m_count > 0)
            m_sink.addSpans(m_spans, m_count);
        m_count = 0;
    }

    void finish() {
        if (!m_box.empty())
            m_sink.setBox(m_box.left, m_box.top, m_box.right - m_box.left, m_box.bottom - m_box.top);
    }

private:
    bool lengthen(int32_t x, int32_t y, int32_t length, uint8_t coverage) {
        VRle::Span* last = m_count > 0 ? &m_spans[m_count - 1] : nullptr;
        if (!last || last->y != y || last->x + last->len != x || last->coverage != coverage)
            return false;
        last->len = static_cast<uint16_t>(last->len + length);
        return true;
    }

    void append(VRle::Span span) {
        if (m_count == kSpanBatch)
            flush();
        m_spans[m_count++] = span;
    }

    SpanSink& m_sink;
    VRle::Span m_spans[kSpanBatch];
    uint32_t m_count = 0;
    VRect m_box{kMaxPixel, kMaxPixel, kMinPixel, kMinPixel};
};

// From twice the signed area in a pixel. The sign goes first, so that both directions of a contour give the
// same, and the even-odd rule folds the area before it loses its fine bits.
uint8_t Coverage(int64_t area, bool evenOdd) {
    constexpr int64_t kWhole = int64_t{256} << kAreaShift;
    int64_t value = std::abs(area);
    if (evenOdd) {
        value &= 2 * kWhole - 1;
        if (value > kWhole)
            value = 2 * kWhole - value;
    }
    return static_cast<uint8_t>(std::min<int64_t>(value >> kAreaShift, 255));
}

void SweepBand(const CellPool& cells, const VRect& band, bool evenOdd, SpanBatch& spans) {
    for (int32_t y = band.top; y < band.bottom; ++y) {
        int64_t cover = 0;
        int32_t x = band.left;
        for (const Cell* cell = cells.first(y); cell; cell = cells.next(cell)) {
            const int32_t at = cells.xOf(cell);
            spans.add(x, y, at - x, Coverage(cover * 2 * kFine, evenOdd));
            cover += cell->cover;
            if (at >= band.left)
                spans.add(at, y, 1, Coverage(cover * 2 * kFine - cell->area, evenOdd));
            x = std::max(at + 1, band.left);
        }
        spans.add(x, y, band.right - x, Coverage(cover * 2 * kFine, evenOdd));
    }
}

// --- The bands ---

int32_t FloorPixel(int32_t fixed) {
    return fixed >> 6;
}
int32_t CeilPixel(int32_t fixed) {
    return (fixed + kFixedOne - 1) >> 6;
}

// The pixels that the outline can touch, within the clip.
VRect OutlineBox(const Outline& outline, const VRect& clip) {
    const VRect limits = clip.empty() ? VRect{kMinPixel, kMinPixel, kMaxPixel, kMaxPixel} : clip;
    if (outline.pointCount() == 0)
        return {};
    const FixedPoint first = outline.points()[0];
    VRect box{first.x, first.y, first.x, first.y};
    for (uint32_t i = 1; i < outline.pointCount(); ++i) {
        const FixedPoint point = outline.points()[i];
        box = {std::min(box.left, point.x), std::min(box.top, point.y), std::max(box.right, point.x),
               std::max(box.bottom, point.y)};
    }
    return {std::max({FloorPixel(box.left), limits.left, kMinPixel}),
            std::max({FloorPixel(box.top), limits.top, kMinPixel}),
            std::min({CeilPixel(box.right), limits.right, kMaxPixel}),
            std::min({CeilPixel(box.bottom), limits.bottom, kMaxPixel})};
}

// One band, cut in two as often as its cells ask for it; the upper half first.
OutlineError ConvertBand(const Outline& outline, const VRect& whole, CellPool& cells, SpanBatch& spans) {
    constexpr int kMaxHalvings = 17; // of at most 65,535 lines
    VRect stack[kMaxHalvings + 1];
    int top = 0;
    stack[0] = whole;
    while (top >= 0) {
        const VRect band = stack[top--];
        OutlineError error = OutlinePoolExhausted;
        if (cells.begin(band)) {
            BandTracer tracer(cells, band);
            error = Decompose(outline, tracer);
        }
        if (error == OutlineOk) {
            SweepBand(cells, band, outline.evenOdd, spans);
            spans.flush();
            continue;
        }
        const int32_t middle = band.top + (band.bottom - band.top) / 2;
        if (error != OutlinePoolExhausted || middle == band.top)
            return error;
        stack[++top] = {band.left, middle, band.right, band.bottom};
        stack[++top] = {band.left, band.top, band.right, middle};
    }
    return OutlineOk;
}

} // namespace

OutlineError ScanConvert(const Outline& outline, const VRect& clip, SpanSink& sink) {
    const VRect box = OutlineBox(outline, clip);
    if (box.empty())
        return OutlineOk;
    CellPool cells;
    SpanBatch spans(sink);
    const int32_t bands = std::clamp((box.bottom - box.top) / kFirstBandHeight, 1, kMaxBands);
    OutlineError error = OutlineOk;
    for (int32_t i = 0; i < bands && error == OutlineOk; ++i) {
        const int32_t top = box.top + i * kFirstBandHeight;
        const int32_t bottom = i == bands - 1 ? box.bottom : top + kFirstBandHeight;
        error = ConvertBand(outline, {box.left, top, box.right, bottom}, cells, spans);
    }
    spans.finish();
    return error;
}

} // namespace vec
