#include "forms/MainForm.h"

#include <algorithm>

#include "forms/MsgBox.h"
#include "core/Numbers.h"
#include "core/StringOps.h"
#include "core/TextGenerators.h"
#include "core/EngineContext.h"
#include "core/TextEngine.h"
#include "lumivane/Version.h"

namespace lumivane {

namespace {

// Splits typed text into lines at CR LF; a lone LF (as Linux editors write) ends a line too.
std::vector<std::string> SplitLines(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\n') continue;
    const std::size_t end = i > start && text[i - 1] == '\r' ? i - 1 : i;
    lines.emplace_back(text.substr(start, end - start));
    start = i + 1;
  }
  lines.emplace_back(text.substr(start));
  return lines;
}

// A rough width for when no font metrics are at hand: 0.6 of the size per character.
std::int32_t ApproximateWidth(const TextFont& font, std::string_view text) {
  const float size = font.Size > 0.0f ? font.Size : 12.0f;
  return static_cast<std::int32_t>(0.6f * size * static_cast<float>(CharacterCount(text)));
}

}  // namespace

MainForm::MainForm(ControlModel& model, TextEngine& text, MsgBox& msgBox)
    : model_(model), text_(text), msgBox_(msgBox), timer_(text.Context().clock, TimerHooks()),
      measure_(ApproximateWidth) {
  templateFont_.Name = "DejaVu Sans";
  templateFont_.Size = 12.0f;
  caption_ = kAppTitle;
  RegisterControls();
  RegisterPlaybackControls();
  BindFields();
  ConnectPlayback();


  // Every text control saves on change, whoever changed it.
  for (const FieldBinding& b : bindings_) {
    model_.OnChange(b.control, [this](const ControlEvent&) { Save(); });
  }
  // The slider and the typed value of each timer follow each other; Save reads the typed value.
  auto tie = [this](ControlHandle slider, ControlHandle box) {
    model_.OnChange(slider, [this, slider, box](const ControlEvent& e) {
      model_.SetText(box, std::to_string(model_.Value(slider)), e.origin);
    });
    model_.OnChange(box, [this, slider, box](const ControlEvent& e) {
      if (const auto v = ToInt32(LeadingNumber(model_.Text(box)))) model_.SetValue(slider, *v, e.origin);
    });
  };
  tie(c_.SliderSelfTime, c_.txtSelfTime);
  tie(c_.SliderSequenceTimer, c_.txtSequenceTimer);

  auto onPress = [this](ControlHandle button, std::function<void()> action) {
    model_.OnChange(button, [action = std::move(action)](const ControlEvent&) { action(); });
  };
  onPress(c_.cmdAddText, [this] { AddText(); });
  onPress(c_.cmdClone, [this] { CloneText(); });
  onPress(c_.cmdDelete, [this] { RemoveText(); });
  onPress(c_.cmdSplitText, [this] { SplitText(); });
  onPress(c_.cmdLoadDictionary, [this] { LoadDictionary(true); });
  onPress(c_.CmdAssignText, [this] { Save(); });
  // The timers changed in the records: show the selected text's anew.
  auto refresh = [this] {
    if (getSelectedTextIndex() >= 1) SelectText(getSelectedTextIndex());
  };
  onPress(c_.cmdTimeShuffle, [this, refresh] {
    text_.PreviewTimeShuffle();
    refresh();
  });
  onPress(c_.cmdTimeSynchronize, [this, refresh] {
    text_.PreviewTimeSynchronize();
    refresh();
  });
  onPress(c_.cmdFlashAll, [this, refresh] { text_.PreviewFlashAll(), refresh(); });
  onPress(c_.cmdFlashOff, [this, refresh] { text_.PreviewFlashOff(), refresh(); });
  onPress(c_.cmdFlashInvert, [this, refresh] { text_.PreviewFlashInvert(), refresh(); });
  onPress(c_.cmdFlashRandom, [this, refresh] { text_.PreviewFlashRandom(), refresh(); });
  onPress(c_.cmdSequenceRandom, [this, refresh] { text_.PreviewSequenceRandom(), refresh(); });
  onPress(c_.cmdRotateOff, [this, refresh] {
    for (TextObject& t : text_.Current()) t.Rotation = Rotation{0, 0, 0, false, false, false, t.Rotation.World, 0, 0, 0,
                                                                 t.Rotation.FineTuneRotationAngle};
    refresh();
  });
  onPress(c_.cmdRandomizeOff, [this, refresh] {
    for (TextObject& t : text_.Current()) {
      t.RandomizeX = t.RandomizeY = t.RandomizeFontSize = 0;
      t.RandomizeColor = 0;
    }
    refresh();
  });
  // The timer defaults: the first press keeps the present timers and sets 500 and 125 ms, the
  // second brings the kept ones back.
  onPress(c_.cmdTimerDefault, [this] {
    if (!storedTimers_) {
      storedTimers_.emplace(model_.Value(c_.SliderSelfTime), model_.Value(c_.SliderSequenceTimer));
      model_.SetValue(c_.SliderSelfTime, 500);
      model_.SetValue(c_.SliderSequenceTimer, 125);
    } else {
      model_.SetValue(c_.SliderSelfTime, storedTimers_->first);
      model_.SetValue(c_.SliderSequenceTimer, storedTimers_->second);
      storedTimers_.reset();
    }
  });
  // Character sets for the custom text.
  auto fill = [this](bool numbers, bool letters, bool specials) {
    model_.SetText(c_.txtEditor,
                   BuildCharacterSet(model_.Checked(c_.chkEditorCharacterLines), numbers, letters, specials));
  };
  onPress(c_.cmdEditorNumbers, [fill] { fill(true, false, false); });
  onPress(c_.cmdEditorBuildCharacters, [fill] { fill(false, true, false); });
  onPress(c_.cmdEditorBuildSpecialCharacters, [fill] { fill(false, false, true); });

  model_.OnChange(chkLockTextUpdate_, [this](const ControlEvent&) {
    if (model_.Checked(chkLockTextUpdate_)) {
      text_.EngineLock();
    } else {
      text_.EngineUnlock();
      SyncTextLabels();
      SetSelectedText(std::min(getSelectedTextIndex(), text_.PreviewGetTextCount()));
    }
  });
}

RenderTimer::Hooks MainForm::TimerHooks() {
  RenderTimer::Hooks hooks;
  hooks.yield = [this] { DoYield(); };
  hooks.paused = [this] { return paused_ && running_; };
  hooks.limiterOn = [this] { return model_.Checked(p_.chkFPSLimiter); };
  // The output monitor, while its panel shows, at 4 or 8 frames a second: it shows the frame
  // the timer has just finished.
  hooks.afterRender = [this] {
    if (Host == nullptr || p_.framePreview.get() == nullptr || !p_.framePreview->Visible) return;
    const Tick now = text_.Context().clock.Now();
    const std::uint32_t period = model_.Checked(p_.optPreview8FPS) ? 125 : 250;
    if (TicksSince(now, lastPreview_) < period) return;
    lastPreview_ = now;
    Host->RenderPreview();
  };
  hooks.render = [this] { Render(); };
  hooks.showRate = [this](const std::string& rate) { SetCaption(std::string(kAppTitle) + rate); };
  return hooks;
}

MainForm::~MainForm() {
  if (running_) StopRender();
}

void MainForm::AddFieldBinding(FieldBinding binding) { bindings_.push_back(std::move(binding)); }

// ---- Editor sync ------------------------------------------------------------------------------

void MainForm::ReadControls(TextObject& record) const {
  for (const FieldBinding& b : bindings_) {
    if (b.read) b.read(model_, record);
  }
  if (record.WordsPerRow == 0) record.WordsPerRow = 1;
  // The typed time is also the ceiling of a randomised one.
  record.SelfTimeMax = record.SelfTime;
  record.SequenceTimeMax = record.SequenceTime;

  if (record.TextType == "CustomInput") {
    const std::string& typed = model_.Text(c_.txtEditor);
    record.EditorText = typed;
    std::vector<std::string> words;
    if (record.EditorSplitLines)
      words = SplitLines(typed);
    else
      words.push_back(typed);
    record.WordCount = static_cast<std::int32_t>(words.size());
    record.Words = StringList(std::move(words));
  }

  // A looping rotation keeps the angle the output has reached; a fixed one has none.
  const std::int32_t index = record.Index;
  Rotation& r = record.Rotation;
  r.CurrentAngleX = r.LoopX ? text_.RenderGetRotationCurrentAngleX(index) : 0.0f;
  r.CurrentAngleY = r.LoopY ? text_.RenderGetRotationCurrentAngleY(index) : 0.0f;
  r.CurrentAngleZ = r.LoopZ ? text_.RenderGetRotationCurrentAngleZ(index) : 0.0f;
}

void MainForm::Save() {
  if (saving_ || renderingProperties_) return;
  const std::int32_t index = getSelectedTextIndex();
  if (index < 1 || index > text_.PreviewGetTextCount()) return;
  saving_ = true;

  ReadControls(TextSelected);
  text_.PreserveRuntimeFields(index, TextSelected);

  if (model_.Checked(chkOperateOnAllTexts_)) {
    for (std::int32_t i = 1; i <= text_.PreviewGetTextCount(); ++i) {
      TextObject copy = TextSelected;
      const TextObject own = text_.TextRecordRead(i);
      ::lumivane::PreserveRuntimeFields(own, copy);
      // Each text keeps its own place: its index and its box.
      copy.Index = own.Index;
      copy.Left = own.Left;
      copy.Top = own.Top;
      copy.Right = own.Right;
      copy.Bottom = own.Bottom;
      text_.TextRecordWrite(i, copy);
    }
  } else {
    text_.TextRecordWrite(index, TextSelected);
  }
  saving_ = false;
  Modified = true;
  if (AfterSave) AfterSave();
}

void MainForm::SetSelectedText(std::int32_t index) { TextSelected = text_.TextRecordRead(index); }

void MainForm::SelectText(std::int32_t index) {
  SetSelectedText(index);
  RenderTextProperties();
  if (SelectionChanged) SelectionChanged();
}

void MainForm::RenderTextProperties() {
  renderingProperties_ = true;
  const TextObject record = TextSelected;  // the writes below fire handlers; read from a copy
  for (const FieldBinding& b : bindings_) {
    if (b.write) b.write(model_, record);
  }
  renderingProperties_ = false;
}

// ---- List operations --------------------------------------------------------------------------

bool MainForm::RefuseWhileLocked() {
  if (!text_.IsLocked()) return false;
  msgBox_.Show(kLockedRefusal, MsgBox::OKOnly);
  return true;
}

ControlHandle MainForm::LoadTextLabel(std::int32_t index) {
  const ControlHandle templ = TextLabel(0);
  ControlHandle label = model_.Add(kFormName, ControlKind::Label, "Text", index);
  if (const Control* t = templ.get()) {
    model_.SetSize(label, t->Width, t->Height);
    model_.SetPosition(label, t->Left, t->Top);
    model_.SetToolTip(label, t->ToolTipText);
  }
  model_.SetCaption(label, std::to_string(index) + "Text");
  model_.SetVisible(label, true);
  if (TextLabelsChanged) TextLabelsChanged();
  return label;
}

std::int32_t MainForm::AddText(std::int32_t x, std::int32_t y) {
  if (RefuseWhileLocked()) return 0;
  const std::int32_t index = text_.TextAppend(NewTextObject(templateFont_));
  ControlHandle label = LoadTextLabel(index);
  if ((x != 0 || y != 0) && label) {
    model_.SetPosition(label, x - label->Width / 2, y - label->Height / 2);
  }
  SelectText(index);
  SetPosition(index);
  Save();
  return index;
}

void MainForm::RemoveText() {
  if (model_.Checked(chkLockTextUpdate_)) return;
  const std::int32_t index = getSelectedTextIndex();
  if (index < 1 || index > text_.PreviewGetTextCount()) return;
  text_.TextRemove(index);
  Modified = true;
  if (AfterTextRemoved) AfterTextRemoved(index);
  SyncTextLabels();
  const std::int32_t count = text_.PreviewGetTextCount();
  if (count == 0) {
    TextSelected = TextObject{};
    return;
  }
  SelectText(std::min(index, count));
}

std::int32_t MainForm::CloneOne(std::int32_t source) {
  // The whole stored record, so the clone starts where its source's counters stand now.
  TextObject copy = text_.TextRecordRead(source);
  copy.RenderFont = RenderFontState{};
  copy.TextBoxTexture = {};
  copy.Mesh3D = DeviceRef{};
  const std::int32_t index = text_.TextAppend(copy);
  LoadTextLabel(index);
  constexpr std::int32_t kCloneOffset = 12;
  if (const Control* from = TextLabel(source).get()) {
    const std::int32_t left = from->Left + kCloneOffset, top = from->Top + kCloneOffset;
    const std::int32_t width = from->Width, height = from->Height;
    ControlHandle label = TextLabel(index);
    model_.SetSize(label, width, height);
    model_.SetPosition(label, left, top);
  }
  SetPosition(index);
  return index;
}

void MainForm::CloneText() {
  if (RefuseWhileLocked()) return;
  const std::int32_t selected = getSelectedTextIndex();
  if (selected < 1 || selected > text_.PreviewGetTextCount()) return;
  Save();  // the edits on the controls belong to the source first
  std::int32_t last = 0;
  if (model_.Checked(chkOperateOnAllTexts_)) {
    const std::int32_t count = text_.PreviewGetTextCount();
    for (std::int32_t i = 1; i <= count; ++i) last = CloneOne(i);
  } else {
    last = CloneOne(selected);
  }
  SelectText(last);
}

void MainForm::SplitText() {
  if (RefuseWhileLocked()) return;
  const std::int32_t source = getSelectedTextIndex();
  if (source < 1 || source > text_.PreviewGetTextCount()) return;
  const std::string whole = text_.PreviewGetCurrentText(source);
  if (whole.empty()) return;
  if (msgBox_.Show(kSplitQuestion, MsgBox::YesNo) != MsgBox::Yes) return;
  Save();

  const TextObject sourceRecord = text_.TextRecordRead(source);
  const Control* from = TextLabel(source).get();
  const std::int32_t left0 = from != nullptr ? from->Left : sourceRecord.Left;
  const std::int32_t top0 = from != nullptr ? from->Top : sourceRecord.Top;
  const bool vertical = model_.Checked(c_.chkFontVertical);
  const std::string stacked = VerticalizeString(whole);

  // One piece per character (a whole UTF-8 sequence), placed where it stands in the measured run.
  std::vector<std::string> pieces;
  for (std::size_t i = 0; i < stacked.size();) {
    std::size_t next = stacked.find(kCrLf, i);
    if (next == std::string::npos) next = stacked.size();
    pieces.push_back(stacked.substr(i, next - i));
    i = next + kCrLf.size();
  }
  std::string prefix;
  std::int32_t first = 0;
  const std::int32_t lineHeight =
      static_cast<std::int32_t>((sourceRecord.Font.Size > 0 ? sourceRecord.Font.Size : 12.0f) * 1.2f);
  for (std::size_t k = 0; k < pieces.size(); ++k) {
    const std::string& ch = pieces[k];
    const std::int32_t index = CloneOne(source);
    if (first == 0) first = index;
    TextObject piece = text_.TextRecordRead(index);
    if (piece.TextType == "CustomInput") {
      piece.EditorText = ch;
      piece.Words = StringList({ch});
      piece.WordCount = 1;
    }
    piece.Counter.MaxDigits = 1;
    text_.TextRecordWrite(index, piece);
    if (piece.TextType != "CustomInput") text_.PreviewSetTextCounter(index, ch);
    ControlHandle label = TextLabel(index);
    if (vertical)
      model_.SetPosition(label, left0, top0 + lineHeight * static_cast<std::int32_t>(k));
    else
      model_.SetPosition(label, left0 + measure_(sourceRecord.Font, prefix), top0);
    SetPosition(index);
    prefix += ch;
  }
  SelectText(source);
  RemoveText();
  // The source is gone, so the first piece moved up by one.
  if (first > 0) SelectText(first - 1);
}

void MainForm::TextZOrder(std::int32_t index, bool toBack) {
  if (index < 1 || index > text_.PreviewGetTextCount()) return;
  text_.PreviewTextZOrder(index, toBack);
  Modified = true;
  if (AfterZOrder) AfterZOrder(index, toBack);
  SyncTextLabels();
  SelectText(toBack ? 1 : text_.PreviewGetTextCount());
}

void MainForm::ResetTexts() {
  text_.EngineReset();
  SyncTextLabels();
  TextSelected = TextObject{};
}

void MainForm::SetPosition(std::int32_t index) {
  const Control* label = TextLabel(index).get();
  if (label == nullptr) return;
  Modified = true;
  text_.PreviewSetPosition(index, label->Left, label->Top, label->Left + label->Width, label->Top + label->Height);
  if (index == getSelectedTextIndex()) {
    TextSelected.Left = label->Left;
    TextSelected.Top = label->Top;
    TextSelected.Right = label->Left + label->Width;
    TextSelected.Bottom = label->Top + label->Height;
  }
}

void MainForm::LoadDictionary(bool force) {
  Save();
  const std::int32_t selected = getSelectedTextIndex();
  const bool all = model_.Checked(chkOperateOnAllTexts_);
  for (std::int32_t i = 1; i <= text_.PreviewGetTextCount(); ++i) {
    if (!all && i != selected) continue;
    text_.PreviewLoadDictionary(i, force);
    text_.PreviewResetDictionaryCounter(i);
  }
  SetSelectedText(selected);
}

void MainForm::SyncTextLabels() {
  const std::int32_t count = text_.PreviewGetTextCount();
  for (std::int32_t i = 1; i <= count; ++i) {
    ControlHandle label = TextLabel(i);
    if (!label) label = LoadTextLabel(i);
    const TextObject& t = text_.Current()[static_cast<std::size_t>(i - 1)];
    model_.SetSize(label, t.Right - t.Left, t.Bottom - t.Top);
    model_.SetPosition(label, t.Left, t.Top);
    model_.SetCaption(label, t.CurrentText.empty() ? std::to_string(i) + "Text" : t.CurrentText);
  }
  // Unload the labels of texts that are gone.
  for (std::int32_t i = count + 1;; ++i) {
    ControlHandle label = TextLabel(i);
    if (!label) break;
    model_.Remove(label);
  }
  if (TextLabelsChanged) TextLabelsChanged();
}

}  // namespace lumivane
