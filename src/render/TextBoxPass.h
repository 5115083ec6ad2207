#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/TextPass.h"
#include "render/FrameArguments.h"
#include "render/MeshImport.h"
#include "render/PassContext.h"
#include "render/TextBox.h"

namespace lumivane {

class Mesh3D;
struct TextObject;

// The 3D texts: each 3D text, and each copy of it, placed, turned and scaled in world space and
// drawn on its shape with its string's texture (or a picture), as an extruded mesh or as a model.
// Keeps what the device holds for each text, a record per text in the engine's order.
class TextBoxPass {
 public:
  explicit TextBoxPass(const PassContext& context);

  // Steps every 3D text and draws what shows; without a device it only steps (the text log still
  // hears of each).
  void Draw(const FrameArguments& args);

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

  // The output ends: the records and models go, with their textures and meshes, while the device
  // is still there.
  void Release();

 private:
  void DrawCopy(std::int32_t index, std::int32_t copy, const TextFrame& frame);
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

  const PassContext& context_;
  TextPass walker_;
  // Made once: a callback made per frame would allocate.
  TextDraw drawCopy_;
  const FrameArguments* frameArguments_ = nullptr;  // the frame's, while the pass runs
  std::vector<TextBox> textBoxes_;
  std::map<std::string, std::weak_ptr<Mesh3D>> models_;
  TextBoxScratch textBoxScratch_;
};

}  // namespace lumivane
