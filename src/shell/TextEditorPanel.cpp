#include "shell/TextEditorPanel.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "forms/MainForm.h"
#include "shell/FormBuilder.h"

namespace lumivane {

TextEditorPanel::TextEditorPanel(MainForm& form, QWidget* parent) : QWidget(parent) {
  setObjectName("TextEditorPanel");
  ControlModel& m = form.Model();
  const MainForm::TextControls& c = form.Controls();
  // Every list of the editor takes typed values too (a word length of 1024, a step of 0.5).
  FormBuilder b(m, Look::Editable);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(b.Rows(this, {Field::Line({c.cmdAddText, c.cmdClone, c.cmdDelete, c.cmdSplitText,
                                               form.chkLockTextUpdate(), form.chkOperateOnAllTexts(),
                                               Field::Stretch()}),
                                  c.cboTextType}));

  auto* tabs = new QTabWidget(this);
  tabs->addTab(b.Page(tabs, {c.cboCounterType, c.cboCounterDirection, c.cboMinDigits, c.cboMaxDigits,
                             c.cboCounterOffset, c.cboCounterLineBreak}),
               tr("Counter"));

  auto* browse = new QPushButton(tr("Browse..."));
  connect(browse, &QPushButton::clicked, this, [this, &form, &m, c] {
    const QString file =
        QFileDialog::getOpenFileName(this, tr("Dictionary"), {}, tr("Word lists (*.txt);;All files (*)"));
    if (file.isEmpty()) return;
    m.SetText(c.txtDictionary, file.toStdString(), Origin::Widget);
    form.LoadDictionary(true);
  });
  tabs->addTab(b.Page(tabs, {c.txtDictionary, browse, c.cmdLoadDictionary, c.cboDictionaryLoopDirection,
                             c.cboDictionaryMaxWordLength, c.chkExactWordLength, c.chkDictionaryCutLine,
                             c.txtExcludeCharacters, c.txtWordFilterStart, c.txtWordFilterEnd, c.cboLineBreak,
                             c.cboWordsPerRow, c.chkBinary, c.chkTextTitleMode, c.chkTextTickerMode}),
               tr("Dictionary"));

  tabs->addTab(b.Page(tabs, {{c.txtEditor, Look::Lines}, c.chkEditorSplitLines, c.cboEditorCounterDirection,
                             c.chkEditorCharacterLines, c.cmdEditorNumbers, c.cmdEditorBuildCharacters,
                             c.cmdEditorBuildSpecialCharacters, c.CmdAssignText}),
               tr("Custom"));

  tabs->addTab(b.Page(tabs, {c.cboAlignX, c.picTextColor, c.picTextBackgroundColor, c.chkUpperCase, c.chkLowerCase,
                             c.chkMixedCase1, c.chkMixedCase2, c.chkFontVertical, c.chkClipText, c.chk3D,
                             c.cbo3DExtrude, c.chkRandomizeFont}),
               tr("Look"));

  tabs->addTab(b.Page(tabs, {{c.SliderSelfTime, Look::NoValue}, {c.txtSelfTime, Look::Indented}, c.chkRandomizeTime, c.chkFlashText, c.chkSequenceText,
                             {c.SliderSequenceTimer, Look::NoValue}, {c.txtSequenceTimer, Look::Indented}, c.chkRandomizeSequence, c.cmdTimerDefault,
                             c.cmdTimeShuffle, c.cmdTimeSynchronize, c.cmdFlashAll, c.cmdFlashOff, c.cmdFlashInvert,
                             c.cmdFlashRandom, c.cmdSequenceRandom}),
               tr("Timer"));

  tabs->addTab(b.Page(tabs, {c.chkRandomizeXYManual, c.SliderRandomizeX, c.SliderRandomizeY,
                             c.chkRandomizeFontSizeManual, c.SliderRandomizeFontSize, c.chkPulseFontSize,
                             c.SliderRandomizeColor, c.chkPulseFontColor, c.SliderRotationX, c.SliderRotationY,
                             c.SliderRotationZ, c.chkRotationLoopX, c.chkRotationLoopY, c.chkRotationLoopZ,
                             c.chkRotationWorld, c.chkFineTuneRotation, c.cmdRotateOff, c.cmdRandomizeOff,
                             c.cmdLockVideoToTextBox}),
               tr("Motion"));
  layout->addWidget(tabs);
}

}  // namespace lumivane
