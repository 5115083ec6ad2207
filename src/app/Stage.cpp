#include "app/Stage.h"

#include <QFileInfo>
#include <QString>

#include "forms/ReadFrameArguments.h"
#include "render/FrameRenderer.h"
#include "render/TextureImage.h"

namespace lumivane {

// The layer forms' requests, answered by the running output's renderer; nothing happens while no
// output runs (the forms keep what they need and send it again to the next output).
class Stage::RendererLayers final : public LayerOutput {
 public:
  explicit RendererLayers(Stage& stage) : stage_(stage) {}

  void ShowBackground(const std::string& file, bool hideAll, std::int32_t width, std::int32_t height) override {
    if (FrameRenderer* r = Running()) r->Backgrounds().InitializeBackground(file, hideAll, width, height);
  }
  void ResetBackgrounds() override {
    if (FrameRenderer* r = Running()) r->Backgrounds().ResetBackGrounds();
  }
  bool ReadLayout(BackGroundMesh& mesh) override {
    FrameRenderer* r = Running();
    if (r == nullptr || !r->Running()) return false;
    mesh = r->Backgrounds().LastBackGroundMesh();
    return true;
  }
  void SetLayout(const BackGroundMesh& mesh) override {
    if (FrameRenderer* r = Running()) r->Backgrounds().SetLastBackGroundMesh(mesh);
  }
  void SetMask(const std::string& file) override {
    if (FrameRenderer* r = Running()) r->Output().CreateMaskTexture(file);
  }
  void SetEffectPicture(const std::string& file) override {
    if (FrameRenderer* r = Running()) r->Effect().SetEffectTexture(file);
  }
  void ResetEffectPicture() override {
    if (FrameRenderer* r = Running()) r->Effect().ResetEffectTexture();
  }

 private:
  FrameRenderer* Running() { return stage_.host_ != nullptr ? stage_.host_->RunningRenderer() : nullptr; }

  Stage& stage_;
};

Stage::Stage(Clock& clock, RandomSource& random, MsgBox& msgBox, std::string applicationFolder)
    : Context{clock, random},
      Text(Context),
      Main(Model, Text, msgBox),
      Backgrounds(Model, msgBox, Main.BackgroundColor),
      Effects(Model),
      Shape(Model, Main),
      OutputConfiguration(Model),
      Show(Main),
      applicationFolder_(std::move(applicationFolder)),
      layers_(std::make_unique<RendererLayers>(*this)) {
  // The frame reads the layer forms' controls too; their requests reach the running output.
  Main.Backgrounds = &Backgrounds;
  Main.Effects = &Effects;
  Backgrounds.Output = layers_.get();
  Effects.Output = layers_.get();
  Backgrounds.ReadImageSize = [](const std::string& file, std::int32_t& w, std::int32_t& h, std::string& error) {
    return ReadImageSize(file, w, h, error);
  };
  Main.RenderFrame = [this] { RenderFrame(); };
  Main.AfterDeviceInitialize = [this] {
    if (FrameRenderer* r = host_ != nullptr ? host_->RunningRenderer() : nullptr) AttachOutput(*r);
  };
  // The running output's text boxes follow the texts' list.
  Main.AfterTextRemoved = [this](std::int32_t index) {
    if (FrameRenderer* r = host_ != nullptr ? host_->RunningRenderer() : nullptr) r->TextBoxes().TextBoxRemove(index);
  };
  Main.AfterZOrder = [this](std::int32_t index, bool toBack) {
    if (FrameRenderer* r = host_ != nullptr ? host_->RunningRenderer() : nullptr) r->TextBoxes().TextFrameZOrder(index, toBack);
  };
  Main.FileExists = [](const std::string& path) { return QFileInfo::exists(QString::fromStdString(path)); };
  Main.LoadFactoryShow = [this] {
    std::string ignored;  // no factory show: the empty one stands
    Show.EngineFileLoad(applicationFolder_ + "/Reset.xml", ignored);
  };
}

Stage::~Stage() {
  // The forms outlive this wiring by a moment as members go: they must not reach it meanwhile.
  Backgrounds.Output = nullptr;
  Effects.Output = nullptr;
}

void Stage::AttachOutput(FrameRenderer& renderer) {
  const ControlHandle colour = Effects.C().picEffectColor;
  renderer.Effect().EffectColorChanged = [this, colour](std::int32_t c) { Model.SetBackColor(colour, c); };
  renderer.Backgrounds().SetLastBackGroundMesh(Backgrounds.StoredMesh);
  // The layout survives the output: a show saved after the stop keeps it.
  renderer.Ending = [this, &renderer] { Backgrounds.StoredMesh = renderer.Backgrounds().LastBackGroundMesh(); };
  Backgrounds.SendToOutput();
  Effects.Initialize();
}

void Stage::RenderFrame() {
  const FrameArguments args = ReadFrameArguments(Main);
  if (FrameRenderer* r = host_ != nullptr ? host_->FrameRendererForFrame() : nullptr)
    r->RenderFrame(args);
  else
    idleTexts_.RunAll(Text, args.Text, {});
}

}  // namespace lumivane
