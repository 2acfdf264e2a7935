#include "graphics/texture_store.h"

#include <cstdio>
#include <memory>

#include "graphics/pixelsample/direct_rows.h"
#include "graphics/pixelsample/sample_select.h"
#include "platform/low_memory.h"

namespace vostan {

using namespace gfx;

int32_t formatForInternalFormat(int32_t internalFormat) {
  switch (internalFormat) {
    case gl::kDepthComponent:
      return FMT_R16F;  // the effect writes z / w into a float colour texture
    case gl::kAlpha:    // no A8: alpha textures live as luminance plus alpha
    case gl::kLuminanceAlpha:
      return FMT_A8L8;
    case gl::kRgba:
    case 32856:  // GL_RGBA8
      return FMT_A8R8G8B8;
    case gl::kLuminance:
      return FMT_L8;
    default:
      return FMT_X8R8G8B8;
  }
}

int32_t internalFormatForFormat(int32_t format) {
  switch (format) {
    case FMT_A8R8G8B8:
      return 32856;  // GL_RGBA8
    case FMT_R5G6B5:
    case FMT_X1R5G5B5:
      return 32848;  // GL_RGB5
    case FMT_A1R5G5B5:
      return 32855;  // GL_RGB5_A1
    case FMT_A4R4G4B4:
      return 32854;  // GL_RGBA4
    case FMT_A8:
      return gl::kAlpha;
    case FMT_L8:
      return gl::kLuminance;
    case FMT_A8L8:
      return gl::kLuminanceAlpha;
    default:
      return 32849;  // GL_RGB8
  }
}

int32_t textureHandle(const TextureEntry* entry) {
  return platform::toHandle32(entry);
}

TextureEntry* textureEntry(int32_t handle) {
  return platform::fromHandle32<TextureEntry>(handle);
}

TextureEntry* slotOf(const D3DGraphics& g, int32_t handle) {
  if (handle == 0) return nullptr;
  const uintptr_t p = reinterpret_cast<uintptr_t>(textureEntry(handle));
  const uintptr_t first = reinterpret_cast<uintptr_t>(g.textures);
  if (p < first) return nullptr;
  const uintptr_t offset = p - first;
  if (offset % sizeof(TextureEntry) != 0 ||
      offset / sizeof(TextureEntry) >= static_cast<uintptr_t>(g.textureCount))
    return nullptr;
  return &g.textures[offset / sizeof(TextureEntry)];
}

bool isFreeSlot(const D3DGraphics& g, const TextureEntry* entry) {
  for (int32_t i = 0; i < g.freeTextureCount; ++i)
    if (g.freeTextures[i] == entry) return true;
  return false;
}

int32_t memoryPixelBytes(int32_t format, int32_t type) {
  // The samples only keep the address; nothing is read through it here.
  static char probe;
  const std::unique_ptr<PixelSample> sample = sampleForMemory(format, type, &probe);
  return sample ? sample->getPixelSize() : 0;
}

int32_t createTextureSlot(D3DGraphics& g) {
  if (g.freeTextureCount == 0 && g.textureCount >= D3DGraphics::kMaxTextures) {
    std::printf("no free texture slot\n");
    return 0;
  }
  TextureEntry* e =
      g.freeTextureCount > 0 ? g.freeTextures[--g.freeTextureCount] : &g.textures[g.textureCount++];
  return textureHandle(e);
}

void deleteTexture(D3DGraphics& g, int32_t handle) {
  TextureEntry* e = slotOf(g, handle);
  if (!e) return;
  // Released first, so a second delete only has the free list to guard.
  releaseAndNull(e->texture);
  for (int32_t i = 0; i < g.freeTextureCount; ++i) {
    if (g.freeTextures[i] == e) {
      std::printf("duplicated delete tex.. ignored\n");
      return;
    }
  }
  g.freeTextures[g.freeTextureCount++] = e;
}

void bindTexture(D3DGraphics& g, int32_t handle) {
  // A handle that names no slot binds nothing, as 0 does.
  TextureEntry* e = slotOf(g, handle);
  g.device->setTexture(static_cast<uint32_t>(g.currentStage), e ? e->texture : nullptr);
  g.boundTextures[g.currentStage] = e;
}

namespace {

void createTexture(D3DGraphics& g, TextureEntry* e, int32_t internalFormat, int32_t width,
                   int32_t height, int32_t flags, int32_t format, int32_t type,
                   const void* pixels) {
  releaseAndNull(e->texture);
  int32_t d3dFormat = formatForInternalFormat(internalFormat);
  uint32_t usage = 0;
  int32_t pool = POOL_MANAGED;
  // Bit 0 of the argument GL gives to the border asks for a render texture.
  if (flags & 1) {
    usage = USAGE_RENDERTARGET;
    pool = POOL_DEFAULT;
  }
  Direct3D& d3d = direct3D();
  DisplayMode mode;
  d3d.getAdapterDisplayMode(0, mode);
  if (failed(d3d.checkDeviceFormat(0, DEVTYPE_HAL, mode.format, usage, RTYPE_TEXTURE, d3dFormat)))
    d3dFormat = FMT_A8R8G8B8;
  const HRESULT hr =
      g.device->createTexture(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 1, usage,
                              d3dFormat, pool, &e->texture);
  if (failed(hr)) {
    std::printf("CreateTexture Failed..... w:%d h:%d u:%d fmt:%d p:%d  hr:%d\n", width, height,
                static_cast<int>(usage), d3dFormat, pool, hr);
    e->texture = nullptr;
    return;
  }
  e->texture->getLevelDesc(0, e->desc);
  e->glFormat = internalFormatForFormat(d3dFormat);
  // Render textures get no pixels; the others start with the caller's, or
  // zeros for none.
  if (pool == POOL_MANAGED)
    updateTexture(e, g.device, 0, 0, 0, 0, width, height, format, type, pixels);
}

}  // namespace

void texImage2D(D3DGraphics& g, int32_t handle, int32_t internalFormat, int32_t width,
                int32_t height, int32_t flags, int32_t format, int32_t type, const void* pixels) {
  if (width <= 0 || height <= 0) return;
  TextureEntry* e = slotOf(g, handle);
  if (!e || isFreeSlot(g, e)) return;
  createTexture(g, e, internalFormat, width, height, flags, format, type, pixels);
  g.device->setTexture(static_cast<uint32_t>(g.currentStage), e->texture);
  g.boundTextures[g.currentStage] = e;
}

void texSubImage2D(D3DGraphics& g, int32_t x, int32_t y, int32_t width, int32_t height,
                   int32_t format, int32_t type, const void* pixels) {
  TextureEntry* e = g.boundTextures[g.currentStage];
  if (width <= 0 || height <= 0 || !e || !e->texture) return;
  updateTexture(e, g.device, 0, 0, x, y, width, height, format, type, pixels);
}

void updateTexture(TextureEntry* entry, Device*, int32_t, int32_t, int32_t x, int32_t y,
                   int32_t width, int32_t height, int32_t format, int32_t type,
                   const void* pixels) {
  // A rectangle not inside the texture is refused here for every caller, as
  // the device's lock would refuse it (64-bit sums: no overflow).
  if (width <= 0 || height <= 0 || x < 0 || y < 0 ||
      int64_t{x} + width > int64_t{entry->desc.width} ||
      int64_t{y} + height > int64_t{entry->desc.height})
    return;
  Surface* surface = nullptr;
  HRESULT hr = entry->texture->getSurfaceLevel(0, &surface);
  if (failed(hr)) {
    std::printf("updateTexture.GetSurfaceLevel failed:%x\n", static_cast<unsigned>(hr));
    releaseAndNull(surface);
    return;
  }
  const Rect area{x, y, x + width, y + height};
  LockedRect locked;
  hr = surface->lockRect(locked, &area, 0);
  if (failed(hr)) {
    std::printf("updateTexture.LockRect failed:%d\n", hr);
    surface->release();
    return;
  }
  auto* bits = static_cast<uint8_t*>(locked.bits);
  // The common pairs in one pass; absent pixels go through the samples, which
  // read them as zeros.
  const DirectRow direct =
      pixels ? directRowToSurface(format, type, entry->desc.format) : DirectRow{};
  if (direct.convert) {
    const auto* in = static_cast<const uint8_t*>(pixels);
    const std::ptrdiff_t rowBytes = static_cast<std::ptrdiff_t>(width) * direct.sourceSize;
    for (int32_t r = 0; r < height; ++r)
      direct.convert(in + r * rowBytes, bits + static_cast<std::ptrdiff_t>(r) * locked.pitch,
                     width);
  } else {
    // The samples only read through a source pointer.
    std::unique_ptr<PixelSample> source = sampleForMemory(format, type, const_cast<void*>(pixels));
    std::unique_ptr<PixelSample> target = sampleForSurface(entry->desc.format, locked.bits);
    if (source && target) {
      // One row at a time: no copy of the whole image exists.
      std::unique_ptr<uint32_t[]> row(new uint32_t[static_cast<std::size_t>(width)]);
      for (int32_t r = 0; r < height; ++r) {
        source->getPixels(row.get(), r * width, r * width + width);
        target->setPixels(row.get(), bits + static_cast<std::ptrdiff_t>(r) * locked.pitch, width);
      }
    }
  }
  hr = surface->unlockRect();
  if (failed(hr)) std::printf("UnlockRect failed nani?:%d\n", hr);
  surface->release();
}

void readPixels(D3DGraphics& g, Surface* surface, int32_t x, int32_t y, int32_t width,
                int32_t height, int32_t format, int32_t type, void* pixels) {
  Device* device = g.device;
  if (g.inScene) device->endScene();
  SurfaceDesc desc;
  surface->getDesc(desc);
  Surface* copy = nullptr;
  device->createOffscreenPlainSurface(desc.width, desc.height, desc.format, POOL_SYSTEMMEM, &copy);
  if (!copy || failed(device->getRenderTargetData(surface, copy))) {
    releaseAndNull(copy);
    if (g.inScene) device->beginScene();
    return;
  }
  // GL counts y from the bottom of the client area. A rectangle not inside
  // the surface is refused.
  const int64_t top64 = int64_t{D3DGraphics::clientHeightSource()} - height - y;
  if (width <= 0 || height <= 0 || x < 0 || top64 < 0 || int64_t{x} + width > int64_t{desc.width} ||
      top64 + height > int64_t{desc.height}) {
    copy->release();
    if (g.inScene) device->beginScene();
    return;
  }
  const int32_t top = static_cast<int32_t>(top64);
  const Rect area{x, top, x + width, top + height};
  LockedRect locked;
  if (failed(copy->lockRect(locked, &area, LOCK_READONLY))) {
    copy->release();
    if (g.inScene) device->beginScene();
    return;
  }
  const DirectRow direct = pixels ? directRowFromSurface(desc.format, format, type) : DirectRow{};
  std::unique_ptr<PixelSample> source =
      direct.convert ? nullptr : sampleForSurface(desc.format, locked.bits);
  std::unique_ptr<PixelSample> target =
      direct.convert ? nullptr : sampleForMemory(format, type, pixels);
  if (direct.convert) {
    const auto* in = static_cast<const uint8_t*>(locked.bits);
    const std::ptrdiff_t rowBytes = static_cast<std::ptrdiff_t>(width) * direct.targetSize;
    auto* out = static_cast<uint8_t*>(pixels);
    // Whole pixels of the pitch, as the samples count it.
    const std::ptrdiff_t pitch = locked.pitch / direct.sourceSize * direct.sourceSize;
    for (int32_t r = 0; r < height; ++r)
      direct.convert(in + r * pitch, out + (height - r - 1) * rowBytes, width);
  } else if (source && target) {
    std::unique_ptr<uint32_t[]> row(new uint32_t[static_cast<std::size_t>(width)]);
    const int32_t stride = locked.pitch / source->getPixelSize();
    const std::ptrdiff_t rowBytes = static_cast<std::ptrdiff_t>(width) * target->getPixelSize();
    auto* out = static_cast<uint8_t*>(pixels);
    // The first surface row is the last of the result: GL rows run bottom up.
    for (int32_t r = 0; r < height; ++r) {
      source->getPixels(row.get(), r * stride, r * stride + width);
      target->setPixels(row.get(), out + (height - r - 1) * rowBytes, width);
    }
  }
  copy->unlockRect();
  copy->release();
  if (g.inScene) device->beginScene();
}

}  // namespace vostan
