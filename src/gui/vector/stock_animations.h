// Ready animations for buttons. All are drawn in one ink, white, as a button tints what it shows; each runs
// in a circle without a visible seam. The caller owns the model, usually by way of CVrVectorAnimation::Load.
#pragma once

#include "gui/vector/animation_model.h"

// Four bars that rise and fall: something plays.
VAnimationModel* MakePlayingAnimation();

// An arc that runs around a faint ring: something is awaited.
VAnimationModel* MakeWaitingAnimation();
