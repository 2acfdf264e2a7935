#pragma once
// The effect text format: GLSL with the effect's structure in pragmas.
//
//   uniform <type> <name>[<n>] = <default>;   a parameter (float, vec4, mat4,
//                                             mat4x3, sampler2D)
//   #pragma texture <name>                     a texture parameter
//   #pragma sampler <name> <texture|-> s<unit> [MinFilter=POINT ...]
//   #pragma technique <name> <vertex shader> <pixel shader|->
//
// A vertex shader is a function whose parameters are named after their
// inputs (p, c, uv, w) and whose result goes to an `emit` overload of the
// text; a pixel shader takes one record built by `in_<record>()` and returns
// the colour. "-" as pixel shader leaves the pixel work to the device's
// fixed pixel stage. Technique names are unique; each has one pass.
#include <cstdint>
#include <string>
#include <vector>

namespace vostan::gfx {

struct EffectParameter {
  std::string name;
  int32_t type = 0;  // ParameterType
  uint32_t rows = 0, columns = 0;
  uint32_t elements = 0;  // 0: not an array
  std::vector<float> defaults;
  uint32_t floatCount() const { return rows * columns * (elements ? elements : 1); }
};

struct EffectSampler {
  std::string name;
  std::string texture;  // empty: reads the device's stage
  int unit = 0;
  bool ownStates = false;
  uint32_t minFilter = 1, magFilter = 1, addressU = 1, addressV = 1;
};

struct EffectTechnique {
  std::string name;
  std::string vertexShader, pixelShader;  // pixelShader empty: fixed stage
};

struct EffectShader {
  std::string name;
  std::string returnType;
  std::vector<std::string> parameterTypes, parameterNames;
};

struct EffectSource {
  std::string text;
  std::vector<EffectParameter> parameters;
  std::vector<EffectSampler> samplers;
  std::vector<EffectTechnique> techniques;
  std::vector<EffectShader> shaders;

  // Reads the structure of `text`; false with a message when it is broken.
  bool parse(const char* text, std::size_t length, std::string* errors);
  const EffectShader* shader(const std::string& name) const;

  // The call a stage's main makes: `vs(aPosition, aTexCoord)` or
  // `ps(in_v3())`.
  std::string vertexCall(const EffectShader& vs) const;
  std::string pixelCall(const EffectShader& ps) const;
};

}  // namespace vostan::gfx
