#pragma once

#include <functional>

namespace lumivane {

class FrameRenderer;
class BackgroundsForm;
class EffectsForm;
class MainForm;

// Ties the background and effect forms to the frame: the main form reads their controls, and their
// hooks reach the output that `renderer` answers (nullptr while none runs). Picture sizes are read
// through Qt's image readers.
void ConnectOutputForms(MainForm& main, BackgroundsForm& backgrounds, EffectsForm& effects,
                        std::function<FrameRenderer*()> renderer);

// A new output: it takes the forms' last background layout, their pictures and mask, and hands
// the effect colour's drift back to its control. Connected forms do this themselves once the main
// form's output has its device.
void AttachOutput(FrameRenderer& renderer, BackgroundsForm& backgrounds, EffectsForm& effects);

}  // namespace lumivane
