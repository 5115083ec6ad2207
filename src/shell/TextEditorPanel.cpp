#include "shell/TextEditorPanel.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QVBoxLayout>
#include <functional>

#include "forms/MainForm.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

namespace {

// A colour swatch: shows the control's colour, a click picks another.
class ColourSwatch final : public QFrame {
 public:
  ColourSwatch(ControlModel& model, ControlHandle control, QWidget* parent)
      : QFrame(parent), model_(model), control_(control) {
    setFrameShape(QFrame::Box);
    setFixedSize(48, 20);
    setCursor(Qt::PointingHandCursor);
  }

 protected:
  void mousePressEvent(QMouseEvent*) override {
    const auto c = static_cast<std::uint32_t>(ControlModel::BackColor(control_));
    const QColor picked = QColorDialog::getColor(QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF), this);
    if (!picked.isValid()) return;
    const auto colour = static_cast<std::int32_t>(static_cast<std::uint32_t>(picked.red()) |
                                                  (static_cast<std::uint32_t>(picked.green()) << 8) |
                                                  (static_cast<std::uint32_t>(picked.blue()) << 16));
    model_.SetBackColor(control_, colour, Origin::Widget);
  }

 private:
  ControlModel& model_;
  ControlHandle control_;
};

// A widget for a control, by its kind, bound to it.
QWidget* Make(ControlModel& model, ControlHandle control, const QString& caption, QWidget* parent) {
  QWidget* w = nullptr;
  switch (control->Kind) {
    case ControlKind::Slider: w = new QSlider(Qt::Horizontal, parent); break;
    case ControlKind::ComboBox: {
      auto* combo = new QComboBox(parent);
      combo->setEditable(true);
      w = combo;
      break;
    }
    case ControlKind::CheckBox: w = new QCheckBox(caption, parent); break;
    case ControlKind::CommandButton: w = new QPushButton(caption, parent); break;
    case ControlKind::TextBox:
      w = control->Name == "txtEditor" ? static_cast<QWidget*>(new QPlainTextEdit(parent)) : new QLineEdit(parent);
      break;
    case ControlKind::PictureBox: w = new ColourSwatch(model, control, parent); break;
    default: w = new QLabel(caption, parent); break;
  }
  WidgetBinding::Bind(model, control, w);
  if ((control->Kind == ControlKind::CheckBox || control->Kind == ControlKind::CommandButton) && !caption.isEmpty())
    static_cast<QAbstractButton*>(w)->setText(caption);
  return w;
}

struct Row {
  ControlHandle control;
  const char* caption;
};

// A page of labelled rows; rows whose control is a check box or button stand without a label.
QWidget* Page(ControlModel& model, std::initializer_list<Row> rows, QWidget* parent) {
  auto* page = new QWidget(parent);
  auto* form = new QFormLayout(page);
  for (const Row& r : rows) {
    const QString caption = QString::fromUtf8(r.caption);
    QWidget* w = Make(model, r.control, caption, page);
    if (r.control->Kind == ControlKind::CheckBox || r.control->Kind == ControlKind::CommandButton)
      form->addRow(w);
    else
      form->addRow(caption, w);
  }
  return page;
}

}  // namespace

TextEditorPanel::TextEditorPanel(MainForm& form, QWidget* parent) : QWidget(parent) {
  setObjectName("TextEditorPanel");
  ControlModel& m = form.Model();
  const MainForm::TextControls& c = form.Controls();
  auto* layout = new QVBoxLayout(this);

  auto* list = new QHBoxLayout;
  for (const Row& r : {Row{c.cmdAddText, "Add"}, Row{c.cmdClone, "Clone"}, Row{c.cmdDelete, "Delete"},
                       Row{c.cmdSplitText, "Split"}})
    list->addWidget(Make(m, r.control, QString::fromUtf8(r.caption), this));
  list->addWidget(Make(m, form.chkLockTextUpdate(), tr("Lock Output"), this));
  list->addWidget(Make(m, form.chkOperateOnAllTexts(), tr("All Texts"), this));
  list->addStretch();
  layout->addLayout(list);

  auto* type = new QFormLayout;
  type->addRow(tr("Text Type"), Make(m, c.cboTextType, {}, this));
  layout->addLayout(type);

  auto* tabs = new QTabWidget(this);
  tabs->addTab(Page(m,
                    {{c.cboCounterType, "Counter Type"},
                     {c.cboCounterDirection, "Direction"},
                     {c.cboMinDigits, "Min. Digits"},
                     {c.cboMaxDigits, "Max. Digits"},
                     {c.cboCounterOffset, "Step"},
                     {c.cboCounterLineBreak, "Rows"}},
                    tabs),
               tr("Counter"));

  QWidget* dictionary = Page(m,
                             {{c.txtDictionary, "Dictionary File"},
                              {c.cmdLoadDictionary, "Load Words"},
                              {c.cboDictionaryLoopDirection, "Direction"},
                              {c.cboDictionaryMaxWordLength, "Word Length"},
                              {c.chkExactWordLength, "Exact Word Length"},
                              {c.chkDictionaryCutLine, "Cut Long Lines"},
                              {c.txtExcludeCharacters, "Exclude Characters"},
                              {c.txtWordFilterStart, "Begins With"},
                              {c.txtWordFilterEnd, "Ends With"},
                              {c.cboLineBreak, "Rows"},
                              {c.cboWordsPerRow, "Words per Row"},
                              {c.chkBinary, "Binary"},
                              {c.chkTextTitleMode, "Title Mode"},
                              {c.chkTextTickerMode, "Ticker Mode"}},
                             tabs);
  auto* browse = new QPushButton(tr("Browse..."), dictionary);
  static_cast<QFormLayout*>(dictionary->layout())->insertRow(1, browse);
  connect(browse, &QPushButton::clicked, this, [this, &form, &m, c] {
    const QString file = QFileDialog::getOpenFileName(this, tr("Dictionary"), {}, tr("Word lists (*.txt);;All files (*)"));
    if (file.isEmpty()) return;
    m.SetText(c.txtDictionary, file.toStdString(), Origin::Widget);
    form.LoadDictionary(true);
  });
  tabs->addTab(dictionary, tr("Dictionary"));

  tabs->addTab(Page(m,
                    {{c.txtEditor, "Custom Text"},
                     {c.chkEditorSplitLines, "One Line at a Time"},
                     {c.cboEditorCounterDirection, "Direction"},
                     {c.chkEditorCharacterLines, "One Character per Line"},
                     {c.cmdEditorNumbers, "Numbers 0-9"},
                     {c.cmdEditorBuildCharacters, "Letters A-z"},
                     {c.cmdEditorBuildSpecialCharacters, "Special Characters"},
                     {c.CmdAssignText, "To Output"}},
                    tabs),
               tr("Custom"));

  tabs->addTab(Page(m,
                    {{c.cboAlignX, "Align"},
                     {c.picTextColor, "Colour"},
                     {c.picTextBackgroundColor, "Box Colour"},
                     {c.chkUpperCase, "Upper Case"},
                     {c.chkLowerCase, "Lower Case"},
                     {c.chkMixedCase1, "Mixed Case 1: LuMiVaNe"},
                     {c.chkMixedCase2, "Mixed Case 2: lUmIvAnE"},
                     {c.chkFontVertical, "Vertical"},
                     {c.chkClipText, "Clip to Box"},
                     {c.chk3D, "3D"},
                     {c.cbo3DExtrude, "Extrusion"},
                     {c.chkRandomizeFont, "Random Font"}},
                    tabs),
               tr("Look"));

  tabs->addTab(Page(m,
                    {{c.SliderSelfTime, "Text Object Timer [ms]"},
                     {c.txtSelfTime, ""},
                     {c.chkRandomizeTime, "Random Timer"},
                     {c.chkFlashText, "Flash"},
                     {c.chkSequenceText, "Sequence Text Object: f,fa,fat,fata,fatal"},
                     {c.SliderSequenceTimer, "Sequence Timer [ms]"},
                     {c.txtSequenceTimer, ""},
                     {c.chkRandomizeSequence, "Random Sequence"},
                     {c.cmdTimerDefault, "Default Timers (500 / 125 ms)"},
                     {c.cmdTimeShuffle, "Time Shuffle"},
                     {c.cmdTimeSynchronize, "Time Sync"},
                     {c.cmdFlashAll, "Flash All"},
                     {c.cmdFlashOff, "Flash Off"},
                     {c.cmdFlashInvert, "Flash Invert"},
                     {c.cmdFlashRandom, "Flash Random"},
                     {c.cmdSequenceRandom, "Sequence Random"}},
                    tabs),
               tr("Timer"));

  tabs->addTab(Page(m,
                    {{c.chkRandomizeXYManual, "Manual Position"},
                     {c.SliderRandomizeX, "X"},
                     {c.SliderRandomizeY, "Y"},
                     {c.chkRandomizeFontSizeManual, "Manual Size"},
                     {c.SliderRandomizeFontSize, "Size"},
                     {c.chkPulseFontSize, "Pulse Size"},
                     {c.SliderRandomizeColor, "Colour Range"},
                     {c.chkPulseFontColor, "Pulse Colour"},
                     {c.SliderRotationX, "Rotation X"},
                     {c.SliderRotationY, "Rotation Y"},
                     {c.SliderRotationZ, "Rotation Z"},
                     {c.chkRotationLoopX, "Loop X"},
                     {c.chkRotationLoopY, "Loop Y"},
                     {c.chkRotationLoopZ, "Loop Z"},
                     {c.chkRotationWorld, "Around the Screen Centre"},
                     {c.chkFineTuneRotation, "Fine Rotation"},
                     {c.cmdRotateOff, "Rotation Off"},
                     {c.cmdRandomizeOff, "Randomize Off"},
                     {c.cmdLockVideoToTextBox, "Video in Box"}},
                    tabs),
               tr("Motion"));
  layout->addWidget(tabs);
}

}  // namespace lumivane
