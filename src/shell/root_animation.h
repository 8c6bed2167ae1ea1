// The root can lead three elements over a saved picture of the rest of the tree, which is then not painted: one that
// moves, one that scrolls, one button that fades in. Each has a slot; the main loop asks for them at every pass.
//
//   arm (ArmMove, ArmFade, ArmScroll) --> StartAnimations saves the picture without the element
//     --> StepAnimations: one step and one frame a pass, as long as there is work left
//     --> RemoveAnimations: the slots are empty, the listener is told, the tree is painted again
//
// A slot that was armed while another one runs joins it: the picture is saved anew without both. An element that is
// destroyed on its way leaves its slot empty. While a slot of the first two kinds is filled, the root paints without
// its element, and DrawAndUpdate of the application waits.
//
// The operations stand in CVrGuiMainWin; this file holds what they work on.
#pragma once

#include "foundation/geometry.h"
#include "gui/button.h"
#include "gui/element_ref.h"

struct CVrGuiMoveAnimation {
    CVrElementRef<> element;
    bool running = false;
    CVrRect clipRect; // only its height counts: rows of the screen from there on are left alone; 0: none
    CVrElementRef<> listener;      // told by OnPopupResult when the move is over
    bool listenerArgument = false; // what it is told
    int32_t startY = 0;            // relative to the parent, like targetY
    int32_t targetY = 0;
    int32_t step = 0; // pixels a pass, negative: up; 0 holds the element where it is
    bool done = false;
};

// The element scrolls by itself; as long as it stands here the whole tree is painted at every pass.
struct CVrGuiScrollAnimation {
    CVrElementRef<> element;
    bool running = false;
    bool started = false; // cleared at the start
};

struct CVrGuiButtonAnimation {
    CVrElementRef<CVrGuiButton> element;
    bool running = false;
    bool paused = false;
};
