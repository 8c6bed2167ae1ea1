#include "desktop/headless.h"

#include "desktop/picture.h"

namespace desktop {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int FramesUntilReady = 2; // the splash, then the first page

class HeadlessRun : public DisplayListener, public ScriptTarget {
public:
    explicit HeadlessRun(const HeadlessOptions& with) : options(with), display(with.display, *this) {}

    void Start(const House& house) {
        display.Connect();
        display.Load(house);
        const auto patience = options.display.patience.firstPicture;
        const auto deadline = Clock::now() + patience;
        while (frames < FramesUntilReady) {
            if (Clock::now() >= deadline)
                throw Fault("the display does not answer: no picture came within " +
                            std::to_string(patience.count()) + " ms");
            display.Pump(100ms);
        }
    }

    void Finish() {
        if (!options.shot.empty()) {
            Settle(*this); // a picture that never rests is still worth having
            SaveFrame(options.shot);
        }
        display.End();
    }

    // What the display says.
    void OnFrame(std::span<const std::uint8_t> pixels) override {
        frame.assign(pixels.begin(), pixels.end());
        lastFrame = Clock::now();
        ++frames;
    }
    void OnLog(const std::string& line) override {
        if (!options.quiet)
            Report("log", line);
    }
    void OnTextCommand(const std::string& text) override {
        Report("command", text);
        commands.push_back(text);
    }

    // What a script wants.
    void Touch(TouchType type, Point at) override { display.Touch(type, at); }
    void Send(std::uint32_t command, const std::string& payload) override {
        display.SendRaw(command, payload);
    }
    void Wait(std::chrono::milliseconds duration) override {
        const auto deadline = Clock::now() + duration;
        for (auto left = duration; left >= 0ms;) {
            display.Pump(left);
            left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left <= 0ms)
                break;
        }
    }
    Clock::time_point LastFrameTime() const override { return lastFrame; }
    bool TakeTextCommand(std::string& text) override {
        if (commands.empty())
            return false;
        text = std::move(commands.front());
        commands.pop_front();
        return true;
    }
    void Shot(const std::string& name) override {
        std::error_code error;
        std::filesystem::create_directories(options.outFolder, error);
        SaveFrame(options.outFolder / (name + ".png"));
    }

private:
    void Report(const char* kind, const std::string& text) {
        std::fprintf(options.report, "%s %s\n", kind, text.c_str());
        std::fflush(options.report);
    }

    void SaveFrame(const std::filesystem::path& path) { WriteFile(path, EncodePng(WholeFrame(frame))); }

    const HeadlessOptions& options;
    std::vector<std::uint8_t> frame;
    Clock::time_point lastFrame;
    int frames = 0;
    std::deque<std::string> commands;
    Display display; // last: it may call the listener as soon as it exists
};

} // namespace

void RunHeadless(const House& house, const HeadlessOptions& options) {
    HeadlessRun run(options);
    run.Start(house);
    if (options.script)
        RunScript(*options.script, run);
    run.Finish();
}

} // namespace desktop
