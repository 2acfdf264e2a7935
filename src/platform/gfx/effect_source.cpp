#include "platform/gfx/effect_source.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "platform/gfx/gfx.h"

namespace vostan::gfx {

namespace {

std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> out;
  std::istringstream in(line);
  std::string w;
  while (in >> w) out.push_back(w);
  return out;
}

std::string trim(const std::string& s) {
  std::size_t a = 0, b = s.size();
  while (a < b && std::isspace(static_cast<unsigned char>(s[a]))) ++a;
  while (b > a && std::isspace(static_cast<unsigned char>(s[b - 1]))) --b;
  return s.substr(a, b - a);
}

bool isIdent(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

uint32_t filterByName(const std::string& v) {
  if (v == "NONE") return TEXF_NONE;
  if (v == "LINEAR") return TEXF_LINEAR;
  return TEXF_POINT;
}

uint32_t addressByName(const std::string& v) {
  if (v == "Clamp" || v == "CLAMP") return TADDRESS_CLAMP;
  if (v == "Mirror" || v == "MIRROR") return TADDRESS_MIRROR;
  return TADDRESS_WRAP;
}

// `uniform mat4 mat;`, `uniform mat4x3 skinmat[29];`,
// `uniform vec4 unicolor = vec4(1.0, 1.0, 1.0, 1.0);`
bool parseUniform(const std::string& line, EffectParameter& p, std::string* errors) {
  std::string decl = line.substr(std::strlen("uniform"));
  std::string init;
  if (auto eq = decl.find('='); eq != std::string::npos) {
    init = decl.substr(eq + 1);
    decl = decl.substr(0, eq);
  }
  if (auto semi = decl.find(';'); semi != std::string::npos) decl = decl.substr(0, semi);
  if (auto br = decl.find('['); br != std::string::npos) {
    p.elements = static_cast<uint32_t>(std::atoi(decl.c_str() + br + 1));
    decl = decl.substr(0, br);
  }
  const auto w = words(decl);
  if (w.size() != 2) {
    if (errors) *errors += "bad uniform: " + line + "\n";
    return false;
  }
  p.name = w[1];
  const std::string& type = w[0];
  if (type == "float") {
    p.type = PT_FLOAT, p.rows = 1, p.columns = 1;
  } else if (type == "vec4") {
    p.type = PT_VECTOR, p.rows = 1, p.columns = 4;
  } else if (type == "mat4") {
    p.type = PT_MATRIX, p.rows = 4, p.columns = 4;
  } else if (type == "mat4x3") {
    p.type = PT_MATRIX, p.rows = 4, p.columns = 3;
  } else if (type == "sampler2D") {
    p.type = PT_SAMPLER, p.rows = 0, p.columns = 0;
  } else {
    if (errors) *errors += "unknown parameter type " + type + "\n";
    return false;
  }
  p.defaults.assign(p.floatCount(), 0.0f);
  // Numbers of the initialiser, in order; the rest stays zero.
  std::size_t k = 0;
  const char* s = init.c_str();
  while (*s && k < p.defaults.size()) {
    if (std::isdigit(static_cast<unsigned char>(*s)) || *s == '-' || *s == '.') {
      if (*s == '.' || std::isdigit(static_cast<unsigned char>(*s)) ||
          std::isdigit(static_cast<unsigned char>(s[1])) || s[1] == '.') {
        char* end = nullptr;
        p.defaults[k++] = std::strtof(s, &end);
        s = end;
        continue;
      }
    }
    if (isIdent(*s)) {
      while (isIdent(*s)) ++s;  // vec4, a type name with digits
      continue;
    }
    ++s;
  }
  return true;
}

// Finds the definition `type name(params) {` and reads its signature.
bool findFunction(const std::string& text, const std::string& name, EffectShader& out) {
  std::size_t at = 0;
  while ((at = text.find(name, at)) != std::string::npos) {
    const std::size_t end = at + name.size();
    const bool whole = (at == 0 || !isIdent(text[at - 1])) && end < text.size();
    std::size_t paren = end;
    while (paren < text.size() && text[paren] == ' ') ++paren;
    if (!whole || paren >= text.size() || text[paren] != '(') {
      at = end;
      continue;
    }
    // The word before the name is the return type.
    std::size_t b = at;
    while (b > 0 && text[b - 1] == ' ') --b;
    std::size_t a = b;
    while (a > 0 && isIdent(text[a - 1])) --a;
    const std::string type = text.substr(a, b - a);
    const std::size_t close = text.find(')', paren);
    std::size_t brace = close == std::string::npos ? close : close + 1;
    while (brace != std::string::npos && brace < text.size() &&
           std::isspace(static_cast<unsigned char>(text[brace])))
      ++brace;
    if (type.empty() || type == "return" || brace == std::string::npos || brace >= text.size() ||
        text[brace] != '{') {
      at = end;
      continue;
    }
    out.name = name;
    out.returnType = type;
    std::stringstream params(text.substr(paren + 1, close - paren - 1));
    std::string one;
    while (std::getline(params, one, ',')) {
      const auto w = words(one);
      if (w.size() != 2) continue;
      out.parameterTypes.push_back(w[0]);
      out.parameterNames.push_back(w[1]);
    }
    return true;
  }
  return false;
}

}  // namespace

bool EffectSource::parse(const char* source, std::size_t length, std::string* errors) {
  text.assign(source, length);
  parameters.clear();
  samplers.clear();
  techniques.clear();
  shaders.clear();
  std::istringstream in(text);
  std::string raw;
  bool ok = true;
  while (std::getline(in, raw)) {
    const std::string line = trim(raw);
    if (line.rfind("uniform ", 0) == 0) {
      EffectParameter p;
      if (!parseUniform(line, p, errors)) {
        ok = false;
        continue;
      }
      parameters.push_back(p);
      continue;
    }
    if (line.rfind("#pragma ", 0) != 0) continue;
    const auto w = words(line);
    if (w.size() >= 3 && w[1] == "texture") {
      EffectParameter p;
      p.name = w[2];
      p.type = PT_TEXTURE;
      parameters.push_back(p);
    } else if (w.size() >= 5 && w[1] == "sampler") {
      EffectSampler s;
      s.name = w[2];
      s.texture = w[3] == "-" ? "" : w[3];
      s.unit = std::atoi(w[4].c_str() + 1);
      for (std::size_t i = 5; i < w.size(); ++i) {
        const auto eq = w[i].find('=');
        if (eq == std::string::npos) continue;
        const std::string key = w[i].substr(0, eq), value = w[i].substr(eq + 1);
        s.ownStates = true;
        if (key == "MinFilter") s.minFilter = filterByName(value);
        if (key == "MagFilter") s.magFilter = filterByName(value);
        if (key == "AddressU") s.addressU = addressByName(value);
        if (key == "AddressV") s.addressV = addressByName(value);
      }
      samplers.push_back(s);
    } else if (w.size() >= 5 && w[1] == "technique") {
      techniques.push_back({w[2], w[3], w[4] == "-" ? "" : w[4]});
    }
  }
  for (const auto& t : techniques) {
    for (const std::string* name : {&t.vertexShader, &t.pixelShader}) {
      if (name->empty() || shader(*name)) continue;
      EffectShader s;
      if (!findFunction(text, *name, s)) {
        if (errors) *errors += "technique " + t.name + ": no function " + *name + "\n";
        ok = false;
        continue;
      }
      shaders.push_back(s);
    }
  }
  return ok;
}

const EffectShader* EffectSource::shader(const std::string& name) const {
  for (const auto& s : shaders)
    if (s.name == name) return &s;
  return nullptr;
}

std::string EffectSource::vertexCall(const EffectShader& vs) const {
  std::string call = vs.name + "(";
  for (std::size_t i = 0; i < vs.parameterNames.size(); ++i) {
    const std::string& n = vs.parameterNames[i];
    if (i) call += ", ";
    call += n == "p" ? "aPosition" : n == "c" ? "aColor" : n == "uv" ? "aTexCoord" : "aWeight";
  }
  return call + ")";
}

std::string EffectSource::pixelCall(const EffectShader& ps) const {
  const std::string record = ps.parameterTypes.empty() ? "v" : ps.parameterTypes[0];
  return ps.name + "(in_" + record + "())";
}

}  // namespace vostan::gfx
