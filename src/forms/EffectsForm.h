#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "core/ControlModel.h"
#include "forms/LayerOutput.h"

namespace lumivane {

// The blend names effect layers are stored with, and their device codes. An unknown source name
// blends as SRC_COLOR (3), an unknown target name as DEST_COLOR (9).
int EffectBlendCode(std::string_view name, bool source) noexcept;

// The effect window as the engine sees it: one textured rectangle blended over the composed
// picture, its picture from a file or captured from the output, re-laid out at random on its own
// timer. The Qt window is a view over these controls; the output is reached through hooks, which
// do nothing while no output runs.
class EffectsForm {
 public:
  static constexpr std::string_view kFormName = "frmEffects";
  // What the blend boxes offer; the other names come only from show files, and are kept.
  static constexpr std::string_view kBlendNames[] = {"DEST_COLOR", "INV_DEST_COLOR", "INV_SRC_COLOR",
                                                     "ONE",        "SRC_COLOR",      "ZERO"};

  struct Controls {
    ControlHandle chkEnableEffect, chkCaptureEffect, chkHoldEffectTimer, chkComputeAspectRatio, cboSourceBlend,
        cboTargetBlend, cmdEffectBlending1, cmdEffectBlending2, cmdEffectBlending3, cmdEffectBlending4,
        picEffectColor, SliderEffectColorRandom, SliderEffectTime, SliderEffectPositionRandomX,
        SliderEffectPositionRandomY, chkEffectPositionUniform, SliderEffectSizeRandomX, SliderEffectSizeRandomY,
        chkEffectSizeUniform, SliderEffectTileX, SliderEffectTileY, chkRandomizeTiling, SliderEffectOffsetX,
        SliderEffectOffsetY, chkRandomizeOffset, cmdLoadEffectTexture, cmdClearEffectTexture, picCurrentEffect,
        txtEffectFileName;
  };

  explicit EffectsForm(ControlModel& model);
  EffectsForm(const EffectsForm&) = delete;
  EffectsForm& operator=(const EffectsForm&) = delete;

  ControlModel& Model() noexcept { return model_; }
  const Controls& C() const noexcept { return c_; }

  // The picture file of the effect; empty while it is a capture or there is none.
  const std::string& EffectFileName() const noexcept { return ControlModel::Text(c_.txtEffectFileName); }
  // Takes a picture for the effect and hands it to the output; an empty name clears the file (a
  // capture or nothing takes its place).
  void SetEffectFile(const std::string& file);
  // cmdLoadEffectTexture and cmdClearEffectTexture.
  void LoadEffectTexture();
  void ClearEffectTexture();
  // A new output: the picture goes to it again, the output has lost it with its device.
  void Initialize();
  // cmdEffectBlending1..4: each sets both blend boxes.
  void EffectBlending(int button);

  // ---- Hooks, set where the output is known ----------------------------------------------------
  // The running output's effect picture; none in bare tests.
  LayerOutput* Output = nullptr;
  std::function<std::string()> ChooseEffectFile;
  // Told when the picture changed, so the view can show it in picCurrentEffect.
  std::function<void()> GetEffectScreenShot;

 private:
  void RegisterControls();
  void Connect();

  ControlModel& model_;
  Controls c_;
};

}  // namespace lumivane
