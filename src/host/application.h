// What the host link needs of the application, so that the link can be tested with a double in its place.
#pragma once

#include <cstdint>

#include "foundation/geometry.h"
#include "foundation/log.h"

// The texts of command 3, in payload order; NUL-terminated, borrowed for the call.
struct CHostTexts {
    const char* categories = "";
    const char* rooms = "";
    const char* symbols = "";
    const char* configuration = "";
};

// Where the system's output goes. Each copies what it is given before it returns.
struct CHostSlots {
    LogSlot log = nullptr;
    void (*frame)(const uint8_t* frame, uint32_t size) = nullptr;
    void (*command)(const char* text) = nullptr;
    void (*drain)() = nullptr;   // hands the queued messages to the dispatcher, on the thread that calls
    bool (*hasRoom)() = nullptr; // whether a whole frame would be taken at once
};

class CHostedApplication {
public:
    virtual ~CHostedApplication() = default;

    // Loads the house, builds the pages and starts the GUI thread. Once.
    virtual void Load(const CHostTexts& texts) = 0;

    // Posts a touch in screen pixels, negative ones included; see CommandTouch for the types.
    virtual void PostTouch(uint32_t type, CVrPoint point) = 0;

    // Wakes the GUI thread for a full repaint.
    virtual void PostRepaint() = 0;

    // Asks the GUI thread to end, without waiting for it.
    virtual void RequestStop() = 0;

    // True when no thread of the application runs any more.
    virtual bool HasEnded() const = 0;
};

// Makes the application of command 1, with its screen and the slots installed; owned by the caller, null
// without memory.
using CHostedApplicationFactory = CHostedApplication* (*)(const CHostSlots& slots);

// Carries out one message that was queued; on the GUI thread, outside all locks. The payload belongs to the
// queue.
class CVrxByteArray;
using CHostDispatcher = void (*)(uint32_t command, const CVrxByteArray& payload);
