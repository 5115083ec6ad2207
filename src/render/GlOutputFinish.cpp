// The output stage's last passes (invert, mask, fade) as one compute pass over the back buffer.
// Drawn as blended full-screen rectangles they cost a GPU's blending units a read and a write of
// every pixel each; the compute pass reads and writes each pixel once, through the shader cores.
#include "render/GlDevice.h"

namespace lumivane {

namespace {

constexpr int kGroupWidth = 16, kGroupHeight = 8;

const char* const kFinishSource = R"(#version 430 core
layout(local_size_x = 16, local_size_y = 8) in;
layout(rgba8, binding = 0) uniform restrict image2D frame;
layout(binding = 0) uniform sampler2D maskPicture;
uniform int invert;
uniform int mask;
uniform vec3 tint;
uniform ivec2 size;
void main() {
  ivec2 p = ivec2(gl_GlobalInvocationID.xy);
  if (p.x >= size.x || p.y >= size.y) return;
  vec4 d = imageLoad(frame, p);
  // White blended with the inverse of the picture on both sides: 1 - d + d (1 - d), kept to the
  // buffer's 8 bits before the multiply, as a pass of its own leaves it.
  if (invert != 0) d.rgb = floor((1.0 - d.rgb * d.rgb) * 255.0 + 0.5) / 255.0;
  vec3 s = tint;
  // The mask rectangle runs from a pixel outside one corner to a pixel outside the other.
  if (mask != 0) s *= texture(maskPicture, (vec2(p) + 1.5) / vec2(size + 2)).rgb;
  imageStore(frame, p, vec4(d.rgb * s, d.a));
}
)";

}  // namespace

bool GlDevice::MakeFinishProgram() {
  if (finishTried_) return finish_.name != 0;
  finishTried_ = true;
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
  return true;
}

bool GlDevice::FinishOutput(const OutputFinish& finish) {
  if (!ready_ || !finishByCompute_ || renderingToTexture_) return false;
  Flush();
  if (!MakeFinishProgram()) return false;
  Carry();
  glUseProgram(finish_.name);
  glUniform1i(finish_.invert, finish.Invert ? 1 : 0);
  const Texture* mask = finish.Mask ? Find(finish.MaskTexture) : nullptr;
  glUniform1i(finish_.mask, mask != nullptr ? 1 : 0);
  const std::uint32_t t = finish.Tint;
  glUniform3f(finish_.tint, static_cast<float>((t >> 16) & 0xFF) / 255.0f, static_cast<float>((t >> 8) & 0xFF) / 255.0f,
              static_cast<float>(t & 0xFF) / 255.0f);
  glUniform2i(finish_.size, width_, height_);
  glActiveTexture(GL_TEXTURE0);
  glBindTexture(GL_TEXTURE_2D, mask != nullptr ? mask->name : 0);
  ApplySampler(state_);
  glBindImageTexture(0, backBufferTextures_[current_], 0, GL_FALSE, 0, GL_READ_WRITE, GL_RGBA8);
  glDispatchCompute(static_cast<GLuint>((width_ + kGroupWidth - 1) / kGroupWidth),
                    static_cast<GLuint>((height_ + kGroupHeight - 1) / kGroupHeight), 1);
  // Whatever reads the back buffer next (draws, copies, read back, the window) sees the stores.
  glMemoryBarrier(GL_FRAMEBUFFER_BARRIER_BIT | GL_TEXTURE_FETCH_BARRIER_BIT | GL_TEXTURE_UPDATE_BARRIER_BIT |
                  GL_PIXEL_BUFFER_BARRIER_BIT | GL_SHADER_IMAGE_ACCESS_BARRIER_BIT);
  glBindImageTexture(0, 0, 0, GL_FALSE, 0, GL_READ_WRITE, GL_RGBA8);
  glStateValid_ = false;
  return true;
}

}  // namespace lumivane
