// A recorded fling replayed on the display: a house of twelve pages, the first with sixteen buttons. The display runs
// on its own thread by the real clock; the frames go into a ring of 16 MiB, as they do on their way to a host.
//
//   bench_fling [TABLE.csv]      the table holds every frame and every touch, for bench/fling/plot.py
//
//   pass            from the moment the main loop has woken to the frame in the ring
//   touch to frame  from the posting of a move that scrolls to the frame that shows it
//   interval        between two frames while the finger or the coasting moves the content
//   offset          of the menu row and of the page, beside each frame

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "app/gui_app.h"
#include "shell/frame.h"
#include "shell/frame_area.h"

namespace {

constexpr int kPages = 12, kButtons = 16;
constexpr int32_t kTolerance = 15; // pixels of travel before the content follows
constexpr double kStillMs = 100;   // without a frame for so long nothing moved
constexpr double kBehindMs = 1500; // for the last coasting
constexpr size_t kRingBytes = 16777216;

using Clock = std::chrono::steady_clock;

struct TouchEvent {
    double at = 0; // ms since the start
    uint32_t type = 0;
    CVrPoint point;
    bool scrolls = false;
    double shown = -1; // ms; -1: no frame yet
};

struct SentFrame {
    double begun = 0, sent = 0; // ms since the start
    int32_t menuOffset = 0, pageOffset = 0;
};

// What the display's thread and the finger's share.
struct Recording {
    std::mutex lock;
    Clock::time_point start;
    std::vector<TouchEvent> touches; // posted so far
    size_t answered = 0;             // of them
    std::vector<SentFrame> frames;
    double passBegun = 0;
    std::vector<uint8_t> ring = std::vector<uint8_t>(kRingBytes);
    size_t ringHead = 0;
    CVrGuiApp* app = nullptr;
};

Recording g_recording;

double Now() {
    return std::chrono::duration<double, std::milli>(Clock::now() - g_recording.start).count();
}

// Called right behind the wait: here a pass begins.
void OnPassBegins() {
    g_recording.passBegun = Now();
}

void PutIntoRing(const uint8_t* bytes, size_t count) {
    Recording& r = g_recording;
    const size_t first = std::min(count, kRingBytes - r.ringHead);
    memcpy(&r.ring[r.ringHead], bytes, first);
    memcpy(&r.ring[0], bytes + first, count - first);
    r.ringHead = (r.ringHead + count) % kRingBytes;
}

void OnFrame(const uint8_t* frame, uint32_t size) {
    Recording& r = g_recording;
    PutIntoRing(frame, size);
    const double now = Now();
    std::lock_guard guard(r.lock);
    const CVrGuiMainWin& root = r.app->mainWin;
    const auto* page = static_cast<const CVrGuiFrame*>(r.app->structure.root.children[0]->element);
    r.frames.push_back({r.passBegun, now, root.menu->offsetX, page->frameArea->offsetY});
    for (; r.answered < r.touches.size() && r.touches[r.answered].at <= r.passBegun; r.answered++)
        r.touches[r.answered].shown = now;
}

std::vector<TouchEvent> ReadEvents(const std::string& path) {
    std::ifstream file(path);
    std::vector<TouchEvent> events;
    CVrPoint down;
    bool drags = false;
    for (std::string line; std::getline(file, line);) {
        std::istringstream in(line);
        TouchEvent event;
        std::string type;
        if (line.starts_with("#") || !(in >> event.at >> type >> event.point.x >> event.point.y))
            continue;
        event.type = type == "down"   ? CVrGuiElement::EventDown
                     : type == "move" ? CVrGuiElement::EventMove
                                      : CVrGuiElement::EventUp;
        if (event.type == CVrGuiElement::EventDown) {
            down = event.point;
            drags = false;
        }
        event.scrolls = drags && event.type == CVrGuiElement::EventMove;
        const CVrPoint travel = event.point - down;
        drags = drags || std::max(std::abs(travel.x), std::abs(travel.y)) >= kTolerance;
        events.push_back(event);
    }
    return events;
}

void Load(CVrGuiApp& app) {
    std::string entries;
    for (int i = 1; i <= std::max(kPages, kButtons); i++)
        entries += (i > 1 ? "," : "") + std::string(R"({"T":342,"C":1,"N":"Ceiling light )") +
                   std::to_string(i) + R"(","U":)" + std::to_string(i) + "}";
    // Sixteen entries, of which four have no page of their own.
    app.mainWin.splashMs = 0;
    app.CreateScreen();
    app.InitAndLoad();
    app.LoadStructure(("[" + entries + "]").c_str(), R"([{"U":1,"N":"Light","I":1}])", "[]",
                      R"([{"I":1,"N":"lightbulb.svg"}])");
    while (app.mainWin.menu->ChildCount() > kPages)
        delete app.mainWin.menu->Child(kPages);
    app.mainWin.menu->ApplyLayout();
    auto* page = static_cast<CVrGuiFrame*>(app.structure.root.children[0]->element);
    page->items.Clear();
    for (uint32_t i = 0; i < kButtons; i++)
        page->items.Add(app.structure.root.children[i]);
}

void Replay(CVrGuiApp& app, const std::vector<TouchEvent>& events) {
    for (const TouchEvent& event : events) {
        std::this_thread::sleep_until(g_recording.start +
                                      std::chrono::duration<double, std::milli>(event.at));
        {
            std::lock_guard guard(g_recording.lock);
            g_recording.touches.push_back(event);
            g_recording.touches.back().at = Now();
        }
        app.PostTouch(event.type, event.point);
    }
    std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(kBehindMs));
}

void Print(const char* name, std::vector<double> values) {
    if (values.empty())
        return;
    std::sort(values.begin(), values.end());
    const auto at = [&values](double share) {
        return values[std::min(values.size() - 1,
                               static_cast<size_t>(share * static_cast<double>(values.size())))];
    };
    printf("%-16s %5zu   p50 %6.2f   p95 %6.2f   p99 %6.2f   worst %6.2f ms\n", name, values.size(), at(0.50),
           at(0.95), at(0.99), values.back());
}

void WriteTable(const char* path) {
    FILE* file = fopen(path, "w");
    if (!file) {
        fprintf(stderr, "bench_fling: %s cannot be written\n", path);
        return;
    }
    fprintf(file, "kind,at_ms,took_ms,menu_offset,page_offset\n");
    for (const SentFrame& frame : g_recording.frames)
        fprintf(file, "pass,%.3f,%.3f,%d,%d\n", frame.sent, frame.sent - frame.begun, frame.menuOffset,
                frame.pageOffset);
    for (const TouchEvent& touch : g_recording.touches)
        if (touch.scrolls && touch.shown >= 0)
            fprintf(file, "touch,%.3f,%.3f,,\n", touch.at, touch.shown - touch.at);
    fclose(file);
}

void Report() {
    std::vector<double> passes, touches, intervals;
    const std::vector<SentFrame>& frames = g_recording.frames;
    for (size_t i = 0; i < frames.size(); i++) {
        passes.push_back(frames[i].sent - frames[i].begun);
        if (i > 0 && frames[i].sent - frames[i - 1].sent < kStillMs)
            intervals.push_back(frames[i].sent - frames[i - 1].sent);
    }
    for (const TouchEvent& touch : g_recording.touches)
        if (touch.scrolls && touch.shown >= 0)
            touches.push_back(touch.shown - touch.at);
    Print("pass", passes);
    Print("touch to frame", touches);
    Print("interval", intervals);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<TouchEvent> events = ReadEvents(WALLSLATE_SOURCE_DIR "/bench/fling/fling.txt");
    CVrGuiApp app;
    g_recording.app = &app;
    Load(app);
    app.frameSlot = OnFrame;
    app.drainSlot = OnPassBegins;
    g_recording.start = Clock::now();
    app.Start();
    Replay(app, events);
    app.RequestStop();
    app.Join();
    Report();
    if (argc > 1)
        WriteTable(argv[1]);
    return 0;
}
