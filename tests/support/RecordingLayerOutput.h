#pragma once

#include <string>
#include <vector>

#include "forms/LayerOutput.h"

namespace lumivane::test {

// An output that keeps what the layer forms send it. Pictures shown with `hideAll` are recorded
// as "hide+NAME" when `markHideAll` is set.
struct RecordingLayerOutput final : LayerOutput {
  bool markHideAll = false;
  std::vector<std::string> shown, masks, effects;
  int resets = 0, effectResets = 0;
  BackGroundMesh layout;
  bool running = false;  // whether ReadLayout answers as a running output

  void ShowBackground(const std::string& file, bool hideAll, std::int32_t, std::int32_t) override {
    shown.push_back((markHideAll && hideAll ? "hide+" : "") + file);
  }
  void ResetBackgrounds() override { ++resets; }
  bool ReadLayout(BackGroundMesh& mesh) override {
    if (running) mesh = layout;
    return running;
  }
  void SetLayout(const BackGroundMesh& mesh) override { layout = mesh; }
  void SetMask(const std::string& file) override { masks.push_back(file); }
  void SetEffectPicture(const std::string& file) override { effects.push_back(file); }
  void ResetEffectPicture() override { ++effectResets; }
};

}  // namespace lumivane::test
