#pragma once
// One-pass row conversions for the format pairs that movies, fonts and
// read-backs use most. Each gives exactly the bytes the two samples and the
// row of common words between them give, without the row and with loops the
// compiler vectorises. Source and target memory must not overlap.
#include <cstdint>

namespace vostan {

struct DirectRow {
  // Converts `count` pixels from `src` into `dst`; null where the samples
  // have to do it.
  void (*convert)(const uint8_t* src, uint8_t* dst, int32_t count) = nullptr;
  // Bytes per pixel on each side.
  int32_t sourceSize = 0;
  int32_t targetSize = 0;
};

// The row conversion from caller memory in a GL format and type into a
// surface format.
DirectRow directRowToSurface(int32_t format, int32_t type, int32_t surfaceFormat);

// The row conversion from a surface format into caller memory in a GL format
// and type.
DirectRow directRowFromSurface(int32_t surfaceFormat, int32_t format, int32_t type);

}  // namespace vostan
