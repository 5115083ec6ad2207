#include "shell/EffectsWindow.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPixmap>
#include <QTimer>

#include "forms/EffectsForm.h"
#include "shell/FormBuilder.h"
#include "shell/PictureTiles.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

EffectsWindow::EffectsWindow(EffectsForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setObjectName(ToQString(EffectsForm::kFormName));
  setWindowTitle(tr("Effects"));
  setWindowFlag(Qt::Tool);
  ControlModel& m = form.Model();
  const EffectsForm::Controls& c = form.C();
  FormBuilder b(m);

  preview_ = new QLabel;
  WidgetBinding::Bind(m, c.picCurrentEffect, preview_);
  preview_->setFixedSize(kPreviewWidth, kPreviewHeight);
  preview_->setAlignment(Qt::AlignCenter);

  setLayout(b.Rows(this, {
      Field::Line({c.chkEnableEffect, c.chkCaptureEffect}),
      Field::Line({c.chkHoldEffectTimer, c.chkComputeAspectRatio}),
      // Editable, so a blend name that only a show file holds still shows.
      Field::Group(tr("Blending"), {{c.cboSourceBlend, Look::Editable},
                                    {c.cboTargetBlend, Look::Editable},
                                    Field::Line({c.cmdEffectBlending1, c.cmdEffectBlending2, c.cmdEffectBlending3,
                                                 c.cmdEffectBlending4})}),
      Field::Group(tr("Look"), {c.picEffectColor, c.SliderEffectColorRandom, c.SliderEffectTime,
                                c.SliderEffectPositionRandomX, c.SliderEffectPositionRandomY,
                                c.chkEffectPositionUniform,
                                c.SliderEffectSizeRandomX, c.SliderEffectSizeRandomY, c.chkEffectSizeUniform,
                                c.SliderEffectTileX, c.SliderEffectTileY, c.chkRandomizeTiling,
                                c.SliderEffectOffsetX, c.SliderEffectOffsetY, c.chkRandomizeOffset}),
      Field::Group(tr("Picture"), {Field::Line({c.cmdLoadEffectTexture, c.cmdClearEffectTexture, preview_}),
                                   {c.txtEffectFileName, Look::ReadOnly}}),
      Field::Stretch(),
  }));

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
