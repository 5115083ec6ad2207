#include "shell/EffectsWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "forms/EffectsForm.h"
#include "shell/FormRows.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

EffectsWindow::EffectsWindow(EffectsForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setObjectName(ToQString(EffectsForm::kFormName));
  setWindowTitle(tr("Effects"));
  setWindowFlag(Qt::Tool);
  ControlModel& m = form.Model();
  const EffectsForm::Controls& c = form.C();
  auto bind = [&m](auto* widget, ControlHandle control) {
    WidgetBinding::Bind(m, control, widget);
    return widget;
  };

  auto* layout = new QVBoxLayout(this);
  auto* checks = new QGridLayout;
  checks->addWidget(bind(new QCheckBox(this), c.chkEnableEffect), 0, 0);
  checks->addWidget(bind(new QCheckBox(this), c.chkCaptureEffect), 0, 1);
  checks->addWidget(bind(new QCheckBox(this), c.chkHoldEffectTimer), 1, 0);
  checks->addWidget(bind(new QCheckBox(this), c.chkComputeAspectRatio), 1, 1);
  layout->addLayout(checks);

  auto* blend = new QGroupBox(tr("Blending"), this);
  auto* blendGrid = new QGridLayout(blend);
  // Editable, so a blend name that only a show file holds still shows.
  auto blendBox = [&](ControlHandle control, const QString& caption) {
    auto* combo = new QComboBox(blend);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    bind(combo, control);
    const int row = blendGrid->rowCount();
    blendGrid->addWidget(new QLabel(caption, blend), row, 0);
    blendGrid->addWidget(combo, row, 1);
  };
  blendBox(c.cboSourceBlend, tr("Source blend"));
  blendBox(c.cboTargetBlend, tr("Target blend"));
  auto* presets = new QHBoxLayout;
  for (ControlHandle h : {c.cmdEffectBlending1, c.cmdEffectBlending2, c.cmdEffectBlending3, c.cmdEffectBlending4})
    presets->addWidget(bind(new QPushButton(blend), h));
  blendGrid->addLayout(presets, blendGrid->rowCount(), 0, 1, 2);
  blendGrid->setColumnStretch(1, 1);
  layout->addWidget(blend);

  auto* look = new QGroupBox(tr("Look"), this);
  auto* lookGrid = new QGridLayout(look);
  AddColourRow(lookGrid, m, c.picEffectColor, tr("Colour"));
  AddSliderRow(lookGrid, m, c.SliderEffectColorRandom, tr("Colour random"));
  AddSliderRow(lookGrid, m, c.SliderEffectTime, tr("Period (ms)"));
  AddLayoutRows(lookGrid, m,
                {c.SliderEffectPositionRandomX, c.SliderEffectPositionRandomY, c.chkEffectPositionUniform,
                 c.SliderEffectSizeRandomX, c.SliderEffectSizeRandomY, c.chkEffectSizeUniform, c.SliderEffectTileX,
                 c.SliderEffectTileY, c.chkRandomizeTiling, c.SliderEffectOffsetX, c.SliderEffectOffsetY,
                 c.chkRandomizeOffset});
  layout->addWidget(look);

  auto* picture = new QGroupBox(tr("Picture"), this);
  auto* pictureGrid = new QGridLayout(picture);
  pictureGrid->addWidget(bind(new QPushButton(picture), c.cmdLoadEffectTexture), 0, 0);
  pictureGrid->addWidget(bind(new QPushButton(picture), c.cmdClearEffectTexture), 0, 1);
  auto* fileName = bind(new QLineEdit(picture), c.txtEffectFileName);
  fileName->setReadOnly(true);
  pictureGrid->addWidget(fileName, 1, 0, 1, 2);
  preview_ = bind(new QLabel(picture), c.picCurrentEffect);
  preview_->setFixedSize(kPreviewWidth, kPreviewHeight);
  preview_->setAlignment(Qt::AlignCenter);
  pictureGrid->addWidget(preview_, 0, 2, 2, 1);
  pictureGrid->setColumnStretch(1, 1);
  layout->addWidget(picture);
  layout->addStretch();

  capture_ = new QTimer(this);
  capture_->setObjectName(QStringLiteral("TimerEffectCapture"));
  capture_->setInterval(500);
  connect(capture_, &QTimer::timeout, this, [this] { ShowGrab(true); });
  captureObserver_ = m.Observe(c.chkCaptureEffect, [this](const ControlEvent&) { UpdateCaptureTimer(); });

  form.ChooseEffectFile = [this] {
    const QString file =
        QFileDialog::getOpenFileName(this, tr("Load Effect Image"), PictureFolder, PictureDialogFilter());
    if (!file.isEmpty()) PictureFolder = QFileInfo(file).absolutePath();
    return file.toStdString();
  };
  form.GetEffectScreenShot = [this] { RefreshPreview(); };
  RefreshPreview();
}

EffectsWindow::~EffectsWindow() {
  form_.Model().Disconnect(form_.C().chkCaptureEffect, captureObserver_);
  form_.ChooseEffectFile = nullptr;
  form_.GetEffectScreenShot = nullptr;
}

void EffectsWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  shown_ = true;
  UpdateCaptureTimer();
}

void EffectsWindow::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  shown_ = false;
  UpdateCaptureTimer();
}

void EffectsWindow::UpdateCaptureTimer() {
  const bool run = shown_ && ControlModel::Checked(form_.C().chkCaptureEffect);
  if (!run) capture_->stop();
  else if (!capture_->isActive()) capture_->start();
}

void EffectsWindow::RefreshPreview() {
  const std::string& file = form_.EffectFileName();
  if (file.empty()) {
    ShowGrab(false);
    return;
  }
  const quint64 request = ++previewRequest_;
  DecodeTileAsync(this, QString::fromStdString(file), QSize(kPreviewWidth, kPreviewHeight),
                  [this, request](const QImage& tile) {
                    if (request == previewRequest_) Show(tile);
                  });
}

void EffectsWindow::ShowGrab(bool keepWhenNone) {
  const QImage grabbed = GrabEffect ? GrabEffect() : QImage();
  if (grabbed.isNull() && keepWhenNone) return;
  ++previewRequest_;
  Show(FitTile(grabbed, QSize(kPreviewWidth, kPreviewHeight)));
}

void EffectsWindow::Show(const QImage& tile) {
  preview_->setPixmap(tile.isNull() ? QPixmap() : QPixmap::fromImage(tile));
}

}  // namespace lumivane
