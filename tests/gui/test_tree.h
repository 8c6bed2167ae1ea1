// An application for tests of the tree: a root of 720 by 720 with a store, the project's style sheet, and
// elements that note what happens to them.
#pragma once

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/class_factory.h"
#include "foundation/clock.h"
#include "foundation/files.h"
#include "gui/application.h"
#include "gui/element.h"
#include "structure/structure.h"

namespace test_tree {

// One painted element: fills its rectangle, and writes down its events as "down 10/20".
class Probe : public CVrGuiElement {
public:
    Probe() {
        type = ElementType::Dummy;
        className = "Probe";
        eventMask = EventAll;
    }
    ~Probe() override {
        if (onDestroy)
            onDestroy();
    }

    void OnTouchDown(const CVrPoint& point) override { Note("down", point); }
    void OnTouchMove(const CVrPoint& point) override { Note("move", point); }
    void OnTouchUp(const CVrPoint& point) override { Note("up", point); }
    bool OnPressCancelled() override {
        const bool answer = letsGo;
        log.push_back("cancelled");
        Tell("cancelled");
        return answer;
    }
    bool KeepsContent() const override { return keepsContent; }
    uint32_t GetCornerMask() const override { return cornerMask; }
    void DrawContent() override { paintings++; }
    bool OnTimer(uint64_t now) override {
        const bool answer = wantsRepaint;
        ticks.push_back(now);
        Tell("timer");
        return answer;
    }
    void OnVisibilityChanged(bool hidden) override { log.push_back(hidden ? "hidden" : "shown"); }

    // Takes the log out.
    std::vector<std::string> Taken() { return std::exchange(log, {}); }

    std::vector<std::string> log;
    std::vector<uint64_t> ticks;
    std::function<void(const std::string&)> onEvent; // may destroy this element
    std::function<void()> onDestroy;
    int paintings = 0;
    bool letsGo = true; // answer to OnPressCancelled
    bool keepsContent = false;
    bool wantsRepaint = false;
    uint32_t cornerMask = CornerNone;

private:
    void Note(const char* name, const CVrPoint& point) {
        log.push_back(std::string(name) + " " + std::to_string(point.x) + "/" + std::to_string(point.y));
        Tell(name);
    }
    void Tell(const char* name) {
        const auto hook = onEvent; // survives this element
        if (hook)
            hook(name);
    }
};

inline std::string SourceFile(const std::string& name) {
    return std::string(WALLSLATE_SOURCE_DIR "/") + name;
}

// The application with its root. Elements of a test live below the root and go with it.
class Application : public CVrGuiApplication {
public:
    Application() {
        structure.styles.PrepareClasses();
        root = std::make_unique<Probe>();
        root->type = ElementType::MainWin;
        root->flags |= CVrGuiElement::FlagOwnStore;
        root->SetRect(0, 0, 720, 720);
        root->InitMem(root->rect);
        root->eventMask = 0;
    }
    ~Application() override { root.reset(); }

    CVrGuiElement* Root() const override { return root.get(); }
    CVrStructure* Structure() const override { return &structure; }
    bool IsPopupUp() const override { return popupIsUp; }

    void LoadStyles() {
        CVrxStringU text;
        LoadStringFromFile(SourceFile("resources/style.json").c_str(), text);
        structure.styles.Load(text);
    }

    mutable CVrStructure structure;
    std::unique_ptr<Probe> root;
    bool popupIsUp = false;
};

// A child of any element class, with a place and a colour.
template <typename T = Probe>
T& Add(CVrGuiElement& parent, const CVrRect& rect, uint32_t color = 0) {
    auto* child = new T;
    child->SetParent(&parent);
    child->SetRect(rect);
    if (color != 0) {
        for (uint32_t slot = 0; slot < CVrGuiElement::ColorSlotCount; slot++) {
            child->colorIndex[slot] = 1;
            child->colors[slot] = color;
        }
    }
    return *child;
}

using Notes = std::vector<std::string>;

} // namespace test_tree
