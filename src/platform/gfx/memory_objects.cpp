#include "platform/gfx/memory_objects.h"

namespace vostan::gfx {

int bytesPerPixel(int32_t format) {
  switch (format) {
    case FMT_R8G8B8:
      return 3;
    case FMT_A8R8G8B8:
    case FMT_X8R8G8B8:
    case FMT_D24S8:
      return 4;
    case FMT_R5G6B5:
    case FMT_X1R5G5B5:
    case FMT_A1R5G5B5:
    case FMT_A4R4G4B4:
    case FMT_A8L8:
    case FMT_R16F:
      return 2;
    case FMT_A8:
    case FMT_L8:
      return 1;
    default:
      return 0;
  }
}

MemorySurface::MemorySurface(const SurfaceDesc& desc)
    : desc_(desc), pitch_(static_cast<int32_t>(desc.width) * bytesPerPixel(desc.format)) {
  bytes_.assign(static_cast<std::size_t>(pitch_) * desc.height, 0);
}

HRESULT MemorySurface::getDesc(SurfaceDesc& out) {
  out = desc_;
  return OK;
}

HRESULT MemorySurface::lockRect(LockedRect& out, const Rect* rect, uint32_t flags) {
  if (locked_) return kInvalidCall;
  area_ = rect ? *rect
               : Rect{0, 0, static_cast<int32_t>(desc_.width), static_cast<int32_t>(desc_.height)};
  // As a device surface does: a rectangle not inside the surface is refused.
  if (area_.left < 0 || area_.top < 0 || area_.right > static_cast<int32_t>(desc_.width) ||
      area_.bottom > static_cast<int32_t>(desc_.height) || area_.left > area_.right ||
      area_.top > area_.bottom)
    return kInvalidCall;
  out.pitch = pitch_;
  out.bits = bytes_.data() + static_cast<std::ptrdiff_t>(area_.top) * pitch_ +
             area_.left * bytesPerPixel(desc_.format);
  locked_ = true;
  lockFlags_ = flags;
  return OK;
}

HRESULT MemorySurface::unlockRect() {
  if (!locked_) return kInvalidCall;
  locked_ = false;
  return OK;
}

MemoryTexture::MemoryTexture(const SurfaceDesc& desc) : level_(new MemorySurface(desc)) {}

MemoryTexture::~MemoryTexture() {
  level_->release();
}

HRESULT MemoryTexture::getLevelDesc(uint32_t level, SurfaceDesc& out) {
  if (level != 0) return kInvalidCall;
  return level_->getDesc(out);
}

HRESULT MemoryTexture::getSurfaceLevel(uint32_t level, Surface** out) {
  if (level != 0) return kInvalidCall;
  level_->addRef();
  *out = level_;
  return OK;
}

}  // namespace vostan::gfx
