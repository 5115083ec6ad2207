#include "shell/Shape3DWindow.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include "forms/Shape3DForm.h"
#include "shell/FormRows.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

Shape3DWindow::Shape3DWindow(Shape3DForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setObjectName(QString::fromUtf8(Shape3DForm::kFormName.data(), static_cast<qsizetype>(Shape3DForm::kFormName.size())));
  setWindowTitle(tr("3D Shape"));
  setWindowFlag(Qt::Tool);
  ControlModel& model = form.Model();
  const auto& c = form.Controls();

  auto* layout = new QVBoxLayout(this);
  // A check box and, beneath it, its frame with a grid of labelled sliders.
  auto shape = [&](ControlHandle check, ControlHandle frame) {
    auto* tick = new QCheckBox(this);
    WidgetBinding::Bind(model, check, tick);
    layout->addWidget(tick);
    auto* box = new QGroupBox(this);
    WidgetBinding::Bind(model, frame, box);
    auto* grid = new QGridLayout(box);
    grid->setColumnStretch(1, 1);
    layout->addWidget(box);
    return grid;
  };
  auto slider = [&](QGridLayout* grid, const QString& caption, ControlHandle control) {
    AddSliderRow(grid, model, control, caption);
  };

  QGridLayout* circle = shape(c.chkCircle, c.fraCircle);
  slider(circle, tr("Radius"), c.SliderCircleRadius);
  slider(circle, tr("Smoothness"), c.SliderCircleSmoothness);
  slider(circle, tr("Tiling"), c.SliderCircleTiling);

  QGridLayout* wave = shape(c.chkWave, c.fraWave);
  slider(wave, tr("Amplitude"), c.SliderWaveAmplitude);
  slider(wave, tr("Size"), c.SliderWaveSize);
  slider(wave, tr("Phase"), c.SliderWavePhase);
  slider(wave, tr("Tiling"), c.SliderWaveTiling);

  QGridLayout* spiral = shape(c.chkSpiral, c.fraSpiral);
  slider(spiral, tr("Radius"), c.SliderSpiralRadius);
  slider(spiral, tr("Revolutions"), c.SliderSpiralRevolutionCount);
  slider(spiral, tr("Smoothness"), c.SliderSpiralSmoothness);
  slider(spiral, tr("Tiling"), c.SliderSpiralTiling);

  QGridLayout* custom = shape(c.chkCustom, c.fraCustom);
  QWidget* customBox = custom->parentWidget();
  auto* load = new QPushButton(customBox);
  WidgetBinding::Bind(model, c.cmdLoadCustomMesh, load);
  custom->addWidget(load, 0, 0, 1, 3);
  slider(custom, tr("Zoom"), c.SliderCustomMeshZ);
  auto* preserve = new QCheckBox(customBox);
  WidgetBinding::Bind(model, c.chkCustomMeshPreserveTextures, preserve);
  custom->addWidget(preserve, custom->rowCount(), 0, 1, 3);
  auto* info = new QPlainTextEdit(customBox);
  info->setReadOnly(true);
  info->setMaximumHeight(info->fontMetrics().lineSpacing() * 6);
  WidgetBinding::Bind(model, c.txtMeshInfo, info);
  custom->addWidget(info, custom->rowCount(), 0, 1, 3);

  auto* showMesh = new QCheckBox(this);
  WidgetBinding::Bind(model, c.chkShowMesh, showMesh);
  layout->addWidget(showMesh);

  auto* picture = new QGroupBox(tr("Text Box Picture"), this);
  auto* pictureLayout = new QGridLayout(picture);
  auto* loadPicture = new QPushButton(picture);
  WidgetBinding::Bind(model, c.cmdLoadTextBoxTexture, loadPicture);
  auto* clearPicture = new QPushButton(picture);
  WidgetBinding::Bind(model, c.cmdClearTextBoxTexture, clearPicture);
  auto* pictureName = new QLabel(picture);
  pictureName->setWordWrap(true);
  WidgetBinding::Bind(model, c.lblTextBoxTexture, pictureName);
  pictureLayout->addWidget(loadPicture, 0, 0);
  pictureLayout->addWidget(clearPicture, 0, 1);
  pictureLayout->addWidget(pictureName, 1, 0, 1, 2);
  layout->addWidget(picture);
  layout->addStretch();

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
