#include "platform/gfx/effect_core.h"

#include <algorithm>
#include <cstring>

namespace vostan::gfx {

EffectCore::EffectCore(StateDevice* device, EffectSource source)
    : device_(device), source_(std::move(source)) {
  const auto& params = source_.parameters;
  parameterSlots_.reserve(params.size());
  elementSlots_.resize(params.size());
  for (std::size_t i = 0; i < params.size(); ++i) {
    parameterSlots_.push_back({static_cast<int>(i), -1});
    for (uint32_t e = 0; e < params[i].elements; ++e)
      elementSlots_[i].push_back({static_cast<int>(i), static_cast<int>(e)});
    values_.push_back(params[i].defaults);
    versions_.push_back(1);
    textures_.push_back(nullptr);
  }
  for (std::size_t i = 0; i < source_.techniques.size(); ++i)
    techniques_.push_back({static_cast<int>(i)});
}

EffectCore::~EffectCore() {
  for (auto* t : textures_)
    if (t) t->release();
}

const EffectCore::Slot* EffectCore::slotOf(EffectHandle h) const {
  if (!h) return nullptr;
  const auto* s = static_cast<const Slot*>(h);
  if (!parameterSlots_.empty() && s >= &parameterSlots_.front() && s <= &parameterSlots_.back())
    return s;
  for (const auto& list : elementSlots_)
    if (!list.empty() && s >= &list.front() && s <= &list.back()) return s;
  return nullptr;
}

int EffectCore::techniqueOf(EffectHandle h) const {
  if (!h || techniques_.empty()) return -1;
  const auto* t = static_cast<const Technique*>(h);
  if (t < &techniques_.front() || t > &techniques_.back()) return -1;
  return t->index;
}

int EffectCore::parameterIndex(const std::string& name) const {
  for (std::size_t i = 0; i < source_.parameters.size(); ++i)
    if (source_.parameters[i].name == name) return static_cast<int>(i);
  return -1;
}

HRESULT EffectCore::getDesc(EffectDesc& out) {
  out.parameters = static_cast<uint32_t>(parameterSlots_.size());
  out.techniques = static_cast<uint32_t>(techniques_.size());
  return OK;
}

EffectHandle EffectCore::getParameter(EffectHandle parent, uint32_t index) {
  if (parent) return getParameterElement(parent, index);
  return index < parameterSlots_.size() ? &parameterSlots_[index] : nullptr;
}

HRESULT EffectCore::getParameterDesc(EffectHandle h, ParameterDesc& out) {
  const Slot* s = slotOf(h);
  if (!s) return kInvalidCall;
  const auto& p = source_.parameters[s->parameter];
  out.name = p.name.c_str();
  out.type = p.type;
  out.rows = p.rows;
  out.columns = p.columns;
  out.elements = s->element < 0 ? p.elements : 0;
  return OK;
}

EffectHandle EffectCore::getParameterElement(EffectHandle h, uint32_t index) {
  const Slot* s = slotOf(h);
  if (!s || s->element >= 0) return nullptr;
  const auto& list = elementSlots_[s->parameter];
  return index < list.size() ? &list[index] : nullptr;
}

EffectHandle EffectCore::getParameterByName(EffectHandle parent, const char* name) {
  if (parent) return nullptr;
  const int i = parameterIndex(name);
  return i < 0 ? nullptr : &parameterSlots_[i];
}

EffectHandle EffectCore::getTechniqueByName(const char* name) {
  for (std::size_t i = 0; i < techniques_.size(); ++i)
    if (source_.techniques[i].name == name) return &techniques_[i];
  return nullptr;
}

HRESULT EffectCore::validateTechnique(EffectHandle h) {
  const int t = techniqueOf(h);
  if (t < 0) return kInvalidCall;
  if (!techniqueBuilt(t)) return kFail;
  Caps caps;
  device_->getDeviceCaps(caps);
  if (!source_.techniques[t].pixelShader.empty() && caps.pixelShaderVersion < psVersion(2, 0))
    return kFail;
  return OK;
}

HRESULT EffectCore::setFloatArray(EffectHandle h, const float* v, uint32_t count) {
  const Slot* s = slotOf(h);
  if (!s) return kInvalidCall;
  const auto& p = source_.parameters[s->parameter];
  if (p.type == PT_TEXTURE || p.type == PT_SAMPLER) return kInvalidCall;
  const uint32_t size = p.rows * p.columns;
  const uint32_t offset = s->element < 0 ? 0 : s->element * size;
  const uint32_t room = s->element < 0 ? p.floatCount() : size;
  float* to = values_[s->parameter].data() + offset;
  const std::size_t bytes = std::min(count, room) * sizeof(float);
  // Most draws set the same colour again; only a change needs sending.
  if (std::memcmp(to, v, bytes) == 0) return OK;
  std::memcpy(to, v, bytes);
  ++versions_[s->parameter];
  return OK;
}

HRESULT EffectCore::setVector(EffectHandle h, const float v[4]) {
  return setFloatArray(h, v, 4);
}

HRESULT EffectCore::setMatrix(EffectHandle h, const float m[16]) {
  const Slot* s = slotOf(h);
  if (!s) return kInvalidCall;
  const auto& p = source_.parameters[s->parameter];
  if (p.type != PT_MATRIX) return kInvalidCall;
  // The part of the 4 by 4 matrix that fits, row by row.
  float part[16];
  int k = 0;
  for (uint32_t r = 0; r < p.rows; ++r)
    for (uint32_t c = 0; c < p.columns; ++c) part[k++] = m[r * 4 + c];
  return setFloatArray(h, part, static_cast<uint32_t>(k));
}

HRESULT EffectCore::setTexture(EffectHandle h, Texture* texture) {
  const Slot* s = slotOf(h);
  if (!s || source_.parameters[s->parameter].type != PT_TEXTURE) return kInvalidCall;
  if (texture) texture->addRef();
  if (textures_[s->parameter]) textures_[s->parameter]->release();
  textures_[s->parameter] = texture;
  ++versions_[s->parameter];
  return OK;
}

HRESULT EffectCore::setTechnique(EffectHandle h) {
  const int t = techniqueOf(h);
  if (t < 0) return kInvalidCall;
  current_ = t;
  return OK;
}

EffectHandle EffectCore::getCurrentTechnique() {
  return current_ < 0 ? nullptr : &techniques_[current_];
}

const char* EffectCore::nameOf(EffectHandle h) {
  const int t = techniqueOf(h);
  if (t >= 0) return source_.techniques[t].name.c_str();
  if (const Slot* s = slotOf(h)) return source_.parameters[s->parameter].name.c_str();
  return nullptr;
}

HRESULT EffectCore::begin(uint32_t* passes, uint32_t) {
  if (current_ < 0) return kInvalidCall;
  if (passes) *passes = 1;
  begun_ = true;
  return OK;
}

HRESULT EffectCore::beginPass(uint32_t pass) {
  if (!begun_ || pass != 0) return kInvalidCall;
  // The effect's samplers with a texture of their own take their stage for
  // the pass; the device's previous state comes back at end().
  saved_.clear();
  for (const auto& s : source_.samplers) {
    if (s.texture.empty()) continue;
    const int p = parameterIndex(s.texture);
    SavedSampler save{s.unit, {}, device_->state().textures[s.unit]};
    std::memcpy(save.states, device_->state().samplerStates[s.unit], sizeof save.states);
    if (save.texture) save.texture->addRef();
    saved_.push_back(save);
    device_->setTexture(s.unit, p < 0 ? nullptr : textures_[p]);
    if (s.ownStates) {
      device_->setSamplerState(s.unit, SAMP_MINFILTER, s.minFilter);
      device_->setSamplerState(s.unit, SAMP_MAGFILTER, s.magFilter);
      device_->setSamplerState(s.unit, SAMP_ADDRESSU, s.addressU);
      device_->setSamplerState(s.unit, SAMP_ADDRESSV, s.addressV);
    }
  }
  inPass_ = true;
  return bindTechnique(current_);
}

HRESULT EffectCore::endPass() {
  if (!inPass_) return kInvalidCall;
  inPass_ = false;
  return OK;
}

HRESULT EffectCore::end() {
  if (!begun_) return kInvalidCall;
  begun_ = false;
  for (auto& s : saved_) {
    device_->setTexture(s.unit, s.texture);
    if (s.texture) s.texture->release();
    for (uint32_t i = SAMP_ADDRESSU; i <= SAMP_MIPFILTER; ++i)
      device_->setSamplerState(s.unit, i, s.states[i]);
  }
  saved_.clear();
  unbindTechnique();
  return OK;
}

}  // namespace vostan::gfx
