#include "platform/gfx/frame_png.h"

#include <png.h>

#include <cstdio>
#include <vector>

namespace vostan::gfx {

bool writeBackBufferPng(Device& device, const char* path) {
  Surface* back = nullptr;
  if (failed(device.getBackBuffer(0, 0, &back))) return false;
  SurfaceDesc desc;
  back->getDesc(desc);
  Surface* copy = nullptr;
  if (failed(device.createOffscreenPlainSurface(desc.width, desc.height, FMT_A8R8G8B8,
                                                POOL_SYSTEMMEM, &copy))) {
    back->release();
    return false;
  }
  bool ok = false;
  LockedRect locked;
  if (!failed(device.getRenderTargetData(back, copy)) &&
      !failed(copy->lockRect(locked, nullptr, LOCK_READONLY))) {
    std::vector<png_byte> rgb(static_cast<std::size_t>(desc.width) * desc.height * 3);
    for (uint32_t y = 0; y < desc.height; ++y) {
      const auto* row = reinterpret_cast<const uint32_t*>(static_cast<const uint8_t*>(locked.bits) +
                                                          y * locked.pitch);
      for (uint32_t x = 0; x < desc.width; ++x) {
        png_byte* out = &rgb[(static_cast<std::size_t>(y) * desc.width + x) * 3];
        out[0] = static_cast<png_byte>(row[x] >> 16);
        out[1] = static_cast<png_byte>(row[x] >> 8);
        out[2] = static_cast<png_byte>(row[x]);
      }
    }
    copy->unlockRect();
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = desc.width;
    image.height = desc.height;
    image.format = PNG_FORMAT_RGB;
    ok = png_image_write_to_file(&image, path, 0, rgb.data(), 0, nullptr) != 0;
  }
  copy->release();
  back->release();
  return ok;
}

}  // namespace vostan::gfx
