#pragma once
// The texture store: slots of D3DGraphics::textures handed to Java as 32-bit
// handles, their device textures, and pixel transfers in GL format and type
// pairs through the pixel samples.
#include <cstdint>

#include "graphics/d3d_graphics.h"

namespace vostan {

// The device format asked for a GL internal format.
int32_t formatForInternalFormat(int32_t internalFormat);
// The GL internal format reported for a device format.
int32_t internalFormatForFormat(int32_t format);

// Handles are entry addresses, which live in low memory.
int32_t textureHandle(const TextureEntry* entry);
TextureEntry* textureEntry(int32_t handle);
// The entry of a handle that names one of the store's slots handed out so
// far, or null for 0 and for any other value.
TextureEntry* slotOf(const D3DGraphics& g, int32_t handle);
// Whether the slot waits on the free list (its handle was deleted).
bool isFreeSlot(const D3DGraphics& g, const TextureEntry* entry);
// Bytes of one pixel in caller memory of this GL format and type; 0 when the
// pair has no sample (nothing is read or written then).
int32_t memoryPixelBytes(int32_t format, int32_t type);

// A slot without a texture; no device work. 0 when all slots are taken.
int32_t createTextureSlot(D3DGraphics& g);
// Releases the entry's texture and puts the slot on the free list once.
void deleteTexture(D3DGraphics& g, int32_t handle);
void bindTexture(D3DGraphics& g, int32_t handle);
// Makes the entry's texture anew (bit 0 of flags: a render texture) and
// binds it, whether the creation worked or not.
void texImage2D(D3DGraphics& g, int32_t handle, int32_t internalFormat, int32_t width,
                int32_t height, int32_t flags, int32_t format, int32_t type, const void* pixels);
// Updates a rectangle of the bound texture.
void texSubImage2D(D3DGraphics& g, int32_t x, int32_t y, int32_t width, int32_t height,
                   int32_t format, int32_t type, const void* pixels);
// Reads a rectangle of `surface` (the back buffer) into bottom-up GL rows.
// `x`, `y` count from the bottom-left corner of the console's client area.
void readPixels(D3DGraphics& g, gfx::Surface* surface, int32_t x, int32_t y, int32_t width,
                int32_t height, int32_t format, int32_t type, void* pixels);

// Converts tightly packed `pixels` into the rectangle of the entry's texture,
// rows top to bottom. The caller keeps the rectangle inside the texture.
// `device`, `target` and `level` are accepted for the callers' sake and not
// used.
void updateTexture(TextureEntry* entry, gfx::Device* device, int32_t target, int32_t level,
                   int32_t x, int32_t y, int32_t width, int32_t height, int32_t format,
                   int32_t type, const void* pixels);

}  // namespace vostan
