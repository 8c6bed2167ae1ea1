// Fingers that do anything, on the demonstration house: each input is a little script of touches and waits,
// three bytes or so an action, carried out by a whole display. Every text command that leaves must be a JSON
// object.
#include <cstdlib>

#include "foundation/json.h"
#include "support/test_display.h"

namespace {

constexpr int kMaxActions = 40;      // an input of a second is no help
constexpr int32_t kFirstPixel = -24; // bytes reach over all four edges of the screen
constexpr int32_t kPixelsPerStep = 3;
constexpr uint64_t kMsPerStep = 12;

enum Action : uint8_t { Tap, Down, Move, Up, Wait, Drag, AnyEvent, ActionCount };

class Script {
public:
    Script(const uint8_t* data, size_t size) : m_next(data), m_end(data + size) {}

    bool IsAtEnd() const { return m_next == m_end; }
    uint8_t Byte() { return IsAtEnd() ? uint8_t{0} : *m_next++; }
    int32_t Coordinate() { return kFirstPixel + kPixelsPerStep * Byte(); }
    uint64_t Time() { return kMsPerStep * Byte(); }

private:
    const uint8_t* m_next;
    const uint8_t* const m_end;
};

void Act(TestDisplay& display, Script& script) {
    const auto action = static_cast<Action>(script.Byte() % ActionCount);
    if (action == Wait) {
        display.Advance(script.Time());
        return;
    }
    const int32_t x = script.Coordinate();
    const int32_t y = script.Coordinate();
    switch (action) {
    case Tap:
        display.Tap(x, y);
        break;
    case Down:
        display.Down(x, y);
        break;
    case Move:
        display.Move(x, y);
        break;
    case Up:
        display.Up(x, y);
        break;
    case Drag: {
        const int32_t toX = script.Coordinate();
        const int32_t toY = script.Coordinate();
        display.Drag(x, y, toX, toY, script.Time() / 8);
        break;
    }
    default:
        display.App().PostTouch(script.Byte(), CVrPoint(x, y), uint32_t{script.Byte()} << 4);
        display.Pass();
        break;
    }
}

void CheckCommands(TestDisplay& display) {
    for (const std::string& command : display.TakeCommands()) {
        CVrJsonParser parser;
        if (!parser.Parse(CVrxStringU(command.c_str())))
            abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const TestHouse house = TestHouse::FromFolder("demo");
    TestDisplay display(house);
    Script script(data, size);
    for (int i = 0; i < kMaxActions && !script.IsAtEnd(); i++)
        Act(display, script);
    display.Advance(500); // what still moves comes to rest
    CheckCommands(display);
    return 0;
}
