#pragma once
// The library's one effect: every draw goes through one of its techniques.
#include <cstddef>

namespace vostan {

extern const char kEffectText[];
extern const std::size_t kEffectTextLength;

}  // namespace vostan
