#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/Clock.h"
#include "core/StringList.h"

namespace lumivane {

// Field names are those of the show file's elements, so they keep their spelling, misspellings
// included. Ticks are 32-bit milliseconds of the program clock.

// A stepping number: the numeric counter of a text, the word cursor of a dictionary, the state of
// a pulse.
struct Counter {
  double Value = 0.0;
  double Offset = 0.0;               // the step
  std::string ValueType;             // "Integer", "Real", "Hexadecimal", "Binary", "Alphanumeric", "Alpha",
                                     // "Special Characters", "HH:MM:SS", "YYYY-MM-DD", "DD.MM.YYYY"
  std::string Direction;             // "Increment (+)", "Decrement (-)", "Random", "Hold"
  std::int32_t MinDigits = 0;
  std::int32_t MaxDigits = 0;
  std::int32_t MinValue = 0;
  std::int32_t MaxValue = 0;
  std::int32_t LineBreak = 0;
  friend bool operator==(const Counter&, const Counter&) = default;
};

struct Rotation {
  float AngleX = 0.0f;  // degrees per step when looping, else a fixed angle
  float AngleY = 0.0f;
  float AngleZ = 0.0f;
  bool LoopX = false;
  bool LoopY = false;
  bool LoopZ = false;
  bool World = false;  // turn around the screen centre instead of the text's own
  float CurrentAngleX = 0.0f;
  float CurrentAngleY = 0.0f;
  float CurrentAngleZ = 0.0f;
  std::int32_t FineTuneRotationAngle = 0;
  friend bool operator==(const Rotation&, const Rotation&) = default;
};

struct Circle3D {
  std::int32_t Radius = 0;
  std::int32_t Smoothness = 0;
  std::int32_t Tiling = 0;
  friend bool operator==(const Circle3D&, const Circle3D&) = default;
};

struct Wave3D {
  std::int32_t Amplitude = 0;
  std::int32_t Size = 0;
  std::int32_t Phase = 0;
  std::int32_t CurrentPhase = 0;  // runtime, degrees
  std::int32_t Tiling = 0;
  friend bool operator==(const Wave3D&, const Wave3D&) = default;
};

struct Spiral3D {
  std::int32_t Radius = 0;
  std::int32_t RevolutionCount = 0;
  std::int32_t Smoothness = 0;
  std::int32_t Tiling = 0;
  friend bool operator==(const Spiral3D&, const Spiral3D&) = default;
};

struct TextFont {
  std::string Name;
  float Size = 0.0f;
  bool Bold = false;
  bool Italic = false;
  bool Underline = false;
  bool Strikethrough = false;
  friend bool operator==(const TextFont&, const TextFont&) = default;
};

// A reference to an object the render device owns (a texture, a mesh, a device font). 0 is none.
// The engine only carries these; it never looks inside.
struct DeviceRef {
  std::uint32_t Id = 0;
  friend bool operator==(const DeviceRef&, const DeviceRef&) = default;
};

// The font a text was last drawn with, as its update chose it (face, size, style), and the
// device's object for it, which the renderer makes on demand.
struct RenderFontState {
  TextFont Font;
  DeviceRef Device;
  friend bool operator==(const RenderFontState&, const RenderFontState&) = default;
};

// The state of one slider of the particle editor: value, direction, selection and play mode.
struct PhaseParameter {
  std::int32_t Value = 0;
  std::int32_t Direction = 0;
  std::int32_t Start = 0;
  std::int32_t Length = 0;
  std::string PlayBackMode;  // "I" inward, "O" outward, "L" loop
  friend bool operator==(const PhaseParameter&, const PhaseParameter&) = default;
};

struct SpreadCoord {
  std::int32_t X = 0;
  std::int32_t Y = 0;
  friend bool operator==(const SpreadCoord&, const SpreadCoord&) = default;
};

struct ParticleState {
  std::int32_t Direction = 0;  // +1 or -1; 0 until the first life step
  float RedStep = 0.0f;
  float GreenStep = 0.0f;
  float BlueStep = 0.0f;
  std::int32_t Life = 0;
  std::uint32_t Color = 0;  // device colour this frame
  Tick LastTick = 0;
  float Size = 0.0f;
  friend bool operator==(const ParticleState&, const ParticleState&) = default;
};

// The particle cloud of one text: N copies of it with life, spread, size and rotation.
struct ParticleSystem {
  std::int32_t Count = 0;
  std::int32_t SelfTime = 0;
  std::string SpreadMode;  // "Random", "Cross", "Diagonal", "Spiral", "Circle", else a grid
  bool SpreadInitialized = false;
  std::vector<SpreadCoord> SpreadCoords;
  bool SpreadUniform = false;
  PhaseParameter SpreadX;
  PhaseParameter SpreadY;
  bool AngleUniform = false;
  PhaseParameter AngleTheta;
  PhaseParameter AnglePhi;
  bool PhaseRotateUniform = false;
  PhaseParameter PhaseRotate;
  bool PhaseSizeInitialized = false;
  bool PhaseSizeUniform = false;
  PhaseParameter PhaseSize;
  std::int32_t LifeTime = 0;  // ms, 0 = forever
  std::string LifeMode;       // "L", "O", "I", "H"
  std::vector<ParticleState> Particles;
  std::int32_t LifeTimeApplied = 0;
  friend bool operator==(const ParticleSystem&, const ParticleSystem&) = default;
};

// One entry of the text list: what it shows, how it looks, where it stands, and the runtime
// state of its timers. Fields in their declared order.
struct TextObject {
  std::int32_t Index = 0;  // one-based position, rewritten by every list operation
  std::int32_t Color = 0;  // 0x00BBGGRR
  std::string AlignX;      // "Centered", "Left Justify", "Right Justify"
  std::string TextType;    // "Counter", "Dictionary", "CustomInput"
  std::int32_t SelfTime = 0;
  bool RandomizeTime = false;
  std::int32_t SelfTimeMax = 0;
  Tick LastUpdateTick = 0;
  bool Vertical = false;
  bool Clip = false;
  float RandomizeX = 0.0f;
  float RandomizeY = 0.0f;
  std::int32_t RandomizeXYManual = 0;
  float RandomizeFontSize = 0.0f;
  std::int32_t RandomizeFontSizeManual = 0;
  std::int32_t RandomizeColor = 0;
  float FONT_SIZE_ZERO = 0.0f;
  bool FlashText = false;
  std::int32_t SequenceCounter = 0;
  std::string SequenceBuffer;
  Tick LastSequenceTick = 0;
  std::int32_t SequenceTime = 0;
  bool RandomizeSequence = false;
  std::int32_t SequenceTimeMax = 0;
  bool SequenceText = false;
  std::int32_t Left = 0;
  std::int32_t Top = 0;
  std::int32_t Right = 0;
  std::int32_t Bottom = 0;
  std::string FileName;  // dictionary file
  StringList DictionaryWords;
  std::int32_t DictionaryWordCount = 0;
  StringList Words;  // custom input lines
  std::int32_t WordCount = 0;
  std::int32_t WordLength = 0;
  std::string ExcludeCharacters;
  bool ExactWordLength = false;
  bool LowerCase = false;
  bool UpperCase = false;
  bool MixedCase1 = false;
  bool MixedCase2 = false;
  std::int32_t LineBreak = 0;
  std::int32_t WordsPerRow = 0;
  bool Binary = false;
  bool EditorSplitLines = false;
  ::lumivane::Counter DictionaryCounter;
  std::string EditorText;  // lines joined by CR LF
  std::string WordStart;
  std::string WordEnd;
  bool Cut = false;
  ::lumivane::Counter Counter;
  TextFont Font;
  RenderFontState RenderFont;
  ::lumivane::Rotation Rotation;
  bool AlphaBlend = false;
  std::int32_t BackGroundColor = 0;
  bool Text3D = false;
  bool RandomizeFont = false;
  float Extrude3D = 0.0f;
  bool PulseFontSize = false;
  ::lumivane::Counter PulseFontSizeCounter;
  Tick PulseLastTick = 0;
  bool PulseFontColor = false;
  ::lumivane::Counter PulseFontColorCounter;
  ParticleSystem Particle;
  bool TextTitleMode = false;
  bool TextTickerMode = false;
  std::int32_t TickerPosition = 0;
  std::string CurrentText;
  std::string Shape3DType;  // "Circle", "Wave", "Spiral", "Custom" or empty
  std::int32_t Shape3DRenderMesh = 0;
  ::lumivane::Circle3D Circle3D;
  ::lumivane::Wave3D Wave3D;
  ::lumivane::Spiral3D Spiral3D;
  float FontScale = 0.0f;
  float OffsetX = 0.0f;
  float OffsetY = 0.0f;
  Tick LastPreviewTick = 0;
  std::int32_t CurrentColor = 0;
  bool GlobalPerformanceClip = false;
  std::string TextBoxTextureFileName;
  std::array<DeviceRef, 2> TextBoxTexture{};
  std::int32_t VideoLockToTextBox = 0;
  DeviceRef Mesh3D;
  float Mesh3DZ = 0.0f;
  std::string Mesh3DFileName;
  std::string Mesh3DInfo;
  std::int32_t Mesh3DPreserveTextures = 0;
  std::int32_t EnableRender = 0;
  bool SynchronizeText = false;

  friend bool operator==(const TextObject&, const TextObject&) = default;
};

// A new text as the editor makes it: a random alphanumeric counter of up to nine characters,
// centred, updating every 500 ms, in `font`.
TextObject NewTextObject(const TextFont& font);

// Copies from `stored` into `edited` the fields that belong to the running show rather than to
// the editor (timers, counters, sequence and ticker state, particles' runtime, the device font,
// the shown string, the loaded words), so an edit never resets a running text.
void PreserveRuntimeFields(const TextObject& stored, TextObject& edited);

}  // namespace lumivane
