// The entry of the application's cache of decoded pictures. Elements show a cached picture and never own it.
#pragma once

#include "foundation/map.h"
#include "foundation/string.h"
#include "gui/image.h"

struct CVrGuiImageCacheData {
    CVrxStringU name;    // where the picture came from
    CVrGuiImage image;   // 24 bits a pixel
    bool loaded = false; // `image` is valid
};

// Pictures by key: see CoverKey, or (id of a list) * 65,536 + (index of its entry).
using CVrImageCache = CVrTypedMapIntToPtr<CVrGuiImageCacheData>;

namespace CoverKey {
constexpr int32_t kFirstDefault = 700;
constexpr int32_t kDefaultCount = 10;
constexpr int32_t kPairingPicture = 900; // nobody loads it
} // namespace CoverKey
