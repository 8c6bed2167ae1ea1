#include "media/h264/sample_routines.h"
namespace h264 {
const SampleRoutines* Sse2Routines() {
    return nullptr;
}
const SampleRoutines* Avx2Routines() {
    return nullptr;
}
} // namespace h264
