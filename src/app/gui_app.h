// The one application object: the GUI thread with its main loop, and by direct members everything that is the running
// system. Its MainLoop is the only place where touches are delivered, timers run, queued host messages are handled and
// the screen is repainted: the tree belongs to this thread alone once it runs.
//
//   made by command 1 --> InitAndLoad, load, CreateContent on the pipe thread (command 3) --> Start --> MainLoop
//     --> RequestStop by the pipe thread --> ExitThread --> destroyed by the pipe thread
#pragma once

#include <atomic>
#include <cstdint>

#include "app/image_cache.h"
#include "app/runtime_settings.h"
#include "app/settings.h"
#include "foundation/archive.h"
#include "foundation/byte_array.h"
#include "foundation/mutex.h"
#include "foundation/thread.h"
#include "gui/application.h"
#include "gui/frame_composer.h"
#include "media/video_decoder.h"
#include "platform/event.h"
#include "shell/main_window.h"
#include "structure/structure.h"

class CVrGuiApp : public CVrThread, public CVrGuiApplication {
public:
    // Reasons for a wake-up are bits of `eventWord`: the touch types and this. Collected, since a touch must not
    // swallow a repaint that somebody asked for just before it.
    static constexpr uint32_t kWakeRepaint = 128;

    // Values of `touchGesture`.
    enum Gesture : uint32_t {
        GestureNone = 0,
        GestureTwoFingerDoubleClick = 256,
        GestureTwoFingerTripleClick = 512,
        GestureCancel = 1024,
    };

    // Answers what the main loop cannot know of the wire. All are null until command 1 installs them.
    using FrameSlot = void (*)(const uint8_t* frame,
                               uint32_t size); // one composed frame; copied before it returns
    using DrainSlot = void (*)();              // handles all queued host messages
    using ReadySlot = bool (*)();              // whether the wire has room for a whole frame

    CVrGuiApp();
    // The thread must have ended, or end by itself after RequestStop; the destructor waits for it.
    ~CVrGuiApp() override;

    // Sizes the root and allocates both screen buffers; part of command 1.
    void CreateScreen();
    // Loads what the program carries (symbols, style sheet, translations) and shows the splash. On the pipe thread,
    // during command 3, before the GUI thread exists.
    void InitAndLoad();
    // Loads the four JSON texts and builds the pages. Same thread as InitAndLoad, behind it.
    void LoadStructure(const char* config, const char* categories, const char* rooms, const char* symbols);

    // ---- Settings of the host, on the GUI thread (runtime_settings.cpp) ----
    // Formats, language and the counters of the house. While the counters stay the same the display goes to rest.
    void HandleWallSlateSettingsMessage(const CVrDisplaySettings& message);
    // Night mode, background, rest.
    void HandleWallSlateRuntimeSettingsMessage(const CVrRuntimeMessage& message);

    // ---- Thread ----
    void MainLoop() override;
    // The loop in two pieces, for tests that step it: what happens before the first pass, and one pass, which waits
    // for at most `timeout` ms for something to do.
    void BeginLoop();
    void RunPass(uint32_t timeout);
    void Wakeup() override;

    // ---- Posting, from any thread ----
    // Writes the one touch record. A down or up that waits there is given time to be taken (kTouchPatienceMs); a move
    // is overwritten.
    void PostTouch(uint32_t touchEvent, CVrPoint point, uint32_t gesture = GestureNone);
    void WakeForRepaint() override;

    // ---- Drawing, on the GUI thread ----
    // Repaints if anything is flagged, and sends the frame. While the wire has no room for a frame nothing is painted
    // that would be thrown away: the flags stay and a later pass paints the newest state. So they do while a root
    // animation leads an element over the picture.
    void DrawAndUpdate();
    // Copies the root's store to the current screen buffer and sends a frame.
    void UpdateFullscreen();
    // Flips the screen buffers and sends the frame from the one just written.
    void SendFrame();
    // Repaints after a change of colours or of language.
    void ApplyColors();
    void ApplyLanguage();

    // ---- CVrGuiApplication ----
    CVrGuiElement* Root() const override { return const_cast<CVrGuiMainWin*>(&mainWin); }
    CVrStructure* Structure() const override { return const_cast<CVrStructure*>(&structure); }
    CVrArchive* DynamicArchive() const override { return const_cast<CVrArchive*>(&dynamicArchive); }
    CVrArchive* StaticArchive() const override { return const_cast<CVrArchive*>(&staticArchive); }
    Ch264VideoDecoder* VideoDecoder() const override { return const_cast<Ch264VideoDecoder*>(&videoDecoder); }
    bool IsPopupUp() const override { return mainWin.IsPopupUp(); }
    uint64_t PassTick() const override { return now; }
    void SendCommand(const CVrxStringU& command) override;
    void PresentStore() override;
    bool HasRoomForFrame() const override { return !readySlot || readySlot(); }
    CVrImageCache* ImageCache() override { return &imageCache; }
    void LoadCover(CVrGuiElement*, int32_t key) override { LoadDefaultCover(imageCache, key); }
    int32_t NextDefaultCover() override { return m_coverPicker.Next(); }

    platform::Event wakeEvent;
    std::atomic<uint32_t> eventWord{0};
    std::atomic<uint32_t> touchType{0};
    std::atomic<int32_t> touchX{0}, touchY{0}; // screen pixels
    std::atomic<uint32_t> touchGesture{GestureNone};
    std::atomic<bool> touchConsumed{true}; // false while a posted touch waits
    uint64_t now = 0;                      // tick in ms of the current pass
    uint32_t screenIndex = 0;              // screen buffer that is written next
    CVrxByteArray screenBuffer[2];
    CVrMutex screenLock;      // guards the flip of screenIndex
    CVrImageCache imageCache; // owns its pictures from the load of the house on
    CVrStructure structure;
    CVrDisplaySettings settings; // as the settings file holds them
    CVrRuntimeMessage runtime;   // values in effect; `flags` collects what has ever been received
    CVrxStringU pendingText;     // text of command 4, which nothing uses yet; forgotten at the next pass
    CVrArchive dynamicArchive, staticArchive;
    Ch264VideoDecoder videoDecoder; // runs while a camera is shown; owned by the GUI thread
    FrameSlot frameSlot = nullptr;
    DrainSlot drainSlot = nullptr;
    ReadySlot readySlot = nullptr;
    void (*commandSlot)(const char* command) = nullptr;
    CVrGuiMainWin mainWin; // destroyed before all that its elements point to

private:
    struct Touch {
        uint32_t type = 0;
        CVrPoint point;
        uint32_t gesture = GestureNone;
    };

    bool AnythingFlagged() const;
    bool StepRootAnimations();
    void Paint();
    uint32_t WaitForWork(uint32_t timeout);
    bool TakeTouch(Touch& touch);
    bool DeliverTouch(const Touch& touch);
    void FlagAll();
    void LoadSettings();
    void TakeDisplayValues(const CVrRuntimeMessage& message);
    void TakeNight(uint8_t night);
    void TakePersistentValues(const CVrRuntimeMessage& message);
    void RenewColors();
    void LoadArchives();
    void LoadStyles();

    uint32_t m_timeout = 0;   // ms that the next pass waits at most
    bool m_frameOwed = false; // something is flagged but the wire had no room for a frame
    CVrFrame m_frame;
    CVrCoverPicker m_coverPicker;
};
