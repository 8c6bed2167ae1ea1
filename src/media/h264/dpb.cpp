// The decoded picture buffer. Sections: memory, order of the table, output, marking, gaps, reference lists.
#include "media/h264/dpb.h"

#include <algorithm>
#include <new>
#include <utility>

#include "foundation/log.h"

namespace h264 {

namespace {

// Behind each picture: room to align its start, and for vector code to read a little past its end.
constexpr u32 PictureSlack = 47;
constexpr uintptr_t PictureAlignment = 16;

u8* AlignedStart(u8* block) {
    const auto address = reinterpret_cast<uintptr_t>(block);
    const uintptr_t aligned = (address + PictureAlignment - 1) / PictureAlignment * PictureAlignment;
    return block + (aligned - address);
}

// Place of a record in the order of the table: class first, then number.
struct Rank {
    u32 group;
    i32 number;

    explicit Rank(const Picture& picture) {
        if (picture.IsShortTermLike())
            group = 0, number = -picture.picNum;
        else if (picture.IsLongTerm())
            group = 1, number = picture.picNum;
        else
            group = picture.toBeDisplayed ? 2 : 3, number = 0;
    }
    bool operator<(const Rank& other) const {
        return group != other.group ? group < other.group : number < other.number;
    }
};

} // namespace

// ---- Memory ----

bool Dpb::Allocate(Pool& pool, u32 pictureBytes, const DpbParameters& wanted) {
    const u32 records = wanted.DpbSize() + 1;
    if (!pictures.Reserve(pool, MaxRefFrames + 1, PoolId::PictureTable) ||
        !list.Reserve(pool, MaxRefListEntries, PoolId::RefList) ||
        !output.Reserve(pool, records, PoolId::OutputList))
        return false;
    for (u32 i = 0; i < records; ++i) {
        if (!buffers[i].Reserve(pool, pictureBytes + PictureSlack, PoolId::PictureBuffer))
            return false;
    }
    for (u32 i = 0; i <= MaxRefFrames; ++i) {
        Picture& picture = *new (&pictures[i]) Picture;
        if (i >= records)
            continue;
        picture.allocated = buffers[i].data;
        picture.data = AlignedStart(picture.allocated);
        picture.bufferId = static_cast<u8>(i);
    }
    std::fill(list.data, list.data + MaxRefListEntries, nullptr);
    parameters = wanted;
    dpbSize = wanted.DpbSize();
    current = nullptr;
    numOut = outIndex = numRefFrames = fullness = prevRefFrameNum = 0;
    maxLongTermFrameIdx = NoLongTermFrameIndices;
    lastContainsMmco5 = false;
    return true;
}

Picture* Dpb::TakeFreePicture() {
    current = &pictures[dpbSize];
    return current;
}

// ---- Order of the table ----

// A shell sort, as fits so few records that are nearly in order.
void Dpb::Sort() {
    for (u32 gap : {7u, 3u, 1u}) {
        for (u32 i = gap; i < Records(); ++i) {
            const Picture moving = pictures[i];
            u32 place = i;
            for (; place >= gap && Rank(moving) < Rank(pictures[place - gap]); place -= gap)
                pictures[place] = pictures[place - gap];
            pictures[place] = moving;
        }
    }
}

// ---- Output ----

void Dpb::PushOutput(const Picture& picture) {
    if (outIndex == numOut)
        outIndex = numOut = 0;
    if (numOut < Records())
        output[numOut++] = {picture.data, picture.picId, picture.numErrMbs, picture.isIdr};
}

// The bumping of C.4.5.3: by picture order count.
bool Dpb::OutputOne() {
    if (parameters.noReordering)
        return false;
    Picture* first = nullptr;
    for (u32 i = 0; i < Records(); ++i) {
        Picture& picture = pictures[i];
        if (picture.toBeDisplayed && (first == nullptr || picture.picOrderCnt < first->picOrderCnt))
            first = &picture;
    }
    if (first == nullptr)
        return false;
    PushOutput(*first);
    first->toBeDisplayed = false;
    if (!first->IsReference())
        --fullness;
    return true;
}

const OutputPicture* Dpb::NextOutput() {
    if (dpbSize == 0)
        return nullptr;
    while (OutputOne()) {
    }
    if (outIndex < numOut)
        return &output[outIndex++];
    outIndex = numOut = 0;
    return nullptr;
}

void Dpb::Flush() {
    flushed = true;
    while (OutputOne()) {
    }
}

// ---- Marking (8.2.5) ----

bool Dpb::h264MarkDecRefPic(const DecRefPicMarking* mark, const u8* image, u32 frameNum, i32 picOrderCnt,
                            bool isIdr, u32 picId, u32 numErrMbs) {
    if (current == nullptr || image != current->data) {
        Log(LogError, "Ch264VideoDecoder::h264MarkDecRefPic", "TRYING TO MARK NON-ALLOCATED IMAGE");
        return false;
    }
    lastContainsMmco5 = false;
    Incoming incoming{frameNum, picOrderCnt, !parameters.noReordering, false};
    bool marked = true;
    if (mark == nullptr)
        StoreNonReference(incoming);
    else if (isIdr)
        MarkIdr(*mark);
    else if (mark->adaptive_ref_pic_marking_mode_flag)
        marked = MarkAdaptive(*mark, incoming);
    else
        marked = SlidingWindow() && StoreReference(RefStatus::ShortTerm, &incoming);
    current->isIdr = isIdr;
    current->picId = picId;
    current->numErrMbs = numErrMbs;
    if (parameters.noReordering)
        PushOutput(*current);
    while (!parameters.noReordering && fullness > dpbSize && OutputOne()) {
    }
    current = nullptr;
    Sort();
    return marked;
}

void Dpb::StoreNonReference(const Incoming& picture) {
    current->status = RefStatus::Unused;
    current->frameNum = picture.frameNum;
    current->picNum = static_cast<i32>(picture.frameNum);
    current->picOrderCnt = picture.picOrderCnt;
    current->toBeDisplayed = picture.toBeDisplayed;
    if (!parameters.noReordering)
        ++fullness;
}

bool Dpb::StoreReference(RefStatus status, Incoming* picture) {
    if (numRefFrames >= parameters.maxRefFrames)
        return false;
    current->status = status;
    current->frameNum = picture->frameNum;
    current->picNum = static_cast<i32>(picture->frameNum);
    current->picOrderCnt = picture->picOrderCnt;
    current->toBeDisplayed = picture->toBeDisplayed;
    ++numRefFrames;
    ++fullness;
    picture->stored = true;
    return true;
}

// 8.2.5.1: nothing before an IDR picture remains.
void Dpb::MarkIdr(const DecRefPicMarking& mark) {
    UnmarkAll();
    if (mark.no_output_of_prior_pics_flag || parameters.noReordering)
        numOut = outIndex = 0;
    const bool longTerm = mark.long_term_reference_flag;
    current->status = longTerm ? RefStatus::LongTerm : RefStatus::ShortTerm;
    maxLongTermFrameIdx = longTerm ? 0 : NoLongTermFrameIndices;
    current->frameNum = 0;
    current->picNum = 0;
    current->picOrderCnt = 0;
    current->toBeDisplayed = !parameters.noReordering;
    numRefFrames = fullness = 1;
}

// IDR picture or operation 5: all marks go, all waiting pictures leave, counting starts again.
void Dpb::UnmarkAll() {
    numOut = outIndex = 0;
    for (u32 i = 0; i < Records(); ++i) {
        if (pictures[i].IsReference())
            Unmark(pictures[i]);
    }
    while (OutputOne()) {
    }
    maxLongTermFrameIdx = NoLongTermFrameIndices;
    prevRefFrameNum = 0;
}

void Dpb::Unmark(Picture& picture) {
    picture.status = RefStatus::Unused;
    --numRefFrames;
    if (!picture.toBeDisplayed)
        --fullness;
}

// 8.2.5.3
bool Dpb::SlidingWindow() {
    if (numRefFrames < parameters.maxRefFrames)
        return true;
    Picture* oldest = nullptr;
    for (u32 i = 0; i < numRefFrames; ++i) {
        Picture& picture = pictures[i];
        if (picture.IsShortTermLike() && (oldest == nullptr || picture.picNum < oldest->picNum))
            oldest = &picture;
    }
    if (oldest == nullptr)
        return false;
    Unmark(*oldest);
    return true;
}

// 8.2.5.4
bool Dpb::MarkAdaptive(const DecRefPicMarking& mark, Incoming picture) {
    for (const MarkingOperation& operation : mark.operations) {
        if (operation.memory_management_control_operation == 0)
            break;
        if (!ApplyOperation(operation, &picture))
            return false;
    }
    return picture.stored || StoreReference(RefStatus::ShortTerm, &picture);
}

bool Dpb::ApplyOperation(const MarkingOperation& operation, Incoming* picture) {
    const i32 picNumX = static_cast<i32>(picture->frameNum - operation.difference_of_pic_nums);
    switch (operation.memory_management_control_operation) {
    case 1:
        return UnmarkShortTerm(picNumX);
    case 2:
        return UnmarkLongTerm(operation.long_term_pic_num);
    case 3:
        return AssignLongTerm(picNumX, operation.long_term_frame_idx);
    case 4:
        LimitLongTerm(operation.max_long_term_frame_idx);
        return true;
    case 5:
        UnmarkAll();
        lastContainsMmco5 = true;
        picture->frameNum = 0;
        return true;
    case 6:
        return CurrentToLongTerm(operation.long_term_frame_idx, picture);
    default:
        return false;
    }
}

Picture* Dpb::FindShortTerm(i32 picNum) {
    for (u32 i = 0; i < Records(); ++i) {
        if (pictures[i].IsShortTermLike() && pictures[i].picNum == picNum)
            return &pictures[i];
    }
    return nullptr;
}

Picture* Dpb::FindLongTerm(u32 longTermPicNum) {
    for (u32 i = 0; i < Records(); ++i) {
        if (pictures[i].IsLongTerm() && static_cast<u32>(pictures[i].picNum) == longTermPicNum)
            return &pictures[i];
    }
    return nullptr;
}

// 8.2.5.4.1
bool Dpb::UnmarkShortTerm(i32 picNum) {
    Picture* picture = FindShortTerm(picNum);
    if (picture != nullptr)
        Unmark(*picture);
    return picture != nullptr;
}

// 8.2.5.4.2
bool Dpb::UnmarkLongTerm(u32 longTermPicNum) {
    Picture* picture = FindLongTerm(longTermPicNum);
    if (picture != nullptr)
        Unmark(*picture);
    return picture != nullptr;
}

bool Dpb::LongTermIndexValid(u32 index) const {
    return maxLongTermFrameIdx != NoLongTermFrameIndices && index <= maxLongTermFrameIdx;
}

// 8.2.5.4.3
bool Dpb::AssignLongTerm(i32 picNum, u32 longTermFrameIdx) {
    if (!LongTermIndexValid(longTermFrameIdx))
        return false;
    UnmarkLongTerm(longTermFrameIdx);
    Picture* picture = FindShortTerm(picNum);
    if (picture == nullptr || picture->status == RefStatus::NonExisting)
        return false;
    picture->status = RefStatus::LongTerm;
    picture->frameNum = longTermFrameIdx;
    picture->picNum = static_cast<i32>(longTermFrameIdx);
    return true;
}

// 8.2.5.4.4
void Dpb::LimitLongTerm(u32 maxIdx) {
    maxLongTermFrameIdx = maxIdx;
    for (u32 i = 0; i < Records(); ++i) {
        Picture& picture = pictures[i];
        const bool above = maxIdx == NoLongTermFrameIndices || static_cast<u32>(picture.picNum) > maxIdx;
        if (picture.IsLongTerm() && above)
            Unmark(picture);
    }
}

// 8.2.5.4.6
bool Dpb::CurrentToLongTerm(u32 longTermFrameIdx, Incoming* picture) {
    if (!LongTermIndexValid(longTermFrameIdx))
        return false;
    UnmarkLongTerm(longTermFrameIdx);
    Incoming longTerm = *picture;
    longTerm.frameNum = longTermFrameIdx;
    picture->stored = StoreReference(RefStatus::LongTerm, &longTerm);
    return picture->stored;
}

// ---- Gaps in frame_num (8.2.5.2) ----

bool Dpb::InsertNonExisting(u32 frameNum) {
    UpdatePicNums(frameNum);
    if (!SlidingWindow())
        return false;
    while (fullness >= dpbSize && OutputOne()) {
    }
    Picture& picture = pictures[dpbSize];
    picture.status = RefStatus::NonExisting;
    picture.frameNum = frameNum;
    picture.picNum = static_cast<i32>(frameNum);
    picture.picOrderCnt = 0;
    picture.toBeDisplayed = false;
    ++fullness;
    ++numRefFrames;
    Sort();
    return true;
}

// A picture that left for output in the gap may have given its buffer to the free record. Nothing may be
// decoded into it before it is shown: the buffer that the free record held `before` takes its place.
void Dpb::KeepShownBufferWhole(Picture before) {
    Picture& free = pictures[dpbSize];
    const bool waits = std::any_of(output.data + outIndex, output.data + numOut,
                                   [&](const OutputPicture& entry) { return entry.data == free.data; });
    if (!waits)
        return;
    for (u32 i = 0; i < dpbSize; ++i) {
        if (pictures[i].data != before.data)
            continue;
        std::swap(pictures[i].data, free.data);
        std::swap(pictures[i].allocated, free.allocated);
        std::swap(pictures[i].bufferId, free.bufferId);
        return;
    }
}

// Of a long gap only the last numbers can stay in the window, so that the first need not pass through it.
bool Dpb::FillGap(u32 frameNum) {
    constexpr u32 NumbersThatMatter = 2 * (MaxRefFrames + 1);
    const Picture freeBefore = pictures[dpbSize];
    const u32 maxFrameNum = parameters.maxFrameNum;
    const u32 missingNumbers = (frameNum + maxFrameNum - prevRefFrameNum - 1) % maxFrameNum;
    for (u32 left = std::min(missingNumbers, NumbersThatMatter); left > 0; --left) {
        if (!InsertNonExisting((frameNum + maxFrameNum - left) % maxFrameNum))
            return false;
    }
    KeepShownBufferWhole(freeBefore);
    return true;
}

// 8.2.5.2
bool Dpb::CheckFrameNumGaps(u32 frameNum, bool isRefPic, bool gapsAllowed) {
    numOut = outIndex = 0;
    if (!gapsAllowed)
        return true;
    const u32 maxFrameNum = parameters.maxFrameNum;
    const bool gap = frameNum != prevRefFrameNum && frameNum != (prevRefFrameNum + 1) % maxFrameNum;
    if (gap ? !FillGap(frameNum) : isRefPic && frameNum == prevRefFrameNum)
        return false;
    if (isRefPic)
        prevRefFrameNum = frameNum;
    else if (frameNum != prevRefFrameNum)
        prevRefFrameNum = (frameNum + maxFrameNum - 1) % maxFrameNum;
    return true;
}

// ---- Reference lists (8.2.4) ----

// 8.2.4.2.1: the table stands in that order.
void Dpb::InitRefList() {
    for (u32 i = 0; i < MaxRefListEntries; ++i)
        list[i] = i < numRefFrames ? &pictures[i] : nullptr;
}

// 8.2.4.1: FrameNumWrap
void Dpb::UpdatePicNums(u32 currentFrameNum) {
    for (u32 i = 0; i < numRefFrames; ++i) {
        Picture& picture = pictures[i];
        if (picture.IsShortTermLike())
            picture.picNum =
                static_cast<i32>(picture.frameNum) -
                (picture.frameNum > currentFrameNum ? static_cast<i32>(parameters.maxFrameNum) : 0);
    }
}

// 8.2.4.3.1 and 8.2.4.3.2: the picture that a command means, or null. `predicted` is picNumL0Pred.
const Picture* Dpb::FindForReordering(const ReorderingCommand& command, i32* predicted,
                                      i32 currPicNum) const {
    const bool longTerm = command.reordering_of_pic_nums_idc == 2;
    i32 wanted = static_cast<i32>(command.long_term_pic_num);
    if (!longTerm) {
        const i32 maxFrameNum = static_cast<i32>(parameters.maxFrameNum);
        const i32 difference = static_cast<i32>(command.abs_diff_pic_num);
        const i32 step = command.reordering_of_pic_nums_idc == 0 ? -difference : difference;
        *predicted = (*predicted + step + maxFrameNum) % maxFrameNum; // picNumL0NoWrap
        wanted = *predicted > currPicNum ? *predicted - maxFrameNum : *predicted;
    }
    for (u32 i = 0; i < std::min(parameters.maxRefFrames, Records()); ++i) {
        const Picture& picture = pictures[i];
        if (picture.picNum == wanted && picture.IsReference() && picture.IsLongTerm() == longTerm)
            return picture.status >= RefStatus::ShortTerm ? &picture : nullptr;
    }
    return nullptr;
}

// 8.2.4.3.1: the picture takes its place, later entries move on, and its old entry goes.
void Dpb::InsertIntoList(const Picture* picture, u32 index, u32 numActive) {
    for (u32 i = numActive; i > index; --i)
        list[i] = list[i - 1];
    list[index] = picture;
    u32 place = index + 1;
    for (u32 i = index + 1; i <= numActive; ++i) {
        if (list[i] != picture)
            list[place++] = list[i];
    }
}

// 8.2.4.3
bool Dpb::ReorderRefList(const RefPicListReordering& commands, u32 frameNum, u32 numActive) {
    UpdatePicNums(frameNum);
    if (!commands.ref_pic_list_reordering_flag)
        return true;
    i32 predicted = static_cast<i32>(frameNum);
    u32 index = 0;
    for (const ReorderingCommand& command : commands.commands) {
        constexpr u32 EndOfReordering = 3;
        if (command.reordering_of_pic_nums_idc == EndOfReordering || index >= numActive)
            break;
        const Picture* picture = FindForReordering(command, &predicted, static_cast<i32>(frameNum));
        if (picture == nullptr)
            return false;
        InsertIntoList(picture, index++, numActive);
    }
    return true;
}

} // namespace h264
