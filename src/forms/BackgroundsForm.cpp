#include "forms/BackgroundsForm.h"

#include <algorithm>
#include <cctype>

#include "forms/MsgBox.h"

namespace lumivane {

namespace {

constexpr std::string_view kMain = "frmMain";
constexpr std::string_view kRecording = "frmRecording";

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

bool EndsWith(std::string_view s, std::string_view suffix) {
  return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

// The name behind the last separator, as the list shows it.
std::string ShownName(const std::string& file) {
  const std::size_t cut = file.find_last_of("\\/");
  return cut == std::string::npos ? file : file.substr(cut + 1);
}

}  // namespace

BackgroundsForm::BackgroundsForm(ControlModel& model, MsgBox& msgBox, ControlHandle picBackGroundColor)
    : model_(model), msgBox_(msgBox) {
  RegisterControls(picBackGroundColor);
  Connect();
}

void BackgroundsForm::RegisterControls(ControlHandle picBackGroundColor) {
  ControlModel& m = model_;
  auto add = [&](std::string_view form, ControlKind kind, std::string_view name, std::string_view caption = {}) {
    ControlHandle h = m.Add(form, kind, name);
    if (!caption.empty()) m.SetCaption(h, caption);
    return h;
  };
  auto slider = [&](std::string_view form, std::string_view name, int min, int max, int value, int large,
                    std::string_view caption) {
    ControlHandle h = add(form, ControlKind::Slider, name, caption);
    m.SetRange(h, min, max);
    m.SetSteps(h, 1, large);
    m.SetValue(h, value);
    return h;
  };
  auto toggle = [&](std::string_view name, std::string_view caption) {
    ControlHandle h = add(kFormName, ControlKind::CommandButton, name, caption);
    m.SetToggle(h, true);
    return h;
  };
  const std::string_view f = kFormName;
  Controls& c = c_;
  c.ListBackgrounds = add(f, ControlKind::ListView, "ListBackgrounds");
  m.SetMultiSelect(c.ListBackgrounds, true);
  c.cmdLoadBackground = add(f, ControlKind::CommandButton, "cmdLoadBackground", "Load Images...");
  c.cmdLoadBackGroundFolder = add(f, ControlKind::CommandButton, "cmdLoadBackGroundFolder", "Load Folder...");
  c.cmdPlay = toggle("cmdPlay", "Play");
  c.cmdSendBackgroundToOutput = add(f, ControlKind::CommandButton, "cmdSendBackgroundToOutput", "Send to Output");
  c.cmdResetBackGroundImages = add(f, ControlKind::CommandButton, "cmdResetBackGroundImages", "Reset");
  c.cmdDeletebackGroundImage = add(f, ControlKind::CommandButton, "cmdDeletebackGroundImage", "Delete");
  c.cmdEraseBackgroundOtput = add(f, ControlKind::CommandButton, "cmdEraseBackgroundOtput", "Erase Output");
  c.chkComputeAspectRatio = add(f, ControlKind::CheckBox, "chkComputeAspectRatio", "Keep Aspect Ratio");
  c.chkImageFadeIn = add(f, ControlKind::CheckBox, "chkImageFadeIn", "Fade In");
  c.chkImageFadeOut = add(f, ControlKind::CheckBox, "chkImageFadeOut", "Fade Out");
  c.cmdFeedBack = toggle("cmdFeedBack", "Feedback");
  c.chkHoldBackground = add(f, ControlKind::CheckBox, "chkHoldBackground", "Keep Previous Frame");
  c.cmdEnableMask = toggle("cmdEnableMask", "Mask");
  c.cmdLockMask = toggle("cmdLockMask", "Lock Mask");
  m.SetToolTip(c.cmdLockMask, "Shows that are loaded keep this mask");
  c.cmdLoadMask = add(f, ControlKind::CommandButton, "cmdLoadMask", "Load Mask...");
  c.lblMaskFileName = add(f, ControlKind::Label, "lblMaskFileName");
  c.cboToCRS = add(f, ControlKind::ComboBox, "cboToCRS");
  c.chkCRSGetBackGroundImages = add(f, ControlKind::CheckBox, "chkCRSGetBackGroundImages", "Images to Surface");

  c.picBackGroundColor = picBackGroundColor;
  c.piCFilterColor = add(kMain, ControlKind::PictureBox, "piCFilterColor", "Tint");
  m.SetBackColor(c.piCFilterColor, 0xFFFFFF);  // white: the picture as it is
  c.sliderRandomBackgroundFilterColor = slider(kMain, "sliderRandomBackgroundFilterColor", 0, 255, 0, 10,
                                               "Tint random");
  c.txtTimerInterval = add(kMain, ControlKind::TextBox, "txtTimerInterval", "Change every (ms)");
  m.SetText(c.txtTimerInterval, "5000");
  m.SetToolTip(c.txtTimerInterval, "Background change interval (ms)");
  c.chkHoldBackgroundTimer = add(kMain, ControlKind::CheckBox, "chkHoldBackgroundTimer", "Hold Timer");
  // Random reach in pixels; feeding back, the middle of each slider is the picture's own place and
  // size, so the ranges are symmetric round it.
  c.SliderBackGroundPositionRandomX = slider(kMain, "SliderBackGroundPositionRandomX", 0, 1000, 0, 50,
                                             "Position X random");
  c.SliderBackGroundPositionRandomY = slider(kMain, "SliderBackGroundPositionRandomY", 0, 1000, 0, 50,
                                             "Position Y random");
  c.chkBackGroundPositionUniform = add(kMain, ControlKind::CheckBox, "chkBackGroundPositionUniform", "Uniform");
  c.SliderBackgroundSizeRandomX = slider(kMain, "SliderBackgroundSizeRandomX", 0, 1000, 0, 50, "Size X random");
  c.SliderBackgroundSizeRandomY = slider(kMain, "SliderBackgroundSizeRandomY", 0, 1000, 0, 50, "Size Y random");
  c.chkBackGroundSizeUniform = add(kMain, ControlKind::CheckBox, "chkBackGroundSizeUniform", "Uniform");
  c.SliderBackgroundTileX = slider(kMain, "SliderBackgroundTileX", 1, 20, 1, 2, "Tile X");
  c.SliderBackgroundTileY = slider(kMain, "SliderBackgroundTileY", 1, 20, 1, 2, "Tile Y");
  c.chkRandomizeTiling = add(kMain, ControlKind::CheckBox, "chkRandomizeTiling", "Random Tiling");
  c.SliderBackGroundOffsetX = slider(kMain, "SliderBackGroundOffsetX", -20, 20, 0, 5, "Offset X");
  c.SliderBackGroundOffsetY = slider(kMain, "SliderBackGroundOffsetY", -20, 20, 0, 5, "Offset Y");
  c.chkRandomizeOffset = add(kMain, ControlKind::CheckBox, "chkRandomizeOffset", "Random Offset");
  c.SliderFadeOut = slider(kMain, "SliderFadeOut", 0, 255, 255, 16, "Brightness");
  m.SetToolTip(c.SliderFadeOut, "Output brightness: 0 is black");
  c.chkInvertOutput = add(kMain, ControlKind::CheckBox, "chkInvertOutput", "Invert Output");
  c.SliderRecordFramesPerSecond = slider(kRecording, "SliderRecordFramesPerSecond", 0, 60, 25, 5,
                                         "Feedback rate (fps)");
}

void BackgroundsForm::Connect() {
  ControlModel& m = model_;
  const Controls& c = c_;
  m.OnChange(c.cmdLoadBackground, [this](const ControlEvent&) {
    if (ChooseFiles) LoadBackground(ChooseFiles());
  });
  m.OnChange(c.cmdLoadBackGroundFolder, [this](const ControlEvent&) {
    if (!ChooseFolder) return;
    const std::string folder = ChooseFolder();
    if (!folder.empty()) LoadBackGroundFolder(folder);
  });
  m.OnChange(c.cmdPlay, [this](const ControlEvent&) {
    if (isBackGroundPlaying()) PlayBackGrounds();
    else SendBackgroundToOutput();
  });
  m.OnChange(c.cmdSendBackgroundToOutput, [this](const ControlEvent&) { SendBackgroundToOutput(); });
  m.OnChange(c.cmdResetBackGroundImages, [this](const ControlEvent&) {
    ClearBackGrounds();
    if (Output != nullptr) Output->ResetBackgrounds();
  });
  m.OnChange(c.cmdDeletebackGroundImage, [this](const ControlEvent&) { RemoveBackGround(); });
  m.OnChange(c.cmdEraseBackgroundOtput, [this](const ControlEvent&) { ClearBackgroundOutput(); });
  m.OnChange(c.cmdLoadMask, [this](const ControlEvent&) { LoadMask(); });
  // A picture picked in the list, by hand or by a controller, goes to the output.
  m.OnChange(c.ListBackgrounds, [this](const ControlEvent& e) {
    if (showing_) return;
    if (e.origin == Origin::Midi) MIDISendBackgroundToOutput();
    else if (!isBackGroundPlaying()) SendBackgroundToOutput();
  });
}

bool BackgroundsForm::LoadPictureToMemory(const std::string& file, BackgroundItem& item, std::string& error) const {
  item = BackgroundItem{file, 0, 0};
  if (!ReadImageSize) return true;
  return ReadImageSize(file, item.Width, item.Height, error);
}

bool BackgroundsForm::AlreadyLoaded(const std::string& file) const {
  return std::any_of(items_.begin(), items_.end(), [&](const BackgroundItem& i) { return i.FileName == file; });
}

void BackgroundsForm::LoadBackground(const std::vector<std::string>& files, bool quiet) {
  std::string refused;
  bool added = false;
  for (const std::string& file : files) {
    if (file.empty() || AlreadyLoaded(file)) continue;
    BackgroundItem item;
    std::string error;
    if (!LoadPictureToMemory(file, item, error)) {
      if (!quiet) {
        refused += std::string(kUnreadable) + ShownName(file) + (error.empty() ? "" : " (" + error + ")") + "\n";
        continue;
      }
      item = BackgroundItem{file, 0, 0};
    }
    items_.push_back(std::move(item));
    added = true;
  }
  if (added) ShowItems();
  if (!refused.empty()) {
    refused.pop_back();
    msgBox_.Show(refused, MsgBox::OKOnly);
  }
}

void BackgroundsForm::LoadBackGroundFolder(const std::string& folder) {
  if (!ListFolder) return;
  std::vector<std::string> pictures;
  for (const std::string& file : ListFolder(folder)) {
    const std::string lower = Lower(file);
    for (std::string_view kind : {".jpg", ".jpeg", ".bmp", ".png", ".gif", ".webp"})
      if (EndsWith(lower, kind)) {
        pictures.push_back(file);
        break;
      }
  }
  LoadBackground(pictures);
}

void BackgroundsForm::ClearBackGrounds() {
  items_.clear();
  ShowItems();
}

void BackgroundsForm::RemoveBackGround() {
  const Control* list = c_.ListBackgrounds.get();
  if (list == nullptr) return;
  std::vector<BackgroundItem> kept;
  for (std::size_t i = 0; i < items_.size(); ++i)
    if (i >= list->ListItems.size() || !list->ListItems[i].Selected) kept.push_back(items_[i]);
  if (kept.size() == items_.size()) return;
  items_ = std::move(kept);
  ShowItems();
  if (isBackGroundPlaying()) PlayBackGrounds();
}

void BackgroundsForm::ShowItems() {
  std::vector<ListItem> shown;
  shown.reserve(items_.size());
  for (const BackgroundItem& i : items_)
    shown.push_back(ListItem{ShownName(i.FileName), {std::to_string(i.Width), std::to_string(i.Height)}, false});
  showing_ = true;
  model_.SetListItems(c_.ListBackgrounds, std::move(shown));
  showing_ = false;
  if (ListChanged) ListChanged();
}

void BackgroundsForm::Send(std::int32_t oneBased) {
  if (oneBased < 1 || oneBased > static_cast<std::int32_t>(items_.size()) || Output == nullptr) return;
  const BackgroundItem& item = items_[static_cast<std::size_t>(oneBased - 1)];
  Output->ShowBackground(item.FileName, true, item.Width, item.Height);
}

void BackgroundsForm::SendBackgroundToOutput() { Send(ControlModel::SelectedItem(c_.ListBackgrounds)); }

void BackgroundsForm::MIDISendBackgroundToOutput() {
  // Feedback stays on: a new picture enters the loop rather than ending it.
  Send(ControlModel::SelectedItem(c_.ListBackgrounds));
}

void BackgroundsForm::ClearBackgroundOutput() {
  if (Output != nullptr) Output->ShowBackground({}, true, 0, 0);
}

void BackgroundsForm::PlayBackGrounds() {
  if (Output == nullptr || items_.empty()) return;
  for (std::size_t i = 0; i < items_.size(); ++i)
    Output->ShowBackground(items_[i].FileName, i == 0, items_[i].Width, items_[i].Height);
  // The first again: it is known by now, so this only starts the turn from it.
  Output->ShowBackground(items_[0].FileName, false, items_[0].Width, items_[0].Height);
}

void BackgroundsForm::SendToOutput() {
  if (isBackGroundPlaying()) PlayBackGrounds();
  else SendBackgroundToOutput();
  if (Output != nullptr && !maskFileName_.empty()) Output->SetMask(maskFileName_);
}

void BackgroundsForm::SetMaskFileName(const std::string& file, bool fromShow) {
  if (fromShow && ControlModel::Value(c_.cmdLockMask) == 1) return;
  maskFileName_ = file;
  model_.SetCaption(c_.lblMaskFileName, ShownName(file));
  if (Output != nullptr) Output->SetMask(file);
}

BackGroundMesh BackgroundsForm::CurrentMesh() const {
  BackGroundMesh mesh;
  if (Output != nullptr && Output->ReadLayout(mesh)) return mesh;
  return StoredMesh;
}

void BackgroundsForm::SetMesh(const BackGroundMesh& mesh) {
  StoredMesh = mesh;
  if (Output != nullptr) Output->SetLayout(mesh);
}

void BackgroundsForm::LoadMask() {
  if (!ChooseMaskFile) return;
  const std::string file = ChooseMaskFile();
  if (file.empty()) return;
  SetMaskFileName(file, false);
  model_.SetValue(c_.cmdEnableMask, 1);
}

}  // namespace lumivane
