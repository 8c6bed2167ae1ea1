// The choice among the tables of sample routines.
#include "media/h264/sample_routines.h"

namespace h264 {

const SampleRoutines& BestRoutines() {
    static const SampleRoutines& best = []() -> const SampleRoutines& {
        if (const SampleRoutines* avx2 = Avx2Routines())
            return *avx2;
        if (const SampleRoutines* sse2 = Sse2Routines())
            return *sse2;
        return PlainRoutines();
    }();
    return best;
}

} // namespace h264
