#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/BackgroundLayout.h"
#include "core/ControlModel.h"
#include "forms/LayerOutput.h"

namespace lumivane {

class MsgBox;

// One picture of the background list: where it is and its size as read.
struct BackgroundItem {
  std::string FileName;
  std::int32_t Width = 0, Height = 0;
};

// The background window as the engine sees it: the list of pictures with their sizes, playback
// through the list, sending one picture to the output, feedback, the output mask, and the
// background look and output stage controls the frame reads (these stand on the main form, the
// feedback rate on the recording form, as files and MIDI setups address them). The Qt window is a
// view over these controls; the output is reached through hooks, which do nothing while no output
// runs.
class BackgroundsForm {
 public:
  static constexpr std::string_view kFormName = "frmBackgrounds";
  // What the file dialogs offer, and the kinds a folder is searched for.
  static constexpr std::string_view kImageFilter = "Images (*.bmp *.jpg *.jpeg *.png *.gif *.webp)";
  static constexpr std::string_view kUnreadable = "The image could not be read: ";

  struct Controls {
    // BackgroundsForm.
    ControlHandle ListBackgrounds, cmdLoadBackground, cmdLoadBackGroundFolder, cmdPlay, cmdSendBackgroundToOutput,
        cmdResetBackGroundImages, cmdDeletebackGroundImage, cmdEraseBackgroundOtput, chkComputeAspectRatio,
        chkImageFadeIn, chkImageFadeOut, cmdFeedBack, chkHoldBackground, cmdEnableMask, cmdLockMask, cmdLoadMask,
        lblMaskFileName, cboToCRS, chkCRSGetBackGroundImages;
    // MainForm: the look of the background and the output stage.
    ControlHandle picBackGroundColor, piCFilterColor, sliderRandomBackgroundFilterColor, txtTimerInterval,
        chkHoldBackgroundTimer, SliderBackGroundPositionRandomX, SliderBackGroundPositionRandomY,
        chkBackGroundPositionUniform, SliderBackgroundSizeRandomX, SliderBackgroundSizeRandomY,
        chkBackGroundSizeUniform, SliderBackgroundTileX, SliderBackgroundTileY, chkRandomizeTiling,
        SliderBackGroundOffsetX, SliderBackGroundOffsetY, chkRandomizeOffset, SliderFadeOut, chkInvertOutput;
    // frmRecording: the feedback copy's rate.
    ControlHandle SliderRecordFramesPerSecond;
  };

  // Registers the controls; `picBackGroundColor` is the main form's swatch, already registered.
  BackgroundsForm(ControlModel& model, MsgBox& msgBox, ControlHandle picBackGroundColor);
  BackgroundsForm(const BackgroundsForm&) = delete;
  BackgroundsForm& operator=(const BackgroundsForm&) = delete;

  ControlModel& Model() noexcept { return model_; }
  const Controls& C() const noexcept { return c_; }
  const std::vector<BackgroundItem>& Items() const noexcept { return items_; }

  // ---- The list ------------------------------------------------------------------------------
  // Adds each file not in the list yet, with its size. A file that cannot be read is told and left
  // out; with `quiet` (a show being read) it is kept, without a size, so saving loses nothing.
  void LoadBackground(const std::vector<std::string>& files, bool quiet = false);
  // Adds the pictures of a folder (JPEG, BMP, PNG, GIF, WebP), in name order.
  void LoadBackGroundFolder(const std::string& folder);
  // Reads a picture's size into a new item; false when it cannot be read.
  bool LoadPictureToMemory(const std::string& file, BackgroundItem& item, std::string& error) const;
  bool AlreadyLoaded(const std::string& file) const;
  // Empties the list (the output keeps what it shows).
  void ClearBackGrounds();
  // Removes the selected pictures; while playing, the output goes on through what remains.
  void RemoveBackGround();

  // ---- The output ----------------------------------------------------------------------------
  // The selected picture alone goes to the output. Nothing happens without a selection.
  void SendBackgroundToOutput();
  // The same for a picture a controller selected; feedback stays as it is.
  void MIDISendBackgroundToOutput();
  // Hides every picture of the output: at its next change the clear colour shows.
  void ClearBackgroundOutput();
  // cmdPlay: every picture of the list takes its turn on the background timer, from the first.
  void PlayBackGrounds();
  bool isBackGroundPlaying() const noexcept { return ControlModel::Value(c_.cmdPlay) == 1; }
  // A new output, or a show just read: sends the list (playing, or the selected picture) and the
  // mask again. The output has lost both when its device went.
  void SendToOutput();

  // ---- The mask ------------------------------------------------------------------------------
  // The mask picture; an empty name means none.
  const std::string& MaskFileName() const noexcept { return maskFileName_; }
  // Takes a mask picture (from a show, unless the mask is locked) and hands it to the output.
  void SetMaskFileName(const std::string& file, bool fromShow);
  void LoadMask();

  // The last layout of the background rectangle, kept here while no output runs (a show's
  // LastBackGroundMesh is read into it, and a new output starts from it).
  BackGroundMesh StoredMesh;
  // The layout in force: the output's while one runs, else the stored one.
  BackGroundMesh CurrentMesh() const;
  // Takes a layout (from a show): stored, and handed to the output when one runs.
  void SetMesh(const BackGroundMesh& mesh);

  // ---- Hooks, set where the output is known ----------------------------------------------------
  // Reads a picture's size; false with the reason when it cannot.
  std::function<bool(const std::string& file, std::int32_t& width, std::int32_t& height, std::string& error)>
      ReadImageSize;
  // The running output's picture list, mask and layout; none in bare tests.
  LayerOutput* Output = nullptr;
  // The files the operator chose; empty when cancelled.
  std::function<std::vector<std::string>()> ChooseFiles;
  std::function<std::string()> ChooseFolder;
  std::function<std::string()> ChooseMaskFile;
  // Lists the files of a folder (full paths, name order).
  std::function<std::vector<std::string>(const std::string& folder)> ListFolder;
  // Told whenever the list changed, so the view can make its thumbnails.
  std::function<void()> ListChanged;

 private:
  void RegisterControls(ControlHandle picBackGroundColor);
  void Connect();
  void ShowItems();
  void Send(std::int32_t oneBased);

  ControlModel& model_;
  MsgBox& msgBox_;
  Controls c_;
  std::vector<BackgroundItem> items_;
  std::string maskFileName_;
  bool showing_ = false;  // the list view is being refilled: its selection is not a send
};

}  // namespace lumivane
