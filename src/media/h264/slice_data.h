// slice_data() of clause 7.3.4: the macroblocks of a slice, one after the other.
#pragma once

#include "media/h264/bits.h"
#include "media/h264/sample_routines.h"
#include "media/h264/storage.h"

namespace h264 {

// Decodes the slice behind `header` into `currentImage`. The slice map and the reference list must be ready.
// True when the slice ended well.
bool h264DecodeSliceData(Storage& storage, BitReader& stream, const Image& currentImage,
                         const SliceHeader& header, const SampleRoutines& routines);

// Takes back what is in doubt after a failure in the slice data: all of a P slice, the last macroblocks of an
// I slice. They count as not decoded then.
void MarkSliceCorrupted(Storage& storage, u32 first_mb_in_slice);

} // namespace h264
