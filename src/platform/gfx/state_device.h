#pragma once
// What every backend shares: the device's state as a plain record, the
// setters that write it, and state blocks that copy it whole.
#include <cstdint>

#include "platform/gfx/gfx.h"

namespace vostan::gfx {

struct StreamBinding {
  VertexBuffer* buffer = nullptr;
  uint32_t offset = 0, stride = 0;
};

constexpr int kStreamCount = 4;

// The device state a state block captures. Pointers hold a reference.
struct DeviceState {
  uint32_t renderStates[kRenderStateCount] = {};
  uint32_t samplerStates[kSamplerCount][kSamplerStateCount] = {};
  uint32_t stageStates[kStageCount][kStageStateCount] = {};
  Texture* textures[kSamplerCount] = {};
  Viewport viewport;
  Rect scissor;
  VertexDeclaration* declaration = nullptr;
  uint32_t fvf = 0;
  StreamBinding streams[kStreamCount];
  IndexBuffer* indices = nullptr;
};

// Copies state, taking references on what `from` holds and dropping those
// `to` held.
void copyState(DeviceState& to, const DeviceState& from);
void releaseState(DeviceState& state);

// Groups of state a backend applies together.
enum DirtyBits : uint32_t {
  DIRTY_BLEND = 1u << 0,
  DIRTY_DEPTH = 1u << 1,
  DIRTY_STENCIL = 1u << 2,
  DIRTY_RASTER = 1u << 3,
  DIRTY_SCISSOR = 1u << 4,
  DIRTY_VIEWPORT = 1u << 5,
  DIRTY_SAMPLERS = 1u << 6,
  DIRTY_TEXTURES = 1u << 7,
  DIRTY_PIXEL_STAGE = 1u << 8,  // stage 0 ops, alpha test, shading
  DIRTY_COLOR_MASK = 1u << 9,
  DIRTY_ALL = 0xFFFFFFFFu,
};
uint32_t dirtyBitsOfRenderState(uint32_t state);

class StateDevice : public Device {
 public:
  StateDevice();
  ~StateDevice() override;

  HRESULT createStateBlock(uint32_t type, StateBlock** out) override;
  HRESULT createVertexDeclaration(const VertexElement* elements, VertexDeclaration** out) override;

  HRESULT setRenderState(uint32_t state, uint32_t value) override;
  HRESULT getRenderState(uint32_t state, uint32_t* value) override;
  HRESULT setSamplerState(uint32_t sampler, uint32_t type, uint32_t value) override;
  HRESULT setTextureStageState(uint32_t stage, uint32_t type, uint32_t value) override;
  HRESULT setTexture(uint32_t stage, Texture* texture) override;
  HRESULT setViewport(const Viewport& viewport) override;
  HRESULT getViewport(Viewport& out) override;
  HRESULT setScissorRect(const Rect& rect) override;
  HRESULT setFVF(uint32_t fvf) override;
  HRESULT setVertexDeclaration(VertexDeclaration* declaration) override;
  HRESULT setStreamSource(uint32_t stream, VertexBuffer* buffer, uint32_t offset,
                          uint32_t stride) override;
  HRESULT setIndices(IndexBuffer* buffer) override;

  const DeviceState& state() const { return state_; }

  // The elements of a declaration made by this device.
  static const VertexElement* elementsOf(const VertexDeclaration* declaration);

 protected:
  // A new render target starts with the viewport and the scissor over all of it.
  void coverTarget(Surface* target);
  // The state of a new or reset device, with a viewport over the whole target.
  void setDefaultState(uint32_t width, uint32_t height, bool autoDepth);
  void applyState(const DeviceState& from);

  DeviceState state_;
  uint32_t dirty_ = DIRTY_ALL;

 private:
  class Block;
};

}  // namespace vostan::gfx
