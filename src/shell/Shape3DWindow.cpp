#include "shell/Shape3DWindow.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QPlainTextEdit>

#include "forms/Shape3DForm.h"
#include "shell/FormBuilder.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

Shape3DWindow::Shape3DWindow(Shape3DForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setObjectName(ToQString(Shape3DForm::kFormName));
  setWindowTitle(tr("3D Shape"));
  setWindowFlag(Qt::Tool);
  const auto& c = form.Controls();
  FormBuilder b(form.Model());
  // Each shape's check box over its frame of sliders; a frame is enabled while its shape is ticked.
  setLayout(b.Rows(this, {
      c.chkCircle,
      Field::Group(c.fraCircle, {c.SliderCircleRadius, c.SliderCircleSmoothness, c.SliderCircleTiling}),
      c.chkWave,
      Field::Group(c.fraWave, {c.SliderWaveAmplitude, c.SliderWaveSize, c.SliderWavePhase, c.SliderWaveTiling}),
      c.chkSpiral,
      Field::Group(c.fraSpiral, {c.SliderSpiralRadius, c.SliderSpiralRevolutionCount, c.SliderSpiralSmoothness,
                                 c.SliderSpiralTiling}),
      c.chkCustom,
      Field::Group(c.fraCustom, {c.cmdLoadCustomMesh, c.SliderCustomMeshZ, c.chkCustomMeshPreserveTextures,
                                 {c.txtMeshInfo, Look::Lines | Look::ReadOnly}}),
      c.chkShowMesh,
      Field::Group(tr("Text Box Picture"),
                   {Field::Line({c.cmdLoadTextBoxTexture, c.cmdClearTextBoxTexture}), c.lblTextBoxTexture}),
      Field::Stretch(),
  }));
  auto* info = b.Made<QPlainTextEdit>(c.txtMeshInfo);
  info->setMaximumHeight(info->fontMetrics().lineSpacing() * 6);

  form.ChooseMeshFile = [this] {
    return QFileDialog::getOpenFileName(this, tr("Load Custom Mesh (3DS)"), MeshFolder,
                                        tr("3DS, X Files (*.3DS *.3ds *.X *.x);;"
                                           "All Models (*.3ds *.3DS *.x *.X *.obj *.OBJ *.gltf *.glb *.fbx *.FBX);;"
                                           "All Files (*)"))
        .toStdString();
  };
  // Pure black in the picture is transparent on the shape.
  form.ChooseTextBoxTexture = [this] {
    return QFileDialog::getOpenFileName(this, tr("Load Text Box Picture"), PictureFolder,
                                        tr("Images (*.png *.jpg *.jpeg *.bmp *.gif *.webp)"))
        .toStdString();
  };
}

Shape3DWindow::~Shape3DWindow() {
  form_.ChooseMeshFile = nullptr;
  form_.ChooseTextBoxTexture = nullptr;
}

}  // namespace lumivane
