#include "render/Mesh3D.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace lumivane {

namespace {

void SplitColor(std::uint32_t color, float (&out)[4]) {
  out[0] = static_cast<float>((color >> 16) & 0xFF) / 255.0f;
  out[1] = static_cast<float>((color >> 8) & 0xFF) / 255.0f;
  out[2] = static_cast<float>(color & 0xFF) / 255.0f;
  out[3] = 1.0f;
}

}  // namespace

void SavedRenderStates::Save(RenderDevice& device, RenderState state) {
  if (count < states.size()) states[count++] = {state, device.GetRenderState(state)};
}

void SavedRenderStates::Restore(RenderDevice& device) const {
  for (std::size_t i = count; i-- > 0;) device.SetRenderState(states[i].first, states[i].second);
}

void SetLitMeshStates(RenderDevice& device, bool wireframe, std::uint32_t ambient, SavedRenderStates& saved) {
  auto set = [&](RenderState state, std::uint32_t value) {
    saved.Save(device, state);
    device.SetRenderState(state, value);
  };
  set(RenderState::VERTEXBLEND, 0);
  set(RenderState::CLIPPLANEENABLE, 0);
  set(RenderState::FILLMODE, wireframe ? FillMode::Wireframe : FillMode::Solid);
  set(RenderState::SHADEMODE, ShadeMode::Gouraud);
  set(RenderState::CULLMODE, CullMode::CounterClockwise);
  set(RenderState::FOGENABLE, 0);
  set(RenderState::SPECULARENABLE, 1);
  set(RenderState::LIGHTING, 1);
  set(RenderState::AMBIENT, ambient);
  set(RenderState::ZENABLE, 1);
  set(RenderState::ZFUNC, ZFunc::Less);
  set(RenderState::STENCILENABLE, 0);
  set(RenderState::COLORWRITEENABLE, ColorWrite::All);
  set(RenderState::DITHERENABLE, 1);
  set(RenderState::COLORVERTEX, 0);
  set(RenderState::DIFFUSEMATERIALSOURCE, MaterialSource::Material);
  set(RenderState::SPECULARMATERIALSOURCE, MaterialSource::Material);
  set(RenderState::AMBIENTMATERIALSOURCE, MaterialSource::Material);
  set(RenderState::EMISSIVEMATERIALSOURCE, MaterialSource::Material);
}

void SetTextLight(RenderDevice& device, std::uint32_t color) {
  Light light;
  SplitColor(color, light.Diffuse);
  SplitColor(color, light.Specular);
  light.Direction[0] = 0;
  light.Direction[1] = -1;
  light.Direction[2] = 1;
  device.SetLight(light);
  device.LightEnable(true);
}

MeshMaterial MaterialOfColor(std::uint32_t color) {
  MeshMaterial m;
  SplitColor(color, m.Diffuse);
  SplitColor(color, m.Ambient);
  m.Specular[0] = m.Specular[1] = m.Specular[2] = 0;
  return m;
}

Mesh3D::Mesh3D(std::string path, MeshImportLimits limits) : path_(std::move(path)) {
  // The reading thread owns all it uses: a model dropped before it is read (another show, another
  // file) never makes the frame wait for it.
  std::promise<Read> promise;
  pending_ = promise.get_future();
  std::thread([path = path_, limits, promise = std::move(promise)]() mutable {
    Read read;
    read.import = ImportMesh(path, limits);
    // The pictures are decoded here too: the frame only uploads them.
    for (const std::string& file : read.import.TextureFileNames) {
      TextureImage image;
      std::string why;
      // Pictures embedded in the model ("*0") have no file to read; the material goes without.
      if (!file.empty() && file[0] != '*')
        DecodeTextureImage(file, 0, 0, TextureFormat::A8R8G8B8, ImageFilter::Linear, 0, image, why);
      read.pictures.push_back(std::move(image));
    }
    promise.set_value(std::move(read));
  }).detach();
}

Mesh3D::~Mesh3D() {
  if (device_ == nullptr) return;
  if (deviceMesh_ != 0) device_->ReleaseMesh(deviceMesh_);
  for (TextureId t : textures_)
    if (t != 0) device_->ReleaseTexture(t);
}

bool Mesh3D::Loaded() {
  if (!loaded_ && pending_.valid() && pending_.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
    Take(pending_.get());
  return loaded_;
}

void Mesh3D::Wait() {
  if (!loaded_ && pending_.valid()) Take(pending_.get());
}

void Mesh3D::Take(Read read) {
  loaded_ = true;
  info_ = std::move(read.import.Info);
  textureFileNames_ = std::move(read.import.TextureFileNames);
  if (!read.import.Ok) return;
  mesh_ = std::move(read.import.Mesh);
  mesh_.ComputeBoundingBox();
  for (int i = 0; i < 3; ++i) centre_[i] = (mesh_.Min[i] + mesh_.Max[i]) / 2;
  pictures_ = std::move(read.pictures);
}

bool Mesh3D::InitialiseGeometry(RenderDevice& device) {
  if (!Loaded()) return false;
  if (uploaded_) return deviceMesh_ != 0 && &device == device_;
  uploaded_ = true;
  device_ = &device;
  deviceMesh_ = device.CreateMesh(mesh_);
  subsets_ = mesh_.Subsets;
  materials_ = mesh_.Materials;
  if (materials_.empty()) materials_.emplace_back();
  // Names stay in textureFileNames_: a material copied in a frame then allocates nothing.
  for (MeshMaterial& material : materials_) material.TextureFileName.clear();
  textures_.assign(materials_.size(), 0);
  for (std::size_t i = 0; i < materials_.size() && i < pictures_.size(); ++i)
    if (pictures_[i].Width > 0) textures_[i] = device.CreateTextureFromImage(pictures_[i]);
  // The device holds them now.
  mesh_ = MeshData{};
  pictures_.clear();
  return deviceMesh_ != 0;
}

void Mesh3D::Render(RenderDevice& device, std::uint32_t color, bool preserveTextures, bool wireframe) const {
  if (deviceMesh_ == 0 || &device != device_) return;
  SavedRenderStates saved;
  SetLitMeshStates(device, wireframe, 0xFF505050u, saved);
  SetTextLight(device, color);
  const MeshMaterial textColor = MaterialOfColor(color);
  for (std::uint32_t i = 0; i < subsets_.size(); ++i) {
    const std::uint32_t m = subsets_[i].Material < materials_.size() ? subsets_[i].Material : 0;
    MeshMaterial material = materials_[m];
    if (!preserveTextures) std::copy(std::begin(textColor.Diffuse), std::end(textColor.Diffuse), material.Diffuse);
    device.SetMaterial(material);
    device.SetTexture(textures_[m]);
    device.DrawMeshSubset(deviceMesh_, i);
  }
  device.SetTexture(0);
  device.LightEnable(false);
  saved.Restore(device);
}

}  // namespace lumivane
