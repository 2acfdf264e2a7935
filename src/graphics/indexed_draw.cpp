// Indexed drawing from native arrays: one stream per bound array, a vertex
// declaration by the streams present, and indices from the dynamic buffer or
// from a resident index array.
#include <algorithm>

#include "graphics/d3d_graphics.h"

namespace vostan {

using namespace gfx;

namespace {

constexpr uint32_t kPositionStride = 12, kColorStride = 4, kTexCoordStride = 8, kWeightStride = 16;

uint32_t roomFor(const GLArrayRecord* r, uint32_t stride) {
  return r->isIndex() ? 0 : r->size() / stride;
}

}  // namespace

void D3DGraphics::pointer(int32_t kind, GLArrayRecord* record) {
  switch (kind) {
    case arraykind::kVertex:
      vertexArray = record;
      break;
    case arraykind::kColor:
      colorArray = record;
      break;
    case arraykind::kTexCoord:
      texCoordArray = record;
      break;
    case arraykind::kWeight:
      weightArray = record;
      break;
    default:
      break;
  }
}

int32_t D3DGraphics::streamFlags() const {
  return 1 | (texCoordArray ? 2 : 0) | (colorArray ? 4 : 0) | (weightArray ? 8 : 0);
}

uint32_t D3DGraphics::boundVertexCapacity() const {
  uint32_t n = roomFor(vertexArray, kPositionStride);
  if (colorArray) n = std::min(n, roomFor(colorArray, kColorStride));
  if (texCoordArray) n = std::min(n, roomFor(texCoordArray, kTexCoordStride));
  if (weightArray) n = std::min(n, roomFor(weightArray, kWeightStride));
  return n;
}

void D3DGraphics::bindArrays() {
  const int32_t flags = streamFlags();
  selectTechnique(flags);
  // Absent arrays leave no gap in the stream numbers.
  uint32_t stream = 0;
  device->setStreamSource(stream++, vertexArray->vertexBufferOf(device), 0, kPositionStride);
  if (colorArray)
    device->setStreamSource(stream++, colorArray->vertexBufferOf(device), 0, kColorStride);
  if (texCoordArray)
    device->setStreamSource(stream++, texCoordArray->vertexBufferOf(device), 0, kTexCoordStride);
  if (weightArray)
    device->setStreamSource(stream++, weightArray->vertexBufferOf(device), 0, kWeightStride);
  if (colorArray) {
    // The stream's colours are lit by the lighting colour.
    effect->setFloatArray(unicolorHandle, lightingColor, 4);
  } else {
    const uint32_t c = currentVertex.color;
    const float rgba[4] = {
        static_cast<float>(c & 0xFF) / 255.0f, static_cast<float>((c >> 8) & 0xFF) / 255.0f,
        static_cast<float>((c >> 16) & 0xFF) / 255.0f, static_cast<float>(c >> 24) / 255.0f};
    effect->setFloatArray(unicolorHandle, rgba, 4);
  }
  device->setVertexDeclaration(vertexDeclarations[flags]);
}

void D3DGraphics::drawBoundTriangles(int32_t start, int32_t end, int32_t count) {
  effect->begin(nullptr, 0);
  effect->beginPass(0);
  device->drawIndexedPrimitive(PT_TRIANGLELIST, 0, static_cast<uint32_t>(start),
                               static_cast<uint32_t>(end - start + 1), 0,
                               static_cast<uint32_t>(count / 3));
  effect->endPass();
  effect->end();
}

void D3DGraphics::drawIndexed(int32_t start, int32_t end, int32_t count, IndexSource& indices) {
  if (!vertexArray || !device) return;
  if (count < 0 || count > kDynamicIndices) return;
  bindArrays();
  if (!dynamicIndexBuffer)
    device->createIndexBuffer(kDynamicIndices * 2, USAGE_WRITEONLY, FMT_INDEX16, POOL_DEFAULT,
                              &dynamicIndexBuffer);
  const uint16_t* from = indices.acquire();
  if (!from) return;
  void* bits = nullptr;
  if (!dynamicIndexBuffer ||
      failed(dynamicIndexBuffer->lock(0, static_cast<uint32_t>(count) * 2, &bits, 0))) {
    indices.release();
    return;
  }
  // Copied and checked in one pass: every index must name a vertex that all
  // bound arrays hold.
  auto* to = static_cast<uint16_t*>(bits);
  uint16_t top = 0;
  for (int32_t i = 0; i < count; ++i) top = std::max(top, to[i] = from[i]);
  indices.release();
  dynamicIndexBuffer->unlock();
  if (count > 0 && top >= boundVertexCapacity()) return;
  device->setIndices(dynamicIndexBuffer);
  drawBoundTriangles(start, end, count);
}

void D3DGraphics::drawIndexed(int32_t start, int32_t end, int32_t count, const uint16_t* indices) {
  if (!indices) return;
  struct Plain final : IndexSource {
    const uint16_t* p;
    explicit Plain(const uint16_t* indices) : p(indices) {}
    const uint16_t* acquire() override { return p; }
    void release() override {}
  } source(indices);
  drawIndexed(start, end, count, source);
}

void D3DGraphics::drawIndexedResident(int32_t start, int32_t end, int32_t count,
                                      GLArrayRecord* indices) {
  if (!indices || !vertexArray || !device) return;
  if (!indices->isIndex() || count < 0 || !indices->holds(0, int64_t{count} * 2)) return;
  if (count > 0 && indices->maxIndex >= boundVertexCapacity()) return;
  bindArrays();
  device->setIndices(indices->indexBufferOf(device));
  drawBoundTriangles(start, end, count);
}

}  // namespace vostan
