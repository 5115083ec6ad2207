#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "core/TextFrame.h"
#include "core/TextPass.h"
#include <vector>

#include "render/MeshImport.h"
#include "render/RenderDevice.h"
#include "render/TextBox.h"
#include "render/TextDrawer.h"

namespace lumivane {

class clsText;
class frmMain;
struct TextObject;

// What frmMain.Render reads from the controls once a frame and hands to RenderFrame. The passes
// that are not built yet add their values as they come.
struct FrameArguments {
  std::int32_t ClearColor = 0;     // picBackGroundColor's colour, program order
  bool KeepPreviousFrame = false;  // the global that chkHoldBackground sets
  TextFrameInput Text;
  // The preview pane the text boxes are placed on; the flat texts scale from it to the back buffer.
  int PreviewWidth = 480;
  int PreviewHeight = 270;
};

// Reads what the frame depends on from the main form's controls, once.
FrameArguments ReadFrameArguments(const frmMain& form);

// The one render object of playback: the device's frame, in its fixed order of passes, and the
// device facts the rest of the program asks for.
class clsDirectx {
 public:
  // The back buffer keeps the display format; on this device that is X8R8G8B8.
  static constexpr std::uint32_t kBackBufferFormat = static_cast<std::uint32_t>(TextureFormat::X8R8G8B8);

  explicit clsDirectx(clsText& text);
  ~clsDirectx();
  clsDirectx(const clsDirectx&) = delete;
  clsDirectx& operator=(const clsDirectx&) = delete;

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

  // The texture that holds the last copy of the output; it starts as "NoTexture.bmp" of the
  // application folder at back buffer size.
  TextureId FeedbackTexture();
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

  clsText& text_;
  RenderDevice* device_ = nullptr;
  std::unique_ptr<TextDrawer> textDrawer_;
  TextPass textPass_;
  // Made once: a callback made per frame would allocate. The scale is the frame's.
  TextDraw drawText_;
  float drawScaleX_ = 0, drawScaleY_ = 0, drawHeight_ = 0;
  TextureId feedbackTexture_ = 0;
  std::vector<TextBox> textBoxes_;
  std::map<std::string, std::weak_ptr<Mesh3D>> models_;
  TextBoxScratch textBoxScratch_;
  TextDraw draw3D_;
  const FrameArguments* frameArguments_ = nullptr;  // the frame's, while the 3D pass runs
  std::string applicationFolder_;
};

}  // namespace lumivane
