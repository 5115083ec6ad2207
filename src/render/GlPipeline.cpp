// The device's drawing: render and stage states, shader programs made for each combination of
// vertex layout and stage operations, and batched draws from client vertex lists.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "render/GlDevice.h"

namespace lumivane {

namespace {

constexpr std::uint32_t kRenderStates = 176, kStageStates = 25;

std::uint32_t FormatSize(VertexFormat format) {
  switch (format) {
    case VertexFormat::TL: return sizeof(TLVERTEX);
    case VertexFormat::L: return sizeof(LVERTEX);
    case VertexFormat::Line: return sizeof(LINEVERTEX);
    case VertexFormat::Mesh: return 0;  // only from the device's own meshes
  }
  return 0;
}

int FormatSlot(VertexFormat format) { return format == VertexFormat::TL ? 0 : format == VertexFormat::L ? 1 : 2; }

// The GL factor of a blend code.
GLenum BlendFactor(std::uint32_t code) {
  switch (code) {
    case Blend::Zero: return GL_ZERO;
    case Blend::SrcColor: return GL_SRC_COLOR;
    case Blend::InvSrcColor: return GL_ONE_MINUS_SRC_COLOR;
    case Blend::SrcAlpha: return GL_SRC_ALPHA;
    case Blend::InvSrcAlpha: return GL_ONE_MINUS_SRC_ALPHA;
    case Blend::DestAlpha: return GL_DST_ALPHA;
    case Blend::InvDestAlpha: return GL_ONE_MINUS_DST_ALPHA;
    case Blend::DestColor: return GL_DST_COLOR;
    case Blend::InvDestColor: return GL_ONE_MINUS_DST_COLOR;
    case Blend::SrcAlphaSat: return GL_SRC_ALPHA_SATURATE;
    default: return GL_ONE;
  }
}

GLenum DepthFunction(std::uint32_t code) {
  switch (code) {
    case ZFunc::Never: return GL_NEVER;
    case ZFunc::Less: return GL_LESS;
    case ZFunc::Equal: return GL_EQUAL;
    case ZFunc::Greater: return GL_GREATER;
    case ZFunc::NotEqual: return GL_NOTEQUAL;
    case ZFunc::GreaterEqual: return GL_GEQUAL;
    case ZFunc::Always: return GL_ALWAYS;
    default: return GL_LEQUAL;
  }
}

GLint Address(std::uint32_t code) {
  switch (code) {
    case TextureAddress::Mirror:
    case TextureAddress::MirrorOnce: return GL_MIRRORED_REPEAT;
    case TextureAddress::Clamp: return GL_CLAMP_TO_EDGE;
    case TextureAddress::Border: return GL_CLAMP_TO_BORDER;
    default: return GL_REPEAT;
  }
}

// One stage argument as a GLSL vec4: diffuse, current (the diffuse colour at the first stage),
// texture or texture factor, optionally complemented and alpha-replicated.
std::string Argument(std::uint32_t code) {
  const std::uint32_t source = code & TextureArg::SourceMask;
  std::string base = source == TextureArg::Texture ? "t" : source == TextureArg::TextureFactor ? "factor" : "d";
  if (code & TextureArg::Complement) base = "(vec4(1.0) - " + base + ")";
  if (code & TextureArg::AlphaReplicate) base = "vec4(" + base + ".a)";
  return base;
}

std::string Operation(std::uint32_t op, std::uint32_t arg1, std::uint32_t arg2) {
  const std::string a = Argument(arg1), b = Argument(arg2);
  switch (op) {
    case TextureOp::Disable: return "d";
    case TextureOp::SelectArg1: return a;
    case TextureOp::SelectArg2: return b;
    case TextureOp::Modulate2x: return a + " * " + b + " * 2.0";
    case TextureOp::Modulate4x: return a + " * " + b + " * 4.0";
    case TextureOp::Add: return a + " + " + b;
    case TextureOp::AddSigned: return a + " + " + b + " - vec4(0.5)";
    case TextureOp::AddSigned2x: return "(" + a + " + " + b + " - vec4(0.5)) * 2.0";
    case TextureOp::Subtract: return a + " - " + b;
    case TextureOp::AddSmooth: return a + " + " + b + " - " + a + " * " + b;
    case TextureOp::DotProduct3:
      return "vec4(clamp(dot((" + a + ".rgb - 0.5) * 2.0, (" + b + ".rgb - 0.5) * 2.0), 0.0, 1.0))";
    default: return a + " * " + b;  // Modulate
  }
}


}  // namespace

GLuint CompileShader(GLenum kind, const std::string& source) {
  const GLuint shader = glCreateShader(kind);
  const char* text = source.c_str();
  glShaderSource(shader, 1, &text, nullptr);
  glCompileShader(shader);
  GLint ok = GL_FALSE;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
  if (ok != GL_TRUE) {
    glDeleteShader(shader);
    return 0;
  }
  return shader;
}

void RenderDevice::SetBlend(std::uint32_t sourceCode, std::uint32_t destinationCode) {
  const bool on = sourceCode != 0 && destinationCode != 0;
  SetRenderState(RenderState::ALPHABLENDENABLE, on ? 1 : 0);
  if (!on) return;
  SetRenderState(RenderState::SRCBLEND, sourceCode);
  SetRenderState(RenderState::DESTBLEND, destinationCode);
}

void GlDevice::ResetState() {
  DrawState& s = state_;
  std::memset(s.render, 0, sizeof s.render);
  std::memset(s.stage, 0, sizeof s.stage);
  auto render = [&](RenderState r, std::uint32_t v) { s.render[static_cast<std::uint32_t>(r)] = v; };
  auto stage = [&](TextureStageState t, std::uint32_t v) { s.stage[static_cast<std::uint32_t>(t)] = v; };
  render(RenderState::ZENABLE, 0);
  render(RenderState::FILLMODE, FillMode::Solid);
  render(RenderState::SHADEMODE, ShadeMode::Gouraud);
  render(RenderState::ZWRITEENABLE, 1);
  render(RenderState::SRCBLEND, Blend::One);
  render(RenderState::DESTBLEND, Blend::Zero);
  render(RenderState::CULLMODE, CullMode::CounterClockwise);
  render(RenderState::ZFUNC, ZFunc::LessEqual);
  render(RenderState::TEXTUREFACTOR, 0xFFFFFFFFu);
  render(RenderState::LIGHTING, 1);
  render(RenderState::COLORWRITEENABLE, ColorWrite::All);
  stage(TextureStageState::COLOROP, TextureOp::Modulate);
  stage(TextureStageState::COLORARG1, TextureArg::Texture);
  stage(TextureStageState::COLORARG2, TextureArg::Current);
  stage(TextureStageState::ALPHAOP, TextureOp::SelectArg1);
  stage(TextureStageState::ALPHAARG1, TextureArg::Texture);
  stage(TextureStageState::ALPHAARG2, TextureArg::Current);
  stage(TextureStageState::ADDRESSU, TextureAddress::Wrap);
  stage(TextureStageState::ADDRESSV, TextureAddress::Wrap);
  stage(TextureStageState::MAGFILTER, TextureFilter::Point);
  stage(TextureStageState::MINFILTER, TextureFilter::Point);
  s.texture = 0;
  s.format = VertexFormat::TL;
}

void GlDevice::SetRenderState(RenderState state, std::uint32_t value) {
  const auto i = static_cast<std::uint32_t>(state);
  if (i < kRenderStates) state_.render[i] = value;
}

std::uint32_t GlDevice::GetRenderState(RenderState state) const {
  const auto i = static_cast<std::uint32_t>(state);
  return i < kRenderStates ? state_.render[i] : 0;
}

void GlDevice::SetTextureStageState(TextureStageState state, std::uint32_t value) {
  const auto i = static_cast<std::uint32_t>(state);
  if (i < kStageStates) state_.stage[i] = value;
}

std::uint32_t GlDevice::GetTextureStageState(TextureStageState state) const {
  const auto i = static_cast<std::uint32_t>(state);
  return i < kStageStates ? state_.stage[i] : 0;
}

void GlDevice::SetTransform(TransformState state, const Matrix& matrix) {
  if (batchVertices_ > 0 && batchState_.format != VertexFormat::TL) Flush();  // the batch is drawn with the old matrices
  switch (state) {
    case TransformState::World: world_ = matrix; break;
    case TransformState::View: view_ = matrix; break;
    case TransformState::Projection: projection_ = matrix; break;
    case TransformState::Texture0: texture0_ = matrix; break;
  }
  transformChanged_ = true;
}

void GlDevice::SetTexture(TextureId texture) {
  if (texture != 0 && Find(texture) == nullptr) texture = 0;  // a released texture draws as none
  state_.texture = texture;
}

void GlDevice::SetVertexShader(VertexFormat format) { state_.format = format; }

void GlDevice::DrawPrimitiveUP(PrimitiveType type, std::uint32_t primitiveCount, const void* vertices,
                               std::uint32_t stride) {
  if (!ready_ || vertices == nullptr || stride != FormatSize(state_.format)) return;
  const std::uint32_t count = VertexCount(type, primitiveCount);
  if (count == 0 || count > (1u << 24)) return;  // nothing, or a count no client list can hold
  // States are compared when drawing, not when set: a state changed and set back does not split a batch.
  if (batchVertices_ > 0 && (type != PrimitiveType::TriangleList || batchType_ != PrimitiveType::TriangleList ||
                             std::memcmp(&batchState_, &state_, sizeof state_) != 0))
    Flush();
  if (batchVertices_ == 0) batchState_ = state_;
  const auto* bytes = static_cast<const std::uint8_t*>(vertices);
  batch_.insert(batch_.end(), bytes, bytes + static_cast<std::size_t>(count) * stride);
  batchVertices_ += count;
  batchType_ = type;
  if (type != PrimitiveType::TriangleList) Flush();  // strips and lines cannot be joined
}

const GlDevice::Program* GlDevice::ProgramFor(const DrawState& s) {
  auto render = [&](RenderState r) { return s.render[static_cast<std::uint32_t>(r)]; };
  auto stage = [&](TextureStageState t) { return s.stage[static_cast<std::uint32_t>(t)]; };
  const bool textured = s.texture != 0;
  const bool pretransformed = s.format == VertexFormat::TL;
  const bool mesh = s.format == VertexFormat::Mesh;
  const bool lit = mesh && render(RenderState::LIGHTING) != 0;
  const bool specular = render(RenderState::SPECULARENABLE) != 0 && s.format != VertexFormat::Line;
  const bool flat = render(RenderState::SHADEMODE) == ShadeMode::Flat;
  // Texture coordinates: the vertex's own or the camera-space position, optionally through the
  // texture matrix (pre-transformed vertices always take their own).
  const std::uint32_t generate =
      textured && !pretransformed ? stage(TextureStageState::TEXCOORDINDEX) & TexCoordIndex::GeneratedMask : 0;
  const std::uint32_t transformCount =
      textured && !pretransformed
          ? std::min<std::uint32_t>(stage(TextureStageState::TEXTURETRANSFORMFLAGS) & TextureTransform::CountMask, 4)
          : 0;
  std::uint64_t key = (pretransformed ? 1u : 0u) | (specular ? 2u : 0u) | (flat ? 4u : 0u) | (textured ? 8u : 0u) |
                      (mesh ? 16u : 0u) | (lit ? 32u : 0u);
  key |= static_cast<std::uint64_t>(generate >> 16) << 6 | static_cast<std::uint64_t>(transformCount) << 8;
  if (textured) {
    // Without a texture the stage passes the diffuse colour on, whatever its operations.
    int shift = 12;
    for (TextureStageState t : {TextureStageState::COLOROP, TextureStageState::COLORARG1, TextureStageState::COLORARG2,
                                TextureStageState::ALPHAOP, TextureStageState::ALPHAARG1, TextureStageState::ALPHAARG2}) {
      key |= static_cast<std::uint64_t>(stage(t) & 0x3F) << shift;
      shift += 6;
    }
  }
  if (auto it = programs_.find(key); it != programs_.end()) return &it->second;

  const std::string interpolation = flat ? "flat " : "";
  std::string vertex = "#version 330 core\n"
                       "layout(location = 0) in vec4 position;\n"
                       "layout(location = 1) in vec4 diffuse;\n"
                       "layout(location = 2) in vec4 specular;\n"
                       "layout(location = 3) in vec2 texel;\n"
                       "layout(location = 4) in vec3 normal;\n"
                       "uniform vec2 viewport;\n"
                       "uniform mat4 transform;\n"
                       "uniform mat4 worldView;\n"
                       "uniform mat3 normalMatrix;\n"
                       "uniform mat4 textureMatrix;\n"
                       "uniform vec4 materialDiffuse, materialAmbient, materialSpecular, materialEmissive;\n"
                       "uniform float materialPower;\n"
                       "uniform vec4 ambient;\n"
                       "uniform float lightOn;\n"
                       "uniform vec4 lightDiffuse, lightSpecular, lightAmbient;\n"
                       "uniform vec3 lightDirection;\n" +
                       interpolation + "out vec4 vDiffuse;\n" + interpolation +
                       "out vec4 vSpecular;\n"
                       "out vec2 vTexel;\n"
                       "void main() {\n"
                       "  vDiffuse = diffuse;\n"
                       "  vSpecular = specular;\n"
                       "  vTexel = texel;\n";
  if (pretransformed) {
    // Pixels of the target, row 0 at the top (which is the target's first row).
    vertex += "  float w = position.w != 0.0 ? 1.0 / position.w : 1.0;\n"
              "  gl_Position = vec4((position.x / viewport.x * 2.0 - 1.0) * w, (position.y / viewport.y * 2.0 - 1.0) * w,\n"
              "                     (position.z * 2.0 - 1.0) * w, w);\n";
  } else {
    // Row vectors times the matrix, as uploaded; depth 0..1 to GL's -1..1, and the picture's top
    // to the target's first row.
    vertex += "  vec4 p = transform * vec4(position.xyz, 1.0);\n"
              "  gl_Position = vec4(p.x, -p.y, p.z * 2.0 - p.w, p.w);\n";
    if (lit || generate != 0) vertex += "  vec3 eye = (worldView * vec4(position.xyz, 1.0)).xyz;\n";
    if (lit) {
      // In camera space, the eye at the origin; lightDirection points towards the light.
      vertex += "  vec3 n = normalize(normalMatrix * normal);\n"
                "  float nl = max(dot(n, lightDirection), 0.0) * lightOn;\n"
                "  vec4 c = materialEmissive + ambient * materialAmbient +\n"
                "           lightOn * lightAmbient * materialAmbient + nl * lightDiffuse * materialDiffuse;\n"
                "  vDiffuse = vec4(c.rgb, materialDiffuse.a);\n"
                "  vec3 h = normalize(lightDirection + normalize(-eye));\n"
                "  float nh = nl > 0.0 ? pow(max(dot(n, h), 0.0), materialPower) : 0.0;\n"
                "  vSpecular = vec4((nh * lightSpecular * materialSpecular).rgb, 0.0);\n";
    }
    const std::string source = generate == TexCoordIndex::CameraSpacePosition ? "vec4(eye, 1.0)"
                               : generate == TexCoordIndex::CameraSpaceNormal ? "vec4(normalMatrix * normal, 1.0)"
                                                                              : "vec4(texel, 1.0, 0.0)";
    if (transformCount != 0) vertex += "  vTexel = (textureMatrix * " + source + ").xy;\n";
    else if (generate != 0) vertex += "  vTexel = " + source + ".xy;\n";
  }
  vertex += "}\n";
  std::string fragment = "#version 330 core\n"
                         "uniform sampler2D picture;\n"
                         "uniform vec4 factor;\n" +
                         interpolation + "in vec4 vDiffuse;\n" + interpolation +
                         "in vec4 vSpecular;\n"
                         "in vec2 vTexel;\n"
                         "out vec4 fragment;\n"
                         "void main() {\n"
                         "  vec4 d = vDiffuse;\n";
  if (textured) {
    auto op = [&](TextureStageState o, TextureStageState a1, TextureStageState a2) {
      return Operation(stage(o) & 0x3F, stage(a1) & 0x3F, stage(a2) & 0x3F);
    };
    fragment += "  vec4 t = texture(picture, vTexel);\n";
    fragment += "  vec3 c = (" + op(TextureStageState::COLOROP, TextureStageState::COLORARG1, TextureStageState::COLORARG2) + ").rgb;\n";
    fragment += "  float a = (" + op(TextureStageState::ALPHAOP, TextureStageState::ALPHAARG1, TextureStageState::ALPHAARG2) + ").a;\n";
  } else {
    fragment += "  vec3 c = d.rgb;\n  float a = d.a;\n";
  }
  if (specular) fragment += "  c += vSpecular.rgb;\n";
  fragment += "  fragment = clamp(vec4(c, a), 0.0, 1.0);\n}\n";

  Program program;
  program.eyeSpace = lit || generate != 0 || transformCount != 0;
  const GLuint vs = CompileShader(GL_VERTEX_SHADER, vertex);
  const GLuint fs = CompileShader(GL_FRAGMENT_SHADER, fragment);
  if (vs != 0 && fs != 0) {
    program.name = glCreateProgram();
    glAttachShader(program.name, vs);
    glAttachShader(program.name, fs);
    glLinkProgram(program.name);
    GLint linked = GL_FALSE;
    glGetProgramiv(program.name, GL_LINK_STATUS, &linked);
    if (linked != GL_TRUE) {
      glDeleteProgram(program.name);
      program.name = 0;
    } else {
      auto at = [&](const char* name) { return glGetUniformLocation(program.name, name); };
      program.viewport = at("viewport");
      program.transform = at("transform");
      program.factor = at("factor");
      program.worldView = at("worldView");
      program.normalMatrix = at("normalMatrix");
      program.textureMatrix = at("textureMatrix");
      program.materialDiffuse = at("materialDiffuse");
      program.materialAmbient = at("materialAmbient");
      program.materialSpecular = at("materialSpecular");
      program.materialEmissive = at("materialEmissive");
      program.materialPower = at("materialPower");
      program.ambient = at("ambient");
      program.lightOn = at("lightOn");
      program.lightDiffuse = at("lightDiffuse");
      program.lightSpecular = at("lightSpecular");
      program.lightAmbient = at("lightAmbient");
      program.lightDirection = at("lightDirection");
      glUseProgram(program.name);
      glUniform1i(at("picture"), 0);
    }
  }
  if (vs != 0) glDeleteShader(vs);
  if (fs != 0) glDeleteShader(fs);
  return &(programs_[key] = program);
}

void GlDevice::ApplyState(const Target& target) {
  const DrawState& s = batchState_;
  auto render = [&](RenderState r) { return s.render[static_cast<std::uint32_t>(r)]; };
  glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
  boundFramebuffer_ = target.framebuffer;
  glViewport(0, 0, target.width, target.height);
  glDisable(GL_SCISSOR_TEST);
  glDisable(GL_STENCIL_TEST);
  // A back buffer's alpha stays 1, as on an X8R8G8B8 buffer, which keeps DEST_ALPHA blending sane.
  const std::uint32_t write = render(RenderState::COLORWRITEENABLE);
  glColorMask((write & ColorWrite::Red) != 0, (write & ColorWrite::Green) != 0, (write & ColorWrite::Blue) != 0,
              target.alpha && (write & ColorWrite::Alpha) != 0);

  if (render(RenderState::ALPHABLENDENABLE) != 0) {
    GLenum source, destination;
    const std::uint32_t src = render(RenderState::SRCBLEND);
    if (src == Blend::BothSrcAlpha) {  // both factors from the source alpha
      source = GL_SRC_ALPHA;
      destination = GL_ONE_MINUS_SRC_ALPHA;
    } else if (src == Blend::BothInvSrcAlpha) {
      source = GL_ONE_MINUS_SRC_ALPHA;
      destination = GL_SRC_ALPHA;
    } else {
      source = BlendFactor(src);
      const std::uint32_t dst = render(RenderState::DESTBLEND);
      destination = dst == Blend::SrcAlphaSat ? GL_ONE : BlendFactor(dst);  // saturate is a source factor only
    }
    glEnable(GL_BLEND);
    glBlendFunc(source, destination);
  } else {
    glDisable(GL_BLEND);
  }

  // Clockwise as the screen shows it (rows down) is counter-clockwise to GL, whose rows go up.
  switch (render(RenderState::CULLMODE)) {
    case CullMode::None: glDisable(GL_CULL_FACE); break;
    case CullMode::Clockwise:
      glEnable(GL_CULL_FACE);
      glFrontFace(GL_CW);
      glCullFace(GL_BACK);
      break;
    default:
      glEnable(GL_CULL_FACE);
      glFrontFace(GL_CCW);
      glCullFace(GL_BACK);
      break;
  }
  const std::uint32_t fill = render(RenderState::FILLMODE);
  glPolygonMode(GL_FRONT_AND_BACK, fill == FillMode::Point ? GL_POINT : fill == FillMode::Wireframe ? GL_LINE : GL_FILL);

  if (render(RenderState::ZENABLE) != 0 && !renderingToTexture_) EnsureDepth();
  if (render(RenderState::ZENABLE) != 0) {
    if (depthClearPending_ && !renderingToTexture_) {
      glDepthMask(GL_TRUE);
      glStencilMask(0xFF);
      glClearDepth(1.0);
      glClearStencil(0);
      glClear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
      depthClearPending_ = false;
    }
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(DepthFunction(render(RenderState::ZFUNC)));
    glDepthMask(render(RenderState::ZWRITEENABLE) != 0 ? GL_TRUE : GL_FALSE);
  } else {
    glDisable(GL_DEPTH_TEST);
  }

  program_ = ProgramFor(s);
  if (program_->name == 0) return;
  glUseProgram(program_->name);
  glUniform2f(program_->viewport, static_cast<float>(target.width), static_cast<float>(target.height));
  if (s.format != VertexFormat::TL) {
    const Matrix wvp = world_ * view_ * projection_;
    glUniformMatrix4fv(program_->transform, 1, GL_FALSE, &wvp.m[0][0]);
    SetLightingUniforms(*program_, s);
  }
  const std::uint32_t f = render(RenderState::TEXTUREFACTOR);
  glUniform4f(program_->factor, static_cast<float>((f >> 16) & 0xFF) / 255.0f, static_cast<float>((f >> 8) & 0xFF) / 255.0f,
              static_cast<float>(f & 0xFF) / 255.0f, static_cast<float>(f >> 24) / 255.0f);
  glActiveTexture(GL_TEXTURE0);
  const Texture* texture = Find(s.texture);
  glBindTexture(GL_TEXTURE_2D, texture != nullptr ? texture->name : 0);
  ApplySampler(s);
  glStateValid_ = true;
}

void GlDevice::ApplySampler(const DrawState& s) {
  auto stage = [&](TextureStageState t) { return s.stage[static_cast<std::uint32_t>(t)]; };
  glBindSampler(0, sampler_);
  // Anisotropic filtering samples as linear.
  auto filter = [&](TextureStageState t) { return stage(t) >= TextureFilter::Linear ? GL_LINEAR : GL_NEAREST; };
  glSamplerParameteri(sampler_, GL_TEXTURE_MAG_FILTER, filter(TextureStageState::MAGFILTER));
  glSamplerParameteri(sampler_, GL_TEXTURE_MIN_FILTER, filter(TextureStageState::MINFILTER));
  glSamplerParameteri(sampler_, GL_TEXTURE_WRAP_S, Address(stage(TextureStageState::ADDRESSU)));
  glSamplerParameteri(sampler_, GL_TEXTURE_WRAP_T, Address(stage(TextureStageState::ADDRESSV)));
}

void GlDevice::SetLightingUniforms(const Program& program, const DrawState& s) {
  if (!program.eyeSpace) return;
  const Matrix worldView = world_ * view_;
  glUniformMatrix4fv(program.worldView, 1, GL_FALSE, &worldView.m[0][0]);
  glUniformMatrix4fv(program.textureMatrix, 1, GL_FALSE, &texture0_.m[0][0]);
  // Normals go through the inverse transpose of the world-view matrix, so a text scaled unevenly
  // keeps its walls' normals square to them. For row vectors that is the inverse itself, read
  // row by row.
  const float(&m)[4][4] = worldView.m;
  float inverse[3][3] = {{m[1][1] * m[2][2] - m[1][2] * m[2][1], m[0][2] * m[2][1] - m[0][1] * m[2][2],
                          m[0][1] * m[1][2] - m[0][2] * m[1][1]},
                         {m[1][2] * m[2][0] - m[1][0] * m[2][2], m[0][0] * m[2][2] - m[0][2] * m[2][0],
                          m[0][2] * m[1][0] - m[0][0] * m[1][2]},
                         {m[1][0] * m[2][1] - m[1][1] * m[2][0], m[0][1] * m[2][0] - m[0][0] * m[2][1],
                          m[0][0] * m[1][1] - m[0][1] * m[1][0]}};
  const float determinant = m[0][0] * inverse[0][0] + m[0][1] * inverse[1][0] + m[0][2] * inverse[2][0];
  // A scale of 0 flattens the mesh: any normal will do, the lengths are normalised anyway.
  const float scale = determinant != 0.0f ? 1.0f / determinant : 0.0f;
  for (auto& row : inverse)
    for (float& v : row) v *= scale;
  glUniformMatrix3fv(program.normalMatrix, 1, GL_TRUE, &inverse[0][0]);
  glUniform4fv(program.materialDiffuse, 1, material_.Diffuse);
  glUniform4fv(program.materialAmbient, 1, material_.Ambient);
  glUniform4fv(program.materialSpecular, 1, material_.Specular);
  glUniform4fv(program.materialEmissive, 1, material_.Emissive);
  glUniform1f(program.materialPower, material_.Power);
  const std::uint32_t a = s.render[static_cast<std::uint32_t>(RenderState::AMBIENT)];
  glUniform4f(program.ambient, static_cast<float>((a >> 16) & 0xFF) / 255.0f, static_cast<float>((a >> 8) & 0xFF) / 255.0f,
              static_cast<float>(a & 0xFF) / 255.0f, static_cast<float>(a >> 24) / 255.0f);
  glUniform1f(program.lightOn, lightOn_ ? 1.0f : 0.0f);
  glUniform4fv(program.lightDiffuse, 1, light_.Diffuse);
  glUniform4fv(program.lightSpecular, 1, light_.Specular);
  glUniform4fv(program.lightAmbient, 1, light_.Ambient);
  // Towards the light, in camera space.
  const float(&v)[4][4] = view_.m;
  const float* d = light_.Direction;
  float toLight[3] = {-(d[0] * v[0][0] + d[1] * v[1][0] + d[2] * v[2][0]), -(d[0] * v[0][1] + d[1] * v[1][1] + d[2] * v[2][1]),
                      -(d[0] * v[0][2] + d[1] * v[1][2] + d[2] * v[2][2])};
  const float length = std::sqrt(toLight[0] * toLight[0] + toLight[1] * toLight[1] + toLight[2] * toLight[2]);
  for (float& c : toLight) c = length > 0 ? c / length : 0.0f;
  glUniform3fv(program.lightDirection, 1, toLight);
}

void GlDevice::Flush() {
  if (batchVertices_ == 0) return;
  const Target& target = CurrentTarget();
  if (!renderingToTexture_) Carry();
  ApplyState(target);
  if (program_ != nullptr && program_->name != 0) {
    glBindVertexArray(vertexArrays_[FormatSlot(batchState_.format)]);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer_);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(batch_.size()), batch_.data(), GL_STREAM_DRAW);
    const GLenum mode = batchType_ == PrimitiveType::TriangleList    ? GL_TRIANGLES
                        : batchType_ == PrimitiveType::TriangleStrip ? GL_TRIANGLE_STRIP
                                                                     : GL_LINE_STRIP;
    glDrawArrays(mode, 0, static_cast<GLsizei>(batchVertices_));
  }
  batch_.clear();
  batchVertices_ = 0;
}

}  // namespace lumivane
