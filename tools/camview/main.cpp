// camview: the display with a page over everything that shows a camera, for developers; docs/video.md says how
// to look at it. The camera stands in WALLSLATE_CAMERA, "ADDRESS[:PORT] [WIDTHxHEIGHT]"; the size is that of the
// picture on the screen, which has to be the stream's or twice that, 720x720 by default.
//
// The page connects again every second while there is no stream, so that a simulated camera can be started, stopped
// and exchanged while it runs.
#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>

#include "controls/video.h"
#include "foundation/log.h"
#include "foundation/translator.h"
#include "gui/application.h"
#include "gui/plain_text.h"
#include "host/hosted_gui_app.h"
#include "host/link.h"
#include "media/video_decoder.h"

namespace {

constexpr const char* kTag = "camview";
constexpr uint32_t kRetryMs = 1000;
constexpr uint32_t kBlack = 0xFF000000;
constexpr uint32_t kLightGrey = 0xFFBABCBA;

struct Camera {
    char host[64] = "127.0.0.1";
    uint32_t port = CCamClient::kPort;
    CVrSize size = CVrSize(kScreenSide, kScreenSide); // pixels on the screen
};

Camera CameraOfEnvironment() {
    Camera camera;
    const char* text = getenv("WALLSLATE_CAMERA");
    if (!text)
        return camera;
    int read = 0;
    if (sscanf(text, "%63[0-9.]%n", camera.host, &read) == 1)
        text += read;
    if (sscanf(text, ":%u%n", &camera.port, &read) == 1)
        text += read;
    sscanf(text, " %dx%d", &camera.size.width, &camera.size.height);
    return camera;
}

} // namespace

// Black, with the translated "No Video" until the first picture covers it.
class CVrGuiCameraPage : public CVrGuiElement {
public:
    CVrGuiCameraPage() {
        type = ElementType::Dummy;
        className = "CVrGuiCameraPage";
    }

    void CreateContent(CVrStructureItem*) override {
        SetRect(0, 0, kScreenSide, kScreenSide);
        m_notice = CreateChild<CVrGuiPlainText>("CVrGuiPlainText", false);
        m_notice->layout = CVrGuiButton::LayoutStackedWrapped;
        m_notice->fontIndex = FontIndex::BigBold;
        m_notice->SetRect(rect);
        OnLanguageChanged();
        m_video = CreateChild<CVrGuiVideo>("CVrGuiVideo", false);
        const CVrSize size = m_camera.size;
        m_video->SetRect((kScreenSide - size.width) / 2, (kScreenSide - size.height) / 2, size.width,
                         size.height);
        m_video->PrepareStore();
        ReloadColors();
        TheApplication()->VideoDecoder()->camClient.net.port = m_camera.port;
        SetTimer(kRetryMs, true);
    }
    void OnLanguageChanged() override {
        m_notice->text = CVrTranslator::Instance().Translate("intercom.no_video");
    }
    void OnColorsChanged() override { m_notice->colors[ColorText] = kLightGrey; }
    void DrawBackground() override { FillBackground(kBlack); }

    bool OnTimer(uint64_t) override {
        Ch264VideoDecoder& decoder = *TheApplication()->VideoDecoder();
        const bool isOn = decoder.HasThread() && decoder.camClient.HasThread();
        if (isOn)
            return false;
        in_addr address{};
        if (inet_pton(AF_INET, m_camera.host, &address) != 1) {
            Log(LogError, kTag, "%s is no IPv4 address", m_camera.host);
            return false;
        }
        decoder.StopShowing(decoder.videoElement);
        decoder.ShowOn(m_video, address.s_addr);
        return false;
    }

private:
    const Camera m_camera = CameraOfEnvironment();
    CVrGuiPlainText* m_notice = nullptr; // children
    CVrGuiVideo* m_video = nullptr;
};

VR_REGISTER_ELEMENT(CVrGuiCameraPage)

namespace {

class CameraApp : public CHostedGuiApp {
public:
    using CHostedGuiApp::CHostedGuiApp;

    static CHostedApplication* Create(const CHostSlots& slots) { return new CameraApp(slots); }

    void Load(const CHostTexts& texts) override {
        app.InitAndLoad();
        app.LoadStructure(texts.configuration, texts.categories, texts.rooms, texts.symbols);
        app.mainWin.CreateGuiChild("CVrGuiCameraPage", true);
        app.Start();
    }
};

} // namespace

int main(int argc, char** argv) {
    CHostLink link(&CameraApp::Create, &CHostedGuiApp::DispatchQueuedMessage);
    return link.Run(argc, argv);
}
