// The per-frame step of a text and the operations on all texts at once.
#include <cmath>

#include "core/EngineContext.h"
#include "core/RandomSource.h"
#include "core/StringOps.h"
#include "core/TextGenerators.h"
#include "core/TimeScale.h"
#include "core/TextEngine.h"

namespace lumivane {

namespace {

constexpr std::string_view kIncrement = "Increment (+)";
constexpr std::string_view kDecrement = "Decrement (-)";
// The editor's markers show a text's string at most this often.
constexpr std::uint32_t kPreviewCaptionMs = 250;

double WholePart(double v) { return std::floor(v); }

// +1 or -1: a random number rounded to one decimal, +1 when at most 0.5.
double Sign(RandomSource& random) { return std::round(random.Rnd() * 10.0) / 10.0 <= 0.5 ? 1.0 : -1.0; }

std::uint8_t WrapByte(double v) {
  const auto whole = static_cast<std::int64_t>(std::floor(v));
  return static_cast<std::uint8_t>(((whole % 256) + 256) % 256);
}

// Pulses run by elapsed time; their offset grows with the time since the last step.
void PulseOffset(Counter& c, double amplitude, double divisor, float timeScale, std::int32_t selfTime,
                 std::uint32_t sinceLast) {
  const double period = static_cast<double>(timeScale) * selfTime;
  if (period != 0.0) c.Offset = (amplitude / divisor) / period * sinceLast;  // else the old offset stays
}

}  // namespace

TextFrame TextEngine::TextFrameStep(std::int32_t index, std::int32_t particleIndex, const TextFrameInput& input) {
  TextFrame frame;
  TextObject* tp = At(LiveTexts, index);
  if (tp == nullptr) return frame;
  const float timeScale = context_.TimeScale;
  const Tick now = context_.clock.Now();

  // Not due and nothing changed since the last step: the same answer, from the cache.
  if (frameCache_.size() != LiveTexts.size()) frameCache_.assign(LiveTexts.size(), FrameCache{});
  FrameCache& cache = frameCache_[static_cast<std::size_t>(index - 1)];
  if (particleIndex == 1 && cache.edits == liveEdits_ &&
      !PeriodElapsed(now, cache.lastUpdate, cache.selfTime, timeScale) &&
      (!PreviewCaption || TicksSince(now, cache.lastPreview) <= kPreviewCaptionMs))
    return cache.frame;

  TextObject& t = *tp;
  // Texts are stepped in list order: ask for the next record's frame fields now, so their memory
  // is on its way while this one is worked on.
  if (static_cast<std::size_t>(index) < LiveTexts.size()) {
    const TextObject& next = LiveTexts[static_cast<std::size_t>(index)];
    __builtin_prefetch(&next.SelfTime);
    __builtin_prefetch(&next.Left);
    __builtin_prefetch(&next.Text3D);
    __builtin_prefetch(&next.Particle.Count);
    __builtin_prefetch(&next.CurrentText);
    __builtin_prefetch(&next.OffsetX);
    __builtin_prefetch(&next.EnableRender);
  }
  RandomSource& random = context_.random;
  const Clock& clock = context_.clock;

  // A text that never showed anything is due at once, also on a clock that starts at 0 (a
  // headless run), where "now minus 0" is not yet large.
  bool due = PeriodElapsed(now, t.LastUpdateTick, t.SelfTime, timeScale) ||
             (t.LastUpdateTick == 0 && t.CurrentText.empty());
  if (t.SynchronizeText) {
    // A motion path event forces one update.
    due = true;
    t.SynchronizeText = false;
  }
  const bool flat = !t.Text3D;
  const double sizeRange = std::fabs(t.RandomizeFontSize);
  // Pulses run on the time since their last step; the first step of a pulse starts it.
  auto sincePulse = [&]() -> std::uint32_t {
    if (t.PulseLastTick == 0) t.PulseLastTick = now;
    return TicksSince(now, t.PulseLastTick);
  };

  auto manualPosition = [&](float& x, float& y) {
    const double mx = input.RandomizeXMin, my = input.RandomizeYMin;
    if (mx != 0) x = static_cast<float>((std::fabs(t.RandomizeX) + mx / 2) * 2 * input.BackBufferWidth / std::fabs(mx));
    if (my != 0) y = static_cast<float>((std::fabs(t.RandomizeY) + my / 2) * -2 * input.BackBufferHeight / std::fabs(my));
  };
  // Size: a pulse or a manual size is followed in every frame, so it runs smooth.
  auto pulseOrManualSize = [&](bool update, double sign) {
    // Between updates only a pulse or a manual size changes anything: leave the record alone
    // otherwise (this runs for every text in every frame).
    if (!update && !t.PulseFontSize && t.RandomizeFontSizeManual != 1) return;
    Counter& p = t.PulseFontSizeCounter;
    if (flat) {
      double size = t.RenderFont.Font.Size;
      if (t.PulseFontSize) {
        PulseOffset(p, sizeRange, 10.0, timeScale, t.SelfTime, sincePulse());
        PulseStep(p, random);
        if (p.Value > sizeRange) p.Direction = kDecrement;
        if (p.Value <= 0) p.Direction = kIncrement;
        size = t.FONT_SIZE_ZERO + p.Value;
      } else if (update) {
        size = t.FONT_SIZE_ZERO + sign * random.Rnd() * sizeRange;
      }
      if (t.RandomizeFontSizeManual == 1) size = t.FONT_SIZE_ZERO + sizeRange;
      t.RenderFont.Font.Size = static_cast<float>(size);
    } else {
      double scale = t.FontScale;
      if (t.PulseFontSize) {
        PulseOffset(p, sizeRange, 100.0, timeScale, t.SelfTime, sincePulse());
        PulseStep(p, random);
        if (p.Value > sizeRange / 10) p.Direction = kDecrement;
        if (p.Value <= 0) p.Direction = kIncrement;
        scale = 1 + p.Value;
      } else if (update) {
        scale = std::fabs(sign * random.Rnd() * sizeRange / 10 + 1);
      }
      if (t.RandomizeFontSizeManual == 1) scale = sizeRange / 100 + 1;
      t.FontScale = static_cast<float>(scale);
    }
  };

  float x = t.OffsetX, y = t.OffsetY;
  std::string_view shown;
  if (particleIndex == 1 && due) {
    if (t.RandomizeTime) t.SelfTime = static_cast<std::int32_t>(WholePart(random.Rnd() * t.SelfTimeMax));
    const double sizeSign = Sign(random);

    TextFont& font = t.RenderFont.Font;
    font.Bold = t.Font.Bold;
    font.Italic = t.Font.Italic;
    font.Underline = t.Font.Underline;
    font.Strikethrough = t.Font.Strikethrough;
    // Assigned in place: a conditional expression would copy the name into a temporary first.
    if (t.RandomizeFont && RandomFontName)
      font.Name = RandomFontName();
    else
      font.Name = t.Font.Name;

    if (t.PulseFontSizeCounter.Direction.empty()) t.PulseFontSizeCounter.Direction = kIncrement;
    if (t.RandomizeFontSize == 0) t.PulseFontSizeCounter.Value = 0;
    pulseOrManualSize(true, sizeSign);

    // Colour.
    const auto c = static_cast<std::uint32_t>(t.Color);
    double channel[3] = {static_cast<double>(c & 0xFF), static_cast<double>((c >> 8) & 0xFF),
                         static_cast<double>((c >> 16) & 0xFF)};
    const double colourRange = std::abs(t.RandomizeColor);
    const double s = Sign(random);
    if (!t.PulseFontColor) {
      for (double& ch : channel) ch += s * random.Rnd() * colourRange;
      t.PulseFontColorCounter.Value = 0;
    } else {
      Counter& p = t.PulseFontColorCounter;
      if (p.Direction.empty()) p.Direction = kIncrement;
      p.Offset = 15;
      PulseStep(p, random);
      for (double& ch : channel) ch += p.Value;
      if (p.Value >= colourRange) p.Direction = kDecrement;
      if (p.Value <= 0) p.Direction = kIncrement;
    }
    t.CurrentColor = static_cast<std::int32_t>(WrapByte(channel[0]) | (WrapByte(channel[1]) << 8) |
                                               (static_cast<std::uint32_t>(WrapByte(channel[2])) << 16));

    // The string: generator, case modes; the shown text is stored in CurrentText.
    BuildText(t, random, clock);

    // Position.
    if (t.RandomizeXYManual == 1) {
      manualPosition(x, y);
    } else {
      x = static_cast<float>(Sign(random) * random.Rnd() * std::fabs(t.RandomizeX));
      const double ySign = std::round(random.Rnd() * 10.0) / 10.0 > 0.5 ? 1.0 : -1.0;
      y = static_cast<float>(ySign * random.Rnd() * std::fabs(t.RandomizeY));
    }
    t.OffsetX = x;
    t.OffsetY = y;
    t.LastUpdateTick = now;
    t.SequenceBuffer = t.CurrentText;
    shown = t.CurrentText;
    frame.Updated = true;
  } else {
    if (t.RandomizeColor == 0) t.CurrentColor = t.Color;
    if (t.RandomizeXYManual == 1) {
      manualPosition(x, y);
      if (particleIndex == 1) {
        t.OffsetX = x;
        t.OffsetY = y;
      }
    }
    if (particleIndex == 1) pulseOrManualSize(false, 1.0);
    // A flashing text lights up only in the frame of its update.
    shown = t.FlashText ? std::string_view() : std::string_view(t.CurrentText);
  }

  // Sequence: "f", "fa", "fat", ... one more character every sequence step.
  if (t.SequenceText) {
    if (!PeriodElapsed(now, t.LastSequenceTick, t.SequenceTime, timeScale)) {
      shown = Utf8Prefix(t.SequenceBuffer, static_cast<std::size_t>(std::max(0, t.SequenceCounter)));
    } else {
      if (t.RandomizeSequence) t.SequenceTime = static_cast<std::int32_t>(WholePart(random.Rnd() * t.SequenceTimeMax));
      t.LastSequenceTick = now;
      // The counter runs one past the length, so the whole string stays for two steps; an empty
      // string has nothing to build up and keeps it at 0.
      const std::size_t length = CharacterCount(shown);
      if (length > 0 && static_cast<std::size_t>(std::max(0, t.SequenceCounter)) <= length) {
        t.SequenceCounter += 1;
        shown = Utf8Prefix(t.SequenceBuffer, static_cast<std::size_t>(t.SequenceCounter));
      } else {
        t.SequenceCounter = 0;
      }
    }
  }

  // A flat text's colour goes to its particle slot; it changes only at an update.
  if (frame.Updated && flat && t.Particle.Count == 1 && !t.Particle.Particles.empty())
    t.Particle.Particles[0].Color = static_cast<std::uint32_t>(t.CurrentColor);

  // The pulse clock: only texts that pulse need it (and touching it costs every frame).
  if (particleIndex == 1 && (frame.Updated || t.PulseFontSize || t.PulseFontColor)) t.PulseLastTick = now;
  if (t.Vertical && !shown.empty()) {
    VerticalizeInto(shown, display_);
    shown = display_;
  }

  if (PreviewCaption && particleIndex == 1 && TicksSince(now, t.LastPreviewTick) >= kPreviewCaptionMs + 1) {
    PreviewCaption(index, shown, t.CurrentColor);
    t.LastPreviewTick = now;
  }

  frame.Text = shown;
  frame.Font = &t.RenderFont.Font;
  frame.OffsetX = x;
  frame.OffsetY = y;
  const float scale = flat ? 1.0f : t.FontScale;
  frame.ScaleX = frame.ScaleY = frame.ScaleZ = scale;
  frame.Color = t.CurrentColor;
  frame.Left = static_cast<float>(t.Left) + x;
  frame.Right = static_cast<float>(t.Right) + x;
  frame.Top = static_cast<float>(t.Top) + y;
  frame.Bottom = static_cast<float>(t.Bottom) + y;
  frame.Rotation = &t.Rotation;
  frame.AlignX = t.AlignX;
  frame.Clip = t.GlobalPerformanceClip || t.Clip;
  frame.Enabled = t.EnableRender == 1;

  // A text whose steps between updates change nothing can answer from the cache until it is due.
  const bool steady = particleIndex == 1 && !t.PulseFontSize && !t.PulseFontColor &&
                      t.RandomizeFontSizeManual != 1 && t.RandomizeXYManual != 1 && !t.SequenceText &&
                      !t.Vertical && !t.SynchronizeText && !(t.LastUpdateTick == 0 && t.CurrentText.empty()) &&
                      (t.RandomizeColor != 0 || t.CurrentColor == t.Color);
  if (steady) {
    cache.edits = liveEdits_;
    cache.lastUpdate = t.LastUpdateTick;
    cache.lastPreview = t.LastPreviewTick;
    cache.selfTime = t.SelfTime;
    cache.frame = frame;
    cache.frame.Updated = false;
    // A flashing text is lit only in its update frame.
    if (t.FlashText) cache.frame.Text = std::string_view();
  } else if (particleIndex == 1) {
    cache.edits = 0;
  }
  return frame;
}

// ---- All texts ------------------------------------------------------------------------------------

void TextEngine::PreviewFlashAll() {
  for (TextObject& t : Current()) {
    t.FlashText = true;
    t.SequenceText = false;
  }
}

void TextEngine::PreviewFlashOff() {
  for (TextObject& t : Current()) {
    t.FlashText = false;
    t.SequenceText = false;
  }
}

void TextEngine::PreviewFlashInvert() {
  for (TextObject& t : Current()) {
    t.FlashText = !t.FlashText;
    t.SequenceText = !t.FlashText;  // each text does one or the other
  }
}

void TextEngine::PreviewFlashRandom() {
  for (TextObject& t : Current()) {
    t.FlashText = context_.random.Rnd() < 0.5;
    t.SequenceText = !t.FlashText;
  }
}

void TextEngine::PreviewSequenceRandom() {
  for (TextObject& t : Current()) {
    t.SequenceText = context_.random.Rnd() < 0.5;
    t.FlashText = !t.SequenceText;
  }
}

void TextEngine::PreviewTimeShuffle() {
  RandomSource& random = context_.random;
  for (TextObject& t : Current()) {
    t.SelfTime = static_cast<std::int32_t>(WholePart(random.Rnd() * 1000));
    t.SequenceTime = static_cast<std::int32_t>(WholePart(random.Rnd() * 1000));
    // Particle timers only on the live list, not under the lock: kept as it always was.
    if (!Locked && t.Particle.Count >= 2) {
      if (t.Particle.SelfTime != 0) t.Particle.SelfTime = static_cast<std::int32_t>(WholePart(random.Rnd() * 3000));
      if (t.Particle.LifeTime != 0) t.Particle.LifeTime = static_cast<std::int32_t>(WholePart(random.Rnd() * 3000));
    }
  }
}

void TextEngine::PreviewTimeSynchronize() {
  auto& list = Current();
  if (list.empty()) return;
  double selfSum = 0, sequenceSum = 0, particleSelf = 0, particleLife = 0;
  int particleTexts = 0;
  for (const TextObject& t : list) {
    selfSum += t.SelfTime;
    sequenceSum += t.SequenceTime;
    if (t.Particle.Count >= 2) {
      particleSelf += t.Particle.SelfTime;
      particleLife += t.Particle.LifeTime;
      ++particleTexts;
    }
  }
  const auto n = static_cast<double>(list.size());
  for (TextObject& t : list) {
    t.SelfTime = static_cast<std::int32_t>(selfSum / n);
    t.SequenceTime = static_cast<std::int32_t>(sequenceSum / n);
    if (!Locked && particleTexts > 0 && t.Particle.Count >= 2) {
      t.Particle.SelfTime = static_cast<std::int32_t>(particleSelf / particleTexts);
      t.Particle.LifeTime = static_cast<std::int32_t>(particleLife / particleTexts);
    }
  }
}

}  // namespace lumivane
