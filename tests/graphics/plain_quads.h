#pragma once
// Yardsticks in plain GL calls in the current context: for immediate-mode
// quads, the same quads one draw of two triangles each; for indexed drawing,
// the same mesh from buffers with glDrawElements.
#include <cstdint>

namespace vostan::test {

// Draws `count` quads and gives the nanoseconds it took, the GPU's work included.
int64_t plainQuads(int count);

// Draws a mesh of positions (3 floats) and colours (4 bytes a vertex) `draws`
// times from vertex buffers made once, and gives the nanoseconds the draws
// took. The indices are uploaded for each draw, or once when `resident`.
int64_t plainIndexed(const float* positions, const uint32_t* colours, int vertexCount,
                     const uint16_t* indices, int indexCount, int draws, bool resident);

}  // namespace vostan::test
