#include "core/TextEngine.h"

#include <algorithm>
#include <charconv>

#include "core/Color.h"
#include "core/EngineContext.h"
#include "core/Numbers.h"
#include "core/StringOps.h"

namespace lumivane {

namespace {

const std::string& Empty() noexcept {
  static const std::string empty;
  return empty;
}

const TextFont& EmptyFont() noexcept {
  static const TextFont font;
  return font;
}

}  // namespace

TextEngine::TextEngine(EngineContext& context) : context_(context) {}

void TextEngine::Renumber(std::vector<TextObject>& list) noexcept {
  for (std::size_t i = 0; i < list.size(); ++i) list[i].Index = static_cast<std::int32_t>(i + 1);
}

// ---- Renderer side ----------------------------------------------------------------------------

const std::string& TextEngine::RenderGetCurrentText(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->CurrentText : Empty();
}

const TextFont& TextEngine::RenderGetFont(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Font : EmptyFont();
}

const std::string& TextEngine::RenderGetTextBoxTextureFileName(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->TextBoxTextureFileName : Empty();
}

std::int32_t TextEngine::RenderGetCurrentTextColor(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->CurrentColor : 0;
}

std::uint32_t TextEngine::RenderGetDXTextColor(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? ToDeviceColor(t->Color) : 0;
}

std::int32_t TextEngine::RenderGetLockVideoToTextBox(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->VideoLockToTextBox : 0;
}

bool TextEngine::RenderGetLockVideoToTexture() const noexcept {
  return std::any_of(LiveTexts.begin(), LiveTexts.end(), [](const TextObject& t) { return t.VideoLockToTextBox == 1; });
}

const std::string& TextEngine::RenderGetAlignX(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->AlignX : Empty();
}

float TextEngine::RenderGetExtrudeText(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Extrude3D : 0.0f;
}

bool TextEngine::RenderGetClip(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr && (t->GlobalPerformanceClip || t->Clip);
}

std::int32_t TextEngine::RenderGetOutputMultiplier(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Particle.Count : 0;
}

const std::string& TextEngine::RenderGetShape3DType(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Shape3DType : Empty();
}

bool TextEngine::RenderGetVertical(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr && t->Vertical;
}

float TextEngine::RenderGetRotationCurrentAngleX(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Rotation.CurrentAngleX : 0.0f;
}

float TextEngine::RenderGetRotationCurrentAngleY(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Rotation.CurrentAngleY : 0.0f;
}

float TextEngine::RenderGetRotationCurrentAngleZ(std::int32_t index) const noexcept {
  const TextObject* t = At(LiveTexts, index);
  return t != nullptr ? t->Rotation.CurrentAngleZ : 0.0f;
}

// The running angles and phase are the renderer's own: no cached frame depends on them, so
// writing them keeps the cache.
void TextEngine::RenderSetRotationCurrentAngle(std::int32_t index, float x, float y, float z) noexcept {
  if (TextObject* t = At(LiveTexts, index)) {
    t->Rotation.CurrentAngleX = x;
    t->Rotation.CurrentAngleY = y;
    t->Rotation.CurrentAngleZ = z;
  }
}

void TextEngine::RenderSetWaveCurrentPhase(std::int32_t index, std::int32_t phase) noexcept {
  if (TextObject* t = At(LiveTexts, index)) t->Wave3D.CurrentPhase = phase;
}

void TextEngine::RenderSetMesh3DInfo(std::int32_t index, const std::string& info) {
  if (TextObject* t = At(LiveTexts, index)) t->Mesh3DInfo = info;
}

void TextEngine::RenderSynchronizeText(std::int32_t index) noexcept {
  if (TextObject* t = LiveRecord(index)) t->SynchronizeText = true;
}

// ---- Editor side ------------------------------------------------------------------------------

const std::string& TextEngine::PreviewGetCurrentText(std::int32_t index) const noexcept {
  const TextObject* t = At(Current(), index);
  return t != nullptr ? t->CurrentText : Empty();
}

TextEngine::BoxSize TextEngine::PreviewGetTextBoxSize(std::int32_t index) const noexcept {
  const TextObject* t = At(Current(), index);
  if (t == nullptr) return {};
  return {t->Right - t->Left, t->Bottom - t->Top};
}

void TextEngine::PreviewSetPosition(std::int32_t index, std::int32_t left, std::int32_t top, std::int32_t right,
                                 std::int32_t bottom) noexcept {
  if (TextObject* t = At(Current(), index)) {
    t->Left = left;
    t->Top = top;
    t->Right = right;
    t->Bottom = bottom;
  }
}

void TextEngine::PreviewSetTextColor(std::int32_t index, std::int32_t color) noexcept {
  if (TextObject* t = At(Current(), index)) t->Color = color;
}

void TextEngine::PreviewSetTextBackGroundColor(std::int32_t index, std::int32_t color) noexcept {
  if (TextObject* t = At(Current(), index)) t->BackGroundColor = color;
}

bool TextEngine::PreviewText3D(std::int32_t index) const noexcept {
  const TextObject* t = At(Current(), index);
  return t != nullptr && t->Text3D;
}

void TextEngine::PreviewTextZOrder(std::int32_t index, bool toBack) {
  auto& list = Current();
  if (At(list, index) == nullptr) return;
  BusyScope busy(*this);
  const auto from = list.begin() + (index - 1);
  if (toBack)
    std::rotate(list.begin(), from, from + 1);
  else
    std::rotate(from, from + 1, list.end());
  Renumber(list);
}

std::vector<std::string> TextEngine::PreviewGetFontsUsed() const {
  std::vector<std::string> fonts;
  for (const TextObject& t : Current()) {
    if (!t.Font.Name.empty() && std::find(fonts.begin(), fonts.end(), t.Font.Name) == fonts.end())
      fonts.push_back(t.Font.Name);
  }
  return fonts;
}

void TextEngine::PreviewSetTextCounter(std::int32_t index, std::string_view value) {
  TextObject* t = At(Current(), index);
  if (t == nullptr) return;
  if (t->Counter.ValueType == "Hexadecimal") {
    // Read as a 32-bit hexadecimal literal: up to eight digits, "FFFFFFFF" is -1. Anything else
    // is skipped and leaves the counter as it was.
    std::string_view digits = value;
    while (!digits.empty() && digits.front() == ' ') digits.remove_prefix(1);
    while (!digits.empty() && digits.back() == ' ') digits.remove_suffix(1);
    std::uint32_t parsed = 0;
    const auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), parsed, 16);
    if (digits.empty() || digits.size() > 8 || ec != std::errc() || ptr != digits.data() + digits.size()) return;
    t->Counter.Value = static_cast<double>(static_cast<std::int32_t>(parsed));
  } else {
    t->Counter.Value = LeadingNumber(value);
  }
  t->CurrentText.assign(value);
}

void TextEngine::PreviewSetPulseFontSizeCounterValue(std::int32_t index, double value) noexcept {
  if (TextObject* t = At(Current(), index)) t->PulseFontSizeCounter.Value = value;
}

std::string TextEngine::PreviewBuildText(std::int32_t index, std::string_view text) const {
  const TextObject* t = At(Current(), index);
  if (t != nullptr && t->Vertical) return VerticalizeString(text);
  return std::string(text);
}

// ---- Engine -----------------------------------------------------------------------------------

void TextEngine::EngineLock() {
  if (Locked) return;
  // No yield happens inside, so the frame never sees a half-made copy.
  LockedTexts = LiveTexts;
  Locked = true;
}

void TextEngine::EngineUnlock() {
  if (!Locked) return;
  // A preset loaded under the lock may have changed the count: the live list takes it over whole.
  ++liveEdits_;
  LiveTexts = std::move(LockedTexts);
  LockedTexts.clear();
  Locked = false;
  Renumber(LiveTexts);
  for (TextObject& t : LiveTexts) {
    // The particles start afresh: their spread is drawn again and the life cycle restarts from
    // one slot, which the next frame grows back to the particle count.
    t.Particle.SpreadInitialized = false;
    t.Particle.Particles.assign(1, ParticleState{});
  }
}

void TextEngine::EngineReset() {
  ++liveEdits_;
  LiveTexts.clear();
  LockedTexts.clear();
}

void TextEngine::EngineBuildEditorText() {
  for (TextObject& t : Current()) {
    std::string joined;
    for (std::size_t i = 0; i < t.Words.size(); ++i) {
      if (i > 0) joined.append(kCrLf);
      joined.append(t.Words[i]);
    }
    t.EditorText = std::move(joined);
  }
}

void TextEngine::EngineSetGlobalPerformanceClip(bool clip) noexcept {
  for (TextObject& t : Current()) t.GlobalPerformanceClip = clip;
}

// ---- Record transport -------------------------------------------------------------------------

std::int32_t TextEngine::TextAppend(const TextObject& record) {
  auto& list = Current();
  list.push_back(record);
  list.back().Index = static_cast<std::int32_t>(list.size());
  return list.back().Index;
}

void TextEngine::TextRemove(std::int32_t index) {
  auto& list = Current();
  if (At(list, index) == nullptr) return;
  BusyScope busy(*this);
  list.erase(list.begin() + (index - 1));
  Renumber(list);
}

TextObject TextEngine::TextRecordRead(std::int32_t index) const {
  const TextObject* t = At(Current(), index);
  return t != nullptr ? *t : TextObject{};
}

void TextEngine::TextRecordWrite(std::int32_t index, const TextObject& record) {
  TextObject* t = At(Current(), index);
  if (t == nullptr) return;
  *t = record;
  t->Index = index;
}

void TextEngine::PreserveRuntimeFields(std::int32_t index, TextObject& record) const {
  if (const TextObject* t = At(Current(), index)) ::lumivane::PreserveRuntimeFields(*t, record);
}

void TextEngine::ApplyTextFont(std::int32_t index, const TextFont& font) {
  if (TextObject* t = At(Current(), index)) {
    t->Font = font;
    t->RenderFont = RenderFontState{};  // the device font is made anew from the new face
  }
}

}  // namespace lumivane
