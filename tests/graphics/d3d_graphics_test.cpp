// Device lifecycle of D3DGraphics on the recording device: creation and its
// fallbacks, the effect's handles, formats, the scene bracket and recovery.
#include "recording_fixture.h"

namespace vostan::test {
namespace {

using namespace gfx;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string captured(const std::function<void()>& run) {
  ::testing::internal::CaptureStdout();
  run();
  return ::testing::internal::GetCapturedStdout();
}

TEST_F(RecordingGraphics, CreateDeviceTriesVertexProcessingInOrder) {
  system.createResults[CREATE_HARDWARE_VERTEXPROCESSING] = kNotAvailable;
  system.createResults[CREATE_MIXED_VERTEXPROCESSING] = kNotAvailable;
  const std::string out = captured([&] { EXPECT_GE(graphics->createDevice(7, 0), 0); });
  EXPECT_THAT(calls("CreateDevice("),
              ElementsAre("CreateDevice(0,1,7,0x40)", "CreateDevice(0,1,7,0x80)",
                          "CreateDevice(0,1,7,0x20)"));
  EXPECT_THAT(out, HasSubstr("CreateDevice(0) failed.. next:D3DCREATE_MIXED_VERTEXPROCESSING\n"
                             "CreateDevice(0) failed.. next:D3DCREATE_SOFTWARE_VERTEXPROCESSING\n"
                             "D3D device created..\nvs:3.0   ps:3.0\n"));
  // The device starts with lighting off, no culling and a black, cleared target.
  EXPECT_EQ(renderState(RS_LIGHTING), 0u);
  EXPECT_EQ(renderState(RS_CULLMODE), CULL_NONE);
  EXPECT_THAT(calls("Clear("), ElementsAre("Clear(0,7,0x00000000,1,0)"));
  EXPECT_EQ(device().presentParameters().autoDepthStencilFormat, FMT_D24S8);
  EXPECT_TRUE(device().presentParameters().windowed);
  EXPECT_EQ(device().presentParameters().deviceWindow, 7u);
}

TEST_F(RecordingGraphics, OldVertexShadersSkipStraightToSoftware) {
  system.caps.vertexShaderVersion = vsVersion(1, 0);
  system.createResults[CREATE_SOFTWARE_VERTEXPROCESSING] = kOutOfVideoMemory;
  const std::string out =
      captured([&] { EXPECT_EQ(graphics->createDevice(7, 0), kOutOfVideoMemory); });
  EXPECT_THAT(calls("CreateDevice("), ElementsAre("CreateDevice(0,1,7,0x20)"));
  EXPECT_THAT(out, HasSubstr("next:D3DCREATE_MIXED_VERTEXPROCESSING\n"));
  EXPECT_THAT(
      out, HasSubstr("next:D3DCREATE_SOFTWARE_VERTEXPROCESSING\nCreateDevice(2) failed.. exit\n"));
  EXPECT_FALSE(graphics->hasDevice());
}

TEST_F(RecordingGraphics, NoDisplayModeNoDevice) {
  system.displayModeResult = kNotAvailable;
  EXPECT_EQ(graphics->createDevice(7, 0), kFail);
  EXPECT_TRUE(calls("CreateDevice").empty());
  PixelFormatRow rows[5];
  EXPECT_EQ(graphics->pixelFormatRows(rows), kFail);
}

TEST_F(RecordingGraphics, EffectHandlesAndTheMissingTechnique) {
  const std::string out = captured([&] { graphics->createDevice(7, 0); });
  EXPECT_THAT(out, HasSubstr("D3DXCreateEffect : 0\n"));
  // One technique is asked for that the effect does not have, and it alone fails.
  EXPECT_THAT(out, HasSubstr("ValidateTechnique failed: tecshadow2w hr:"));
  EXPECT_EQ(out.find("ValidateTechnique failed"), out.rfind("ValidateTechnique failed"));
  for (int t = 0; t < D3DGraphics::kTechniqueCount; ++t) {
    if (t == D3DGraphics::TECSHADOW2W)
      EXPECT_EQ(graphics->techniques[t], nullptr);
    else
      EXPECT_STREQ(graphics->effect->nameOf(graphics->techniques[t]),
                   D3DGraphics::kTechniqueNames[t]);
  }
  EXPECT_STREQ(graphics->effect->nameOf(graphics->matHandle), "mat");
  EXPECT_STREQ(graphics->effect->nameOf(graphics->texshadowHandle), "texshadow");
  EXPECT_NE(graphics->skinmatHandles[28], nullptr);
  EXPECT_EQ(graphics->skinmatHandles[29], nullptr);
  EXPECT_NE(graphics->unicolorHandle, nullptr);
  EXPECT_NE(graphics->shadowcolorHandle, nullptr);
}

TEST_F(RecordingGraphics, WithoutPixelShadersTheShadowTechniquesStayButTheStringSaysNo) {
  system.caps.pixelShaderVersion = psVersion(1, 4);
  const std::string out = captured([&] { graphics->createDevice(7, 0); });
  EXPECT_THAT(out, HasSubstr("ValidateTechnique failed: tecshadow1 hr:-2147467259\n"));
  EXPECT_NE(graphics->techniques[D3DGraphics::TECSHADOW1], nullptr);
  EXPECT_STREQ(graphics->getString(7939), "NASI!");
  EXPECT_STREQ(graphics->getString(7938), "D3D9");
  EXPECT_STREQ(graphics->getString(7936), "GL-String not available !");
}

TEST_F(RecordingGraphics, ABrokenEffectEndsTheProcess) {
  EXPECT_EXIT(
      {
        graphics->createDevice(7, 0);
        system.lastDevice->failEffect = true;
        graphics->createEffect();
      },
      ::testing::ExitedWithCode(1), "");
}

TEST_F(RecordingGraphics, PixelFormatsAreTheRowsTheDisplayTakes) {
  system.backBufferFormats = {FMT_A8R8G8B8, FMT_R5G6B5, FMT_UNKNOWN};
  PixelFormatRow rows[5];
  ASSERT_EQ(graphics->pixelFormatRows(rows), 3);
  EXPECT_EQ(rows[0].format, FMT_A8R8G8B8);
  EXPECT_EQ(rows[0].alpha, 8);
  EXPECT_EQ(rows[1].format, FMT_R5G6B5);
  EXPECT_EQ(rows[1].green, 6);
  EXPECT_EQ(rows[2].format, FMT_UNKNOWN);
  EXPECT_EQ(rows[2].colorBits, 24);
  system.depthStencilAvailable = false;
  EXPECT_EQ(graphics->pixelFormatRows(rows), 0);
}

TEST_F(RecordingGraphics, SceneStaysOpenAcrossTheSwap) {
  create();
  EXPECT_EQ(graphics->beginScene(), 0);
  EXPECT_EQ(graphics->beginScene(), 0);  // already open: no second BeginScene
  EXPECT_EQ(graphics->swapBuffers(), 0);
  EXPECT_TRUE(graphics->inScene);
  EXPECT_THAT(system.log, ElementsAre("BeginScene", "EndScene", "Present", "BeginScene"));
  EXPECT_EQ(graphics->endScene(), 0);
  EXPECT_FALSE(graphics->inScene);

  device().beginSceneResult = kDeviceLost;
  EXPECT_EQ(graphics->beginScene(), kDeviceLost);
  EXPECT_FALSE(graphics->inScene);
}

TEST_F(RecordingGraphics, LostPresentResetsAndRebuilds) {
  create();
  graphics->beginScene();
  device().presentResults = {kDeviceLost};
  device().lostTries = 3;
  const std::string out = captured([&] { EXPECT_EQ(graphics->swapBuffers(), 0); });
  EXPECT_THAT(out, HasSubstr("D3D Present failed. device reset..\n"));
  EXPECT_EQ(gWaits, 3);
  EXPECT_THAT(out, HasSubstr("RESET 0   texcnt:0\n"));
  EXPECT_THAT(out, HasSubstr("D3DXCreateEffect : 0\n"));
  EXPECT_EQ(calls("TestCooperativeLevel=lost").size(), 3u);
  EXPECT_THAT(calls("Reset("), ElementsAre("Reset(0,0)"));
  EXPECT_EQ(calls("CreateStateBlock").size(), 10u);
  EXPECT_NE(graphics->backBuffer, nullptr);
  EXPECT_NE(graphics->depthSurface, nullptr);
  EXPECT_TRUE(graphics->inScene);
}

TEST_F(RecordingGraphics, OtherPresentFailuresAreNamedAndResetToo) {
  create();
  device().presentResults = {kDriverInternalError};
  const std::string out = captured([&] { EXPECT_EQ(graphics->swapBuffers(), 0); });
  EXPECT_THAT(out,
              HasSubstr("swapBuffers() NAZEKA DAME -2005530585\nD3DERR_DRIVERINTERNALERROR\n"));
  EXPECT_EQ(calls("Reset(").size(), 1u);
}

TEST_F(RecordingGraphics, FailedResetIsOnlyLogged) {
  create();
  device().resetResult = kInvalidCall;
  std::string out;
  out = captured([&] { EXPECT_EQ(graphics->resetDevice(), kInvalidCall); });
  EXPECT_THAT(out, HasSubstr("RESET -2005530516   texcnt:0\nD3DERR_INVALIDCALL\n"));
  EXPECT_NE(graphics->effect, nullptr);
}

TEST_F(RecordingGraphics, ResetRemakesRenderTexturesInTheirSlots) {
  create();
  TextureEntry& render = graphics->textures[0];
  TextureEntry& managed = graphics->textures[1];
  render.desc.width = 64, render.desc.height = 32, render.desc.format = FMT_A8R8G8B8;
  render.desc.usage = USAGE_RENDERTARGET, render.desc.pool = POOL_DEFAULT;
  graphics->device->createTexture(64, 32, 1, USAGE_RENDERTARGET, FMT_A8R8G8B8, POOL_DEFAULT,
                                  &render.texture);
  managed.desc.pool = POOL_MANAGED;
  graphics->device->createTexture(8, 8, 1, 0, FMT_A8R8G8B8, POOL_MANAGED, &managed.texture);
  Texture* kept = managed.texture;
  graphics->textureCount = 2;
  system.log.clear();
  const std::string out = captured([&] { graphics->resetDevice(); });
  EXPECT_THAT(out, HasSubstr("texcnt:1\n"));
  EXPECT_THAT(calls("CreateTexture"), ElementsAre("CreateTexture(64,32,1,1,21,0)"));
  EXPECT_NE(render.texture, nullptr);
  EXPECT_EQ(managed.texture, kept);
}

TEST_F(RecordingGraphics, TenLostTriesAreSurvived) {
  create();
  device().lostTries = 10;
  captured([&] { graphics->resetDevice(); });
  EXPECT_EQ(gWaits, 10);
  EXPECT_EQ(calls("Reset(").size(), 1u);
}

TEST_F(RecordingGraphics, TheEleventhLostTryEndsTheProcess) {
  create();
  device().lostTries = 11;
  EXPECT_EXIT(graphics->resetDevice(), ::testing::ExitedWithCode(1),
              "DIRECT 3D DEVICE IS NOT RECOVERABLE");
}

TEST_F(RecordingGraphics, SecondCreateStartsClean) {
  create();
  graphics->textureCount = 5;
  graphics->beginScene();
  captured([&] { graphics->createDevice(7, 0); });
  EXPECT_EQ(calls("CreateDevice(").size(), 1u);
  EXPECT_EQ(graphics->textureCount, 0);
  EXPECT_FALSE(graphics->inScene);
  EXPECT_THAT(calls("Release(device)").size(), 1u);
  graphics->disposeDevice();
  EXPECT_FALSE(graphics->hasDevice());
  graphics->disposeDevice();  // no device: nothing to do
}

}  // namespace
}  // namespace vostan::test
