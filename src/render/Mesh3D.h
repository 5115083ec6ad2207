#pragma once

#include <array>
#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "render/MeshImport.h"
#include "render/RenderDevice.h"
#include "render/TextureImage.h"

namespace lumivane {

// The lit-mesh states extruded text and models are drawn under: solid (or wireframe) Gouraud
// triangles, counter-clockwise faces culled, depth tested with LESS, lighting and specular on,
// `ambient` (0xAARRGGBB) as the ambient light, colours from the material. Each state is kept in
// `saved` first, so its Restore puts the device back as the other passes expect it.
struct SavedRenderStates {
  // A fixed array: the states are saved for every mesh drawn, and a frame allocates nothing.
  std::array<std::pair<RenderState, std::uint32_t>, 20> states{};
  std::size_t count = 0;
  void Save(RenderDevice& device, RenderState state);
  void Restore(RenderDevice& device) const;
};
void SetLitMeshStates(RenderDevice& device, bool wireframe, std::uint32_t ambient, SavedRenderStates& saved);

// The text's light: directional, from above and in front of the text (shining along (0, -1, 1)),
// in `color` (0xAARRGGBB); switched on.
void SetTextLight(RenderDevice& device, std::uint32_t color);

// A material lit in `color` (0xAARRGGBB), for diffuse and ambient alike, opaque.
MeshMaterial MaterialOfColor(std::uint32_t color);

// An imported model for a "Custom" 3D text. The file is read on a thread of its own, so a show
// that names a large model keeps playing while it loads; the frame that finds it read takes it
// onto the device (InitialiseGeometry). Until then, and when it fails, the text draws nothing.
class Mesh3D {
 public:
  Mesh3D(std::string path, MeshImportLimits limits = {});
  ~Mesh3D();
  Mesh3D(const Mesh3D&) = delete;
  Mesh3D& operator=(const Mesh3D&) = delete;

  const std::string& Path() const noexcept { return path_; }
  // True once the file has been read, whether or not it could be.
  bool Loaded();
  // Waits until the file has been read (the load button, tests).
  void Wait();
  // Takes a read file onto `device`: the mesh, and the pictures its materials name (found beside
  // the model). True when there is geometry to draw; false while loading or after a failure.
  bool InitialiseGeometry(RenderDevice& device);
  // "NAME\r\nF: FACES\r\nV: VERTICES", or with "Error" counts and the reason; empty until loaded.
  const std::string& Info() const noexcept { return info_; }
  const std::vector<std::string>& GetMeshTextureFileNames() const noexcept { return textureFileNames_; }
  // The middle of the model's bounding box, in its own units.
  const float* Centre() const noexcept { return centre_; }

  // Draws every subset with its material and picture under the current world matrix, lit by the
  // text's light in `color`. The diffuse colour is the text's unless `preserveTextures`.
  void Render(RenderDevice& device, std::uint32_t color, bool preserveTextures, bool wireframe) const;

 private:
  struct Read {
    MeshImportResult import;
    std::vector<TextureImage> pictures;  // one per material; empty (0 wide) when it has none
  };
  void Take(Read read);

  std::string path_;
  std::future<Read> pending_;
  bool loaded_ = false;
  std::string info_;
  std::vector<std::string> textureFileNames_;
  float centre_[3] = {0, 0, 0};
  // Kept until the device takes them.
  MeshData mesh_;
  std::vector<TextureImage> pictures_;
  bool uploaded_ = false;
  RenderDevice* device_ = nullptr;
  MeshId deviceMesh_ = 0;
  std::vector<MeshSubset> subsets_;
  std::vector<MeshMaterial> materials_;
  std::vector<TextureId> textures_;  // by material
};

}  // namespace lumivane
