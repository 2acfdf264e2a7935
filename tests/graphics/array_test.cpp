// Native arrays on the recording device: where their bytes live, copies that
// must stay inside their records and memory, the free list, and the calls an
// indexed draw and a render texture make.
#include <climits>
#include <cstring>

#include "graphics/texture_store.h"
#include "recording_fixture.h"

namespace vostan::test {
namespace {

using namespace gfx;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const float kTriangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};

class Arrays : public RecordingGraphics {
 protected:
  GLArrayRecord* make(int32_t kind, int32_t size, const void* data = nullptr) {
    return graphics->arrays.create(kind, size, data != nullptr, data, size);
  }
  std::vector<uint8_t> bytesOf(GLArrayRecord* r) {
    std::vector<uint8_t> out(r->size(), 0xEE);
    r->read(out.data(), 0, r->size());
    return out;
  }
  // The bytes of a record's device buffer, as the device holds them.
  std::vector<uint8_t> deviceBytes(GLArrayRecord* r) {
    return static_cast<MemoryVertexBuffer*>(r->vertexBuffer)->bytes();
  }
};

TEST_F(Arrays, BytesMoveToTheDeviceAtTheFirstDrawAndBackWhenItGoes) {
  create();
  const uint16_t indices[3] = {0, 1, 2};
  GLArrayRecord* empty = make(arraykind::kVertex, 36);
  GLArrayRecord* filled = make(arraykind::kVertex, 36, kTriangle);
  // Before a draw, a record made without data has nowhere to keep a copy.
  EXPECT_TRUE(copyMemoryToRecord(reinterpret_cast<const uint8_t*>(kTriangle), 36, 0, empty, 0, 36));
  EXPECT_EQ(empty->systemCopy, nullptr);
  const float moved = 5.0f;
  copyMemoryToRecord(reinterpret_cast<const uint8_t*>(&moved), 4, 0, filled, 12, 4);
  EXPECT_THAT(calls("CreateVertexBuffer"), IsEmpty());

  graphics->pointer(arraykind::kVertex, filled);
  graphics->drawIndexed(0, 2, 3, indices);
  EXPECT_THAT(calls("CreateVertexBuffer"), ElementsAre("CreateVertexBuffer(36,0,2,1)"));
  EXPECT_EQ(filled->systemCopy, nullptr);
  float uploaded[9];
  std::memcpy(uploaded, deviceBytes(filled).data(), 36);
  EXPECT_EQ(uploaded[3], 5.0f);  // the copy changed before the draw is what went up

  // A whole rewrite may discard the old contents, a part may not.
  system.log.clear();
  copyMemoryToRecord(reinterpret_cast<const uint8_t*>(kTriangle), 36, 0, filled, 0, 36);
  copyMemoryToRecord(reinterpret_cast<const uint8_t*>(&moved), 4, 0, filled, 24, 4);
  EXPECT_THAT(calls("Lock(vb"), ElementsAre("Lock(vb,0,36,0x2000)", "Lock(vb,24,4,0x0)"));

  // The device goes, the bytes stay, and the next device gets them.
  graphics->disposeDevice();
  EXPECT_EQ(filled->vertexBuffer, nullptr);
  ASSERT_NE(filled->systemCopy, nullptr);
  create();
  graphics->drawIndexed(0, 2, 3, indices);
  std::memcpy(uploaded, deviceBytes(filled).data(), 36);
  EXPECT_EQ(uploaded[0], 0.0f);
  EXPECT_EQ(uploaded[3], 1.0f);
  EXPECT_EQ(uploaded[6], 5.0f);
}

TEST_F(Arrays, CopiesThatLeaveARecordOrTheMemoryAreRefused) {
  create();
  std::vector<uint8_t> data(32);
  for (int i = 0; i < 32; ++i) data[i] = static_cast<uint8_t>(i);
  GLArrayRecord* a = make(arraykind::kColor, 32, data.data());
  GLArrayRecord* b = make(arraykind::kColor, 16, data.data());
  graphics->pointer(arraykind::kVertex, b);
  b->vertexBufferOf(graphics->device);  // one record in a buffer, one in memory
  const std::vector<uint8_t> beforeA = bytesOf(a), beforeB = bytesOf(b);
  std::vector<uint8_t> memory(8, 0xAA);

  struct Range {
    int32_t offset, other, size;
  };
  // Past the end on either side, negative offsets and sizes, sums that
  // overflow 32 bits, and nothing at all.
  const Range bad[] = {{0, 0, 33}, {30, 0, 4},      {-1, 0, 4},      {0, -4, 4},
                       {0, 0, -8}, {INT_MAX, 0, 4}, {4, INT_MAX, 4}, {0, 0, INT_MIN},
                       {0, 0, 0},  {0, 0, INT_MAX}};
  for (const Range& r : bad) {
    SCOPED_TRACE(::testing::Message() << r.offset << "," << r.other << "," << r.size);
    EXPECT_FALSE(copyBetweenRecords(a, r.offset, b, r.other, r.size));
    EXPECT_FALSE(copyBetweenRecords(b, r.other, a, r.offset, r.size));
    EXPECT_FALSE(copyRecordToMemory(a, r.offset, memory.data(), 8, r.other, r.size));
    EXPECT_FALSE(copyRecordToMemory(b, r.other, memory.data(), 8, r.offset, r.size));
    EXPECT_FALSE(copyMemoryToRecord(memory.data(), 8, r.other, a, r.offset, r.size));
    EXPECT_FALSE(copyMemoryToRecord(memory.data(), 8, r.offset, b, r.other, r.size));
  }
  // No memory (a null Java array), and no record.
  EXPECT_FALSE(copyRecordToMemory(a, 0, nullptr, -1, 0, 4));
  EXPECT_FALSE(copyMemoryToRecord(nullptr, -1, 0, a, 0, 4));
  EXPECT_FALSE(copyBetweenRecords(nullptr, 0, a, 0, 4));
  EXPECT_EQ(bytesOf(a), beforeA);
  EXPECT_EQ(bytesOf(b), beforeB);
  EXPECT_EQ(memory, std::vector<uint8_t>(8, 0xAA));

  // Right up to the ends is fine, between buffer and memory both ways.
  EXPECT_TRUE(copyBetweenRecords(a, 16, b, 0, 16));
  EXPECT_EQ(bytesOf(b)[15], 31);
  EXPECT_TRUE(copyRecordToMemory(b, 12, memory.data(), 8, 4, 4));
  EXPECT_THAT(memory, ElementsAre(0xAA, 0xAA, 0xAA, 0xAA, 28, 29, 30, 31));
  EXPECT_TRUE(copyMemoryToRecord(memory.data(), 8, 0, a, 28, 4));
  EXPECT_EQ(bytesOf(a)[27], 27);
  EXPECT_EQ(bytesOf(a)[28], 0xAA);

  // A disposed record holds nothing: every copy into or out of it is refused.
  a->dispose();
  EXPECT_EQ(a->size(), 0u);
  EXPECT_FALSE(copyBetweenRecords(a, 0, b, 0, 1));
  EXPECT_FALSE(copyMemoryToRecord(memory.data(), 8, 0, a, 0, 1));
  // Data shorter than the record asked for makes none.
  EXPECT_EQ(graphics->arrays.create(arraykind::kVertex, 64, true, data.data(), 32), nullptr);
  EXPECT_EQ(graphics->arrays.create(arraykind::kVertex, -1, false, nullptr, -1), nullptr);
  EXPECT_EQ(graphics->arrays.create(arraykind::kVertex, INT_MAX, false, nullptr, -1), nullptr);
}

TEST_F(Arrays, SlotsComeBackLastInFirstOutOnlyAfterACompact) {
  GLArrayTable& table = graphics->arrays;
  GLArrayRecord* a = make(arraykind::kVertex, 12, kTriangle);
  GLArrayRecord* b = make(arraykind::kVertex, 12);
  const int64_t ha = GLArrayTable::handleOf(a), hb = GLArrayTable::handleOf(b);
  EXPECT_EQ(table.find(ha), a);
  EXPECT_LT(ha, int64_t{1} << 31);  // fits Java's int as well as its long
  // Neither 0, nor an address inside a record, nor one past the table names one.
  EXPECT_EQ(table.find(0), nullptr);
  EXPECT_EQ(table.find(ha + 4), nullptr);
  EXPECT_EQ(table.find(hb + static_cast<int64_t>(sizeof(GLArrayRecord))), nullptr);
  EXPECT_EQ(table.find(-ha), nullptr);

  table.noteDelete(ha);
  table.noteDelete(hb);
  table.noteDelete(ha);          // twice: still freed once
  table.noteDelete(ha + 1);      // made up: ignored
  EXPECT_EQ(table.find(ha), a);  // nothing happens before the compact
  EXPECT_EQ(table.freeCount(), 0);
  table.compact();
  EXPECT_EQ(table.freeCount(), 2);
  EXPECT_EQ(table.find(ha), nullptr);
  EXPECT_EQ(a->systemCopy, nullptr);
  EXPECT_EQ(make(arraykind::kColor, 4), b);
  EXPECT_EQ(make(arraykind::kColor, 4), a);
  EXPECT_EQ(table.find(ha), a);  // the slot's handle names the new record
  EXPECT_EQ(a->size(), 4u);
  EXPECT_EQ(make(arraykind::kColor, 4), &table.at(2));

  // Dispose first, then delete: the compact's dispose finds nothing left.
  a->dispose();
  table.noteDelete(ha);
  table.compact();
  EXPECT_EQ(table.freeCount(), 1);

  // Near the table's end, only a record made with data runs the deletion list.
  EXPECT_EQ(make(arraykind::kColor, 4), a);
  while (table.count() < GLArrayTable::kCompactThreshold) make(arraykind::kColor, 4);
  table.noteDelete(hb);
  EXPECT_EQ(make(arraykind::kColor, 4), &table.at(GLArrayTable::kCompactThreshold));
  EXPECT_EQ(make(arraykind::kColor, 4, kTriangle), b);
  while (table.count() < GLArrayTable::kMaxArrays) make(arraykind::kColor, 4);
  EXPECT_EQ(make(arraykind::kColor, 4), nullptr);  // full
}

TEST_F(Arrays, IndexedDrawBindsOneStreamPerArrayInOrder) {
  create();
  const float weights[12] = {3.25f, 7.75f, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const uint32_t colours[3] = {0xFF0000FFu, 0xFF00FF00u, 0xFFFF0000u};
  const float uv[6] = {0, 0, 1, 0, 0, 1};
  GLArrayRecord* positions = make(arraykind::kVertex, 36, kTriangle);
  GLArrayRecord* colour = make(arraykind::kColor, 12, colours);
  GLArrayRecord* texCoords = make(arraykind::kTexCoord, 24, uv);
  GLArrayRecord* weight = make(arraykind::kWeight, 48, weights);
  const uint16_t indices[7] = {0, 1, 2, 2, 1, 0, 1};
  graphics->pointer(arraykind::kVertex, positions);
  graphics->pointer(arraykind::kColor, colour);
  graphics->pointer(arraykind::kTexCoord, texCoords);
  graphics->pointer(arraykind::kWeight, weight);
  graphics->pointer(arraykind::kNormal, positions);  // not a stream: ignored
  graphics->setLightingColor(0.5f, 0.25f, 1, 1);
  graphics->drawIndexed(0, 2, 7, indices);
  EXPECT_THAT(calls("SetStreamSource"),
              ElementsAre("SetStreamSource(0,vb,0,12)", "SetStreamSource(1,vb,0,4)",
                          "SetStreamSource(2,vb,0,8)", "SetStreamSource(3,vb,0,16)"));
  EXPECT_THAT(calls("Effect.SetTechnique"), ElementsAre("Effect.SetTechnique(tec2w)"));
  EXPECT_THAT(calls("Effect.SetFloatArray"),
              ElementsAre("Effect.SetFloatArray(unicolor,0.5,0.25,1,1)"));
  EXPECT_EQ(device().state().declaration, graphics->vertexDeclarations[15]);
  EXPECT_THAT(calls("CreateIndexBuffer"), ElementsAre("CreateIndexBuffer(65536,8,101,0)"));
  EXPECT_THAT(calls("Lock(ib"), ElementsAre("Lock(ib,0,14,0x0)"));
  // Seven indices make two triangles, whatever mode Java named.
  EXPECT_THAT(calls("DrawIndexedPrimitive"), ElementsAre("DrawIndexedPrimitive(4,0,0,3,0,2)"));

  // Without colours the current colour is the model's; a gap in the arrays
  // leaves none in the streams.
  system.log.clear();
  graphics->pointer(arraykind::kColor, nullptr);
  graphics->pointer(arraykind::kWeight, nullptr);
  graphics->color3f(1, 0, 0);
  graphics->drawIndexed(0, 2, 3, indices);
  EXPECT_THAT(calls("SetStreamSource"),
              ElementsAre("SetStreamSource(0,vb,0,12)", "SetStreamSource(1,vb,0,8)"));
  EXPECT_THAT(calls("Effect.SetTechnique"), ElementsAre("Effect.SetTechnique(tec1)"));
  EXPECT_THAT(calls("Effect.SetFloatArray"), ElementsAre("Effect.SetFloatArray(unicolor,1,0,0,1)"));
  EXPECT_THAT(calls("CreateIndexBuffer"), IsEmpty());  // the dynamic buffer is kept

  // An index past any bound array, or more indices than the buffer holds,
  // draws nothing.
  system.log.clear();
  const uint16_t far[3] = {0, 1, 3};
  graphics->drawIndexed(0, 3, 3, far);
  graphics->drawIndexed(0, 2, D3DGraphics::kDynamicIndices + 1, indices);
  graphics->pointer(arraykind::kTexCoord, make(arraykind::kTexCoord, 16));  // two vertices
  graphics->drawIndexed(0, 2, 3, indices);
  EXPECT_THAT(calls("DrawIndexedPrimitive"), IsEmpty());

  // Resident indices: their own buffer, checked once against the arrays.
  graphics->pointer(arraykind::kTexCoord, texCoords);
  GLArrayRecord* resident = make(arraykind::kIndex, 6, indices);
  graphics->drawIndexedResident(0, 2, 3, resident);
  EXPECT_THAT(calls("CreateIndexBuffer"), ElementsAre("CreateIndexBuffer(6,0,101,1)"));
  EXPECT_EQ(device().state().indices, resident->indexBuffer);
  copyMemoryToRecord(reinterpret_cast<const uint8_t*>(far), 6, 0, resident, 0, 6);
  graphics->drawIndexedResident(0, 2, 3, resident);  // now names vertex 3
  graphics->drawIndexedResident(0, 2, 6, make(arraykind::kIndex, 6, indices));  // too many
  graphics->drawIndexedResident(0, 2, 3, positions);  // not an index array
  EXPECT_THAT(calls("DrawIndexedPrimitive"), ElementsAre("DrawIndexedPrimitive(4,0,0,3,0,1)"));

  // A reset lets the dynamic buffer go, and the next draw makes another.
  ::testing::internal::CaptureStdout();
  graphics->resetDevice();
  ::testing::internal::GetCapturedStdout();
  system.log.clear();
  graphics->drawIndexed(0, 2, 3, indices);
  EXPECT_THAT(calls("CreateIndexBuffer"), ElementsAre("CreateIndexBuffer(65536,8,101,0)"));
}

TEST_F(Arrays, RenderTexturesPickTheirDepthBySize) {
  create();
  auto renderTexture = [&](int w, int h) {
    const int32_t handle = createTextureSlot(*graphics);
    texImage2D(*graphics, handle, 6408, w, h, 1, 6408, 5121, nullptr);
    return graphics->liveTextureEntry(handle);
  };
  TextureEntry* wide = renderTexture(512, 256);
  TextureEntry* tall = renderTexture(512, 512);
  TextureEntry* huge = renderTexture(2048, 2048);
  graphics->beginScene();
  system.log.clear();

  graphics->startRenderTexture(wide, 0, 0, 512, 256);
  EXPECT_EQ(device().depthStencil(), graphics->depthSurface);  // fits the client area
  graphics->viewPort(0, 0, 640, 100);                          // flips against 256
  graphics->finishRenderTexture();
  EXPECT_THAT(system.log, ElementsAre("EndScene", "SetRenderTarget(0,surface)",
                                      "SetDepthStencilSurface(surface)", "SetViewport(0,0,512,256)",
                                      "BeginScene", "SetViewport(0,156,640,100)", "EndScene",
                                      "SetDepthStencilSurface(null)", "SetRenderTarget(0,back)",
                                      "SetDepthStencilSurface(surface)", "BeginScene"));
  EXPECT_EQ(device().renderTarget(), device().backBuffer());
  graphics->viewPort(0, 0, 640, 100);
  EXPECT_EQ(device().state().viewport.y, 380u);  // the client's height again

  // Higher than the client: the one shared 1024 square, made once.
  graphics->startRenderTexture(tall, 0, 0, 512, 512);
  graphics->finishRenderTexture();
  graphics->startRenderTexture(tall, 0, 0, 512, 512);
  EXPECT_EQ(device().depthStencil(), graphics->renderTargetDepth);
  graphics->finishRenderTexture();
  EXPECT_THAT(calls("CreateDepthStencilSurface"),
              ElementsAre("CreateDepthStencilSurface(1024,1024,75)"));
  // Larger still: no depth at all.
  graphics->startRenderTexture(huge, 0, 0, 2048, 2048);
  EXPECT_EQ(device().depthStencil(), nullptr);
  graphics->finishRenderTexture();

  // No texture, a dead handle, or no render texture to finish: nothing.
  system.log.clear();
  graphics->startRenderTexture(graphics->liveTextureEntry(createTextureSlot(*graphics)), 0, 0, 8,
                               8);
  graphics->startRenderTexture(graphics->liveTextureEntry(12345), 0, 0, 8, 8);
  graphics->finishRenderTexture();
  EXPECT_THAT(system.log, IsEmpty());

  // A reset while a texture is the target ends the pass rather than the reset.
  graphics->startRenderTexture(wide, 0, 0, 512, 256);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(graphics->resetDevice(), OK);
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(graphics->renderTargetSurface, nullptr);
  EXPECT_EQ(graphics->targetHeight(), 480);
}

TEST_F(Arrays, ShadowSetupSwitchesTechniquesUntilItsFinish) {
  create();
  const int32_t map = createTextureSlot(*graphics);
  texImage2D(*graphics, map, 6402, 64, 64, 1, 6402, 5126, nullptr);
  GLArrayRecord* positions = make(arraykind::kVertex, 36, kTriangle);
  const uint16_t indices[3] = {0, 1, 2};
  graphics->pointer(arraykind::kVertex, positions);
  const float matrix[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
  system.log.clear();
  graphics->setupShadow(graphics->liveTextureEntry(map), matrix, 0x666666FFu);
  // 0x666666FF is the effect's own default shadow colour.
  EXPECT_THAT(calls("Effect.Set"),
              ElementsAre("Effect.SetMatrix(texgenmat,2)",
                          "Effect.SetFloatArray(texgenmat,2,0,0,0,0,2,0,0,0,0,2,0,0,0,0,1)",
                          "Effect.SetTexture(texshadow,tex)", "Effect.SetVector(shadowcolor)",
                          "Effect.SetFloatArray(shadowcolor,0.4,0.4,0.4,1)"));
  graphics->drawIndexed(0, 2, 3, indices);
  graphics->pointer(arraykind::kWeight, make(arraykind::kWeight, 48));
  graphics->drawIndexed(0, 2, 3, indices);
  graphics->finishShadow();
  graphics->drawIndexed(0, 2, 3, indices);
  EXPECT_THAT(calls("Effect.SetTechnique"),
              ElementsAre("Effect.SetTechnique(tecshadow1)", "Effect.SetTechnique(tecshadow1w)",
                          "Effect.SetTechnique(tec1w)"));
  EXPECT_THAT(calls("Effect.SetTexture"),
              ElementsAre("Effect.SetTexture(texshadow,tex)", "Effect.SetTexture(texshadow,null)"));
}

}  // namespace
}  // namespace vostan::test
