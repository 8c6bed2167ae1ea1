// The macroblock loop of a slice.
#include "media/h264/slice_data.h"

#include <algorithm>
#include <cstring>

#include "foundation/log.h"
#include "media/h264/macroblock_layer.h"
#include "media/h264/reconstruction.h"

namespace h264 {

namespace {

constexpr const char* Tag = "Ch264VideoDecoder::h264DecodeSliceData";

class SliceDecoder {
public:
    SliceDecoder(Storage& s, BitReader& r, const Image& image, const SliceHeader& h,
                 const SampleRoutines& rs);
    bool Decode();

private:
    bool DecodeMacroblock();
    bool ReadSkipRun();
    bool Stop(const char* reason) const {
        Log(LogError, Tag, "%s", reason);
        return false;
    }
    void EnterMacroblock();
    u32 NextMbAddress() const;

    Storage& storage;
    BitReader& reader;
    const SliceHeader& header;
    const SampleRoutines& routines;
    SliceContext slice;
    MacroblockContext context;
    u32 mbAddr = 0; // CurrMbAddr
    u32 mb_skip_run = 0;
    bool prevMbSkipped = false;
    u32 decodedMbs = 0; // that were not decoded before
};

SliceDecoder::SliceDecoder(Storage& s, BitReader& r, const Image& image, const SliceHeader& h,
                           const SampleRoutines& rs)
    : storage(s), reader(r), header(h), routines(rs) {
    slice.pps = storage.ActivePps();
    slice.header = &header;
    slice.syntax = storage.syntax;
    slice.image = image;
    slice.sliceId = ++storage.sliceId;
    slice.qpY = slice.pps->pic_init_qp + header.slice_qp_delta;
    for (u32 i = 0; i < MaxRefListEntries; ++i) {
        const Picture* picture = storage.dpb.Reference(i);
        if (picture != nullptr && picture->IsUsable())
            slice.references[i] = {picture->data, picture->bufferId};
    }
}

void SliceDecoder::EnterMacroblock() {
    Macroblock& mb = storage.mbs[mbAddr];
    mb.sliceId = slice.sliceId;
    mb.disable_deblocking_filter_idc = static_cast<u8>(header.disable_deblocking_filter_idc);
    mb.filterOffsetA = static_cast<i8>(header.filterOffsetA);
    mb.filterOffsetB = static_cast<i8>(header.filterOffsetB);
    mb.chroma_qp_index_offset = static_cast<i8>(slice.pps->chroma_qp_index_offset);
    context.Enter(&mb, mbAddr % storage.size.widthInMbs, mbAddr / storage.size.widthInMbs);
}

// NextMbAddress() of 8.2.2; 0 when the slice group ends.
u32 SliceDecoder::NextMbAddress() const {
    const u32 end = storage.size.Mbs();
    for (u32 next = mbAddr + 1; next < end; ++next) {
        if (storage.sliceMap[next] == storage.sliceMap[mbAddr])
            return next;
    }
    return 0;
}

bool SliceDecoder::ReadSkipRun() {
    mb_skip_run = reader.ReadUe();
    return mb_skip_run <= storage.size.Mbs() - mbAddr && !reader.Failed();
}

bool SliceDecoder::DecodeMacroblock() {
    if (header.IsPrimary() && storage.mbs[mbAddr].decoded > 0)
        return Stop("Primary and already decoded");
    EnterMacroblock();
    if (!header.IsIntra() && !prevMbSkipped && !ReadSkipRun())
        return Stop("skip_run");
    prevMbSkipped = mb_skip_run > 0;
    if (mb_skip_run > 0) {
        Log(LogEvent, Tag, "Skipping macroblock %d", static_cast<int>(mbAddr));
        --mb_skip_run;
        SetSkippedMacroblock(slice.syntax);
    } else if (!DecodeMacroblockLayer(reader, slice, context)) {
        return Stop("macroblock_layer");
    }
    if (!ReconstructMacroblock(slice, context, routines))
        return Stop("MACRO_BLOCK");
    decodedMbs += context.mb->decoded == 1;
    return true;
}

bool SliceDecoder::Decode() {
    reader.FindTrailingBits();
    storage.lastMbReached = 0;
    mbAddr = header.first_mb_in_slice;
    for (;;) {
        if (!DecodeMacroblock())
            return false;
        if (header.IsIntra())
            storage.lastMbReached = mbAddr;
        const bool moreDataFlag = reader.MoreRbspData() || mb_skip_run > 0;
        if (!moreDataFlag)
            break;
        mbAddr = NextMbAddress();
        if (mbAddr == 0)
            return Stop("Next mb address");
    }
    if (u64{storage.numDecodedMbs} + decodedMbs > storage.size.Mbs())
        return Stop("Num decoded mbs");
    storage.numDecodedMbs += decodedMbs;
    return true;
}

// A macroblock that failed half-way may leave levels in the work area, which the next one expects to be zero.
void ClearLevels(MacroblockSyntax* syntax) {
    std::memset(syntax->coefficients, 0, sizeof syntax->coefficients);
    std::memset(syntax->lumaDc, 0, sizeof syntax->lumaDc);
    std::memset(syntax->chromaDc, 0, sizeof syntax->chromaDc);
}

// Where the doubt begins in an I slice: about a row before the last macroblock that was reached.
u32 StartOfDoubt(const Storage& storage, u32 first_mb_in_slice) {
    constexpr u32 LeastMbs = 10;
    if (storage.lastMbReached == 0)
        return first_mb_in_slice;
    const u32 doubtful = std::max(LeastMbs, storage.size.widthInMbs);
    u32 count = 0;
    u32 address = storage.lastMbReached - 1;
    for (; address > first_mb_in_slice; --address) {
        count += storage.mbs[address].sliceId == storage.sliceId;
        if (count >= doubtful)
            break;
    }
    return std::max(address, first_mb_in_slice);
}

} // namespace

bool h264DecodeSliceData(Storage& storage, BitReader& stream, const Image& currentImage,
                         const SliceHeader& header, const SampleRoutines& routines) {
    if (SliceDecoder(storage, stream, currentImage, header, routines).Decode())
        return true;
    ClearLevels(storage.syntax);
    return false;
}

void MarkSliceCorrupted(Storage& storage, u32 first_mb_in_slice) {
    const u32 end = storage.size.Mbs();
    const u32 start = StartOfDoubt(storage, first_mb_in_slice);
    for (u32 address = start; address < end; ++address) {
        if (storage.sliceMap[address] != storage.sliceMap[start])
            continue;
        Macroblock& mb = storage.mbs[address];
        if (mb.sliceId != storage.sliceId || mb.decoded == 0)
            return;
        --mb.decoded;
    }
}

} // namespace h264
