#include "render/MeshImport.h"

#include <assimp/BaseImporter.h>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <set>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace lumivane {
namespace {

namespace fs = std::filesystem;

// The extensions we hand to assimp; anything else is refused before a reader guesses at it.
const char* const kExtensions[] = {".3ds", ".x", ".obj", ".gltf", ".glb", ".fbx"};

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return char(std::tolower(c)); });
  return s;
}

// The last part of a path written with either separator, as old show files mix them.
std::string BaseName(const std::string& path) {
  const std::size_t k = path.find_last_of("/\\");
  return k == std::string::npos ? path : path.substr(k + 1);
}

std::string Extension(const std::string& name) {
  const std::size_t dot = name.find_last_of('.');
  return dot == std::string::npos ? std::string() : Lower(name.substr(dot));
}

bool IsFile(const fs::path& p) {
  std::error_code ec;
  return fs::is_regular_file(p, ec);
}

std::string Quoted(const std::string& path) { return "The mesh file \"" + path + "\""; }

MeshImportResult Fail(const std::string& name, std::string error) {
  MeshImportResult r;
  // The reason follows the two counts, so the mesh info box tells the operator what went wrong.
  r.Info = name + "\r\nF: Error\r\nV: Error\r\n" + error;
  r.Error = std::move(error);
  return r;
}

// A texture named by the model, as a file we can open: the name as written (relative names from
// the model's folder, backslashes read as separators), else the file name alone in the model's
// folder, else the same ignoring case, as pictures made on Windows often differ in case from their
// names. When nothing is found, the folder's would-be file, so a later error names a sensible path.
std::string ResolveTexture(const std::string& name, const fs::path& folder, const aiScene& scene) {
  if (name.empty() || name[0] == '*') return name;
  std::string slashed = name;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  for (const std::string& written : {name, slashed}) {
    const fs::path p(written);
    const fs::path candidate = p.is_absolute() ? p : folder / p;
    if (IsFile(candidate)) return candidate.string();
  }
  const std::string base = BaseName(name);
  const fs::path inFolder = folder / base;
  if (!base.empty()) {
    if (IsFile(inFolder)) return inFolder.string();
    const std::string wanted = Lower(base);
    std::error_code ec;
    for (fs::directory_iterator it(folder.empty() ? fs::path(".") : folder, ec), end; !ec && it != end;
         it.increment(ec)) {
      const std::string found = it->path().filename().string();
      if (Lower(found) == wanted && IsFile(it->path())) return (folder / found).string();
    }
  }
  // FBX may embed a picture under its original file name; without the file, that name is all there is.
  if (scene.GetEmbeddedTexture(name.c_str()) != nullptr) return name;
  return inFolder.string();
}

MeshMaterial ToMaterial(const aiMaterial& m, std::string& texture) {
  MeshMaterial out;
  const auto colour = [&m](const char* key, unsigned type, unsigned index, float* dst) {
    aiColor4D c;
    if (m.Get(key, type, index, c) == AI_SUCCESS) dst[0] = c.r, dst[1] = c.g, dst[2] = c.b, dst[3] = c.a;
  };
  colour(AI_MATKEY_COLOR_DIFFUSE, out.Diffuse);
  colour(AI_MATKEY_COLOR_AMBIENT, out.Ambient);
  colour(AI_MATKEY_COLOR_SPECULAR, out.Specular);
  colour(AI_MATKEY_COLOR_EMISSIVE, out.Emissive);
  float f = 0;
  // The device blends by the diffuse alpha; formats keep transparency apart from the colour.
  if (m.Get(AI_MATKEY_OPACITY, f) == AI_SUCCESS) out.Diffuse[3] = f;
  if (m.Get(AI_MATKEY_SHININESS, f) == AI_SUCCESS) out.Power = f;
  aiString name;
  // glTF's base colour picture is its diffuse one under another name.
  for (const aiTextureType type : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR}) {
    if (m.GetTextureCount(type) > 0 && m.GetTexture(type, 0, &name) == AI_SUCCESS) {
      texture = name.C_Str();
      break;
    }
  }
  out.TextureFileName = texture;
  return out;
}

// Leaves only the readers that claim `ext`, so a damaged file is refused by its own reader instead
// of being guessed at by every other one assimp knows.
void KeepOnlyReadersFor(Assimp::Importer& importer, const std::string& ext) {
  std::vector<Assimp::BaseImporter*> others;
  for (std::size_t i = 0; i < importer.GetImporterCount(); ++i) {
    Assimp::BaseImporter* reader = importer.GetImporter(i);
    std::set<std::string> extensions;
    reader->GetExtensionList(extensions);
    if (extensions.count(ext.substr(1)) == 0) others.push_back(reader);
  }
  // Unregistering hands the reader back to us.
  for (Assimp::BaseImporter* reader : others) {
    if (importer.UnregisterLoader(reader) == AI_SUCCESS) delete reader;
  }
}

// Where a model has no normals, each corner takes the normals of the faces meeting at its position
// that turn from its own face by less than this: flat parts stay flat, hard edges crisp, gentle
// curves smooth.
constexpr float kCreaseCos = 0.17364818f;  // cos 80 degrees
// Corners at one position beyond this keep their face's normal, so a degenerate file of millions of
// faces at one point cannot take quadratic time.
constexpr std::size_t kMostCornersSmoothed = 64;

struct Vec {
  float x, y, z;
};
Vec Cross(Vec a, Vec b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }
float Dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vec Unit(Vec v) {
  const float l = std::sqrt(Dot(v, v));
  return l > 0 && std::isfinite(l) ? Vec{v.x / l, v.y / l, v.z / l} : Vec{0, 0, 0};
}
std::array<std::uint32_t, 3> PositionBits(const MeshVertex& v) {
  return {std::bit_cast<std::uint32_t>(v.x), std::bit_cast<std::uint32_t>(v.y), std::bit_cast<std::uint32_t>(v.z)};
}
using VertexBits = std::array<std::uint32_t, 8>;
static_assert(sizeof(VertexBits) == sizeof(MeshVertex));
struct VertexBitsHash {
  std::size_t operator()(const VertexBits& b) const noexcept {
    std::size_t h = 1469598103934665603ull;
    for (std::uint32_t w : b) h = (h ^ w) * 1099511628211ull;
    return h;
  }
};

// Gives normals to `corners` (three per triangle, already in our winding), then appends them to
// `mesh` with identical corners shared.
void AppendWithMadeNormals(std::vector<MeshVertex>& corners, MeshData& mesh) {
  std::vector<Vec> face(corners.size() / 3);
  for (std::size_t t = 0; t < face.size(); ++t) {
    const MeshVertex *a = &corners[t * 3], *b = a + 1, *c = a + 2;
    // Left-handed and clockwise, the plain cross product of the edges is the front's normal;
    // its length (twice the area) weighs large faces more.
    face[t] = Cross({b->x - a->x, b->y - a->y, b->z - a->z}, {c->x - a->x, c->y - a->y, c->z - a->z});
  }
  std::vector<std::uint32_t> order(corners.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t i, std::uint32_t j) { return PositionBits(corners[i]) < PositionBits(corners[j]); });
  for (std::size_t first = 0, last; first < order.size(); first = last) {
    const auto at = PositionBits(corners[order[first]]);
    for (last = first + 1; last < order.size() && PositionBits(corners[order[last]]) == at;) ++last;
    for (std::size_t i = first; i < last; ++i) {
      const Vec own = Unit(face[order[i] / 3]);
      Vec sum = own;
      if (last - first <= kMostCornersSmoothed) {
        sum = {0, 0, 0};
        for (std::size_t j = first; j < last; ++j) {
          const Vec other = face[order[j] / 3];
          if (Dot(own, Unit(other)) >= kCreaseCos) sum = {sum.x + other.x, sum.y + other.y, sum.z + other.z};
        }
      }
      const Vec n = Unit(sum);
      MeshVertex& v = corners[order[i]];
      v.nx = n.x, v.ny = n.y, v.nz = n.z;
    }
  }
  std::unordered_map<VertexBits, std::uint32_t, VertexBitsHash> seen;
  for (const MeshVertex& v : corners) {
    const VertexBits key = std::bit_cast<VertexBits>(v);
    const auto [it, added] = seen.try_emplace(key, static_cast<std::uint32_t>(mesh.Vertices.size()));
    if (added) mesh.Vertices.push_back(v);
    mesh.Indices.push_back(it->second);
  }
}

// Appends every mesh the node tree places, in scene order, with its node's transform, turned from
// assimp's convention (right-handed, anticlockwise faces, v up from the bottom of a picture) to
// ours: z mirrored, faces reversed so they stay clockwise towards their normals, v down from the
// top. Returns an empty string, or why the result is too large; it stops at the first mesh that
// takes it past the limits.
//
// Normals missing from the file are made here, not by assimp: its GenSmoothNormals gives vertices
// shared between faces one face's normal (the mesh must be unshared first, and glTF readers hand
// over shared ones), and in 5.2 its handedness steps run before it and turn made normals inwards.
std::string Flatten(const aiScene& scene, const MeshImportLimits& limits, MeshData& mesh) {
  // Indices are 32-bit, whatever the caller allows.
  const std::size_t maxVertices = std::min<std::size_t>(limits.MaxVertices, UINT32_MAX);
  std::vector<std::pair<const aiNode*, aiMatrix4x4>> stack;
  if (scene.mRootNode != nullptr) stack.emplace_back(scene.mRootNode, scene.mRootNode->mTransformation);
  std::vector<MeshVertex> corners;
  while (!stack.empty()) {
    const auto [node, world] = stack.back();
    stack.pop_back();
    // Children pushed last-first come off the stack in their order.
    for (unsigned c = node->mNumChildren; c-- > 0;) {
      const aiNode* child = node->mChildren[c];
      if (child != nullptr) stack.emplace_back(child, world * child->mTransformation);
    }

    aiMatrix3x3 normalMatrix(world);
    const float det = normalMatrix.Determinant();
    // A mirroring node has already turned its faces once; with our mirror they are right again.
    const bool reverse = !(det < 0);
    const bool invertible = std::isfinite(det) && det != 0;
    if (invertible) normalMatrix.Inverse().Transpose();
    const auto place = [&](const aiMesh& src, unsigned v) {
      MeshVertex out;
      const aiVector3D p = world * src.mVertices[v];
      out.x = p.x, out.y = p.y, out.z = -p.z;
      if (src.mNormals != nullptr) {
        aiVector3D n = src.mNormals[v];
        if (invertible) n = (normalMatrix * n).NormalizeSafe();
        out.nx = n.x, out.ny = n.y, out.nz = -n.z;
      }
      if (const aiVector3D* uv = src.mTextureCoords[0]) out.tu = uv[v].x, out.tv = 1 - uv[v].y;
      return out;
    };

    for (unsigned k = 0; k < node->mNumMeshes; ++k) {
      if (node->mMeshes[k] >= scene.mNumMeshes) continue;
      const aiMesh& src = *scene.mMeshes[node->mMeshes[k]];
      std::size_t triangles = 0;
      for (unsigned f = 0; f < src.mNumFaces; ++f) triangles += src.mFaces[f].mNumIndices == 3;
      if (triangles == 0 || src.mVertices == nullptr) continue;  // points and lines are not drawn
      if (mesh.FaceCount() + triangles > limits.MaxFaces)
        return "it has more than " + std::to_string(limits.MaxFaces) + " triangles";

      MeshSubset subset;
      subset.IndexStart = static_cast<std::uint32_t>(mesh.Indices.size());
      subset.Material = src.mMaterialIndex;
      const auto base = static_cast<std::uint32_t>(mesh.Vertices.size());
      corners.clear();
      for (unsigned f = 0; f < src.mNumFaces; ++f) {
        const aiFace& face = src.mFaces[f];
        if (face.mNumIndices != 3) continue;
        unsigned i[3] = {face.mIndices[0], face.mIndices[1], face.mIndices[2]};
        if (i[0] >= src.mNumVertices || i[1] >= src.mNumVertices || i[2] >= src.mNumVertices) continue;
        if (reverse) std::swap(i[1], i[2]);
        for (unsigned corner : i) {
          if (src.mNormals != nullptr) {
            mesh.Indices.push_back(base + corner);
          } else {
            corners.push_back(place(src, corner));
          }
        }
      }
      if (src.mNormals != nullptr) {
        for (unsigned v = 0; v < src.mNumVertices; ++v) mesh.Vertices.push_back(place(src, v));
      } else {
        AppendWithMadeNormals(corners, mesh);
      }
      if (mesh.Vertices.size() > maxVertices) return "it has more than " + std::to_string(maxVertices) + " vertices";
      subset.IndexCount = static_cast<std::uint32_t>(mesh.Indices.size()) - subset.IndexStart;
      if (subset.IndexCount > 0) mesh.Subsets.push_back(subset);
    }
  }
  return {};
}

MeshImportResult Import(const std::string& given, const MeshImportLimits& limits) {
  const std::string name = BaseName(given);

  std::string path = given;
  if (!IsFile(path)) {
    std::string slashed = given;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    std::error_code ec;
    if (IsFile(slashed)) {
      path = slashed;
    } else if (fs::is_directory(given, ec) || fs::is_directory(slashed, ec)) {
      return Fail(name, Quoted(given) + " is a folder, not a file.");
    } else {
      return Fail(name, Quoted(given) + " could not be found.");
    }
  }

  const std::string ext = Extension(name);
  if (std::find(std::begin(kExtensions), std::end(kExtensions), ext) == std::end(kExtensions))
    return Fail(name, Quoted(given) + " is not a model format that can be read (3DS, X, OBJ, glTF, GLB or FBX).");

  std::error_code ec;
  const std::uintmax_t bytes = fs::file_size(path, ec);
  if (ec) return Fail(name, Quoted(given) + " could not be read: " + ec.message() + ".");
  if (bytes > limits.MaxFileBytes)
    return Fail(name, Quoted(given) + " is too large for live use: " + std::to_string(bytes / (1024 * 1024)) +
                          " MB, and the most is " + std::to_string(limits.MaxFileBytes / (1024 * 1024)) + " MB.");
  if (bytes == 0) return Fail(name, Quoted(given) + " could not be read: the file is empty.");
  if (!std::ifstream(path, std::ios::binary)) return Fail(name, Quoted(given) + " could not be opened.");

  Assimp::Importer importer;
  KeepOnlyReadersFor(importer, ext);
  // A file of bones alone has nothing to show; a made-up skeleton mesh would hide that.
  importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
  // Points and lines are sorted into meshes of their own and left out in Flatten, which also
  // applies the node transforms, makes missing normals and turns the result left-handed.
  const unsigned flags = aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_SortByPType |
                         aiProcess_ValidateDataStructure | aiProcess_RemoveRedundantMaterials;
  const aiScene* scene = importer.ReadFile(path, flags);
  if (scene == nullptr) {
    std::string why = importer.GetErrorString();
    if (why.empty()) why = "it is not a model file";
    return Fail(name, Quoted(given) + " could not be read: " + why);
  }

  MeshImportResult r;
  const std::string tooLarge = Flatten(*scene, limits, r.Mesh);
  if (!tooLarge.empty()) return Fail(name, Quoted(given) + " is too large for live use: " + tooLarge + ".");
  if (r.Mesh.Indices.empty()) return Fail(name, Quoted(given) + " has no triangles to draw.");

  const fs::path folder = fs::path(path).parent_path();
  for (unsigned i = 0; i < scene->mNumMaterials; ++i) {
    std::string texture;
    r.Mesh.Materials.push_back(ToMaterial(*scene->mMaterials[i], texture));
    r.TextureFileNames.push_back(ResolveTexture(texture, folder, *scene));
  }
  if (r.Mesh.Materials.empty()) {
    r.Mesh.Materials.emplace_back();
    r.TextureFileNames.emplace_back();
  }
  const auto last = static_cast<std::uint32_t>(r.Mesh.Materials.size() - 1);
  for (MeshSubset& s : r.Mesh.Subsets) s.Material = std::min(s.Material, last);

  r.Mesh.ComputeBoundingBox();
  r.Ok = true;
  r.Info = name + "\r\nF: " + std::to_string(r.Mesh.FaceCount()) + "\r\nV: " + std::to_string(r.Mesh.Vertices.size());
  return r;
}

}  // namespace

MeshImportResult ImportMesh(const std::string& path) { return ImportMesh(path, MeshImportLimits{}); }

MeshImportResult ImportMesh(const std::string& path, const MeshImportLimits& limits) {
  try {
    return Import(path, limits);
  } catch (const std::bad_alloc&) {
    return Fail(BaseName(path), Quoted(path) + " is too large for live use: it does not fit in memory.");
  } catch (const std::exception& e) {
    return Fail(BaseName(path), Quoted(path) + " could not be read: " + e.what());
  }
}

}  // namespace lumivane
