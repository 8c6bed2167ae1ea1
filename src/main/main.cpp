// The display process.

#include "host/hosted_gui_app.h"
#include "host/link.h"

int main(int argc, char** argv) {
    CHostLink link(&CHostedGuiApp::Create, &CHostedGuiApp::DispatchQueuedMessage);
    return link.Run(argc, argv);
}
