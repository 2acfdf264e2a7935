#include "platform/composition.h"

#include <cstring>

#include "platform/win32_defs.h"

namespace vostan::platform {

namespace {

int32_t copyOut(const void* data, std::size_t bytes, void* buffer, uint32_t size) {
  if (buffer != nullptr) std::memcpy(buffer, data, bytes < size ? bytes : size);
  return static_cast<int32_t>(bytes);
}

}  // namespace

int32_t readComposition(const Composition& c, uint32_t kind, void* buffer, uint32_t size) {
  switch (kind) {
    case win::GCS_COMPSTR:
      return copyOut(c.text.data(), c.text.size() * sizeof(char16_t), buffer, size);
    case win::GCS_COMPATTR:
      return copyOut(c.attributes.data(), c.attributes.size(), buffer, size);
    case win::GCS_CURSORPOS:
      return c.cursor;
    case win::GCS_RESULTSTR:
      return copyOut(c.result.data(), c.result.size() * sizeof(char16_t), buffer, size);
    default:
      return -1;
  }
}

}  // namespace vostan::platform
