// The text editing controls of the main window: their registration in the control model and how
// each one maps onto a field of the text record.
#include <algorithm>
#include <string>
#include <type_traits>

#include "core/Numbers.h"
#include "core/TextEngine.h"
#include "forms/MainForm.h"

namespace lumivane {

namespace {

const std::vector<std::string> kDirections = {"Increment (+)", "Decrement (-)", "Random", "Hold"};
const std::vector<std::string> kValueTypes = {"Integer",  "Real",       "Hexadecimal", "Binary",
                                              "Alphanumeric", "Alpha", "Special Characters", "HH:MM:SS",
                                              "YYYY-MM-DD", "DD.MM.YYYY"};

std::vector<std::string> NumberItems(int from, int to) {
  std::vector<std::string> items;
  for (int i = from; i <= to; ++i) items.push_back(std::to_string(i));
  return items;
}

template <class T>
void AssignNumber(T& field, double value) {
  if constexpr (std::is_same_v<T, bool>) {
    field = value != 0.0;
  } else if constexpr (std::is_integral_v<T>) {
    field = static_cast<T>(ToInt32(value).value_or(0));
  } else {
    field = static_cast<T>(value);
  }
}

template <class T>
double AsNumber(const T& field) {
  if constexpr (std::is_same_v<T, bool>) return field ? 1.0 : 0.0;
  return static_cast<double>(field);
}

using FieldBinding = MainForm::FieldBinding;

// A check box, or a toggle button, onto a flag.
template <class Get>
FieldBinding Check(ControlHandle h, Get get) {
  return {h, [h, get](const ControlModel& m, TextObject& t) { AssignNumber(get(t), m.Value(h) == 1 ? 1.0 : 0.0); },
          [h, get](ControlModel& m, const TextObject& t) { m.SetValue(h, AsNumber(get(t)) != 0.0 ? 1 : 0); }};
}

// A text box or combo box onto a string field.
template <class Get>
FieldBinding Words(ControlHandle h, Get get) {
  return {h, [h, get](const ControlModel& m, TextObject& t) { get(t) = m.Text(h); },
          [h, get](ControlModel& m, const TextObject& t) { m.SetText(h, get(t)); }};
}

// A text box or combo box holding a number as typed ("500", "0.5").
template <class Get>
FieldBinding Number(ControlHandle h, Get get) {
  return {h, [h, get](const ControlModel& m, TextObject& t) { AssignNumber(get(t), LeadingNumber(m.Text(h))); },
          [h, get](ControlModel& m, const TextObject& t) { m.SetText(h, FormatNumber(AsNumber(get(t)))); }};
}

// A slider onto a number; a stored value beyond the slider's range shows at the nearest end.
template <class Get>
FieldBinding Slider(ControlHandle h, Get get) {
  return {h, [h, get](const ControlModel& m, TextObject& t) { AssignNumber(get(t), m.Value(h)); },
          [h, get](ControlModel& m, const TextObject& t) {
            const Control* c = h.get();
            if (c == nullptr) return;
            const double lo = std::min(c->Min, c->Max), hi = std::max(c->Min, c->Max);
            m.SetValue(h, ToInt32(std::clamp(AsNumber(get(t)), lo, hi)).value_or(c->Value));
          }};
}

template <class Get>
FieldBinding Colour(ControlHandle h, Get get) {
  return {h, [h, get](const ControlModel& m, TextObject& t) { get(t) = m.BackColor(h); },
          [h, get](ControlModel& m, const TextObject& t) { m.SetBackColor(h, get(t)); }};
}

}  // namespace

void MainForm::RegisterControls() {
  ControlModel& m = model_;
  const std::string_view f = kFormName;
  // Each takes the caption the window shows beside or on the control.
  auto captioned = [&](ControlHandle h, std::string_view caption) {
    if (!caption.empty()) m.SetCaption(h, caption);
    return h;
  };
  auto combo = [&](std::string_view name, std::vector<std::string> items, std::string_view text,
                   std::string_view caption) {
    ControlHandle h = captioned(m.Add(f, ControlKind::ComboBox, name), caption);
    m.SetItems(h, std::move(items));
    m.SetText(h, text);
    return h;
  };
  auto slider = [&](std::string_view name, int min, int max, int value, std::string_view caption) {
    ControlHandle h = captioned(m.Add(f, ControlKind::Slider, name), caption);
    m.SetRange(h, min, max);
    m.SetValue(h, value);
    return h;
  };
  auto check = [&](std::string_view name, std::string_view caption) {
    return captioned(m.Add(f, ControlKind::CheckBox, name), caption);
  };
  auto text = [&](std::string_view name, std::string_view value, std::string_view caption = {}) {
    ControlHandle h = captioned(m.Add(f, ControlKind::TextBox, name), caption);
    m.SetText(h, value);
    return h;
  };
  auto picture = [&](std::string_view name, std::int32_t colour, std::string_view caption) {
    ControlHandle h = captioned(m.Add(f, ControlKind::PictureBox, name), caption);
    m.SetBackColor(h, colour);
    return h;
  };

  TextControls& c = c_;
  c.txtSelfTime = text("txtSelfTime", "500");
  c.SliderSelfTime = slider("SliderSelfTime", 0, 10000, 500, "Text Object Timer [ms]");
  c.chkRandomizeTime = check("chkRandomizeTime", "Random Timer");
  c.cmdLockVideoToTextBox = m.Add(f, ControlKind::CommandButton, "cmdLockVideoToTextBox");
  m.SetCaption(c.cmdLockVideoToTextBox, "Video in Box");
  m.SetToggle(c.cmdLockVideoToTextBox, true);
  c.chkClipText = check("chkClipText", "Clip to Box");
  c.picTextColor = picture("picTextColor", 0x00FFFFFF, "Colour");
  c.cboAlignX = combo("cboAlignX", {"Centered", "Left Justify", "Right Justify"}, "Centered", "Align");
  c.cboTextType = combo("cboTextType", {"Counter", "Dictionary", "CustomInput"}, "Counter", "Text Type");
  c.txtDictionary = text("txtDictionary", "", "Dictionary File");
  c.cboDictionaryLoopDirection = combo("cboDictionaryLoopDirection", kDirections, "Random", "Direction");
  c.chkExactWordLength = check("chkExactWordLength", "Exact Word Length");
  c.cboDictionaryMaxWordLength = combo("cboDictionaryMaxWordLength", NumberItems(1, 64), "1024", "Word Length");
  c.chkUpperCase = check("chkUpperCase", "Upper Case");
  c.chkLowerCase = check("chkLowerCase", "Lower Case");
  c.chkMixedCase1 = check("chkMixedCase1", "Mixed Case 1: LuMiVaNe");
  m.SetToolTip(c.chkMixedCase1, "Mixed Case 1: LuMiVaNe");
  c.chkMixedCase2 = check("chkMixedCase2", "Mixed Case 2: lUmIvAnE");
  m.SetToolTip(c.chkMixedCase2, "Mixed Case 2: lUmIvAnE");
  c.txtExcludeCharacters = text("txtExcludeCharachters", "", "Exclude Characters");
  c.cboLineBreak = combo("cboLineBreak", NumberItems(0, 32), "0", "Rows");
  c.txtWordFilterStart = text("txtWordFilterStart", "", "Begins With");
  c.txtWordFilterEnd = text("txtWordFilterEnd", "", "Ends With");
  c.chkBinary = check("chkBinary", "Binary");
  c.chkEditorSplitLines = check("chkEditorSplitLines", "One Line at a Time");
  c.cboWordsPerRow = combo("cboWordsPerRow", NumberItems(1, 32), "1", "Words per Row");
  c.chkTextTitleMode = check("chkTextTitleMode", "Title Mode");
  c.chkTextTickerMode = check("chkTextTickerMode", "Ticker Mode");
  c.chkDictionaryCutLine = check("chkDictionaryCutLine", "Cut Long Lines");
  c.cboCounterType = combo("cboCounterType", kValueTypes, "Alphanumeric", "Counter Type");
  c.cboCounterDirection = combo("cboCounterDirection", kDirections, "Random", "Direction");
  c.cboMinDigits = combo("cboMinDigits", NumberItems(0, 15), "0", "Min. Digits");
  c.cboMaxDigits = combo("cboMaxDigits", NumberItems(0, 15), "9", "Max. Digits");
  c.cboCounterOffset = combo("cboCounterOffset", {"1", "2", "5", "10", "100", "1000", "0.1", "0.01"}, "1", "Step");
  c.cboCounterLineBreak = combo("cboCounterLineBreak", NumberItems(1, 32), "1", "Rows");
  c.chkRandomizeXYManual = check("chkRandomizeXYManual", "Manual Position");
  c.SliderRandomizeX = slider("SliderRandomizeX", -1000, 1000, 0, "X");
  c.SliderRandomizeY = slider("SliderRandomizeY", -1000, 1000, 0, "Y");
  c.chkRandomizeFontSizeManual = check("chkRandomizeFontSizeManual", "Manual Size");
  c.SliderRandomizeFontSize = slider("SliderRandomizeFontSize", -200, 200, 0, "Size");
  c.SliderRandomizeColor = slider("SliderRandomizeColor", 0, 255, 0, "Colour Range");
  c.chkFlashText = check("chkFlashText", "Flash");
  c.chkSequenceText = check("chkSequenceText", "Sequence Text Object: f,fa,fat,fata,fatal");
  m.SetToolTip(c.chkSequenceText, "Sequence Text Object: f,fa,fat,fata,fatal");
  c.txtSequenceTimer = text("txtSequenceTimer", "125");
  c.SliderSequenceTimer = slider("SliderSequenceTimer", 0, 5000, 125, "Sequence Timer [ms]");
  c.chkRandomizeSequence = check("chkRandomizeSequence", "Random Sequence");
  c.txtEditor = text("txtEditor", "", "Custom Text");
  c.cboEditorCounterDirection = combo("cboEditorCounterDirection", kDirections, "Random", "Direction");
  c.chk3D = check("chk3D", "3D");
  c.SliderRotationX = slider("SliderRotationX", -360, 360, 0, "Rotation X");
  c.SliderRotationY = slider("SliderRotationY", -360, 360, 0, "Rotation Y");
  c.SliderRotationZ = slider("SliderRotationZ", -360, 360, 0, "Rotation Z");
  c.chkRotationLoopX = check("chkRotationLoopX", "Loop X");
  c.chkRotationLoopY = check("chkRotationLoopY", "Loop Y");
  c.chkRotationLoopZ = check("chkRotationLoopZ", "Loop Z");
  c.chkRotationWorld = check("chkRotationWorld", "Around the Screen Centre");
  c.chkFineTuneRotation = check("chkFineTuneRotation", "Fine Rotation");
  c.picTextBackgroundColor = picture("picTextBackgroundColor", 0, "Box Colour");
  c.chkRandomizeFont = check("chkRandomizeFont", "Random Font");
  c.cbo3DExtrude = combo("cbo3DExtrude", {"0", "0.05", "0.1", "0.2", "0.3", "0.5", "1"}, "0", "Extrusion");
  c.chkPulseFontSize = check("chkPulseFontSize", "Pulse Size");
  c.chkPulseFontColor = check("chkPulseFontColor", "Pulse Colour");
  c.chkFontVertical = check("chkFontVertical", "Vertical");

  auto button = [&](std::string_view name, std::string_view caption) {
    ControlHandle h = m.Add(f, ControlKind::CommandButton, name);
    m.SetCaption(h, caption);
    return h;
  };
  c.cmdAddText = button("cmdAddText", "Add");
  c.cmdClone = button("cmdClone", "Clone");
  c.cmdDelete = button("cmdDelete", "Delete");
  c.cmdSplitText = button("cmdSplitText", "Split");
  c.cmdLoadDictionary = button("cmdLoadDictionary", "Load Words");
  c.CmdAssignText = button("CmdAssignText", "To Output");
  c.cmdTimeShuffle = button("cmdTimeShuffle", "Time Shuffle");
  c.cmdTimeSynchronize = button("cmdTimeSyncronize", "Time Sync");
  c.cmdTimerDefault = button("cmdTimerDefault", "Default Timers (500 / 125 ms)");
  c.cmdFlashAll = button("cmdFlashAll", "Flash All");
  c.cmdFlashOff = button("cmdFlashOff", "Flash Off");
  c.cmdFlashInvert = button("cmdFlashInvert", "Flash Invert");
  c.cmdFlashRandom = button("cmdFlashRandom", "Flash Random");
  c.cmdSequenceRandom = button("cmdSequenceRandom", "Sequence Random");
  c.cmdRotateOff = button("cmdRotateOff", "Rotation Off");
  c.cmdRandomizeOff = button("cmdRandomizeOff", "Randomize Off");
  c.cmdEditorNumbers = button("cmdEditorNumbers", "Numbers 0-9");
  c.cmdEditorBuildCharacters = button("cmdEditorBuildCharacters", "Letters A-z");
  c.cmdEditorBuildSpecialCharacters = button("cmdEditorBuildSpecialCharacters", "Special Characters");
  c.chkEditorCharacterLines = check("chkEditorCharacterLines", "One Character per Line");

  chkLockTextUpdate_ = check("chkLockTextUpdate", "Lock Output");
  chkOperateOnAllTexts_ = check("chkOPerateOnAllTexts", "All Texts");

  // The template of the "Text" label array: never shown, copied by every new text.
  ControlHandle templateLabel = m.Add(f, ControlKind::Label, "Text", 0);
  m.SetSize(templateLabel, 240, 60);
  m.SetPosition(templateLabel, 20, 20);
  m.SetVisible(templateLabel, false);
  m.SetToolTip(templateLabel, "B = Send to Back, F = Bring to Front, Right Click On/Off Toggle");
}

void MainForm::BindFields() {
  const TextControls& c = c_;
  // In the order the editor reads them; later entries may refine earlier ones.
  AddFieldBinding(Number(c.txtSelfTime, [](auto& t) -> auto& { return t.SelfTime; }));
  AddFieldBinding(Check(c.chkRandomizeTime, [](auto& t) -> auto& { return t.RandomizeTime; }));
  AddFieldBinding(Check(c.cmdLockVideoToTextBox, [](auto& t) -> auto& { return t.VideoLockToTextBox; }));
  AddFieldBinding(Check(c.chkClipText, [](auto& t) -> auto& { return t.Clip; }));
  AddFieldBinding(Colour(c.picTextColor, [](auto& t) -> auto& { return t.Color; }));
  AddFieldBinding(Words(c.cboAlignX, [](auto& t) -> auto& { return t.AlignX; }));
  AddFieldBinding(Words(c.cboTextType, [](auto& t) -> auto& { return t.TextType; }));
  AddFieldBinding(Words(c.txtDictionary, [](auto& t) -> auto& { return t.FileName; }));
  AddFieldBinding(Words(c.cboDictionaryLoopDirection, [](auto& t) -> auto& { return t.DictionaryCounter.Direction; }));
  AddFieldBinding(Check(c.chkExactWordLength, [](auto& t) -> auto& { return t.ExactWordLength; }));
  AddFieldBinding(Number(c.cboDictionaryMaxWordLength, [](auto& t) -> auto& { return t.WordLength; }));
  AddFieldBinding(Check(c.chkUpperCase, [](auto& t) -> auto& { return t.UpperCase; }));
  AddFieldBinding(Check(c.chkLowerCase, [](auto& t) -> auto& { return t.LowerCase; }));
  AddFieldBinding(Check(c.chkMixedCase1, [](auto& t) -> auto& { return t.MixedCase1; }));
  AddFieldBinding(Check(c.chkMixedCase2, [](auto& t) -> auto& { return t.MixedCase2; }));
  AddFieldBinding(Words(c.txtExcludeCharacters, [](auto& t) -> auto& { return t.ExcludeCharacters; }));
  AddFieldBinding(Number(c.cboLineBreak, [](auto& t) -> auto& { return t.LineBreak; }));
  AddFieldBinding(Words(c.txtWordFilterStart, [](auto& t) -> auto& { return t.WordStart; }));
  AddFieldBinding(Words(c.txtWordFilterEnd, [](auto& t) -> auto& { return t.WordEnd; }));
  AddFieldBinding(Check(c.chkBinary, [](auto& t) -> auto& { return t.Binary; }));
  AddFieldBinding(Check(c.chkEditorSplitLines, [](auto& t) -> auto& { return t.EditorSplitLines; }));
  AddFieldBinding(Number(c.cboWordsPerRow, [](auto& t) -> auto& { return t.WordsPerRow; }));
  AddFieldBinding(Check(c.chkTextTitleMode, [](auto& t) -> auto& { return t.TextTitleMode; }));
  AddFieldBinding(Check(c.chkTextTickerMode, [](auto& t) -> auto& { return t.TextTickerMode; }));
  AddFieldBinding(Check(c.chkDictionaryCutLine, [](auto& t) -> auto& { return t.Cut; }));
  AddFieldBinding(Words(c.cboCounterType, [](auto& t) -> auto& { return t.Counter.ValueType; }));
  AddFieldBinding(Words(c.cboCounterDirection, [](auto& t) -> auto& { return t.Counter.Direction; }));
  AddFieldBinding(Number(c.cboMinDigits, [](auto& t) -> auto& { return t.Counter.MinDigits; }));
  AddFieldBinding(Number(c.cboMaxDigits, [](auto& t) -> auto& { return t.Counter.MaxDigits; }));
  AddFieldBinding(Number(c.cboCounterOffset, [](auto& t) -> auto& { return t.Counter.Offset; }));
  AddFieldBinding(Number(c.cboCounterLineBreak, [](auto& t) -> auto& { return t.Counter.LineBreak; }));
  AddFieldBinding(Check(c.chkRandomizeXYManual, [](auto& t) -> auto& { return t.RandomizeXYManual; }));
  AddFieldBinding(Slider(c.SliderRandomizeX, [](auto& t) -> auto& { return t.RandomizeX; }));
  AddFieldBinding(Slider(c.SliderRandomizeY, [](auto& t) -> auto& { return t.RandomizeY; }));
  AddFieldBinding(Check(c.chkRandomizeFontSizeManual, [](auto& t) -> auto& { return t.RandomizeFontSizeManual; }));
  AddFieldBinding(Slider(c.SliderRandomizeFontSize, [](auto& t) -> auto& { return t.RandomizeFontSize; }));
  AddFieldBinding(Slider(c.SliderRandomizeColor, [](auto& t) -> auto& { return t.RandomizeColor; }));
  AddFieldBinding(Check(c.chkFlashText, [](auto& t) -> auto& { return t.FlashText; }));
  AddFieldBinding(Check(c.chkSequenceText, [](auto& t) -> auto& { return t.SequenceText; }));
  AddFieldBinding(Number(c.txtSequenceTimer, [](auto& t) -> auto& { return t.SequenceTime; }));
  AddFieldBinding(Check(c.chkRandomizeSequence, [](auto& t) -> auto& { return t.RandomizeSequence; }));
  AddFieldBinding(Check(c.chk3D, [](auto& t) -> auto& { return t.Text3D; }));
  AddFieldBinding(Slider(c.SliderRotationX, [](auto& t) -> auto& { return t.Rotation.AngleX; }));
  AddFieldBinding(Slider(c.SliderRotationY, [](auto& t) -> auto& { return t.Rotation.AngleY; }));
  AddFieldBinding(Slider(c.SliderRotationZ, [](auto& t) -> auto& { return t.Rotation.AngleZ; }));
  AddFieldBinding(Check(c.chkRotationLoopX, [](auto& t) -> auto& { return t.Rotation.LoopX; }));
  AddFieldBinding(Check(c.chkRotationLoopY, [](auto& t) -> auto& { return t.Rotation.LoopY; }));
  AddFieldBinding(Check(c.chkRotationLoopZ, [](auto& t) -> auto& { return t.Rotation.LoopZ; }));
  AddFieldBinding(Check(c.chkRotationWorld, [](auto& t) -> auto& { return t.Rotation.World; }));
  AddFieldBinding(Check(c.chkFineTuneRotation, [](auto& t) -> auto& { return t.Rotation.FineTuneRotationAngle; }));
  AddFieldBinding(Colour(c.picTextBackgroundColor, [](auto& t) -> auto& { return t.BackGroundColor; }));
  AddFieldBinding(Check(c.chkRandomizeFont, [](auto& t) -> auto& { return t.RandomizeFont; }));
  AddFieldBinding(Number(c.cbo3DExtrude, [](auto& t) -> auto& { return t.Extrude3D; }));
  AddFieldBinding(Check(c.chkPulseFontSize, [](auto& t) -> auto& { return t.PulseFontSize; }));
  AddFieldBinding(Check(c.chkPulseFontColor, [](auto& t) -> auto& { return t.PulseFontColor; }));
  AddFieldBinding(Check(c.chkFontVertical, [](auto& t) -> auto& { return t.Vertical; }));

  // The custom text and its line cursor's direction only belong to a custom input text; the
  // editor text reaches the record through ReadControls, which splits it into lines.
  AddFieldBinding({c.cboEditorCounterDirection,
                   [h = c.cboEditorCounterDirection](const ControlModel& m, TextObject& t) {
                     if (t.TextType == "CustomInput") t.DictionaryCounter.Direction = m.Text(h);
                   },
                   [h = c.cboEditorCounterDirection](ControlModel& m, const TextObject& t) {
                     m.SetText(h, t.DictionaryCounter.Direction);
                   }});
  AddFieldBinding({c.txtEditor, nullptr,
                   [h = c.txtEditor](ControlModel& m, const TextObject& t) { m.SetText(h, t.EditorText); }});
}

}  // namespace lumivane
