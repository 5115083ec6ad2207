#pragma once

#include <string_view>

namespace lumivane {

// The controls that animation recording and MIDI learn must never take over: output set-up, file
// and reset buttons and the like. Kept verbatim, missing separators included.
inline constexpr std::string_view kUndriveableControlNames =
    "cboResolution;cmdFullScreen;chkAlwaysOnTop;cboMonitors;cmdRefreshMonitor;cmdBrowse;"
    "cmdShowBackground;cmdMIDI;cmdSave;cmdLoad;cmdClone;CmdCloneParameters;chkDrawGrid;"
    "chkBoundingBox;cmdDelete;cmdReset;cmdPlay;CmdStop;cmdVideo;cmdResetVideos;chkPreview;cmdLoad;"
    "CmdStop;chkLoop;cmdPlay;cmdSaveMachineState;cmdSaveMachineStates;cmdScreenShot;cmdEffects;"
    "cmdLoadEffectTexture;picCurrentEffect;cmdLoadAll;cmdLockResolution;cmdSetEffect;cmdApply;"
    "chkUIClassic;cmdFontFinder;cmdPreview;cmdShowMainControl;cmdSetGuidePictureoptPreview4FPS,"
    "optPreview8FPS;cmdShowMachineStates;cmdInfo;chkDrawMotionPath;chkLineMotionPath;"
    "chkCircleMotionPath;cmdDeleteMotionPath;cmdSplitText;chkAssignMotionPath;cmdDelete;"
    "cmdResetMotionPath;cmdRedraw;cmdFreeFrameSliderFreeFrameQuality";

// A plain case-sensitive substring test against the list above, so any name that happens to be
// contained in it ("cmdFreeFrame", "Stop") is refused too; that breadth is intended.
constexpr bool IsUndriveableControlName(std::string_view name) noexcept {
  return kUndriveableControlNames.find(name) != std::string_view::npos;
}

}  // namespace lumivane
