#pragma once

#include <QPointer>
#include <QWidget>
#include <vector>

class QLabel;

namespace lumivane {

class MainForm;

// The preview pane of the main window (PicContainer): one movable label per text, in list order,
// each a view of a member of the "Text" label array. A click selects, a drag moves the text's box,
// a double click on the empty pane adds a text there; B and F send the selected text to the back
// or bring it to the front, Delete removes it.
class TextPane final : public QWidget {
  Q_OBJECT

 public:
  explicit TextPane(MainForm& form, QWidget* parent = nullptr);
  ~TextPane() override;
  // Makes one label widget per "Text" label control.
  void Rebuild();

 protected:
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  int IndexOf(QObject* label) const;
  MainForm& form_;
  std::vector<QPointer<QLabel>> labels_;  // [i - 1] shows text i
  QPoint dragStart_;
  QPoint labelStart_;
  int dragging_ = 0;
};

}  // namespace lumivane
