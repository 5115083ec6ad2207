#include <gtest/gtest.h>

#include "core/RandomSource.h"
#include "render/BackgroundMesh.h"

namespace lumivane {
namespace {

TEST(BackgroundMesh, NextVisibleIndexWrapsAndSkipsHidden) {
  EXPECT_EQ(GetNextVisibleBackGroundIndex({false, false, false}, 1), 0);
  EXPECT_EQ(GetNextVisibleBackGroundIndex({}, 0), 0);
  EXPECT_EQ(GetNextVisibleBackGroundIndex({true, false, true}, 1), 3);
  EXPECT_EQ(GetNextVisibleBackGroundIndex({true, false, true}, 3), 1);  // wraps
  EXPECT_EQ(GetNextVisibleBackGroundIndex({false, true, false}, 2), 2);  // only itself
  EXPECT_EQ(GetNextVisibleBackGroundIndex({false, true}, 9), 2);        // out of range starts at 1
}

TEST(BackgroundMesh, AspectSignsAndTint) {
  double ax = 0, ay = 0;
  FitAspect(800, 600, 1920, 1080, ax, ay);  // 4:3 on a wide target: narrower
  EXPECT_DOUBLE_EQ(ax, 0.75);
  EXPECT_DOUBLE_EQ(ay, 1.0);
  FitAspect(800, 600, 500, 500, ax, ay);  // on a square one: lower
  EXPECT_DOUBLE_EQ(ax, 1.0);
  EXPECT_DOUBLE_EQ(ay, 0.75);
  FitAspect(0, 600, 500, 500, ax, ay);  // no proportions: untouched
  EXPECT_DOUBLE_EQ(ay, 1.0);

  ScriptedRandom random;
  for (double v : {0.54, 0.56}) random.Push(v);  // 0.5 rounds to x = 1; 0.6 gives y = 1
  int sx = 0, sy = 0;
  RandomSigns(random, sx, sy);
  EXPECT_EQ(sx, 1);
  EXPECT_EQ(sy, 1);
  // Upwards by half of 100 in each channel, clamped at 255.
  for (double v : {0.1, 0.9, 0.5, 0.5, 0.5}) random.Push(v);
  EXPECT_EQ(ChangeColorRandom(0x10F020, -100, random), 0x42FF52);
}

// Texture extents: a tile of 1 is the whole picture once, offsets stretch it (a negative one
// shrinks it), feedback takes the sliders as they stand, a held layout draws no random number.
TEST(BackgroundMesh, ExtentsPlacementAndHold) {
  ScriptedRandom random;
  BackGroundMesh last;
  TLVERTEX v[12];
  BackGroundMeshArguments a;
  a.Index = 1;
  a.BackBufferWidth = 640;
  a.BackBufferHeight = 360;
  a.FilterColor = 0x0000FF;  // red, program order
  BuildBackGroundMesh(a, random, last, v);
  EXPECT_DOUBLE_EQ(last.DU, 1.0);
  EXPECT_DOUBLE_EQ(last.DV, 1.0);
  EXPECT_EQ(last.MeshWidth, 640);
  EXPECT_EQ(last.RenderElementColor, 0xFFFF0000u);
  // Whole screen, one pixel beyond on the top left, the centre half way through the texture.
  EXPECT_FLOAT_EQ(v[0].x, -1);
  EXPECT_FLOAT_EQ(v[0].y, -1);
  EXPECT_FLOAT_EQ(v[4].x, 640);
  EXPECT_FLOAT_EQ(v[4].y, 360);
  EXPECT_FLOAT_EQ(v[2].tu, 0.5f);
  EXPECT_FLOAT_EQ(v[4].tv, 1.0f);

  a.TileX = 3;
  a.OffsetY = -4;
  BuildBackGroundMesh(a, random, last, v);
  EXPECT_DOUBLE_EQ(last.DU, 3.0);
  EXPECT_DOUBLE_EQ(last.DV, 0.8);
  a.Index = 0;  // no picture: the tile alone
  a.TileY = 2;
  BuildBackGroundMesh(a, random, last, v);
  EXPECT_DOUBLE_EQ(last.DV, 2.0 - 0.2);

  a.Feedback = true;
  a.Size = PlacementBlock{150, 50, 200, false};
  a.Position = PlacementBlock{120, 100, 200, false};
  BuildBackGroundMesh(a, random, last, v);
  EXPECT_EQ(last.MeshWidth, 640 - 100 + 150);
  EXPECT_EQ(last.MeshHeight, 360 - 100 + 50);
  EXPECT_DOUBLE_EQ(last.X0, 20);
  EXPECT_DOUBLE_EQ(last.Y0, 0);
  EXPECT_EQ(last.RenderElementColor, 0xFFFF0000u);  // the fades own it while feeding back

  a.HoldTimer = true;
  a.Position.X = 0;
  random.Push(0.7);
  const BackGroundMesh before = last;
  BuildBackGroundMesh(a, random, last, v);
  EXPECT_EQ(last.X0, before.X0);
  EXPECT_EQ(random.Remaining(), 1u);
}

}  // namespace
}  // namespace lumivane
