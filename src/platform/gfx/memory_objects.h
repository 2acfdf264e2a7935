#pragma once
// Surfaces, textures and buffers that live in system memory: the whole of
// the recording double's resources, and the system-memory side of a real
// backend.
#include <cstdint>
#include <vector>

#include "platform/gfx/gfx.h"

namespace vostan::gfx {

// Bytes per pixel of a surface format; 0 for formats without one.
int bytesPerPixel(int32_t format);

class MemorySurface : public Surface {
 public:
  explicit MemorySurface(const SurfaceDesc& desc);
  HRESULT getDesc(SurfaceDesc& out) override;
  HRESULT lockRect(LockedRect& out, const Rect* rect, uint32_t flags) override;
  HRESULT unlockRect() override;

  uint8_t* bits() { return bytes_.data(); }
  int32_t pitch() const { return pitch_; }
  const SurfaceDesc& desc() const { return desc_; }
  bool locked() const { return locked_; }
  uint32_t lockFlags() const { return lockFlags_; }
  Rect lockedArea() const { return area_; }

 private:
  SurfaceDesc desc_;
  int32_t pitch_;
  std::vector<uint8_t> bytes_;
  bool locked_ = false;
  uint32_t lockFlags_ = 0;
  Rect area_;
};

class MemoryTexture : public Texture {
 public:
  explicit MemoryTexture(const SurfaceDesc& desc);
  ~MemoryTexture() override;
  HRESULT getLevelDesc(uint32_t level, SurfaceDesc& out) override;
  HRESULT getSurfaceLevel(uint32_t level, Surface** out) override;
  MemorySurface* level0() { return level_; }

 private:
  MemorySurface* level_;
};

template <class Base>
class MemoryBuffer : public Base {
 public:
  explicit MemoryBuffer(const BufferDesc& desc) : desc_(desc), bytes_(desc.size) {}
  HRESULT lock(uint32_t offset, uint32_t size, void** out, uint32_t flags) override {
    if (offset > bytes_.size()) return kInvalidCall;
    *out = bytes_.data() + offset;
    lastLock_ = {offset, size, flags};
    return OK;
  }
  HRESULT unlock() override { return OK; }
  HRESULT getDesc(BufferDesc& out) override {
    out = desc_;
    return OK;
  }
  std::vector<uint8_t>& bytes() { return bytes_; }
  struct Lock {
    uint32_t offset = 0, size = 0, flags = 0;
  };
  Lock lastLock() const { return lastLock_; }

 private:
  BufferDesc desc_;
  std::vector<uint8_t> bytes_;
  Lock lastLock_;
};

using MemoryVertexBuffer = MemoryBuffer<VertexBuffer>;
using MemoryIndexBuffer = MemoryBuffer<IndexBuffer>;

}  // namespace vostan::gfx
