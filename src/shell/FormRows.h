#pragma once

#include <QColor>
#include <QFrame>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <functional>
#include <string_view>

#include "core/ControlModel.h"
#include "shell/FormBuilder.h"
#include "shell/WidgetBinding.h"

class QCheckBox;
class QGridLayout;
class QLabel;
class QSlider;

// Small pieces the form windows are built from: labelled slider rows with their values, colour
// swatches, the random layout block the background and effect layers share, and pictures decoded
// off the UI thread.
namespace lumivane {

// A label that shows a slider control's value, whoever moves it.
class SliderValue final : public QObject {
 public:
  SliderValue(ControlModel& model, ControlHandle control, QLabel* label);
  ~SliderValue() override;

 private:
  void Show();

  ControlModel& model_;
  ControlHandle control_;
  QPointer<QLabel> label_;
  ListenerId listener_ = 0;
};

// Each adds one row under the rows `grid` holds, its widgets children of the grid's widget, and
// answers the bound widget. A slider row is "caption, slider, value" (the value label is named
// after the slider with "Value" appended).
QSlider* AddSliderRow(QGridLayout* grid, ControlModel& model, ControlHandle control, const QString& caption);
ColourSwatch* AddColourRow(QGridLayout* grid, ControlModel& model, ControlHandle control, const QString& caption);
// A check box across the row, its caption from the model.
QCheckBox* AddCheckRow(QGridLayout* grid, ControlModel& model, ControlHandle control);

// The random layout of a layer's rectangle: reach of position and size, tiling and offset, each
// pair with its uniform or randomise box.
struct LayoutControls {
  ControlHandle PositionX, PositionY, PositionUniform;
  ControlHandle SizeX, SizeY, SizeUniform;
  ControlHandle TileX, TileY, RandomizeTiling;
  ControlHandle OffsetX, OffsetY, RandomizeOffset;
};
void AddLayoutRows(QGridLayout* grid, ControlModel& model, const LayoutControls& c);

// What picture dialogs offer: the kinds the engine reads, then any file.
QString PictureDialogFilter();

// Decodes a picture on the global thread pool, scaled to fit `box` and centred on a transparent
// tile of exactly that size. `done` runs on the UI thread, with a null image when the file cannot
// be read, unless `receiver` is gone by then.
void DecodeTileAsync(QObject* receiver, const QString& file, QSize box, std::function<void(const QImage&)> done);
// The same fitting for a picture already in memory (a null image stays null).
QImage FitTile(const QImage& picture, QSize box);

}  // namespace lumivane
