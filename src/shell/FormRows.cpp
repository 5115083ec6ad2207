#include "shell/FormRows.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QImageReader>
#include <QLabel>
#include <QMetaObject>
#include <QPainter>
#include <QSlider>
#include <QThreadPool>

#include "forms/BackgroundsForm.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

SliderValue::SliderValue(ControlModel& model, ControlHandle control, QLabel* label)
    : QObject(label), model_(model), control_(control), label_(label) {
  listener_ = model_.Observe(control_, [this](const ControlEvent&) { Show(); });
  Show();
}

SliderValue::~SliderValue() { model_.Disconnect(control_, listener_); }

void SliderValue::Show() {
  if (label_) label_->setNum(ControlModel::Value(control_));
}

namespace {

QWidget* Owner(QGridLayout* grid) { return grid->parentWidget(); }

}  // namespace

QSlider* AddSliderRow(QGridLayout* grid, ControlModel& model, ControlHandle control, const QString& caption) {
  const int row = grid->rowCount();
  QWidget* owner = Owner(grid);
  auto* slider = new QSlider(Qt::Horizontal, owner);
  WidgetBinding::Bind(model, control, slider);
  auto* value = new QLabel(owner);
  value->setObjectName(slider->objectName() + QStringLiteral("Value"));
  value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("-00000")));
  value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  new SliderValue(model, control, value);
  grid->addWidget(new QLabel(caption, owner), row, 0);
  grid->addWidget(slider, row, 1);
  grid->addWidget(value, row, 2);
  grid->setColumnStretch(1, 1);
  return slider;
}

ColourSwatch* AddColourRow(QGridLayout* grid, ControlModel& model, ControlHandle control, const QString& caption) {
  const int row = grid->rowCount();
  QWidget* owner = Owner(grid);
  auto* swatch = new ColourSwatch(model, control, owner);
  grid->addWidget(new QLabel(caption, owner), row, 0);
  grid->addWidget(swatch, row, 1, Qt::AlignLeft);
  return swatch;
}

QCheckBox* AddCheckRow(QGridLayout* grid, ControlModel& model, ControlHandle control) {
  auto* check = new QCheckBox(Owner(grid));
  WidgetBinding::Bind(model, control, check);
  grid->addWidget(check, grid->rowCount(), 0, 1, 3);
  return check;
}

void AddLayoutRows(QGridLayout* grid, ControlModel& model, const LayoutControls& c) {
  AddSliderRow(grid, model, c.PositionX, QObject::tr("Position X random"));
  AddSliderRow(grid, model, c.PositionY, QObject::tr("Position Y random"));
  AddCheckRow(grid, model, c.PositionUniform);
  AddSliderRow(grid, model, c.SizeX, QObject::tr("Size X random"));
  AddSliderRow(grid, model, c.SizeY, QObject::tr("Size Y random"));
  AddCheckRow(grid, model, c.SizeUniform);
  AddSliderRow(grid, model, c.TileX, QObject::tr("Tile X"));
  AddSliderRow(grid, model, c.TileY, QObject::tr("Tile Y"));
  AddCheckRow(grid, model, c.RandomizeTiling);
  AddSliderRow(grid, model, c.OffsetX, QObject::tr("Offset X"));
  AddSliderRow(grid, model, c.OffsetY, QObject::tr("Offset Y"));
  AddCheckRow(grid, model, c.RandomizeOffset);
}

QString PictureDialogFilter() {
  return ToQString(BackgroundsForm::kImageFilter) + QStringLiteral(";;") + QObject::tr("All files (*)");
}

QImage FitTile(const QImage& picture, QSize box) {
  if (picture.isNull() || box.isEmpty()) return {};
  QImage tile(box, QImage::Format_ARGB32_Premultiplied);
  tile.fill(Qt::transparent);
  const QImage scaled = picture.size() == picture.size().scaled(box, Qt::KeepAspectRatio)
                            ? picture
                            : picture.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  QPainter painter(&tile);
  painter.drawImage((box.width() - scaled.width()) / 2, (box.height() - scaled.height()) / 2, scaled);
  return tile;
}

void DecodeTileAsync(QObject* receiver, const QString& file, QSize box, std::function<void(const QImage&)> done) {
  QPointer<QObject> guard(receiver);
  QThreadPool::globalInstance()->start([guard, file, box, done = std::move(done)]() mutable {
    QImageReader reader(file);
    reader.setAutoTransform(true);
    // Readers that can decode small (JPEG) then never hold the whole picture.
    const QSize size = reader.size();
    if (size.isValid() && !size.isEmpty()) reader.setScaledSize(size.scaled(box, Qt::KeepAspectRatio));
    QImage tile = FitTile(reader.read(), box);
    // The application object outlives the pool (it waits for it), so it carries the result;
    // the receiver is looked at only on the UI thread.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [guard, tile = std::move(tile), done = std::move(done)] {
          if (guard) done(tile);
        },
        Qt::QueuedConnection);
  });
}

}  // namespace lumivane
