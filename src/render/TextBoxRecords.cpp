// The text box records of FrameRenderer: made, refreshed, moved and dropped with their texts.
#include <algorithm>
#include <cmath>

#include "core/Numbers.h"
#include "core/TextObject.h"
#include "core/TextEngine.h"
#include "render/Mesh3D.h"
#include "render/FrameRenderer.h"

namespace lumivane {

namespace {

// Show files written elsewhere name pictures and models with backslashes.
std::string FilePath(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

// A device object kept while records share it, given back with the last of them. Records never
// outlive the device: Destroy drops them first.
std::shared_ptr<const std::uint32_t> Hold(RenderDevice* device, std::uint32_t id,
                                          void (RenderDevice::*release)(std::uint32_t)) {
  if (id == 0 || device == nullptr) return nullptr;
  return std::shared_ptr<const std::uint32_t>(new std::uint32_t(id), [device, release](const std::uint32_t* held) {
    (device->*release)(*held);
    delete held;
  });
}

}  // namespace

std::shared_ptr<const TextureId> FrameRenderer::HoldTexture(TextureId texture) {
  return Hold(device_, texture, &RenderDevice::ReleaseTexture);
}

std::shared_ptr<const MeshId> FrameRenderer::HoldMesh(MeshId mesh) { return Hold(device_, mesh, &RenderDevice::ReleaseMesh); }

std::shared_ptr<Mesh3D> FrameRenderer::Model(const std::string& path) {
  std::weak_ptr<Mesh3D>& slot = models_[path];
  if (std::shared_ptr<Mesh3D> model = slot.lock()) return model;
  auto model = std::make_shared<Mesh3D>(path, ModelLimits);
  slot = model;
  // Names no record holds any more go, so the map stays as small as the show.
  std::erase_if(models_, [](const auto& entry) { return entry.second.expired(); });
  return model;
}

float FrameRenderer::CameraZ(const TextObject& text, int previewHeight) {
  if (text.Mesh3DZ < 0) return text.Mesh3DZ;
  // Meshes are modelled for a camera twenty units back; a shape's placement units put the
  // preview's half height at previewHeight / 100 units, which fills a quarter-turn view here.
  if (text.Shape3DType == "Custom") return -20.0f;
  return -(static_cast<float>(previewHeight) / 100.0f) / std::tan(3.1415f / 8.0f);
}

void FrameRenderer::TextBoxSetup() {
  if (device_ == nullptr || text_.EngineGetState() != 0) return;
  textBoxes_.resize(static_cast<std::size_t>(text_.RenderGetTextCount()));
  for (std::int32_t i = 1; i <= TextBoxCount(); ++i) RefreshTextBox(i);
}

void FrameRenderer::RefreshTextBox(std::int32_t index) {
  const TextObject& t = text_.Live()[static_cast<std::size_t>(index - 1)];
  TextBox& box = textBoxes_[static_cast<std::size_t>(index - 1)];
  // A "Custom" text's model, read off the frame's thread; its info goes to the text once read.
  if (t.Text3D && t.Shape3DType == "Custom" && !t.Mesh3DFileName.empty()) {
    const std::string path = FilePath(t.Mesh3DFileName);
    if (!box.Model || box.Model->Path() != path) box.Model = Model(path);
    if (WaitForModels) box.Model->Wait();
    if (box.Model->Loaded() && box.Model->Info() != t.Mesh3DInfo) text_.RenderSetMesh3DInfo(index, box.Model->Info());
  } else {
    box.Model.reset();
  }
  // An extruded string's mesh is dropped as soon as the text no longer needs it.
  if (!t.Text3D || t.Extrude3D == 0.0f || !t.Shape3DType.empty()) {
    box.TextMesh.reset();
    box.MeshString.clear();
  }
  // Boxes are kept in preview units, so the texture is the box's own size in preview pixels:
  // small, because the string is drawn into it again in every frame.
  // A box dragged far beyond the pane still gets a texture of bounded memory (16 MB at most).
  constexpr int kLargest = 2048;
  const DeviceCaps caps = device_->Caps();
  const int maxWidth = caps.MaxTextureWidth > 0 ? std::min(caps.MaxTextureWidth, kLargest) : kLargest;
  const int maxHeight = caps.MaxTextureHeight > 0 ? std::min(caps.MaxTextureHeight, kLargest) : kLargest;
  const int width = std::min(NextPowerOfTwo(t.Right - t.Left), maxWidth);
  const int height = std::min(NextPowerOfTwo(t.Bottom - t.Top), maxHeight);
  const bool resized = box.Width != width || box.Height != height;
  box.Width = width;
  box.Height = height;
  box.VideoLockToTextBox = t.VideoLockToTextBox;
  if (box.TextBoxTextureFileName != t.TextBoxTextureFileName) {
    TextBoxSetTexture(index, t, true, false);
    return;
  }
  if (!box.TextBoxTextureFileName.empty()) return;  // a picture keeps its own size
  if (box.Texture != 0 && !resized) return;
  box.TextureHold = HoldTexture(device_->CreateTexture(width, height, TextureFormat::X8R8G8B8, true));
  box.Texture = box.TextureHold ? *box.TextureHold : 0;
}

void FrameRenderer::TextBoxSetTexture(std::int32_t index, const TextObject& settings, bool reload, bool applyToAll) {
  if (device_ == nullptr || (!applyToAll && TextBoxRecord(index) == nullptr)) return;
  auto each = [&](auto&& apply) {
    for (std::int32_t i = 1; i <= TextBoxCount(); ++i)
      if (applyToAll || i == index) apply(textBoxes_[static_cast<std::size_t>(i - 1)], i);
  };
  each([&](TextBox& box, std::int32_t) {
    box.TextBoxTextureFileName = settings.TextBoxTextureFileName;
    box.VideoLockToTextBox = settings.VideoLockToTextBox;
  });
  if (!reload) return;
  const std::string& name = settings.TextBoxTextureFileName;
  if (name.empty()) {
    // Back to the string: the record makes its own texture again.
    each([&](TextBox& box, std::int32_t i) {
      box.TextureHold.reset();
      box.Texture = 0;
      box.Width = 0;
      if (i <= text_.RenderGetTextCount()) RefreshTextBox(i);
    });
    return;
  }
  // One texture per picture: a record that already shows this file lends it.
  std::shared_ptr<const TextureId> picture;
  if (!applyToAll)
    for (std::int32_t i = 1; i <= TextBoxCount() && !picture; ++i) {
      const TextBox& other = textBoxes_[static_cast<std::size_t>(i - 1)];
      if (i != index && other.TextureHold && other.TextBoxTextureFileName == name) picture = other.TextureHold;
    }
  if (!picture) {
    // Pure black is transparent, so a picture on black shows only its figure. A file that does
    // not load leaves the text untextured, and is not tried again until its name changes.
    std::string error;
    picture = HoldTexture(device_->CreateTextureFromFileEx(FilePath(name), -1, -1, TextureFormat::A8R8G8B8,
                                                           ImageFilter::Linear, 0xFF000000u, &error));
  }
  each([&](TextBox& box, std::int32_t) {
    box.TextureHold = picture;
    box.Texture = picture ? *picture : 0;
  });
}

void FrameRenderer::ScaleText(std::int32_t index, float x, float y, float z) {
  if (TextBoxRecord(index) == nullptr) return;
  TextBox& box = textBoxes_[static_cast<std::size_t>(index - 1)];
  box.RootFrame->UpdateFrames();
  box.TextFrame->AddScale(SceneNode::kAfter, x, y, z);
}

void FrameRenderer::TextBoxRemove(std::int32_t index) {
  if (TextBoxRecord(index) == nullptr) return;
  textBoxes_.erase(textBoxes_.begin() + (index - 1));
}

void FrameRenderer::TextFrameZOrder(std::int32_t index, bool toFirst) {
  if (text_.EngineGetState() != 0 || TextBoxRecord(index) == nullptr) return;
  const auto at = textBoxes_.begin() + (index - 1);
  // The moved record takes the first or last place; the others close up around it.
  if (toFirst)
    std::rotate(textBoxes_.begin(), at, at + 1);
  else
    std::rotate(at, at + 1, textBoxes_.end());
}

}  // namespace lumivane
