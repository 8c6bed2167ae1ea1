#include "app/image_cache.h"

#include "foundation/byte_array.h"
#include "foundation/clock.h"
#include "foundation/files.h"
#include "media/jpeg/jpeg.h"

#include <utility>

namespace {

constexpr uint32_t kSeedForZero = 2'654'435'769; // 2^32 divided by the golden ratio
constexpr uint32_t kFactor = 1'664'525;          // of the linear congruential generator
constexpr uint32_t kIncrement = 1'013'904'223;

bool Decode(const uint8_t* data, uint32_t size, CVrGuiImage& image) {
    CJpeg decoder;
    uint8_t* pixels = size > 0 ? decoder.LoadJpeg(data, size) : nullptr;
    if (pixels)
        image.Adopt(pixels, decoder.width, decoder.height);
    return pixels != nullptr;
}

bool LoadFromFile(int32_t number, CVrGuiImageCacheData& entry) {
    CVrxStringU fileName;
    fileName.Format("cover/default_%d.jpg", number);
    entry.name.Format("cover_default_%d", number);
    CVrxByteArray file;
    return LoadArrayFromFile(GetDataFilePath(fileName.CStr()).CStr(), file) &&
           Decode(file.GetData(), file.GetSize(), entry.image);
}

bool LoadBuiltIn(CVrGuiImageCacheData& entry) {
    entry.name = "cover_default";
    uint32_t size = 0;
    const uint8_t* data = GetResource(ResourceDefaultCover, size);
    return Decode(data, size, entry.image);
}

} // namespace

void LoadDefaultCover(CVrImageCache& cache, int32_t key) {
    const int64_t number = int64_t{key} - CoverKey::kFirstDefault;
    if (number < 0 || number >= CoverKey::kDefaultCount)
        return;
    CVrGuiImageCacheData* known = cache.Lookup(key);
    if (known && known->loaded)
        return;
    CVrGuiImageCacheData* entry = known ? known : new CVrGuiImageCacheData;
    entry->loaded =
        LoadFromFile(static_cast<int32_t>(number), *entry) || (number == 0 && LoadBuiltIn(*entry));
    if (!known && !(entry->loaded && cache.SetAt(key, entry)))
        delete entry;
}

// ---- The picker ----

uint32_t CVrCoverPicker::Random() {
    if (m_generator == 0) {
        // Neither the time since the start nor the place in memory is the same in two runs.
        const auto place = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(this));
        m_generator = static_cast<uint32_t>(TickMs() ^ place >> 4);
    }
    if (m_generator == 0)
        m_generator = kSeedForZero;
    m_generator = m_generator * kFactor + kIncrement;
    return m_generator;
}

void CVrCoverPicker::Shuffle() {
    for (int32_t i = 0; i < CoverKey::kDefaultCount; i++)
        m_bag[i] = i;
    for (int32_t i = CoverKey::kDefaultCount - 1; i > 0; i--)
        std::swap(m_bag[i], m_bag[Random() % static_cast<uint32_t>(i + 1)]);
    m_position = 0;
}

int32_t CVrCoverPicker::Next() {
    if (m_position >= CoverKey::kDefaultCount)
        Shuffle();
    return CoverKey::kFirstDefault + m_bag[m_position++];
}
