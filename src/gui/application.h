// What the toolkit and the layers above it need of the one application object, without knowing it: the
// application derives from this class and answers for what lies above (the root, the loaded house, the wire).
// Without an override everything here is empty, so that a part of the tree runs by itself in a test.
#pragma once

#include <cstdint>

#include "foundation/array.h"
#include "foundation/geometry.h"
#include "gui/animation.h"
#include "gui/element_ref.h"
#include "gui/font_table.h"
#include "gui/image_cache_data.h"

class CVrArchive;
class Ch264VideoDecoder;
class CVrStructure;
class CVrxStringU;

class CVrGuiApplication {
public:
    // Touches that the history holds at most; older ones are forgotten.
    static constexpr uint32_t kTouchHistory = 1024;

    // The newest object is the one that TheApplication() answers with.
    CVrGuiApplication();
    virtual ~CVrGuiApplication();
    CVrGuiApplication(const CVrGuiApplication&) = delete;
    CVrGuiApplication& operator=(const CVrGuiApplication&) = delete;

    // ---- Answered by the application ----

    virtual CVrGuiElement* Root() const { return nullptr; }
    virtual CVrStructure* Structure() const { return nullptr; }
    virtual CVrArchive* DynamicArchive() const { return nullptr; }      // symbols of the installation
    virtual CVrArchive* StaticArchive() const { return nullptr; }       // the program's own symbols
    virtual Ch264VideoDecoder* VideoDecoder() const { return nullptr; } // the thread that shows a camera
    // True while the popup frame or the popup slider frame exists and is not hidden.
    virtual bool IsPopupUp() const { return false; }
    // Tick in ms of the main loop's current pass. Every event of a pass carries it.
    virtual uint64_t PassTick() const;
    // Makes the main loop repaint the whole tree. Any thread.
    virtual void WakeForRepaint() {}
    // The root's store goes out as a frame, as it is.
    virtual void PresentStore() {}
    // Whether a frame that is sent now would be taken. Who sends frames of his own asks first: what the wire has no
    // room for is not worth painting.
    virtual bool HasRoomForFrame() const { return true; }
    // The decoded pictures by key; null while there are none. They stay the application's.
    virtual CVrImageCache* ImageCache() { return nullptr; }
    // Brings a default cover into the cache; look it up afterwards. `owner` is not used.
    virtual void LoadCover(CVrGuiElement* /*owner*/, int32_t /*key*/) {}
    // The key of a default cover; each comes once before any comes again.
    virtual int32_t NextDefaultCover() { return CoverKey::kFirstDefault; }
    // Hands a text command to the command slot.
    virtual void SendCommand(const CVrxStringU&) {}

    // ---- Held for all ----

    // The element that receives every touch, wherever the finger is; null: none. Belongs to the root's state
    // and clears itself when the element is destroyed.
    CVrGuiElement* Capture() const { return captureElement; }
    void SetCapture(CVrGuiElement* element) { captureElement = element; }

    CVrAnimQueue& Animations() { return animations; }

    // Appends the position and the current tick to the touch history.
    void AddTouchPoint(const CVrPoint& point);

    CVrElementRef<> captureElement;
    CVrAnimQueue animations;
    CVrFontTable fonts;
    VrArray<CVrPoint> touchPoints; // oldest first
    VrArray<uint64_t> touchTicks;  // ms, one for each point

private:
    CVrGuiApplication* m_former; // the one that was current before
};

// The one application, null while there is none.
CVrGuiApplication* TheApplication();

// Sets the root's redraw flag alone, unless the root is hidden: the picture is composed again from what the
// elements' stores hold. Nothing without a root.
void RequestComposition();
