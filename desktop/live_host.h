// The live page's host without its network side: a display that is kept running, its newest picture, what it
// said, its settings and its house. Everything runs on the one thread of the io_context.
//
// Viewers do not get queues. Each of them remembers how much of every history it has seen and asks for the
// rest when it has room; what changed is told by LiveObserver::OnNews.
#pragma once

#include "desktop/display.h"
#include "desktop/house_check.h"
#include "desktop/house_index.h"
#include "desktop/tile_store.h"
#include "desktop/touch_pacer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>

namespace desktop {

// The last entries of an endless list; entry n keeps its number when older ones are dropped.
template <class Entry>
class History {
public:
    explicit History(std::size_t mostEntries) : most(mostEntries) {}
    void Add(Entry entry) {
        entries.push_back(std::move(entry));
        if (entries.size() > most) {
            entries.pop_front();
            ++first;
        }
    }
    std::uint64_t First() const { return first; }                // number of the oldest entry still held
    std::uint64_t End() const { return first + entries.size(); } // number that the next entry will have
    const Entry& At(std::uint64_t number) const { return entries[number - first]; }

private:
    std::size_t most;
    std::deque<Entry> entries;
    std::uint64_t first = 0;
};

struct LiveCommand {
    std::string text;  // as it came
    std::string words; // as people say it
    std::int64_t at;   // when it came, in ms since 1970
};

class LiveObserver {
public:
    virtual ~LiveObserver() = default;
    virtual void OnNews() = 0;   // something of the host has changed
    virtual void OnHostGone() {} // the host has stopped and must not be called any more
};

struct LiveHostOptions {
    DisplayOptions display;
    bool quiet = false;    // no progress on the terminal
    bool printLog = false; // log lines too
};

// What came of an offered house.
struct HouseVerdict {
    bool accepted = false;
    CheckResult check;
};

class LiveHost : private DisplayListener {
public:
    LiveHost(boost::asio::io_context& context, const LiveHostOptions& options);
    ~LiveHost();

    void Start(House house); // throws Fault when the house cannot be read at all
    void Stop();             // ends the display in an orderly way

    // ---- what viewers show ----
    const TileStore& Picture() const { return picture; }
    const History<std::string>& Log() const { return log; }
    const History<LiveCommand>& Commands() const { return commands; }
    std::uint64_t StateVersion() const { return stateVersion; } // raised when State() changes
    std::uint64_t HouseVersion() const { return houseVersion; } // raised when HouseItems() changes
    nlohmann::json State() const;
    nlohmann::json HouseItems() const;
    bool IsRunning() const { return phase == Phase::Running; }
    std::uint64_t FrameCount() const { return frames; }
    std::chrono::steady_clock::time_point LastFrameTime() const { return lastFrame; }

    void Subscribe(LiveObserver* observer);
    void Unsubscribe(LiveObserver* observer); // lifts a finger that it still has down

    // ---- what viewers and the API do ----
    // False when another one has its finger on the display.
    bool Touch(const void* owner, PacedTouch touch);
    bool Tap(Point at);
    bool Drag(Point from, Point to, std::chrono::milliseconds duration);
    // Checks all, then applies all; returns what is wrong, in one sentence.
    std::optional<std::string> ApplySettings(const nlohmann::json& wishes);
    void SendRaw(std::uint32_t number, const std::string& payload);
    // Takes the house if it is without errors; the running one stays otherwise.
    HouseVerdict OfferHouse(House house);

private:
    enum class Phase { Starting, Loading, Running, Ended };

    struct Settings {
        std::optional<bool> night;
        std::optional<std::uint32_t> color; // 0xRRGGBB
        std::optional<int> restMode;
        std::optional<std::uint32_t> restDelay;
        std::optional<bool> hours24;
        std::optional<int> dateFormat;
        std::optional<bool> fahrenheit;
        std::optional<std::string> country;
        std::optional<std::string> language;
        std::optional<std::uint32_t> logLevel;
        bool rest = false;

        bool HasFormats() const { return hours24 || dateFormat || fahrenheit || country || language; }
        bool HasRuntime() const { return color || restMode || restDelay; }
    };

    // what the display says
    void OnFrame(std::span<const std::uint8_t> frame) override;
    void OnLog(const std::string& line) override;
    void OnTextCommand(const std::string& text) override;

    // the display's life
    void StartDisplay();
    void PollConnect();
    void OnConnected();
    void WaitForInput();
    void WaitForFirstPicture();
    void DisplayFailed(const std::string& why);
    void EndDisplay();
    bool IsRun(std::uint64_t number) const { return display && number == run; }
    void Enter(Phase next, std::string words);
    template <class Action>
    void Guarded(Action action);

    void PumpTouches();
    void StepDrag();

    std::optional<std::string> ReadSettings(const nlohmann::json& wishes, Settings& settings) const;
    // What the display remembers of earlier runs: a message about one format has to repeat all others.
    static Settings StoredSettings(const DisplayOptions& display);
    void RenewSettings();
    void Commit(const Settings& settings);
    void SendFormats();
    void SendRuntime(const Settings& settings);
    nlohmann::json SettingsJson() const;

    void TakeHouse(House house, CheckResult check);
    void WatchHouse();
    void WaitForHouseChange();
    void OnHouseChanged();

    void Say(const std::string& text) const;
    void NewsForAll();

    boost::asio::io_context& context;
    LiveHostOptions options;

    House house;
    HouseIndex index;
    CheckResult check;          // of the house last offered
    std::string houseName;      // for the page
    bool offeredIsShown = true; // whether `check` speaks of the running house
    std::uint64_t houseVersion = 0;

    std::unique_ptr<Display> display;
    Phase phase = Phase::Ended;
    std::string phaseWords;
    std::uint64_t stateVersion = 1;
    std::unique_ptr<boost::asio::posix::stream_descriptor> input;
    boost::asio::steady_timer lifeTimer; // connect, first picture, restart
    std::chrono::steady_clock::time_point startedAt;
    std::chrono::milliseconds restartDelay{0};
    int framesOfThisRun = 0;
    std::uint64_t run = 0; // which display this is; a handler of an earlier one finds out by it
    bool stopping = false;

    TileStore picture;
    History<std::string> log;
    History<LiveCommand> commands;
    std::uint64_t frames = 0;
    std::chrono::steady_clock::time_point lastFrame;

    TouchPacer pacer;
    boost::asio::steady_timer touchTimer;
    const void* touchOwner = nullptr;
    Point lastPoint;
    std::chrono::steady_clock::time_point lastDown;
    std::optional<std::chrono::microseconds> displayTime; // from the last press to the picture that followed
    bool downUnanswered = false;

    struct DragPlay {
        Point from;
        Point to;
        std::chrono::milliseconds duration{0};
        std::chrono::steady_clock::time_point start;
    };
    std::optional<DragPlay> drag;
    boost::asio::steady_timer dragTimer;

    Settings settings; // all that was set in this run

    std::unique_ptr<boost::asio::posix::stream_descriptor> watch; // inotify on the house folder
    boost::asio::steady_timer watchTimer;

    std::set<LiveObserver*> observers;
};

} // namespace desktop
