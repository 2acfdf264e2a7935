#include "graphics/d3d_graphics.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "graphics/effect_text.h"
#include "platform/low_memory.h"

namespace vostan {

using namespace gfx;

namespace {

// The flips are 32-bit sums that wrap, as the device's own arithmetic does.
int32_t wrap32(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}

int32_t noClientHeight() {
  return 0;
}

void sleepAndPump() {
  SDL_Delay(200);
  if (SDL_WasInit(SDL_INIT_EVENTS)) SDL_PumpEvents();
}

void logResultName(HRESULT hr) {
  switch (static_cast<uint32_t>(hr)) {
    case 0x8007000Eu:
      std::printf("E_OUTOFMEMORY\n");
      break;
    case 0x8876017Cu:
      std::printf("D3DERR_OUTOFVIDEOMEMORY\n");
      break;
    case 0x88760827u:
      std::printf("D3DERR_DRIVERINTERNALERROR\n");
      break;
    case 0x88760868u:
      std::printf("D3DERR_DEVICELOST\n");
      break;
    case 0x8876086Cu:
      std::printf("D3DERR_INVALIDCALL\n");
      break;
    default:
      break;
  }
}

uint32_t floatBits(float f) {
  uint32_t u;
  std::memcpy(&u, &f, sizeof u);
  return u;
}

uint32_t byteOf(float channel) {
  return static_cast<uint32_t>(static_cast<int32_t>(channel * 255.0f)) & 0xFF;
}

// Stream layouts by draw flags: position always, then colour, texture
// coordinates and weights in the order the draw binds its arrays.
void declarationFor(int flags, VertexElement out[6]) {
  int n = 0;
  if (flags & 1) {
    uint16_t stream = 0;
    out[n++] = {stream++, 0, DECLTYPE_FLOAT3, 0, DECLUSAGE_POSITION, 0};
    if (flags & 4) out[n++] = {stream++, 0, DECLTYPE_D3DCOLOR, 0, DECLUSAGE_COLOR, 0};
    if (flags & 2) out[n++] = {stream++, 0, DECLTYPE_FLOAT2, 0, DECLUSAGE_TEXCOORD, 0};
    if (flags & 8) {
      out[n++] = {stream++, 0, DECLTYPE_FLOAT4, 0, DECLUSAGE_BLENDWEIGHT, 0};
      if (flags == 9) out[n++] = {stream++, 0, DECLTYPE_FLOAT4, 0, DECLUSAGE_BLENDINDICES, 0};
    }
  }
  out[n] = kDeclEnd;
}

}  // namespace

int32_t (*D3DGraphics::clientHeightSource)() = noClientHeight;
void (*D3DGraphics::waitForWindow)() = sleepAndPump;

const char* const D3DGraphics::kTechniqueNames[kTechniqueCount] = {
    "tec1",        "tec2",        "tecmix1",   "tecdepth1",  "tecshadow1",
    "tecshadow2",  "tec1w",       "tec2w",     "tecmix1w",   "tecdepth1w",
    "tecshadow1w", "tecshadow2w", "tecdepth2", "tecdepth2w", "tecdepth3",
    "tecdepth3w",  "tecblur",     "tecdof",    "tecbloom1",  "tecbloom2"};

const PixelFormatRow D3DGraphics::kPixelFormats[5] = {
    {FMT_R8G8B8, 24, 8, 8, 8, 0},   {FMT_A8R8G8B8, 32, 8, 8, 8, 8}, {FMT_R5G6B5, 16, 5, 6, 5, 0},
    {FMT_X1R5G5B5, 16, 5, 5, 5, 0}, {FMT_UNKNOWN, 24, 8, 8, 8, 0},
};

uint32_t mapCompare(int32_t function) {
  switch (function) {
    case 512:
      return CMP_NEVER;
    case 513:
      return CMP_LESS;
    case 515:
      return CMP_LESSEQUAL;
    case 516:
      return CMP_GREATER;
    case 517:
      return CMP_NOTEQUAL;
    case 518:
      return CMP_GREATEREQUAL;
    default:  // GL_EQUAL (514) included: equality is never asked of the device
      return CMP_ALWAYS;
  }
}

uint32_t mapStencilOp(int32_t op) {
  switch (op) {
    case 0:
      return STENCILOP_ZERO;
    case 7681:
      return STENCILOP_REPLACE;
    case 7682:
      return STENCILOP_INCR;
    case 7683:
      return STENCILOP_DECR;
    default:
      return STENCILOP_KEEP;
  }
}

D3DGraphics::D3DGraphics() {
  // Texture handles are entry addresses that Java keeps in an int.
  textures = static_cast<TextureEntry*>(
      platform::lowAlloc(sizeof(TextureEntry) * kMaxTextures, alignof(TextureEntry)));
  for (int i = 0; i < kMaxTextures; ++i) new (&textures[i]) TextureEntry();
  freeTextures = new TextureEntry*[kMaxTextures];
}

D3DGraphics::~D3DGraphics() {
  disposeDevice();
  for (auto*& d : vertexDeclarations) releaseAndNull(d);
  delete[] freeTextures;
}

int32_t D3DGraphics::targetHeight() const {
  return renderTextureHeight ? renderTextureHeight : clientHeightSource();
}

int32_t D3DGraphics::createDevice(uint32_t window, int64_t) {
  disposeDevice();
  Direct3D& d3d = direct3D();
  DisplayMode mode;
  if (failed(d3d.getAdapterDisplayMode(0, mode))) return kFail;

  presentParameters = PresentParameters{};
  presentParameters.backBufferFormat = mode.format;
  presentParameters.backBufferCount = 1;
  presentParameters.swapEffect = 1;
  presentParameters.deviceWindow = window;
  presentParameters.windowed = true;
  presentParameters.enableAutoDepthStencil = true;
  presentParameters.autoDepthStencilFormat = FMT_D24S8;

  d3d.getDeviceCaps(0, DEVTYPE_HAL, caps);
  const bool vs11 = caps.vertexShaderVersion >= vsVersion(1, 1);
  HRESULT hr = kFail;
  if (vs11)
    hr = d3d.createDevice(0, DEVTYPE_HAL, window, CREATE_HARDWARE_VERTEXPROCESSING,
                          presentParameters, &device);
  if (failed(hr)) {
    std::printf("CreateDevice(0) failed.. next:D3DCREATE_MIXED_VERTEXPROCESSING\n");
    if (vs11)
      hr = d3d.createDevice(0, DEVTYPE_HAL, window, CREATE_MIXED_VERTEXPROCESSING,
                            presentParameters, &device);
    if (failed(hr)) {
      std::printf("CreateDevice(0) failed.. next:D3DCREATE_SOFTWARE_VERTEXPROCESSING\n");
      hr = d3d.createDevice(0, DEVTYPE_HAL, window, CREATE_SOFTWARE_VERTEXPROCESSING,
                            presentParameters, &device);
      if (failed(hr)) {
        std::printf("CreateDevice(2) failed.. exit\n");
        device = nullptr;
        return hr;
      }
    }
  }
  device->getDeviceCaps(caps);
  std::printf("D3D device created..\n");
  std::printf("vs:%d.%d   ps:%d.%d\n", (caps.vertexShaderVersion >> 8) & 0xFF,
              caps.vertexShaderVersion & 0xFF, (caps.pixelShaderVersion >> 8) & 0xFF,
              caps.pixelShaderVersion & 0xFF);
  device->setRenderState(RS_LIGHTING, 0);
  fetchSurfaces();
  createStateBlocks();
  for (int flags = 0; flags < 16; ++flags) {
    VertexElement elements[6];
    declarationFor(flags, elements);
    releaseAndNull(vertexDeclarations[flags]);
    hr = device->createVertexDeclaration(elements, &vertexDeclarations[flags]);
  }
  createEffect();
  return hr;
}

void D3DGraphics::fetchSurfaces() {
  device->getDepthStencilSurface(&depthSurface);
  device->getBackBuffer(0, 0, &backBuffer);
}

void D3DGraphics::createStateBlocks() {
  for (auto*& block : stateBlocks) device->createStateBlock(1, &block);
}

int32_t D3DGraphics::createEffect() {
  std::string errors;
  effect = nullptr;
  const HRESULT hr = device->createEffect(kEffectText, kEffectTextLength, &effect, &errors);
  std::printf("D3DXCreateEffect : %d\n", hr);
  if (failed(hr)) {
    std::printf("D3DXCreateEffect failed %s\n", errors.c_str());
    std::fflush(stdout);
    std::exit(1);
  }
  matHandle = mvmatHandle = texgenmatHandle = unicolorHandle = shadowcolorHandle = texshadowHandle =
      nullptr;
  for (auto& h : skinmatHandles) h = nullptr;
  EffectDesc desc;
  effect->getDesc(desc);
  for (uint32_t i = 0; i < desc.parameters; ++i) {
    EffectHandle h = effect->getParameter(nullptr, i);
    ParameterDesc p;
    effect->getParameterDesc(h, p);
    const std::string_view name = p.name ? p.name : "";
    if (name == "mat") matHandle = h;
    if (name == "mvmat") mvmatHandle = h;
    if (name == "texgenmat") texgenmatHandle = h;
    if (name == "unicolor") unicolorHandle = h;
    if (name == "shadowcolor") shadowcolorHandle = h;
    if (name == "texshadow") texshadowHandle = h;
    if (name == "skinmat")
      for (uint32_t k = 0; k < kSkinHandles; ++k)
        skinmatHandles[k] = effect->getParameterElement(h, k);
  }
  for (int t = 0; t < kTechniqueCount; ++t) {
    techniques[t] = effect->getTechniqueByName(kTechniqueNames[t]);
    const HRESULT v = effect->validateTechnique(techniques[t]);
    if (failed(v)) std::printf("ValidateTechnique failed: %s hr:%d\n", kTechniqueNames[t], v);
  }
  device->setRenderState(RS_CULLMODE, CULL_NONE);
  device->clear(0, nullptr, CLEAR_TARGET | CLEAR_ZBUFFER | CLEAR_STENCIL, 0, 1.0f, 0);
  return hr;
}

void D3DGraphics::disposeDevice() {
  if (!device) return;
  endScene();
  releaseAndNull(backBuffer);
  releaseAndNull(depthSurface);
  // The pointer stays as it was; a new device overwrites it.
  if (effect) effect->release();
  releaseAndNull(renderTargetDepth);
  for (int i = 0; i < textureCount; ++i) releaseAndNull(textures[i].texture);
  textureCount = 0;
  freeTextureCount = 0;
  releaseAndNull(dynamicIndexBuffer);
  for (auto*& block : stateBlocks) releaseAndNull(block);
  // Native arrays outlive the device: their bytes go back to system memory.
  for (int i = 0; i < arrays.count(); ++i) arrays.at(i).unload();
  releaseAndNull(renderTargetSurface);
  renderTextureHeight = 0;
  releaseAndNull(device);
}

int32_t D3DGraphics::pixelFormatRows(PixelFormatRow out[5]) {
  Direct3D& d3d = direct3D();
  DisplayMode mode;
  if (failed(d3d.getAdapterDisplayMode(0, mode))) return kFail;
  int32_t n = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    if (failed(d3d.checkDeviceType(0, DEVTYPE_HAL, mode.format, row.format, true))) continue;
    if (failed(d3d.checkDeviceFormat(0, DEVTYPE_HAL, mode.format, USAGE_DEPTHSTENCIL, RTYPE_SURFACE,
                                     FMT_D24S8)))
      continue;
    out[n++] = row;
  }
  return n;
}

int32_t D3DGraphics::beginScene() {
  if (inScene) return 0;
  const HRESULT hr = device->beginScene();
  if (failed(hr)) return hr;
  inScene = true;
  return 0;
}

int32_t D3DGraphics::endScene() {
  if (!inScene) return 0;
  const HRESULT hr = device->endScene();
  if (failed(hr)) return hr;
  inScene = false;
  return 0;
}

int32_t D3DGraphics::swapBuffers() {
  if (inScene) device->endScene();
  const HRESULT hr = device->present();
  if (hr == kDeviceLost) {
    std::printf("D3D Present failed. device reset..\n");
    resetDevice();
  } else if (failed(hr)) {
    std::printf("swapBuffers() NAZEKA DAME %d\n", hr);
    logResultName(hr);
    resetDevice();
  }
  // The scene stays open across the swap: Java draws on without a bracket.
  if (inScene) device->beginScene();
  return 0;
}

int32_t D3DGraphics::resetDevice() {
  if (!device) return 0;
  if (inScene) device->endScene();
  releaseAndNull(backBuffer);
  releaseAndNull(depthSurface);
  releaseAndNull(effect);
  releaseAndNull(renderTargetDepth);
  // Render textures live in device memory and are made again below.
  TextureEntry* remembered[1000];
  int count = 0;
  for (int i = 0; i < textureCount; ++i) {
    TextureEntry& e = textures[i];
    if (!e.texture || e.desc.pool != POOL_DEFAULT) continue;
    remembered[count++] = &e;
    releaseAndNull(e.texture);
  }
  releaseAndNull(dynamicIndexBuffer);
  for (auto*& block : stateBlocks) releaseAndNull(block);
  // A render texture still drawn into would keep the reset from working.
  releaseAndNull(renderTargetSurface);
  renderTextureHeight = 0;

  int failures = 0;
  for (;;) {
    const HRESULT hr = device->testCooperativeLevel();
    if (hr == OK || hr == kDeviceNotReset) break;
    if (++failures > 10) {
      std::printf("DIRECT 3D DEVICE IS NOT RECOVERABLE\n");
      std::fflush(stdout);
      std::fprintf(stderr, "ERROR: DIRECT 3D DEVICE IS NOT RECOVERABLE\n");
      SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, "ERROR", "DIRECT 3D DEVICE IS NOT RECOVERABLE",
                               nullptr);
      std::exit(1);
    }
    std::printf("TestCooperativeLevel failed... proceeding window event\n");
    waitForWindow();
  }
  presentParameters.backBufferWidth = 0;
  presentParameters.backBufferHeight = 0;
  const HRESULT hr = device->reset(presentParameters);
  std::printf("RESET %d   texcnt:%d\n", hr, count);
  logResultName(hr);
  fetchSurfaces();
  for (int i = 0; i < count; ++i) {
    const SurfaceDesc& d = remembered[i]->desc;
    device->createTexture(d.width, d.height, 1, d.usage, d.format, d.pool, &remembered[i]->texture);
  }
  createStateBlocks();
  createEffect();
  if (inScene) device->beginScene();
  return hr;
}

const char* D3DGraphics::getString(int32_t name) const {
  if (name == 7938) return "D3D9";
  if (name == 7939)
    return caps.pixelShaderVersion >= psVersion(2, 0)
               ? "GL_EXT_shadow GL_ARB_depth_texture GL_ARB_shader_objects"
               : "NASI!";
  return "GL-String not available !";
}

// ---- render state

void D3DGraphics::setEnable(int32_t capability, bool value) {
  switch (capability) {
    case 3042:
      blendEnable = value;
      device->setRenderState(RS_ALPHABLENDENABLE, value);
      break;
    case 2929:
      depthTestEnable = value;
      device->setRenderState(RS_ZENABLE, value);
      break;
    case 2960:
      stencilEnable = value;
      device->setRenderState(RS_STENCILENABLE, value);
      break;
    case 3008:
      alphaTestEnable = value;
      device->setRenderState(RS_ALPHATESTENABLE, value);
      break;
    case 2884:
      cullEnable = value;
      device->setRenderState(RS_CULLMODE, value ? cullMode : CULL_NONE);
      break;
    default:
      break;
  }
}

void D3DGraphics::setBlend(int32_t mode) {
  switch (mode) {
    case 1:
      srcBlend = BLEND_SRCALPHA, destBlend = BLEND_INVSRCALPHA;
      break;
    case 2:
      srcBlend = BLEND_ONE, destBlend = BLEND_ONE;
      break;
    case 3:
      srcBlend = BLEND_DESTCOLOR, destBlend = BLEND_ZERO;
      break;
    case 4:
      srcBlend = BLEND_SRCALPHA, destBlend = BLEND_ONE;
      break;
    case 5:
      srcBlend = BLEND_ONE, destBlend = BLEND_SRCALPHA;
      break;
    default:
      break;
  }
  device->setRenderState(RS_SRCBLEND, srcBlend);
  device->setRenderState(RS_DESTBLEND, destBlend);
}

void D3DGraphics::alphaFunc(int32_t function, float reference) {
  alphaRef = static_cast<uint32_t>(static_cast<int32_t>(reference * 255.0f));
  alphaFunction = mapCompare(function);
  device->setRenderState(RS_ALPHAREF, alphaRef);
  device->setRenderState(RS_ALPHAFUNC, alphaFunction);
}

void D3DGraphics::depthFunc(int32_t function) {
  depthFunction = mapCompare(function);
  device->setRenderState(RS_ZFUNC, depthFunction);
}

void D3DGraphics::depthMask(bool value) {
  depthWriteEnable = value;
  device->setRenderState(RS_ZWRITEENABLE, value);
}

void D3DGraphics::stencilFunc(int32_t function, int32_t reference, int32_t mask) {
  stencilFunction = mapCompare(function);
  stencilRef = static_cast<uint32_t>(reference);
  stencilMask = static_cast<uint32_t>(mask);
  device->setRenderState(RS_STENCILFUNC, stencilFunction);
  device->setRenderState(RS_STENCILREF, stencilRef);
  device->setRenderState(RS_STENCILMASK, stencilMask);
}

void D3DGraphics::stencilOp(int32_t fail, int32_t depthFail, int32_t pass) {
  stencilFail = mapStencilOp(fail);
  stencilZFail = mapStencilOp(depthFail);
  stencilPass = mapStencilOp(pass);
  device->setRenderState(RS_STENCILFAIL, stencilFail);
  device->setRenderState(RS_STENCILZFAIL, stencilZFail);
  device->setRenderState(RS_STENCILPASS, stencilPass);
}

void D3DGraphics::colorMask(bool value) {
  colorWrite = value ? 15 : 0;
  device->setRenderState(RS_COLORWRITEENABLE, colorWrite);
}

void D3DGraphics::cullFace(int32_t face) {
  cullMode = face == 1028 ? CULL_CCW : CULL_CW;
  device->setRenderState(RS_CULLMODE, cullEnable ? cullMode : CULL_NONE);
}

void D3DGraphics::fillMode(int32_t mode) {
  fillModeValue = mode == 6913 ? FILL_WIREFRAME : FILL_SOLID;
  device->setRenderState(RS_FILLMODE, fillModeValue);
}

void D3DGraphics::shadeModel(int32_t mode) {
  shadeMode = mode == 7424 ? SHADE_FLAT : SHADE_GOURAUD;
  device->setRenderState(RS_SHADEMODE, shadeMode);
}

void D3DGraphics::polygonOffset(float bias) {
  depthBias = bias;
  device->setRenderState(RS_DEPTHBIAS, floatBits(bias));
  const float slope = bias > 0 ? 0.1f : bias < 0 ? -0.1f : 0.0f;
  device->setRenderState(RS_SLOPESCALEDEPTHBIAS, floatBits(slope));
}

void D3DGraphics::scissor(int32_t x, int32_t y, int32_t width, int32_t height) {
  if (width == 0 || height == 0) {
    device->setRenderState(RS_SCISSORTESTENABLE, 0);
    return;
  }
  Rect r;
  r.left = x;
  r.top = wrap32(int64_t{targetHeight()} - height - y);
  r.right = wrap32(int64_t{x} + width);
  r.bottom = wrap32(int64_t{r.top} + height);
  device->setScissorRect(r);
  device->setRenderState(RS_SCISSORTESTENABLE, 1);
}

void D3DGraphics::viewPort(int32_t x, int32_t y, int32_t width, int32_t height) {
  Viewport v;
  v.x = static_cast<uint32_t>(x);
  v.y = static_cast<uint32_t>(wrap32(int64_t{targetHeight()} - height - y));
  v.width = static_cast<uint32_t>(width);
  v.height = static_cast<uint32_t>(height);
  v.minZ = 0.0f;
  v.maxZ = 1.0f;
  if (failed(device->setViewport(v)))
    // The line has one field more than values; the last stays empty.
    std::printf("SetViewport failed hr:%d  %d,%d,%d,\n", static_cast<int>(v.x),
                static_cast<int>(v.y), static_cast<int>(v.width), static_cast<int>(v.height));
}

void D3DGraphics::setClearColor(float r, float g, float b, float a) {
  clearColor = byteOf(a) << 24 | byteOf(r) << 16 | byteOf(g) << 8 | byteOf(b);
}

void D3DGraphics::clear(int32_t mask) {
  uint32_t flags = 0;
  if (mask & 0x4000) flags |= CLEAR_TARGET;
  if (mask & 0x100) flags |= CLEAR_ZBUFFER;
  if (mask & 0x400) flags |= CLEAR_STENCIL;
  device->clear(0, nullptr, flags, clearColor, 1.0f, 0);
}

void D3DGraphics::pushAttrib() {
  ++attribDepth;
  if (attribDepth > kAttribDepth) return;  // counted, nothing saved
  stateBlocks[attribDepth - 1]->capture();
}

void D3DGraphics::popAttrib() {
  --attribDepth;
  if (attribDepth < 0) {
    attribDepth = 0;
    return;
  }
  if (attribDepth < kAttribDepth) stateBlocks[attribDepth]->apply();
}

void D3DGraphics::setMatrix(int32_t which, const float* values) {
  EffectHandle h = nullptr;
  if (which == 0)
    h = matHandle;
  else if (which == 1)
    h = mvmatHandle;
  else if (which >= 20 && which < 20 + kSkinHandles)
    h = skinmatHandles[which - 20];
  else
    return;
  // A bone the effect does not have has a null handle; the effect refuses it.
  effect->setMatrix(h, values);
}

void D3DGraphics::texGen(const float* values) {
  float copy[16];
  std::memcpy(copy, values, sizeof copy);
  effect->setMatrix(texgenmatHandle, copy);
}

void D3DGraphics::textureStageState(int32_t name, int32_t value) {
  const uint32_t filter = value == 9728 ? TEXF_POINT : TEXF_LINEAR;
  if (name == 10240) device->setSamplerState(0, SAMP_MAGFILTER, filter);
  if (name == 10241) device->setSamplerState(0, SAMP_MINFILTER, filter);
}

int32_t D3DGraphics::getTextureStageState(int32_t name) const {
  const TextureEntry* e = boundTextures[currentStage];
  if (!e || !e->texture) return 0;
  if (name == 4096) return static_cast<int32_t>(e->desc.width);
  if (name == 4097) return static_cast<int32_t>(e->desc.height);
  if (name == 4099) return e->glFormat;
  return 0;
}

void D3DGraphics::setLightingColor(float r, float g, float b, float a) {
  lightingColor[0] = r;
  lightingColor[1] = g;
  lightingColor[2] = b;
  lightingColor[3] = a;
}

void D3DGraphics::color4ub(uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
  currentVertex.color = uint32_t{a} << 24 | uint32_t{b} << 16 | uint32_t{g} << 8 | r;
}

void D3DGraphics::color1ui(uint32_t rgba) {
  color4ub(static_cast<uint8_t>(rgba >> 24), static_cast<uint8_t>(rgba >> 16),
           static_cast<uint8_t>(rgba >> 8), static_cast<uint8_t>(rgba));
}

void D3DGraphics::color4f(float r, float g, float b, float a) {
  color4ub(static_cast<uint8_t>(byteOf(r)), static_cast<uint8_t>(byteOf(g)),
           static_cast<uint8_t>(byteOf(b)), static_cast<uint8_t>(byteOf(a)));
}

void D3DGraphics::selectTechnique(int32_t flags) {
  const bool colors = flags & 4, weights = flags & 8;
  int t = -1;
  const bool plain = renderMode == 0 || renderMode == 0x2002F;
  const bool generated = renderMode == 0x2005F;
  switch (techniqueMode) {
    case 0:
      if (plain)
        t = colors ? (weights ? TEC2W : TEC2) : (weights ? TEC1W : TEC1);
      else if (generated)
        t = weights ? TECMIX1W : TECMIX1;
      break;
    case 1:
      t = weights ? TECDEPTH1W : TECDEPTH1;
      break;
    case 2:
      // No skinned form of tecshadow2: skinned colours fall back to tecshadow1w.
      if (plain)
        t = weights ? TECSHADOW1W : (colors ? TECSHADOW2 : TECSHADOW1);
      else if (generated)
        t = weights ? TECMIX1W : TECMIX1;
      break;
    case 3:
      t = weights ? TECDEPTH2W : TECDEPTH2;
      break;
    case 4:
      t = weights ? TECDEPTH3W : TECDEPTH3;
      break;
    case 5:
      t = TECBLUR;
      break;
    case 6:
      t = TECDOF;
      break;
    case 7:
      t = TECBLOOM1;
      break;
    case 8:
      t = TECBLOOM2;
      break;
    default:
      break;
  }
  if (t >= 0) effect->setTechnique(techniques[t]);
}

// ---- immediate geometry

void D3DGraphics::begin(int32_t mode) {
  beginMode = mode;
  vertexCount = 0;
  verticesPerPrimitive = 1;
  primitiveAdjust = 0;
  switch (mode) {
    case 0:
      primitiveType = PT_POINTLIST;
      break;
    case 1:
      primitiveType = PT_LINELIST;
      verticesPerPrimitive = 2;
      break;
    case 4:
    case 7:
      primitiveType = PT_TRIANGLELIST;
      verticesPerPrimitive = 3;
      break;
    case 5:
    case 8:
      primitiveType = PT_TRIANGLESTRIP;
      primitiveAdjust = -2;
      break;
    case 6:
      primitiveType = PT_TRIANGLEFAN;
      primitiveAdjust = -2;
      break;
    default:  // unsupported modes keep the last batch's primitive type
      break;
  }
}

int32_t D3DGraphics::maxPrimitives() const {
  // A mode that kept the last batch's type may count more primitives than
  // the vertices hold; the draw never reads past the batch's array.
  switch (primitiveType) {
    case PT_LINELIST:
      return kMaxVertices / 2;
    case PT_TRIANGLELIST:
      return kMaxVertices / 3;
    case PT_LINESTRIP:
      return kMaxVertices - 1;
    case PT_TRIANGLESTRIP:
    case PT_TRIANGLEFAN:
      return kMaxVertices - 2;
    default:
      return kMaxVertices;
  }
}

void D3DGraphics::end() {
  if (beginMode == 7) {
    // Quads to triangles in place, last quad first so nothing is overwritten
    // before it is read: a b c d -> a b c, a c d. Only the quads whose
    // triangles fit the batch are expanded.
    const int n = vertexCount < kMaxQuadVertices ? vertexCount : kMaxQuadVertices;
    for (int k = n / 4 - 1; k >= 0; --k) {
      const ImmediateVertex a = vertices[4 * k], b = vertices[4 * k + 1], c = vertices[4 * k + 2],
                            d = vertices[4 * k + 3];
      ImmediateVertex* out = &vertices[6 * k];
      out[0] = a, out[1] = b, out[2] = c, out[3] = a, out[4] = c, out[5] = d;
    }
    vertexCount = (n / 2) * 3;
  }
  if (boundTextures[currentStage]) {
    device->setTextureStageState(0, TSS_ALPHAOP, TOP_MODULATE);
    device->setTextureStageState(0, TSS_ALPHAARG1, TA_TEXTURE);
    device->setTextureStageState(0, TSS_ALPHAARG2, TA_CURRENT);
  }
  selectTechnique(7);
  static const float white[4] = {1.0f, 1.0f, 1.0f, 1.0f};
  effect->setFloatArray(unicolorHandle, white, 4);
  effect->begin(nullptr, 0);
  effect->beginPass(0);
  device->setFVF(FVF_XYZ | FVF_DIFFUSE | FVF_TEX1);
  // Before any mglBegin there is no primitive to count.
  const int32_t count =
      verticesPerPrimitive > 0 ? vertexCount / verticesPerPrimitive + primitiveAdjust : 0;
  device->drawPrimitiveUP(primitiveType,
                          static_cast<uint32_t>(std::clamp(count, 0, maxPrimitives())), vertices,
                          sizeof(ImmediateVertex));
  beginMode = 0;
  effect->endPass();
  effect->end();
}

}  // namespace vostan
