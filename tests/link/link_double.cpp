// The display's host link with a double for the application: a thread that sends a frame for every event and,
// when the first text of command 3 is "flood", frames and log lines without a pause.
#include <atomic>
#include <vector>

#include "foundation/clock.h"
#include "foundation/thread.h"
#include "host/link.h"
#include "platform/event.h"

namespace {

constexpr uint32_t kFrameBytes = 784 * 784 * 4;

class Chatterer : public CHostedApplication, private CVrThread {
public:
    explicit Chatterer(const CHostSlots& slots) : m_slots(slots), m_frame(kFrameBytes, 0x32) {}
    ~Chatterer() override { Join(); }

    void Load(const CHostTexts& texts) override {
        m_isFlooding = strcmp(texts.categories, "flood") == 0;
        Start();
    }
    void PostTouch(uint32_t type, CVrPoint point) override {
        Log(LogEvent, "CVrGuiApp::TouchEvent", "%d/%d %08x gesture %08x", point.x, point.y, type, 0u);
        m_event.Set();
    }
    void PostRepaint() override { m_event.Set(); }
    void RequestStop() override { CVrThread::RequestStop(); }
    bool HasEnded() const override { return !HasThread(); }

    static void Dispatch(uint32_t command, const CVrxByteArray& payload) {
        Log(LogError, "Double", "dispatched %u with %u bytes", command, payload.GetSize());
    }

private:
    void MainLoop() override {
        m_event.Set();
        while (!IsStopRequested()) {
            if (!m_event.Wait(10) && !m_isFlooding)
                continue;
            m_event.Reset();
            m_slots.drain();
            Log(LogState, "Double", "frame %u", m_count++);
            m_slots.frame(m_frame.data(), kFrameBytes);
            m_slots.command("text command");
        }
    }

    const CHostSlots m_slots;
    const std::vector<uint8_t> m_frame;
    platform::Event m_event;
    std::atomic<bool> m_isFlooding{false};
    uint32_t m_count = 0;
};

} // namespace

int main(int argc, char** argv) {
    CHostLink link([](const CHostSlots& slots) -> CHostedApplication* { return new Chatterer(slots); },
                   Chatterer::Dispatch);
    return link.Run(argc, argv);
}
