#pragma once

#include <functional>

namespace lumivane {

class clsDirectx;
class frmBackgrounds;
class frmEffects;
class frmMain;

// Ties the background and effect forms to the frame: the main form reads their controls, and their
// hooks reach the output that `directx` answers (nullptr while none runs). Picture sizes are read
// through Qt's image readers.
void ConnectOutputForms(frmMain& main, frmBackgrounds& backgrounds, frmEffects& effects,
                        std::function<clsDirectx*()> directx);

// A new output: it takes the forms' last background layout, their pictures and mask, and hands
// the effect colour's drift back to its control. Connected forms do this themselves once the main
// form's output has its device.
void AttachOutput(clsDirectx& directx, frmBackgrounds& backgrounds, frmEffects& effects);

}  // namespace lumivane
