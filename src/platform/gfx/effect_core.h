#pragma once
// The part of an effect that does not depend on the backend: parameters with
// their values, handles, techniques, validation against the device's caps,
// and the pass bracket that binds the effect's own samplers.
#include <memory>
#include <string>
#include <vector>

#include "platform/gfx/effect_source.h"
#include "platform/gfx/gfx.h"
#include "platform/gfx/state_device.h"

namespace vostan::gfx {

class EffectCore : public Effect {
 public:
  struct Slot {
    int parameter;
    int element;  // -1: the whole parameter
  };
  struct Technique {
    int index;
  };

  EffectCore(StateDevice* device, EffectSource source);
  ~EffectCore() override;

  HRESULT getDesc(EffectDesc& out) override;
  EffectHandle getParameter(EffectHandle parent, uint32_t index) override;
  HRESULT getParameterDesc(EffectHandle parameter, ParameterDesc& out) override;
  EffectHandle getParameterElement(EffectHandle parameter, uint32_t index) override;
  EffectHandle getParameterByName(EffectHandle parent, const char* name) override;
  EffectHandle getTechniqueByName(const char* name) override;
  HRESULT validateTechnique(EffectHandle technique) override;
  HRESULT setFloatArray(EffectHandle parameter, const float* values, uint32_t count) override;
  HRESULT setVector(EffectHandle parameter, const float values[4]) override;
  HRESULT setMatrix(EffectHandle parameter, const float values[16]) override;
  HRESULT setTexture(EffectHandle parameter, Texture* texture) override;
  HRESULT setTechnique(EffectHandle technique) override;
  EffectHandle getCurrentTechnique() override;
  const char* nameOf(EffectHandle handle) override;
  HRESULT begin(uint32_t* passes, uint32_t flags) override;
  HRESULT beginPass(uint32_t pass) override;
  HRESULT endPass() override;
  HRESULT end() override;

  const EffectSource& source() const { return source_; }
  // The values of a parameter as floats, and a change counter.
  const float* values(int parameter) const { return values_[parameter].data(); }
  uint32_t version(int parameter) const { return versions_[parameter]; }
  Texture* texture(int parameter) const { return textures_[parameter]; }
  int parameterIndex(const std::string& name) const;
  int currentTechnique() const { return current_; }

 protected:
  // Binds and unbinds the programs of a technique.
  virtual HRESULT bindTechnique(int technique) = 0;
  virtual void unbindTechnique() {}
  // Whether the backend could build the technique at all.
  virtual bool techniqueBuilt(int technique) const { return true; }

  StateDevice* device_;
  EffectSource source_;

 private:
  const Slot* slotOf(EffectHandle h) const;
  int techniqueOf(EffectHandle h) const;

  std::vector<Slot> parameterSlots_;
  std::vector<std::vector<Slot>> elementSlots_;
  std::vector<Technique> techniques_;
  std::vector<std::vector<float>> values_;
  std::vector<uint32_t> versions_;
  std::vector<Texture*> textures_;
  int current_ = -1;
  bool inPass_ = false;
  bool begun_ = false;
  // Sampler state the effect's own samplers overwrite, given back by end().
  struct SavedSampler {
    int unit;
    uint32_t states[kSamplerStateCount];
    Texture* texture;
  };
  std::vector<SavedSampler> saved_;
};

}  // namespace vostan::gfx
