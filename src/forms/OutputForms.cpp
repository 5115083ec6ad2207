#include "forms/OutputForms.h"

#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"
#include "render/TextureImage.h"
#include "render/FrameRenderer.h"

namespace lumivane {

void ConnectOutputForms(MainForm& main, BackgroundsForm& backgrounds, EffectsForm& effects,
                        std::function<FrameRenderer*()> renderer) {
  main.Backgrounds = &backgrounds;
  main.Effects = &effects;
  auto out = std::make_shared<std::function<FrameRenderer*()>>(std::move(renderer));
  backgrounds.ReadImageSize = [](const std::string& file, std::int32_t& w, std::int32_t& h, std::string& error) {
    return ReadImageSize(file, w, h, error);
  };
  backgrounds.InitializeBackground = [out](const std::string& file, bool hideAll, std::int32_t w, std::int32_t h) {
    if (FrameRenderer* d = (*out)()) d->InitializeBackground(file, hideAll, w, h);
  };
  backgrounds.ResetBackGrounds = [out] {
    if (FrameRenderer* d = (*out)()) d->ResetBackGrounds();
  };
  backgrounds.CreateMaskTexture = [out](const std::string& file) {
    if (FrameRenderer* d = (*out)()) d->CreateMaskTexture(file);
  };
  backgrounds.OutputMesh = [out](BackGroundMesh& mesh) {
    FrameRenderer* d = (*out)();
    if (d == nullptr || !d->Running()) return false;
    mesh = d->LastBackGroundMesh();
    return true;
  };
  backgrounds.SetOutputMesh = [out](const BackGroundMesh& mesh) {
    if (FrameRenderer* d = (*out)()) d->SetLastBackGroundMesh(mesh);
  };
  effects.SetEffectTexture = [out](const std::string& file) {
    if (FrameRenderer* d = (*out)()) d->SetEffectTexture(file);
  };
  effects.ResetEffectTexture = [out] {
    if (FrameRenderer* d = (*out)()) d->ResetEffectTexture();
  };
  main.AfterDeviceInitialize = [out, &backgrounds, &effects] {
    if (FrameRenderer* d = (*out)()) AttachOutput(*d, backgrounds, effects);
  };
}

void AttachOutput(FrameRenderer& renderer, BackgroundsForm& backgrounds, EffectsForm& effects) {
  ControlModel& model = effects.Model();
  const ControlHandle colour = effects.C().picEffectColor;
  renderer.EffectColorChanged = [&model, colour](std::int32_t c) { model.SetBackColor(colour, c); };
  renderer.SetLastBackGroundMesh(backgrounds.StoredMesh);
  // The layout survives the output: a show saved after the stop keeps it.
  renderer.Ending = [&renderer, &backgrounds] { backgrounds.StoredMesh = renderer.LastBackGroundMesh(); };
  backgrounds.SendToOutput();
  effects.Initialize();
}

}  // namespace lumivane
