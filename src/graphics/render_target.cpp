// Drawing into render textures, and the shadow map's switch of techniques.
// The scene is closed around each change of target and opened again at once.
#include <cstdio>
#include <cstring>

#include "graphics/d3d_graphics.h"

namespace vostan {

using namespace gfx;

namespace {

// Render textures up to this size share one depth surface.
constexpr uint32_t kSharedDepthSize = 1024;

}  // namespace

TextureEntry* D3DGraphics::liveTextureEntry(int32_t handle) const {
  const auto at = static_cast<uintptr_t>(static_cast<uint32_t>(handle));
  const auto base = reinterpret_cast<uintptr_t>(textures);
  if (handle == 0 || at < base) return nullptr;
  const uintptr_t offset = at - base;
  if (offset % sizeof(TextureEntry) != 0 ||
      offset / sizeof(TextureEntry) >= static_cast<uintptr_t>(textureCount))
    return nullptr;
  return &textures[offset / sizeof(TextureEntry)];
}

void D3DGraphics::startRenderTexture(TextureEntry* entry, int32_t x, int32_t y, int32_t width,
                                     int32_t height) {
  if (!device || !entry || !entry->texture) return;
  if (inScene) device->endScene();
  // A second start without a finish lets the first surface go.
  releaseAndNull(renderTargetSurface);
  entry->texture->getSurfaceLevel(0, &renderTargetSurface);
  const HRESULT hr = device->setRenderTarget(0, renderTargetSurface);
  SurfaceDesc client;
  if (backBuffer) backBuffer->getDesc(client);
  const uint32_t w = entry->desc.width, h = entry->desc.height;
  if (w <= client.width && h <= client.height) {
    device->setDepthStencilSurface(depthSurface);
    if (failed(hr))
      std::printf("SetDepthStencilSurface failed... %d %d\n", hr,
                  static_cast<int>(reinterpret_cast<uintptr_t>(renderTargetSurface)));
  } else if (w <= kSharedDepthSize && h <= kSharedDepthSize) {
    if (!renderTargetDepth)
      device->createDepthStencilSurface(kSharedDepthSize, kSharedDepthSize, FMT_D24S8, 0, 0, false,
                                        &renderTargetDepth);
    device->setDepthStencilSurface(renderTargetDepth);
  } else {
    device->setDepthStencilSurface(nullptr);  // too big for any: no depth
  }
  // The caller's rectangle as it stands: rows count from the texture's top.
  Viewport v;
  v.x = static_cast<uint32_t>(x);
  v.y = static_cast<uint32_t>(y);
  v.width = static_cast<uint32_t>(width);
  v.height = static_cast<uint32_t>(height);
  device->setViewport(v);
  renderTargetWidth = static_cast<int32_t>(w);
  renderTextureHeight = static_cast<int32_t>(h);
  if (inScene) device->beginScene();
}

void D3DGraphics::finishRenderTexture() {
  if (!device || !renderTargetSurface) return;
  if (inScene) device->endScene();
  device->setDepthStencilSurface(nullptr);
  device->setRenderTarget(0, backBuffer);
  device->setDepthStencilSurface(depthSurface);
  releaseAndNull(renderTargetSurface);
  renderTextureHeight = 0;
  if (inScene) device->beginScene();
}

void D3DGraphics::setupShadow(TextureEntry* depthMap, const float* matrix, uint32_t rgba) {
  if (!device) return;
  float copy[16];
  std::memcpy(copy, matrix, sizeof copy);
  effect->setMatrix(texgenmatHandle, copy);
  effect->setTexture(texshadowHandle, depthMap ? depthMap->texture : nullptr);
  techniqueMode = 2;
  const float colour[4] = {
      static_cast<float>(rgba >> 24) / 255.0f, static_cast<float>((rgba >> 16) & 0xFF) / 255.0f,
      static_cast<float>((rgba >> 8) & 0xFF) / 255.0f, static_cast<float>(rgba & 0xFF) / 255.0f};
  effect->setVector(shadowcolorHandle, colour);
}

void D3DGraphics::finishShadow() {
  if (!device) return;
  effect->setTexture(texshadowHandle, nullptr);
  techniqueMode = 0;
}

}  // namespace vostan
