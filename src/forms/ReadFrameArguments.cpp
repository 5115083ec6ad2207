// Gathers what one frame depends on from the forms' controls, once a frame, so the renderer
// never reads a control.
#include "forms/ReadFrameArguments.h"

#include <charconv>
#include <cstdlib>

#include "forms/BackgroundsForm.h"
#include "forms/EffectsForm.h"
#include "forms/MainForm.h"

namespace lumivane {

namespace {

// A slider pair, its maximum (the first slider's) and its uniform box.
PlacementBlock Placement(ControlHandle x, ControlHandle y, ControlHandle uniform) {
  const Control* first = x.get();
  return {ControlModel::Value(x), ControlModel::Value(y), first != nullptr ? first->Max : 0,
          ControlModel::Checked(uniform)};
}

// A text box's whole number; what does not read counts as 0.
std::int32_t WholeNumber(const std::string& text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  while (begin != end && *begin == ' ') ++begin;
  std::int32_t value = 0;
  if (std::from_chars(begin, end, value).ec != std::errc()) return 0;
  return value;
}

void ReadBackground(const BackgroundsForm& form, FrameArguments& args) {
  const BackgroundsForm::Controls& c = form.C();
  BackgroundArguments& b = args.Background;
  b.FilterColor = ControlModel::BackColor(c.piCFilterColor);
  b.FilterRandom = ControlModel::Value(c.sliderRandomBackgroundFilterColor);
  b.TimerInterval = WholeNumber(ControlModel::Text(c.txtTimerInterval));
  b.HoldTimer = ControlModel::Checked(c.chkHoldBackgroundTimer);
  b.ComputeAspectRatio = ControlModel::Checked(c.chkComputeAspectRatio);
  b.FadeIn = ControlModel::Checked(c.chkImageFadeIn);
  b.FadeOut = ControlModel::Checked(c.chkImageFadeOut);
  b.Position = Placement(c.SliderBackGroundPositionRandomX, c.SliderBackGroundPositionRandomY,
                         c.chkBackGroundPositionUniform);
  b.Size = Placement(c.SliderBackgroundSizeRandomX, c.SliderBackgroundSizeRandomY, c.chkBackGroundSizeUniform);
  b.TileX = ControlModel::Value(c.SliderBackgroundTileX);
  b.TileY = ControlModel::Value(c.SliderBackgroundTileY);
  b.RandomizeTiling = ControlModel::Checked(c.chkRandomizeTiling);
  b.Feedback = ControlModel::Value(c.cmdFeedBack) == 1;
  b.OffsetX = ControlModel::Value(c.SliderBackGroundOffsetX);
  b.OffsetY = ControlModel::Value(c.SliderBackGroundOffsetY);
  b.RandomizeOffset = ControlModel::Checked(c.chkRandomizeOffset);
  args.KeepPreviousFrame = ControlModel::Checked(c.chkHoldBackground);
  args.MaskEnabled = ControlModel::Value(c.cmdEnableMask) == 1;
  args.FeedbackRate = ControlModel::Value(c.SliderRecordFramesPerSecond);
  args.Fade = std::abs(ControlModel::Value(c.SliderFadeOut));
  args.Invert = ControlModel::Checked(c.chkInvertOutput);
}

void ReadEffect(const EffectsForm& form, EffectArguments& e) {
  const EffectsForm::Controls& c = form.C();
  e.ComputeAspectRatio = ControlModel::Checked(c.chkComputeAspectRatio);
  e.Enabled = ControlModel::Checked(c.chkEnableEffect);
  e.Capture = ControlModel::Checked(c.chkCaptureEffect);
  e.HoldTimer = ControlModel::Checked(c.chkHoldEffectTimer);
  e.SourceBlend = EffectBlendCode(ControlModel::Text(c.cboSourceBlend), true);
  e.TargetBlend = EffectBlendCode(ControlModel::Text(c.cboTargetBlend), false);
  e.Color = ControlModel::BackColor(c.picEffectColor);
  e.ColorRandom = std::abs(ControlModel::Value(c.SliderEffectColorRandom));
  e.Timer = ControlModel::Value(c.SliderEffectTime);
  e.Position = Placement(c.SliderEffectPositionRandomX, c.SliderEffectPositionRandomY, c.chkEffectPositionUniform);
  e.Size = Placement(c.SliderEffectSizeRandomX, c.SliderEffectSizeRandomY, c.chkEffectSizeUniform);
  e.TileX = ControlModel::Value(c.SliderEffectTileX);
  e.TileY = ControlModel::Value(c.SliderEffectTileY);
  e.RandomizeTiling = ControlModel::Checked(c.chkRandomizeTiling);
  e.OffsetX = ControlModel::Value(c.SliderEffectOffsetX);
  e.OffsetY = ControlModel::Value(c.SliderEffectOffsetY);
  e.RandomizeOffset = ControlModel::Checked(c.chkRandomizeOffset);
}

}  // namespace

FrameArguments ReadFrameArguments(const MainForm& form) {
  FrameArguments args;
  args.ClearColor = ControlModel::BackColor(form.BackgroundColor);
  if (form.Backgrounds != nullptr) ReadBackground(*form.Backgrounds, args);
  if (form.Effects != nullptr) ReadEffect(*form.Effects, args.Effect);
  args.Text = form.FrameInput();
  args.PreviewWidth = form.PreviewWidth;
  args.PreviewHeight = form.PreviewHeight;
  return args;
}

}  // namespace lumivane
