#include "platform/gfx/recording_device.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace vostan::gfx {

namespace {

std::string vformat(const char* format, va_list args) {
  char buffer[512];
  std::vsnprintf(buffer, sizeof buffer, format, args);
  return buffer;
}

// The effect of the double: the real effect text's structure, with every
// call that changes what a draw does written to the device's log.
class RecordingEffect : public EffectCore {
 public:
  RecordingEffect(RecordingDevice* device, EffectSource source)
      : EffectCore(device, std::move(source)), recorder_(device) {}

  HRESULT validateTechnique(EffectHandle t) override {
    const HRESULT hr = EffectCore::validateTechnique(t);
    recorder_->note("Effect.ValidateTechnique(%s)=%d", t ? nameOf(t) : "null", hr);
    return hr;
  }
  HRESULT setFloatArray(EffectHandle p, const float* v, uint32_t count) override {
    std::string values;
    for (uint32_t i = 0; i < count; ++i) {
      char one[32];
      std::snprintf(one, sizeof one, "%s%g", i ? "," : "", v[i]);
      values += one;
    }
    recorder_->note("Effect.SetFloatArray(%s,%s)", p ? nameOf(p) : "null", values.c_str());
    return EffectCore::setFloatArray(p, v, count);
  }
  HRESULT setVector(EffectHandle p, const float v[4]) override {
    recorder_->note("Effect.SetVector(%s)", p ? nameOf(p) : "null");
    return EffectCore::setVector(p, v);
  }
  HRESULT setMatrix(EffectHandle p, const float m[16]) override {
    recorder_->note("Effect.SetMatrix(%s,%g)", p ? nameOf(p) : "null", m[0]);
    return EffectCore::setMatrix(p, m);
  }
  HRESULT setTexture(EffectHandle p, Texture* texture) override {
    recorder_->note("Effect.SetTexture(%s,%s)", p ? nameOf(p) : "null", texture ? "tex" : "null");
    return EffectCore::setTexture(p, texture);
  }
  HRESULT setTechnique(EffectHandle t) override {
    recorder_->note("Effect.SetTechnique(%s)", t ? nameOf(t) : "null");
    return EffectCore::setTechnique(t);
  }
  HRESULT begin(uint32_t* passes, uint32_t flags) override {
    recorder_->note("Effect.Begin");
    return EffectCore::begin(passes, flags);
  }
  HRESULT beginPass(uint32_t pass) override {
    recorder_->note("Effect.BeginPass(%u)", pass);
    return EffectCore::beginPass(pass);
  }
  HRESULT endPass() override {
    recorder_->note("Effect.EndPass");
    recorder_->passTechnique.clear();
    return EffectCore::endPass();
  }
  HRESULT end() override {
    recorder_->note("Effect.End");
    return EffectCore::end();
  }

 protected:
  HRESULT bindTechnique(int technique) override {
    recorder_->passTechnique = source().techniques[technique].name;
    return OK;
  }

 private:
  RecordingDevice* recorder_;
};

// Buffers whose locks are written to the log, as "Lock(vb,0,48,0x2000)".
template <class Base>
class RecordingBuffer : public MemoryBuffer<Base> {
 public:
  RecordingBuffer(const BufferDesc& desc, RecordingDevice* device, const char* name)
      : MemoryBuffer<Base>(desc), recorder_(device), name_(name) {}
  HRESULT lock(uint32_t offset, uint32_t size, void** out, uint32_t flags) override {
    recorder_->note("Lock(%s,%u,%u,0x%x)", name_, offset, size, flags);
    // A lock past the end would hand out memory the buffer does not have.
    if (uint64_t{offset} + size > this->bytes().size()) return kInvalidCall;
    return MemoryBuffer<Base>::lock(offset, size, out, flags);
  }

 private:
  RecordingDevice* recorder_;
  const char* name_;
};

}  // namespace

// ---- RecordingDirect3D

RecordingDirect3D::RecordingDirect3D() {
  caps.vertexShaderVersion = vsVersion(3, 0);
  caps.pixelShaderVersion = psVersion(3, 0);
}

void RecordingDirect3D::note(const char* format, ...) {
  va_list args;
  va_start(args, format);
  log.push_back(vformat(format, args));
  va_end(args);
}

HRESULT RecordingDirect3D::getAdapterDisplayMode(uint32_t adapter, DisplayMode& out) {
  note("GetAdapterDisplayMode(%u)", adapter);
  if (failed(displayModeResult)) return displayModeResult;
  out = displayMode;
  return OK;
}

HRESULT RecordingDirect3D::getDeviceCaps(uint32_t adapter, int32_t deviceType, Caps& out) {
  note("GetDeviceCaps(%u,%d)", adapter, deviceType);
  out = caps;
  return OK;
}

HRESULT RecordingDirect3D::checkDeviceType(uint32_t, int32_t, int32_t displayFormat,
                                           int32_t backBufferFormat, bool windowed) {
  note("CheckDeviceType(%d,%d,%d)", displayFormat, backBufferFormat, windowed ? 1 : 0);
  for (int32_t f : backBufferFormats)
    if (f == backBufferFormat) return OK;
  return kNotAvailable;
}

HRESULT RecordingDirect3D::checkDeviceFormat(uint32_t, int32_t, int32_t displayFormat,
                                             uint32_t usage, int32_t resourceType, int32_t format) {
  note("CheckDeviceFormat(%d,%u,%d,%d)", displayFormat, usage, resourceType, format);
  if (usage & USAGE_DEPTHSTENCIL)
    return depthStencilAvailable && format == FMT_D24S8 ? OK : kNotAvailable;
  for (int32_t f : textureFormats)
    if (f == format) return OK;
  return kNotAvailable;
}

HRESULT RecordingDirect3D::createDevice(uint32_t adapter, int32_t deviceType, uint32_t focusWindow,
                                        uint32_t behaviorFlags, PresentParameters& parameters,
                                        Device** out) {
  note("CreateDevice(%u,%d,%u,0x%x)", adapter, deviceType, focusWindow, behaviorFlags);
  *out = nullptr;
  if (auto it = createResults.find(behaviorFlags); it != createResults.end() && failed(it->second))
    return it->second;
  auto* device = new RecordingDevice(this, parameters);
  lastDevice = device;
  *out = device;
  return OK;
}

// ---- RecordingDevice

RecordingDevice::RecordingDevice(RecordingDirect3D* system, const PresentParameters& parameters)
    : system_(system), parameters_(parameters) {
  makeSurfaces();
}

RecordingDevice::~RecordingDevice() {
  note("Release(device)");
  releaseAndNull(renderTarget_);
  releaseAndNull(depthStencil_);
  releaseAndNull(backBuffer_);
  releaseAndNull(depthSurface_);
  if (system_->lastDevice == this) system_->lastDevice = nullptr;
}

void RecordingDevice::note(const char* format, ...) {
  va_list args;
  va_start(args, format);
  system_->log.push_back(vformat(format, args));
  va_end(args);
}

void RecordingDevice::makeSurfaces() {
  releaseAndNull(renderTarget_);
  releaseAndNull(depthStencil_);
  releaseAndNull(backBuffer_);
  releaseAndNull(depthSurface_);
  const uint32_t w =
      parameters_.backBufferWidth ? parameters_.backBufferWidth : system_->clientWidth;
  const uint32_t h =
      parameters_.backBufferHeight ? parameters_.backBufferHeight : system_->clientHeight;
  SurfaceDesc d;
  d.format =
      parameters_.backBufferFormat == FMT_UNKNOWN ? FMT_X8R8G8B8 : parameters_.backBufferFormat;
  d.usage = USAGE_RENDERTARGET;
  d.width = w;
  d.height = h;
  backBuffer_ = new MemorySurface(d);
  d.format = parameters_.autoDepthStencilFormat;
  d.usage = USAGE_DEPTHSTENCIL;
  depthSurface_ = new MemorySurface(d);
  backBuffer_->addRef();
  renderTarget_ = backBuffer_;
  if (parameters_.enableAutoDepthStencil) {
    depthSurface_->addRef();
    depthStencil_ = depthSurface_;
  }
  setDefaultState(w, h, parameters_.enableAutoDepthStencil);
}

HRESULT RecordingDevice::getDeviceCaps(Caps& out) {
  out = system_->caps;
  return OK;
}

HRESULT RecordingDevice::testCooperativeLevel() {
  if (lostForever || lostTries > 0) {
    if (lostTries > 0) --lostTries;
    note("TestCooperativeLevel=lost");
    return kDeviceLost;
  }
  note("TestCooperativeLevel");
  return OK;
}

HRESULT RecordingDevice::reset(PresentParameters& parameters) {
  note("Reset(%u,%u)", parameters.backBufferWidth, parameters.backBufferHeight);
  if (failed(resetResult)) return resetResult;
  parameters_ = parameters;
  inScene_ = false;
  makeSurfaces();
  return OK;
}

HRESULT RecordingDevice::present() {
  note("Present");
  if (presentResults.empty()) return OK;
  const HRESULT hr = presentResults.front();
  presentResults.pop_front();
  return hr;
}

HRESULT RecordingDevice::beginScene() {
  note("BeginScene");
  if (failed(beginSceneResult)) return beginSceneResult;
  if (inScene_) return kInvalidCall;
  inScene_ = true;
  return OK;
}

HRESULT RecordingDevice::endScene() {
  note("EndScene");
  if (!inScene_) return kInvalidCall;
  inScene_ = false;
  return OK;
}

HRESULT RecordingDevice::getBackBuffer(uint32_t, uint32_t, Surface** out) {
  backBuffer_->addRef();
  *out = backBuffer_;
  return OK;
}

HRESULT RecordingDevice::getDepthStencilSurface(Surface** out) {
  *out = depthStencil_;
  if (!depthStencil_) return kNotAvailable;
  depthStencil_->addRef();
  return OK;
}

HRESULT RecordingDevice::setRenderTarget(uint32_t index, Surface* target) {
  note("SetRenderTarget(%u,%s)", index,
       target == backBuffer_ ? "back"
       : target              ? "surface"
                             : "null");
  if (index != 0 || !target) return kInvalidCall;
  target->addRef();
  releaseAndNull(renderTarget_);
  renderTarget_ = target;
  coverTarget(target);
  return OK;
}

HRESULT RecordingDevice::setDepthStencilSurface(Surface* surface) {
  note("SetDepthStencilSurface(%s)", surface ? "surface" : "null");
  if (surface) surface->addRef();
  releaseAndNull(depthStencil_);
  depthStencil_ = surface;
  return OK;
}

HRESULT RecordingDevice::createDepthStencilSurface(uint32_t width, uint32_t height, int32_t format,
                                                   int32_t, uint32_t, bool, Surface** out) {
  note("CreateDepthStencilSurface(%u,%u,%d)", width, height, format);
  *out = new MemorySurface(surfaceDesc(format, width, height, USAGE_DEPTHSTENCIL));
  return OK;
}

HRESULT RecordingDevice::createOffscreenPlainSurface(uint32_t width, uint32_t height,
                                                     int32_t format, int32_t pool, Surface** out) {
  note("CreateOffscreenPlainSurface(%u,%u,%d,%d)", width, height, format, pool);
  *out = new MemorySurface(surfaceDesc(format, width, height, 0, pool));
  return OK;
}

HRESULT RecordingDevice::getRenderTargetData(Surface* target, Surface* destination) {
  note("GetRenderTargetData");
  auto* from = static_cast<MemorySurface*>(target);
  auto* to = static_cast<MemorySurface*>(destination);
  if (from->desc().width != to->desc().width || from->desc().height != to->desc().height)
    return kInvalidCall;
  std::memcpy(to->bits(), from->bits(), static_cast<std::size_t>(to->pitch()) * to->desc().height);
  return OK;
}

HRESULT RecordingDevice::createTexture(uint32_t width, uint32_t height, uint32_t levels,
                                       uint32_t usage, int32_t format, int32_t pool,
                                       Texture** out) {
  note("CreateTexture(%u,%u,%u,%u,%d,%d)", width, height, levels, usage, format, pool);
  *out = new MemoryTexture(surfaceDesc(format, width, height, usage, pool, RTYPE_TEXTURE));
  return OK;
}

HRESULT RecordingDevice::createVertexBuffer(uint32_t size, uint32_t usage, uint32_t fvf,
                                            int32_t pool, VertexBuffer** out) {
  note("CreateVertexBuffer(%u,%u,%u,%d)", size, usage, fvf, pool);
  *out = new RecordingBuffer<VertexBuffer>(BufferDesc{FMT_UNKNOWN, usage, pool, size, fvf}, this,
                                           "vb");
  return OK;
}

HRESULT RecordingDevice::createIndexBuffer(uint32_t size, uint32_t usage, int32_t format,
                                           int32_t pool, IndexBuffer** out) {
  note("CreateIndexBuffer(%u,%u,%d,%d)", size, usage, format, pool);
  *out = new RecordingBuffer<IndexBuffer>(BufferDesc{format, usage, pool, size, 0}, this, "ib");
  return OK;
}

HRESULT RecordingDevice::createStateBlock(uint32_t type, StateBlock** out) {
  note("CreateStateBlock(%u)", type);
  return StateDevice::createStateBlock(type, out);
}

HRESULT RecordingDevice::createVertexDeclaration(const VertexElement* elements,
                                                 VertexDeclaration** out) {
  int n = 0;
  while (elements[n].stream != 0xFF) ++n;
  note("CreateVertexDeclaration(%d)", n);
  return StateDevice::createVertexDeclaration(elements, out);
}

HRESULT RecordingDevice::createEffect(const char* text, std::size_t length, Effect** out,
                                      std::string* errors) {
  note("CreateEffect");
  *out = nullptr;
  EffectSource source;
  if (failEffect) {
    if (errors) *errors = "effect(1): error X3000: syntax error";
    return kFail;
  }
  if (!source.parse(text, length, errors)) return kFail;
  *out = new RecordingEffect(this, std::move(source));
  return OK;
}

HRESULT RecordingDevice::setRenderState(uint32_t state, uint32_t value) {
  note("SetRenderState(%u,%u)", state, value);
  return StateDevice::setRenderState(state, value);
}

HRESULT RecordingDevice::setSamplerState(uint32_t sampler, uint32_t type, uint32_t value) {
  note("SetSamplerState(%u,%u,%u)", sampler, type, value);
  return StateDevice::setSamplerState(sampler, type, value);
}

HRESULT RecordingDevice::setTextureStageState(uint32_t stage, uint32_t type, uint32_t value) {
  note("SetTextureStageState(%u,%u,%u)", stage, type, value);
  return StateDevice::setTextureStageState(stage, type, value);
}

HRESULT RecordingDevice::setTexture(uint32_t stage, Texture* texture) {
  note("SetTexture(%u,%s)", stage, texture ? "tex" : "null");
  return StateDevice::setTexture(stage, texture);
}

HRESULT RecordingDevice::setViewport(const Viewport& v) {
  note("SetViewport(%u,%u,%u,%u)", v.x, v.y, v.width, v.height);
  if (failed(viewportResult)) return viewportResult;
  return StateDevice::setViewport(v);
}

HRESULT RecordingDevice::setScissorRect(const Rect& r) {
  note("SetScissorRect(%d,%d,%d,%d)", r.left, r.top, r.right, r.bottom);
  return StateDevice::setScissorRect(r);
}

HRESULT RecordingDevice::clear(uint32_t count, const Rect*, uint32_t flags, uint32_t color, float z,
                               uint32_t stencil) {
  note("Clear(%u,%u,0x%08x,%g,%u)", count, flags, color, z, stencil);
  return OK;
}

HRESULT RecordingDevice::setFVF(uint32_t fvf) {
  note("SetFVF(0x%x)", fvf);
  return StateDevice::setFVF(fvf);
}

HRESULT RecordingDevice::setVertexDeclaration(VertexDeclaration* declaration) {
  note("SetVertexDeclaration");
  return StateDevice::setVertexDeclaration(declaration);
}

HRESULT RecordingDevice::setStreamSource(uint32_t stream, VertexBuffer* buffer, uint32_t offset,
                                         uint32_t stride) {
  note("SetStreamSource(%u,%s,%u,%u)", stream, buffer ? "vb" : "null", offset, stride);
  return StateDevice::setStreamSource(stream, buffer, offset, stride);
}

HRESULT RecordingDevice::setIndices(IndexBuffer* buffer) {
  note("SetIndices(%s)", buffer ? "ib" : "null");
  return StateDevice::setIndices(buffer);
}

HRESULT RecordingDevice::drawPrimitiveUP(int32_t type, uint32_t count, const void* vertices,
                                         uint32_t stride) {
  note("DrawPrimitiveUP(%d,%u,%u)", type, count, stride);
  Draw d{type, count, {}, stride, passTechnique};
  const auto* bytes = static_cast<const uint8_t*>(vertices);
  d.vertices.assign(bytes, bytes + static_cast<std::size_t>(verticesFor(type, count)) * stride);
  draws.push_back(std::move(d));
  return OK;
}

HRESULT RecordingDevice::drawPrimitive(int32_t type, uint32_t startVertex, uint32_t count) {
  note("DrawPrimitive(%d,%u,%u)", type, startVertex, count);
  return OK;
}

HRESULT RecordingDevice::drawIndexedPrimitive(int32_t type, int32_t baseVertex, uint32_t minIndex,
                                              uint32_t vertexCount, uint32_t startIndex,
                                              uint32_t count) {
  note("DrawIndexedPrimitive(%d,%d,%u,%u,%u,%u)", type, baseVertex, minIndex, vertexCount,
       startIndex, count);
  return OK;
}

}  // namespace vostan::gfx
