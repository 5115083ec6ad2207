// The frame's last passes (the effect's rectangle, invert, mask, fade) as one compute pass over
// the back buffer. Drawn as blended full-screen rectangles they cost a GPU's blending units a read
// and a write of every pixel each; the compute pass reads and writes each pixel once, through the
// shader cores.
#include <algorithm>
#include <cmath>

#include "render/GlDevice.h"

namespace lumivane {

namespace {

// The shader's local size below.
constexpr int kGroupWidth = 16, kGroupHeight = 8;

const char* const kFinishSource = R"(#version 430 core
layout(local_size_x = 16, local_size_y = 8) in;
layout(rgba8, binding = 0) uniform restrict image2D frame;
layout(binding = 0) uniform sampler2D maskPicture;
layout(binding = 1) uniform sampler2D layerPicture;
uniform int layer;
uniform vec4 layerRect;  // left, top, right, bottom
uniform vec2 layerExtent;
uniform int layerTextured;
uniform vec4 layerColor;
uniform ivec2 layerBlend;
uniform int invert;
uniform int mask;
uniform vec3 tint;
uniform ivec2 size;

vec3 Eight(vec3 c) { return floor(clamp(c, 0.0, 1.0) * 255.0 + 0.5) / 255.0; }

// The blend codes (Blend in RenderDevice.h).
const int ZERO = 1, SRC_COLOR = 3, INV_SRC_COLOR = 4, SRC_ALPHA = 5, INV_SRC_ALPHA = 6, DEST_ALPHA = 7,
          INV_DEST_ALPHA = 8, DEST_COLOR = 9, INV_DEST_COLOR = 10, SRC_ALPHA_SAT = 11, BOTH_SRC_ALPHA = 12,
          BOTH_INV_SRC_ALPHA = 13;

// A blend code's factor, as the draws map them; the buffer's alpha is always 1.
vec3 Factor(int code, vec4 s, vec4 d) {
  switch (code) {
    case ZERO: return vec3(0.0);
    case SRC_COLOR: return s.rgb;
    case INV_SRC_COLOR: return 1.0 - s.rgb;
    case SRC_ALPHA: return vec3(s.a);
    case INV_SRC_ALPHA: return vec3(1.0 - s.a);
    case DEST_ALPHA: return vec3(d.a);
    case INV_DEST_ALPHA: return vec3(1.0 - d.a);
    case DEST_COLOR: return d.rgb;
    case INV_DEST_COLOR: return 1.0 - d.rgb;
    case SRC_ALPHA_SAT: return vec3(min(s.a, 1.0 - d.a));
    default: return vec3(1.0);
  }
}

void main() {
  ivec2 p = ivec2(gl_GlobalInvocationID.xy);
  if (p.x >= size.x || p.y >= size.y) return;
  vec4 d = imageLoad(frame, p);
  vec2 centre = vec2(p) + 0.5;
  if (layer != 0 && all(greaterThanEqual(centre, layerRect.xy)) && all(lessThan(centre, layerRect.zw))) {
    vec4 s = layerColor;
    if (layerTextured != 0) {
      vec4 t = texture(layerPicture, (centre - layerRect.xy) / (layerRect.zw - layerRect.xy) * layerExtent);
      s = vec4(t.rgb * layerColor.rgb, t.a);
    }
    s = clamp(s, 0.0, 1.0);
    vec3 sf, df;
    if (layerBlend.x == BOTH_SRC_ALPHA) {  // both factors from the source alpha
      sf = vec3(s.a);
      df = vec3(1.0 - s.a);
    } else if (layerBlend.x == BOTH_INV_SRC_ALPHA) {
      sf = vec3(1.0 - s.a);
      df = vec3(s.a);
    } else {
      sf = Factor(layerBlend.x, s, d);
      df = layerBlend.y == SRC_ALPHA_SAT ? vec3(1.0) : Factor(layerBlend.y, s, d);  // saturate is a source factor only
    }
    d.rgb = Eight(s.rgb * sf + d.rgb * df);
  }
  // White blended with the inverse of the picture on both sides: 1 - d + d (1 - d).
  if (invert != 0) d.rgb = Eight(1.0 - d.rgb * d.rgb);
  vec3 m = tint;
  // The mask rectangle runs from a pixel outside one corner to a pixel outside the other.
  if (mask != 0) m *= texture(maskPicture, (vec2(p) + 1.5) / vec2(size + 2)).rgb;
  imageStore(frame, p, vec4(d.rgb * m, d.a));
}
)";
static_assert(Blend::Zero == 1 && Blend::SrcColor == 3 && Blend::InvSrcColor == 4 && Blend::SrcAlpha == 5 &&
                  Blend::InvSrcAlpha == 6 && Blend::DestAlpha == 7 && Blend::InvDestAlpha == 8 &&
                  Blend::DestColor == 9 && Blend::InvDestColor == 10 && Blend::SrcAlphaSat == 11 &&
                  Blend::BothSrcAlpha == 12 && Blend::BothInvSrcAlpha == 13,
              "the shader's blend codes are the device's");

// The rectangle is blended here only under the stage operations and states every layer draws
// with (the texture times the colour, the texture's alpha, all channels written, no depth test
// that z = 0 could fail); anything else is left to the draws.
bool PlainLayerState(const std::uint32_t* render, const std::uint32_t* stage) {
  auto r = [&](RenderState state) { return render[static_cast<std::uint32_t>(state)]; };
  auto t = [&](TextureStageState state) { return stage[static_cast<std::uint32_t>(state)]; };
  const std::uint32_t colorArg2 = t(TextureStageState::COLORARG2);
  const bool diffuse = colorArg2 == TextureArg::Diffuse || colorArg2 == TextureArg::Current;
  const std::uint32_t depth = r(RenderState::ZFUNC);
  constexpr std::uint32_t rgb = ColorWrite::Red | ColorWrite::Green | ColorWrite::Blue;
  return t(TextureStageState::COLOROP) == TextureOp::Modulate && t(TextureStageState::COLORARG1) == TextureArg::Texture &&
         diffuse && t(TextureStageState::ALPHAOP) == TextureOp::SelectArg1 &&
         t(TextureStageState::ALPHAARG1) == TextureArg::Texture && (r(RenderState::COLORWRITEENABLE) & rgb) == rgb &&
         (r(RenderState::ZENABLE) == 0 || depth == ZFunc::LessEqual || depth == ZFunc::Always);
}

}  // namespace

bool GlDevice::MakeFinishProgram() {
  // Compute shaders and image load/store came with OpenGL 4.3.
  if (epoxy_gl_version() < 43) return false;
  const GLuint shader = CompileShader(GL_COMPUTE_SHADER, kFinishSource);
  if (shader == 0) return false;
  const GLuint program = glCreateProgram();
  glAttachShader(program, shader);
  glLinkProgram(program);
  glDeleteShader(shader);
  GLint linked = GL_FALSE;
  glGetProgramiv(program, GL_LINK_STATUS, &linked);
  if (linked != GL_TRUE) {
    glDeleteProgram(program);
    return false;
  }
  finish_.name = program;
  finish_.invert = glGetUniformLocation(program, "invert");
  finish_.mask = glGetUniformLocation(program, "mask");
  finish_.tint = glGetUniformLocation(program, "tint");
  finish_.size = glGetUniformLocation(program, "size");
  finish_.layer = glGetUniformLocation(program, "layer");
  finish_.layerRect = glGetUniformLocation(program, "layerRect");
  finish_.layerExtent = glGetUniformLocation(program, "layerExtent");
  finish_.layerTextured = glGetUniformLocation(program, "layerTextured");
  finish_.layerColor = glGetUniformLocation(program, "layerColor");
  finish_.layerBlend = glGetUniformLocation(program, "layerBlend");
  if (FinishProgramWorks()) return true;
  glDeleteProgram(finish_.name);
  finish_ = FinishProgram{};
  return false;
}

// A driver that runs the pass wrongly must never reach the output: the pass is tried once on
// known pixels (a colour rectangle blended over half of them, the inversion and a tint) and kept
// only when it gives what the draws give, within a step of 8 bits.
bool GlDevice::FinishProgramWorks() {
  constexpr int kPixels = 4;
  const std::uint8_t in[kPixels * 4] = {0, 0, 0, 255, 255, 255, 255, 255, 128, 64, 32, 255, 10, 200, 90, 255};
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, kPixels, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, in);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glBindTexture(GL_TEXTURE_2D, 0);
  OutputFinish probe;
  // Grey 0x80 added over the two pixels on the right (ONE over ONE).
  probe.Layer = {2, 0, 4, 1, 1, 1, 0, 0xFF808080u, Blend::One, Blend::One};
  probe.Invert = true;
  probe.Tint = 0x80FF40u;
  RunFinish(texture, kPixels, 1, probe, nullptr, nullptr);
  std::uint8_t out[kPixels * 4] = {};
  glBindTexture(GL_TEXTURE_2D, texture);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, out);
  glBindTexture(GL_TEXTURE_2D, 0);
  glDeleteTextures(1, &texture);
  const double tint[3] = {128, 255, 64};
  for (int i = 0; i < kPixels * 4; ++i) {
    const int channel = i % 4;
    if (channel == 3) continue;
    double d = in[i] / 255.0;
    if (i / 4 >= 2) d = std::min(1.0, std::round((d + 128 / 255.0) * 255.0) / 255.0);
    const double inverted = std::round((1.0 - d * d) * 255.0);
    const double expected = inverted * tint[channel] / 255.0;
    if (std::abs(out[i] - expected) > 1.0) return false;
  }
  return true;
}

void GlDevice::RunFinish(GLuint image, int width, int height, const OutputFinish& finish, const Texture* mask,
                         const Texture* picture) {
  auto unit = [](std::uint32_t c, int shift) { return static_cast<float>((c >> shift) & 0xFF) / 255.0f; };
  const BlendedRectangle& l = finish.Layer;
  const bool layer = l.SourceBlend != 0 || l.TargetBlend != 0;
  glUseProgram(finish_.name);
  glUniform1i(finish_.layer, layer ? 1 : 0);
  if (layer) {
    glUniform4f(finish_.layerRect, l.Left, l.Top, l.Right, l.Bottom);
    glUniform2f(finish_.layerExtent, l.U, l.V);
    glUniform1i(finish_.layerTextured, picture != nullptr ? 1 : 0);
    glUniform4f(finish_.layerColor, unit(l.Color, 16), unit(l.Color, 8), unit(l.Color, 0), unit(l.Color, 24));
    glUniform2i(finish_.layerBlend, static_cast<GLint>(l.SourceBlend), static_cast<GLint>(l.TargetBlend));
  }
  glUniform1i(finish_.invert, finish.Invert ? 1 : 0);
  glUniform1i(finish_.mask, mask != nullptr ? 1 : 0);
  glUniform3f(finish_.tint, unit(finish.Tint, 16), unit(finish.Tint, 8), unit(finish.Tint, 0));
  glUniform2i(finish_.size, width, height);
  // Both pictures are read as the stage's sampler reads them.
  ApplySampler(state_);
  glBindSampler(1, sampler_);
  glActiveTexture(GL_TEXTURE1);
  glBindTexture(GL_TEXTURE_2D, picture != nullptr ? picture->name : 0);
  glActiveTexture(GL_TEXTURE0);
  glBindTexture(GL_TEXTURE_2D, mask != nullptr ? mask->name : 0);
  glBindImageTexture(0, image, 0, GL_FALSE, 0, GL_READ_WRITE, GL_RGBA8);
  glDispatchCompute(static_cast<GLuint>((width + kGroupWidth - 1) / kGroupWidth),
                    static_cast<GLuint>((height + kGroupHeight - 1) / kGroupHeight), 1);
  // Whatever reads the picture next (draws, copies, read back, the window) sees the stores.
  glMemoryBarrier(GL_FRAMEBUFFER_BARRIER_BIT | GL_TEXTURE_FETCH_BARRIER_BIT | GL_TEXTURE_UPDATE_BARRIER_BIT |
                  GL_PIXEL_BUFFER_BARRIER_BIT | GL_SHADER_IMAGE_ACCESS_BARRIER_BIT);
  glBindImageTexture(0, 0, 0, GL_FALSE, 0, GL_READ_WRITE, GL_RGBA8);
  glActiveTexture(GL_TEXTURE1);
  glBindTexture(GL_TEXTURE_2D, 0);
  glBindSampler(1, 0);
  glActiveTexture(GL_TEXTURE0);
  glStateValid_ = false;
}

bool GlDevice::FinishOutput(const OutputFinish& finish) {
  if (!ready_ || !finishByCompute_ || renderingToTexture_) return false;
  const BlendedRectangle& l = finish.Layer;
  const bool layer = l.SourceBlend != 0 || l.TargetBlend != 0;
  if (layer && !PlainLayerState(state_.render, state_.stage)) return false;
  Flush();
  Carry();
  RunFinish(backBufferTextures_[current_], width_, height_, finish, finish.Mask ? Find(finish.MaskTexture) : nullptr,
            layer ? Find(l.Texture) : nullptr);
  return true;
}

}  // namespace lumivane
