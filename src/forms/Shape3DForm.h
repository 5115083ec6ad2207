#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "core/ControlModel.h"
#include "core/TextObject.h"

namespace lumivane {

class MainForm;

// The shape editor as the engine sees it: which surface the selected text is drawn on (the plain
// quad, a circle, a wave, a spiral or an imported mesh) and each shape's parameters. Its controls
// are bound to fields of MainForm::TextSelected, so every change saves into the selected text and
// selecting another text fills them. The Qt window is a view over these controls.
class Shape3DForm {
 public:
  static constexpr std::string_view kFormName = "frm3DShape";

  // What a shape gets when it is ticked on a text that never had it (all its fields 0, as in
  // texts made before shapes existed): values that give a visible shape on a text box 1 to 10
  // world units across.
  static constexpr Circle3D kCircleDefaults{3, 10, 1};
  static constexpr Wave3D kWaveDefaults{1, 360, 5, 0, 1};
  static constexpr Spiral3D kSpiralDefaults{4, 3, 10, 1};
  // The mesh's camera distance the slider shows for a record's 0.
  static constexpr int kMeshZDefault = -20;

  struct ShapeControls {
    // At most one ticked; each enables its own frame.
    ControlHandle chkCircle, chkWave, chkSpiral, chkCustom;
    ControlHandle fraCircle, fraWave, fraSpiral, fraCustom;
    ControlHandle SliderCircleRadius, SliderCircleSmoothness, SliderCircleTiling;
    ControlHandle SliderWaveAmplitude, SliderWaveSize, SliderWavePhase, SliderWaveTiling;
    ControlHandle SliderSpiralRadius, SliderSpiralRevolutionCount, SliderSpiralSmoothness, SliderSpiralTiling;
    ControlHandle cmdLoadCustomMesh, SliderCustomMeshZ, chkCustomMeshPreserveTextures, txtMeshInfo;
    // The mesh drawn as lines: a shape's outline over it, an extruded text or a model in wireframe.
    ControlHandle chkShowMesh;
    // A picture shown on the text's shape in place of its string, and the way back to the string.
    ControlHandle cmdLoadTextBoxTexture, cmdClearTextBoxTexture, lblTextBoxTexture;
  };

  // Registers the controls and adds their bindings to `main`; when `main` already has a text
  // selected, the controls show it at once.
  Shape3DForm(ControlModel& model, MainForm& main);
  Shape3DForm(const Shape3DForm&) = delete;
  Shape3DForm& operator=(const Shape3DForm&) = delete;

  ControlModel& Model() noexcept { return model_; }
  const ShapeControls& Controls() const noexcept { return c_; }

  // The record's Shape3DType the check boxes stand for: "Circle", "Wave", "Spiral", "Custom", or
  // empty (the plain quad) when none is ticked.
  std::string ShapeType() const;

  // cmdLoadCustomMesh: asks for a file, stores it as the selected text's mesh and hands it to
  // LoadMesh. Nothing happens without a selected text or when the answer is empty.
  void LoadCustomMesh();

  // cmdLoadTextBoxTexture: asks for a picture and shows it on the selected text's shape (on every
  // text's with operate-on-all). cmdClearTextBoxTexture goes back to the string.
  void LoadTextBoxTexture();
  void ClearTextBoxTexture();

  // Supplied by the view: the file the operator chose; empty when cancelled.
  std::function<std::string()> ChooseMeshFile;
  std::function<std::string()> ChooseTextBoxTexture;
  // Supplied by the mesh loader: loads `fileName` for MainForm::TextSelected and may fill its
  // mesh fields (Mesh3DInfo), which are then saved and shown.
  std::function<void(const std::string& fileName)> LoadMesh;

 private:
  void RegisterControls();
  void BindFields();
  // A check box changed: keeps the others unticked and the frames in step, then saves.
  void ShapeChecked(ControlHandle check, Origin origin);

  ControlModel& model_;
  MainForm& main_;
  ShapeControls c_;
  bool switching_ = false;  // unticking the others for a tick: the tick's own save covers them
};

}  // namespace lumivane
