#pragma once

#include <string>

#include "core/TextPass.h"
#include "render/RenderDevice.h"

namespace lumivane {

class TextEngine;
class TextDrawer;

// What the passes of a frame share, handed to each when it is made; the frame renderer owns it
// and fills in the device side while an output runs.
struct PassContext {
  PassContext(TextEngine& engine, const TextDraw& drawn) : text(engine), textDrawn(drawn) {}

  TextEngine& text;
  // Told of every text and copy a text pass draws (the headless text log).
  const TextDraw& textDrawn;
  RenderDevice* device = nullptr;  // none: no output runs, and the passes draw nothing
  TextDrawer* textDrawer = nullptr;
  std::string applicationFolder;

  int Width() const noexcept { return device != nullptr ? device->BackBufferWidth() : 0; }
  int Height() const noexcept { return device != nullptr ? device->BackBufferHeight() : 0; }
  // The back-buffer-sized texture in `slot`, made when missing: exactly the back buffer's size, so
  // that texture coordinates 0 to 1 span a copy of the frame.
  TextureId BackBufferTexture(TextureId& slot) const {
    if (slot == 0 && device != nullptr)
      slot = device->CreateTexture(Width(), Height(), TextureFormat::X8R8G8B8, true, true);
    return slot;
  }
  // Gives back the texture in `slot` now, if any.
  void Release(TextureId& slot) const {
    if (slot != 0 && device != nullptr) device->ReleaseTexture(slot);
    slot = 0;
  }
};

}  // namespace lumivane
