#pragma once

#include <QObject>

namespace lumivane {

class ControlModel;

// Follows the keyboard focus and the active window of the application and tells the model which
// control and form are active, for animation recording, MIDI learn and audio assignment.
class FocusTracker final : public QObject {
  Q_OBJECT

 public:
  explicit FocusTracker(ControlModel& model, QObject* parent = nullptr);

 private:
  void OnFocusChanged(QWidget* old, QWidget* now);
  ControlModel& model_;
};

}  // namespace lumivane
