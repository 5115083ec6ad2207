#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/Control.h"

namespace lumivane {

// Every operator-facing value of the program, held as named controls of named forms, as the show
// and setup files address them. Forms (the Qt windows and the headless runner alike) register
// their controls here; change handlers hang on the control, so a value set by a widget, a loaded
// file, MIDI, audio, animation, OSC or the headless runner has exactly the same effect.
//
// Reads through a handle are a pointer test and a load: safe to use in the frame. Names are
// resolved once, when something binds.
class ControlModel {
 public:
  ControlModel();
  ~ControlModel();
  ControlModel(const ControlModel&) = delete;
  ControlModel& operator=(const ControlModel&) = delete;

  // ---- Forms and registration ------------------------------------------------------------
  // Registers `kind` control `name` (array member `index`, or kNoIndex) on `form`. A second
  // registration of the same form, name and index answers the existing control.
  ControlHandle Add(std::string_view form, ControlKind kind, std::string_view name,
                    std::int32_t index = kNoIndex);
  // Unloads a control: its handle and every copy of it go dead.
  void Remove(ControlHandle control);
  void RemoveForm(std::string_view form);

  // The file rule: `controlName` matches a control by plain name, or by decimal index followed
  // by the name for an array member. The first match in registration order wins, so a plain
  // array name answers its first loaded member.
  ControlHandle Resolve(std::string_view form, std::string_view controlName) const;
  ControlHandle Find(std::string_view form, std::string_view name, std::int32_t index = kNoIndex) const;
  std::vector<ControlHandle> ControlsOf(std::string_view form) const;
  std::vector<std::string> Forms() const;

  // ---- Reads (0 or empty for a dead handle) ----------------------------------------------
  static std::int32_t Value(ControlHandle c) noexcept {
    const Control* p = c.get();
    return p != nullptr ? p->Value : 0;
  }
  static bool Checked(ControlHandle c) noexcept { return Value(c) == 1; }
  static const std::string& Text(ControlHandle c) noexcept {
    const Control* p = c.get();
    return p != nullptr ? p->Text : EmptyString();
  }
  static std::int32_t BackColor(ControlHandle c) noexcept {
    const Control* p = c.get();
    return p != nullptr ? p->BackColor : 0;
  }
  static std::int32_t ListIndex(ControlHandle c) noexcept {
    const Control* p = c.get();
    return p != nullptr ? p->ListIndex : -1;
  }
  static std::int32_t SelectedItem(ControlHandle c) noexcept {
    const Control* p = c.get();
    return p != nullptr ? p->SelectedItem : 0;
  }
  static bool Enabled(ControlHandle c) noexcept {
    const Control* p = c.get();
    return p != nullptr && p->Enabled;
  }
  static const std::string& EmptyString() noexcept;

  // The value as animation records and files store it: slider, check, option and toggle values
  // as numbers, combo and text box text, label position "left,top", colour, selected item.
  static std::string ValueText(ControlHandle c);

  // ---- Value writes: fire change handlers when the value really changes --------------------
  // `source` is the listener that made the change (a widget binding); it is not told of it.
  // Each answers false when the write was refused (dead handle, wrong kind, out of range).

  // Slider (within Min..Max), CheckBox (0..2), OptionButton (clears its group when set to 1)
  // and toggle CommandButton (0 or 1).
  bool SetValue(ControlHandle c, std::int32_t value, Origin origin = Origin::Program, ListenerId source = 0);
  // ComboBox and TextBox. A combo box picks the item with that exact text, or ListIndex -1.
  bool SetText(ControlHandle c, std::string_view text, Origin origin = Origin::Program, ListenerId source = 0);
  // ComboBox, zero-based; -1 clears the selection and leaves Text as it is.
  bool SetListIndex(ControlHandle c, std::int32_t index, Origin origin = Origin::Program, ListenerId source = 0);
  bool SetBackColor(ControlHandle c, std::int32_t color, Origin origin = Origin::Program, ListenerId source = 0);
  // Label position.
  bool SetPosition(ControlHandle c, std::int32_t left, std::int32_t top, Origin origin = Origin::Program,
                   ListenerId source = 0);
  // ListView: clears every item's selection, then selects item `oneBased` (0 selects nothing).
  bool SelectItem(ControlHandle c, std::int32_t oneBased, Origin origin = Origin::Program, ListenerId source = 0);
  // CommandButton: fires its click when enabled; a toggle button flips its value.
  bool Press(ControlHandle c, Origin origin = Origin::Program, ListenerId source = 0);

  // ---- The controlled parameter: what MIDI, audio, animation, OSC and scripts use ----------
  // Refused for controls that are not drivable. Per kind: a slider with SelectRange moves its
  // selection start (length 0), then takes the value only while enabled; a combo box takes the
  // text; a check box the value; a button is pressed when the value is true; a label moves to
  // "left,top"; a picture box takes the colour; a list view selects the item.
  bool Drive(ControlHandle c, std::string_view value, Origin origin);
  bool DriveNumber(ControlHandle c, double value, Origin origin);

  // ---- Properties: views are told, change handlers are not -------------------------------
  void SetRange(ControlHandle c, std::int32_t min, std::int32_t max);
  void SetSteps(ControlHandle c, std::int32_t smallChange, std::int32_t largeChange);
  void SetSelection(ControlHandle c, bool selectRange, std::int32_t selStart, std::int32_t selLength);
  void SetOrientation(ControlHandle c, SliderOrientation orientation);
  void SetEnabled(ControlHandle c, bool enabled);
  void SetVisible(ControlHandle c, bool visible);
  void SetCaption(ControlHandle c, std::string_view caption);
  void SetToolTip(ControlHandle c, std::string_view tip);
  void SetSize(ControlHandle c, std::int32_t width, std::int32_t height);
  void SetToggle(ControlHandle c, bool toggle);
  void SetGroup(ControlHandle c, std::string_view group);
  void SetMultiSelect(ControlHandle c, bool multiSelect);
  // Replaces the list of a combo box; Text stays, ListIndex follows it.
  void SetItems(ControlHandle c, std::vector<std::string> items);
  // Replaces the items of a list view; the selection follows the items' Selected flags.
  void SetListItems(ControlHandle c, std::vector<ListItem> items);

  // ---- Listeners -------------------------------------------------------------------------
  // A change handler: value changes and presses, from any origin. It never runs re-entrantly
  // for its own control: a value that a handler writes back into its own control lands, and views
  // show it, but the handlers are not run again for it.
  ListenerId OnChange(ControlHandle c, ControlHandler handler);
  // A view: told of every change, properties included, except its own writes.
  ListenerId Observe(ControlHandle c, ControlHandler view);
  void Disconnect(ControlHandle c, ListenerId id);

  // Where failures that were skipped are reported (a change handler that threw): the program's
  // --log file. Nothing is reported when unset.
  void SetFailureSink(std::function<void(const std::string&)> sink) { failureSink_ = std::move(sink); }

  // ---- Focus: the active form and control, for animation recording and MIDI learn -------
  void SetFocus(ControlHandle c);
  void SetActiveForm(std::string_view form);
  ControlHandle ActiveControl() const noexcept { return activeControl_; }
  const std::string& ActiveForm() const noexcept { return activeForm_; }

 private:
  Control* Live(ControlHandle c) const noexcept { return const_cast<Control*>(c.get()); }
  void Notify(Control& c, ChangeKind change, Origin origin, ListenerId source, bool runHandlers);
  void Changed(Control& c, Origin origin, ListenerId source) { Notify(c, ChangeKind::Value, origin, source, true); }
  void PropertiesChanged(Control& c, ChangeKind change = ChangeKind::Properties) {
    Notify(c, change, Origin::Program, 0, false);
  }
  ListenerId AddListener(ControlHandle c, ControlHandler fn, bool handler);
  void AddToIndex(Control& c);
  void RemoveFromIndex(Control& c);
  static std::string Key(std::string_view form, std::string_view name);

  std::vector<std::unique_ptr<Control>> slots_;
  std::vector<Control*> free_;
  // Look-up by "form\x1Fname": each control is found under its plain name and, for an array
  // member, under its stored name too. Entries are kept in registration order.
  std::unordered_map<std::string, std::vector<Control*>> byName_;
  std::vector<std::string> forms_;
  std::uint64_t nextSequence_ = 1;
  ListenerId nextListener_ = 1;
  ControlHandle activeControl_;
  std::string activeForm_;
  std::function<void(const std::string&)> failureSink_;
};

}  // namespace lumivane
