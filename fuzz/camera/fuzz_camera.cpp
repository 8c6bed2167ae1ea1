// Feeds arbitrary bytes to the camera client as a camera would. The first two bytes choose in which pieces the
// network delivers them and how often the decoder takes a unit.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "foundation/log.h"
#include "media/cam_client.h"

namespace {

volatile unsigned sink;

class FedClient : public CCamClient {
public:
    FedClient(const std::uint8_t* data, std::size_t size, unsigned piece, unsigned takeEvery)
        : next(data), left(size), pieceBytes(piece), unitsPerTake(takeEvery) {}

    void Run() {
        while (ReceivePass())
            CheckRing();
        for (Unit unit; PeekUnit(&unit); ReleaseUnit())
            Touch(unit);
    }

protected:
    std::int32_t ReceiveBytes(std::uint8_t* buffer, std::uint32_t size) override {
        if (left == 0)
            return -1;
        const auto count = static_cast<std::uint32_t>(std::min<std::size_t>({left, size, pieceBytes}));
        std::memcpy(buffer, next, count);
        next += count;
        left -= count;
        return static_cast<std::int32_t>(count);
    }

    void PauseAfterUnit() override {
        Unit unit;
        if (unitsPerTake == 0 || ++units % unitsPerTake != 0 || !PeekUnit(&unit))
            return;
        Touch(unit);
        ReleaseUnit();
    }

private:
    static void Touch(const Unit& unit) {
        unsigned sum = 0;
        for (std::uint32_t i = 0; i < unit.size; i++)
            sum += unit.bytes[i]++;
        sink = sum;
    }
    void CheckRing() const {
        if (readIndex >= kRingSlots || writeIndex >= kRingSlots || audioIn.Held() > CVrAudioRing::kBytes)
            std::abort();
    }

    const std::uint8_t* next;
    std::size_t left;
    std::size_t pieceBytes;
    unsigned unitsPerTake;
    unsigned units = 0;
};

void IgnoreLine(const char*) {
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kChoiceBytes = 2;
    if (size < kChoiceBytes)
        return 0;
    SetLogSlot(IgnoreLine);
    SetLogLevel(LogTrace);
    FedClient client(data + kChoiceBytes, size - kChoiceBytes, data[0] + 1U, data[1] % 4U);
    client.Run();
    return 0;
}
