#pragma once

#include "render/FrameArguments.h"

namespace lumivane {

class MainForm;

// Reads what the frame depends on from the main form's controls (and the layer forms it knows),
// once a frame.
FrameArguments ReadFrameArguments(const MainForm& form);

}  // namespace lumivane
