#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/ControlName.h"

namespace lumivane {

struct ControlEvent;

// The kinds of control the program knows. The first seven can be driven by animation, MIDI,
// audio and OSC; the others hold values the forms need but are never a controlled parameter.
enum class ControlKind : std::uint8_t {
  Slider,
  ComboBox,
  CheckBox,
  CommandButton,
  Label,
  PictureBox,
  ListView,
  TextBox,
  OptionButton,
  Frame,
};

constexpr bool IsDrivableKind(ControlKind kind) noexcept { return kind <= ControlKind::ListView; }
const char* ControlKindName(ControlKind kind) noexcept;

// Who set a value. Change handlers run the same way for every origin; views use it to tell their
// own writes from others'.
enum class Origin : std::uint8_t { Program, Widget, File, Midi, Audio, Animation, Osc, Headless };

enum class ChangeKind : std::uint8_t {
  Value,       // the control's value changed (slider position, text, check, colour, selection)
  Press,       // a command button was pressed
  Properties,  // range, enabled, caption, geometry and the like: for views only
  Items,       // the list of a combo box or list view was replaced: for views only
};

struct ListItem {
  std::string Text;
  std::vector<std::string> SubItems;
  bool Selected = false;
};

enum class SliderOrientation : std::uint8_t { Horizontal, Vertical };

// One control's state. The model owns it and hands out read-only access; every write goes through
// ControlModel so that change handlers and views hear of it. Properties a kind does not use keep
// their defaults.
struct Control {
  // Identity.
  ControlKind Kind = ControlKind::Frame;
  std::string FormName;
  std::string Name;
  std::int32_t Index = kNoIndex;
  std::string StoredName;  // the name as files store it, "3Text" for an array member
  bool Drivable = false;   // a controlled parameter: drivable kind, name not on the refused list
                           // (labels, the preview's text markers, by kind alone)

  // Shared by all kinds.
  bool Enabled = true;
  bool Visible = true;
  std::string Caption;
  std::string ToolTipText;

  // Slider; also the value of CheckBox (0, 1, 2 = grey), OptionButton and a toggle CommandButton.
  std::int32_t Value = 0;
  std::int32_t Min = 0;
  std::int32_t Max = 10;
  std::int32_t SmallChange = 1;
  std::int32_t LargeChange = 5;
  bool SelectRange = false;
  std::int32_t SelStart = 0;
  std::int32_t SelLength = 0;
  SliderOrientation Orientation = SliderOrientation::Horizontal;

  // ComboBox and TextBox. ListIndex is zero-based, -1 when Text is not one of the items.
  std::string Text;
  std::vector<std::string> Items;
  std::int32_t ListIndex = -1;

  // Label geometry, in the units of the pane that holds it.
  std::int32_t Left = 0;
  std::int32_t Top = 0;
  std::int32_t Width = 0;
  std::int32_t Height = 0;

  // PictureBox colour swatch, 0x00BBGGRR.
  std::int32_t BackColor = 0;

  // ListView. SelectedItem is one-based, 0 when nothing is selected.
  std::vector<ListItem> ListItems;
  std::int32_t SelectedItem = 0;
  bool MultiSelect = false;

  // CommandButton: a toggle button keeps its Value (0 up, 1 down) and flips it on a press.
  bool Toggle = false;
  // OptionButton: buttons of one form with the same group are exclusive.
  std::string Group;

 private:
  friend class ControlModel;
  friend class ControlHandle;
  struct Listener {
    std::uint32_t id;
    bool handler;  // true: value changes and presses only; false: a view, told of everything
    std::shared_ptr<std::function<void(const ControlEvent&)>> fn;
  };
  std::uint32_t generation_ = 0;
  bool alive_ = false;
  std::uint64_t sequence_ = 0;  // registration order
  int notifying_ = 0;           // > 0 while this control's handlers run
  std::vector<Listener> listeners_;
};

// A resolved reference to a control. Cheap to copy and to test; it goes dead, and every read
// through it answers 0 or empty, once the control is unloaded, even if its slot is reused.
class ControlHandle {
 public:
  ControlHandle() = default;
  const Control* get() const noexcept {
    return control_ != nullptr && control_->generation_ == generation_ ? control_ : nullptr;
  }
  const Control* operator->() const noexcept { return get(); }
  explicit operator bool() const noexcept { return get() != nullptr; }
  bool operator==(const ControlHandle& other) const noexcept {
    return control_ == other.control_ && generation_ == other.generation_;
  }

 private:
  friend class ControlModel;
  ControlHandle(Control* control, std::uint32_t generation) noexcept
      : control_(control), generation_(generation) {}
  Control* control_ = nullptr;
  std::uint32_t generation_ = 0;
};

struct ControlEvent {
  ControlHandle control;
  ChangeKind change;
  Origin origin;
};

using ControlHandler = std::function<void(const ControlEvent&)>;
using ListenerId = std::uint32_t;

}  // namespace lumivane
