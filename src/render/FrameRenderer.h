#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/TextPass.h"
#include "render/BackgroundPass.h"
#include "render/EffectPass.h"
#include "render/FlatTextPass.h"
#include "render/FrameArguments.h"
#include "render/IncomingPictures.h"
#include "render/OutputStagePass.h"
#include "render/PassContext.h"
#include "render/RenderDevice.h"
#include "render/TextBoxPass.h"
#include "render/TextDrawer.h"

namespace lumivane {

class TextEngine;

// The one render object of playback: the device's frame as its passes in their fixed order, and
// the device facts the rest of the program asks for. Each layer is a pass that owns its state;
// callers reach a layer's operations through its pass.
class FrameRenderer {
 public:
  // The back buffer keeps the display format; on this device that is X8R8G8B8.
  static constexpr std::uint32_t kBackBufferFormat = static_cast<std::uint32_t>(TextureFormat::X8R8G8B8);

  explicit FrameRenderer(TextEngine& text);
  ~FrameRenderer();
  FrameRenderer(const FrameRenderer&) = delete;
  FrameRenderer& operator=(const FrameRenderer&) = delete;

  // Takes the device made for the output (nullptr: frames still step every text, for the text log,
  // but draw nothing) and turns lighting off. False with the reason when the device cannot serve.
  bool Initialize(RenderDevice* device, const std::string& applicationFolder, std::string& error);
  // Releases what the device holds for this object; the device itself belongs to its window.
  void Destroy();
  bool Running() const noexcept { return context_.device != nullptr; }
  RenderDevice* Device() noexcept { return context_.device; }

  int BackBufferWidth() const noexcept { return context_.Width(); }
  int BackBufferHeight() const noexcept { return context_.Height(); }
  int BitDepth() const noexcept { return BitDepthOf(kBackBufferFormat); }
  // 32 for the two 32-bit formats A8R8G8B8 and X8R8G8B8, else 24, also for formats that are
  // really 16-bit.
  static int BitDepthOf(std::uint32_t formatCode) noexcept {
    return formatCode == static_cast<std::uint32_t>(TextureFormat::A8R8G8B8) ||
                   formatCode == static_cast<std::uint32_t>(TextureFormat::X8R8G8B8)
               ? 32
               : 24;
  }
  // The capability lines, "\r\n" between them.
  std::string GetDevicePropertyInfo() const;
  static std::string DevicePropertyInfo(const DeviceCaps& caps);

  // One whole frame, its passes in their fixed order. Never throws; a failing pass is simply missing.
  void RenderFrame(const FrameArguments& args);

  // The passes, in the order the frame runs them.
  BackgroundPass& Backgrounds() noexcept { return backgrounds_; }
  const BackgroundPass& Backgrounds() const noexcept { return backgrounds_; }
  FlatTextPass& FlatTexts() noexcept { return flatTexts_; }
  TextBoxPass& TextBoxes() noexcept { return textBoxes_; }
  const TextBoxPass& TextBoxes() const noexcept { return textBoxes_; }
  EffectPass& Effect() noexcept { return effect_; }
  const EffectPass& Effect() const noexcept { return effect_; }
  OutputStagePass& Output() noexcept { return output_; }
  const OutputStagePass& Output() const noexcept { return output_; }
  // Pictures on their way to the device, for the backgrounds, the effect and the mask.
  IncomingPictures& Pictures() noexcept { return pictures_; }

  // Told of every text and copy the text passes draw (the headless text log).
  TextDraw TextDrawn;
  // The end of the frame: show the back buffer (or queue it for read back). The clones draw the
  // finished frame afterwards, called by the playback (OutputClones::CloneRender).
  std::function<void()> Present;
  // Told as the output ends, while its state can still be read (the last background layout).
  std::function<void()> Ending;

 private:
  void EndFrame();

  // Shared by the passes; declared first, as they hold on to it.
  PassContext context_;
  std::unique_ptr<TextDrawer> textDrawer_;
  IncomingPictures pictures_{context_};
  BackgroundPass backgrounds_{context_, pictures_};
  FlatTextPass flatTexts_{context_};
  TextBoxPass textBoxes_{context_};
  EffectPass effect_{context_, pictures_};
  OutputStagePass output_{context_, pictures_};
};

}  // namespace lumivane
