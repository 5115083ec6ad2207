#include "shell/FocusTracker.h"

#include <QApplication>
#include <QWidget>

#include "core/ControlModel.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

FocusTracker::FocusTracker(ControlModel& model, QObject* parent) : QObject(parent), model_(model) {
  connect(qApp, &QApplication::focusChanged, this, &FocusTracker::OnFocusChanged);
}

void FocusTracker::OnFocusChanged(QWidget*, QWidget* now) {
  // The focus may sit on an inner part of a composite widget (the line edit of a combo box):
  // walk up to the bound widget.
  for (QWidget* w = now; w != nullptr; w = w->parentWidget()) {
    if (WidgetBinding* binding = WidgetBinding::Of(w)) {
      model_.SetFocus(binding->Control());
      return;
    }
    if (w->isWindow()) {
      // A window without a bound control under the focus: the form is active, no control is.
      if (!w->objectName().isEmpty()) model_.SetActiveForm(w->objectName().toStdString());
      return;
    }
  }
}

}  // namespace lumivane
