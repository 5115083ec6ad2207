#include "core/ControlModel.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "core/DriveRules.h"
#include "core/Numbers.h"

namespace lumivane {

const char* ControlKindName(ControlKind kind) noexcept {
  switch (kind) {
    case ControlKind::Slider: return "Slider";
    case ControlKind::ComboBox: return "ComboBox";
    case ControlKind::CheckBox: return "CheckBox";
    case ControlKind::CommandButton: return "CommandButton";
    case ControlKind::Label: return "Label";
    case ControlKind::PictureBox: return "PictureBox";
    case ControlKind::ListView: return "ListView";
    case ControlKind::TextBox: return "TextBox";
    case ControlKind::OptionButton: return "OptionButton";
    case ControlKind::Frame: return "Frame";
  }
  return "Unknown";
}

ControlModel::ControlModel() = default;
ControlModel::~ControlModel() = default;

const std::string& ControlModel::EmptyString() noexcept {
  static const std::string empty;
  return empty;
}

std::string ControlModel::Key(std::string_view form, std::string_view name) {
  std::string key;
  key.reserve(form.size() + name.size() + 1);
  key.append(form).push_back('\x1F');
  key.append(name);
  return key;
}

// ---- Registration -------------------------------------------------------------------------

ControlHandle ControlModel::Add(std::string_view form, ControlKind kind, std::string_view name,
                                std::int32_t index) {
  if (index < kNoIndex) index = kNoIndex;
  if (ControlHandle existing = Find(form, name, index)) return existing;

  Control* c = nullptr;
  if (!free_.empty()) {
    c = free_.back();
    free_.pop_back();
    const std::uint32_t generation = c->generation_ + 1;
    *c = Control{};
    c->generation_ = generation;
  } else {
    slots_.push_back(std::make_unique<Control>());
    c = slots_.back().get();
    c->generation_ = 1;
  }
  c->Kind = kind;
  c->FormName = std::string(form);
  c->Name = std::string(name);
  c->Index = index;
  c->StoredName = FormatControlName(name, index);
  // The refused list is matched by substring, and "Text" (the preview's text markers) is inside
  // "cmdSplitText". Those labels are taken over through the preview pane, whose name is what the
  // list is meant for, so labels are judged by kind alone.
  c->Drivable = IsDrivableKind(kind) && (kind == ControlKind::Label || !IsUndriveableControlName(c->Name));
  c->sequence_ = nextSequence_++;
  c->alive_ = true;
  if (kind == ControlKind::Slider) c->Max = 10;

  if (std::find(forms_.begin(), forms_.end(), c->FormName) == forms_.end()) forms_.push_back(c->FormName);
  AddToIndex(*c);
  return ControlHandle(c, c->generation_);
}

void ControlModel::AddToIndex(Control& c) {
  auto put = [&](const std::string& key) {
    auto& list = byName_[key];
    // Registration order: sequences only grow, so appending keeps the list sorted.
    list.push_back(&c);
  };
  put(Key(c.FormName, c.Name));
  if (c.Index != kNoIndex) put(Key(c.FormName, c.StoredName));
}

void ControlModel::RemoveFromIndex(Control& c) {
  auto drop = [&](const std::string& key) {
    auto it = byName_.find(key);
    if (it == byName_.end()) return;
    auto& list = it->second;
    list.erase(std::remove(list.begin(), list.end(), &c), list.end());
    if (list.empty()) byName_.erase(it);
  };
  drop(Key(c.FormName, c.Name));
  if (c.Index != kNoIndex) drop(Key(c.FormName, c.StoredName));
}

void ControlModel::Remove(ControlHandle handle) {
  Control* c = Live(handle);
  if (c == nullptr) return;
  RemoveFromIndex(*c);
  if (activeControl_ == handle) activeControl_ = ControlHandle();
  // Bumping the generation kills every handle at once; the slot itself stays allocated so that a
  // handler still running on this control never touches freed memory.
  ++c->generation_;
  c->alive_ = false;
  c->listeners_.clear();
  free_.push_back(c);
}

void ControlModel::RemoveForm(std::string_view form) {
  for (ControlHandle h : ControlsOf(form)) Remove(h);
  forms_.erase(std::remove(forms_.begin(), forms_.end(), form), forms_.end());
  if (activeForm_ == form) activeForm_.clear();
}

ControlHandle ControlModel::Resolve(std::string_view form, std::string_view controlName) const {
  auto it = byName_.find(Key(form, controlName));
  if (it == byName_.end() || it->second.empty()) return {};
  // An array member is listed under its plain name and its stored name; the first registered of
  // all candidates wins.
  Control* c = it->second.front();
  return ControlHandle(c, c->generation_);
}

ControlHandle ControlModel::Find(std::string_view form, std::string_view name, std::int32_t index) const {
  auto it = byName_.find(Key(form, name));
  if (it == byName_.end()) return {};
  for (Control* c : it->second) {
    if (c->Name == name && c->Index == index) return ControlHandle(c, c->generation_);
  }
  return {};
}

std::vector<ControlHandle> ControlModel::ControlsOf(std::string_view form) const {
  std::vector<Control*> found;
  for (const auto& slot : slots_) {
    if (slot->alive_ && slot->FormName == form) found.push_back(slot.get());
  }
  std::sort(found.begin(), found.end(), [](const Control* a, const Control* b) { return a->sequence_ < b->sequence_; });
  std::vector<ControlHandle> out;
  out.reserve(found.size());
  for (Control* c : found) out.push_back(ControlHandle(c, c->generation_));
  return out;
}

std::vector<std::string> ControlModel::Forms() const { return forms_; }

// ---- Reads ---------------------------------------------------------------------------------

std::string ControlModel::ValueText(ControlHandle handle) {
  const Control* c = handle.get();
  if (c == nullptr) return {};
  switch (c->Kind) {
    case ControlKind::Slider:
    case ControlKind::CheckBox:
    case ControlKind::OptionButton:
    case ControlKind::CommandButton: return std::to_string(c->Value);
    case ControlKind::ComboBox:
    case ControlKind::TextBox: return c->Text;
    case ControlKind::Label: return std::to_string(c->Left) + "," + std::to_string(c->Top);
    case ControlKind::PictureBox: return std::to_string(c->BackColor);
    case ControlKind::ListView: return std::to_string(c->SelectedItem);
    case ControlKind::Frame: return {};
  }
  return {};
}

// ---- Notification --------------------------------------------------------------------------

void ControlModel::Notify(Control& c, ChangeKind change, Origin origin, ListenerId source, bool runHandlers) {
  const ControlHandle self(&c, c.generation_);
  // A handler writing into its own control must not start the handlers over: that is how echo
  // loops begin. Views still hear of the value so they show what the control holds.
  const bool handlersNow = runHandlers && c.notifying_ == 0;
  if (handlersNow) ++c.notifying_;
  const ControlEvent event{self, change, origin};
  // Listeners may connect or disconnect while we walk: walk by position over a snapshot of the
  // size and keep each callable alive while it runs.
  const std::size_t count = c.listeners_.size();
  for (std::size_t i = 0; i < count && i < c.listeners_.size(); ++i) {
    const Control::Listener& l = c.listeners_[i];
    if (l.id == source || !l.fn) continue;
    if (l.handler && !handlersNow) continue;
    auto fn = l.fn;
    // Errors are resumed: one failing listener must not keep the others from hearing.
    try {
      (*fn)(event);
    } catch (const std::exception& e) {
      if (failureSink_) failureSink_("change handler of " + c.FormName + "." + c.StoredName + " failed: " + e.what());
    } catch (...) {
      if (failureSink_) failureSink_("change handler of " + c.FormName + "." + c.StoredName + " failed");
    }
    if (!self) return;  // unloaded by a listener
  }
  if (handlersNow) --c.notifying_;
}

ListenerId ControlModel::AddListener(ControlHandle handle, ControlHandler fn, bool handler) {
  Control* c = Live(handle);
  if (c == nullptr || !fn) return 0;
  const ListenerId id = nextListener_++;
  c->listeners_.push_back({id, handler, std::make_shared<ControlHandler>(std::move(fn))});
  return id;
}

ListenerId ControlModel::OnChange(ControlHandle c, ControlHandler handler) {
  return AddListener(c, std::move(handler), true);
}

ListenerId ControlModel::Observe(ControlHandle c, ControlHandler view) { return AddListener(c, std::move(view), false); }

void ControlModel::Disconnect(ControlHandle handle, ListenerId id) {
  Control* c = Live(handle);
  if (c == nullptr || id == 0) return;
  auto& ls = c->listeners_;
  ls.erase(std::remove_if(ls.begin(), ls.end(), [id](const Control::Listener& l) { return l.id == id; }), ls.end());
}

// ---- Value writes --------------------------------------------------------------------------

bool ControlModel::SetValue(ControlHandle handle, std::int32_t value, Origin origin, ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr) return false;
  switch (c->Kind) {
    case ControlKind::Slider:
      if (value < std::min(c->Min, c->Max) || value > std::max(c->Min, c->Max)) return false;
      break;
    case ControlKind::CheckBox:
      if (value < 0 || value > 2) return false;
      break;
    case ControlKind::OptionButton:
    case ControlKind::CommandButton:
      if (c->Kind == ControlKind::CommandButton && !c->Toggle) return false;
      value = value != 0 ? 1 : 0;
      break;
    default: return false;
  }
  if (c->Value == value) return true;
  c->Value = value;
  if (c->Kind == ControlKind::OptionButton && value == 1) {
    // The others of the group drop out. Only the chosen button's handlers run, as its click.
    for (ControlHandle other : ControlsOf(c->FormName)) {
      Control* o = Live(other);
      if (o == nullptr || o == c || o->Kind != ControlKind::OptionButton || o->Group != c->Group || o->Value == 0)
        continue;
      o->Value = 0;
      Notify(*o, ChangeKind::Value, origin, source, false);
    }
  }
  Changed(*c, origin, source);
  return true;
}

bool ControlModel::SetText(ControlHandle handle, std::string_view text, Origin origin, ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr || (c->Kind != ControlKind::ComboBox && c->Kind != ControlKind::TextBox)) return false;
  if (c->Kind == ControlKind::ComboBox) {
    const auto it = std::find(c->Items.begin(), c->Items.end(), text);
    c->ListIndex = it == c->Items.end() ? -1 : static_cast<std::int32_t>(it - c->Items.begin());
  }
  if (c->Text == text) return true;
  c->Text.assign(text);
  Changed(*c, origin, source);
  return true;
}

bool ControlModel::SetListIndex(ControlHandle handle, std::int32_t index, Origin origin, ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::ComboBox) return false;
  if (index < -1 || index >= static_cast<std::int32_t>(c->Items.size())) return false;
  if (index == -1) {
    if (c->ListIndex == -1) return true;
    c->ListIndex = -1;
    Changed(*c, origin, source);
    return true;
  }
  if (c->ListIndex == index && c->Text == c->Items[static_cast<std::size_t>(index)]) return true;
  c->ListIndex = index;
  c->Text = c->Items[static_cast<std::size_t>(index)];
  Changed(*c, origin, source);
  return true;
}

bool ControlModel::SetBackColor(ControlHandle handle, std::int32_t color, Origin origin, ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::PictureBox) return false;
  if (c->BackColor == color) return true;
  c->BackColor = color;
  Changed(*c, origin, source);
  return true;
}

bool ControlModel::SetPosition(ControlHandle handle, std::int32_t left, std::int32_t top, Origin origin,
                               ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::Label) return false;
  if (c->Left == left && c->Top == top) return true;
  c->Left = left;
  c->Top = top;
  Changed(*c, origin, source);
  return true;
}

bool ControlModel::SelectItem(ControlHandle handle, std::int32_t oneBased, Origin origin, ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::ListView) return false;
  if (oneBased < 0 || oneBased > static_cast<std::int32_t>(c->ListItems.size())) return false;
  for (auto& item : c->ListItems) item.Selected = false;
  if (oneBased > 0) c->ListItems[static_cast<std::size_t>(oneBased - 1)].Selected = true;
  c->SelectedItem = oneBased;
  // Selecting the same item again still runs the list's action, as a click on it would.
  Changed(*c, origin, source);
  return true;
}

bool ControlModel::Press(ControlHandle handle, Origin origin, ListenerId source) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::CommandButton || !c->Enabled) return false;
  if (c->Toggle) {
    c->Value = c->Value != 0 ? 0 : 1;
    Changed(*c, origin, source);
  } else {
    Notify(*c, ChangeKind::Press, origin, source, true);
  }
  return true;
}

// ---- The controlled parameter ----------------------------------------------------------------

bool ControlModel::DriveNumber(ControlHandle handle, double value, Origin origin) {
  Control* c = Live(handle);
  if (c == nullptr || !c->Drivable) return false;
  switch (c->Kind) {
    case ControlKind::Slider: {
      const auto v = ToInt32(value);
      if (!v) return false;
      if (c->SelectRange) {
        c->SelStart = *v;
        c->SelLength = 0;
        PropertiesChanged(*c);
        if (!handle) return false;
      }
      if (!c->Enabled) return false;
      return SetValue(handle, *v, origin);
    }
    case ControlKind::CheckBox: {
      const auto v = ToInt32(value);
      return v && SetValue(handle, *v != 0 ? 1 : 0, origin);
    }
    case ControlKind::CommandButton:
      if (value == 0.0) return false;
      return Press(handle, origin);
    case ControlKind::ComboBox: return SetText(handle, FormatNumber(value), origin);
    case ControlKind::PictureBox: {
      // Colours beyond the signed range come from unsigned 0x00BBGGRR words; keep their bits.
      if (!std::isfinite(value)) return false;
      const double r = std::nearbyint(value);
      if (r < -2147483648.0 || r > 4294967295.0) return false;
      return SetBackColor(handle, static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::int64_t>(r))),
                          origin);
    }
    case ControlKind::ListView: {
      const auto v = ToInt32(value);
      return v && SelectItem(handle, *v, origin);
    }
    default: return false;
  }
}

bool ControlModel::Drive(ControlHandle handle, std::string_view value, Origin origin) {
  Control* c = Live(handle);
  if (c == nullptr || !c->Drivable) return false;
  switch (c->Kind) {
    case ControlKind::ComboBox: return SetText(handle, value, origin);
    case ControlKind::Label: {
      const auto comma = value.find(',');
      if (comma == std::string_view::npos) return false;
      const auto left = ParseNumber(value.substr(0, comma));
      const auto top = ParseNumber(value.substr(comma + 1));
      if (!left || !top) return false;
      const auto l = ToInt32(*left);
      const auto t = ToInt32(*top);
      return l && t && SetPosition(handle, *l, *t, origin);
    }
    default: {
      const auto number = ParseNumber(value);
      return number && DriveNumber(handle, *number, origin);
    }
  }
}

// ---- Properties ------------------------------------------------------------------------------

void ControlModel::SetRange(ControlHandle handle, std::int32_t min, std::int32_t max) {
  Control* c = Live(handle);
  if (c == nullptr) return;
  c->Min = min;
  c->Max = max;
  const std::int32_t lo = std::min(min, max), hi = std::max(min, max);
  const std::int32_t clamped = std::clamp(c->Value, lo, hi);
  PropertiesChanged(*c);
  // A slider whose range moves past its value follows, as the widget would.
  if (handle && c->Kind == ControlKind::Slider && clamped != c->Value) {
    c->Value = clamped;
    Changed(*c, Origin::Program, 0);
  }
}

void ControlModel::SetSteps(ControlHandle handle, std::int32_t smallChange, std::int32_t largeChange) {
  if (Control* c = Live(handle)) {
    c->SmallChange = smallChange;
    c->LargeChange = largeChange;
    PropertiesChanged(*c);
  }
}

void ControlModel::SetSelection(ControlHandle handle, bool selectRange, std::int32_t selStart, std::int32_t selLength) {
  if (Control* c = Live(handle)) {
    c->SelectRange = selectRange;
    c->SelStart = selStart;
    c->SelLength = selLength;
    PropertiesChanged(*c);
  }
}

void ControlModel::SetOrientation(ControlHandle handle, SliderOrientation orientation) {
  if (Control* c = Live(handle)) {
    c->Orientation = orientation;
    PropertiesChanged(*c);
  }
}

void ControlModel::SetEnabled(ControlHandle handle, bool enabled) {
  Control* c = Live(handle);
  if (c == nullptr || c->Enabled == enabled) return;
  c->Enabled = enabled;
  PropertiesChanged(*c);
}

void ControlModel::SetVisible(ControlHandle handle, bool visible) {
  Control* c = Live(handle);
  if (c == nullptr || c->Visible == visible) return;
  c->Visible = visible;
  PropertiesChanged(*c);
}

void ControlModel::SetCaption(ControlHandle handle, std::string_view caption) {
  Control* c = Live(handle);
  if (c == nullptr || c->Caption == caption) return;
  c->Caption.assign(caption);
  PropertiesChanged(*c);
}

void ControlModel::SetToolTip(ControlHandle handle, std::string_view tip) {
  Control* c = Live(handle);
  if (c == nullptr || c->ToolTipText == tip) return;
  c->ToolTipText.assign(tip);
  PropertiesChanged(*c);
}

void ControlModel::SetSize(ControlHandle handle, std::int32_t width, std::int32_t height) {
  Control* c = Live(handle);
  if (c == nullptr || (c->Width == width && c->Height == height)) return;
  c->Width = width;
  c->Height = height;
  PropertiesChanged(*c);
}

void ControlModel::SetToggle(ControlHandle handle, bool toggle) {
  if (Control* c = Live(handle)) {
    c->Toggle = toggle;
    PropertiesChanged(*c);
  }
}

void ControlModel::SetGroup(ControlHandle handle, std::string_view group) {
  if (Control* c = Live(handle)) c->Group.assign(group);
}

void ControlModel::SetMultiSelect(ControlHandle handle, bool multiSelect) {
  if (Control* c = Live(handle)) {
    c->MultiSelect = multiSelect;
    PropertiesChanged(*c);
  }
}

void ControlModel::SetItems(ControlHandle handle, std::vector<std::string> items) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::ComboBox) return;
  c->Items = std::move(items);
  const auto it = std::find(c->Items.begin(), c->Items.end(), c->Text);
  c->ListIndex = it == c->Items.end() ? -1 : static_cast<std::int32_t>(it - c->Items.begin());
  PropertiesChanged(*c, ChangeKind::Items);
}

void ControlModel::SetListItems(ControlHandle handle, std::vector<ListItem> items) {
  Control* c = Live(handle);
  if (c == nullptr || c->Kind != ControlKind::ListView) return;
  c->ListItems = std::move(items);
  c->SelectedItem = 0;
  for (std::size_t i = 0; i < c->ListItems.size(); ++i) {
    if (c->ListItems[i].Selected) {
      c->SelectedItem = static_cast<std::int32_t>(i + 1);
      break;
    }
  }
  PropertiesChanged(*c, ChangeKind::Items);
}

// ---- Focus ----------------------------------------------------------------------------------

void ControlModel::SetFocus(ControlHandle handle) {
  const Control* c = handle.get();
  if (c == nullptr) return;
  activeControl_ = handle;
  activeForm_ = c->FormName;
}

void ControlModel::SetActiveForm(std::string_view form) {
  if (activeForm_ == form) return;
  activeForm_.assign(form);
  // The focus belongs to a control of the active form.
  if (const Control* c = activeControl_.get(); c == nullptr || c->FormName != form) activeControl_ = ControlHandle();
}

}  // namespace lumivane
