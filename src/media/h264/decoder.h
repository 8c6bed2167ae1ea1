// The H.264 baseline decoder (ITU-T H.264, ISO/IEC 14496-10): I and P slices, CAVLC, flexible macroblock
// ordering, arbitrary slice order, redundant slices, frames only. It stands alone: no threads, no allocation,
// all memory from the one block that it is given.
//
// Whoever owns it feeds byte stream data to DecodeAccessUnit() and shows what comes out. docs/video.md
// describes the stages and the files that they lie in.
#pragma once

#include "media/h264/sample_routines.h"
#include "media/h264/storage.h"

namespace h264 {

constexpr u32 PoolBytes = 2097152; // what the decoder is meant to live in

// What DecodeAccessUnit() returns.
enum class AccessUnitResult : int {
    Picture = 0,   // a picture is ready
    NoPicture = 1, // the buffer was used up
    NoInput = 2    // there was no input, or memory or parameter sets are missing
};

// A picture as it leaves: Y, Cb, Cr behind each other, multiples of 16 wide and high, not cropped. Valid
// until the next call.
struct DecodedPicture {
    const u8* planes = nullptr; // borrowed; width * height * 3 / 2 bytes
    u32 width = 0;              // luma samples
    u32 height = 0;
    CropWindow crop; // the whole picture where the stream has no cropping
    u32 picId = 0;
    u32 numErrMbs = 0; // concealed macroblocks
    bool isIdr = false;
};

class Decoder {
public:
    // Borrows `size` bytes at `base`, aligned to 16, for as long as the decoder is used, and starts anew.
    void InitDecoder(u8* base, u32 size);

    // Decodes from `buffer`, which must stay and is changed by the decoding, up to the next picture or its
    // end. A null buffer goes on with what is left of the previous one. A new buffer drops that rest: as long
    // as HasPendingInput(), go on with null first.
    AccessUnitResult DecodeAccessUnit(u8* buffer, u32 size);
    bool HasPendingInput() const { return inputLeft > 0; }
    const DecodedPicture& OutputPicture() const { return outputPicture; }

    // Decodes one NAL unit, and tells in `readBytes` how many bytes it took, start code included. `picId` is
    // stored with the picture at its first slice.
    Result h264Decode(u8* stream, u32 length, u32 picId, u32* readBytes);

    // Takes width, height and cropping of the active sequence.
    void ReadStreamGeometry();

    // For statistics: NAL units that were dropped since InitDecoder().
    u32 DroppedUnits() const { return droppedUnits; }
    const Pool& Memory() const { return pool; }
    // Tests put the plain routines in place of the best.
    void UseRoutines(const SampleRoutines& chosen) { routines = &chosen; }

private:
    // The unit that was extracted last, kept while its decoding has to wait.
    struct KeptUnit {
        const u8* stream = nullptr;
        u32 readBytes = 0;
        NalBytes bytes;
        bool waits = false;
    };

    bool TakeOutput();
    bool AnyUsableParamSets() const;
    Result DecodeUnit(u32 picId, u32* readBytes);
    Result KeepUnit(Result result, u32* readBytes);

    Result CheckAccessUnitBoundary(const BitReader& reader, const NalUnit& nalUnit, bool* boundary);
    Result PictureOfSlice(const BitReader& reader, const NalUnit& nalUnit, PictureIdentity* identity) const;
    Result CloseOpenPicture();

    Result HandleSeqParamSet(BitReader& reader);
    bool StoreSeqParamSet(SeqParamSet& sps, const i32* offsetForRefFrame);
    Result HandlePicParamSet(BitReader& reader);
    bool StorePicParamSet(PicParamSet& pps, const BitReader& sliceGroupIds);

    Result h264ActivateParamSets(u32 ppsId, bool isIdr);
    Result TryActivation(u32 ppsId, bool isIdr);
    bool AllocateSequence(const SeqParamSet& sps);
    Result AnnounceSequence(const BitReader& reader, const NalUnit& nalUnit);

    Result HandleSlice(BitReader& reader, const NalUnit& nalUnit, u32 picId);
    Result StartPicture(const BitReader& reader, const NalUnit& nalUnit, u32 picId);
    bool AcceptSlice(const NalUnit& nalUnit);
    bool BuildLists();
    void BuildMap();
    bool PictureIsComplete() const;
    void FinishPicture();

    Pool pool;
    Storage storage;
    const SampleRoutines* routines = &BestRoutines();
    KeptUnit kept;

    u8* input = nullptr; // borrowed
    u32 inputLeft = 0;   // bytes
    u32 nextPicId = 0;
    bool geometryPending =
        false; // the last picture of the old sequence went out before the new size was read
    u32 streamWidth = 0;
    u32 streamHeight = 0;
    CropWindow streamCrop;
    DecodedPicture outputPicture;
    u32 droppedUnits = 0;
};

} // namespace h264
