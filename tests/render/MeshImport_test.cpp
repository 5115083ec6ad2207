#include "render/MeshImport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <random>
#include <set>

namespace lumivane {
namespace {

// Model files are written by hand into a folder of their own for each test.
class MeshImport : public ::testing::Test {
 protected:
  std::string Write(const QString& name, const QByteArray& bytes) {
    QDir(dir_.path()).mkpath(QFileInfo(name).path());
    QFile f(dir_.filePath(name));
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
    return Path(name);
  }
  std::string Path(const QString& name) const { return dir_.filePath(name).toStdString(); }
  QTemporaryDir dir_;
};

struct V3 {
  double x, y, z;
};
V3 Sub(V3 a, V3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double Dot(V3 a, V3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// Left-handed, a triangle clockwise seen from where its normal points has the plain cross product of
// its edges along that normal. Counts corners whose normal disagrees, and faces turned towards
// `centre` (for closed convex models, whose faces all look away from it).
std::pair<int, int> WindingFaults(const MeshData& m, V3 centre = {0, 0, 0}) {
  int disagreeing = 0, inwards = 0;
  for (std::size_t t = 0; t < m.FaceCount(); ++t) {
    V3 p[3], n[3];
    for (int k = 0; k < 3; ++k) {
      const MeshVertex& v = m.Vertices.at(m.Indices[t * 3 + k]);
      p[k] = {v.x, v.y, v.z}, n[k] = {v.nx, v.ny, v.nz};
    }
    const V3 a = Sub(p[1], p[0]), b = Sub(p[2], p[0]);
    const V3 g = {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    for (const V3& normal : n) disagreeing += Dot(g, normal) <= 0;
    inwards += Dot(g, Sub(p[0], centre)) <= 0;
  }
  return {disagreeing, inwards};
}

void ExpectBox(const MeshData& m, V3 min, V3 max) {
  EXPECT_EQ((std::vector<float>(m.Min, m.Min + 3)), (std::vector<float>{float(min.x), float(min.y), float(min.z)}));
  EXPECT_EQ((std::vector<float>(m.Max, m.Max + 3)), (std::vector<float>{float(max.x), float(max.y), float(max.z)}));
}

std::set<float> TvValues(const MeshData& m) {
  std::set<float> tv;
  for (const MeshVertex& v : m.Vertices) tv.insert(v.tv);
  return tv;
}

const MeshMaterial& MaterialOf(const MeshImportResult& r) { return r.Mesh.Materials.at(r.Mesh.Subsets.at(0).Material); }

// A cube from (-1,-1,2) to (1,1,4), anticlockwise from outside as OBJ has it, without normals, with
// v 0.25 along one edge of each face.
const char kCubeObj[] =
    "mtllib cube.mtl\nv -1 -1 2\nv 1 -1 2\nv 1 1 2\nv -1 1 2\nv -1 -1 4\nv 1 -1 4\nv 1 1 4\nv -1 1 4\n"
    "vt 0 0.25\nvt 1 0.25\nvt 1 1\nvt 0 1\nusemtl Painted\n"
    "f 1/1 4/2 3/3 2/4\nf 5/1 6/2 7/3 8/4\nf 1/1 5/2 8/3 4/4\n"
    "f 2/1 3/2 7/3 6/4\nf 1/1 2/2 6/3 5/4\nf 4/1 8/2 7/3 3/4\n";
const char kCubeMtl[] = "newmtl Painted\nKa 0.1 0.2 0.3\nKd 0.8 0.4 0.2\nKs 0.5 0.6 0.7\nNs 32\nmap_Kd wood.png\n";

TEST_F(MeshImport, ObjCubeComesInLeftHandedWithItsMaterialAndTexture) {
  const std::string path = Write("cube.obj", kCubeObj);
  Write("cube.mtl", kCubeMtl);
  Write("wood.png", "");
  const MeshImportResult r = ImportMesh(path);
  ASSERT_TRUE(r.Ok) << r.Error;
  // Quads in two triangles; the made normals keep a cube's faces flat, four corners each.
  EXPECT_EQ(r.Info, "cube.obj\r\nF: 12\r\nV: 24");
  ExpectBox(r.Mesh, {-1, -1, -4}, {1, 1, -2});  // z mirrored: in front of the viewer now
  EXPECT_EQ(WindingFaults(r.Mesh, {0, 0, -3}), std::make_pair(0, 0));
  EXPECT_EQ(TvValues(r.Mesh), (std::set<float>{0.0f, 0.75f}));  // OBJ counts v from the bottom
  ASSERT_EQ(r.Mesh.Subsets.size(), 1u);
  const MeshMaterial& m = MaterialOf(r);
  EXPECT_EQ((std::vector<float>{m.Diffuse[0], m.Diffuse[1], m.Diffuse[2], m.Diffuse[3], m.Ambient[2],
                                m.Specular[1], m.Power}),
            (std::vector<float>{0.8f, 0.4f, 0.2f, 1, 0.3f, 0.6f, 32}));
  EXPECT_EQ(m.TextureFileName, "wood.png");
  ASSERT_EQ(r.TextureFileNames.size(), r.Mesh.Materials.size());
  EXPECT_EQ(r.TextureFileNames[r.Mesh.Subsets[0].Material], Path("wood.png"));
}

// Two triangles hinged on a shared edge, facing -z, folded by `rise`; no normals in the file.
TEST_F(MeshImport, MadeNormalsAreSmoothAcrossGentleBendsAndCrispAcrossSharpOnes) {
  const auto roof = [&](const QString& rise) {
    return ImportMesh(Write("roof" + rise + ".obj", QString("v 0 0 0\nv 0 1 0\nv 1 0 %1\nv -1 0 %1\nf 1 2 3\nf 1 4 2\n")
                                                        .arg(rise)
                                                        .toUtf8()));
  };
  const MeshImportResult gentle = roof("0.1"), sharp = roof("3");  // bent by 11 and 143 degrees
  EXPECT_EQ(gentle.Info, "roof0.1.obj\r\nF: 2\r\nV: 4");  // the hinge's corners shared
  EXPECT_EQ(sharp.Info, "roof3.obj\r\nF: 2\r\nV: 6");
  // On the hinge the faces' mean, mirrored; elsewhere each face's own.
  for (const MeshVertex& v : gentle.Mesh.Vertices) EXPECT_NEAR(v.nz, v.x == 0 ? 1.0 : 0.995, 1e-3);
  EXPECT_EQ(WindingFaults(gentle.Mesh).first, 0);
  EXPECT_EQ(WindingFaults(sharp.Mesh).first, 0);
}

// glTF: a triangle at z 1 facing +z (the viewer, right-handed), with its own normals, v as glTF
// counts it (from the top, like us) and an embedded picture.
QByteArray Gltf(const QString& sceneNodes, const QString& nodes) {
  const float data[] = {0, 0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0.25f, 1, 0.25f, 0, 1};
  const std::uint16_t indices[] = {0, 1, 2, 0};
  const QByteArray buffer = QByteArray(reinterpret_cast<const char*>(data), sizeof data) +
                            QByteArray(reinterpret_cast<const char*>(indices), sizeof indices);
  return QString(R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":%1}],"nodes":%2,
"meshes":[{"primitives":[{"attributes":{"POSITION":0,"NORMAL":1,"TEXCOORD_0":2},"indices":3,"material":0}]}],
"materials":[{"pbrMetallicRoughness":{"baseColorFactor":[0.5,0.25,1,1],"baseColorTexture":{"index":0}}}],
"textures":[{"source":0}],"images":[{"uri":"data:image/png;base64,iVBORw0KGgo="}],
"buffers":[{"byteLength":104,"uri":"data:application/octet-stream;base64,%3"}],
"bufferViews":[{"buffer":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":36},
{"buffer":0,"byteOffset":72,"byteLength":24},{"buffer":0,"byteOffset":96,"byteLength":6}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,1],"max":[1,1,1]},
{"bufferView":1,"componentType":5126,"count":3,"type":"VEC3"},
{"bufferView":2,"componentType":5126,"count":3,"type":"VEC2"},
{"bufferView":3,"componentType":5123,"count":3,"type":"SCALAR"}]})")
      .arg(sceneNodes, nodes, QString::fromLatin1(buffer.toBase64()))
      .toUtf8();
}

TEST_F(MeshImport, GltfTriangleKeepsItsNormalTowardsItsClockwiseFace) {
  const MeshImportResult r = ImportMesh(Write("tri.gltf", Gltf("[0]", R"([{"mesh":0}])")));
  ASSERT_TRUE(r.Ok) << r.Error;
  EXPECT_EQ(r.Info, "tri.gltf\r\nF: 1\r\nV: 3");
  ExpectBox(r.Mesh, {0, 0, -1}, {1, 1, -1});  // towards the viewer is -z for us
  const MeshVertex* c[3];
  for (int k = 0; k < 3; ++k) c[k] = &r.Mesh.Vertices.at(r.Mesh.Indices.at(k));
  for (const MeshVertex* v : c) EXPECT_FLOAT_EQ(v->nz, -1.0f);
  // Facing the viewer, its corners run clockwise on the screen (x right, y up).
  EXPECT_LT((c[1]->x - c[0]->x) * (c[2]->y - c[0]->y) - (c[2]->x - c[0]->x) * (c[1]->y - c[0]->y), 0);
  EXPECT_EQ(WindingFaults(r.Mesh).first, 0);
  EXPECT_EQ(TvValues(r.Mesh), (std::set<float>{0.25f, 1.0f}));
  EXPECT_FLOAT_EQ(MaterialOf(r).Diffuse[1], 0.25f);
  // An embedded picture has no file; its name goes on as the model gives it.
  EXPECT_EQ(MaterialOf(r).TextureFileName, "*0");
  EXPECT_EQ(r.TextureFileNames.at(r.Mesh.Subsets[0].Material), "*0");
}

// The triangle placed twice: moved along x, and mirrored in x, which turns its face away from its
// normal unless the winding is turned back.
TEST_F(MeshImport, NodeTransformsPlaceEachCopyAndMirroredCopiesKeepTheirWinding) {
  const QString nodes = R"([{"mesh":0,"translation":[10,0,0]},{"mesh":0,"scale":[-1,1,1]}])";
  const MeshImportResult r = ImportMesh(Write("two.gltf", Gltf("[0,1]", nodes)));
  ASSERT_TRUE(r.Ok) << r.Error;
  EXPECT_EQ(r.Info, "two.gltf\r\nF: 2\r\nV: 6");
  ExpectBox(r.Mesh, {-1, 0, -1}, {11, 1, -1});
  ASSERT_EQ(r.Mesh.Subsets.size(), 2u);
  EXPECT_EQ(r.Mesh.Subsets[1].IndexStart, 3u);
  EXPECT_EQ(WindingFaults(r.Mesh).first, 0);
}

// X is left-handed with clockwise faces already: the cube (the OBJ one's corners and order, which
// is clockwise from outside here), moved 5 along z by its frame, must come through as written.
// (Assimp reads "1,0" in a list of floats as 1.0, so the matrix spells out its decimals.)
const char kBoxX[] = R"(xof 0303txt 0032
Frame Box { FrameTransformMatrix { 1.0,0.0,0.0,0.0, 0.0,1.0,0.0,0.0, 0.0,0.0,1.0,0.0, 0.0,0.0,5.0,1.0;; }
 Mesh { 8; -1;-1;-1;, 1;-1;-1;, 1;1;-1;, -1;1;-1;, -1;-1;1;, 1;-1;1;, 1;1;1;, -1;1;1;;
  6; 4;0,3,2,1;, 4;4,5,6,7;, 4;0,4,7,3;, 4;1,2,6,5;, 4;0,1,5,4;, 4;3,7,6,2;;
  MeshMaterialList { 1; 6; 0,0,0,0,0,0;;
   Material { 1;0;0;1;; 20; 0.5;0.5;0.5;; 0;0.25;0;; TextureFilename { "maps\\Marble.PNG"; } } }
  MeshTextureCoords { 8; 0;0.125;, 1;0.125;, 1;0.125;, 0;0.125;, 0;0.25;, 1;0.25;, 1;0.25;, 0;0.25;; } } }
)";

TEST_F(MeshImport, XCubeKeepsItsOwnLeftHandedCoordinatesAndItsMaterial) {
  const std::string path = Write("box.x", kBoxX);
  Write("marble.png", "");  // in another folder and case than named, as Windows allowed
  const MeshImportResult r = ImportMesh(path);
  ASSERT_TRUE(r.Ok) << r.Error;
  EXPECT_EQ(r.Info, "box.x\r\nF: 12\r\nV: 24");
  ExpectBox(r.Mesh, {-1, -1, 4}, {1, 1, 6});
  EXPECT_EQ(WindingFaults(r.Mesh, {0, 0, 5}), std::make_pair(0, 0));
  EXPECT_EQ(TvValues(r.Mesh), (std::set<float>{0.125f, 0.25f}));
  const MeshMaterial& m = MaterialOf(r);
  EXPECT_EQ((std::vector<float>{m.Diffuse[0], m.Diffuse[1], m.Power, m.Specular[0], m.Emissive[1]}),
            (std::vector<float>{1, 0, 20, 0.5f, 0.25f}));
  EXPECT_EQ(r.TextureFileNames.at(r.Mesh.Subsets[0].Material), Path("marble.png"));
}

// 3DS: chunks of a 16-bit id and a 32-bit length counting the header. A triangle lying flat at
// height 1 (3DS has z up), facing up.
QByteArray Chunk(std::uint16_t id, const QByteArray& body) {
  const std::uint32_t size = 6 + body.size();
  return QByteArray(reinterpret_cast<const char*>(&id), 2) + QByteArray(reinterpret_cast<const char*>(&size), 4) + body;
}
QByteArray Triangle3ds() {
  const std::uint16_t count = 3, face[] = {1, 0, 1, 2, 0};
  const float corners[] = {0, 0, 1, 1, 0, 1, 0, 1, 1};
  const QByteArray mesh = Chunk(0x4110, QByteArray(reinterpret_cast<const char*>(&count), 2) +
                                            QByteArray(reinterpret_cast<const char*>(corners), sizeof corners)) +
                          Chunk(0x4120, QByteArray(reinterpret_cast<const char*>(face), sizeof face));
  return Chunk(0x4D4D, Chunk(0x3D3D, Chunk(0x4000, QByteArray("Tri", 4) + Chunk(0x4100, mesh))));
}

TEST_F(MeshImport, ThreeDsTriangleStandsWithItsUpAsOurs) {
  const MeshImportResult r = ImportMesh(Write("tri.3ds", Triangle3ds()));
  ASSERT_TRUE(r.Ok) << r.Error;
  EXPECT_EQ(r.Info, "tri.3ds\r\nF: 1\r\nV: 3");
  // The file's up (z) is our y; its depth (y, away from the front view) our z into the screen.
  ExpectBox(r.Mesh, {0, 1, 0}, {1, 1, 1});
  for (const MeshVertex& v : r.Mesh.Vertices) EXPECT_FLOAT_EQ(v.ny, 1.0f);
  EXPECT_EQ(WindingFaults(r.Mesh).first, 0);
}

TEST_F(MeshImport, ExtensionsInAnyCaseAndBackslashPathsAreRead) {
  Write("sub/CUBE.OBJ", QByteArray(kCubeObj).replace("cube.mtl", "CUBE.MTL"));
  Write("sub/CUBE.MTL", kCubeMtl);
  Write("sub/wood.png", "");
  for (const std::string& path : {Path("sub/CUBE.OBJ"), dir_.path().toStdString() + "\\sub\\CUBE.OBJ"}) {
    const MeshImportResult r = ImportMesh(path);
    ASSERT_TRUE(r.Ok) << r.Error;
    EXPECT_EQ(r.Info, "CUBE.OBJ\r\nF: 12\r\nV: 24");
    EXPECT_EQ(r.TextureFileNames.at(r.Mesh.Subsets.at(0).Material), Path("sub/wood.png"));
  }
}

// Every refusal: Ok false, both counts "Error", and a message naming the file and why.
void ExpectRefused(const MeshImportResult& r, const std::string& name, const std::string& why) {
  EXPECT_FALSE(r.Ok);
  EXPECT_EQ(r.Info, name + "\r\nF: Error\r\nV: Error\r\n" + r.Error);
  EXPECT_NE(r.Error.find(name + "\""), std::string::npos) << r.Error;
  EXPECT_NE(r.Error.find(why), std::string::npos) << r.Error;
  EXPECT_TRUE(r.Mesh.Vertices.empty());
}

TEST_F(MeshImport, FilesThatAreNotModelsAreRefusedWithAReason) {
  ExpectRefused(ImportMesh(Path("missing.obj")), "missing.obj", "could not be found");
  ExpectRefused(ImportMesh(Write("empty.x", "")), "empty.x", "empty");
  ExpectRefused(ImportMesh(Write("cube.stl", "solid x\nendsolid x\n")), "cube.stl", "not a model format");
  QDir(dir_.path()).mkdir("folder.obj");
  ExpectRefused(ImportMesh(Path("folder.obj")), "folder.obj", "folder");
  // Noise, and files cut short. (An X file cut short is refused too, but assimp 5.2's X reader
  // leaks what it had built.)
  std::mt19937 random(7);
  QByteArray noise(4096, '\0');
  for (char& c : noise) c = char(random());
  for (const char* ext : {"3ds", "x", "obj", "gltf", "glb", "fbx"})
    ExpectRefused(ImportMesh(Write(QString("noise.") + ext, noise)), std::string("noise.") + ext, "");
  const QByteArray gltf = Gltf("[0]", R"([{"mesh":0}])"), tds = Triangle3ds();
  ExpectRefused(ImportMesh(Write("cut.gltf", gltf.left(gltf.size() / 2))), "cut.gltf", "could not be read");
  ExpectRefused(ImportMesh(Write("cut.3ds", tds.left(tds.size() - 10))), "cut.3ds", "could not be read");
}

TEST_F(MeshImport, ModelsTooLargeForLiveUseAreRefused) {
  // Past the size limit the file is never read, so a sparse one costs nothing.
  const std::string huge = Write("huge.obj", "");
  ASSERT_TRUE(QFile::resize(QString::fromStdString(huge), 256ll * 1024 * 1024 + 1));
  ExpectRefused(ImportMesh(huge), "huge.obj", "too large for live use");
  const std::string cube = Write("cube.obj", kCubeObj);
  EXPECT_TRUE(ImportMesh(cube, MeshImportLimits{.MaxFaces = 12, .MaxVertices = 24}).Ok);
  ExpectRefused(ImportMesh(cube, MeshImportLimits{.MaxFaces = 11}), "cube.obj", "too large for live use");
  ExpectRefused(ImportMesh(cube, MeshImportLimits{.MaxVertices = 23}), "cube.obj", "too large for live use");
}

}  // namespace
}  // namespace lumivane
