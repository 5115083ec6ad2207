#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "render/MeshData.h"

namespace lumivane {

// A model file read into a CPU mesh, or the reason it could not be.
struct MeshImportResult {
  bool Ok = false;
  MeshData Mesh;
  // One per material of Mesh.Materials, in order: the file to load its picture from, found in the
  // model's folder; empty for none. Pictures embedded in the model keep their name as the model
  // gives it ("*0" for glTF and FBX), as there is no file to point at.
  std::vector<std::string> TextureFileNames;
  // "NAME\r\nF: FACES\r\nV: VERTICES"; on failure both counts "Error" and a line with the reason.
  std::string Info;
  // Plain English, naming the file; empty on success.
  std::string Error;
};

// What a live show can afford; files or results beyond these are refused.
struct MeshImportLimits {
  std::uintmax_t MaxFileBytes = 256ull * 1024 * 1024;
  std::size_t MaxFaces = 2'000'000;
  std::size_t MaxVertices = 4'000'000;
};

// Reads a 3DS, X, OBJ, glTF 2.0 (.gltf, .glb) or FBX file into one flat, triangulated,
// left-handed mesh: node transforms applied, one subset per mesh placed in the scene, normals
// made where the file has none, texture coordinates with the top of a picture at tv 0. The
// extension picks the reader (any case). `path` may use backslashes, as old show files do.
// Needs no device and touches nothing shared, so it may run on any thread.
MeshImportResult ImportMesh(const std::string& path);
MeshImportResult ImportMesh(const std::string& path, const MeshImportLimits& limits);

}  // namespace lumivane
