// The display process.

#include "host/hosted_gui_app.h"
#include "host/link.h"

namespace {

// Settings messages have no effect yet: they are taken from the queue, so that it does not fill, and dropped.
void DropSettings(uint32_t, const CVrxByteArray&) {
}

} // namespace

int main(int argc, char** argv) {
    CHostLink link(&CHostedGuiApp::Create, &DropSettings);
    return link.Run(argc, argv);
}
