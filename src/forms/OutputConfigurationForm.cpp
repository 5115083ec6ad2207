#include "forms/OutputConfigurationForm.h"

#include <array>
#include <utility>
#include <vector>

#include "core/Numbers.h"

namespace lumivane {

namespace {

std::string_view Trim(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// The first three tab-separated fields of a row; missing ones are empty.
std::array<std::string_view, 3> Fields(std::string_view row) {
  std::array<std::string_view, 3> fields{};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::size_t tab = row.find('\t');
    fields[i] = row.substr(0, tab);
    if (tab == std::string_view::npos) break;
    row.remove_prefix(tab + 1);
  }
  return fields;
}

}  // namespace

OutputConfigurationForm::OutputConfigurationForm(ControlModel& model) : model_(model) {
  const std::string_view f = kFormName;
  auto button = [&](std::string_view name, std::string_view caption) {
    ControlHandle h = model_.Add(f, ControlKind::CommandButton, name);
    model_.SetCaption(h, caption);
    return h;
  };
  c_.ListOutputs = model_.Add(f, ControlKind::ListView, "ListOutputs");
  c_.cmdX = button("cmdX", "Mirror X");
  c_.cmdY = button("cmdY", "Mirror Y");
  c_.cmdReset = button("cmdReset", "Reset");
  c_.cboOutputCount = model_.Add(f, ControlKind::ComboBox, "cboOutputCount");
  model_.SetCaption(c_.cboOutputCount, "Outputs:");
  std::vector<std::string> counts;
  for (int n = 1; n <= kMaxOutputs; ++n) counts.push_back(std::to_string(n));
  model_.SetItems(c_.cboOutputCount, std::move(counts));
  model_.SetText(c_.cboOutputCount, "1");
  c_.chkIdentify = model_.Add(f, ControlKind::CheckBox, "chkIdentify");
  model_.SetCaption(c_.chkIdentify, "Identify");

  model_.OnChange(c_.cmdX, [this](const ControlEvent&) { Mirror("X"); });
  model_.OnChange(c_.cmdY, [this](const ControlEvent&) { Mirror("Y"); });
  model_.OnChange(c_.cmdReset, [this](const ControlEvent&) {
    if (StopRendering) StopRendering();
  });
  // cboOutputCount needs no handler: the clones are made when playback starts.
}

bool OutputConfigurationForm::GetSetup(std::string_view row, int& index, std::string& mirrorX, std::string& mirrorY) {
  index = 0;
  mirrorX.clear();
  mirrorY.clear();
  const auto fields = Fields(row);
  const std::string_view first = fields[0];
  if (first.empty() || first.front() < '1' || first.front() > '9' || row.find('#') == std::string_view::npos)
    return false;
  int n = 0;
  for (std::size_t i = 0; i < first.size() && i < 9 && first[i] >= '0' && first[i] <= '9'; ++i)
    n = n * 10 + (first[i] - '0');
  index = n;
  mirrorX = Trim(fields[1]);
  mirrorY = Trim(fields[2]);
  return true;
}

std::string OutputConfigurationForm::SetupRow(int index, std::string_view mirrorX, std::string_view mirrorY) {
  std::string row = std::to_string(index) + "# \t";
  row += mirrorX;
  row += '\t';
  row += mirrorY;
  return row;
}

void OutputConfigurationForm::SetSetup(int row, int index, std::string_view mirrorX, std::string_view mirrorY) {
  const Control* list = c_.ListOutputs.get();
  if (list == nullptr || row < 1 || row > static_cast<int>(list->ListItems.size())) return;
  std::vector<ListItem> items = list->ListItems;
  items[static_cast<std::size_t>(row - 1)].Text = SetupRow(index, mirrorX, mirrorY);
  model_.SetListItems(c_.ListOutputs, std::move(items));
}

int OutputConfigurationForm::RowOf(int index) const {
  const Control* list = c_.ListOutputs.get();
  if (list == nullptr || index < 1) return 0;
  int found = 0;
  std::string x, y;
  for (std::size_t i = 0; i < list->ListItems.size(); ++i) {
    if (GetSetup(list->ListItems[i].Text, found, x, y) && found == index) return static_cast<int>(i + 1);
  }
  return 0;
}

void OutputConfigurationForm::SelectOutput(int index) { model_.SelectItem(c_.ListOutputs, RowOf(index)); }

void OutputConfigurationForm::Mirror(std::string_view axis) {
  const Control* list = c_.ListOutputs.get();
  if (list == nullptr) return;
  const int row = list->SelectedItem;
  if (row < 1 || row > static_cast<int>(list->ListItems.size())) return;
  int index = 0;
  std::string x, y;
  if (!GetSetup(list->ListItems[static_cast<std::size_t>(row - 1)].Text, index, x, y)) return;
  if (axis == "X")
    x = x == "X" ? "" : "X";
  else if (axis == "Y")
    y = y == "Y" ? "" : "Y";
  else
    return;
  SetSetup(row, index, x, y);
  if (CloneSetup) CloneSetup(index, x, y);
}

void OutputConfigurationForm::ClearOutputs() { model_.SetListItems(c_.ListOutputs, {}); }

void OutputConfigurationForm::AddOutput(std::string row) {
  const Control* list = c_.ListOutputs.get();
  if (list == nullptr) return;
  std::vector<ListItem> items = list->ListItems;
  items.push_back(ListItem{std::move(row), {}, false});
  model_.SetListItems(c_.ListOutputs, std::move(items));
}

int OutputConfigurationForm::OutputCount() const {
  return ToInt32(LeadingNumber(ControlModel::Text(c_.cboOutputCount))).value_or(0);
}

void OutputConfigurationForm::InitializeOutputCount(int positionFormCount) {
  model_.SetText(c_.cboOutputCount, positionFormCount <= 0 ? std::string("1") : std::to_string(positionFormCount));
}

}  // namespace lumivane
