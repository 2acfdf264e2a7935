#pragma once
// What an input context holds between the input method's reports and the
// reads of the console: the composition in progress and the last result.
// Both window-system backends keep their contexts in this form.
#include <cstdint>
#include <string>
#include <vector>

namespace vostan::platform {

struct Composition {
  std::u16string text;              // being composed
  std::vector<uint8_t> attributes;  // ATTR_* per unit of text (may differ in length)
  int32_t cursor = 0;               // caret, in units of text
  std::u16string result;            // last committed text
};

// The read of one GCS_* kind, with WindowSystem::immGetCompositionString's rules.
int32_t readComposition(const Composition& c, uint32_t kind, void* buffer, uint32_t size);

}  // namespace vostan::platform
