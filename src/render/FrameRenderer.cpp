#include "render/FrameRenderer.h"

#include "core/Color.h"
#include "core/EngineContext.h"
#include "core/TextEngine.h"

namespace lumivane {

namespace {

std::string Number(int value) { return std::to_string(value); }

}  // namespace

FrameRenderer::FrameRenderer(TextEngine& text) : context_(text, TextDrawn) {
  // Each picture goes to the pass that asked for it; tickets are never shared.
  pictures_.Arrived = [this](std::uint64_t ticket, TextureId texture) {
    return backgrounds_.PictureArrived(ticket, texture) || effect_.PictureArrived(ticket, texture) ||
           output_.PictureArrived(ticket, texture);
  };
}

FrameRenderer::~FrameRenderer() { Destroy(); }

bool FrameRenderer::Initialize(RenderDevice* device, const std::string& applicationFolder, std::string& error) {
  Destroy();
  if (device == nullptr) return true;
  context_.device = device;
  device->SetRenderState(RenderState::LIGHTING, 0);
  textDrawer_ = std::make_unique<TextDrawer>(*device);
  context_.textDrawer = textDrawer_.get();
  context_.applicationFolder = applicationFolder;
  // A device that cannot hold a texture cannot draw a frame.
  const TextureId probe = device->CreateTexture(2, 2, TextureFormat::X8R8G8B8);
  if (probe == 0) {
    error = "The device cannot make textures.";
    Destroy();
    return false;
  }
  device->ReleaseTexture(probe);
  return true;
}

void FrameRenderer::Destroy() {
  if (context_.device == nullptr) return;
  if (Ending) Ending();
  textBoxes_.Release();  // their textures and meshes go back to the device while it is still there
  context_.textDrawer = nullptr;
  textDrawer_.reset();
  backgrounds_.Release();
  effect_.Release();
  output_.Release();
  pictures_.Release();
  context_.device = nullptr;
}

std::string FrameRenderer::DevicePropertyInfo(const DeviceCaps& caps) {
  std::string info = "Display Adapater Capabilities                                               ";
  info += "\r\nMax Texture Height: " + Number(caps.MaxTextureHeight);
  info += "\r\nMax Texture Width: " + Number(caps.MaxTextureWidth);
  info += "\r\nMax Simultaneous TextureCount: " + Number(caps.MaxSimultaneousTextures);
  info += "\r\nMax VertexCount: " + Number(caps.MaxVertexCount);
  if (caps.SquareTexturesOnly)
    info += "\r\nSquare Textures Only\r\nProjection Mapping is possible only at square Resolutions";
  else
    info += "\r\nNon-Square Textures\r\nProjection Mapping is possible at all Resolutions";
  return info;
}

std::string FrameRenderer::GetDevicePropertyInfo() const {
  return DevicePropertyInfo(context_.device != nullptr ? context_.device->Caps() : DeviceCaps{});
}

void FrameRenderer::RenderFrame(const FrameArguments& args) {
  RenderDevice* d = context_.device;
  if (d == nullptr) {
    // No output: the texts still step, so their motion and the text log go on; nothing is drawn.
    flatTexts_.Draw(args);
    textBoxes_.Draw(args);
    EndFrame();
    return;
  }
  const Tick now = context_.text.Context().clock.Now();

  // Outside any scene, where the output's context is sure to be current: textures given up since
  // the last frame go back, pictures decoded meanwhile come onto the device (a slice a frame), and
  // a feedback loop's first source is drawn into its own texture.
  pictures_.BeginFrame();
  backgrounds_.PrepareFeedback(args.Background);

  // The back buffer's scene: the flat layers, bottom up. The clear is skipped when the last frame
  // is kept to be painted over.
  if (!args.KeepPreviousFrame) d->Clear(ToDeviceColor(args.ClearColor), true);
  d->BeginScene();
  // The background first, as everything else lies over it. Its timer runs here, and a change of
  // picture inside a feedback loop draws and copies the new picture at once.
  backgrounds_.Draw(args, now);
  // The last preset's picture fading out: over the new background, under every text.
  output_.RenderMachineStateOverlay();
  // Video and the first plug-in place belong here when they come: over the background layers,
  // under the texts.
  d->SetTexture(0);
  // The flat texts over the picture layers, straight into the back buffer.
  flatTexts_.Draw(args);
  d->EndScene();

  // The 3D texts draw their strings into textures of their own, which cannot happen inside the
  // back buffer's scene, then stand in the world over the flat layers.
  textBoxes_.Draw(args);

  // The effect blends over everything composed so far, texts included. Its rectangle is left to
  // the output stage's finish, which can blend it in the same pass as invert, mask and fade,
  // unless the feedback copy below is due: that copy must hold the effect, so it is drawn now.
  const bool effectLeft = effect_.Run(args.Effect, now, backgrounds_.FeedbackCopyDue(args, now));
  // The feedback loop copies the picture at its rate after the effect, which it feeds back too,
  // and before invert, mask and fade, which belong to the output alone and would otherwise
  // compound round the loop.
  backgrounds_.FeedbackCopy(args, now);
  // The output stage: the effect's rectangle when it was left here, then invert, the mask and the
  // fade, which runs in every frame.
  output_.Finish(effectLeft ? &effect_ : nullptr, args);
  // The second plug-in place and projection mapping belong here when they come: they take the
  // finished picture.
  EndFrame();
}

void FrameRenderer::EndFrame() {
  if (Present) Present();
}

}  // namespace lumivane
