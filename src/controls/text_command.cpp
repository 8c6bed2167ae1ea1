#include "controls/text_command.h"

#include <cstdio>

#include "gui/application.h"
#include "structure/item.h"

namespace {

constexpr uint32_t kCommandSize = 256; // bytes, terminator included; longer texts are cut
constexpr int32_t kCommandKind = 2;    // `T` of every command of a display

} // namespace

void SendTextCommand(const CVrStructureItem& item, int32_t event, CommandValue value) {
    CVrGuiApplication* application = TheApplication();
    if (!application)
        return;
    char command[kCommandSize] = "";
    snprintf(command, sizeof command, R"({"U":%d,"E":%d,"T":%d,"V":%d.%d})", static_cast<int32_t>(item.uuid),
             event, kCommandKind, value.whole, value.tenths);
    application->SendCommand(command);
}
