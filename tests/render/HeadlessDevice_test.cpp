#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <algorithm>
#include <cmath>

#include "render/RenderDevice.h"
#include "render/TextureImage.h"
#include "support/RenderFixture.h"

namespace lumivane {
namespace {

using test::Pixel;
using test::Quad;

// On Mesa's software renderer: frames come back in order, whole and in the colour they were given,
// while each read back overlaps the next frame.
TEST(HeadlessDevice, FramesComeBackInOrderAndInTheirColours) {
  std::string error;
  auto device = CreateHeadlessDevice(64, 48, error);
  ASSERT_NE(device, nullptr) << error;
  EXPECT_EQ(device->BackBufferWidth(), 64);
  EXPECT_FALSE(device->Renderer().empty());

  std::vector<std::uint8_t> rgba;
  const std::uint32_t colours[3] = {0xFFFF0000, 0xFF00FF80, 0xFF123456};
  for (int f = 0; f < 3; ++f) {
    device->BeginScene();
    device->Clear(colours[f]);
    device->EndScene();
    device->QueueReadBack();
    if (f == 0) {
      EXPECT_FALSE(device->TakeReadBack(rgba));  // nothing is older than the first frame
    } else {
      ASSERT_TRUE(device->TakeReadBack(rgba));  // the frame before, while this one is on its way
      ASSERT_EQ(rgba.size(), 64u * 48u * 4u);
      EXPECT_EQ(Pixel(rgba, 64, 0, 0), colours[f - 1] & 0xFFFFFF);
      EXPECT_EQ(Pixel(rgba, 64, 63, 47), colours[f - 1] & 0xFFFFFF);
      EXPECT_EQ(rgba[3], 255);  // the back buffer's alpha reads as 1
    }
  }
  ASSERT_TRUE(device->FlushReadBack(rgba));
  EXPECT_EQ(Pixel(rgba, 64, 10, 10), 0x123456u);
  EXPECT_FALSE(device->FlushReadBack(rgba));  // each frame is delivered once
}

// A frame that does not clear paints over the last one, although it is drawn into the other back
// buffer while the last is read back.
TEST(HeadlessDevice, AFrameWithoutAClearKeepsTheLastFrame) {
  std::string error;
  auto device = CreateHeadlessDevice(32, 32, error);
  ASSERT_NE(device, nullptr) << error;
  device->BeginScene();
  device->Clear(0xFF0000FF);
  device->EndScene();
  device->QueueReadBack();
  device->BeginScene();
  Quad(*device, 0, 0, 16, 32, 0xFFFFFFFF);
  device->EndScene();
  device->QueueReadBack();
  std::vector<std::uint8_t> rgba;
  ASSERT_TRUE(device->FlushReadBack(rgba));
  ASSERT_TRUE(device->FlushReadBack(rgba));
  EXPECT_EQ(Pixel(rgba, 32, 4, 4), 0xFFFFFFu);
  EXPECT_EQ(Pixel(rgba, 32, 24, 4), 0x0000FFu);  // the first frame's blue, carried over
}

// Every pair of blend codes against its formula: a source of one colour over a cleared destination,
// each pair in its own cell of one frame.
TEST(HeadlessDevice, EachBlendCodePairFollowsItsFormula) {
  constexpr int kCell = 4, kCodes = static_cast<int>(Blend::BothInvSrcAlpha);  // codes 1..13
  std::string error;
  auto device = CreateHeadlessDevice(kCell * kCodes, kCell * kCodes, error);
  ASSERT_NE(device, nullptr) << error;
  const double S[3] = {0xCC / 255.0, 0x66 / 255.0, 0x33 / 255.0}, Sa = 0x99 / 255.0;
  const double D[3] = {0x4D / 255.0, 0x80 / 255.0, 0xE6 / 255.0}, Da = 1.0;
  device->BeginScene();
  device->Clear(0xFF4D80E6);
  for (int src = 1; src <= kCodes; ++src) {
    for (int dst = 1; dst <= kCodes; ++dst) {
      device->SetBlend(static_cast<std::uint32_t>(src), static_cast<std::uint32_t>(dst));
      Quad(*device, (src - 1) * kCell, (dst - 1) * kCell, src * kCell, dst * kCell, 0x99CC6633);
    }
  }
  device->EndScene();
  std::vector<std::uint8_t> rgba;
  ASSERT_TRUE(device->ReadBackNow(rgba));

  auto factor = [&](int code, int channel, bool source) -> double {
    switch (static_cast<std::uint32_t>(code)) {
      case Blend::Zero: return 0;
      case Blend::SrcColor: return S[channel];
      case Blend::InvSrcColor: return 1 - S[channel];
      case Blend::SrcAlpha: return Sa;
      case Blend::InvSrcAlpha: return 1 - Sa;
      case Blend::DestAlpha: return Da;
      case Blend::InvDestAlpha: return 1 - Da;
      case Blend::DestColor: return D[channel];
      case Blend::InvDestColor: return 1 - D[channel];
      case Blend::SrcAlphaSat: return source ? std::min(Sa, 1 - Da) : 1;
      default: return 1;
    }
  };
  for (int src = 1; src <= kCodes; ++src) {
    for (int dst = 1; dst <= kCodes; ++dst) {
      const int x = (src - 1) * kCell + 1, y = (dst - 1) * kCell + 1;
      const std::size_t at = (static_cast<std::size_t>(y) * kCell * kCodes + static_cast<std::size_t>(x)) * 4;
      for (int ch = 0; ch < 3; ++ch) {
        double fs = factor(src, ch, true), fd = factor(dst, ch, false);
        const auto both = static_cast<std::uint32_t>(src);
        if (both == Blend::BothSrcAlpha) fs = Sa, fd = 1 - Sa;
        if (both == Blend::BothInvSrcAlpha) fs = 1 - Sa, fd = Sa;
        const double want = std::clamp(S[ch] * fs + D[ch] * fd, 0.0, 1.0) * 255.0;
        EXPECT_NEAR(rgba[at + static_cast<std::size_t>(ch)], want, 2.5) << "codes " << src << "," << dst << " channel " << ch;
      }
      EXPECT_EQ(rgba[at + 3], 255) << "codes " << src << "," << dst;  // the destination alpha stays 1
    }
  }
}

// Pre-transformed pixels land where they say (row 0 at the top), culling follows the winding as the
// screen shows it, and world vertices go through world, view and projection.
TEST(HeadlessDevice, VertexLayoutsLandWhereTheySay) {
  std::string error;
  auto device = CreateHeadlessDevice(64, 64, error);
  ASSERT_NE(device, nullptr) << error;
  device->BeginScene();
  device->Clear(0xFF000000);
  // Clockwise on screen (rows down): drawn under the default counter-clockwise culling.
  const TLVERTEX clockwise[3] = {{0, 0, 0, 1, 0xFFFF0000}, {32, 0, 0, 1, 0xFFFF0000}, {0, 32, 0, 1, 0xFFFF0000}};
  device->DrawPrimitiveUP(PrimitiveType::TriangleList, 1, clockwise);
  // Counter-clockwise: culled, unless culling is off.
  const TLVERTEX counter[3] = {{64, 0, 0, 1, 0xFF00FF00}, {32, 0, 0, 1, 0xFF00FF00}, {64, 32, 0, 1, 0xFF00FF00}};
  device->DrawPrimitiveUP(PrimitiveType::TriangleList, 1, counter);
  device->SetRenderState(RenderState::CULLMODE, CullMode::None);
  const TLVERTEX counterBlue[3] = {{0, 64, 0, 1, 0xFF0000FF}, {32, 64, 0, 1, 0xFF0000FF}, {0, 32, 0, 1, 0xFF0000FF}};
  device->DrawPrimitiveUP(PrimitiveType::TriangleList, 1, counterBlue);
  // A world-space square in front of a camera on the -z axis fills the lower right quarter.
  const float eye[3] = {0, 0, -2}, at[3] = {0, 0, 0}, up[3] = {0, 1, 0};
  device->SetTransform(TransformState::View, Matrix::LookAtLH(eye, at, up));
  device->SetTransform(TransformState::Projection, Matrix::PerspectiveFovLH(std::atan(1.0f) * 2.0f, 1.0f, 0.1f, 10.0f));
  device->SetTransform(TransformState::World, Matrix::Translation(1.0f, -1.0f, 0.0f));
  const std::uint32_t yellow = 0xFFFFFF00;
  const LVERTEX square[4] = {{-0.9f, 0.9f, 0, yellow}, {0.9f, 0.9f, 0, yellow}, {-0.9f, -0.9f, 0, yellow},
                             {0.9f, -0.9f, 0, yellow}};
  device->DrawPrimitiveUP(PrimitiveType::TriangleStrip, 2, square);
  device->EndScene();
  std::vector<std::uint8_t> rgba;
  ASSERT_TRUE(device->ReadBackNow(rgba));
  EXPECT_EQ(Pixel(rgba, 64, 4, 4), 0xFF0000u);
  EXPECT_EQ(Pixel(rgba, 64, 60, 4), 0x000000u);  // culled
  EXPECT_EQ(Pixel(rgba, 64, 4, 60), 0x0000FFu);
  EXPECT_EQ(Pixel(rgba, 64, 48, 48), 0xFFFF00u);  // the square, below and right of the centre
  EXPECT_EQ(Pixel(rgba, 64, 48, 16), 0x000000u);
}

// Textures: power-of-two sizes, colour key and scaling on load, stage operations, render to
// texture, back buffer copies and mirrored stretches.
TEST(HeadlessDevice, TexturesLoadDrawAndTakeCopies) {
  std::string error;
  auto device = CreateHeadlessDevice(64, 64, error);
  ASSERT_NE(device, nullptr) << error;

  // 3x3 picture: opaque black keyed out, the rest red; scaled to 4x4 on load.
  QImage picture(3, 3, QImage::Format_ARGB32);
  picture.fill(0xFFFF0000);
  picture.setPixel(1, 1, 0xFF000000);
  TextureImage image;
  PrepareTextureImage(picture, 0, 0, TextureFormat::A8R8G8B8, ImageFilter::Point, 0xFF000000, image);
  EXPECT_EQ(image.Width, 4);
  EXPECT_EQ(image.Height, 4);
  const TextureId keyed = device->CreateTextureFromImage(image);
  ASSERT_NE(keyed, 0u);
  TextureDesc desc;
  ASSERT_TRUE(device->GetDesc(keyed, desc));
  EXPECT_EQ(desc.Width, 4);
  const TextureId odd = device->CreateTexture(100, 33, TextureFormat::A8R8G8B8, true);
  ASSERT_TRUE(device->GetDesc(odd, desc));
  EXPECT_EQ(desc.Width, 128);
  EXPECT_EQ(desc.Height, 64);

  device->BeginScene();
  device->Clear(0xFF0000FF);
  device->SetTexture(keyed);
  device->SetBlend(Blend::SrcAlpha, Blend::InvSrcAlpha);
  test::TexturedQuad(*device, 0, 0, 32, 32, 0xFFFFFFFF);  // modulate by white: the texture
  device->SetTexture(0);
  device->EndScene();
  std::vector<std::uint8_t> rgba;
  ASSERT_TRUE(device->ReadBackNow(rgba));
  EXPECT_EQ(Pixel(rgba, 64, 2, 2), 0xFF0000u);
  EXPECT_EQ(Pixel(rgba, 64, 20, 20), 0x0000FFu);  // keyed out: the blue shows through

  // Render to texture, then draw that texture on the back buffer.
  const TextureId target = device->CreateTexture(16, 16, TextureFormat::A8R8G8B8, true);
  ASSERT_TRUE(device->BeginRenderToTexture(target));
  device->BeginScene();
  device->Clear(0xFF00FF00);
  Quad(*device, 0, 0, 8, 16, 0xFFFFFFFF);  // left half white, in the texture's own pixels
  device->EndScene();
  device->EndRenderToTexture();
  device->BeginScene();
  device->Clear(0xFF000000);
  device->SetBlend(0, 0);
  device->SetTexture(target);
  test::TexturedQuad(*device, 0, 0, 64, 64, 0xFFFFFFFF);
  device->SetTexture(0);
  device->EndScene();
  ASSERT_TRUE(device->ReadBackNow(rgba));
  EXPECT_EQ(Pixel(rgba, 64, 10, 30), 0xFFFFFFu);
  EXPECT_EQ(Pixel(rgba, 64, 50, 30), 0x00FF00u);

  // Copy the back buffer into a texture, and stretch it mirrored on both axes.
  device->BeginScene();
  device->Clear(0xFF000000);
  Quad(*device, 0, 0, 8, 8, 0xFFFF0000);  // red in the top left corner
  device->EndScene();
  const TextureId copy = device->CreateTexture(64, 64, TextureFormat::X8R8G8B8);
  device->CopyBackBufferToTexture(copy, 0, 0, 64, 64, 0, 0);
  std::vector<std::uint8_t> texels;
  ASSERT_TRUE(device->ReadTexture(copy, RenderDevice::FrameSink([&](const std::uint8_t* top, std::ptrdiff_t stride) {
    texels.assign(top, top + stride * 64);
  })));
  EXPECT_EQ(Pixel(texels, 64, 2, 2), 0xFF0000u);
  EXPECT_EQ(Pixel(texels, 64, 60, 60), 0x000000u);
  const TextureId mirrored = device->CreateTexture(64, 64, TextureFormat::X8R8G8B8);
  device->StretchBackBufferToTexture(mirrored, BlitSource{63, 63, -64, -64});
  ASSERT_TRUE(device->ReadTexture(mirrored, RenderDevice::FrameSink([&](const std::uint8_t* top, std::ptrdiff_t stride) {
    texels.assign(top, top + stride * 64);
  })));
  EXPECT_EQ(Pixel(texels, 64, 60, 60), 0xFF0000u);  // turned by 180 degrees
  EXPECT_EQ(Pixel(texels, 64, 2, 2), 0x000000u);
  EXPECT_EQ(Pixel(texels, 64, 56, 56), 0xFF0000u);
  EXPECT_EQ(Pixel(texels, 64, 55, 55), 0x000000u);  // exactly eight pixels, not one more

  device->ReleaseTexture(copy);
  EXPECT_FALSE(device->GetDesc(copy, desc));
  device->SetTexture(copy);  // a released texture draws as none: no crash
}

// A lit mesh: a square facing the camera, its colour emissive + ambient + diffuse x N.L +
// specular x (N.H)^power, each term in its own channel; the camera-space position projected as
// texture coordinates; culling by winding; and a mesh with stray indices refused.
TEST(HeadlessDevice, MeshesAreLitByTheMaterialAndTheLight) {
  std::string error;
  auto device = CreateHeadlessDevice(64, 64, error);
  ASSERT_NE(device, nullptr) << error;
  MeshData square;
  const float n[3] = {0, 0, -1};
  for (auto [x, y] : {std::pair{-1.0f, 1.0f}, {1.0f, 1.0f}, {1.0f, -1.0f}, {-1.0f, -1.0f}})
    square.Vertices.push_back(MeshVertex{x, y, 0, n[0], n[1], n[2], 0, 0});
  square.Indices = {0, 1, 2, 0, 2, 3};  // clockwise seen from the camera
  square.Subsets.push_back(MeshSubset{0, 6, 0});
  const MeshId mesh = device->CreateMesh(square);
  ASSERT_NE(mesh, 0u);
  MeshData stray = square;
  stray.Indices[4] = 9;
  EXPECT_EQ(device->CreateMesh(stray), 0u);

  const float eye[3] = {0, 0, -4}, at[3] = {0, 0, 0}, up[3] = {0, 1, 0};
  device->SetTransform(TransformState::Projection, Matrix::PerspectiveFovLH(3.1415f / 4, 1, 1, 100));
  device->SetTransform(TransformState::View, Matrix::LookAtLH(eye, at, up));
  device->SetTransform(TransformState::World, Matrix::Identity());
  device->SetRenderState(RenderState::LIGHTING, 1);
  device->SetRenderState(RenderState::SPECULARENABLE, 1);
  device->SetRenderState(RenderState::ZENABLE, 1);
  device->SetRenderState(RenderState::AMBIENT, 0xFF004000);  // green a quarter
  MeshMaterial material;
  material.Emissive[0] = 0.25f, material.Emissive[1] = 0, material.Emissive[2] = 0;
  material.Diffuse[0] = 1, material.Diffuse[1] = 0, material.Diffuse[2] = 0;
  material.Ambient[0] = 0, material.Ambient[1] = 1, material.Ambient[2] = 0;
  material.Specular[0] = 0, material.Specular[1] = 0, material.Specular[2] = 1;
  material.Power = 2;
  device->SetMaterial(material);
  Light light;
  light.Diffuse[0] = 0.5f;  // red a half at N.L 1
  light.Specular[2] = 1;    // blue full where N.H is 1, straight ahead
  light.Direction[2] = 1;
  device->SetLight(light);
  device->LightEnable(true);
  std::vector<std::uint8_t> rgba;
  auto draw = [&] {
    device->BeginScene();
    device->Clear(0xFF000000u);
    device->DrawMeshSubset(mesh, 0);
    device->EndScene();
    EXPECT_TRUE(device->ReadBackNow(rgba));
  };
  draw();
  const std::uint32_t centre = Pixel(rgba, 64, 32, 32);
  EXPECT_NEAR(static_cast<int>(centre >> 16), 191, 3);  // 0.25 + 0.5
  EXPECT_NEAR(static_cast<int>((centre >> 8) & 0xFF), 64, 3);
  // Lit at the corners, as the fixed pipeline does: there N.H is 0.9856, squared 0.971.
  EXPECT_NEAR(static_cast<int>(centre & 0xFF), 248, 3);
  EXPECT_EQ(Pixel(rgba, 64, 2, 2), 0u);

  // The texture from the camera-space position: x through the texture matrix, so the left half
  // of the square samples the picture's left texel.
  TextureImage picture;
  picture.Width = 2, picture.Height = 2;
  picture.Pixels = {0xFFFFFFFFu, 0xFF000000u, 0xFFFFFFFFu, 0xFF000000u};
  const TextureId texture = device->CreateTextureFromImage(picture);
  device->SetTexture(texture);
  device->SetRenderState(RenderState::SPECULARENABLE, 0);
  device->SetTextureStageState(TextureStageState::TEXCOORDINDEX, TexCoordIndex::CameraSpacePosition);
  device->SetTextureStageState(TextureStageState::TEXTURETRANSFORMFLAGS, TextureTransform::Count2);
  device->SetTextureStageState(TextureStageState::COLOROP, TextureOp::SelectArg1);  // the texture alone
  device->SetTextureStageState(TextureStageState::ADDRESSU, TextureAddress::Clamp);
  Matrix texel = Matrix::Scaling(0.25f, 0.25f, 1);  // x of -1..1 at the square to u 0.25..0.75
  texel.m[3][0] = texel.m[3][1] = 0.5f;
  device->SetTransform(TransformState::Texture0, texel);
  draw();
  EXPECT_EQ(Pixel(rgba, 64, 24, 32), 0xFFFFFFu);
  EXPECT_EQ(Pixel(rgba, 64, 40, 32), 0u);
  device->SetTexture(0);

  // Seen from behind, the square winds the other way and is culled; with culling off it shows.
  const float behind[3] = {0, 0, 4};
  device->SetTransform(TransformState::View, Matrix::LookAtLH(behind, at, up));
  draw();
  EXPECT_EQ(Pixel(rgba, 64, 32, 32), 0u);
  device->SetRenderState(RenderState::CULLMODE, CullMode::None);
  draw();
  EXPECT_NE(Pixel(rgba, 64, 32, 32), 0u);
  device->ReleaseMesh(mesh);
  draw();  // a released mesh draws nothing and fails nothing
  EXPECT_EQ(Pixel(rgba, 64, 32, 32), 0u);
}

TEST(HeadlessDevice, AnImpossibleBackBufferIsRefusedWithAReason) {
  std::string error;
  EXPECT_EQ(CreateHeadlessDevice(1 << 20, 1 << 20, error), nullptr);
  EXPECT_FALSE(error.empty());
  EXPECT_EQ(CreateHeadlessDevice(0, 10, error), nullptr);
}

}  // namespace
}  // namespace lumivane

int main(int argc, char** argv) {
  // Text layout needs Qt's font database, which lives in a GUI application: one without a screen.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
