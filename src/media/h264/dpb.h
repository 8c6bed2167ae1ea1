// The decoded picture buffer: which pictures are kept for reference (clause 8.2.5), in which order a P slice
// refers to them (8.2.4), and when they leave for output.
//
// The records stand in a table of dpbSize + 1, sorted so:
//
//     short-term and non-existing pictures, picNum falling | long-term pictures, picNum rising |
//     unmarked pictures that wait for output | free records
//
// The record at index dpbSize is therefore always free; the next picture is decoded into it.
#pragma once

#include "media/h264/image.h"
#include "media/h264/pool.h"
#include "media/h264/slice_header.h"

namespace h264 {

enum class RefStatus : u8 { Unused = 0, NonExisting = 1, ShortTerm = 2, LongTerm = 3 };

struct Picture {
    u8* data = nullptr;      // aligned start of the picture's buffer
    u8* allocated = nullptr; // start of the block from the pool
    u8 bufferId = 0;         // number of the buffer; moves with it
    i32 picNum = 0;          // relative to the current frame_num; of long-term pictures the long-term index
    u32 frameNum = 0;        // frame_num or long-term index
    i32 picOrderCnt = 0;
    RefStatus status = RefStatus::Unused;
    bool toBeDisplayed = false; // waits for output
    u32 picId = 0;              // the caller's
    u32 numErrMbs = 0;          // concealed macroblocks
    bool isIdr = false;

    bool IsReference() const { return status != RefStatus::Unused; }
    // Short-term or non-existing: what picNum counts and the sliding window moves over.
    bool IsShortTermLike() const {
        return status == RefStatus::NonExisting || status == RefStatus::ShortTerm;
    }
    bool IsLongTerm() const { return status == RefStatus::LongTerm; }
    // May samples be predicted from it?
    bool IsUsable() const { return status >= RefStatus::ShortTerm && data != nullptr; }
};

struct OutputPicture {
    const u8* data = nullptr;
    u32 picId = 0;
    u32 numErrMbs = 0;
    bool isIdr = false;
};

// What a sequence asks of the buffer.
struct DpbParameters {
    u32 maxRefFrames = 1; // num_ref_frames, at least 1
    u32 maxDpbSize = 1;   // pictures
    u32 maxFrameNum = 16;
    bool noReordering = false;

    // With pictures that leave in decoding order only the references need a place.
    u32 DpbSize() const { return noReordering || maxDpbSize < maxRefFrames ? maxRefFrames : maxDpbSize; }
};

class Dpb {
public:
    // Takes all memory of a sequence from the pool; arrays of an earlier sequence that are large enough are
    // used again. False when the pool does not suffice.
    bool Allocate(Pool& pool, u32 pictureBytes, const DpbParameters& parameters);

    // The free picture that is decoded next becomes the current one.
    Picture* TakeFreePicture();
    Picture* Current() const { return current; }

    // Stores the finished picture. `mark` is null for a picture that nothing refers to. False when the
    // marking is contradictory; the picture is lost then, unless nothing is reordered.
    bool h264MarkDecRefPic(const DecRefPicMarking* mark, const u8* image, u32 frameNum, i32 picOrderCnt,
                           bool isIdr, u32 picId, u32 numErrMbs);

    // 8.2.5.2, at the first slice of a non-IDR picture: makes the non-existing pictures of a gap. False when
    // the frame number contradicts the previous one.
    bool CheckFrameNumGaps(u32 frameNum, bool isRefPic, bool gapsAllowed);

    // 8.2.4.2.1: the initial list.
    void InitRefList();
    // 8.2.4.3, at every slice. False when a command names a picture that is not there.
    bool ReorderRefList(const RefPicListReordering& commands, u32 frameNum, u32 numActive);
    const Picture* Reference(u32 refIdx) const { return list[refIdx]; }

    // Moves the waiting picture that is next in output order to the output list; true if there was one.
    bool OutputOne();
    // Moves all waiting pictures there, and hands out the next entry, or null.
    const OutputPicture* NextOutput();
    // All waiting pictures go to the output list; they are the last of their sequence.
    void Flush();
    bool HasOutput() const { return outIndex < numOut; }

    bool flushed = false;
    const DpbParameters& Parameters() const { return parameters; }
    bool LastContainsMmco5() const { return lastContainsMmco5; }

private:
    // The finished picture on its way into the table.
    struct Incoming {
        u32 frameNum;
        i32 picOrderCnt;
        bool toBeDisplayed;
        bool stored; // the marking found a place for it
    };

    void MarkIdr(const DecRefPicMarking& mark);
    bool MarkAdaptive(const DecRefPicMarking& mark, Incoming picture);
    bool ApplyOperation(const MarkingOperation& operation, Incoming* picture);
    bool UnmarkShortTerm(i32 picNum);
    bool UnmarkLongTerm(u32 longTermPicNum);
    bool AssignLongTerm(i32 picNum, u32 longTermFrameIdx);
    void LimitLongTerm(u32 maxIdx);
    void UnmarkAll();
    bool CurrentToLongTerm(u32 longTermFrameIdx, Incoming* picture);
    bool LongTermIndexValid(u32 index) const;
    void StoreNonReference(const Incoming& picture);
    bool StoreReference(RefStatus status, Incoming* picture);
    bool SlidingWindow();
    void Unmark(Picture& picture);
    void UpdatePicNums(u32 currentFrameNum);
    bool InsertNonExisting(u32 frameNum);
    bool FillGap(u32 frameNum);
    void KeepShownBufferWhole(Picture before);
    Picture* FindShortTerm(i32 picNum);
    Picture* FindLongTerm(u32 longTermPicNum);
    const Picture* FindForReordering(const ReorderingCommand& command, i32* predicted, i32 currPicNum) const;
    void InsertIntoList(const Picture* picture, u32 index, u32 numActive);
    void PushOutput(const Picture& picture);
    void Sort();
    u32 Records() const { return dpbSize + 1; }

    PoolArray<Picture> pictures;
    PoolArray<const Picture*> list; // null: no picture
    PoolArray<OutputPicture> output;
    PoolArray<u8> buffers[MaxRefFrames + 1];
    Picture* current = nullptr;
    DpbParameters parameters;
    u32 dpbSize = 0;
    u32 numOut = 0;   // entries of the output list
    u32 outIndex = 0; // the next one to hand out
    u32 maxLongTermFrameIdx = NoLongTermFrameIndices;
    u32 numRefFrames = 0; // marked records
    u32 fullness = 0;     // records that are marked or wait for output
    u32 prevRefFrameNum = 0;
    bool lastContainsMmco5 = false;
};

} // namespace h264
