#include "core/TextObject.h"

namespace lumivane {

TextObject NewTextObject(const TextFont& font) {
  TextObject t;
  t.AlignX = "Centered";
  t.TextType = "Counter";
  t.Counter.ValueType = "Alphanumeric";
  t.Counter.Direction = "Random";
  t.Counter.Value = 1;
  t.Counter.Offset = 1;
  t.Counter.MinDigits = 0;
  t.Counter.MaxDigits = 9;
  t.Counter.LineBreak = 1;
  t.DictionaryCounter = t.Counter;
  t.SelfTime = 500;
  t.SequenceTime = 125;
  t.FONT_SIZE_ZERO = 52;
  t.Text3D = true;
  t.AlphaBlend = true;
  t.WordLength = 1024;
  t.WordsPerRow = 1;
  t.Cut = true;
  t.Rotation.LoopX = true;
  t.Rotation.LoopY = true;
  t.Rotation.LoopZ = true;
  t.Rotation.FineTuneRotationAngle = 1;
  t.BackGroundColor = 0;
  t.Extrude3D = 0;
  t.EnableRender = 1;
  // One particle is the text itself; with none it would draw nothing until the particle editor
  // first wrote its setup into the record.
  t.Particle.Count = 1;
  t.Font = font;
  return t;
}

void PreserveRuntimeFields(const TextObject& stored, TextObject& edited) {
  edited.LastUpdateTick = stored.LastUpdateTick;
  edited.PulseLastTick = stored.PulseLastTick;
  edited.LastPreviewTick = stored.LastPreviewTick;
  edited.SequenceBuffer = stored.SequenceBuffer;
  edited.LastSequenceTick = stored.LastSequenceTick;
  edited.SequenceCounter = stored.SequenceCounter;
  edited.DictionaryCounter.Value = stored.DictionaryCounter.Value;
  edited.Counter.Value = stored.Counter.Value;
  edited.PulseFontSizeCounter.Value = stored.PulseFontSizeCounter.Value;
  edited.TickerPosition = stored.TickerPosition;
  // The particles' runtime: their spread, sizes and lives.
  edited.Particle.SpreadInitialized = stored.Particle.SpreadInitialized;
  edited.Particle.SpreadCoords = stored.Particle.SpreadCoords;
  edited.Particle.PhaseSizeInitialized = stored.Particle.PhaseSizeInitialized;
  edited.Particle.Particles = stored.Particle.Particles;
  edited.Particle.LifeTimeApplied = stored.Particle.LifeTimeApplied;
  edited.RenderFont = stored.RenderFont;
  edited.Wave3D.CurrentPhase = stored.Wave3D.CurrentPhase;
  edited.Rotation.CurrentAngleX = stored.Rotation.CurrentAngleX;
  edited.Rotation.CurrentAngleY = stored.Rotation.CurrentAngleY;
  edited.Rotation.CurrentAngleZ = stored.Rotation.CurrentAngleZ;
  edited.CurrentText = stored.CurrentText;
  edited.SynchronizeText = stored.SynchronizeText;
  edited.DictionaryWords = stored.DictionaryWords;
  edited.DictionaryWordCount = stored.DictionaryWordCount;
}

}  // namespace lumivane
