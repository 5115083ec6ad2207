// The device's meshes: vertex and index buffers of their own, drawn a subset at a time under the
// material and the light.
#include <algorithm>
#include <cstring>

#include "render/GlDevice.h"

namespace lumivane {

static_assert(sizeof(MeshVertex) == 32, "the mesh vertex layout below assumes 8 packed floats");

MeshId GlDevice::CreateMesh(const MeshData& data) {
  if (!ready_ || data.Vertices.empty() || data.Indices.size() < 3) return 0;
  // Indices that point past the vertices would read outside the buffer.
  const std::size_t vertexCount = data.Vertices.size();
  if (std::any_of(data.Indices.begin(), data.Indices.end(), [&](std::uint32_t i) { return i >= vertexCount; }))
    return 0;
  Flush();
  Mesh m;
  for (const MeshSubset& s : data.Subsets) {
    if (static_cast<std::uint64_t>(s.IndexStart) + s.IndexCount <= data.Indices.size()) m.subsets.push_back(s);
    else m.subsets.push_back(MeshSubset{0, 0, s.Material});  // kept, so subset numbers stay the file's
  }
  if (m.subsets.empty()) m.subsets.push_back(MeshSubset{0, static_cast<std::uint32_t>(data.Indices.size()), 0});

  while (glGetError() != GL_NO_ERROR) {
  }
  glGenVertexArrays(1, &m.vertexArray);
  glGenBuffers(1, &m.vertices);
  glGenBuffers(1, &m.indices);
  glBindVertexArray(m.vertexArray);
  glBindBuffer(GL_ARRAY_BUFFER, m.vertices);
  glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertexCount * sizeof(MeshVertex)), data.Vertices.data(),
               GL_STATIC_DRAW);
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m.indices);
  glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(data.Indices.size() * sizeof(std::uint32_t)),
               data.Indices.data(), GL_STATIC_DRAW);
  constexpr GLsizei stride = sizeof(MeshVertex);
  glEnableVertexAttribArray(0);
  glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, stride, nullptr);
  glEnableVertexAttribArray(4);
  glVertexAttribPointer(4, 3, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<const void*>(std::intptr_t{12}));
  glEnableVertexAttribArray(3);
  glVertexAttribPointer(3, 2, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<const void*>(std::intptr_t{24}));
  glBindVertexArray(0);
  glBindBuffer(GL_ARRAY_BUFFER, 0);
  glStateValid_ = false;
  if (glGetError() != GL_NO_ERROR) {  // out of memory: no mesh, and the show goes on
    glDeleteVertexArrays(1, &m.vertexArray);
    glDeleteBuffers(1, &m.vertices);
    glDeleteBuffers(1, &m.indices);
    return 0;
  }
  if (!freeMeshes_.empty()) {
    const MeshId id = freeMeshes_.back();
    freeMeshes_.pop_back();
    meshes_[id - 1] = std::move(m);
    return id;
  }
  meshes_.push_back(std::move(m));
  return static_cast<MeshId>(meshes_.size());
}

void GlDevice::DrawMeshSubset(MeshId id, std::uint32_t subset) {
  if (!ready_ || id == 0 || id > meshes_.size()) return;
  const Mesh& m = meshes_[id - 1];
  if (m.vertexArray == 0 || subset >= m.subsets.size() || m.subsets[subset].IndexCount == 0) return;
  Flush();
  const Target& target = CurrentTarget();
  if (!renderingToTexture_) Carry();
  batchState_ = state_;
  batchState_.format = VertexFormat::Mesh;
  ApplyState(target);
  if (program_ == nullptr || program_->name == 0) return;
  glBindVertexArray(m.vertexArray);
  // Meshes carry no colours: unlit, they are white. (Constant attributes are the context's, not
  // the vertex array's, so they are set for every draw.)
  glVertexAttrib4f(1, 1, 1, 1, 1);
  glVertexAttrib4f(2, 0, 0, 0, 0);
  const MeshSubset& s = m.subsets[subset];
  glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(s.IndexCount), GL_UNSIGNED_INT,
                 reinterpret_cast<const void*>(static_cast<std::uintptr_t>(s.IndexStart) * sizeof(std::uint32_t)));
  // A painter sharing the window's context must never find the mesh's vertex array bound.
  glBindVertexArray(0);
}

void GlDevice::ReleaseMesh(MeshId id) {
  if (id == 0 || id > meshes_.size() || meshes_[id - 1].vertexArray == 0) return;
  Flush();
  Mesh& m = meshes_[id - 1];
  glDeleteVertexArrays(1, &m.vertexArray);
  glDeleteBuffers(1, &m.vertices);
  glDeleteBuffers(1, &m.indices);
  m = Mesh{};
  freeMeshes_.push_back(id);
  glStateValid_ = false;
}

void GlDevice::SetMaterial(const MeshMaterial& material) {
  // The colours only: the picture's name is the caller's business, and copying it would allocate.
  std::memcpy(material_.Diffuse, material.Diffuse, sizeof material_.Diffuse);
  std::memcpy(material_.Ambient, material.Ambient, sizeof material_.Ambient);
  std::memcpy(material_.Specular, material.Specular, sizeof material_.Specular);
  std::memcpy(material_.Emissive, material.Emissive, sizeof material_.Emissive);
  material_.Power = material.Power;
}

void GlDevice::SetLight(const Light& light) { light_ = light; }

void GlDevice::LightEnable(bool on) { lightOn_ = on; }

}  // namespace lumivane
