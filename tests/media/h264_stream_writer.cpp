// Text to byte stream. Sections: bits, words of a line, parameter sets, slice header, macroblocks, the
// stream.
#include "media/h264_stream_writer.h"

#include <bit>
#include <map>
#include <sstream>
#include <stdexcept>

namespace h264test {

namespace {

// ---- Bits ----

class BitWriter {
public:
    void Bit(bool bit) {
        if (count % 8 == 0)
            bytes.push_back(0);
        bytes.back() = static_cast<std::uint8_t>(bytes.back() | bit << (7 - count % 8));
        ++count;
    }
    void Bits(std::uint64_t value, unsigned n) {
        for (unsigned i = n; i-- > 0;)
            Bit((value >> i & 1) != 0);
    }
    void Ue(std::uint64_t value) {
        const auto length = static_cast<unsigned>(std::bit_width(value + 1));
        Bits(0, length - 1);
        Bits(value + 1, length);
    }
    void Se(std::int64_t value) { Ue(static_cast<std::uint64_t>(value > 0 ? 2 * value - 1 : -2 * value)); }
    void Align() {
        while (count % 8 != 0)
            Bit(false);
    }
    void TrailingBits() {
        Bit(true);
        Align();
    }

    Bytes bytes;

private:
    unsigned count = 0;
};

// ---- Words ----

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

// A line: its first word, what stands alone behind it, and the KEY=VALUE pairs.
struct Line {
    std::string word;
    std::vector<std::string> plain;
    std::map<std::string, std::string> values;

    explicit Line(const std::string& text) {
        std::istringstream stream(text);
        stream >> word;
        for (std::string part; stream >> part;) {
            const std::size_t equals = part.find('=');
            if (equals == std::string::npos)
                plain.push_back(part);
            else
                values[part.substr(0, equals)] = part.substr(equals + 1);
        }
    }
    bool Has(const std::string& key) const { return values.contains(key); }
    std::int64_t Number(const std::string& key, std::int64_t missing) const {
        return Has(key) ? std::stoll(values.at(key)) : missing;
    }
    std::uint64_t Unsigned(const std::string& key, std::uint64_t missing) const {
        return Has(key) ? std::stoull(values.at(key)) : missing;
    }
    std::vector<std::int64_t> List(const std::string& key) const {
        std::vector<std::int64_t> numbers;
        if (Has(key)) {
            for (const std::string& part : Split(values.at(key), ','))
                numbers.push_back(std::stoll(part));
        }
        return numbers;
    }
};

Bytes FromHex(const std::vector<std::string>& words) {
    std::string digits;
    for (const std::string& word : words)
        digits += word;
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

// ---- Parameter sets ----

// What slice headers need to know of the sets.
struct Sps {
    unsigned frameNumBits = 4, lsbBits = 4;
    std::uint64_t pocType = 2;
    bool deltaAlwaysZero = false;
    std::uint64_t sizeInMbs = 1;
};
struct Pps {
    std::uint64_t sps = 0;
    bool pocPresent = false, deblockControl = true, redundant = false, evolving = false;
    std::uint64_t rate = 1;
};

void WriteVui(BitWriter& out, const Line& line) {
    out.Bits(0, 4 + 1); // aspect ratio, overscan, signal, chroma location; timing
    out.Bits(0, 2 + 1); // two sets of HRD parameters, pic_struct_present_flag
    out.Bit(true);      // bitstream_restriction_flag
    out.Bit(true);      // motion_vectors_over_pic_boundaries_flag
    for (int i = 0; i < 4; ++i)
        out.Ue(0);
    out.Ue(line.Unsigned("reorder", 0));
    out.Ue(line.Unsigned("buffering", 1));
}

void WritePicOrderCnt(BitWriter& out, const Line& line, Sps* sps) {
    sps->pocType = line.Unsigned("poc", 2);
    out.Ue(sps->pocType);
    if (sps->pocType == 0) {
        sps->lsbBits = static_cast<unsigned>(line.Unsigned("log2_lsb", 4));
        out.Ue(sps->lsbBits - 4);
    } else if (sps->pocType == 1) {
        sps->deltaAlwaysZero = line.Number("always_zero", 0) != 0;
        out.Bit(sps->deltaAlwaysZero);
        out.Se(line.Number("non_ref", 0));
        out.Se(line.Number("top_bottom", 0));
        const auto cycle = line.List("cycle");
        out.Ue(line.Unsigned("cycle_length", cycle.size()));
        for (std::int64_t offset : cycle)
            out.Se(offset);
    }
}

Sps WriteSps(BitWriter& out, const Line& line) {
    Sps sps;
    out.Bits(line.Unsigned("profile", 66), 8);
    out.Bits(0, 8);
    out.Bits(line.Unsigned("level", 40), 8);
    out.Ue(line.Unsigned("id", 0));
    sps.frameNumBits = static_cast<unsigned>(line.Unsigned("log2_frame_num", 4));
    out.Ue(sps.frameNumBits - 4);
    WritePicOrderCnt(out, line, &sps);
    out.Ue(line.Unsigned("refs", 1));
    out.Bit(line.Number("gaps", 0) != 0);
    const std::uint64_t width = line.Unsigned("width", 1), height = line.Unsigned("height", 1);
    sps.sizeInMbs = width * height;
    out.Ue(width - 1);
    out.Ue(height - 1);
    out.Bit(line.Number("interlaced", 0) == 0); // frame_mbs_only_flag
    out.Bit(true);                              // direct_8x8_inference_flag
    const auto crop = line.List("crop");        // left, right, top, bottom
    out.Bit(!crop.empty());
    for (std::int64_t offset : crop)
        out.Ue(static_cast<std::uint64_t>(offset));
    const bool vui = line.Has("reorder") || line.Has("buffering");
    out.Bit(vui);
    if (vui)
        WriteVui(out, line);
    return sps;
}

void WriteSliceGroups(BitWriter& out, const Line& line, std::uint64_t groups, Pps* pps) {
    const std::uint64_t map = line.Unsigned("map", 0);
    out.Ue(map);
    if (map == 0) {
        for (std::int64_t run : line.List("runs"))
            out.Ue(static_cast<std::uint64_t>(run - 1));
    } else if (map == 2) {
        for (std::int64_t corner : line.List("rects")) // top_left, bottom_right, ...
            out.Ue(static_cast<std::uint64_t>(corner));
    } else if (map >= 3 && map <= 5) {
        pps->evolving = true;
        pps->rate = line.Unsigned("rate", 1);
        out.Bit(line.Number("direction", 0) != 0);
        out.Ue(pps->rate - 1);
    } else if (map == 6) {
        const auto ids = line.List("ids");
        out.Ue(line.Unsigned("units", ids.size()) - 1);
        for (std::int64_t id : ids)
            out.Bits(static_cast<std::uint64_t>(id), static_cast<unsigned>(std::bit_width(groups - 1)));
    }
}

Pps WritePps(BitWriter& out, const Line& line) {
    Pps pps;
    out.Ue(line.Unsigned("id", 0));
    pps.sps = line.Unsigned("sps", 0);
    out.Ue(pps.sps);
    out.Bit(line.Number("cabac", 0) != 0);
    pps.pocPresent = line.Number("poc_present", 0) != 0;
    out.Bit(pps.pocPresent);
    const std::uint64_t groups = line.Unsigned("groups", 1);
    out.Ue(groups - 1);
    if (groups > 1)
        WriteSliceGroups(out, line, groups, &pps);
    out.Ue(line.Unsigned("l0", 1) - 1);
    out.Ue(line.Unsigned("l1", 1) - 1);
    out.Bit(line.Number("weighted", 0) != 0);
    out.Bits(line.Unsigned("bipred", 0), 2);
    out.Se(line.Number("qp", 26) - 26);
    out.Se(line.Number("qs", 26) - 26);
    out.Se(line.Number("chroma_offset", 0));
    pps.deblockControl = line.Number("deblock_control", 1) != 0;
    out.Bit(pps.deblockControl);
    out.Bit(line.Number("constrained", 0) != 0);
    pps.redundant = line.Number("redundant", 0) != 0;
    out.Bit(pps.redundant);
    return pps;
}

// ---- Slice header ----

// "reorder=-2,+1,L0": abs_diff_pic_num down or up, long_term_pic_num; "none" for a list without commands.
void WriteReordering(BitWriter& out, const Line& line) {
    out.Bit(line.Has("reorder"));
    if (!line.Has("reorder"))
        return;
    for (const std::string& command : Split(line.values.at("reorder"), ',')) {
        if (command == "none")
            continue;
        const std::uint64_t number = std::stoull(command.substr(1));
        if (command[0] == 'X') { // any idc
            out.Ue(number);
            continue;
        }
        out.Ue(command[0] == 'L' ? 2 : command[0] == '+' ? 1 : 0);
        out.Ue(command[0] == 'L' ? number : number - 1);
    }
    out.Ue(3);
}

// "mmco=1:2,3:1:0,5": the operation, then its numbers; differences as they are, not less one.
void WriteMarking(BitWriter& out, const Line& line) {
    out.Bit(line.Has("mmco"));
    if (!line.Has("mmco"))
        return;
    for (const std::string& operation : Split(line.values.at("mmco"), ',')) {
        const auto numbers = Split(operation, ':');
        const std::uint64_t code = std::stoull(numbers[0]);
        out.Ue(code);
        for (std::size_t i = 1; i < numbers.size(); ++i) {
            const bool isDifference = i == 1 && (code == 1 || code == 3);
            out.Ue(std::stoull(numbers[i]) - (isDifference ? 1 : 0));
        }
    }
    out.Ue(0);
}

struct SliceKind {
    bool isIdr, isIntra;
};

SliceKind KindOf(const Line& line) {
    const std::string kind = line.plain.empty() ? "i" : line.plain[0];
    return {kind.starts_with("idr"), kind != "p" && kind != "idrp"};
}

void WriteSlicePicOrderCnt(BitWriter& out, const Line& line, const Sps& sps, const Pps& pps) {
    if (sps.pocType == 0) {
        out.Bits(line.Unsigned("lsb", 0), sps.lsbBits);
        if (pps.pocPresent)
            out.Se(line.Number("delta_bottom", 0));
    } else if (sps.pocType == 1 && !sps.deltaAlwaysZero) {
        out.Se(line.Number("delta0", 0));
        if (pps.pocPresent)
            out.Se(line.Number("delta1", 0));
    }
}

void WriteSliceHeader(BitWriter& out, const Line& line, const Sps& sps, const Pps& pps, std::uint64_t ref) {
    const SliceKind kind = KindOf(line);
    out.Ue(line.Unsigned("first", 0));
    out.Ue(line.Unsigned("type", kind.isIntra ? 7 : 5));
    out.Ue(line.Unsigned("pps", 0));
    out.Bits(line.Unsigned("frame_num", 0), sps.frameNumBits);
    if (kind.isIdr)
        out.Ue(line.Unsigned("idr_pic_id", 0));
    WriteSlicePicOrderCnt(out, line, sps, pps);
    if (pps.redundant)
        out.Ue(line.Unsigned("redundant", 0));
    if (!kind.isIntra) {
        out.Bit(line.Has("active"));
        if (line.Has("active"))
            out.Ue(line.Unsigned("active", 1) - 1);
        WriteReordering(out, line);
    }
    if (ref != 0 && kind.isIdr) {
        out.Bit(line.Number("no_output", 0) != 0);
        out.Bit(line.Number("long", 0) != 0);
    } else if (ref != 0) {
        WriteMarking(out, line);
    }
    out.Se(line.Number("qp_delta", 0));
    if (pps.deblockControl) {
        const std::uint64_t idc = line.Unsigned("deblock", 1);
        out.Ue(idc);
        if (idc != 1) {
            out.Se(line.Number("alpha", 0));
            out.Se(line.Number("beta", 0));
        }
    }
    if (pps.evolving) {
        const std::uint64_t cycles = (sps.sizeInMbs + pps.rate - 1) / pps.rate;
        out.Bits(line.Unsigned("cycle", 0), static_cast<unsigned>(std::bit_width(cycles)));
    }
}

// ---- Macroblocks ----

class SliceWriter {
public:
    SliceWriter(const Line& header, const Sps& sps, const Pps& pps, std::uint64_t ref)
        : isIntra(KindOf(header).isIntra), numActive(header.Unsigned("active", 1)) {
        WriteSliceHeader(out, header, sps, pps, ref);
    }

    void Write(const Line& line) {
        if (line.word == "skip")
            skipRun += std::stoull(line.plain.at(0));
        else if (line.word == "pcm")
            WritePcms(line);
        else if (line.word == "move")
            WriteMove(line);
        else if (line.word == "i16")
            WriteIntra16x16(std::stoull(line.plain.at(0)));
        else if (line.word == "i4")
            WriteIntra4x4(std::stoull(line.plain.at(0)));
        else if (line.word == "ue")
            out.Ue(std::stoull(line.plain.at(0)));
        else if (line.word == "se")
            out.Se(std::stoll(line.plain.at(0)));
        else if (line.word == "bits")
            WriteBits(line.plain.at(0));
        else if (line.word == "align")
            out.Align();
        else
            throw std::invalid_argument("h264 text: " + line.word);
    }

    Bytes Finish() {
        if (skipRun > 0)
            out.Ue(skipRun);
        out.TrailingBits();
        return out.bytes;
    }

private:
    // mb_skip_run ahead of every macroblock of a P slice.
    void BeginMacroblock() {
        if (!isIntra)
            out.Ue(skipRun);
        skipRun = 0;
    }

    void IntraType(std::uint64_t mb_type) { out.Ue(mb_type + (isIntra ? 0 : 5)); }

    void WriteBits(const std::string& bits) {
        for (char bit : bits)
            out.Bit(bit == '1');
    }

    void WritePcms(const Line& line) {
        for (const std::string& word : line.plain) {
            const auto repeated = Split(word, '*');
            for (std::uint64_t n = repeated.size() > 1 ? std::stoull(repeated[1]) : 1; n > 0; --n)
                WritePcm(repeated[0]);
        }
    }

    // "Y", "Y/CB/CR", or "A:B:C:D" for four stripes side by side in every plane.
    void WritePcm(const std::string& samples) {
        BeginMacroblock();
        IntraType(25);
        out.Align();
        const auto planes = Split(samples, '/');
        for (unsigned plane = 0; plane < 3; ++plane) {
            const auto stripes = Split(planes[plane < planes.size() ? plane : 0], ':');
            const unsigned side = plane == 0 ? 16 : 8;
            for (unsigned i = 0; i < side * side; ++i)
                out.Bits(std::stoul(stripes[i % side * stripes.size() / side]), 8);
        }
    }

    void WriteMove(const Line& line) {
        BeginMacroblock();
        out.Ue(0); // P_L0_16x16
        const std::uint64_t refIdx = line.Unsigned("ref", 0);
        if (numActive == 2)
            out.Bit(refIdx == 0);
        else if (numActive > 2)
            out.Ue(refIdx);
        const auto vector = Split(line.plain.at(0), ',');
        out.Se(std::stoll(vector.at(0)));
        out.Se(std::stoll(vector.at(1)));
        out.Ue(0); // coded_block_pattern 0
    }

    // Without neighbours that have coefficients: nC is 0, coeff_token of an empty DC block is 1.
    void WriteIntra16x16(std::uint64_t mode) {
        BeginMacroblock();
        IntraType(1 + mode);
        out.Ue(0); // intra_chroma_pred_mode DC
        out.Se(0); // mb_qp_delta
        out.Bit(true);
    }

    void WriteIntra4x4(std::uint64_t mode) {
        BeginMacroblock();
        IntraType(0);
        for (int i = 0; i < 16; ++i)
            out.Bits(mode, 4);
        out.Ue(0); // intra_chroma_pred_mode DC
        out.Ue(3); // coded_block_pattern 0
    }

    BitWriter out;
    const bool isIntra;
    const std::uint64_t numActive;
    std::uint64_t skipRun = 0;
};

// ---- The stream ----

class StreamWriter {
public:
    void Write(const Line& line) {
        if (line.word == "slice") {
            EndSlice();
            BeginSlice(line);
        } else if (line.word == "sps" || line.word == "pps") {
            EndSlice();
            WriteSet(line);
        } else if (line.word == "nal") {
            EndSlice();
            Unit(std::stoul(line.plain.at(0)), std::stoul(line.plain.at(1)),
                 FromHex({line.plain.begin() + 2, line.plain.end()}));
        } else if (line.word == "bytes") {
            EndSlice();
            const Bytes bytes = FromHex(line.plain);
            stream.insert(stream.end(), bytes.begin(), bytes.end());
        } else if (slice.empty()) {
            throw std::invalid_argument("h264 text: macroblock outside of a slice: " + line.word);
        } else {
            slice.back().Write(line);
        }
    }

    Bytes Finish() {
        EndSlice();
        return stream;
    }

private:
    void WriteSet(const Line& line) {
        BitWriter out;
        if (line.word == "sps")
            spsOf[line.Unsigned("id", 0)] = WriteSps(out, line);
        else
            ppsOf[line.Unsigned("id", 0)] = WritePps(out, line);
        out.TrailingBits();
        Unit(line.Unsigned("ref", 3), line.word == "sps" ? 7 : 8, out.bytes);
    }

    void BeginSlice(const Line& line) {
        sliceRef = line.Unsigned("ref", 1);
        sliceType = KindOf(line).isIdr ? 5 : 1;
        const Pps pps = ppsOf[line.Unsigned("pps", 0)];
        slice.emplace_back(line, spsOf[pps.sps], pps, sliceRef);
    }

    void EndSlice() {
        if (slice.empty())
            return;
        Unit(sliceRef, sliceType, slice.back().Finish());
        slice.clear();
    }

    // Start code, header, payload with emulation prevention (7.3.1).
    void Unit(std::uint64_t ref, std::uint64_t type, const Bytes& payload) {
        for (int byte : {0, 0, 0, 1})
            stream.push_back(static_cast<std::uint8_t>(byte));
        stream.push_back(static_cast<std::uint8_t>(ref << 5 | type));
        unsigned zeros = 0;
        for (std::uint8_t byte : payload) {
            if (zeros >= 2 && byte <= 3) {
                stream.push_back(3);
                zeros = 0;
            }
            stream.push_back(byte);
            zeros = byte == 0 ? zeros + 1 : 0;
        }
    }

    Bytes stream;
    std::map<std::uint64_t, Sps> spsOf;
    std::map<std::uint64_t, Pps> ppsOf;
    std::vector<SliceWriter> slice; // the open one, if any
    std::uint64_t sliceRef = 1, sliceType = 1;
};

} // namespace

Bytes WriteStream(const std::string& text) {
    StreamWriter writer;
    for (const std::string& row : Split(text, '\n')) {
        const Line line(row);
        if (!line.word.empty() && line.word[0] != '#')
            writer.Write(line);
    }
    return writer.Finish();
}

} // namespace h264test
