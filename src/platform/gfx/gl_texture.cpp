#include "platform/gfx/gl_texture.h"

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <cstring>
#include <vector>

#include "platform/gfx/memory_objects.h"

namespace vostan::gfx {

namespace {

// How GL stores and reads a device format. The upload format and type read
// the device's little-endian words as the device means them; the swizzle
// gives one- and two-channel formats the colours the device samples.
// 32-bit textures that are only sampled take their bytes as they are, with
// red and blue swapped in the swizzle: a plain copy is the upload that every
// driver has a fast path for. Render targets can't do that, since what is
// drawn into them must land in the channels the sampler reads.
struct GLFormat {
  GLint internalFormat;
  GLenum format, type;
  GLint swizzle[4];
};

constexpr GLint R = GL_RED, G = GL_GREEN, B = GL_BLUE, A = GL_ALPHA, ZERO = GL_ZERO, ONE = GL_ONE;

bool glFormatOf(int32_t format, uint32_t usage, GLFormat& out) {
  const bool sampledOnly = !(usage & USAGE_RENDERTARGET);
  switch (format) {
    case FMT_R8G8B8:  // bytes B, G, R
      out = {GL_RGB8, GL_BGR, GL_UNSIGNED_BYTE, {R, G, B, ONE}};
      return true;
    case FMT_A8R8G8B8:  // bytes B, G, R, A
      out = sampledOnly ? GLFormat{GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, {B, G, R, A}}
                        : GLFormat{GL_RGBA8, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, {R, G, B, A}};
      return true;
    case FMT_X8R8G8B8:
      out = sampledOnly ? GLFormat{GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, {B, G, R, ONE}}
                        : GLFormat{GL_RGBA8, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, {R, G, B, ONE}};
      return true;
    case FMT_R5G6B5:
      out = {GL_RGB8, GL_RGB, GL_UNSIGNED_SHORT_5_6_5, {R, G, B, ONE}};
      return true;
    case FMT_X1R5G5B5:
      out = {GL_RGB5_A1, GL_BGRA, GL_UNSIGNED_SHORT_1_5_5_5_REV, {R, G, B, ONE}};
      return true;
    case FMT_A1R5G5B5:
      out = {GL_RGB5_A1, GL_BGRA, GL_UNSIGNED_SHORT_1_5_5_5_REV, {R, G, B, A}};
      return true;
    case FMT_A4R4G4B4:
      out = {GL_RGBA4, GL_BGRA, GL_UNSIGNED_SHORT_4_4_4_4_REV, {R, G, B, A}};
      return true;
    case FMT_A8:
      out = {GL_R8, GL_RED, GL_UNSIGNED_BYTE, {ZERO, ZERO, ZERO, R}};
      return true;
    case FMT_L8:
      out = {GL_R8, GL_RED, GL_UNSIGNED_BYTE, {R, R, R, ONE}};
      return true;
    case FMT_A8L8:  // bytes L, A
      out = {GL_RG8, GL_RG, GL_UNSIGNED_BYTE, {R, R, R, G}};
      return true;
    case FMT_R16F:
      out = {GL_R16F, GL_RED, GL_HALF_FLOAT, {R, ONE, ONE, ONE}};
      return true;
    default:
      return false;
  }
}

class GLTexture;

// Level 0: the system-memory copy and the lock over it.
class GLTextureLevel : public Surface {
 public:
  GLTextureLevel(const SurfaceDesc& desc, const GLContextRef& context, GLuint name,
                 const GLFormat& format)
      : desc_(desc),
        context_(context),
        name_(name),
        format_(format),
        pixelSize_(bytesPerPixel(desc.format)),
        pitch_(static_cast<int32_t>(desc.width) * pixelSize_),
        bytes_(static_cast<std::size_t>(pitch_) * desc.height, 0) {}

  HRESULT getDesc(SurfaceDesc& out) override {
    out = desc_;
    return OK;
  }
  HRESULT lockRect(LockedRect& out, const Rect* rect, uint32_t flags) override {
    if (locked_) return kInvalidCall;
    area_ = rect
                ? *rect
                : Rect{0, 0, static_cast<int32_t>(desc_.width), static_cast<int32_t>(desc_.height)};
    if (area_.left < 0 || area_.top < 0 || area_.right > static_cast<int32_t>(desc_.width) ||
        area_.bottom > static_cast<int32_t>(desc_.height) || area_.left > area_.right ||
        area_.top > area_.bottom)
      return kInvalidCall;
    out.pitch = pitch_;
    out.bits = bytes_.data() + static_cast<std::ptrdiff_t>(area_.top) * pitch_ +
               static_cast<std::ptrdiff_t>(area_.left) * pixelSize_;
    locked_ = true;
    readOnly_ = (flags & LOCK_READONLY) != 0;
    return OK;
  }
  HRESULT unlockRect() override {
    if (!locked_) return kInvalidCall;
    locked_ = false;
    if (!readOnly_) upload(area_);
    return OK;
  }

  // Sends a rectangle of the copy to GL.
  void upload(const Rect& r) {
    if (!name_ || r.right <= r.left || r.bottom <= r.top) return;
    context_.makeCurrent();
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glBindTexture(GL_TEXTURE_2D, name_);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(desc_.width));
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, r.left);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, r.top);
    glTexSubImage2D(GL_TEXTURE_2D, 0, r.left, r.top, r.right - r.left, r.bottom - r.top,
                    format_.format, format_.type, bytes_.data());
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
  }
  // The texture is gone; later unlocks only touch the copy.
  void detach() { name_ = 0; }
  GLuint name() const { return name_; }

 private:
  SurfaceDesc desc_;
  GLContextRef context_;
  GLuint name_;
  GLFormat format_;
  int32_t pixelSize_;
  int32_t pitch_;
  std::vector<uint8_t> bytes_;
  Rect area_;
  bool locked_ = false;
  bool readOnly_ = false;
};

class GLTexture : public Texture {
 public:
  GLTexture(const SurfaceDesc& desc, const GLContextRef& context, const GLFormat& format)
      : context_(context) {
    context_.makeCurrent();
    glGenTextures(1, &name_);
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glBindTexture(GL_TEXTURE_2D, name_);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, format.swizzle);
    // Storage without data; the zeroed copy goes up next, so a new texture
    // (and one made again after a reset) starts empty.
    glTexImage2D(GL_TEXTURE_2D, 0, format.internalFormat, static_cast<GLsizei>(desc.width),
                 static_cast<GLsizei>(desc.height), 0, format.format, format.type, nullptr);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
    level_ = new GLTextureLevel(desc, context, name_, format);
    level_->upload(Rect{0, 0, static_cast<int32_t>(desc.width), static_cast<int32_t>(desc.height)});
    desc_ = desc;
  }
  ~GLTexture() override {
    level_->detach();
    level_->release();
    context_.makeCurrent();
    glDeleteTextures(1, &name_);
  }
  HRESULT getLevelDesc(uint32_t level, SurfaceDesc& out) override {
    if (level != 0) return kInvalidCall;
    out = desc_;
    return OK;
  }
  HRESULT getSurfaceLevel(uint32_t level, Surface** out) override {
    if (level != 0) {
      *out = nullptr;
      return kInvalidCall;
    }
    level_->addRef();
    *out = level_;
    return OK;
  }
  GLuint name() const { return name_; }

 private:
  GLContextRef context_;
  GLuint name_ = 0;
  SurfaceDesc desc_;
  GLTextureLevel* level_;
};

GLint addressOf(uint32_t mode) {
  switch (mode) {
    case TADDRESS_MIRROR:
      return GL_MIRRORED_REPEAT;
    case TADDRESS_CLAMP:
      return GL_CLAMP_TO_EDGE;
    case 4:  // border
      return GL_CLAMP_TO_BORDER;
    default:
      return GL_REPEAT;
  }
}

}  // namespace

uint32_t glSurfaceTextureName(Surface* surface) {
  auto* level = dynamic_cast<GLTextureLevel*>(surface);
  return level ? level->name() : 0;
}

void GLContextRef::makeCurrent() const {
  if (context && SDL_GL_GetCurrentContext() != context) SDL_GL_MakeCurrent(window, context);
}

bool glTextureFormatSupported(int32_t format) {
  GLFormat f;
  return glFormatOf(format, 0, f);
}

HRESULT createGLTexture(const GLContextRef& context, uint32_t width, uint32_t height,
                        uint32_t levels, uint32_t usage, int32_t format, int32_t pool,
                        Texture** out) {
  *out = nullptr;
  GLFormat f;
  if (levels != 1 || width == 0 || height == 0 || !glFormatOf(format, usage, f))
    return kNotAvailable;
  // Larger than the driver can make: refused before any memory is taken.
  GLint largest = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
  if (largest <= 0) largest = 8192;
  if (width > static_cast<uint32_t>(largest) || height > static_cast<uint32_t>(largest))
    return kNotAvailable;
  *out = new GLTexture(surfaceDesc(format, width, height, usage, pool, RTYPE_TEXTURE), context, f);
  return OK;
}

uint32_t glTextureName(Texture* texture) {
  return texture ? static_cast<GLTexture*>(texture)->name() : 0;
}

void GLTextureUnits::release() {
  for (GLuint& s : samplers_) {
    if (s) glDeleteSamplers(1, &s);
    s = 0;
  }
}

void GLTextureUnits::bind(Texture* const* textures,
                          const uint32_t (*samplerStates)[kSamplerStateCount], int units) {
  for (int u = 0; u < units && u < kUnits; ++u) {
    const uint32_t* s = samplerStates[u];
    if (!samplers_[u]) glGenSamplers(1, &samplers_[u]);
    const GLuint sampler = samplers_[u];
    // No texture has more than one level, so the mip filter has nothing to do.
    glSamplerParameteri(sampler, GL_TEXTURE_MIN_FILTER,
                        s[SAMP_MINFILTER] == TEXF_POINT ? GL_NEAREST : GL_LINEAR);
    glSamplerParameteri(sampler, GL_TEXTURE_MAG_FILTER,
                        s[SAMP_MAGFILTER] == TEXF_POINT ? GL_NEAREST : GL_LINEAR);
    glSamplerParameteri(sampler, GL_TEXTURE_WRAP_S, addressOf(s[SAMP_ADDRESSU]));
    glSamplerParameteri(sampler, GL_TEXTURE_WRAP_T, addressOf(s[SAMP_ADDRESSV]));
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(u));
    glBindTexture(GL_TEXTURE_2D, glTextureName(textures[u]));
    glBindSampler(static_cast<GLuint>(u), sampler);
  }
  glActiveTexture(GL_TEXTURE0);
}

}  // namespace vostan::gfx
