#include <gtest/gtest.h>

#include <cmath>

#include "render/SceneNode.h"
#include "render/TextBox.h"
#include "render/TextBoxShape.h"

namespace lumivane {
namespace {

constexpr float kPi = 3.1415927410125732f;

class TextBoxShapeTest : public ::testing::Test {
 protected:
  Circle3D circle{10, 90, 1};
  Wave3D wave{2, 40, 100, 0, 1};
  Spiral3D spiral{8, 2, 45, 1};
  TextBoxShape box{3.0f, 1.5f, 1.0f, 0xFF112233};
  std::vector<LVERTEX> strip;
  void Build(std::string_view type, bool first = true) { BuildTextBoxShape(type, circle, wave, spiral, box, first, strip); }
};

// A ring of inner and outer vertices, the texture stepping with the vertex number, not the angle.
TEST_F(TextBoxShapeTest, ACircleIsARingWhoseTextureRunsWithTheVertexNumber) {
  Build("Circle");
  ASSERT_EQ(strip.size(), 10u);  // 0, 90, 180, 270 and 360 degrees, two vertices each
  const float tile = 2.0f * 360.0f / 90.0f;
  for (std::size_t n = 0; n < strip.size(); ++n) {
    const float angle = static_cast<float>(n / 2) * 90.0f * kPi / 180.0f;
    const float radius = n % 2 == 0 ? 10.0f : 11.5f;  // the outer ring is the box's height further out
    EXPECT_NEAR(strip[n].x, radius * std::cos(angle), 1e-4) << n;
    EXPECT_NEAR(strip[n].y, radius * std::sin(angle), 1e-4) << n;
    EXPECT_FLOAT_EQ(strip[n].tu, static_cast<float>(n) / tile) << n;
    EXPECT_EQ(strip[n].tv, n % 2 == 0 ? 0.0f : 1.0f);
    EXPECT_EQ(strip[n].color, 0xFF112233u);
  }
  // A smoothness of a whole turn is a thin strip of four vertices; none at all makes no strip, and
  // no tiling leaves the texture unstepped.
  circle.Smoothness = 360;
  Build("Circle");
  EXPECT_EQ(strip.size(), 4u);
  circle.Smoothness = 0;
  Build("Circle");
  EXPECT_TRUE(strip.empty());
  circle = Circle3D{10, 90, 0};
  Build("Circle");
  EXPECT_EQ(strip[5].tu, 0.0f);
}

// The wave's phase moves on once a frame (with the first copy) and folds back past a full turn by
// its distance to 360.
TEST_F(TextBoxShapeTest, AWavesPhaseMovesWithTheFirstCopyAndFoldsBackPast360) {
  wave.CurrentPhase = 300;
  Build("Wave");
  EXPECT_EQ(wave.CurrentPhase, 40);  // 400 folds to |360 - 400|
  Build("Wave", false);
  EXPECT_EQ(wave.CurrentPhase, 40);  // further copies leave it
  wave.CurrentPhase = 350;
  wave.Phase = 500;
  Build("Wave");
  EXPECT_EQ(wave.CurrentPhase, 490);  // |360 - 850|: the fold, not a subtraction of a turn

  wave = Wave3D{2, 40, 0, 30, 1};
  Build("Wave");
  ASSERT_EQ(strip.size(), 18u);  // x from -40 to 40 by 10
  for (std::size_t i = 0; i < strip.size(); i += 2) {
    const float x = -40.0f + 10.0f * static_cast<float>(i / 2);
    const float y = -1.5f + 2.0f * std::sin((x + 30.0f) * kPi / 180.0f);
    EXPECT_NEAR(strip[i].x, x * 3.0f / 40.0f, 1e-5);
    EXPECT_NEAR(strip[i].y, y, 1e-5);
    EXPECT_NEAR(strip[i + 1].y, y + 3.0f, 1e-5);
    EXPECT_EQ(strip[i].tv, 1.0f);
    EXPECT_EQ(strip[i + 1].tv, 0.0f);
  }
}

TEST_F(TextBoxShapeTest, ASpiralWindsInToItsCentre) {
  Build("Spiral");
  ASSERT_EQ(strip.size(), 34u);  // 0 to 720 degrees by 45
  EXPECT_NEAR(strip[0].x, 8.0f, 1e-5);
  EXPECT_NEAR(strip[1].x, 6.5f, 1e-5);  // the inner edge, the box's height further in
  EXPECT_NEAR(strip[32].x, 0.0f, 1e-4);  // the last turn ends at the centre
  EXPECT_NEAR(std::hypot(strip[16].x, strip[16].y), 4.0f, 1e-4);  // half way round, half the radius
}

// The plain quad, and its outline; a picture that stands on its head turns only tv.
TEST_F(TextBoxShapeTest, TheQuadAndItsOutline) {
  box.V = -1.0f;
  Build("");
  ASSERT_EQ(strip.size(), 4u);
  EXPECT_EQ((std::vector<float>{strip[0].x, strip[0].y, strip[3].x, strip[3].y}),
            (std::vector<float>{-3.0f, 1.5f, 3.0f, -1.5f}));
  EXPECT_EQ((std::vector<float>{strip[0].tu, strip[1].tu, strip[2].tu, strip[3].tu}),
            (std::vector<float>{0, 0, 1, 1}));
  EXPECT_EQ((std::vector<float>{strip[0].tv, strip[1].tv, strip[2].tv, strip[3].tv}),
            (std::vector<float>{0, -1, 0, -1}));
  std::vector<LINEVERTEX> outline;
  BuildTextBoxOutline("", strip, 0xFFFFFFFF, outline);
  ASSERT_EQ(outline.size(), 5u);
  EXPECT_EQ(outline[2].x, strip[3].x);
  EXPECT_EQ(outline[3].y, strip[2].y);
  EXPECT_EQ(outline[4].x, outline[0].x);
  Build("Circle");
  BuildTextBoxOutline("Circle", strip, 0xFFFFFFFF, outline);
  EXPECT_EQ(outline.size(), strip.size() / 2);  // along the inner ring
}

// Merges: before (applied to points first), after, or in place of the frame's matrix; children
// follow their parent at the next update.
TEST(SceneNode, MatricesMergeInTheirOrderAndChildrenFollowTheirParent) {
  auto transform = [](const Matrix& m, float x) {
    const float p[3] = {x, 0, 0};
    float out[4];
    m.Transform(p, out);
    return out[0];
  };
  SceneNode root;
  SceneNode* text = root.AddChild();
  text->AddTranslation(SceneNode::kReplace, 5, 0, 0);
  text->AddScale(SceneNode::kBefore, 2, 2, 2);  // scale first, then move: 1 -> 2 -> 7
  EXPECT_FLOAT_EQ(transform(text->GetUpdatedMatrix(), 1), 7.0f);
  text->AddTranslation(SceneNode::kReplace, 5, 0, 0);
  text->AddScale(SceneNode::kAfter, 2, 2, 2);  // move first, then scale: 1 -> 6 -> 12
  EXPECT_FLOAT_EQ(transform(text->GetUpdatedMatrix(), 1), 12.0f);
  // Yaw turns x towards -z: a quarter turn about y takes (1, 0, 0) to (0, 0, -1).
  text->AddRotationXYZ(SceneNode::kReplace, 0, kPi / 2, 0);
  const float p[3] = {1, 0, 0};
  float out[4];
  text->GetUpdatedMatrix().Transform(p, out);
  EXPECT_NEAR(out[0], 0.0f, 1e-6);
  EXPECT_NEAR(out[2], -1.0f, 1e-6);

  text->AddTranslation(SceneNode::kReplace, 1, 0, 0);
  root.AddTranslation(SceneNode::kReplace, 10, 0, 0);
  EXPECT_FLOAT_EQ(transform(text->GetUpdatedMatrix(), 0), 1.0f);  // not yet
  root.UpdateFrames();
  EXPECT_FLOAT_EQ(transform(text->GetUpdatedMatrix(), 0), 11.0f);
  text->AddScale(SceneNode::kBefore, 3, 3, 3);  // the parent's move stays under a later merge
  EXPECT_FLOAT_EQ(transform(text->GetUpdatedMatrix(), 1), 14.0f);
}

// A text in world mode swings about the screen's centre; otherwise it turns in its place.
TEST(TextBox, WorldModeTurnsAboutTheCentreAndOtherwiseInPlace) {
  std::string error;
  auto device = CreateHeadlessDevice(32, 32, error);
  ASSERT_NE(device, nullptr) << error;
  TextBox box;
  box.RotationZ = 90;
  box.TranslationX = 5;
  const float p[3] = {1, 0, 0};
  float out[4];
  UpdateTextBoxFrame(box, *device, 640, 480, -20);
  box.TextFrame->GetUpdatedMatrix().Transform(p, out);
  EXPECT_NEAR(out[0], 5.0f, 1e-3);  // turned to (0, 1), then moved
  EXPECT_NEAR(out[1], 1.0f, 1e-3);
  box.World = true;
  UpdateTextBoxFrame(box, *device, 640, 480, -20);
  box.TextFrame->GetUpdatedMatrix().Transform(p, out);
  EXPECT_NEAR(out[0], 0.0f, 1e-3);  // moved to (6, 0), then turned about the centre
  EXPECT_NEAR(out[1], 6.0f, 1e-3);
  box.World = false;
  box.ScaleX = 2;
  UpdateTextBoxFrame(box, *device, 640, 480, -20);
  box.TextFrame->GetUpdatedMatrix().Transform(p, out);
  EXPECT_NEAR(out[1], 2.0f, 1e-3);  // scaled before it turns
}

}  // namespace
}  // namespace lumivane
