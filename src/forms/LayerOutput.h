#pragma once

#include <cstdint>
#include <string>

#include "core/BackgroundLayout.h"

namespace lumivane {

// What the background and effect forms ask of the running output: its picture list, mask, effect
// picture and background layout. The stage answers while an output runs (the renderer's passes)
// and does nothing while none does; tests answer with a recording fake.
class LayerOutput {
 public:
  virtual ~LayerOutput() = default;

  // Shows `file` next, hiding every other picture with `hideAll`; an empty name only hides.
  virtual void ShowBackground(const std::string& file, bool hideAll, std::int32_t width, std::int32_t height) = 0;
  virtual void ResetBackgrounds() = 0;
  // The output's last background layout: false while no output runs.
  virtual bool ReadLayout(BackGroundMesh& mesh) = 0;
  virtual void SetLayout(const BackGroundMesh& mesh) = 0;
  // The output mask; an empty name removes it.
  virtual void SetMask(const std::string& file) = 0;
  // The effect's picture; ResetEffectPicture leaves a capture or nothing in its place.
  virtual void SetEffectPicture(const std::string& file) = 0;
  virtual void ResetEffectPicture() = 0;
};

}  // namespace lumivane
