// Texture read-back for the JVM tests: the level a texture keeps, as RGBA
// bytes, read through the texture's own lock.
#include <jni.h>

#include <cstdint>
#include <vector>

#include "graphics/d3d_graphics.h"

using namespace vostan;

// RGBA bytes of a texture handle's level 0, or null for an empty slot or a
// format other than 32-bit ARGB.
extern "C" JNIEXPORT jbyteArray JNICALL Java_vostan_test_MovieHooks_textureRgba(JNIEnv* env, jclass,
                                                                                jint handle) {
  auto* entry = reinterpret_cast<TextureEntry*>(static_cast<intptr_t>(handle));
  if (!entry || !entry->texture) return nullptr;
  const int32_t format = entry->desc.format;
  if (format != gfx::FMT_A8R8G8B8 && format != gfx::FMT_X8R8G8B8) return nullptr;
  gfx::Surface* level = nullptr;
  if (entry->texture->getSurfaceLevel(0, &level) != gfx::OK || !level) return nullptr;
  gfx::LockedRect locked;
  if (level->lockRect(locked, nullptr, gfx::LOCK_READONLY) != gfx::OK) {
    level->release();
    return nullptr;
  }
  const uint32_t w = entry->desc.width, h = entry->desc.height;
  std::vector<jbyte> rgba(size_t(w) * h * 4);
  for (uint32_t y = 0; y < h; y++) {
    const auto* row = static_cast<const uint8_t*>(locked.bits) + ptrdiff_t(y) * locked.pitch;
    for (uint32_t x = 0; x < w; x++) {
      // Blue, green, red, alpha in memory.
      jbyte* out = &rgba[(size_t(y) * w + x) * 4];
      out[0] = jbyte(row[x * 4 + 2]);
      out[1] = jbyte(row[x * 4 + 1]);
      out[2] = jbyte(row[x * 4 + 0]);
      out[3] = jbyte(format == gfx::FMT_X8R8G8B8 ? 255 : row[x * 4 + 3]);
    }
  }
  level->unlockRect();
  level->release();
  jbyteArray array = env->NewByteArray(jsize(rgba.size()));
  if (array) env->SetByteArrayRegion(array, 0, jsize(rgba.size()), rgba.data());
  return array;
}
