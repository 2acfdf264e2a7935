#pragma once
// The yardstick for immediate-mode quads: the same quads drawn by plain GL
// calls in the current context, one draw of two triangles each.
#include <cstdint>

namespace vostan::test {

// Draws `count` quads and gives the nanoseconds it took, the GPU's work included.
int64_t plainQuads(int count);

}  // namespace vostan::test
