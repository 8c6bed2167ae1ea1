#include "camsim/byte_stream.h"

#include <cstddef>

namespace camsim {

namespace {

constexpr std::size_t kNowhere = SIZE_MAX;

// Values of nal_unit_type.
constexpr unsigned kSlice = 1, kIdrSlice = 5, kSei = 6, kPicParamSet = 8, kDelimiter = 9;

bool IsStartCode(const Bytes& stream, std::size_t at) {
    return at + 3 <= stream.size() && stream[at] == 0 && stream[at + 1] == 0 && stream[at + 2] == 1;
}

// The next start code at or behind `at`, with the zero byte before it.
std::size_t FindStartCode(const Bytes& stream, std::size_t at) {
    for (; at + 3 <= stream.size(); ++at) {
        if (IsStartCode(stream, at))
            return at;
        if (stream[at] == 0 && IsStartCode(stream, at + 1))
            return at;
    }
    return kNowhere;
}

struct UnitKind {
    bool isSlice = false;
    bool beginsPicture = false; // a slice: of a new picture; else: it stands before a picture's slices
};

UnitKind KindOf(const Bytes& unit) {
    std::size_t at = 0;
    while (at < unit.size() && unit[at] == 0)
        ++at;
    if (at + 2 >= unit.size())
        return {};
    const unsigned type = unit[at + 1] & 31U;
    const bool isSlice = type == kSlice || type == kIdrSlice;
    const bool isFirstSlice = (unit[at + 2] & 0x80U) != 0; // first_mb_in_slice: ue(0) is a single 1
    const bool leads = (type >= kSei && type <= kPicParamSet) || type == kDelimiter;
    return {isSlice, isSlice ? isFirstSlice : leads};
}

} // namespace

std::vector<Bytes> SplitNalUnits(const Bytes& stream) {
    constexpr std::size_t kLongestStartCode = 4;
    std::vector<Bytes> units;
    for (std::size_t at = 0; at < stream.size();) {
        std::size_t end = FindStartCode(stream, at + kLongestStartCode);
        if (end == kNowhere)
            end = stream.size();
        units.emplace_back(stream.begin() + static_cast<std::ptrdiff_t>(at),
                           stream.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
    return units;
}

std::vector<Bytes> SplitAccessUnits(const Bytes& stream) {
    std::vector<Bytes> units;
    bool hasSlice = true; // the unit being put together; the very first one begins with a new one
    for (const Bytes& nal : SplitNalUnits(stream)) {
        const UnitKind kind = KindOf(nal);
        if (units.empty() || (hasSlice && kind.beginsPicture)) {
            units.emplace_back();
            hasSlice = false;
        }
        hasSlice = hasSlice || kind.isSlice;
        units.back().insert(units.back().end(), nal.begin(), nal.end());
    }
    return units;
}

} // namespace camsim
