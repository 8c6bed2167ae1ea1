#include "support/test_display.h"

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>

#include "foundation/log.h"
#include "shell/frame.h"

namespace {

std::mutex g_logMutex; // the decoder thread logs too
std::vector<std::string> g_commands, g_log;
uint32_t g_frames = 0;
bool g_hasStateFolder = false;

constexpr uint64_t kStepMs = 10;
constexpr uint64_t kQuietMs = 150;
constexpr const char* kStateVariable = "WALLSLATE_STATE_DIR";

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

TestHouse TestHouse::Of(const std::string& structure) {
    TestHouse house;
    house.structure = structure;
    house.categories = R"([{"U":1,"N":"Light","I":1}])";
    house.rooms = R"([{"U":1,"N":"Kitchen","I":1}])";
    house.symbols = R"([{"I":1,"N":"lightbulb.svg"}])";
    return house;
}

TestHouse TestHouse::FromFolder(const std::string& folder) {
    const std::string path = std::string(WALLSLATE_SOURCE_DIR) + "/" + folder + "/";
    return {ReadFile(path + "categories.json"), ReadFile(path + "rooms.json"),
            ReadFile(path + "symbols.json"), ReadFile(path + "structure.json")};
}

TestStateFolder::TestStateFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "wallslate-state-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("cannot make a folder for the state");
    path = name;
    setenv(kStateVariable, name.c_str(), 1);
    g_hasStateFolder = true;
}

TestStateFolder::~TestStateFolder() {
    unsetenv(kStateVariable);
    g_hasStateFolder = false;
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string TestStateFolder::Settings() const {
    const auto file = path / "settings.json";
    return std::filesystem::exists(file) ? ReadFile(file.string()) : "";
}

void TestStateFolder::WriteSettings(const std::string& text) const {
    std::ofstream(path / "settings.json", std::ios::binary) << text;
}

TestDisplay::TestDisplay(const TestHouse& house) {
    if (!g_hasStateFolder)
        state.emplace();
    g_commands.clear();
    {
        const std::lock_guard lock(g_logMutex);
        g_log.clear();
    }
    g_frames = 0;
    SetLogLevel(LogState);
    SetLogSlot([](const char* line) {
        const std::lock_guard lock(g_logMutex);
        g_log.push_back(line);
    });
    app = new CVrGuiApp;
    app->frameSlot = [](const uint8_t*, uint32_t) { g_frames++; };
    app->commandSlot = [](const char* command) { g_commands.push_back(command); };
    app->mainWin.splashMs = 0;
    app->CreateScreen();
    app->InitAndLoad();
    app->LoadStructure(house.structure.c_str(), house.categories.c_str(), house.rooms.c_str(),
                       house.symbols.c_str());
    app->BeginLoop();
}

TestDisplay::~TestDisplay() {
    delete app;
    SetLogSlot(nullptr);
    SetLogLevel(LogError);
}

void TestDisplay::Pass() {
    app->RunPass(0);
}

void TestDisplay::Advance(uint64_t ms) {
    for (uint64_t passed = 0; passed < ms; passed += kStepMs) {
        clock.Advance(std::min(kStepMs, ms - passed));
        Pass();
    }
}

void TestDisplay::Post(uint32_t type, int32_t x, int32_t y) {
    app->PostTouch(type, CVrPoint(x, y));
    Pass();
}

void TestDisplay::Down(int32_t x, int32_t y) {
    Post(CVrGuiElement::EventDown, x, y);
}

void TestDisplay::Move(int32_t x, int32_t y) {
    Post(CVrGuiElement::EventMove, x, y);
}

void TestDisplay::Up(int32_t x, int32_t y) {
    Post(CVrGuiElement::EventUp, x, y);
    Pass(); // releasing a press asks for another repaint
}

void TestDisplay::Tap(int32_t x, int32_t y) {
    Down(x, y);
    Advance(50);
    Up(x, y);
}

void TestDisplay::Drag(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint64_t ms) {
    Down(x1, y1);
    const auto steps = static_cast<int32_t>(std::max<uint64_t>(ms / kStepMs, 1));
    for (int32_t i = 1; i <= steps; i++) {
        clock.Advance(kStepMs);
        Move(x1 + (x2 - x1) * i / steps, y1 + (y2 - y1) * i / steps);
    }
    Up(x2, y2);
}

void TestDisplay::ShowNight(bool night) {
    CVrRuntimeMessage message;
    message.flags = CVrRuntimeMessage::HasNight;
    message.night = night;
    app->HandleWallSlateRuntimeSettingsMessage(message);
    Settle();
}

void TestDisplay::Settle() {
    for (uint64_t quiet = 0; quiet < kQuietMs; quiet += kStepMs) {
        const uint32_t before = g_frames;
        Advance(kStepMs);
        if (g_frames != before)
            quiet = 0;
    }
}

std::vector<std::string> TestDisplay::TakeCommands() {
    return std::exchange(g_commands, {});
}

std::vector<std::string> TestDisplay::TakeLog() {
    const std::lock_guard lock(g_logMutex);
    return std::exchange(g_log, {});
}

uint32_t TestDisplay::FrameCount() const {
    return g_frames;
}

CVrGuiFrame* TestDisplay::Page() {
    CVrGuiFrame* page = nullptr;
    Root().ForEachChild([&page](CVrGuiElement& child) {
        if (child.type == ElementType::Frame && !child.IsHidden())
            page = static_cast<CVrGuiFrame*>(&child);
    });
    return page;
}
