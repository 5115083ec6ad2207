#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/TextFrame.h"
#include "core/TextObject.h"

namespace lumivane {

struct EngineContext;

// The text engine: owns the text list, keeps a second copy of it while the output is locked, and
// answers the render side through Render* (always the live list) and the editor side through
// Preview* and Engine* (the locked copy while locked, else the live list).
//
// All indices are one-based. An index out of range is quietly skipped: reads give empty or 0,
// writes do nothing. Nothing here allocates on the Render* path.
class TextEngine {
 public:
  explicit TextEngine(EngineContext& context);

  EngineContext& Context() noexcept { return context_; }

  // ---- Renderer side (live list) -------------------------------------------------------
  std::int32_t RenderGetTextCount() const noexcept { return static_cast<std::int32_t>(LiveTexts.size()); }
  const std::string& RenderGetCurrentText(std::int32_t index) const noexcept;
  const TextFont& RenderGetFont(std::int32_t index) const noexcept;
  const std::string& RenderGetTextBoxTextureFileName(std::int32_t index) const noexcept;
  // The colour shown now, as the engine stored it.
  std::int32_t RenderGetCurrentTextColor(std::int32_t index) const noexcept;
  // The text's colour as a device word, alpha 255.
  std::uint32_t RenderGetDXTextColor(std::int32_t index) const noexcept;
  std::int32_t RenderGetLockVideoToTextBox(std::int32_t index) const noexcept;
  // Whether any live text shows the video in its box, which takes the video off the full screen.
  bool RenderGetLockVideoToTexture() const noexcept;
  const std::string& RenderGetAlignX(std::int32_t index) const noexcept;
  float RenderGetExtrudeText(std::int32_t index) const noexcept;
  // The global performance clip wins over the text's own setting.
  bool RenderGetClip(std::int32_t index) const noexcept;
  // How many copies the text is drawn in: its particle count.
  std::int32_t RenderGetOutputMultiplier(std::int32_t index) const noexcept;
  const std::string& RenderGetShape3DType(std::int32_t index) const noexcept;
  bool RenderGetVertical(std::int32_t index) const noexcept;
  float RenderGetRotationCurrentAngleX(std::int32_t index) const noexcept;
  float RenderGetRotationCurrentAngleY(std::int32_t index) const noexcept;
  float RenderGetRotationCurrentAngleZ(std::int32_t index) const noexcept;
  void RenderSetRotationCurrentAngle(std::int32_t index, float x, float y, float z) noexcept;
  // The wave shape's running phase, in degrees.
  void RenderSetWaveCurrentPhase(std::int32_t index, std::int32_t phase) noexcept;
  // The mesh info of a text's model, as the renderer read it.
  void RenderSetMesh3DInfo(std::int32_t index, const std::string& info);
  // Forces one update of the live text at the next frame (a motion path event).
  void RenderSynchronizeText(std::int32_t index) noexcept;

  // ---- Per frame ---------------------------------------------------------------------------
  // One step of a live text for the frame: decides whether its update is due (only on copy 1),
  // and when it is draws its new size, colour, position and string; applies flash and sequence.
  // Copies above 1 only read what the update left. The not-due path does no string building and
  // allocates nothing.
  TextFrame TextFrameStep(std::int32_t index, std::int32_t particleIndex, const TextFrameInput& input);

  // Told at most every 250 ms per text what it shows, for the text markers of the editor.
  std::function<void(std::int32_t index, std::string_view text, std::int32_t color)> PreviewCaption;
  // A font face drawn at random, for texts that change face at each update.
  std::function<std::string()> RandomFontName;

  // ---- Operations on all texts (locked copy while locked, else live) -----------------------
  void PreviewFlashAll();
  void PreviewFlashOff();
  void PreviewFlashInvert();
  void PreviewFlashRandom();
  void PreviewSequenceRandom();
  void PreviewTimeShuffle();
  void PreviewTimeSynchronize();

  // ---- Editor side (locked copy while locked, else live) -------------------------------
  std::int32_t PreviewGetTextCount() const noexcept { return static_cast<std::int32_t>(Current().size()); }
  const std::string& PreviewGetCurrentText(std::int32_t index) const noexcept;
  struct BoxSize {
    std::int32_t Width = 0;
    std::int32_t Height = 0;
  };
  BoxSize PreviewGetTextBoxSize(std::int32_t index) const noexcept;
  void PreviewSetPosition(std::int32_t index, std::int32_t left, std::int32_t top, std::int32_t right,
                          std::int32_t bottom) noexcept;
  void PreviewSetTextColor(std::int32_t index, std::int32_t color) noexcept;
  void PreviewSetTextBackGroundColor(std::int32_t index, std::int32_t color) noexcept;
  bool PreviewText3D(std::int32_t index) const noexcept;
  // Moves a text to the end of the list (front) or to position 1 (back); the others keep their
  // order and every Index is renewed. The text's device objects travel with its record.
  void PreviewTextZOrder(std::int32_t index, bool toBack);
  // Each font name used by a text, once, in list order.
  std::vector<std::string> PreviewGetFontsUsed() const;
  // Sets the counter's value and the shown text; a hexadecimal counter reads `value` as hex.
  void PreviewSetTextCounter(std::int32_t index, std::string_view value);
  void PreviewSetPulseFontSizeCounterValue(std::int32_t index, double value) noexcept;
  // The string as the preview shows it: stacked one character per line for a vertical text.
  std::string PreviewBuildText(std::int32_t index, std::string_view text) const;

  // Loads the word list of text `index` from its dictionary file, through the cache (read again
  // with `force`), filtered by the text's word rules. A file that cannot be read gives the single
  // word "file not found". Reads the disk: never call it from the frame.
  void PreviewLoadDictionary(std::int32_t index, bool force);
  // A random word to start from, stepped once, and the ticker at its start.
  void PreviewResetDictionaryCounter(std::int32_t index);
  // Forgets every cached dictionary file.
  void ClearDictionaryCache() { dictionaryCache_.clear(); }

  // ---- Engine --------------------------------------------------------------------------
  // Freezes the output: editing goes to a copy until EngineUnlock hands it over.
  void EngineLock();
  void EngineUnlock();
  bool IsLocked() const noexcept { return Locked; }
  // Empties both lists.
  void EngineReset();
  // Rebuilds every EditorText from its Words, joined with CR LF.
  void EngineBuildEditorText();
  void EngineSetGlobalPerformanceClip(bool clip) noexcept;
  // Non-zero while the engine is in the middle of an operation that events may re-enter
  // (a load, a list rebuild): callers that would touch the list then stay away.
  int EngineGetState() const noexcept { return busy_; }

  // ---- Record transport ----------------------------------------------------------------
  // Appends a copy of `record` as the last text and answers its index.
  std::int32_t TextAppend(const TextObject& record);
  // Removes a text; those behind it move up and are renumbered.
  void TextRemove(std::int32_t index);
  // A whole copy of the record; an empty record for an index out of range.
  TextObject TextRecordRead(std::int32_t index) const;
  // Writes a whole record back; its Index is kept as the list position.
  void TextRecordWrite(std::int32_t index, const TextObject& record);
  // Copies the stored record's runtime fields into `record` (see the free function).
  void PreserveRuntimeFields(std::int32_t index, TextObject& record) const;
  void ApplyTextFont(std::int32_t index, const TextFont& font);

  // Direct read access for the engine's own passes and for tests.
  const std::vector<TextObject>& Live() const noexcept { return LiveTexts; }
  const std::vector<TextObject>& LockedCopy() const noexcept { return LockedTexts; }
  // The list that Preview*, Engine* and record transport work on now.
  // Any non-const access may change the live records, so it also retires the frame cache.
  std::vector<TextObject>& Current() noexcept {
    if (!Locked) ++liveEdits_;
    return Locked ? LockedTexts : LiveTexts;
  }
  // A live record to change directly (tests, the frame's own passes); retires the frame cache.
  TextObject* LiveRecord(std::int32_t index) noexcept {
    ++liveEdits_;
    return At(LiveTexts, index);
  }
  const std::vector<TextObject>& Current() const noexcept { return Locked ? LockedTexts : LiveTexts; }

  // Marks the engine busy for the lifetime of the scope.
  class BusyScope {
   public:
    explicit BusyScope(TextEngine& t) noexcept : t_(t) { ++t_.busy_; }
    ~BusyScope() { --t_.busy_; }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

   private:
    TextEngine& t_;
  };

 private:
  static const TextObject* At(const std::vector<TextObject>& list, std::int32_t index) noexcept {
    return index >= 1 && static_cast<std::size_t>(index) <= list.size() ? &list[static_cast<std::size_t>(index - 1)]
                                                                        : nullptr;
  }
  static TextObject* At(std::vector<TextObject>& list, std::int32_t index) noexcept {
    return index >= 1 && static_cast<std::size_t>(index) <= list.size() ? &list[static_cast<std::size_t>(index - 1)]
                                                                        : nullptr;
  }
  static void Renumber(std::vector<TextObject>& list) noexcept;

  struct DictionaryCacheEntry {
    std::string FileName;
    bool Binary = false;
    std::int32_t PieceLength = 0;  // the word length binary files were cut at
    std::vector<std::string> Lines;
  };
  const DictionaryCacheEntry& CachedDictionary(const TextObject& t, bool force);

  EngineContext& context_;
  bool Locked = false;
  std::vector<TextObject> LiveTexts;
  std::vector<TextObject> LockedTexts;
  std::vector<DictionaryCacheEntry> dictionaryCache_;
  int busy_ = 0;
  std::string display_;  // the shown string when it is not a record's own (vertical text)

  // What a text's last step answered, reused while the text is not due and nothing about it
  // changes: most texts in most frames. Small and contiguous, so 10,000 texts stay in cache
  // where their records would not. Retired wholesale by any change to the live list.
  struct FrameCache {
    std::uint64_t edits = 0;  // liveEdits_ when made; 0 = none
    Tick lastUpdate = 0;
    Tick lastPreview = 0;
    std::int32_t selfTime = 0;
    TextFrame frame;
  };
  std::vector<FrameCache> frameCache_;
  std::uint64_t liveEdits_ = 1;
};

}  // namespace lumivane
