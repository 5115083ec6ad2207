#pragma once

#include <memory>
#include <string>

#include "core/ControlModel.h"
#include "core/EngineContext.h"
#include "core/TextEngine.h"
#include "core/TextPass.h"
#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "forms/OutputConfigurationForm.h"
#include "forms/Shape3DForm.h"
#include "persistence/ShowFile.h"

namespace lumivane {

class Clock;
class FrameRenderer;
class MsgBox;
class RandomSource;

// Where the stage finds the output it draws through. The windowed program answers with the output
// window's renderer while playback runs; the headless runner with its own.
class OutputHost {
 public:
  virtual ~OutputHost() = default;
  // The renderer of the running output (one with a device); nullptr while none runs. The layer
  // forms and the text boxes reach the output through it.
  virtual FrameRenderer* RunningRenderer() = 0;
  // The renderer that walks this frame. Usually the running one; the headless runner answers with
  // its renderer even without a device, so the texts still step and reach the text log. nullptr:
  // the texts only step (their markers in the pane show what they say).
  virtual FrameRenderer* FrameRendererForFrame() { return RunningRenderer(); }
};

// The engine, its forms and the wiring between them, built in one place for the windowed program
// and the headless runner alike, so a show plays through the same objects in both. What only a
// window can do (dialogs, the output window, clones, the preview) the windowed program adds on top.
class Stage {
 public:
  Stage(Clock& clock, RandomSource& random, MsgBox& msgBox, std::string applicationFolder);
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // Set once by the entry point, before the first frame; nullptr: no output, texts only step.
  void SetOutputHost(OutputHost* host) noexcept { host_ = host; }

  // A new output's renderer takes the forms' last background layout, their pictures and mask, and
  // hands the effect colour's drift back to its control. The main form asks for it itself once
  // its output has a device; the headless runner calls it when it opens its device.
  void AttachOutput(FrameRenderer& renderer);

  // One frame: reads the controls once into the frame's arguments and walks the frame's passes.
  void RenderFrame();

  const std::string& ApplicationFolder() const noexcept { return applicationFolder_; }

  // Declared in the order they are built: each takes those above it.
  EngineContext Context;
  ControlModel Model;
  TextEngine Text;
  MainForm Main;
  BackgroundsForm Backgrounds;
  EffectsForm Effects;
  Shape3DForm Shape;
  OutputConfigurationForm OutputConfiguration;
  ShowFile Show;

 private:
  class RendererLayers;

  std::string applicationFolder_;
  OutputHost* host_ = nullptr;
  std::unique_ptr<RendererLayers> layers_;
  TextPass idleTexts_;
};

}  // namespace lumivane
