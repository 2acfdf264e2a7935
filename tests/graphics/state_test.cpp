// Render state natives, technique selection and immediate geometry on the
// recording device.
#include <cstring>

#include "recording_fixture.h"

namespace vostan::test {
namespace {

using namespace gfx;
using ::testing::ElementsAre;

float asFloat(uint32_t bits) {
  float f;
  std::memcpy(&f, &bits, 4);
  return f;
}

TEST_F(RecordingGraphics, CullEnableAndFaceWorkFromEachOthersCopy) {
  create();
  graphics->setEnable(2884, false);
  graphics->cullFace(1028);
  EXPECT_EQ(renderState(RS_CULLMODE), CULL_NONE);
  graphics->setEnable(2884, true);
  EXPECT_EQ(renderState(RS_CULLMODE), CULL_CCW);
  graphics->cullFace(1029);
  EXPECT_EQ(renderState(RS_CULLMODE), CULL_CW);
}

TEST_F(RecordingGraphics, ComparisonsMapWithEqualAsAlways) {
  EXPECT_EQ(mapCompare(512), CMP_NEVER);
  EXPECT_EQ(mapCompare(513), CMP_LESS);
  EXPECT_EQ(mapCompare(514), CMP_ALWAYS);
  EXPECT_EQ(mapCompare(515), CMP_LESSEQUAL);
  EXPECT_EQ(mapCompare(516), CMP_GREATER);
  EXPECT_EQ(mapCompare(517), CMP_NOTEQUAL);
  EXPECT_EQ(mapCompare(518), CMP_GREATEREQUAL);
  EXPECT_EQ(mapCompare(519), CMP_ALWAYS);
  EXPECT_EQ(mapStencilOp(0), STENCILOP_ZERO);
  EXPECT_EQ(mapStencilOp(7682), STENCILOP_INCR);  // wrapping, not saturating
  EXPECT_EQ(mapStencilOp(7683), STENCILOP_DECR);
  EXPECT_EQ(mapStencilOp(5386), STENCILOP_KEEP);

  create();
  graphics->depthFunc(514);
  EXPECT_EQ(renderState(RS_ZFUNC), CMP_ALWAYS);
  graphics->alphaFunc(513, 0.999f);
  EXPECT_THAT(system.log, ElementsAre("SetRenderState(23,8)", "SetRenderState(24,254)",
                                      "SetRenderState(25,2)"));
  system.log.clear();
  graphics->stencilFunc(517, 3, 0xF0);
  graphics->stencilOp(7681, 0, 7682);
  EXPECT_THAT(system.log,
              ElementsAre("SetRenderState(56,6)", "SetRenderState(57,3)", "SetRenderState(58,240)",
                          "SetRenderState(53,3)", "SetRenderState(54,2)", "SetRenderState(55,7)"));
}

TEST_F(RecordingGraphics, BlendPresetsAndUnknownModesResendTheCopy) {
  create();
  const uint32_t expected[6][2] = {{0, 0}, {5, 6}, {2, 2}, {9, 1}, {5, 2}, {2, 5}};
  for (int mode = 1; mode <= 5; ++mode) {
    graphics->setBlend(mode);
    EXPECT_EQ(renderState(RS_SRCBLEND), expected[mode][0]) << mode;
    EXPECT_EQ(renderState(RS_DESTBLEND), expected[mode][1]) << mode;
  }
  system.log.clear();
  graphics->setBlend(9);
  EXPECT_THAT(system.log, ElementsAre("SetRenderState(19,2)", "SetRenderState(20,5)"));
}

TEST_F(RecordingGraphics, SimpleSwitchesAndBias) {
  create();
  graphics->fillMode(6913);
  EXPECT_EQ(renderState(RS_FILLMODE), FILL_WIREFRAME);
  graphics->fillMode(6914);
  EXPECT_EQ(renderState(RS_FILLMODE), FILL_SOLID);
  graphics->shadeModel(7424);
  EXPECT_EQ(renderState(RS_SHADEMODE), SHADE_FLAT);
  graphics->colorMask(false);
  EXPECT_EQ(renderState(RS_COLORWRITEENABLE), 0u);
  graphics->colorMask(true);
  EXPECT_EQ(renderState(RS_COLORWRITEENABLE), 15u);
  graphics->polygonOffset(-2.0f);
  EXPECT_EQ(asFloat(renderState(RS_DEPTHBIAS)), -2.0f);
  EXPECT_EQ(asFloat(renderState(RS_SLOPESCALEDEPTHBIAS)), -0.1f);
  graphics->polygonOffset(0.0f);
  EXPECT_EQ(asFloat(renderState(RS_SLOPESCALEDEPTHBIAS)), 0.0f);
  graphics->textureStageState(10241, 9728);
  graphics->textureStageState(10240, 9729);
  EXPECT_EQ(device().state().samplerStates[0][SAMP_MINFILTER], TEXF_POINT);
  EXPECT_EQ(device().state().samplerStates[0][SAMP_MAGFILTER], TEXF_LINEAR);
}

TEST_F(RecordingGraphics, ViewportAndScissorFlipAgainstTheTarget) {
  create();
  graphics->viewPort(0, 0, 640, 100);
  EXPECT_EQ(device().state().viewport.y, 380u);
  graphics->renderTextureHeight = 256;
  graphics->viewPort(0, 0, 640, 100);
  EXPECT_EQ(device().state().viewport.y, 156u);
  graphics->renderTextureHeight = 0;

  graphics->scissor(10, 20, 30, 40);
  const Rect r = device().state().scissor;
  EXPECT_EQ(r.left, 10);
  EXPECT_EQ(r.top, 480 - 40 - 20);
  EXPECT_EQ(r.right, 40);
  EXPECT_EQ(r.bottom, 460);
  EXPECT_EQ(renderState(RS_SCISSORTESTENABLE), 1u);
  graphics->scissor(0, 0, 0, 50);  // off, and the rectangle stays
  EXPECT_EQ(renderState(RS_SCISSORTESTENABLE), 0u);
  EXPECT_EQ(device().state().scissor.top, 420);

  device().viewportResult = kInvalidCall;
  ::testing::internal::CaptureStdout();
  graphics->viewPort(1, 2, 3, 4);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "SetViewport failed hr:1  474,3,4,\n");
}

TEST_F(RecordingGraphics, ColourPackings) {
  create();
  graphics->setClearColor(1.0f, 0.5f, 0.0f, 0.25f);
  graphics->clear(0x4000 | 0x100);
  EXPECT_THAT(system.log, ElementsAre("Clear(0,3,0x3fff7f00,1,0)"));
  graphics->clear(0x400);
  EXPECT_EQ(system.log.back(), "Clear(0,4,0x3fff7f00,1,0)");

  graphics->color1ui(0x11223344);
  const uint32_t fromInt = graphics->currentVertex.color;
  graphics->color4ub(0x11, 0x22, 0x33, 0x44);
  EXPECT_EQ(graphics->currentVertex.color, fromInt);
  EXPECT_EQ(fromInt, 0x44332211u);
  graphics->color3f(1.0f, 0.5f, 0.0f);
  EXPECT_EQ(graphics->currentVertex.color, 0xFF007FFFu);
  graphics->color4f(2.0f, 0.0f, 0.0f, 1.0f);  // 510 keeps its low byte
  EXPECT_EQ(graphics->currentVertex.color & 0xFF, 0xFEu);
}

TEST_F(RecordingGraphics, AttributeStackSavesTenAndStopsAtEmpty) {
  create();
  graphics->popAttrib();
  EXPECT_EQ(graphics->attribDepth, 0);
  graphics->setBlend(2);
  graphics->pushAttrib();
  graphics->setBlend(3);
  graphics->viewPort(0, 0, 10, 10);
  graphics->popAttrib();
  EXPECT_EQ(renderState(RS_SRCBLEND), BLEND_ONE);
  EXPECT_EQ(device().state().viewport.height, 480u);
  EXPECT_EQ(graphics->srcBlend, BLEND_DESTCOLOR);  // the copy is not part of the stack

  for (int i = 0; i < 10; ++i) {
    graphics->setRenderMode(i);
    device().setRenderState(RS_ALPHAREF, i);
    graphics->pushAttrib();
  }
  device().setRenderState(RS_ALPHAREF, 99);
  graphics->pushAttrib();  // eleventh: counted, saves nothing
  EXPECT_EQ(graphics->attribDepth, 11);
  graphics->popAttrib();  // back to ten without applying anything
  EXPECT_EQ(renderState(RS_ALPHAREF), 99u);
  graphics->popAttrib();
  EXPECT_EQ(renderState(RS_ALPHAREF), 9u);
  for (int i = 0; i < 9; ++i) graphics->popAttrib();
  EXPECT_EQ(renderState(RS_ALPHAREF), 0u);
  EXPECT_EQ(graphics->attribDepth, 0);
}

TEST_F(RecordingGraphics, MatricesGoToTheirParameters) {
  create();
  float m[16] = {};
  for (int i = 0; i < 16; ++i) m[i] = static_cast<float>(i + 1);
  graphics->setMatrix(0, m);
  graphics->setMatrix(1, m);
  graphics->setMatrix(23, m);
  graphics->setMatrix(49, m);  // a bone the effect does not have
  graphics->setMatrix(2, m);   // nothing
  graphics->texGen(m);
  EXPECT_THAT(calls("Effect.SetMatrix"),
              ElementsAre("Effect.SetMatrix(mat,1)", "Effect.SetMatrix(mvmat,1)",
                          "Effect.SetMatrix(skinmat,1)", "Effect.SetMatrix(null,1)",
                          "Effect.SetMatrix(texgenmat,1)"));
  auto* core = static_cast<EffectCore*>(graphics->effect);
  const float* bone3 = core->values(core->parameterIndex("skinmat")) + 3 * 12;
  // A 4 by 3 element keeps the first three columns of each row.
  EXPECT_EQ(bone3[0], 1.0f);
  EXPECT_EQ(bone3[3], 5.0f);
  EXPECT_EQ(bone3[11], 15.0f);
}

struct Selection {
  int techniqueMode, renderMode, flags;
  const char* technique;
};

TEST_F(RecordingGraphics, TechniqueFollowsModeAndStreams) {
  create();
  const Selection table[] = {
      {0, 0, 1, "tec1"},         {0, 0, 5, "tec2"},          {0, 0x2002F, 13, "tec2w"},
      {0, 0, 9, "tec1w"},        {0, 0x2005F, 5, "tecmix1"}, {0, 0x2005F, 13, "tecmix1w"},
      {1, 77, 5, "tecdepth1"},   {1, 0, 9, "tecdepth1w"},    {2, 0, 5, "tecshadow2"},
      {2, 0, 13, "tecshadow1w"}, {2, 0, 3, "tecshadow1"},    {2, 0x2005F, 7, "tecmix1"},
      {3, 0, 1, "tecdepth2"},    {3, 0, 15, "tecdepth2w"},   {4, 0, 7, "tecdepth3"},
      {4, 0, 9, "tecdepth3w"},   {5, 0, 15, "tecblur"},      {6, 0, 1, "tecdof"},
      {7, 0, 9, "tecbloom1"},    {8, 0, 5, "tecbloom2"},
  };
  auto* effect = graphics->effect;
  for (const auto& s : table) {
    graphics->techniqueMode = s.techniqueMode;
    graphics->renderMode = s.renderMode;
    graphics->selectTechnique(s.flags);
    EXPECT_STREQ(effect->nameOf(effect->getCurrentTechnique()), s.technique)
        << s.techniqueMode << " " << s.renderMode << " " << s.flags;
  }
  // Unknown render modes and high technique modes keep the last draw's technique.
  graphics->techniqueMode = 0;
  graphics->renderMode = 0x12345;
  graphics->selectTechnique(5);
  graphics->techniqueMode = 9;
  graphics->selectTechnique(1);
  EXPECT_STREQ(effect->nameOf(effect->getCurrentTechnique()), "tecbloom2");
}

struct Vertex {
  float x, y, z;
  uint32_t color;
  float u, v;
};

std::vector<Vertex> drawn(const RecordingDevice::Draw& d) {
  std::vector<Vertex> out(d.vertices.size() / sizeof(Vertex));
  std::memcpy(out.data(), d.vertices.data(), d.vertices.size());
  return out;
}

TEST_F(RecordingGraphics, QuadsBecomeTrianglesInTheDrawingBracket) {
  create();
  graphics->begin(7);
  for (int q = 0; q < 2; ++q)
    for (int i = 0; i < 4; ++i) graphics->t2fV2f(0.5f, 0.25f, 10.0f * q + i, 0);
  graphics->end();
  std::vector<std::string> bracket;
  for (const auto& line : system.log)
    if (line.rfind("Effect.", 0) == 0 || line.rfind("SetFVF", 0) == 0 || line.rfind("Draw", 0) == 0)
      bracket.push_back(line);
  EXPECT_THAT(bracket,
              ElementsAre("Effect.SetTechnique(tec2)", "Effect.SetFloatArray(unicolor,1,1,1,1)",
                          "Effect.Begin", "Effect.BeginPass(0)", "SetFVF(0x142)",
                          "DrawPrimitiveUP(4,4,24)", "Effect.EndPass", "Effect.End"));
  ASSERT_EQ(device().draws.size(), 1u);
  EXPECT_EQ(device().draws[0].technique, "tec2");
  std::vector<float> xs;
  for (const Vertex& v : drawn(device().draws[0])) xs.push_back(v.x);
  EXPECT_THAT(xs, ElementsAre(0, 1, 2, 0, 2, 3, 10, 11, 12, 10, 12, 13));
  EXPECT_EQ(drawn(device().draws[0])[5].u, 0.5f);
  EXPECT_EQ(graphics->beginMode, 0);
}

TEST_F(RecordingGraphics, PrimitiveCountsAndCarriedOverState) {
  create();
  graphics->color3f(1, 0, 0);
  graphics->begin(5);
  graphics->vertex2f(0, 0);
  graphics->vertex2f(1, 0);
  graphics->end();
  graphics->begin(5);
  for (int i = 0; i < 5; ++i) graphics->vertex3f(1, 2, 3);
  graphics->vertex2f(4, 5);  // z back to 0
  graphics->end();
  graphics->begin(4);
  for (int i = 0; i < 6; ++i) graphics->vertex2f(0, 0);
  graphics->end();
  graphics->begin(2);  // unsupported: the triangle list stays
  for (int i = 0; i < 6; ++i) graphics->vertex2f(0, 0);
  graphics->end();
  graphics->begin(6);
  for (int i = 0; i < 5; ++i) graphics->vertex2f(0, 0);
  graphics->end();
  EXPECT_THAT(
      calls("DrawPrimitiveUP"),
      ElementsAre("DrawPrimitiveUP(5,0,24)", "DrawPrimitiveUP(5,4,24)", "DrawPrimitiveUP(4,2,24)",
                  "DrawPrimitiveUP(4,6,24)", "DrawPrimitiveUP(6,3,24)"));
  const auto strip = drawn(device().draws[1]);
  EXPECT_EQ(strip[4].z, 3.0f);
  EXPECT_EQ(strip[5].z, 0.0f);
  // The unsupported mode's list reads past the batch; the batch itself is red.
  for (std::size_t k = 1; k < device().draws.size(); ++k)
    for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(drawn(device().draws[k])[i].color, 0xFF0000FFu);
}

TEST_F(RecordingGraphics, BoundTextureModulatesAlphaAndFiltersUseTheQuadPath) {
  create();
  TextureEntry entry;
  device().createTexture(4, 4, 1, 0, FMT_A8R8G8B8, POOL_MANAGED, &entry.texture);
  graphics->boundTextures[0] = &entry;
  graphics->depthWrite(5);
  graphics->begin(7);
  for (int i = 0; i < 4; ++i) graphics->t2fV2f(0, 0, 0, 0);
  graphics->end();
  graphics->boundTextures[0] = nullptr;
  entry.texture->release();
  EXPECT_THAT(calls("SetTextureStageState"),
              ElementsAre("SetTextureStageState(0,4,4)", "SetTextureStageState(0,5,2)",
                          "SetTextureStageState(0,6,1)"));
  EXPECT_EQ(device().draws.back().technique, "tecblur");
}

}  // namespace
}  // namespace vostan::test
