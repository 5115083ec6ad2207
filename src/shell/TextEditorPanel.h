#pragma once

#include <QWidget>

namespace lumivane {

class MainForm;

// The text editing controls of the main window, each a view of a control of MainForm: the list
// operations, what a text shows (counter, dictionary, custom text), how it looks and how it moves
// in time. A declaration of which controls go where; captions come from their registration.
class TextEditorPanel final : public QWidget {
  Q_OBJECT

 public:
  explicit TextEditorPanel(MainForm& form, QWidget* parent = nullptr);
};

}  // namespace lumivane
