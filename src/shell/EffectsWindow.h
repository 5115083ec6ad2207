#pragma once

#include <QImage>
#include <QWidget>
#include <functional>

#include "core/ControlModel.h"

class QLabel;
class QTimer;

namespace lumivane {

class EffectsForm;

// The effect window as the operator sees it: enabling and capturing, the blend boxes and their
// preset buttons, colour, period and random layout, and the effect's picture with a preview;
// each a view of EffectsForm' controls. The window answers the form's question for a file and
// shows the picture it was told of.
class EffectsWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit EffectsWindow(EffectsForm& form, QWidget* parent = nullptr);
  ~EffectsWindow() override;

  // Where the picture dialog opens; each choice moves it to the chosen folder.
  QString PictureFolder;
  // The effect's captured texture as it stands; a null image when there is none. Supplied by the
  // application, which reaches the output.
  std::function<QImage()> GrabEffect;

  static constexpr int kPreviewWidth = 160, kPreviewHeight = 90;

  QLabel* Preview() const noexcept { return preview_; }

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  // From the file when there is one (decoded off the UI thread), else from the capture.
  void RefreshPreview();
  // The capture as it stands; with `keepWhenNone`, no capture leaves the preview as it is.
  void ShowGrab(bool keepWhenNone);
  void Show(const QImage& tile);
  // The capture preview runs only while someone can see it and the effect is a capture.
  void UpdateCaptureTimer();

  EffectsForm& form_;
  QLabel* preview_ = nullptr;
  QTimer* capture_ = nullptr;
  ListenerId captureObserver_ = 0;
  bool shown_ = false;
  // Counts preview requests, so a slow decode never covers a later picture.
  quint64 previewRequest_ = 0;
};

}  // namespace lumivane
