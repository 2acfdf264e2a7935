#include "platform/gfx/state_device.h"

#include <vector>

namespace vostan::gfx {

int verticesFor(int32_t type, uint32_t count) {
  switch (type) {
    case PT_POINTLIST:
      return static_cast<int>(count);
    case PT_LINELIST:
      return static_cast<int>(count * 2);
    case PT_LINESTRIP:
      return count ? static_cast<int>(count + 1) : 0;
    case PT_TRIANGLELIST:
      return static_cast<int>(count * 3);
    case PT_TRIANGLESTRIP:
    case PT_TRIANGLEFAN:
      return count ? static_cast<int>(count + 2) : 0;
    default:
      return 0;
  }
}

namespace {

template <class T>
void swapRef(T*& slot, T* value) {
  if (value) value->addRef();
  if (slot) slot->release();
  slot = value;
}

class Declaration : public VertexDeclaration {
 public:
  explicit Declaration(const VertexElement* elements) {
    for (const VertexElement* e = elements; e->stream != 0xFF; ++e) elements_.push_back(*e);
    elements_.push_back(kDeclEnd);
  }
  const VertexElement* elements() const { return elements_.data(); }

 private:
  std::vector<VertexElement> elements_;
};

}  // namespace

void copyState(DeviceState& to, const DeviceState& from) {
  if (&to == &from) return;
  for (int i = 0; i < kSamplerCount; ++i) swapRef(to.textures[i], from.textures[i]);
  swapRef(to.declaration, from.declaration);
  for (int i = 0; i < kStreamCount; ++i) {
    swapRef(to.streams[i].buffer, from.streams[i].buffer);
    to.streams[i].offset = from.streams[i].offset;
    to.streams[i].stride = from.streams[i].stride;
  }
  swapRef(to.indices, from.indices);
  for (int i = 0; i < kRenderStateCount; ++i) to.renderStates[i] = from.renderStates[i];
  for (int s = 0; s < kSamplerCount; ++s)
    for (int i = 0; i < kSamplerStateCount; ++i) to.samplerStates[s][i] = from.samplerStates[s][i];
  for (int s = 0; s < kStageCount; ++s)
    for (int i = 0; i < kStageStateCount; ++i) to.stageStates[s][i] = from.stageStates[s][i];
  to.viewport = from.viewport;
  to.scissor = from.scissor;
  to.fvf = from.fvf;
}

void releaseState(DeviceState& state) {
  for (auto& t : state.textures) releaseAndNull(t);
  releaseAndNull(state.declaration);
  for (auto& s : state.streams) releaseAndNull(s.buffer);
  releaseAndNull(state.indices);
}

uint32_t dirtyBitsOfRenderState(uint32_t state) {
  switch (state) {
    case RS_SRCBLEND:
    case RS_DESTBLEND:
    case RS_ALPHABLENDENABLE:
    case RS_BLENDOP:
      return DIRTY_BLEND;
    case RS_ZENABLE:
    case RS_ZWRITEENABLE:
    case RS_ZFUNC:
      return DIRTY_DEPTH;
    case RS_STENCILENABLE:
    case RS_STENCILFAIL:
    case RS_STENCILZFAIL:
    case RS_STENCILPASS:
    case RS_STENCILFUNC:
    case RS_STENCILREF:
    case RS_STENCILMASK:
    case RS_STENCILWRITEMASK:
      return DIRTY_STENCIL;
    case RS_CULLMODE:
    case RS_FILLMODE:
    case RS_DEPTHBIAS:
    case RS_SLOPESCALEDEPTHBIAS:
      return DIRTY_RASTER;
    case RS_SCISSORTESTENABLE:
      return DIRTY_SCISSOR;
    case RS_ALPHATESTENABLE:
    case RS_ALPHAREF:
    case RS_ALPHAFUNC:
    case RS_SHADEMODE:
      return DIRTY_PIXEL_STAGE;
    case RS_COLORWRITEENABLE:
      return DIRTY_COLOR_MASK;
    default:
      return 0;
  }
}

class StateDevice::Block : public StateBlock {
 public:
  explicit Block(StateDevice* device) : device_(device) { copyState(saved_, device->state_); }
  ~Block() override { releaseState(saved_); }
  HRESULT capture() override {
    copyState(saved_, device_->state_);
    return OK;
  }
  HRESULT apply() override {
    device_->applyState(saved_);
    return OK;
  }

 private:
  StateDevice* device_;
  DeviceState saved_;
};

StateDevice::StateDevice() = default;

StateDevice::~StateDevice() {
  releaseState(state_);
}

void StateDevice::setDefaultState(uint32_t width, uint32_t height, bool autoDepth) {
  DeviceState fresh;
  uint32_t* rs = fresh.renderStates;
  rs[RS_ZENABLE] = autoDepth ? 1 : 0;
  rs[RS_FILLMODE] = FILL_SOLID;
  rs[RS_SHADEMODE] = SHADE_GOURAUD;
  rs[RS_ZWRITEENABLE] = 1;
  rs[RS_SRCBLEND] = BLEND_ONE;
  rs[RS_DESTBLEND] = BLEND_ZERO;
  rs[RS_CULLMODE] = CULL_CCW;
  rs[RS_ZFUNC] = CMP_LESSEQUAL;
  rs[RS_ALPHAFUNC] = CMP_ALWAYS;
  rs[RS_STENCILFAIL] = rs[RS_STENCILZFAIL] = rs[RS_STENCILPASS] = STENCILOP_KEEP;
  rs[RS_STENCILFUNC] = CMP_ALWAYS;
  rs[RS_STENCILMASK] = rs[RS_STENCILWRITEMASK] = 0xFFFFFFFFu;
  rs[RS_LIGHTING] = 1;
  rs[RS_COLORWRITEENABLE] = 0xF;
  rs[RS_BLENDOP] = 1;
  for (auto& s : fresh.samplerStates) {
    s[SAMP_ADDRESSU] = s[SAMP_ADDRESSV] = s[SAMP_ADDRESSW] = TADDRESS_WRAP;
    s[SAMP_MAGFILTER] = s[SAMP_MINFILTER] = TEXF_POINT;
    s[SAMP_MIPFILTER] = TEXF_NONE;
  }
  for (int i = 0; i < kStageCount; ++i) {
    uint32_t* ts = fresh.stageStates[i];
    ts[TSS_COLOROP] = i == 0 ? TOP_MODULATE : TOP_DISABLE;
    ts[TSS_ALPHAOP] = i == 0 ? TOP_SELECTARG1 : TOP_DISABLE;
    ts[TSS_COLORARG1] = ts[TSS_ALPHAARG1] = TA_TEXTURE;
    ts[TSS_COLORARG2] = ts[TSS_ALPHAARG2] = TA_CURRENT;
  }
  fresh.viewport = Viewport{0, 0, width, height, 0.0f, 1.0f};
  fresh.scissor = Rect{0, 0, static_cast<int32_t>(width), static_cast<int32_t>(height)};
  copyState(state_, fresh);
  dirty_ = DIRTY_ALL;
}

void StateDevice::applyState(const DeviceState& from) {
  copyState(state_, from);
  dirty_ = DIRTY_ALL;
}

HRESULT StateDevice::createStateBlock(uint32_t, StateBlock** out) {
  *out = new Block(this);
  return OK;
}

HRESULT StateDevice::createVertexDeclaration(const VertexElement* elements,
                                             VertexDeclaration** out) {
  *out = new Declaration(elements);
  return OK;
}

const VertexElement* StateDevice::elementsOf(const VertexDeclaration* declaration) {
  return static_cast<const Declaration*>(declaration)->elements();
}

HRESULT StateDevice::setRenderState(uint32_t s, uint32_t value) {
  if (s >= kRenderStateCount) return kInvalidCall;
  // A backend applies what changed; setting a value again changes nothing.
  if (state_.renderStates[s] == value) return OK;
  state_.renderStates[s] = value;
  dirty_ |= dirtyBitsOfRenderState(s);
  return OK;
}

HRESULT StateDevice::getRenderState(uint32_t s, uint32_t* value) {
  if (s >= kRenderStateCount) return kInvalidCall;
  *value = state_.renderStates[s];
  return OK;
}

HRESULT StateDevice::setSamplerState(uint32_t sampler, uint32_t type, uint32_t value) {
  if (sampler >= kSamplerCount || type >= kSamplerStateCount) return kInvalidCall;
  if (state_.samplerStates[sampler][type] == value) return OK;
  state_.samplerStates[sampler][type] = value;
  dirty_ |= DIRTY_SAMPLERS;
  return OK;
}

HRESULT StateDevice::setTextureStageState(uint32_t stage, uint32_t type, uint32_t value) {
  if (stage >= kStageCount || type >= kStageStateCount) return kInvalidCall;
  if (state_.stageStates[stage][type] == value) return OK;
  state_.stageStates[stage][type] = value;
  dirty_ |= DIRTY_PIXEL_STAGE;
  return OK;
}

HRESULT StateDevice::setTexture(uint32_t stage, Texture* texture) {
  if (stage >= kSamplerCount) return kInvalidCall;
  if (state_.textures[stage] == texture) return OK;
  swapRef(state_.textures[stage], texture);
  dirty_ |= DIRTY_TEXTURES | DIRTY_PIXEL_STAGE;
  return OK;
}

HRESULT StateDevice::setViewport(const Viewport& viewport) {
  state_.viewport = viewport;
  dirty_ |= DIRTY_VIEWPORT;
  return OK;
}

HRESULT StateDevice::getViewport(Viewport& out) {
  out = state_.viewport;
  return OK;
}

HRESULT StateDevice::setScissorRect(const Rect& rect) {
  state_.scissor = rect;
  dirty_ |= DIRTY_SCISSOR;
  return OK;
}

HRESULT StateDevice::setFVF(uint32_t fvf) {
  state_.fvf = fvf;
  releaseAndNull(state_.declaration);
  return OK;
}

HRESULT StateDevice::setVertexDeclaration(VertexDeclaration* declaration) {
  swapRef(state_.declaration, declaration);
  state_.fvf = 0;
  return OK;
}

HRESULT StateDevice::setStreamSource(uint32_t stream, VertexBuffer* buffer, uint32_t offset,
                                     uint32_t stride) {
  if (stream >= kStreamCount) return kInvalidCall;
  swapRef(state_.streams[stream].buffer, buffer);
  state_.streams[stream].offset = offset;
  state_.streams[stream].stride = stride;
  return OK;
}

HRESULT StateDevice::setIndices(IndexBuffer* buffer) {
  swapRef(state_.indices, buffer);
  return OK;
}

void StateDevice::coverTarget(Surface* target) {
  SurfaceDesc d;
  target->getDesc(d);
  StateDevice::setViewport(Viewport{0, 0, d.width, d.height, 0.0f, 1.0f});
  StateDevice::setScissorRect(
      Rect{0, 0, static_cast<int32_t>(d.width), static_cast<int32_t>(d.height)});
}

}  // namespace vostan::gfx
