#include "render/OutputForms.h"

#include "core/frmBackgrounds.h"
#include "core/frmEffects.h"
#include "core/frmMain.h"
#include "render/TextureImage.h"
#include "render/clsDirectx.h"

namespace lumivane {

void ConnectOutputForms(frmMain& main, frmBackgrounds& backgrounds, frmEffects& effects,
                        std::function<clsDirectx*()> directx) {
  main.Backgrounds = &backgrounds;
  main.Effects = &effects;
  auto out = std::make_shared<std::function<clsDirectx*()>>(std::move(directx));
  backgrounds.ReadImageSize = [](const std::string& file, std::int32_t& w, std::int32_t& h, std::string& error) {
    return ReadImageSize(file, w, h, error);
  };
  backgrounds.InitializeBackground = [out](const std::string& file, bool hideAll, std::int32_t w, std::int32_t h) {
    if (clsDirectx* d = (*out)()) d->InitializeBackground(file, hideAll, w, h);
  };
  backgrounds.ResetBackGrounds = [out] {
    if (clsDirectx* d = (*out)()) d->ResetBackGrounds();
  };
  backgrounds.CreateMaskTexture = [out](const std::string& file) {
    if (clsDirectx* d = (*out)()) d->CreateMaskTexture(file);
  };
  backgrounds.OutputMesh = [out](BackGroundMesh& mesh) {
    clsDirectx* d = (*out)();
    if (d == nullptr || !d->Running()) return false;
    mesh = d->LastBackGroundMesh();
    return true;
  };
  backgrounds.SetOutputMesh = [out](const BackGroundMesh& mesh) {
    if (clsDirectx* d = (*out)()) d->SetLastBackGroundMesh(mesh);
  };
  effects.SetEffectTexture = [out](const std::string& file) {
    if (clsDirectx* d = (*out)()) d->SetEffectTexture(file);
  };
  effects.ResetEffectTexture = [out] {
    if (clsDirectx* d = (*out)()) d->ResetEffectTexture();
  };
  main.AfterDeviceInitialize = [out, &backgrounds, &effects] {
    if (clsDirectx* d = (*out)()) AttachOutput(*d, backgrounds, effects);
  };
}

void AttachOutput(clsDirectx& directx, frmBackgrounds& backgrounds, frmEffects& effects) {
  ControlModel& model = effects.Model();
  const ControlHandle colour = effects.C().picEffectColor;
  directx.EffectColorChanged = [&model, colour](std::int32_t c) { model.SetBackColor(colour, c); };
  directx.SetLastBackGroundMesh(backgrounds.StoredMesh);
  // The layout survives the output: a show saved after the stop keeps it.
  directx.Ending = [&directx, &backgrounds] { backgrounds.StoredMesh = directx.LastBackGroundMesh(); };
  backgrounds.SendToOutput();
  effects.Initialize();
}

}  // namespace lumivane
