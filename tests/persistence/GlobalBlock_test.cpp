#include "persistence/GlobalBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "persistence/ShowFile.h"
#include "persistence/XmlDocument.h"
#include "support/EngineFixture.h"
#include "support/FakeMsgBox.h"
#include "support/RecordingLayerOutput.h"

namespace lumivane {
namespace {

namespace fs = std::filesystem;

class GlobalBlockTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  fs::path dir = fs::path(::testing::TempDir()) /
                 (std::string("lumivane_global_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm main{model, text, msg};
  BackgroundsForm backgrounds{model, msg, main.BackgroundColor};
  EffectsForm effects{model};
  ShowFile show{main};
  std::string error;
  const BackgroundsForm::Controls& bg = backgrounds.C();
  const EffectsForm::Controls& fx = effects.C();

  void SetUp() override {
    fs::create_directories(dir);
    main.Backgrounds = &backgrounds;
    main.Effects = &effects;
    backgrounds.ReadImageSize = [](const std::string& file, std::int32_t& w, std::int32_t& h, std::string& e) {
      if (!fs::exists(file)) {
        e = "missing";
        return false;
      }
      w = 64;
      h = 32;
      return true;
    };
  }
  void TearDown() override { fs::remove_all(dir); }
  std::string File(const fs::path& relative, const std::string& content = "x") {
    const fs::path p = dir / relative;
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << content;
    return p.string();
  }
  std::vector<ControlHandle> Sliders() const {
    return {bg.SliderRecordFramesPerSecond, bg.SliderBackGroundPositionRandomX, bg.SliderBackGroundPositionRandomY,
            bg.SliderBackgroundSizeRandomX, bg.SliderBackgroundSizeRandomY, bg.sliderRandomBackgroundFilterColor,
            bg.SliderBackgroundTileX, bg.SliderBackgroundTileY, bg.SliderBackGroundOffsetX, bg.SliderBackGroundOffsetY,
            fx.SliderEffectTime, fx.SliderEffectColorRandom, fx.SliderEffectTileX, fx.SliderEffectTileY,
            fx.SliderEffectOffsetX, fx.SliderEffectOffsetY, fx.SliderEffectSizeRandomX, fx.SliderEffectSizeRandomY,
            fx.SliderEffectPositionRandomX, fx.SliderEffectPositionRandomY, bg.SliderFadeOut};
  }
  std::vector<ControlHandle> Flags() const {
    return {bg.chkImageFadeIn, bg.chkImageFadeOut, bg.chkComputeAspectRatio, bg.cmdPlay, bg.cmdEnableMask,
            bg.chkHoldBackgroundTimer, bg.cmdFeedBack, bg.chkHoldBackground, bg.chkInvertOutput,
            bg.chkBackGroundPositionUniform, bg.chkBackGroundSizeUniform, bg.chkRandomizeTiling,
            bg.chkRandomizeOffset, fx.chkEnableEffect, fx.chkHoldEffectTimer, fx.chkRandomizeTiling,
            fx.chkRandomizeOffset, fx.chkEffectSizeUniform, fx.chkEffectPositionUniform, fx.chkComputeAspectRatio,
            fx.chkCaptureEffect};
  }
  static std::vector<std::string> ChildNames(pugi::xml_node node) {
    std::vector<std::string> names;
    for (pugi::xml_node n = node.first_child(); n; n = n.next_sibling())
      names.emplace_back(XmlDocument::FileName(n.name()));
    return names;
  }
  XmlDocument Saved(const std::string& path) {
    XmlDocument doc;
    EXPECT_TRUE(doc.Open(path, error)) << error;
    return doc;
  }
};

TEST_F(GlobalBlockTest, EverySettingSurvivesASaveAndLoad) {
  const std::vector<ControlHandle> sliders = Sliders(), flags = Flags();
  // Distinct values and alternating flags, so a swapped or dropped pair shows.
  for (std::size_t i = 0; i < sliders.size(); ++i)
    ASSERT_TRUE(model.SetValue(sliders[i], std::min(sliders[i]->Min, sliders[i]->Max) + 1 + static_cast<int>(i)));
  for (std::size_t i = 0; i < flags.size(); ++i) ASSERT_TRUE(model.SetValue(flags[i], static_cast<int>(i % 2)));
  model.SetBackColor(main.BackgroundColor, 0x00010203);
  model.SetBackColor(bg.piCFilterColor, 0x00405060);
  model.SetBackColor(fx.picEffectColor, 0x00708090);
  model.SetText(bg.txtTimerInterval, "1234");
  model.SetText(fx.cboSourceBlend, "BOTH_SRC_ALPHA");  // a name only files carry
  model.SetText(fx.cboTargetBlend, "INV_DEST_COLOR");
  const std::string one = File("pics/one.jpg"), two = File("pics/two.jpg");
  backgrounds.LoadBackground({one, two});
  backgrounds.SetMaskFileName(File("m/mask.png"), false);
  effects.SetEffectFile(File("e/fx.png"));
  const std::string path = (dir / "show.xml").string();
  ASSERT_TRUE(show.EngineFileSave(path, error)) << error;

  for (ControlHandle s : sliders) model.SetValue(s, std::min(s->Min, s->Max));
  for (std::size_t i = 0; i < flags.size(); ++i) model.SetValue(flags[i], static_cast<int>(1 - i % 2));
  for (ControlHandle c : {main.BackgroundColor, bg.piCFilterColor, fx.picEffectColor}) model.SetBackColor(c, 0);
  model.SetText(bg.txtTimerInterval, "9");
  model.SetText(fx.cboSourceBlend, "ONE");
  model.SetText(fx.cboTargetBlend, "ZERO");
  backgrounds.ClearBackGrounds();
  backgrounds.SetMaskFileName({}, false);
  effects.SetEffectFile({});

  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  for (std::size_t i = 0; i < sliders.size(); ++i)
    EXPECT_EQ(ControlModel::Value(sliders[i]), std::min(sliders[i]->Min, sliders[i]->Max) + 1 + static_cast<int>(i))
        << sliders[i]->Name;
  for (std::size_t i = 0; i < flags.size(); ++i)
    EXPECT_EQ(ControlModel::Value(flags[i]), static_cast<int>(i % 2)) << flags[i]->FormName << "." << flags[i]->Name;
  EXPECT_EQ(ControlModel::BackColor(main.BackgroundColor), 0x00010203);
  EXPECT_EQ(ControlModel::BackColor(bg.piCFilterColor), 0x00405060);
  EXPECT_EQ(ControlModel::BackColor(fx.picEffectColor), 0x00708090);
  EXPECT_EQ(ControlModel::Text(bg.txtTimerInterval), "1234");
  EXPECT_EQ(ControlModel::Text(fx.cboSourceBlend), "BOTH_SRC_ALPHA");
  EXPECT_EQ(ControlModel::Text(fx.cboTargetBlend), "INV_DEST_COLOR");
  ASSERT_EQ(backgrounds.Items().size(), 2u);
  EXPECT_EQ(backgrounds.Items()[0].FileName, one);
  EXPECT_EQ(backgrounds.Items()[1].FileName, two);
  EXPECT_EQ(ControlModel::SelectedItem(bg.ListBackgrounds), 1);
  EXPECT_EQ(backgrounds.MaskFileName(), (dir / "m/mask.png").string());
  EXPECT_EQ(effects.EffectFileName(), (dir / "e/fx.png").string());
}

TEST_F(GlobalBlockTest, AnOldShowLeavesTheControlsAsTheyStand) {
  backgrounds.LoadBackground({File("one.jpg")});
  model.SetValue(bg.SliderFadeOut, 17);
  model.SetValue(fx.chkEnableEffect, 1);
  model.SetText(fx.cboSourceBlend, "ONE");
  backgrounds.SetMesh(BackGroundMesh{5, 6, 2, 3, 100, 200, 0x11223344u, 0.5f, 0.25f});
  backgrounds.SetMaskFileName("/mine.png", false);
  const BackGroundMesh mesh = backgrounds.StoredMesh;
  const std::string path = File("old.xml", "<File><Global><Resolution>800x600</Resolution></Global></File>");
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  EXPECT_EQ(backgrounds.Items().size(), 1u);
  EXPECT_EQ(ControlModel::Value(bg.SliderFadeOut), 17);
  EXPECT_EQ(ControlModel::Value(fx.chkEnableEffect), 1);
  EXPECT_EQ(ControlModel::Text(fx.cboSourceBlend), "ONE");
  EXPECT_EQ(backgrounds.StoredMesh.RenderElementColor, mesh.RenderElementColor);
  EXPECT_EQ(backgrounds.StoredMesh.X0, mesh.X0);
  EXPECT_EQ(backgrounds.MaskFileName(), "");  // a show without a mask has none (unless it is locked)

  // Nor does one that cannot be read.
  EXPECT_FALSE(show.EngineFileLoad(File("bad.xml", "<File><Global><FadeOut>3</FadeOut>"), error));
  EXPECT_EQ(ControlModel::Value(bg.SliderFadeOut), 17);
}

TEST_F(GlobalBlockTest, OddValuesAreClampedOrIgnored) {
  model.SetValue(bg.SliderFadeOut, 17);
  model.SetValue(bg.SliderBackgroundTileX, 5);
  model.SetValue(fx.SliderEffectTime, 700);
  model.SetBackColor(bg.piCFilterColor, 0x123);
  const std::string path = File("odd.xml", R"(<File><Global>
    <FadeOut>999</FadeOut><BackGroundTileX>-5</BackGroundTileX><BackGroundOffsetY>2.6</BackGroundOffsetY>
    <EffectTimer>soon</EffectTimer><BackGroundFilterColor></BackGroundFilterColor>
    <InvertOutput>-1</InvertOutput><BackGroundTimer>250</BackGroundTimer></Global></File>)");
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  EXPECT_EQ(ControlModel::Value(bg.SliderFadeOut), 255);
  EXPECT_EQ(ControlModel::Value(bg.SliderBackgroundTileX), 1);
  EXPECT_EQ(ControlModel::Value(bg.SliderBackGroundOffsetY), 3);
  EXPECT_EQ(ControlModel::Value(fx.SliderEffectTime), 700);
  EXPECT_EQ(ControlModel::BackColor(bg.piCFilterColor), 0x123);
  EXPECT_EQ(ControlModel::Value(bg.chkInvertOutput), 1);
  EXPECT_EQ(ControlModel::Text(bg.txtTimerInterval), "250");
}

TEST_F(GlobalBlockTest, WhatThisBuildDoesNotKnowIsWrittenBackInItsPlace) {
  const std::string path = File("foreign.xml", R"(<File><Global>
    <Future a="1">later</Future><FadeOut>4</FadeOut><VideoFiles><Count>1</Count></VideoFiles>
    <EffectSourceBlend>BOTH_SRC_ALPHA</EffectSourceBlend>
    <Backgrounds><BackgroundCount>0</BackgroundCount><BackgroundShuffle>1</BackgroundShuffle></Backgrounds>
    </Global></File>)");
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  const std::string saved = (dir / "saved.xml").string();
  ASSERT_TRUE(show.EngineFileSave(saved, error)) << error;
  const XmlDocument doc = Saved(saved);
  const pugi::xml_node global = doc.Root().child("Global");
  EXPECT_STREQ(global.child_value("EffectSourceBlend"), "BOTH_SRC_ALPHA");
  EXPECT_STREQ(global.last_child().name(), "Future");
  EXPECT_STREQ(global.last_child().attribute("a").value(), "1");
  EXPECT_STREQ(global.child("Mask").next_sibling().name(), "VideoFiles");
  EXPECT_STREQ(global.child("VideoFiles").child_value("Count"), "1");
  EXPECT_STREQ(global.child("Backgrounds").last_child().name(), "BackgroundShuffle");
}

TEST_F(GlobalBlockTest, GlobalIsWrittenInTheFormatsOrder) {
  backgrounds.LoadBackground({File("a.jpg"), File("b.jpg")});
  const std::string path = (dir / "order.xml").string();
  ASSERT_TRUE(show.EngineFileSave(path, error)) << error;
  const XmlDocument doc = Saved(path);
  const pugi::xml_node global = doc.Root().child("Global");
  EXPECT_EQ(ChildNames(global),
            (std::vector<std::string>{
                "Resolution", "RecordFramesPerSecond", "Backgrounds", "Mask", "BackGroundColor",
                "BackGroundFilterColor", "BackGroundTimer", "HoldBackGroundTimer", "BackGroundCapture",
                "BackGroundHold", "InvertOutput", "BackGroundPositionRandomX", "BackGroundPositionRandomY",
                "BackGroundPositionUniform", "BackGroundSizeRandomX", "BackGroundSizeRandomY", "BackGroundSizeUniform",
                "BackGroundFilterRandom", "BackGroundTileX", "BackGroundTileY", "BackGroundOffsetX",
                "BackGroundOffsetY", "BackGroundTileRandomize", "BackGroundOffsetRandomize", "EffectSourceBlend",
                "EffectTargetBlend", "EffectEnabled", "EffectFileName", "EffectColor", "EffectTimer",
                "HoldEffectTimer", "EffectColorRandom", "EffectTileX", "EffectTileY", "EffectOffsetX",
                "EffectOffsetY", "EffectRandomizeTiling", "EffectRandomizeOffset", "EffectSizeRandomX",
                "EffectSizeRandomY", "EffectSizeUniform", "EffectPositionRandomX", "EffectPositionRandomY",
                "EffectPositionUniform", "EffectComputeAspectRatio", "CaptureEffect", "FadeOut"}));
  EXPECT_EQ(ChildNames(global.child("Backgrounds")),
            (std::vector<std::string>{"BackgroundCount", "BackgroundFadeIn", "BackgroundFadeOut",
                                      "BackGroundComputeAspectRatio", "BackgroundPlaying", "1Background",
                                      "2Background"}));
  EXPECT_EQ(ChildNames(global.child("Mask")), (std::vector<std::string>{"MaskFileName", "EnableMask"}));
  EXPECT_EQ(ChildNames(doc.Root()), (std::vector<std::string>{"Header", "Global", "Text", "LastBackGroundMesh"}));
}

TEST_F(GlobalBlockTest, MovedFilesAreFoundBesideTheShowAndTheOutputGetsThem) {
  const std::string pic = File("show/Backgrounds/pic.jpg"), mask = File("show/Masks/mask.png"),
                    effect = File("show/Effects/fx.png");
  test::RecordingLayerOutput output;
  backgrounds.Output = &output;
  effects.Output = &output;
  const std::vector<std::string>&sent = output.shown, &masks = output.masks, &effectsSent = output.effects;
  const std::string path = File("show/moved.xml", R"(<File><Global>
    <Backgrounds><BackgroundCount>2</BackgroundCount><BackgroundPlaying>0</BackgroundPlaying>
      <1Background>C:\Shows\pic.jpg</1Background><2Background>/gone/lost.jpg</2Background></Backgrounds>
    <Mask><MaskFileName>C:\Shows\mask.png</MaskFileName></Mask>
    <EffectFileName>/elsewhere/fx.png</EffectFileName></Global></File>)");
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  ASSERT_EQ(backgrounds.Items().size(), 2u);
  EXPECT_EQ(backgrounds.Items()[0].FileName, pic);
  EXPECT_EQ(backgrounds.Items()[0].Width, 64);
  EXPECT_EQ(backgrounds.Items()[1].FileName, "/gone/lost.jpg");  // still listed, so a save keeps it
  EXPECT_TRUE(msg.shown.empty());
  EXPECT_EQ(backgrounds.MaskFileName(), mask);
  EXPECT_EQ(effects.EffectFileName(), effect);
  ASSERT_FALSE(sent.empty());
  EXPECT_EQ(sent.back(), pic);
  ASSERT_FALSE(masks.empty());
  EXPECT_EQ(masks.back(), mask);
  EXPECT_EQ(effectsSent, std::vector<std::string>{effect});
}

TEST_F(GlobalBlockTest, TheLastLayoutSurvivesASaveAndLoad) {
  const BackGroundMesh mesh{-12.75, 1.0 / 3, 2.5, 0.1, 481, -7, 0x80FF0000u, 0.1f, 1.75f};
  backgrounds.SetMesh(mesh);
  const std::string path = (dir / "mesh.xml").string();
  ASSERT_TRUE(show.EngineFileSave(path, error)) << error;
  backgrounds.SetMesh(BackGroundMesh{});
  test::RecordingLayerOutput output;
  backgrounds.Output = &output;
  const BackGroundMesh& toOutput = output.layout;
  ASSERT_TRUE(show.EngineFileLoad(path, error)) << error;
  for (const BackGroundMesh& m : {backgrounds.StoredMesh, toOutput}) {
    EXPECT_EQ(m.X0, mesh.X0);
    EXPECT_EQ(m.Y0, mesh.Y0);
    EXPECT_EQ(m.DU, mesh.DU);
    EXPECT_EQ(m.DV, mesh.DV);
    EXPECT_EQ(m.MeshHeight, mesh.MeshHeight);
    EXPECT_EQ(m.MeshWidth, mesh.MeshWidth);
    EXPECT_EQ(m.RenderElementColor, mesh.RenderElementColor);
    EXPECT_EQ(m.DUFeedBackFactor, mesh.DUFeedBackFactor);
    EXPECT_EQ(m.DVFeedBackFactor, mesh.DVFeedBackFactor);
  }

  // The colour as a signed word reads the same; what is missing is taken from the current layout.
  XmlDocument doc;
  ASSERT_TRUE(doc.Parse("<File><LastBackGroundMesh><RenderElementColor>-2130771968</RenderElementColor>"
                        "<DU>huge</DU></LastBackGroundMesh></File>",
                        error));
  const auto read = XmlReadLastBackGroundMesh(doc.Root(), mesh);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->RenderElementColor, 0x80FF0000u);
  EXPECT_EQ(read->DU, mesh.DU);
  EXPECT_EQ(read->MeshHeight, mesh.MeshHeight);
}

}  // namespace
}  // namespace lumivane
