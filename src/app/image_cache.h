// How the cache of decoded pictures is filled: the ten default covers of the music pages, which are JPEG files of the
// data folder, and the choice among them. A picture is decoded once at most.
#pragma once

#include "gui/image_cache_data.h"

// Loads a default cover into the cache, unless it is there already; keys that are no default cover are left alone. The
// first cover has a second source within the program itself. What cannot be read or decoded leaves no entry, and the
// next request tries again.
void LoadDefaultCover(CVrImageCache& cache, int32_t key);

// Deals out the default covers like cards: each appears once before any appears again.
class CVrCoverPicker {
public:
    int32_t Next(); // a key

private:
    void Shuffle();
    uint32_t Random(); // 0..2^32-1

    int32_t m_bag[CoverKey::kDefaultCount] = {};  // numbers 0..9
    int32_t m_position = CoverKey::kDefaultCount; // of the next number in the bag; at its end: shuffle
    uint32_t m_generator = 0;                     // 0: not seeded yet
};
