// The OpenGL 3.3 core backend: a device in an SDL window's GL context.
// What GL core lacks is emulated here: the fixed pixel stage of stage 0 and
// the alpha test in the generated fragment programs, flat shading from the
// first vertex, Direct3D's top-left window origin and its 0..1 depth range.
#include <SDL.h>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/gfx/effect_core.h"
#include "platform/gfx/gl_buffer.h"
#include "platform/gfx/gl_device.h"
#include "platform/gfx/gl_texture.h"
#include "platform/gfx/memory_objects.h"

namespace vostan::gfx {

namespace {

// Rectangles come from callers with any 32-bit values: their sums are taken
// wide and brought into GL's range (a negative size GL refuses by itself).
GLint glInt(int64_t value) {
  return static_cast<GLint>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

// Attribute slots the generated programs bind their inputs to.
enum Attribute : GLuint { A_POSITION = 0, A_COLOR = 1, A_TEXCOORD = 2, A_WEIGHT = 3 };

GLenum blendOf(uint32_t b) {
  switch (b) {
    case BLEND_ZERO:
      return GL_ZERO;
    case BLEND_SRCCOLOR:
      return GL_SRC_COLOR;
    case BLEND_INVSRCCOLOR:
      return GL_ONE_MINUS_SRC_COLOR;
    case BLEND_SRCALPHA:
      return GL_SRC_ALPHA;
    case BLEND_INVSRCALPHA:
      return GL_ONE_MINUS_SRC_ALPHA;
    case BLEND_DESTALPHA:
      return GL_DST_ALPHA;
    case BLEND_INVDESTALPHA:
      return GL_ONE_MINUS_DST_ALPHA;
    case BLEND_DESTCOLOR:
      return GL_DST_COLOR;
    case BLEND_INVDESTCOLOR:
      return GL_ONE_MINUS_DST_COLOR;
    default:
      return GL_ONE;
  }
}

GLenum blendOpOf(uint32_t op) {
  switch (op) {
    case 2:
      return GL_FUNC_SUBTRACT;
    case 3:
      return GL_FUNC_REVERSE_SUBTRACT;
    case 4:
      return GL_MIN;
    case 5:
      return GL_MAX;
    default:
      return GL_FUNC_ADD;
  }
}

GLenum compareOf(uint32_t c) {
  switch (c) {
    case CMP_NEVER:
      return GL_NEVER;
    case CMP_LESS:
      return GL_LESS;
    case CMP_EQUAL:
      return GL_EQUAL;
    case CMP_LESSEQUAL:
      return GL_LEQUAL;
    case CMP_GREATER:
      return GL_GREATER;
    case CMP_NOTEQUAL:
      return GL_NOTEQUAL;
    case CMP_GREATEREQUAL:
      return GL_GEQUAL;
    default:
      return GL_ALWAYS;
  }
}

GLenum stencilOpOf(uint32_t op) {
  switch (op) {
    case STENCILOP_ZERO:
      return GL_ZERO;
    case STENCILOP_REPLACE:
      return GL_REPLACE;
    case STENCILOP_INCRSAT:
      return GL_INCR;
    case STENCILOP_DECRSAT:
      return GL_DECR;
    case STENCILOP_INVERT:
      return GL_INVERT;
    case STENCILOP_INCR:
      return GL_INCR_WRAP;
    case STENCILOP_DECR:
      return GL_DECR_WRAP;
    default:
      return GL_KEEP;
  }
}

GLenum primitiveOf(int32_t type) {
  switch (type) {
    case PT_POINTLIST:
      return GL_POINTS;
    case PT_LINELIST:
      return GL_LINES;
    case PT_LINESTRIP:
      return GL_LINE_STRIP;
    case PT_TRIANGLESTRIP:
      return GL_TRIANGLE_STRIP;
    case PT_TRIANGLEFAN:
      return GL_TRIANGLE_FAN;
    default:
      return GL_TRIANGLES;
  }
}

float asFloat(uint32_t bits) {
  float f;
  std::memcpy(&f, &bits, sizeof f);
  return f;
}

// The window's default framebuffer as a surface: a description, no memory.
class WindowSurface : public Surface {
 public:
  explicit WindowSurface(const SurfaceDesc& desc) : desc_(desc) {}
  HRESULT getDesc(SurfaceDesc& out) override {
    out = desc_;
    return OK;
  }
  HRESULT lockRect(LockedRect&, const Rect*, uint32_t) override { return kInvalidCall; }
  HRESULT unlockRect() override { return kInvalidCall; }

 private:
  SurfaceDesc desc_;
};

// A depth-stencil surface of its own: a D24S8 renderbuffer.
class GLDepthSurface : public Surface {
 public:
  GLDepthSurface(const SurfaceDesc& desc, SDL_Window* window, SDL_GLContext context)
      : desc_(desc), window_(window), context_(context) {
    glGenRenderbuffers(1, &name_);
    glBindRenderbuffer(GL_RENDERBUFFER, name_);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, static_cast<GLsizei>(desc.width),
                          static_cast<GLsizei>(desc.height));
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
  }
  HRESULT getDesc(SurfaceDesc& out) override {
    out = desc_;
    return OK;
  }
  HRESULT lockRect(LockedRect&, const Rect*, uint32_t) override { return kInvalidCall; }
  HRESULT unlockRect() override { return kInvalidCall; }
  GLuint name() const { return name_; }

 protected:
  ~GLDepthSurface() override {
    if (SDL_GL_GetCurrentContext() != context_) SDL_GL_MakeCurrent(window_, context_);
    glDeleteRenderbuffers(1, &name_);
  }

 private:
  SurfaceDesc desc_;
  SDL_Window* window_;
  SDL_GLContext context_;
  GLuint name_ = 0;
};

// Stage 0 of the fixed pixel stage and the alpha test, for every program.
// The stage's operations come in as constants of the program's variant, so
// that the compiler keeps only the work they ask for.
const char kPixelStage[] = R"GLSL(
uniform int vxAlphaRef;
out vec4 vxFragColor;

vec4 vxArg(int a, vec4 diffuse, vec4 tex) {
  vec4 r;
  int which = a & 15;
  if (which == 2) r = tex;
  else if (which == 3) r = vec4(1.0);
  else r = diffuse;
  if ((a & 32) != 0) r = vec4(r.a);
  if ((a & 16) != 0) r = vec4(1.0) - r;
  return r;
}

vec4 vxOp(int op, vec4 a, vec4 b, vec4 diffuse) {
  if (op == 2) return a;
  if (op == 3) return b;
  if (op == 4) return a * b;
  if (op == 5) return a * b * 2.0;
  if (op == 6) return a * b * 4.0;
  if (op == 7) return a + b;
  if (op == 8) return a + b - 0.5;
  if (op == 10) return a - b;
  return diffuse;
}

// Without a texture the stage passes the vertex colour through, so that
// untextured geometry keeps its colour and its alpha.
vec4 vxFixedStage() {
  vec4 diffuse = vColor;
  if (vxHasTexture == 0) return clamp(diffuse, 0.0, 1.0);
  vec4 tex = texture(samtex, vTexCoord);
  vec4 c = vxOp(vxColorOp, vxArg(vxColorArg1, diffuse, tex), vxArg(vxColorArg2, diffuse, tex), diffuse);
  vec4 a = vxOp(vxAlphaOp, vxArg(vxAlphaArg1, diffuse, tex), vxArg(vxAlphaArg2, diffuse, tex), diffuse);
  return clamp(vec4(c.rgb, a.a), 0.0, 1.0);
}

bool vxPasses(vec4 c) {
  if (vxAlphaTest == 0) return true;
  int a = int(clamp(c.a, 0.0, 1.0) * 255.0 + 0.5);
  if (vxAlphaFunc == 1) return false;
  if (vxAlphaFunc == 2) return a < vxAlphaRef;
  if (vxAlphaFunc == 3) return a == vxAlphaRef;
  if (vxAlphaFunc == 4) return a <= vxAlphaRef;
  if (vxAlphaFunc == 5) return a > vxAlphaRef;
  if (vxAlphaFunc == 6) return a != vxAlphaRef;
  if (vxAlphaFunc == 7) return a >= vxAlphaRef;
  return true;
}
)GLSL";

// A program variant's key: the stage 0 operations, whether it has a texture,
// the alpha test and the shading.
constexpr uint64_t kStageBits = (uint64_t{1} << 35) - 1;
constexpr uint64_t kAlphaTestBit = uint64_t{1} << 35;
constexpr int kAlphaFuncShift = 36;
constexpr uint64_t kFlatBit = uint64_t{1} << 40;

std::string pixelConstants(uint64_t key) {
  auto field = [&](int shift, int bits) {
    return static_cast<int>((key >> shift) & ((1u << bits) - 1));
  };
  char text[512];
  std::snprintf(text, sizeof text,
                "const int vxColorOp = %d, vxColorArg1 = %d, vxColorArg2 = %d;\n"
                "const int vxAlphaOp = %d, vxAlphaArg1 = %d, vxAlphaArg2 = %d;\n"
                "const int vxHasTexture = %d, vxAlphaTest = %d, vxAlphaFunc = %d;\n",
                field(0, 5), field(5, 6), field(11, 6), field(17, 5), field(22, 6), field(28, 6),
                field(34, 1), field(35, 1), field(kAlphaFuncShift, 4));
  return text;
}

}  // namespace

// ---- programs

struct GLProgram {
  GLuint id = 0;
  std::vector<GLint> locations;    // by effect parameter
  std::vector<uint32_t> uploaded;  // parameter versions sent
  GLint alphaRef = -1;
  int alphaRefSent = -1;
  GLint targetTransform = -1;
  uint64_t viewportSent = 0;  // the device's viewport serial
};

class GLDevice;

class GLEffect : public EffectCore {
 public:
  GLEffect(GLDevice* device, EffectSource source);
  ~GLEffect() override;
  // Builds every technique's program for the device's first state; false
  // with the compiler's log.
  bool build(std::string* errors);
  // The technique's program for the state `key` with the effect's values
  // sent, bound; null when it does not build.
  GLProgram* select(int technique, uint64_t key);

 protected:
  HRESULT bindTechnique(int technique) override;
  void unbindTechnique() override;
  bool techniqueBuilt(int technique) const override { return built_[technique]; }

 private:
  GLProgram* program(int technique, uint64_t key, std::string* errors);
  GLuint compile(GLenum stage, const std::string& text, std::string* errors);

  GLDevice* gl_;
  // Variants by key, per technique; a null entry did not build.
  std::vector<std::unordered_map<uint64_t, std::unique_ptr<GLProgram>>> programs_;
  std::vector<bool> built_;
};

class GLDevice : public StateDevice {
 public:
  GLDevice(SDL_Window* window, SDL_GLContext context, const PresentParameters& parameters);
  ~GLDevice() override;

  HRESULT getDeviceCaps(Caps& out) override {
    out = glCaps();
    return OK;
  }
  HRESULT testCooperativeLevel() override { return OK; }
  HRESULT reset(PresentParameters& parameters) override;
  HRESULT present() override;
  HRESULT beginScene() override;
  HRESULT endScene() override;
  HRESULT getBackBuffer(uint32_t, uint32_t, Surface** out) override {
    backBuffer_->addRef();
    *out = backBuffer_;
    return OK;
  }
  HRESULT getDepthStencilSurface(Surface** out) override {
    *out = depthSurface_;
    if (!depthSurface_) return kNotAvailable;
    depthSurface_->addRef();
    return OK;
  }
  HRESULT setRenderTarget(uint32_t index, Surface* target) override;
  HRESULT setDepthStencilSurface(Surface* surface) override;
  HRESULT createDepthStencilSurface(uint32_t width, uint32_t height, int32_t format, int32_t,
                                    uint32_t, bool, Surface** out) override {
    *out = nullptr;
    if (format != FMT_D24S8) return kNotAvailable;
    makeCurrent();
    *out = new GLDepthSurface(surfaceDesc(format, width, height, USAGE_DEPTHSTENCIL), window_,
                              context_);
    return OK;
  }
  HRESULT createOffscreenPlainSurface(uint32_t width, uint32_t height, int32_t format, int32_t pool,
                                      Surface** out) override {
    *out = new MemorySurface(surfaceDesc(format, width, height, 0, pool));
    return OK;
  }
  HRESULT getRenderTargetData(Surface* target, Surface* destination) override;
  HRESULT createTexture(uint32_t width, uint32_t height, uint32_t levels, uint32_t usage,
                        int32_t format, int32_t pool, Texture** out) override {
    makeCurrent();
    return createGLTexture(GLContextRef{window_, context_}, width, height, levels, usage, format,
                           pool, out);
  }
  HRESULT createVertexBuffer(uint32_t size, uint32_t usage, uint32_t fvf, int32_t pool,
                             VertexBuffer** out) override {
    *out = new GLVertexBuffer(BufferDesc{FMT_UNKNOWN, usage, pool, size, fvf},
                              GLContextRef{window_, context_});
    return OK;
  }
  HRESULT createIndexBuffer(uint32_t size, uint32_t usage, int32_t format, int32_t pool,
                            IndexBuffer** out) override {
    *out = new GLIndexBuffer(BufferDesc{format, usage, pool, size, 0},
                             GLContextRef{window_, context_});
    return OK;
  }
  HRESULT createEffect(const char* text, std::size_t length, Effect** out,
                       std::string* errors) override;
  HRESULT clear(uint32_t count, const Rect* rects, uint32_t flags, uint32_t color, float z,
                uint32_t stencil) override;
  HRESULT drawPrimitiveUP(int32_t type, uint32_t count, const void* vertices,
                          uint32_t stride) override;
  HRESULT drawPrimitive(int32_t type, uint32_t startVertex, uint32_t count) override;
  HRESULT drawIndexedPrimitive(int32_t type, int32_t baseVertex, uint32_t minIndex,
                               uint32_t vertexCount, uint32_t startIndex, uint32_t count) override;

  static Caps glCaps() {
    Caps c;
    c.vertexShaderVersion = vsVersion(3, 0);
    c.pixelShaderVersion = psVersion(3, 0);
    return c;
  }

  void makeCurrent() {
    if (SDL_GL_GetCurrentContext() != context_) SDL_GL_MakeCurrent(window_, context_);
  }
  // The program of the last draw. GL keeps it bound after the pass, since
  // switching programs costs more than leaving one bound.
  void useProgram(GLProgram* program) {
    program_ = program;
    if (program && program->id != boundProgram_) {
      boundProgram_ = program->id;
      glUseProgram(boundProgram_);
    }
  }
  void restoreProgram() { glUseProgram(boundProgram_); }
  void forgetProgram(GLuint id) {
    if (boundProgram_ != id) return;
    boundProgram_ = 0;
    glUseProgram(0);
  }
  // The effect and technique of the running pass; the program is chosen at
  // each draw from the state then.
  void beginPass(GLEffect* effect, int technique) {
    passEffect_ = effect;
    passTechnique_ = technique;
  }
  void endPass(const GLEffect* effect) {
    if (passEffect_ == effect) passEffect_ = nullptr;
  }
  uint64_t pixelKey() const;

 protected:
  void flushState();
  // Where a stream's vertices are: a GL buffer, the byte of its first vertex
  // and the stride.
  struct StreamSource {
    GLuint buffer = 0;
    std::size_t offset = 0;
    uint32_t stride = 0;
  };
  // Sends what changed of the state; false outside an effect pass.
  bool prepareDraw();
  // Binds the framebuffer of the render target and depth surface in use.
  void bindTarget();
  // Points the attributes at their streams by the declaration, or at stream
  // 0 by the FVF.
  void bindLayout(const StreamSource* sources);
  // The streams of buffer draws, uploaded where they changed.
  void bindStreams(StreamSource* sources);
  void makeSurfaces();

 private:
  SDL_Window* window_;
  SDL_GLContext context_;
  PresentParameters parameters_;
  WindowSurface* backBuffer_ = nullptr;
  WindowSurface* depthSurface_ = nullptr;
  int width_ = 0, height_ = 0;
  GLuint vao_ = 0, vbo_ = 0;
  GLProgram* program_ = nullptr;
  GLuint boundProgram_ = 0;
  GLEffect* passEffect_ = nullptr;
  // The render target and depth surface in use, each with a reference.
  Surface* target_ = nullptr;
  Surface* depthTarget_ = nullptr;
  bool targetChanged_ = true;
  bool flipped_ = false;  // drawing into a texture
  bool noDepth_ = false;  // no depth surface: depth and stencil tests are off
  int targetHeight_ = 0;  // what Direct3D's top-down rows are counted from
  GLuint fbo_ = 0, readFbo_ = 0;
  // The back buffer's depth surface as a texture target's depth.
  GLuint autoDepth_ = 0;
  int autoDepthWidth_ = 0, autoDepthHeight_ = 0;
  uint64_t viewportSerial_ = 1;
  int passTechnique_ = -1;
  GLTextureUnits units_;
  bool inScene_ = false;
};

// ---- GLEffect

GLEffect::GLEffect(GLDevice* device, EffectSource source)
    : EffectCore(device, std::move(source)),
      gl_(device),
      programs_(source_.techniques.size()),
      built_(source_.techniques.size(), false) {}

GLEffect::~GLEffect() {
  gl_->makeCurrent();
  gl_->endPass(this);
  for (auto& variants : programs_)
    for (auto& [key, p] : variants)
      if (p) {
        gl_->forgetProgram(p->id);
        glDeleteProgram(p->id);
      }
}

GLuint GLEffect::compile(GLenum stage, const std::string& text, std::string* errors) {
  GLuint shader = glCreateShader(stage);
  const char* src = text.c_str();
  glShaderSource(shader, 1, &src, nullptr);
  glCompileShader(shader);
  GLint ok = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
  if (!ok) {
    char log[2048];
    glGetShaderInfoLog(shader, sizeof log, nullptr, log);
    if (errors) *errors += log;
    glDeleteShader(shader);
    return 0;
  }
  return shader;
}

GLProgram* GLEffect::program(int t, uint64_t key, std::string* errors) {
  const EffectTechnique& tech = source_.techniques[t];
  const EffectShader* vs = source_.shader(tech.vertexShader);
  const EffectShader* ps = tech.pixelShader.empty() ? nullptr : source_.shader(tech.pixelShader);
  // A pixel shader of its own leaves the fixed stage out of the key.
  if (ps) key &= ~kStageBits;
  auto& variants = programs_[t];
  if (auto it = variants.find(key); it != variants.end()) return it->second.get();
  std::unique_ptr<GLProgram>& slot = variants[key];
  if (!vs) return nullptr;
  const std::string head = std::string("#version 330 core\n#define SHADE ") +
                           (key & kFlatBit ? "flat" : "smooth") + "\n";
  const std::string vertex =
      head +
      "#define VERTEX 1\n"
      "layout(location = 0) in vec4 aPosition;\nlayout(location = 1) in vec4 aColor;\n"
      "layout(location = 2) in vec2 aTexCoord;\nlayout(location = 3) in vec4 aWeight;\n"
      "uniform vec3 vxTarget;\n" +
      source_.text + "\nvoid main() {\n  emit(" + source_.vertexCall(*vs) +
      ");\n  // Direct3D's depth runs from 0 to 1.\n"
      "  gl_Position.z = 2.0 * gl_Position.z - gl_Position.w;\n"
      "  // A texture's rows run top down: its target turns y over. Direct3D's\n"
      "  // pixel centres lie on whole coordinates, half a pixel up and left of GL's.\n"
      "  gl_Position.y *= vxTarget.z;\n"
      "  gl_Position.xy += vxTarget.xy * gl_Position.w;\n}\n";
  const std::string fragment = head + source_.text + pixelConstants(key) + kPixelStage +
                               "\nvoid main() {\n  vec4 c = " +
                               (ps ? source_.pixelCall(*ps) : std::string("vxFixedStage()")) +
                               ";\n  if (!vxPasses(c)) discard;\n  vxFragColor = c;\n}\n";
  const GLuint v = compile(GL_VERTEX_SHADER, vertex, errors);
  const GLuint f = v ? compile(GL_FRAGMENT_SHADER, fragment, errors) : 0;
  if (!v || !f) {
    if (v) glDeleteShader(v);
    if (errors) *errors = "technique " + tech.name + ": " + *errors;
    return nullptr;
  }
  auto p = std::make_unique<GLProgram>();
  p->id = glCreateProgram();
  glAttachShader(p->id, v);
  glAttachShader(p->id, f);
  glLinkProgram(p->id);
  glDeleteShader(v);
  glDeleteShader(f);
  GLint ok = 0;
  glGetProgramiv(p->id, GL_LINK_STATUS, &ok);
  if (!ok) {
    char log[2048];
    glGetProgramInfoLog(p->id, sizeof log, nullptr, log);
    if (errors) *errors += "technique " + tech.name + ": " + log;
    glDeleteProgram(p->id);
    return nullptr;
  }
  for (const auto& param : source_.parameters) {
    p->locations.push_back(glGetUniformLocation(p->id, param.name.c_str()));
    p->uploaded.push_back(0);
  }
  p->alphaRef = glGetUniformLocation(p->id, "vxAlphaRef");
  p->targetTransform = glGetUniformLocation(p->id, "vxTarget");
  glUseProgram(p->id);
  for (const auto& s : source_.samplers) {
    const GLint at = glGetUniformLocation(p->id, s.name.c_str());
    if (at >= 0) glUniform1i(at, s.unit);
  }
  gl_->restoreProgram();
  slot = std::move(p);
  return slot.get();
}

bool GLEffect::build(std::string* errors) {
  gl_->makeCurrent();
  const uint64_t key = gl_->pixelKey();
  bool ok = true;
  for (std::size_t t = 0; t < programs_.size(); ++t) {
    built_[t] = program(static_cast<int>(t), key, errors) != nullptr;
    ok = ok && built_[t];
  }
  return ok;
}

GLProgram* GLEffect::select(int t, uint64_t key) {
  GLProgram* p = program(t, key, nullptr);
  if (!p) return nullptr;
  gl_->useProgram(p);
  for (std::size_t i = 0; i < source_.parameters.size(); ++i) {
    const int index = static_cast<int>(i);
    if (p->locations[i] < 0 || p->uploaded[i] == version(index)) continue;
    p->uploaded[i] = version(index);
    const EffectParameter& param = source_.parameters[i];
    const GLsizei n = static_cast<GLsizei>(param.elements ? param.elements : 1);
    const float* v = values(index);
    switch (param.type) {
      case PT_FLOAT:
        glUniform1fv(p->locations[i], n, v);
        break;
      case PT_VECTOR:
        glUniform4fv(p->locations[i], n, v);
        break;
      case PT_MATRIX:
        // Rows arrive in order; GLSL reads each row as a column, which the
        // text's mul() accounts for.
        if (param.columns == 3)
          glUniformMatrix4x3fv(p->locations[i], n, GL_FALSE, v);
        else
          glUniformMatrix4fv(p->locations[i], n, GL_FALSE, v);
        break;
      default:
        break;
    }
  }
  return p;
}

HRESULT GLEffect::bindTechnique(int t) {
  if (!built_[t]) return kFail;
  gl_->beginPass(this, t);
  return OK;
}

void GLEffect::unbindTechnique() {
  gl_->endPass(this);
}

// ---- GLDevice

GLDevice::GLDevice(SDL_Window* window, SDL_GLContext context, const PresentParameters& parameters)
    : window_(window), context_(context), parameters_(parameters) {
  makeCurrent();
  glGenVertexArrays(1, &vao_);
  glBindVertexArray(vao_);
  glGenBuffers(1, &vbo_);
  // Flat shading takes the first vertex of a triangle, as Direct3D does.
  glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
  makeSurfaces();
}

GLDevice::~GLDevice() {
  makeCurrent();
  releaseState(state_);
  units_.release();
  releaseAndNull(target_);
  releaseAndNull(depthTarget_);
  releaseAndNull(backBuffer_);
  releaseAndNull(depthSurface_);
  if (fbo_) glDeleteFramebuffers(1, &fbo_);
  if (readFbo_) glDeleteFramebuffers(1, &readFbo_);
  if (autoDepth_) glDeleteRenderbuffers(1, &autoDepth_);
  glDeleteBuffers(1, &vbo_);
  glDeleteVertexArrays(1, &vao_);
  SDL_GL_MakeCurrent(window_, nullptr);
  SDL_GL_DeleteContext(context_);
}

void GLDevice::makeSurfaces() {
  releaseAndNull(backBuffer_);
  releaseAndNull(depthSurface_);
  SDL_GL_GetDrawableSize(window_, &width_, &height_);
  SurfaceDesc d;
  d.format =
      parameters_.backBufferFormat == FMT_UNKNOWN ? FMT_X8R8G8B8 : parameters_.backBufferFormat;
  d.usage = USAGE_RENDERTARGET;
  d.width = static_cast<uint32_t>(width_);
  d.height = static_cast<uint32_t>(height_);
  backBuffer_ = new WindowSurface(d);
  if (parameters_.enableAutoDepthStencil) {
    d.format = parameters_.autoDepthStencilFormat;
    d.usage = USAGE_DEPTHSTENCIL;
    depthSurface_ = new WindowSurface(d);
  }
  releaseAndNull(target_);
  releaseAndNull(depthTarget_);
  backBuffer_->addRef();
  target_ = backBuffer_;
  if (depthSurface_) depthSurface_->addRef();
  depthTarget_ = depthSurface_;
  targetChanged_ = true;
  setDefaultState(d.width, d.height, parameters_.enableAutoDepthStencil);
}

HRESULT GLDevice::setRenderTarget(uint32_t index, Surface* target) {
  if (index != 0 || !target) return kInvalidCall;
  if (target != backBuffer_ && !glSurfaceTextureName(target)) return kInvalidCall;
  target->addRef();
  releaseAndNull(target_);
  target_ = target;
  targetChanged_ = true;
  coverTarget(target);
  return OK;
}

HRESULT GLDevice::setDepthStencilSurface(Surface* surface) {
  if (surface && surface != depthSurface_ && !dynamic_cast<GLDepthSurface*>(surface))
    return kInvalidCall;
  if (surface) surface->addRef();
  releaseAndNull(depthTarget_);
  depthTarget_ = surface;
  targetChanged_ = true;
  return OK;
}

void GLDevice::bindTarget() {
  if (!targetChanged_) return;
  targetChanged_ = false;
  noDepth_ = depthTarget_ == nullptr;
  dirty_ |= DIRTY_VIEWPORT | DIRTY_SCISSOR | DIRTY_RASTER | DIRTY_DEPTH | DIRTY_STENCIL;
  if (target_ == backBuffer_) {
    // The window's own depth buffer is the only one it can have.
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    flipped_ = false;
    targetHeight_ = height_;
    return;
  }
  SurfaceDesc d;
  target_->getDesc(d);
  flipped_ = true;
  targetHeight_ = static_cast<int>(d.height);
  if (!fbo_) glGenFramebuffers(1, &fbo_);
  glBindFramebuffer(GL_FRAMEBUFFER, fbo_);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                         glSurfaceTextureName(target_), 0);
  GLuint depth = 0;
  if (depthTarget_ == depthSurface_ && depthTarget_) {
    // GL cannot lend the window's depth buffer to a texture: a buffer of the
    // same size stands in for it.
    if (!autoDepth_ || autoDepthWidth_ != width_ || autoDepthHeight_ != height_) {
      if (!autoDepth_) glGenRenderbuffers(1, &autoDepth_);
      glBindRenderbuffer(GL_RENDERBUFFER, autoDepth_);
      glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width_, height_);
      glBindRenderbuffer(GL_RENDERBUFFER, 0);
      autoDepthWidth_ = width_, autoDepthHeight_ = height_;
    }
    depth = autoDepth_;
  } else if (auto* own = dynamic_cast<GLDepthSurface*>(depthTarget_)) {
    depth = own->name();
  }
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depth);
}

HRESULT GLDevice::reset(PresentParameters& parameters) {
  makeCurrent();
  parameters_ = parameters;
  inScene_ = false;
  makeSurfaces();
  return OK;
}

HRESULT GLDevice::present() {
  makeCurrent();
  SDL_GL_SwapWindow(window_);
  return OK;
}

HRESULT GLDevice::beginScene() {
  if (inScene_) return kInvalidCall;
  makeCurrent();
  inScene_ = true;
  return OK;
}

HRESULT GLDevice::endScene() {
  if (!inScene_) return kInvalidCall;
  inScene_ = false;
  return OK;
}

HRESULT GLDevice::createEffect(const char* text, std::size_t length, Effect** out,
                               std::string* errors) {
  *out = nullptr;
  EffectSource source;
  if (!source.parse(text, length, errors)) return kFail;
  auto* effect = new GLEffect(this, std::move(source));
  if (!effect->build(errors)) {
    effect->release();
    return kFail;
  }
  *out = effect;
  return OK;
}

HRESULT GLDevice::getRenderTargetData(Surface* target, Surface* destination) {
  const GLuint texture = target == backBuffer_ ? 0 : glSurfaceTextureName(target);
  if (target != backBuffer_ && !texture) return kInvalidCall;
  SurfaceDesc from;
  target->getDesc(from);
  auto* to = static_cast<MemorySurface*>(destination);
  const SurfaceDesc& d = to->desc();
  if (d.width != from.width || d.height != from.height || bytesPerPixel(d.format) != 4)
    return kInvalidCall;
  makeCurrent();
  if (texture) {
    if (!readFbo_) glGenFramebuffers(1, &readFbo_);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, readFbo_);
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
  } else {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  }
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  // The window's rows run bottom up, a texture's top down as drawn; a
  // surface's top down. BGRA bytes are A8R8G8B8 words in memory.
  const int h = static_cast<int>(d.height);
  for (int y = 0; y < h; ++y)
    glReadPixels(0, texture ? y : h - 1 - y, static_cast<GLsizei>(d.width), 1, GL_BGRA,
                 GL_UNSIGNED_BYTE, to->bits() + static_cast<std::ptrdiff_t>(y) * to->pitch());
  targetChanged_ = true;  // the read binding is back at the next draw
  return OK;
}

HRESULT GLDevice::clear(uint32_t, const Rect*, uint32_t flags, uint32_t color, float z,
                        uint32_t stencil) {
  makeCurrent();
  bindTarget();
  // The whole target, whatever the scissor and write masks say.
  glDisable(GL_SCISSOR_TEST);
  GLbitfield bits = 0;
  if (flags & CLEAR_TARGET) {
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glClearColor(((color >> 16) & 0xFF) / 255.0f, ((color >> 8) & 0xFF) / 255.0f,
                 (color & 0xFF) / 255.0f, (color >> 24) / 255.0f);
    bits |= GL_COLOR_BUFFER_BIT;
  }
  if (noDepth_) flags &= ~(CLEAR_ZBUFFER | CLEAR_STENCIL);
  if (flags & CLEAR_ZBUFFER) {
    glDepthMask(GL_TRUE);
    glClearDepth(z);
    bits |= GL_DEPTH_BUFFER_BIT;
  }
  if (flags & CLEAR_STENCIL) {
    glStencilMask(0xFF);
    glClearStencil(static_cast<GLint>(stencil));
    bits |= GL_STENCIL_BUFFER_BIT;
  }
  if (bits) glClear(bits);
  dirty_ |= DIRTY_SCISSOR | DIRTY_COLOR_MASK | DIRTY_DEPTH | DIRTY_STENCIL;
  return OK;
}

void GLDevice::flushState() {
  const uint32_t* rs = state_.renderStates;
  const uint32_t d = dirty_;
  dirty_ = 0;
  if (d & DIRTY_BLEND) {
    if (rs[RS_ALPHABLENDENABLE])
      glEnable(GL_BLEND);
    else
      glDisable(GL_BLEND);
    glBlendFunc(blendOf(rs[RS_SRCBLEND]), blendOf(rs[RS_DESTBLEND]));
    glBlendEquation(blendOpOf(rs[RS_BLENDOP]));
  }
  if (d & DIRTY_DEPTH) {
    if (rs[RS_ZENABLE] && !noDepth_)
      glEnable(GL_DEPTH_TEST);
    else
      glDisable(GL_DEPTH_TEST);
    glDepthMask(rs[RS_ZWRITEENABLE] ? GL_TRUE : GL_FALSE);
    glDepthFunc(compareOf(rs[RS_ZFUNC]));
  }
  if (d & DIRTY_STENCIL) {
    if (rs[RS_STENCILENABLE] && !noDepth_)
      glEnable(GL_STENCIL_TEST);
    else
      glDisable(GL_STENCIL_TEST);
    glStencilFunc(compareOf(rs[RS_STENCILFUNC]), static_cast<GLint>(rs[RS_STENCILREF]),
                  rs[RS_STENCILMASK]);
    glStencilOp(stencilOpOf(rs[RS_STENCILFAIL]), stencilOpOf(rs[RS_STENCILZFAIL]),
                stencilOpOf(rs[RS_STENCILPASS]));
    glStencilMask(rs[RS_STENCILWRITEMASK]);
  }
  if (d & DIRTY_RASTER) {
    // Winding is judged on screen in both, so the cull modes carry over.
    if (rs[RS_CULLMODE] == CULL_NONE) {
      glDisable(GL_CULL_FACE);
    } else {
      glEnable(GL_CULL_FACE);
      glCullFace(GL_BACK);
      // A texture target turns y over, and with it the winding.
      glFrontFace((rs[RS_CULLMODE] == CULL_CW) != flipped_ ? GL_CCW : GL_CW);
    }
    glPolygonMode(GL_FRONT_AND_BACK, rs[RS_FILLMODE] == FILL_POINT       ? GL_POINT
                                     : rs[RS_FILLMODE] == FILL_WIREFRAME ? GL_LINE
                                                                         : GL_FILL);
    const float bias = asFloat(rs[RS_DEPTHBIAS]), slope = asFloat(rs[RS_SLOPESCALEDEPTHBIAS]);
    if (bias != 0.0f || slope != 0.0f) {
      glEnable(GL_POLYGON_OFFSET_FILL);
      glEnable(GL_POLYGON_OFFSET_LINE);
      // The bias is in depth units; GL counts steps of a 24-bit buffer.
      glPolygonOffset(slope, bias * 16777216.0f);
    } else {
      glDisable(GL_POLYGON_OFFSET_FILL);
      glDisable(GL_POLYGON_OFFSET_LINE);
    }
  }
  if (d & DIRTY_SCISSOR) {
    if (rs[RS_SCISSORTESTENABLE])
      glEnable(GL_SCISSOR_TEST);
    else
      glDisable(GL_SCISSOR_TEST);
    const Rect& r = state_.scissor;
    glScissor(r.left, flipped_ ? r.top : glInt(int64_t{targetHeight_} - r.bottom),
              glInt(int64_t{r.right} - r.left), glInt(int64_t{r.bottom} - r.top));
  }
  if (d & DIRTY_VIEWPORT) {
    const Viewport& v = state_.viewport;
    const GLint y = static_cast<GLint>(v.y);
    glViewport(static_cast<GLint>(v.x),
               flipped_ ? y : glInt(int64_t{targetHeight_} - y - static_cast<GLint>(v.height)),
               static_cast<GLsizei>(v.width), static_cast<GLsizei>(v.height));
    glDepthRange(v.minZ, v.maxZ);
  }
  if (d & DIRTY_COLOR_MASK) {
    const uint32_t m = rs[RS_COLORWRITEENABLE];
    glColorMask(m & 1, (m >> 1) & 1, (m >> 2) & 1, (m >> 3) & 1);
  }
}

uint64_t GLDevice::pixelKey() const {
  const uint32_t* ts = state_.stageStates[0];
  const uint32_t* rs = state_.renderStates;
  uint64_t key = (ts[TSS_COLOROP] & 31) | (ts[TSS_COLORARG1] & 63) << 5 |
                 (ts[TSS_COLORARG2] & 63) << 11 | (ts[TSS_ALPHAOP] & 31) << 17 |
                 uint64_t{ts[TSS_ALPHAARG1] & 63} << 22 | uint64_t{ts[TSS_ALPHAARG2] & 63} << 28 |
                 uint64_t{state_.textures[0] ? 1u : 0u} << 34;
  if (rs[RS_ALPHATESTENABLE])
    key |= kAlphaTestBit | uint64_t{rs[RS_ALPHAFUNC] & 15} << kAlphaFuncShift;
  if (rs[RS_SHADEMODE] == SHADE_FLAT) key |= kFlatBit;
  return key;
}

void GLDevice::bindLayout(const StreamSource* sources) {
  bool present[4] = {};
  auto attribute = [&](GLuint slot, const StreamSource& from, GLint size, GLenum type,
                       GLboolean normalized, std::size_t offset) {
    present[slot] = true;
    glBindBuffer(GL_ARRAY_BUFFER, from.buffer);
    glEnableVertexAttribArray(slot);
    glVertexAttribPointer(slot, size, type, normalized, static_cast<GLsizei>(from.stride),
                          reinterpret_cast<const void*>(from.offset + offset));
  };
  if (state_.declaration) {
    for (const VertexElement* e = elementsOf(state_.declaration); e->stream != 0xFF; ++e) {
      if (e->stream >= kStreamCount || !sources[e->stream].buffer) continue;
      GLuint slot;
      switch (e->usage) {
        case DECLUSAGE_POSITION:
          slot = A_POSITION;
          break;
        case DECLUSAGE_COLOR:
          slot = A_COLOR;
          break;
        case DECLUSAGE_TEXCOORD:
          slot = A_TEXCOORD;
          break;
        case DECLUSAGE_BLENDWEIGHT:
          slot = A_WEIGHT;
          break;
        default:  // no shader reads the others
          continue;
      }
      // A D3DCOLOR is read as BGRA: x gets the third byte, as Direct3D gives it.
      if (e->type == DECLTYPE_D3DCOLOR)
        attribute(slot, sources[e->stream], GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, e->offset);
      else if (e->type <= DECLTYPE_FLOAT4)
        attribute(slot, sources[e->stream], e->type + 1, GL_FLOAT, GL_FALSE, e->offset);
    }
  } else if (sources[0].buffer) {
    const uint32_t fvf = state_.fvf;
    std::size_t offset = 0;
    if (fvf & FVF_XYZ)
      attribute(A_POSITION, sources[0], 3, GL_FLOAT, GL_FALSE, offset), offset += 12;
    if (fvf & FVF_NORMAL) offset += 12;
    if (fvf & FVF_DIFFUSE)
      attribute(A_COLOR, sources[0], GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, offset), offset += 4;
    if (fvf & FVF_TEX1) attribute(A_TEXCOORD, sources[0], 2, GL_FLOAT, GL_FALSE, offset);
  }
  for (GLuint slot = 0; slot < 4; ++slot)
    if (!present[slot]) glDisableVertexAttribArray(slot);
}

bool GLDevice::prepareDraw() {
  // Every draw runs inside an effect pass; the device has no program of its own.
  if (!passEffect_) return false;
  makeCurrent();
  bindTarget();
  const uint32_t changed = dirty_;
  flushState();
  program_ = passEffect_->select(passTechnique_, pixelKey());
  if (!program_) return false;
  // Any uniform sent makes the driver copy all of them again: send changes only.
  const int ref = static_cast<int>(state_.renderStates[RS_ALPHAREF] & 0xFF);
  if (program_->alphaRefSent != ref) {
    program_->alphaRefSent = ref;
    glUniform1i(program_->alphaRef, ref);
  }
  if (changed & DIRTY_VIEWPORT) ++viewportSerial_;
  if (program_->viewportSent != viewportSerial_) {
    program_->viewportSent = viewportSerial_;
    // Just under half a pixel, so that edges on Direct3D's pixel boundaries
    // never fall on GL's pixel centres, where the fill rules differ.
    const Viewport& v = state_.viewport;
    const float shift = 63.0f / 64.0f, down = flipped_ ? 1.0f : -1.0f;
    glUniform3f(program_->targetTransform, v.width ? shift / static_cast<float>(v.width) : 0.0f,
                v.height ? down * shift / static_cast<float>(v.height) : 0.0f,
                flipped_ ? -1.0f : 1.0f);
  }
  if (changed & (DIRTY_TEXTURES | DIRTY_SAMPLERS))
    units_.bind(state_.textures, state_.samplerStates, 2);
  glBindVertexArray(vao_);
  return true;
}

HRESULT GLDevice::drawPrimitiveUP(int32_t type, uint32_t count, const void* vertices,
                                  uint32_t stride) {
  if (count == 0) return passEffect_ ? OK : kInvalidCall;
  if (!prepareDraw()) return kInvalidCall;
  const int n = verticesFor(type, count);
  glBindBuffer(GL_ARRAY_BUFFER, vbo_);
  glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(n) * stride, vertices, GL_STREAM_DRAW);
  StreamSource sources[kStreamCount];
  sources[0] = {vbo_, 0, stride};
  bindLayout(sources);
  glDrawArrays(primitiveOf(type), 0, n);
  return OK;
}

void GLDevice::bindStreams(StreamSource* sources) {
  for (int s = 0; s < kStreamCount; ++s) {
    const StreamBinding& b = state_.streams[s];
    if (!b.buffer) continue;
    auto* buffer = static_cast<GLVertexBuffer*>(b.buffer);
    buffer->bind(GL_ARRAY_BUFFER);
    sources[s] = {buffer->name(), b.offset, b.stride};
  }
  bindLayout(sources);
}

HRESULT GLDevice::drawPrimitive(int32_t type, uint32_t startVertex, uint32_t count) {
  if (count == 0) return passEffect_ ? OK : kInvalidCall;
  if (!prepareDraw()) return kInvalidCall;
  StreamSource sources[kStreamCount];
  bindStreams(sources);
  glDrawArrays(primitiveOf(type), static_cast<GLint>(startVertex), verticesFor(type, count));
  return OK;
}

HRESULT GLDevice::drawIndexedPrimitive(int32_t type, int32_t baseVertex, uint32_t, uint32_t,
                                       uint32_t startIndex, uint32_t count) {
  if (!state_.indices) return kInvalidCall;
  if (count == 0) return passEffect_ ? OK : kInvalidCall;
  if (!prepareDraw()) return kInvalidCall;
  StreamSource sources[kStreamCount];
  bindStreams(sources);
  BufferDesc desc;
  state_.indices->getDesc(desc);
  const bool wide = desc.format != FMT_INDEX16;
  // The element buffer belongs to the vertex array, bound above.
  static_cast<GLIndexBuffer*>(state_.indices)->bind(GL_ELEMENT_ARRAY_BUFFER);
  glDrawElementsBaseVertex(
      primitiveOf(type), verticesFor(type, count), wide ? GL_UNSIGNED_INT : GL_UNSIGNED_SHORT,
      reinterpret_cast<const void*>(std::size_t{startIndex} * (wide ? 4 : 2)), baseVertex);
  return OK;
}

// ---- GLDirect3D

namespace {

class GLDirect3D : public Direct3D {
 public:
  HRESULT getAdapterDisplayMode(uint32_t adapter, DisplayMode& out) override {
    if (!SDL_WasInit(SDL_INIT_VIDEO)) return kNotAvailable;
    SDL_DisplayMode mode;
    out = DisplayMode{};
    if (SDL_GetDesktopDisplayMode(static_cast<int>(adapter), &mode) == 0) {
      out.width = static_cast<uint32_t>(mode.w);
      out.height = static_cast<uint32_t>(mode.h);
      out.refreshRate = static_cast<uint32_t>(mode.refresh_rate);
    }
    out.format = FMT_X8R8G8B8;
    return OK;
  }
  HRESULT getDeviceCaps(uint32_t, int32_t, Caps& out) override {
    out = GLDevice::glCaps();
    return OK;
  }
  HRESULT checkDeviceType(uint32_t, int32_t, int32_t, int32_t backBufferFormat, bool) override {
    switch (backBufferFormat) {
      case FMT_UNKNOWN:
      case FMT_R8G8B8:
      case FMT_A8R8G8B8:
      case FMT_X8R8G8B8:
        return OK;
      default:
        return kNotAvailable;
    }
  }
  HRESULT checkDeviceFormat(uint32_t, int32_t, int32_t, uint32_t usage, int32_t,
                            int32_t format) override {
    if (usage & USAGE_DEPTHSTENCIL) return format == FMT_D24S8 ? OK : kNotAvailable;
    return glTextureFormatSupported(format) ? OK : kNotAvailable;
  }
  HRESULT createDevice(uint32_t, int32_t, uint32_t focusWindow, uint32_t,
                       PresentParameters& parameters, Device** out) override {
    *out = nullptr;
    SDL_Window* window =
        SDL_GetWindowFromID(parameters.deviceWindow ? parameters.deviceWindow : focusWindow);
    if (!window) return kInvalidCall;
    SDL_GLContext context = SDL_GL_CreateContext(window);
    if (!context) {
      std::printf("GL context failed: %s\n", SDL_GetError());
      return kNotAvailable;
    }
    *out = new GLDevice(window, context, parameters);
    return OK;
  }
};

}  // namespace

Direct3D* createOpenGLDirect3D() {
  return new GLDirect3D();
}

}  // namespace vostan::gfx
