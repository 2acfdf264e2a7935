#pragma once
// The test double of the graphics device: every call is written to a log as
// a line such as "SetRenderState(22,3)", state is kept as a real device keeps
// it, and a test scripts the answers (caps, formats, a device that stays lost
// for a number of tries, failing creations).
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/gfx/effect_core.h"
#include "platform/gfx/memory_objects.h"
#include "platform/gfx/state_device.h"

namespace vostan::gfx {

class RecordingDevice;

class RecordingDirect3D : public Direct3D {
 public:
  RecordingDirect3D();

  HRESULT getAdapterDisplayMode(uint32_t adapter, DisplayMode& out) override;
  HRESULT getDeviceCaps(uint32_t adapter, int32_t deviceType, Caps& out) override;
  HRESULT checkDeviceType(uint32_t adapter, int32_t deviceType, int32_t displayFormat,
                          int32_t backBufferFormat, bool windowed) override;
  HRESULT checkDeviceFormat(uint32_t adapter, int32_t deviceType, int32_t displayFormat,
                            uint32_t usage, int32_t resourceType, int32_t format) override;
  HRESULT createDevice(uint32_t adapter, int32_t deviceType, uint32_t focusWindow,
                       uint32_t behaviorFlags, PresentParameters& parameters,
                       Device** out) override;

  // Script
  DisplayMode displayMode{640, 480, 60, FMT_X8R8G8B8};
  HRESULT displayModeResult = OK;
  Caps caps;
  std::vector<int32_t> backBufferFormats{FMT_X8R8G8B8, FMT_A8R8G8B8, FMT_UNKNOWN};
  std::vector<int32_t> textureFormats{FMT_A8R8G8B8, FMT_X8R8G8B8, FMT_L8,
                                      FMT_A8L8,     FMT_R16F,     FMT_A8};
  bool depthStencilAvailable = true;
  std::map<uint32_t, HRESULT> createResults;  // by vertex-processing flag
  uint32_t clientWidth = 640, clientHeight = 480;

  std::vector<std::string> log;
  RecordingDevice* lastDevice = nullptr;  // no reference
  void note(const char* format, ...) __attribute__((format(printf, 2, 3)));
};

class RecordingDevice : public StateDevice {
 public:
  RecordingDevice(RecordingDirect3D* system, const PresentParameters& parameters);
  ~RecordingDevice() override;

  HRESULT getDeviceCaps(Caps& out) override;
  HRESULT testCooperativeLevel() override;
  HRESULT reset(PresentParameters& parameters) override;
  HRESULT present() override;
  HRESULT beginScene() override;
  HRESULT endScene() override;
  HRESULT getBackBuffer(uint32_t swapChain, uint32_t index, Surface** out) override;
  HRESULT getDepthStencilSurface(Surface** out) override;
  HRESULT setRenderTarget(uint32_t index, Surface* target) override;
  HRESULT setDepthStencilSurface(Surface* surface) override;
  HRESULT createDepthStencilSurface(uint32_t width, uint32_t height, int32_t format,
                                    int32_t multiSample, uint32_t quality, bool discard,
                                    Surface** out) override;
  HRESULT createOffscreenPlainSurface(uint32_t width, uint32_t height, int32_t format, int32_t pool,
                                      Surface** out) override;
  HRESULT getRenderTargetData(Surface* target, Surface* destination) override;
  HRESULT createTexture(uint32_t width, uint32_t height, uint32_t levels, uint32_t usage,
                        int32_t format, int32_t pool, Texture** out) override;
  HRESULT createVertexBuffer(uint32_t size, uint32_t usage, uint32_t fvf, int32_t pool,
                             VertexBuffer** out) override;
  HRESULT createIndexBuffer(uint32_t size, uint32_t usage, int32_t format, int32_t pool,
                            IndexBuffer** out) override;
  HRESULT createStateBlock(uint32_t type, StateBlock** out) override;
  HRESULT createVertexDeclaration(const VertexElement* elements, VertexDeclaration** out) override;
  HRESULT createEffect(const char* text, std::size_t length, Effect** out,
                       std::string* errors) override;
  HRESULT setRenderState(uint32_t state, uint32_t value) override;
  HRESULT setSamplerState(uint32_t sampler, uint32_t type, uint32_t value) override;
  HRESULT setTextureStageState(uint32_t stage, uint32_t type, uint32_t value) override;
  HRESULT setTexture(uint32_t stage, Texture* texture) override;
  HRESULT setViewport(const Viewport& viewport) override;
  HRESULT setScissorRect(const Rect& rect) override;
  HRESULT clear(uint32_t count, const Rect* rects, uint32_t flags, uint32_t color, float z,
                uint32_t stencil) override;
  HRESULT setFVF(uint32_t fvf) override;
  HRESULT setVertexDeclaration(VertexDeclaration* declaration) override;
  HRESULT setStreamSource(uint32_t stream, VertexBuffer* buffer, uint32_t offset,
                          uint32_t stride) override;
  HRESULT setIndices(IndexBuffer* buffer) override;
  HRESULT drawPrimitiveUP(int32_t type, uint32_t count, const void* vertices,
                          uint32_t stride) override;
  HRESULT drawPrimitive(int32_t type, uint32_t startVertex, uint32_t count) override;
  HRESULT drawIndexedPrimitive(int32_t type, int32_t baseVertex, uint32_t minIndex,
                               uint32_t vertexCount, uint32_t startIndex, uint32_t count) override;

  // Script
  int lostTries = 0;  // testCooperativeLevel answers "lost" this many more times
  bool lostForever = false;
  std::deque<HRESULT> presentResults;  // next Present results; OK when empty
  HRESULT resetResult = OK;
  HRESULT beginSceneResult = OK;
  HRESULT viewportResult = OK;
  bool failEffect = false;  // createEffect fails with a compiler message

  // What user-pointer draws were given, copied.
  struct Draw {
    int32_t type;
    uint32_t count;
    std::vector<uint8_t> vertices;
    uint32_t stride;
    std::string technique;  // the effect's technique in its pass, if any
  };
  std::vector<Draw> draws;
  std::string passTechnique;  // technique of the running pass, "" outside one

  RecordingDirect3D* system() { return system_; }
  const PresentParameters& presentParameters() const { return parameters_; }
  MemorySurface* backBuffer() { return backBuffer_; }
  Surface* renderTarget() { return renderTarget_; }
  Surface* depthStencil() { return depthStencil_; }
  void note(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  RecordingDirect3D* system_;
  PresentParameters parameters_;
  MemorySurface* backBuffer_ = nullptr;
  MemorySurface* depthSurface_ = nullptr;
  Surface* renderTarget_ = nullptr;
  Surface* depthStencil_ = nullptr;
  bool inScene_ = false;
  void makeSurfaces();
};

}  // namespace vostan::gfx
