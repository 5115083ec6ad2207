#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <string>
#include <string_view>
#include <vector>

#include "core/ControlModel.h"
#include "forms/OutputWindow.h"
#include "forms/RenderTimer.h"
#include "core/TextFrame.h"
#include "core/TextObject.h"

namespace lumivane {

class TextEngine;
class BackgroundsForm;
class EffectsForm;
class MsgBox;
class OutputClones;
class RenderDevice;

// The main window as the engine sees it: its controls in the control model, the editor's copy of
// the selected text (TextSelected) and the procedures that keep that copy, the controls and the
// engine in step. The Qt window is a view over these controls; nothing here needs a widget.
class MainForm {
 public:
  static constexpr std::string_view kFormName = "frmMain";
  static constexpr std::string_view kLockedRefusal = "Text Objects cannot be Added/ Cloned while Output is Locked.";
  static constexpr std::string_view kSplitQuestion = "Do you really want to split the selected Text into single Characters?";

  // The controls that edit a text, each bound to a field of TextSelected.
  struct TextControls {
    ControlHandle txtSelfTime, SliderSelfTime, chkRandomizeTime, cmdLockVideoToTextBox, chkClipText, picTextColor,
        cboAlignX, cboTextType, txtDictionary, cboDictionaryLoopDirection, chkExactWordLength,
        cboDictionaryMaxWordLength, chkUpperCase, chkLowerCase, chkMixedCase1, chkMixedCase2, txtExcludeCharacters,
        cboLineBreak, txtWordFilterStart, txtWordFilterEnd, chkBinary, chkEditorSplitLines, cboWordsPerRow,
        chkTextTitleMode, chkTextTickerMode, chkDictionaryCutLine, cboCounterType, cboCounterDirection, cboMinDigits,
        cboMaxDigits, cboCounterOffset, cboCounterLineBreak, chkRandomizeXYManual, SliderRandomizeX,
        SliderRandomizeY, chkRandomizeFontSizeManual, SliderRandomizeFontSize, SliderRandomizeColor, chkFlashText,
        chkSequenceText, txtSequenceTimer, SliderSequenceTimer, chkRandomizeSequence, txtEditor,
        cboEditorCounterDirection, chk3D, SliderRotationX, SliderRotationY, SliderRotationZ, chkRotationLoopX,
        chkRotationLoopY, chkRotationLoopZ, chkRotationWorld, chkFineTuneRotation, picTextBackgroundColor,
        chkRandomizeFont, cbo3DExtrude, chkPulseFontSize, chkPulseFontColor, chkFontVertical;
    // The list operations and the dictionary.
    ControlHandle cmdAddText, cmdClone, cmdDelete, cmdSplitText, cmdLoadDictionary, CmdAssignText, cmdTimeShuffle,
        cmdTimeSynchronize, cmdTimerDefault, cmdFlashAll, cmdFlashOff, cmdFlashInvert, cmdFlashRandom,
        cmdSequenceRandom, cmdRotateOff, cmdRandomizeOff, cmdEditorNumbers, cmdEditorBuildCharacters,
        cmdEditorBuildSpecialCharacters, chkEditorCharacterLines;
  };

  // How wide a string is drawn in a font, in preview pane units; the shell supplies the real
  // measure once fonts are available.
  using TextMeasure = std::function<std::int32_t(const TextFont& font, std::string_view text)>;

  // The controls of playback and the output.
  struct PlaybackControls {
    ControlHandle cmdPlay, cmdPause, CmdStop, cmdReset, cmdRecord, chkFPSLimiter, cboResolution, cboMonitors,
        cmdFullScreen, chkAlwaysOnTop, cmdLockResolution, cmdPreview, optPreview4FPS, optPreview8FPS, framePreview;
  };

  static constexpr std::string_view kResetQuestion = "Are you sure you want to Reset Lumivane?";
  static constexpr std::string_view kStopQuestion = "Lumivane is currently running. Are you sure you want to Stop?";
  static constexpr std::string_view kQuitQuestion = "Are you sure you want to Quit Lumivane?";
  static constexpr std::string_view kDeviceError = "Error initializing OpenGL.";
  static constexpr std::string_view kResolutionMessage =
      "Please enter the Resolution with Format WidthxHeight e.g. 800x600";
  // Each number of the start countdown stands this long, unless a stop cuts it short.
  static constexpr std::uint32_t kCountdownStepMs = 666;

  MainForm(ControlModel& model, TextEngine& text, MsgBox& msgBox);
  ~MainForm();
  MainForm(const MainForm&) = delete;
  MainForm& operator=(const MainForm&) = delete;

  ControlModel& Model() noexcept { return model_; }
  TextEngine& Text() noexcept { return text_; }
  const TextControls& Controls() const noexcept { return c_; }
  ControlHandle chkLockTextUpdate() const noexcept { return chkLockTextUpdate_; }
  ControlHandle chkOperateOnAllTexts() const noexcept { return chkOperateOnAllTexts_; }
  // Member `index` of the control array "Text": one movable label per text, in list order.
  // Index 0 is the hidden template the others are made from.
  ControlHandle TextLabel(std::int32_t index) const { return model_.Find(kFormName, "Text", index); }

  // The editor's copy of the selected text.
  TextObject TextSelected;

  // ---- Editor sync -------------------------------------------------------------------------
  // Reads every text control into TextSelected, keeps the running state of the stored record,
  // and writes it back (to every text, each keeping its own position, when operate-on-all is
  // ticked). Every text control's change handler calls it. Re-entry and writes made while the
  // controls are being filled from a record do nothing.
  void Save();
  // Fetches the record, fills the controls from it, and tells SelectionChanged.
  void SelectText(std::int32_t index);
  // Only fetches the record.
  void SetSelectedText(std::int32_t index);
  std::int32_t getSelectedTextIndex() const noexcept { return TextSelected.Index; }
  // Record to controls; Save does nothing meanwhile.
  void RenderTextProperties();

  // One frame: gathers what the frame depends on, then runs the frame routine. Called by the
  // output window's timer and by the headless runner alike.
  void Render();
  std::function<void()> RenderFrame;
  // The output's device while playback runs, for the passes of the frame; nullptr otherwise.
  RenderDevice* OutputDevice();
  // What every text's step reads from the controls in this frame.
  TextFrameInput FrameInput() const;
  // The back buffer the frame is drawn into: the output size, or the headless --size.
  int BackBufferWidth = 1280;
  int BackBufferHeight = 720;
  // The inner size of the preview pane the text boxes are placed on.
  int PreviewWidth = 480;
  int PreviewHeight = 270;

  // ---- Playback ------------------------------------------------------------------------------
  const PlaybackControls& Playback() const noexcept { return p_; }
  // Idle to Playback: opens the output, counts down, makes the device and starts the render
  // timer. Answers whether playback runs; a stop during the countdown or a device that cannot be
  // made leaves the program Idle.
  bool StartRender();
  // Playback to Idle; the render device goes first so a late timer tick finds nothing to draw.
  void StopRender();
  // One tick of the output's render timer.
  void TimerRender();
  // Empties the show and loads the factory preset.
  void Reset();
  // The main window's close request: while Running it only stops (after asking); when Idle it asks
  // to quit. Answers whether the program quits.
  bool RequestClose();
  // The keys of the output window and the main window's hot keys.
  void HotKey(OutputKey key);
  bool Running() const noexcept { return running_; }
  bool Paused() const noexcept { return paused_; }
  bool CountingDown() const noexcept { return countingDown_; }
  // Reads cboResolution ("WIDTHxHEIGHT", any case, blanks around the numbers) into OutputWidth and
  // OutputHeight; an entry that does not read is told and changes nothing.
  bool Resolution();
  static std::optional<std::pair<int, int>> ParseResolution(std::string_view text);
  int OutputWidth = 1024;
  int OutputHeight = 768;
  const std::string& Caption() const noexcept { return caption_; }
  RenderTimer& Timer() noexcept { return timer_; }

  // The program around playback: the output window, the event loop, the quit path and the preview
  // panel; none in bare tests (playback cannot start then).
  PlaybackHost* Host = nullptr;
  // The main window's caption follows the form's.
  std::function<void(const std::string& caption)> CaptionChanged;
  // Ctrl+S on the output: the next frame goes to a new "frame_NNNNN.png" in ScreenshotFolder.
  void TakeScreenShot();
  std::string ScreenshotFolder;
  // Answers whether a file exists; the application supplies the file system's answer.
  std::function<bool(const std::string& path)> FileExists;
  // The frame's clear colour (picBackGroundColor).
  ControlHandle BackgroundColor;
  // The background and effect forms, whose controls the frame reads too; none in bare tests.
  BackgroundsForm* Backgrounds = nullptr;
  EffectsForm* Effects = nullptr;
  // Told once the output's device is made, so the forms can send it what it lost with the last one.
  std::function<void()> AfterDeviceInitialize;
  // Loads the factory show after a reset; supplied by the application, which knows where it is.
  std::function<void()> LoadFactoryShow;
  // The clone outputs, made when playback starts and fed after each frame; none when unset.
  OutputClones* Clones = nullptr;

  // ---- List operations ---------------------------------------------------------------------
  // Adds a default text (centred on the pane position x, y unless both are 0) and selects it.
  // Answers the new index, or 0 when refused because the output is locked.
  std::int32_t AddText(std::int32_t x = 0, std::int32_t y = 0);
  // Removes the selected text; does nothing while the output is locked.
  void RemoveText();
  // Clones the selected text (or every text with operate-on-all); refused while locked.
  void CloneText();
  // Splits the selected text into one text per character, after asking.
  void SplitText();
  // Moves the text to the front (end of the list) or the back (position 1).
  void TextZOrder(std::int32_t index, bool toBack);
  // Empties the text list and unloads the text labels.
  void ResetTexts();
  // Writes the label's place and size on the pane into the record's box.
  void SetPosition(std::int32_t index);
  // Makes the "Text" labels match the editor's list: one per text, placed as its box.
  void SyncTextLabels();
  // Saves, loads the dictionary of the selected text (or of every text with operate-on-all), and
  // starts its word cursor afresh.
  void LoadDictionary(bool force);
  // Told whenever "Text" labels were loaded or unloaded, so the pane can show them.
  std::function<void()> TextLabelsChanged;

  void SetTextMeasure(TextMeasure measure) { measure_ = std::move(measure); }
  void SetTemplateFont(const TextFont& font) { templateFont_ = font; }
  const TextFont& TemplateFont() const noexcept { return templateFont_; }

  // A field binding: how a control is read into a record and filled from one. Other forms (the
  // particle and shape editors) add theirs, so Save and RenderTextProperties cover them too.
  struct FieldBinding {
    ControlHandle control;
    std::function<void(const ControlModel&, TextObject&)> read;
    std::function<void(ControlModel&, const TextObject&)> write;
  };
  void AddFieldBinding(FieldBinding binding);

  // Hooks for the parts that follow an edit: the renderer's text boxes and the info texts.
  std::function<void()> AfterSave;
  std::function<void(std::int32_t index)> AfterTextRemoved;
  std::function<void(std::int32_t index, bool toBack)> AfterZOrder;
  // The selected text changed: the pane moves its focus rectangle (TextPane).
  std::function<void()> SelectionChanged;

  // Whether the show changed since it was last loaded or saved.
  bool Modified = false;

  bool Saving() const noexcept { return saving_; }
  bool RenderingProperties() const noexcept { return renderingProperties_; }

 private:
  void RegisterControls();
  void RegisterPlaybackControls();
  void ConnectPlayback();
  RenderTimer::Hooks TimerHooks();
  void SetCaption(const std::string& caption);
  void DoYield() {
    if (Host != nullptr) Host->Yield();
  }
  void BindFields();
  void ReadControls(TextObject& record) const;
  ControlHandle LoadTextLabel(std::int32_t index);
  bool RefuseWhileLocked();
  std::int32_t CloneOne(std::int32_t source);

  ControlModel& model_;
  TextEngine& text_;
  MsgBox& msgBox_;
  TextControls c_;
  PlaybackControls p_;
  std::unique_ptr<OutputWindow> output_;
  bool running_ = false;
  bool paused_ = false;
  bool stopRequested_ = false;
  bool countingDown_ = false;
  bool deviceReady_ = false;
  int screenshotNumber_ = 0;
  Tick lastPreview_ = 0;
  std::string caption_;
  RenderTimer timer_;
  ControlHandle chkLockTextUpdate_, chkOperateOnAllTexts_;
  std::vector<FieldBinding> bindings_;
  TextMeasure measure_;
  TextFont templateFont_;
  // cmdTimerDefault's first press keeps the timers here, its second brings them back.
  std::optional<std::pair<std::int32_t, std::int32_t>> storedTimers_;
  bool saving_ = false;
  bool renderingProperties_ = false;
};

}  // namespace lumivane
