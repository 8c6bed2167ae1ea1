// Sections: the display's life, what it says, touches, houses, observers. live_settings.cpp has the settings.
#include "desktop/live_host.h"

#include "desktop/fault.h"
#include "desktop/item_types.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace desktop {

namespace asio = boost::asio;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t MostLogLines = 2000;
constexpr std::size_t MostCommands = 500;
constexpr auto ConnectStep = 5ms;
constexpr auto GoodRun = 10s; // a display that lived that long is started again at once
constexpr auto FirstRestartDelay = 500ms;
constexpr auto LongestRestartDelay = 10s;
constexpr auto OrderlyEnd = 1s;
constexpr auto LongestAnswer = 1s; // a picture that comes later has another reason than the press
constexpr auto DragStep = 10ms;
constexpr auto EditPause =
    150ms; // between a change in the house folder and the reading: editors write in steps
constexpr int FramesUntilReady = 2; // splash and first page
constexpr int MessagesAtOnce = 16;  // before others have their turn

} // namespace

LiveHost::LiveHost(asio::io_context& ioContext, const LiveHostOptions& with)
    : context(ioContext),
      options(with),
      lifeTimer(ioContext),
      log(MostLogLines),
      commands(MostCommands),
      touchTimer(ioContext),
      dragTimer(ioContext),
      watchTimer(ioContext) {
    options.display.patience.end = OrderlyEnd;
    settings = StoredSettings(options.display);
    settings.logLevel = options.display.logLevel;
}

LiveHost::~LiveHost() = default;

// ---- the display's life ----

void LiveHost::Start(House first) {
    RequireReadable(first);
    CheckResult result = CheckHouse(first);
    if (!result.Good())
        Say(first.folder.string() + " has faults, see the page or --check: " + Summary(result));
    TakeHouse(std::move(first), std::move(result));
    StartDisplay();
}

void LiveHost::Stop() {
    stopping = true;
    watch.reset();
    watchTimer.cancel();
    EndDisplay();
    // Viewers live on in handlers that wait for the network, and go after this object.
    touchOwner = nullptr;
    for (LiveObserver* observer : std::exchange(observers, {}))
        observer->OnHostGone();
}

void LiveHost::Enter(Phase next, std::string words) {
    phase = next;
    phaseWords = std::move(words);
    ++stateVersion;
    NewsForAll();
}

// Runs what may find the display dead.
template <class Action>
void LiveHost::Guarded(Action action) {
    try {
        action();
    } catch (const Fault& fault) {
        DisplayFailed(fault.what());
    }
}

void LiveHost::StartDisplay() {
    ++run;
    framesOfThisRun = 0;
    startedAt = Clock::now();
    Enter(Phase::Starting, "The display is starting.");
    Guarded([&] {
        options.display.logLevel = settings.logLevel.value_or(options.display.logLevel);
        display = std::make_unique<Display>(options.display, static_cast<DisplayListener&>(*this));
        PollConnect();
    });
}

void LiveHost::PollConnect() {
    lifeTimer.expires_after(ConnectStep);
    lifeTimer.async_wait([this, mine = run](const boost::system::error_code& error) {
        if (error || !IsRun(mine))
            return;
        Guarded([&] {
            if (display->TryConnect())
                OnConnected();
            else
                PollConnect();
        });
    });
}

void LiveHost::OnConnected() {
    display->Load(house);
    RenewSettings();
    Enter(Phase::Loading, "The display is loading the house.");
    // a duplicate, as the descriptor closes what it holds
    input = std::make_unique<asio::posix::stream_descriptor>(context, ::dup(display->LinkDescriptor()));
    WaitForInput();
    WaitForFirstPicture();
}

void LiveHost::WaitForInput() {
    input->async_wait(asio::posix::stream_descriptor::wait_read,
                      [this, mine = run](const boost::system::error_code& error) {
                          if (error || !IsRun(mine))
                              return;
                          Guarded([&] {
                              display->HandleInput(MessagesAtOnce);
                              if (input)
                                  WaitForInput();
                          });
                      });
}

void LiveHost::WaitForFirstPicture() {
    lifeTimer.expires_after(options.display.patience.firstPicture);
    lifeTimer.async_wait([this, mine = run](const boost::system::error_code& error) {
        if (!error && IsRun(mine) && phase == Phase::Loading)
            DisplayFailed("the display does not answer: no picture came");
    });
}

void LiveHost::DisplayFailed(const std::string& why) {
    display.reset();
    input.reset();
    pacer = TouchPacer();
    touchOwner = nullptr;
    drag.reset();
    if (stopping)
        return;
    const bool wasGood = Clock::now() - startedAt >= GoodRun;
    restartDelay = wasGood || restartDelay == 0ms
                       ? FirstRestartDelay
                       : std::min<std::chrono::milliseconds>(restartDelay * 2, LongestRestartDelay);
    Say(why + "; starting it again");
    Enter(Phase::Ended, why.substr(0, why.find('\n')) + "; it is started again.");
    lifeTimer.expires_after(restartDelay);
    lifeTimer.async_wait([this, mine = run](const boost::system::error_code& error) {
        if (!error && mine == run && !display && !stopping)
            StartDisplay();
    });
}

void LiveHost::EndDisplay() {
    lifeTimer.cancel();
    input.reset();
    if (!display)
        return;
    try {
        if (phase == Phase::Loading || phase == Phase::Running)
            display->End();
    } catch (const Fault& fault) {
        Say(fault.what());
    }
    display.reset();
    pacer = TouchPacer();
    touchOwner = nullptr;
    drag.reset();
}

// ---- what the display says ----

void LiveHost::OnFrame(std::span<const std::uint8_t> frame) {
    ++frames;
    lastFrame = Clock::now();
    const bool splash = ++framesOfThisRun < FramesUntilReady;
    if (!splash ||
        picture.Frame().empty()) { // after a restart the old picture stays until the new page is there
        const bool changed = picture.Update(frame) > 0;
        if (changed && std::exchange(downUnanswered, false) && lastFrame - lastDown < LongestAnswer) {
            displayTime = std::chrono::duration_cast<std::chrono::microseconds>(lastFrame - lastDown);
            ++stateVersion;
        }
    }
    if (!splash && phase == Phase::Loading) {
        lifeTimer.cancel();
        restartDelay = 0ms;
        Say("the display shows " + houseName);
        Enter(Phase::Running, "The display is running.");
    }
    NewsForAll();
}

void LiveHost::OnLog(const std::string& line) {
    if (options.printLog && !options.quiet)
        std::printf("log %s\n", line.c_str());
    log.Add(line);
    NewsForAll();
}

void LiveHost::OnTextCommand(const std::string& text) {
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
    LiveCommand command{text, index.Describe(text), now.count()};
    std::printf("command %s\n", text.c_str());
    std::fflush(stdout);
    commands.Add(std::move(command));
    NewsForAll();
}

// ---- touches ----

bool LiveHost::Touch(const void* owner, PacedTouch touch) {
    const bool isDown = touch.type == TouchType::Down;
    if (touchOwner ? touchOwner != owner : !isDown)
        return false;
    if (touchOwner && isDown) // a down that lost its up
        pacer.Add({TouchType::Up, lastPoint});
    touchOwner = touch.type == TouchType::Up ? nullptr : owner;
    lastPoint = touch.at;
    pacer.Add(touch);
    PumpTouches();
    return true;
}

bool LiveHost::Tap(Point at) {
    return Touch(this, {TouchType::Down, at}) && Touch(this, {TouchType::Up, at});
}

bool LiveHost::Drag(Point from, Point to, std::chrono::milliseconds duration) {
    if (!Touch(&drag, {TouchType::Down, from}))
        return false;
    drag = DragPlay{from, to, duration, Clock::now() + TouchPacer::Gap};
    StepDrag();
    return true;
}

void LiveHost::StepDrag() {
    dragTimer.expires_after(DragStep);
    dragTimer.async_wait([this](const boost::system::error_code& error) {
        if (error || !drag)
            return;
        const auto passed = std::max<std::chrono::milliseconds>(
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - drag->start), 0ms);
        const auto at = [&](int a, int b) {
            return passed >= drag->duration
                       ? b
                       : a + static_cast<int>((b - a) * passed.count() / drag->duration.count());
        };
        Touch(&drag, {TouchType::Move, {at(drag->from.x, drag->to.x), at(drag->from.y, drag->to.y)}});
        if (passed < drag->duration)
            return StepDrag();
        Touch(&drag, {TouchType::Up, drag->to});
        drag.reset();
    });
}

void LiveHost::PumpTouches() {
    if (!display || (phase != Phase::Running && phase != Phase::Loading)) {
        pacer = TouchPacer();
        return;
    }
    Guarded([&] {
        while (const auto touch = pacer.Next(Clock::now())) {
            if (touch->type == TouchType::Down) {
                lastDown = Clock::now();
                downUnanswered = true;
            }
            display->Touch(touch->type, touch->at);
        }
        if (const auto due = pacer.Due()) {
            touchTimer.expires_at(*due);
            touchTimer.async_wait([this](const boost::system::error_code& error) {
                if (!error)
                    PumpTouches();
            });
        }
    });
}

void LiveHost::SendRaw(std::uint32_t number, const std::string& payload) {
    if (display && (phase == Phase::Loading || phase == Phase::Running))
        Guarded([&] { display->SendRaw(number, payload); });
}

// ---- houses ----

void LiveHost::TakeHouse(House taken, CheckResult result) {
    house = std::move(taken);
    index = HouseIndex(house);
    check = std::move(result);
    offeredIsShown = true;
    houseName = house.folder.filename().string();
    if (houseName.empty()) // "demo/"
        houseName = house.folder.parent_path().filename().string();
    ++houseVersion;
    ++stateVersion;
    WatchHouse();
}

HouseVerdict LiveHost::OfferHouse(House offered) {
    HouseVerdict verdict;
    verdict.check = CheckHouse(offered);
    verdict.accepted = verdict.check.Good();
    if (verdict.accepted) {
        TakeHouse(std::move(offered), verdict.check);
        Say("a new house: " + houseName + ", " + Summary(check));
        EndDisplay();
        restartDelay = 0ms;
        StartDisplay();
    } else {
        check = verdict.check;
        offeredIsShown = false;
        Say("the new house has faults and is not shown: " + Summary(check));
        for (const Finding& finding : check.findings)
            if (finding.severity == Severity::Error)
                Say(FormatFinding(finding, offered.folder));
        ++stateVersion;
        NewsForAll();
    }
    return verdict;
}

void LiveHost::WatchHouse() {
    watch.reset();
    watchTimer.cancel();
    if (!house.fromDisk)
        return;
    const int descriptor = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (descriptor < 0)
        return;
    watch = std::make_unique<asio::posix::stream_descriptor>(context, descriptor);
    const std::uint32_t events = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
    if (::inotify_add_watch(descriptor, house.folder.c_str(), events) < 0) {
        watch.reset();
        return;
    }
    WaitForHouseChange();
}

void LiveHost::WaitForHouseChange() {
    watch->async_wait(asio::posix::stream_descriptor::wait_read,
                      [this](const boost::system::error_code& error) {
                          if (error || !watch)
                              return;
                          char events[4096];
                          while (::read(watch->native_handle(), events, sizeof events) > 0) {
                          }
                          watchTimer.expires_after(EditPause); // begins anew with each further change
                          watchTimer.async_wait([this](const boost::system::error_code& cancelled) {
                              if (!cancelled)
                                  OnHouseChanged();
                          });
                          WaitForHouseChange();
                      });
}

void LiveHost::OnHouseChanged() {
    try {
        House changed = ReadHouse(house.folder);
        if (changed.texts != house.texts || !offeredIsShown)
            OfferHouse(std::move(changed));
    } catch (const Fault& fault) {
        check = CheckResult();
        check.errors = 1;
        check.findings.push_back({HouseFile::Structure, 1, 1, Severity::Error, "", fault.what()});
        offeredIsShown = false;
        Say(fault.what());
        ++stateVersion;
        NewsForAll();
    }
}

// ---- observers ----

void LiveHost::Subscribe(LiveObserver* observer) {
    observers.insert(observer);
    ++stateVersion;
    NewsForAll();
}

void LiveHost::Unsubscribe(LiveObserver* observer) {
    if (observers.erase(observer) == 0)
        return;
    if (touchOwner == observer)
        Touch(observer, {TouchType::Up, lastPoint});
    ++stateVersion;
    NewsForAll();
}

void LiveHost::NewsForAll() {
    const std::vector<LiveObserver*> all(observers.begin(),
                                         observers.end()); // one may leave while it is told
    for (LiveObserver* observer : all)
        if (observers.contains(observer))
            observer->OnNews();
}

void LiveHost::Say(const std::string& text) const {
    if (!options.quiet)
        std::fprintf(stderr, "wallslate-host: %s\n", text.c_str());
}

nlohmann::json LiveHost::State() const {
    static constexpr const char* words[] = {"starting", "loading", "running", "ended"};
    nlohmann::json findings = nlohmann::json::array();
    for (const Finding& finding : check.findings)
        findings.push_back({{"file", FileNameOf(finding.file)},
                            {"line", finding.line},
                            {"column", finding.column},
                            {"error", finding.severity == Severity::Error},
                            {"path", finding.path},
                            {"text", finding.text}});
    nlohmann::json state;
    state["display"] = {{"phase", words[static_cast<int>(phase)]}, {"words", phaseWords}};
    if (displayTime)
        state["display"]["answerMs"] = static_cast<double>(displayTime->count()) / 1000.0;
    state["house"] = {{"name", houseName},
                      {"version", houseVersion},
                      {"summary", Summary(check)},
                      {"shown", offeredIsShown},
                      {"findings", std::move(findings)}};
    state["viewers"] = observers.size();
    state["settings"] = SettingsJson();
    return state;
}

nlohmann::json LiveHost::HouseItems() const {
    nlohmann::json items = nlohmann::json::array();
    for (const HouseItem& item : index.Items())
        items.push_back({{"u", item.uuid},
                         {"t", item.type},
                         {"d", item.depth},
                         {"k", std::string(ItemTypeName(item.type))},
                         {"n", item.name},
                         {"r", item.room},
                         {"c", item.category}});
    return items;
}

} // namespace desktop
