#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "core/Clock.h"
#include "core/TextFrame.h"
#include "core/TextPass.h"
#include <vector>

#include "render/BackgroundMesh.h"
#include "render/FrameArguments.h"
#include "render/ImageLoader.h"
#include "render/MeshImport.h"
#include "render/RenderDevice.h"
#include "render/TextBox.h"
#include "render/TextDrawer.h"

namespace lumivane {

class TextEngine;
class MainForm;
struct TextObject;

// The one render object of playback: the device's frame, in its fixed order of passes, and the
// device facts the rest of the program asks for.
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
  bool Running() const noexcept { return device_ != nullptr; }
  RenderDevice* Device() noexcept { return device_; }

  int BackBufferWidth() const noexcept { return device_ != nullptr ? device_->BackBufferWidth() : 0; }
  int BackBufferHeight() const noexcept { return device_ != nullptr ? device_->BackBufferHeight() : 0; }
  int BitDepth() const noexcept { return BitDepthOf(kBackBufferFormat); }
  // 32 for the two 32-bit formats A8R8G8B8 and X8R8G8B8 (codes 21 and 22), else 24, also for
  // formats that are really 16-bit.
  static int BitDepthOf(std::uint32_t formatCode) noexcept { return formatCode == 21 || formatCode == 22 ? 32 : 24; }
  // The capability lines, "\r\n" between them.
  std::string GetDevicePropertyInfo() const;
  static std::string DevicePropertyInfo(const DeviceCaps& caps);

  // One whole frame, in the fixed order of passes. Never throws; a failing pass is simply missing.
  void RenderFrame(const FrameArguments& args);
  // Draws a multi-line text character by character, only the characters that lie on the back
  // buffer. Answers the height of the last line.
  float RenderVisibleText(const TextFont& font, float pixelSize, std::uint32_t color, std::string_view text,
                          TextRect rect, std::uint32_t format);

  // Told of every text and copy the flat pass draws (the headless text log).
  std::function<void(std::int32_t index, std::int32_t copy, const TextFrame& frame)> TextDrawn;
  // The end of the frame: show the back buffer (or queue it for read back), then feed the clones.
  std::function<void()> Present;
  std::function<void()> CloneRender;

  // The texture that holds the last copy of the output: exactly the back buffer's size, so that
  // the background's texture extent of 1 spans it. It starts as "NoTexture.bmp" of the
  // application folder.
  TextureId FeedbackTexture();

  // ---- Backgrounds ---------------------------------------------------------------------------
  // One picture of the output's background list.
  struct BackgroundTexture {
    TextureId Texture = 0;
    float DUFeedBackFactor = 1, DVFeedBackFactor = 1;
    std::string FileName;
    bool Visible = false;
    std::int32_t Width = 0, Height = 0;
    std::uint64_t Loading = 0;  // the decode under way, 0 when none
  };
  // Shows `file` next (hiding all others with `hideAll`): a new file joins the list and is decoded
  // off the frame path; the frame takes the change at once. An empty name only hides.
  void InitializeBackground(const std::string& file, bool hideAll, std::int32_t width, std::int32_t height);
  void ResetBackGrounds();
  TextureId GetBackGroundTexture(std::int32_t index) const;
  std::int32_t BackgroundCount() const noexcept { return static_cast<std::int32_t>(backgrounds_.size()); }
  const BackgroundTexture* Background(std::int32_t index) const noexcept {
    return index >= 1 && index <= BackgroundCount() ? &backgrounds_[static_cast<std::size_t>(index - 1)] : nullptr;
  }
  std::int32_t BackgroundIndex() const noexcept { return backgroundIndex_; }
  const BackGroundMesh& LastBackGroundMesh() const noexcept { return lastMesh_; }
  void SetLastBackGroundMesh(const BackGroundMesh& mesh) noexcept { lastMesh_ = mesh; }
  // Offline renders and tests: pictures asked for are decoded and taken onto the device before
  // the next frame is drawn, rather than shown when ready.
  bool WaitForImages = false;
  // Decodes every picture asked for and takes it onto the device now.
  void FinishImages();
  // Pixels of a picture taken onto the device per frame while one is coming in, so that a large
  // picture never makes one frame long.
  std::size_t UploadPixelsPerFrame = 1u << 18;

  // ---- The effect layer --------------------------------------------------------------------
  // With a file name, the effect shows that picture (decoded off the frame path; the last one
  // stays until it is in); with none, a capture of the back buffer as it is now.
  void SetEffectTexture(const std::string& file);
  void ResetEffectTexture();
  TextureId GetEffectTexture() const noexcept { return effectTexture_; }
  const std::string& EffectFileName() const noexcept { return effectFileName_; }
  // Told as the output ends, while its state can still be read (the last background layout).
  std::function<void()> Ending;
  // The effect colour after each random drift; the control takes it, so the drift goes on from there.
  std::function<void(std::int32_t programColor)> EffectColorChanged;

  // ---- The output stage --------------------------------------------------------------------
  // The output mask: the picture scaled to the back buffer's power-of-two size; an empty name
  // removes it (the mask pass then multiplies with white).
  void CreateMaskTexture(const std::string& file);
  TextureId MaskTexture() const noexcept { return maskTexture_; }
  // The mask pass, with the output fade folded in (255: the mask alone).
  void RenderMask(std::int32_t fade = 255);
  void RenderOutputFade(std::int32_t fade);
  void RenderInvert();
  // Off, the frame's last passes are always drawn, never run as one (tests hold the two ways to
  // the same picture).
  bool FinishInOnePass = true;
  void RenderGrayScale();
  // The last picture of a preset shines through the next for `frames` frames.
  void InitializeMachineStateOverlay(std::int32_t frames);
  void RenderMachineStateOverlay();
  std::int32_t OverlayFrameCount = 0;
  std::int32_t OverlayFramesLeft() const noexcept { return overlayLeft_; }
  // The finished picture as a texture for projection mapping, with the share of it the back
  // buffer fills. One texture, refilled at each call.
  TextureId GetCurrentOutputTexture(float& ratioX, float& ratioY);
  // Writes the back buffer to a 24-bit Windows bitmap, whole or not at all.
  bool RenderToFile(const std::string& path, std::string& error);
  TextDrawer* Text() noexcept { return textDrawer_.get(); }

  // ---- Text boxes: what the device holds for each 3D text, in the engine's order ----------
  // Builds the missing records and refreshes those whose box size or picture changed: texture
  // sizes follow the box in preview units, rounded up to powers of two. Skipped while the text
  // engine is busy. The frame calls it too, so a record never lags its text by more than a frame.
  void TextBoxSetup();
  // Drops record `index`; those above move one place down with their textures.
  void TextBoxRemove(std::int32_t index);
  // Takes the picture file name and video lock from `settings` for record `index` (every record
  // with `applyToAll`); with `reload` the picture is loaded (pure black transparent) and shared by
  // all records it was given to. An empty name gives the record back its string texture.
  void TextBoxSetTexture(std::int32_t index, const TextObject& settings, bool reload, bool applyToAll);
  // Keeps the records in the order of the texts after text `index` moved to the first place
  // (`toFirst`) or the last. Nothing is rebuilt. Skipped while the text engine is busy.
  void TextFrameZOrder(std::int32_t index, bool toFirst);
  // Scales text `index`'s box after its placement (a motion path's scale).
  void ScaleText(std::int32_t index, float x, float y, float z);
  // Throws every record away; the next setup makes them again.
  void Reset3DText() { textBoxes_.clear(); }
  // Offline renders and tests: a frame waits until each model it shows has been read, rather than
  // drawing without it meanwhile.
  bool WaitForModels = false;
  // What a model file may hold; larger ones are refused with a message in the text's mesh info.
  MeshImportLimits ModelLimits;
  std::int32_t TextBoxCount() const noexcept { return static_cast<std::int32_t>(textBoxes_.size()); }
  const TextBox* TextBoxRecord(std::int32_t index) const noexcept {
    return index >= 1 && index <= TextBoxCount() ? &textBoxes_[static_cast<std::size_t>(index - 1)] : nullptr;
  }
  // The camera distance of a text's 3D pass: its mesh zoom when one is set, else where the
  // preview's extent just fills the view.
  static float CameraZ(const TextObject& text, int previewHeight);

 private:
  // ---- Frame steps -----------------------------------------------------------------------
  // Step 3 and 4: the background's timer, fades and change, then its draw.
  void BackgroundStep(const FrameArguments& args, Tick now, bool& changed);
  BackGroundMeshArguments MeshArguments(const FrameArguments& args, bool hold, bool fadeIn) const;
  void BuildBackGroundMesh(const FrameArguments& args, bool hold, bool fadeIn);
  void RenderBackground(TextureId texture);
  void RenderOutputToBackGround();
  void ComputeBackGroundFeedBackFactor(std::int32_t index);
  // The effect's layout on its timer; true when there is a rectangle to blend.
  bool LayOutEffect(const EffectArguments& e, Tick now);
  void DrawEffect(const EffectArguments& e);
  bool FeedbackDue(const FrameArguments& args, Tick now) const;
  void FeedbackCopy(const FrameArguments& args, Tick now);
  // The effect's rectangle (when `effect`), invert, mask and fade: in one pass where the device
  // offers it, else drawn.
  void FinishOutput(const EffectArguments* effect, bool invert, bool mask, std::int32_t fade);
  // A full-screen rectangle in `color` with `texture`, blended `source` over `destination`.
  void DrawOutputRectangle(std::uint32_t color, TextureId texture, std::uint32_t source, std::uint32_t destination);
  // Takes finished decodes onto the device, `budget` pixels at most (a slice a frame).
  void PollImages(std::size_t budget);
  void ImageArrived(ImageLoader::Result& result, TextureId texture);
  // Textures given up outside a frame (an operator's reset) go back to the device at the start of
  // the next frame or at the end, when the device's context is sure to be current.
  void ReleaseLater(TextureId texture);
  void ReleasePending();
  // The back-buffer-sized texture in `slot`, made when missing.
  TextureId BackBufferTexture(TextureId& slot);
  void ReleaseOutputTextures();

  // The flat texts, straight into the back buffer.
  void DrawFlatTexts(const FrameArguments& args);
  void DrawText(std::int32_t index, std::int32_t copy, const TextFrame& frame);
  std::uint32_t FormatFlags(std::int32_t index, std::string_view alignX) const;
  // The 3D pass: every 3D text and each of its copies placed, turned and scaled in world space
  // and drawn on its shape.
  void Render3D(const FrameArguments& args);
  void Render3DCopy(std::int32_t index, std::int32_t copy, const TextFrame& frame);
  // Record `index` made or refreshed for its text's box and picture.
  void RefreshTextBox(std::int32_t index);
  std::shared_ptr<const TextureId> HoldTexture(TextureId texture);
  std::shared_ptr<const MeshId> HoldMesh(MeshId mesh);
  // The model read from `path`, shared while any record shows it; a new one starts reading.
  std::shared_ptr<Mesh3D> Model(const std::string& path);
  // An extruded text: its mesh built again when font, extrusion or string changed, then drawn
  // lit in `color` at the size of its flat counterpart.
  void CreateFull3DText(TextBox& box, const TextObject& text, const TextFrame& frame, std::uint32_t color,
                        float previewHeight);
  // A "Custom" text: its model centred on the text's place and drawn lit in `color`.
  void RenderModel(TextBox& box, const TextObject& text, std::uint32_t color);

  TextEngine& text_;
  RenderDevice* device_ = nullptr;
  std::unique_ptr<TextDrawer> textDrawer_;
  TextPass textPass_;
  // Made once: a callback made per frame would allocate. The scale is the frame's.
  TextDraw drawText_;
  float drawScaleX_ = 0, drawScaleY_ = 0, drawHeight_ = 0;
  TextureId feedbackTexture_ = 0;  // the texture the background feeds back from
  TextureId feedbackTarget_ = 0;   // the back-buffer-sized copy it usually is

  // Backgrounds.
  std::vector<BackgroundTexture> backgrounds_;
  std::int32_t backgroundIndex_ = 0;
  bool backgroundChangeRequested_ = false;
  Tick lastBackgroundTick_ = 0;
  BackGroundMesh lastMesh_;
  TLVERTEX backgroundVertices_[12] = {};
  TextureId lastDrawnBackground_ = 0;  // shown while the next picture is still coming in

  // The effect layer.
  TextureId effectTexture_ = 0;     // what the effect shows: the file's picture or the capture
  TextureId effectFile_ = 0;        // the file's picture, owned
  TextureId effectCapture_ = 0;     // the back-buffer-sized capture, owned
  std::string effectFileName_;
  std::uint64_t effectLoading_ = 0;
  std::int32_t effectTextureWidth_ = 0, effectTextureHeight_ = 0;
  BackGroundMesh effectMesh_;
  Tick lastEffectTick_ = 0, lastEffectCaptureTick_ = 0;
  TLVERTEX effectVertices_[12] = {};

  // The output stage.
  TextureId maskTexture_ = 0;
  std::uint64_t maskLoading_ = 0;
  TextureId overlayTexture_ = 0;
  std::int32_t overlayLeft_ = 0;
  TextureId outputTexture_ = 0;
  Tick lastFeedbackTick_ = 0;
  bool feedbackCopied_ = false;  // the rate 0 copies once
  TLVERTEX outputRectangle_[12] = {};
  int outputRectangleWidth_ = 0, outputRectangleHeight_ = 0;

  // Pictures coming in: decodes under way, and the one being taken onto the device a slice at a time.
  std::unique_ptr<ImageLoader> images_;
  struct Upload {
    ImageLoader::Result result;
    TextureId texture = 0;
    int rowsDone = 0;
  };
  std::vector<Upload> uploads_;
  std::vector<TextureId> released_;
  std::vector<TextBox> textBoxes_;
  std::map<std::string, std::weak_ptr<Mesh3D>> models_;
  TextBoxScratch textBoxScratch_;
  TextDraw draw3D_;
  const FrameArguments* frameArguments_ = nullptr;  // the frame's, while the 3D pass runs
  std::string applicationFolder_;
};

}  // namespace lumivane
