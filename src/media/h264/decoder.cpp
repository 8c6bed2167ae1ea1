// The entry of the decoder. Sections: access units, NAL units, boundaries, parameter sets, activation,
// slices.
#include "media/h264/decoder.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "foundation/log.h"
#include "media/h264/concealment.h"
#include "media/h264/deblocking.h"
#include "media/h264/slice_data.h"
#include "media/h264/slice_groups.h"

namespace h264 {

namespace {

constexpr const char* DecodeTag = "Ch264VideoDecoder::h264Decode";
constexpr const char* ActivateTag = "Ch264VideoDecoder::h264ActivateParamSets";

constexpr u64 MaxPictureMbs = 11184810; // 384 bytes each still fit 32 bits

Result Fail(const char* reason, Result result = Result::Error) {
    Log(LogError, DecodeTag, "%s", reason);
    return result;
}

} // namespace

// ---- Access units ----

void Decoder::InitDecoder(u8* base, u32 size) {
    pool.Attach(base, size);
    storage = Storage{};
    kept = KeptUnit{};
    input = nullptr;
    inputLeft = 0;
    nextPicId = 0;
    geometryPending = false;
    streamWidth = streamHeight = 0;
    streamCrop = CropWindow{};
    outputPicture = DecodedPicture{};
    droppedUnits = 0;
    if (void* memory = pool.nH264malloc(sizeof(MacroblockSyntax) + alignof(MacroblockSyntax),
                                        PoolId::MacroblockWorkArea)) {
        const auto address = reinterpret_cast<uintptr_t>(memory);
        const uintptr_t padding = (0 - address) % alignof(MacroblockSyntax);
        storage.syntax = new (static_cast<u8*>(memory) + padding) MacroblockSyntax;
    }
}

AccessUnitResult Decoder::DecodeAccessUnit(u8* buffer, u32 size) {
    if (buffer != nullptr) {
        input = buffer;
        inputLeft = size;
        kept.waits = false; // whatever waited was in the old buffer
    }
    if (inputLeft == 0 || storage.syntax == nullptr)
        return AccessUnitResult::NoInput;
    if (geometryPending)
        ReadStreamGeometry();
    while (inputLeft > 0) {
        u32 readBytes = 0;
        const Result result = h264Decode(input, inputLeft, nextPicId, &readBytes);
        input += readBytes;
        inputLeft -= readBytes;
        if (result == Result::Error || result == Result::ParamSetError || result == Result::MemoryError)
            ++droppedUnits;
        if (result == Result::PictureReady) {
            ++nextPicId;
            if (TakeOutput())
                return AccessUnitResult::Picture;
        } else if (result == Result::HeadersReady) {
            geometryPending = true;
            if (storage.dpb.flushed && storage.dpb.HasOutput() && TakeOutput())
                return AccessUnitResult::Picture;
            ReadStreamGeometry();
        } else if (result == Result::MemoryError ||
                   (result == Result::ParamSetError && inputLeft == 0 && !AnyUsableParamSets())) {
            return AccessUnitResult::NoInput;
        }
    }
    return AccessUnitResult::NoPicture;
}

// Takes all pictures that are released; the last one is shown. False when there was none: a picture whose
// marking failed is lost.
bool Decoder::TakeOutput() {
    bool any = false;
    while (const struct OutputPicture* next = storage.dpb.NextOutput()) {
        outputPicture = {next->data,  streamWidth,     streamHeight, streamCrop,
                         next->picId, next->numErrMbs, next->isIdr};
        any = true;
    }
    return any;
}

void Decoder::ReadStreamGeometry() {
    geometryPending = false;
    if (const SeqParamSet* sps = storage.ActiveSps()) {
        streamWidth = sps->picWidthInMbs * MbSize;
        streamHeight = sps->picHeightInMbs * MbSize;
        streamCrop = sps->Crop();
    }
}

bool Decoder::AnyUsableParamSets() const {
    return std::any_of(std::begin(storage.pps), std::end(storage.pps), [this](const PicParamSet* pps) {
        return pps != nullptr && storage.sps[pps->seq_parameter_set_id] != nullptr;
    });
}

// ---- NAL units ----

Result Decoder::h264Decode(u8* stream, u32 length, u32 picId, u32* readBytes) {
    if (!kept.waits || kept.stream != stream) {
        kept = KeptUnit{};
        kept.stream = stream;
        const bool valid = ExtractNalUnit(stream, length, &kept.bytes, &kept.readBytes);
        *readBytes = kept.readBytes;
        if (!valid)
            return Fail("BYTE_STREAM");
    }
    kept.waits = false;
    *readBytes = kept.readBytes;
    return DecodeUnit(picId, readBytes);
}

// The unit comes again with the next call.
Result Decoder::KeepUnit(Result result, u32* readBytes) {
    kept.waits = true;
    *readBytes = 0;
    return result;
}

Result Decoder::DecodeUnit(u32 picId, u32* readBytes) {
    BitReader reader(kept.bytes.data, kept.bytes.size);
    NalUnit nalUnit;
    if (!DecodeNalUnitHeader(reader, &nalUnit))
        return Fail("NAL_UNIT");
    if (nalUnit.IsDiscarded()) {
        Log(LogEvent, DecodeTag, "DISCARDED NAL (UNSPECIFIED,REGISTERED,SPS ext or AUX slice)");
        return Result::Ready;
    }
    bool boundary = false;
    if (const Result result = CheckAccessUnitBoundary(reader, nalUnit, &boundary); result != Result::Ready)
        return result;
    if (boundary && storage.pictureOpen && storage.HasSequenceMemory()) {
        const Result result = CloseOpenPicture();
        return result == Result::PictureReady ? KeepUnit(result, readBytes) : result;
    }
    if (boundary)
        storage.pictureOpen = storage.sliceAccepted = storage.pictureComplete = false;

    switch (nalUnit.nal_unit_type) {
    case NalUnitType::NonIdrSlice:
    case NalUnitType::IdrSlice: {
        const Result result = HandleSlice(reader, nalUnit, picId);
        return result == Result::HeadersReady ? KeepUnit(result, readBytes) : result;
    }
    case NalUnitType::Sei:
        Log(LogEvent, DecodeTag, "SEI MESSAGE,NOT DECODED");
        return Result::Ready;
    case NalUnitType::SeqParamSet:
        return HandleSeqParamSet(reader);
    case NalUnitType::PicParamSet:
        return HandlePicParamSet(reader);
    default:
        Log(LogEvent, DecodeTag, "NOT IMPLEMENTED YET %d", static_cast<int>(nalUnit.nal_unit_type));
        return Result::Ready;
    }
}

// ---- Boundaries ----

// Reads what identifies the picture of a slice, with the parameter sets that the slice names.
Result Decoder::PictureOfSlice(const BitReader& reader, const NalUnit& nalUnit,
                               PictureIdentity* identity) const {
    u32 ppsId = 0;
    if (!PeekPicParamSetId(reader, &ppsId) || ppsId >= MaxPicParamSets)
        return Result::Error;
    const PicParamSet* pps = storage.pps[ppsId];
    const SeqParamSet* sps = pps != nullptr ? storage.sps[pps->seq_parameter_set_id] : nullptr;
    if (sps == nullptr)
        return Result::ParamSetError;
    const bool anyActive = storage.activeSpsId < MaxSeqParamSets;
    if (!nalUnit.IsIdr() && anyActive && pps->seq_parameter_set_id != storage.activeSpsId)
        return Result::ParamSetError;
    return ReadPictureIdentity(reader, nalUnit, *sps, *pps, identity) ? Result::Ready : Result::Error;
}

// 7.4.1.2.3 and 7.4.1.2.4: does this unit begin a new access unit?
Result Decoder::CheckAccessUnitBoundary(const BitReader& reader, const NalUnit& nalUnit, bool* boundary) {
    *boundary = nalUnit.StartsAccessUnit();
    if (!nalUnit.IsSlice())
        return Result::Ready;
    PictureIdentity identity;
    if (const Result result = PictureOfSlice(reader, nalUnit, &identity); result != Result::Ready)
        return Fail("ACCESS UNIT BOUNDARY CHECK", result);
    *boundary = !storage.anySliceSeen || !identity.SamePicture(storage.previousSlice);
    storage.anySliceSeen = true;
    storage.previousSlice = identity;
    return Result::Ready;
}

// The open picture will get no more slices: what is missing is concealed.
Result Decoder::CloseOpenPicture() {
    if (storage.pendingActivation) {
        storage.pictureOpen = false; // or every later unit would end here, too
        return Fail("Pending activation not completed");
    }
    bool isIntra = false;
    if (storage.sliceAccepted) {
        isIntra = storage.CurrentHeader().IsIntra();
    } else {
        storage.currentImage = {storage.dpb.TakeFreePicture()->data, storage.size};
        storage.dpb.InitRefList();
    }
    Concealment concealment{storage.currentImage, storage.mbs.data, nullptr, routines};
    for (u32 i = 0; !isIntra && concealment.reference == nullptr && i < MaxRefFrames; ++i) {
        const Picture* picture = storage.dpb.Reference(i);
        if (picture != nullptr && picture->IsUsable())
            concealment.reference = picture->data;
    }
    storage.numConcealedMbs += h264Conceal(concealment, isIntra);
    FinishPicture();
    return Result::PictureReady;
}

// ---- Parameter sets ----

Result Decoder::HandleSeqParamSet(BitReader& reader) {
    SeqParamSet sps;
    i32 offsetForRefFrame[MaxPicOrderCntCycle];
    if (!h264DecodeSeqParamSet(reader, &sps, offsetForRefFrame))
        return Fail("SEQ_PARAM_SET");
    StoreSeqParamSet(sps, offsetForRefFrame); // a failure has its line from the pool
    return Result::Ready;
}

// Memory of a slot that holds a set already is used again, so that a stream may repeat its sets for ever.
bool Decoder::StoreSeqParamSet(SeqParamSet& sps, const i32* offsetForRefFrame) {
    SeqParamSet*& slot = storage.sps[sps.seq_parameter_set_id];
    const bool isActive = storage.activeSpsId == sps.seq_parameter_set_id;
    if (isActive) {
        SeqParamSet withCycle = sps;
        withCycle.offset_for_ref_frame.data = const_cast<i32*>(offsetForRefFrame);
        if (slot->SameSequence(withCycle))
            return true;
    }
    PoolArray<i32> cycle = slot != nullptr ? slot->offset_for_ref_frame : PoolArray<i32>{};
    if (!cycle.Reserve(pool, sps.num_ref_frames_in_pic_order_cnt_cycle, PoolId::OffsetForRefFrame))
        return false;
    if (slot == nullptr)
        slot = static_cast<SeqParamSet*>(pool.nH264malloc(sizeof(SeqParamSet), PoolId::SeqParamSet));
    if (slot == nullptr)
        return false;
    std::copy_n(offsetForRefFrame, sps.num_ref_frames_in_pic_order_cnt_cycle, cycle.data);
    sps.offset_for_ref_frame = cycle;
    new (slot) SeqParamSet(sps);
    if (isActive) {
        storage.activeSpsId = ReplacedSeqParamSet;
        storage.activePpsId = ReplacedPicParamSet;
        storage.pendingActivation = false;
    }
    return true;
}

Result Decoder::HandlePicParamSet(BitReader& reader) {
    PicParamSet pps;
    BitReader sliceGroupIds;
    if (!h264DecodePicParamSet(reader, &pps, &sliceGroupIds))
        return Result::Error;
    StorePicParamSet(pps, sliceGroupIds);
    return Result::Ready;
}

bool Decoder::StorePicParamSet(PicParamSet& pps, const BitReader& sliceGroupIds) {
    PicParamSet*& slot = storage.pps[pps.pic_parameter_set_id];
    PoolArray<u8> ids = slot != nullptr ? slot->slice_group_id : PoolArray<u8>{};
    if (pps.HasExplicitMap()) {
        if (!ids.Reserve(pool, pps.pic_size_in_map_units_minus1 + 1, PoolId::SliceGroupId))
            return false;
        ReadSliceGroupIds(sliceGroupIds, pps, ids.data);
    }
    if (slot == nullptr)
        slot = static_cast<PicParamSet*>(pool.nH264malloc(sizeof(PicParamSet), PoolId::PicParamSet));
    if (slot == nullptr)
        return false;
    pps.slice_group_id = ids;
    new (slot) PicParamSet(pps);
    const bool isActive = storage.activePpsId == pps.pic_parameter_set_id;
    if (isActive && pps.seq_parameter_set_id != storage.activeSpsId)
        storage.activePpsId = ReplacedPicParamSet;
    return true;
}

// ---- Activation ----

Result Decoder::h264ActivateParamSets(u32 ppsId, bool isIdr) {
    const Result result = TryActivation(ppsId, isIdr);
    if (result == Result::Ready)
        return result;
    storage.activePpsId = NoPicParamSet;
    storage.activeSpsId = NoSeqParamSet;
    storage.pendingActivation = false;
    return Fail("Param set activation", result);
}

// Choosing a sequence and taking its memory are two steps: in between the pictures of the old one leave.
Result Decoder::TryActivation(u32 ppsId, bool isIdr) {
    const PicParamSet* pps = storage.pps[ppsId];
    const SeqParamSet* sps = pps != nullptr ? storage.sps[pps->seq_parameter_set_id] : nullptr;
    if (sps == nullptr || !pps->FitsPicture(sps->picWidthInMbs, sps->PicSizeInMbs()))
        return Result::ParamSetError;
    if (storage.pendingActivation) {
        storage.pendingActivation = false;
        if (storage.activePpsId != ppsId)
            return Result::ParamSetError;
        return AllocateSequence(*sps) ? Result::Ready : Result::MemoryError;
    }
    if (storage.activePpsId == ppsId)
        return Result::Ready;
    if (storage.activePpsId != NoPicParamSet && pps->seq_parameter_set_id != storage.activeSpsId) {
        Log(LogEvent, ActivateTag, "SEQ PARAM SET CHANGING");
        if (!isIdr) {
            Log(LogEvent, ActivateTag, "TRYING TO CHANGE SPS IN NON-IDR SLICE");
            return Result::ParamSetError;
        }
    }
    storage.pendingActivation = pps->seq_parameter_set_id != storage.activeSpsId;
    storage.activePpsId = ppsId;
    storage.activeSpsId = pps->seq_parameter_set_id;
    return Result::Ready;
}

// All or nothing: an attempt that fails gives back what it took.
bool Decoder::AllocateSequence(const SeqParamSet& sps) {
    if (sps.PicSizeInMbs() > MaxPictureMbs)
        return false;
    const PictureSize size{sps.picWidthInMbs, sps.picHeightInMbs};
    const DpbParameters parameters{std::max<u32>(sps.num_ref_frames, 1), sps.maxDpbSize, sps.MaxFrameNum,
                                   sps.NoReordering()};
    const u32 mark = pool.Used();
    Dpb dpb = storage.dpb;
    PoolArray<Macroblock> mbs = storage.mbs;
    PoolArray<u32> sliceMap = storage.sliceMap;
    if (!mbs.Reserve(pool, size.Mbs(), PoolId::Macroblocks) ||
        !sliceMap.Reserve(pool, size.Mbs(), PoolId::SliceMap) ||
        !dpb.Allocate(pool, size.Bytes(), parameters)) {
        pool.RewindTo(mark);
        return false;
    }
    storage.dpb = dpb;
    storage.mbs = mbs;
    storage.sliceMap = sliceMap;
    storage.size = size;
    storage.sliceId = storage.numDecodedMbs = 0;
    InitMacroblocks(mbs.data, size);
    return true;
}

// A slice of a new sequence: says whether the pictures that still wait are to be shown.
Result Decoder::AnnounceSequence(const BitReader& reader, const NalUnit& nalUnit) {
    const SeqParamSet& sps = *storage.ActiveSps();
    const DpbParameters& old = storage.dpb.Parameters();
    storage.dpb.flushed = false;
    const bool sameKind = !old.noReordering &&
                          storage.size == PictureSize{sps.picWidthInMbs, sps.picHeightInMbs} &&
                          old.maxDpbSize == sps.maxDpbSize;
    if (nalUnit.IsIdr() && sameKind) {
        BitReader copy = reader;
        SliceHeader& header = storage.NextHeader();
        if (h264DecodeSliceHeader(copy, &header, sps, *storage.ActivePps(), nalUnit) &&
            !header.marking.no_output_of_prior_pics_flag)
            storage.dpb.Flush();
    }
    return Result::HeadersReady;
}

// ---- Slices ----

Result Decoder::HandleSlice(BitReader& reader, const NalUnit& nalUnit, u32 picId) {
    if (storage.pictureComplete)
        return Result::Ready;
    storage.pictureOpen = true;
    if (!storage.sliceAccepted) {
        if (const Result result = StartPicture(reader, nalUnit, picId); result != Result::Ready)
            return result;
    }
    if (storage.pendingActivation)
        return Fail("Pending activation not completed");
    if (!h264DecodeSliceHeader(reader, &storage.NextHeader(), *storage.ActiveSps(), *storage.ActivePps(),
                               nalUnit))
        return Fail("SLICE_HEADER");
    if (!AcceptSlice(nalUnit))
        return Fail("Gaps in frame num");
    const SliceHeader& header = storage.CurrentHeader();
    BuildMap();
    if (!BuildLists())
        return Fail("Reordering");
    Log(LogEvent, DecodeTag, "SLICE DATA,FIRST %d", static_cast<int>(header.first_mb_in_slice));
    if (!h264DecodeSliceData(storage, reader, storage.currentImage, header, *routines)) {
        MarkSliceCorrupted(storage, header.first_mb_in_slice);
        return Fail("SLICE_DATA");
    }
    if (!PictureIsComplete())
        return Result::Ready;
    FinishPicture();
    storage.pictureComplete = true;
    return Result::PictureReady;
}

// At each slice until one is accepted: parameter sets.
Result Decoder::StartPicture(const BitReader& reader, const NalUnit& nalUnit, u32 picId) {
    storage.numConcealedMbs = 0;
    storage.picId = picId;
    u32 ppsId = 0;
    if (!PeekPicParamSetId(reader, &ppsId) || ppsId >= MaxPicParamSets)
        return Result::Error; // the boundary check has read it before
    const u32 oldSpsId = storage.activeSpsId;
    if (const Result result = h264ActivateParamSets(ppsId, nalUnit.IsIdr()); result != Result::Ready)
        return result;
    return storage.activeSpsId == oldSpsId ? Result::Ready : AnnounceSequence(reader, nalUnit);
}

// The header in the second record becomes the current one; the first of a picture opens its image.
bool Decoder::AcceptSlice(const NalUnit& nalUnit) {
    if (!storage.sliceAccepted) {
        const SeqParamSet& sps = *storage.ActiveSps();
        if (!nalUnit.IsIdr() &&
            !storage.dpb.CheckFrameNumGaps(storage.NextHeader().frame_num, nalUnit.IsReference(),
                                           sps.gaps_in_frame_num_value_allowed_flag))
            return false;
        storage.currentImage = {storage.dpb.TakeFreePicture()->data, storage.size};
    }
    storage.currentHeader = 1 - storage.currentHeader;
    storage.sliceAccepted = true;
    storage.nalUnit = nalUnit;
    return true;
}

void Decoder::BuildMap() {
    BuildSliceMap(*storage.ActivePps(), storage.size.widthInMbs, storage.size.heightInMbs,
                  storage.CurrentHeader().slice_group_change_cycle, storage.sliceMap.data);
}

bool Decoder::BuildLists() {
    const SliceHeader& header = storage.CurrentHeader();
    storage.dpb.InitRefList();
    return storage.dpb.ReorderRefList(header.reordering, header.frame_num, header.num_ref_idx_l0_active);
}

bool Decoder::PictureIsComplete() const {
    const u32 size = storage.size.Mbs();
    if (storage.headers[storage.currentHeader].IsPrimary())
        return storage.numDecodedMbs == size;
    return std::all_of(storage.mbs.data, storage.mbs.data + size,
                       [](const Macroblock& mb) { return mb.decoded > 0; });
}

void Decoder::FinishPicture() {
    DeblockPicture(storage.currentImage, storage.mbs.data, *routines);
    storage.sliceId = storage.numDecodedMbs = 0;
    for (u32 i = 0; i < storage.size.Mbs(); ++i)
        storage.mbs[i].sliceId = storage.mbs[i].decoded = 0;
    if (storage.sliceAccepted) {
        const SliceHeader& header = storage.CurrentHeader();
        const i32 picOrderCnt =
            storage.picOrderCounter.Advance(*storage.ActiveSps(), header, storage.nalUnit);
        storage.dpb.h264MarkDecRefPic(storage.nalUnit.IsReference() ? &header.marking : nullptr,
                                      storage.currentImage.data, header.frame_num, picOrderCnt,
                                      storage.nalUnit.IsIdr(), storage.picId, storage.numConcealedMbs);
    }
    storage.pictureOpen = storage.sliceAccepted = false;
}

} // namespace h264
