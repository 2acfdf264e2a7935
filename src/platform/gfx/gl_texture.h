#pragma once
// Textures of the OpenGL backend. Each keeps a system-memory copy of its one
// level in the device format's own byte layout: a lock hands out that copy,
// and the unlock uploads the locked rectangle with a GL format and type that
// read those bytes as the device format means them. What was written is what
// a later lock reads, and what the sampler sees.
#include <SDL.h>

#include <cstdint>

#include "platform/gfx/gfx.h"

namespace vostan::gfx {

// The GL context textures are made and uploaded in.
struct GLContextRef {
  SDL_Window* window = nullptr;
  SDL_GLContext context = nullptr;
  void makeCurrent() const;
};

// True for the device formats a texture can take.
bool glTextureFormatSupported(int32_t format);

// One level, `width` by `height`, of `format`, zero-filled. kNotAvailable for
// a format without a GL equivalent or levels other than 1.
HRESULT createGLTexture(const GLContextRef& context, uint32_t width, uint32_t height,
                        uint32_t levels, uint32_t usage, int32_t format, int32_t pool,
                        Texture** out);

// The GL name behind a texture made by createGLTexture; 0 for null.
uint32_t glTextureName(Texture* texture);
// The GL name of the texture whose level `surface` is; 0 for other surfaces.
uint32_t glSurfaceTextureName(Surface* surface);

// Binds the textures of the first `units` stages with their sampler states
// (filters and addressing) for a draw.
class GLTextureUnits {
 public:
  GLTextureUnits() = default;
  GLTextureUnits(const GLTextureUnits&) = delete;
  GLTextureUnits& operator=(const GLTextureUnits&) = delete;
  // Gives back the sampler objects; with the context current.
  void release();

  void bind(Texture* const* textures, const uint32_t (*samplerStates)[kSamplerStateCount],
            int units);

 private:
  static constexpr int kUnits = 2;
  uint32_t samplers_[kUnits] = {};
};

}  // namespace vostan::gfx
