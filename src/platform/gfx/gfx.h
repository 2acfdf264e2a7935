#pragma once
// The graphics device as the graphics layer sees it: the operations of a
// Direct3D 9 style device, with its numbers for states, formats and results.
// Backends: OpenGL 3.3 core (real) and a recording double for tests.
#include <cstddef>
#include <cstdint>
#include <string>

namespace vostan::gfx {

using HRESULT = int32_t;

constexpr HRESULT OK = 0;
constexpr HRESULT kFail = static_cast<int32_t>(0x80004005u);
constexpr HRESULT kOutOfMemory = static_cast<int32_t>(0x8007000Eu);
constexpr HRESULT kOutOfVideoMemory = static_cast<int32_t>(0x8876017Cu);
constexpr HRESULT kDriverInternalError = static_cast<int32_t>(0x88760827u);
constexpr HRESULT kDeviceLost = static_cast<int32_t>(0x88760868u);
constexpr HRESULT kDeviceNotReset = static_cast<int32_t>(0x88760869u);
constexpr HRESULT kNotAvailable = static_cast<int32_t>(0x8876086Au);
constexpr HRESULT kInvalidCall = static_cast<int32_t>(0x8876086Cu);

inline bool failed(HRESULT hr) {
  return hr < 0;
}

// Formats
enum Format : int32_t {
  FMT_UNKNOWN = 0,
  FMT_R8G8B8 = 20,
  FMT_A8R8G8B8 = 21,
  FMT_X8R8G8B8 = 22,
  FMT_R5G6B5 = 23,
  FMT_X1R5G5B5 = 24,
  FMT_A1R5G5B5 = 25,
  FMT_A4R4G4B4 = 26,
  FMT_A8 = 28,
  FMT_L8 = 50,
  FMT_A8L8 = 51,
  FMT_D24S8 = 75,
  FMT_INDEX16 = 101,
  FMT_R16F = 111,
};

enum Pool : int32_t { POOL_DEFAULT = 0, POOL_MANAGED = 1, POOL_SYSTEMMEM = 2 };
enum ResourceType : int32_t { RTYPE_SURFACE = 1, RTYPE_TEXTURE = 3 };

constexpr uint32_t USAGE_RENDERTARGET = 1;
constexpr uint32_t USAGE_DEPTHSTENCIL = 2;
constexpr uint32_t USAGE_WRITEONLY = 8;

constexpr uint32_t LOCK_READONLY = 0x10;
constexpr uint32_t LOCK_DISCARD = 0x2000;

constexpr int32_t DEVTYPE_HAL = 1;
constexpr uint32_t CREATE_SOFTWARE_VERTEXPROCESSING = 0x20;
constexpr uint32_t CREATE_HARDWARE_VERTEXPROCESSING = 0x40;
constexpr uint32_t CREATE_MIXED_VERTEXPROCESSING = 0x80;

constexpr uint32_t vsVersion(int major, int minor) {
  return 0xFFFE0000u | (major << 8) | minor;
}
constexpr uint32_t psVersion(int major, int minor) {
  return 0xFFFF0000u | (major << 8) | minor;
}

// Render states (the ones the layer and its backends know)
enum RenderState : uint32_t {
  RS_ZENABLE = 7,
  RS_FILLMODE = 8,
  RS_SHADEMODE = 9,
  RS_ZWRITEENABLE = 14,
  RS_ALPHATESTENABLE = 15,
  RS_SRCBLEND = 19,
  RS_DESTBLEND = 20,
  RS_CULLMODE = 22,
  RS_ZFUNC = 23,
  RS_ALPHAREF = 24,
  RS_ALPHAFUNC = 25,
  RS_ALPHABLENDENABLE = 27,
  RS_STENCILENABLE = 52,
  RS_STENCILFAIL = 53,
  RS_STENCILZFAIL = 54,
  RS_STENCILPASS = 55,
  RS_STENCILFUNC = 56,
  RS_STENCILREF = 57,
  RS_STENCILMASK = 58,
  RS_STENCILWRITEMASK = 59,
  RS_LIGHTING = 137,
  RS_COLORWRITEENABLE = 168,
  RS_BLENDOP = 171,
  RS_SCISSORTESTENABLE = 174,
  RS_SLOPESCALEDEPTHBIAS = 175,
  RS_DEPTHBIAS = 195,
};
constexpr int kRenderStateCount = 256;

enum Cull : uint32_t { CULL_NONE = 1, CULL_CW = 2, CULL_CCW = 3 };
enum Cmp : uint32_t {
  CMP_NEVER = 1,
  CMP_LESS = 2,
  CMP_EQUAL = 3,
  CMP_LESSEQUAL = 4,
  CMP_GREATER = 5,
  CMP_NOTEQUAL = 6,
  CMP_GREATEREQUAL = 7,
  CMP_ALWAYS = 8
};
enum Blend : uint32_t {
  BLEND_ZERO = 1,
  BLEND_ONE = 2,
  BLEND_SRCCOLOR = 3,
  BLEND_INVSRCCOLOR = 4,
  BLEND_SRCALPHA = 5,
  BLEND_INVSRCALPHA = 6,
  BLEND_DESTALPHA = 7,
  BLEND_INVDESTALPHA = 8,
  BLEND_DESTCOLOR = 9,
  BLEND_INVDESTCOLOR = 10,
};
enum StencilOp : uint32_t {
  STENCILOP_KEEP = 1,
  STENCILOP_ZERO = 2,
  STENCILOP_REPLACE = 3,
  STENCILOP_INCRSAT = 4,
  STENCILOP_DECRSAT = 5,
  STENCILOP_INVERT = 6,
  STENCILOP_INCR = 7,
  STENCILOP_DECR = 8
};
enum Fill : uint32_t { FILL_POINT = 1, FILL_WIREFRAME = 2, FILL_SOLID = 3 };
enum Shade : uint32_t { SHADE_FLAT = 1, SHADE_GOURAUD = 2 };

// Sampler states
enum SamplerState : uint32_t {
  SAMP_ADDRESSU = 1,
  SAMP_ADDRESSV = 2,
  SAMP_ADDRESSW = 3,
  SAMP_BORDERCOLOR = 4,
  SAMP_MAGFILTER = 5,
  SAMP_MINFILTER = 6,
  SAMP_MIPFILTER = 7,
};
constexpr int kSamplerStateCount = 14;
constexpr int kSamplerCount = 16;
enum TexFilter : uint32_t { TEXF_NONE = 0, TEXF_POINT = 1, TEXF_LINEAR = 2 };
enum TexAddress : uint32_t { TADDRESS_WRAP = 1, TADDRESS_MIRROR = 2, TADDRESS_CLAMP = 3 };

// Texture stage states
enum StageState : uint32_t {
  TSS_COLOROP = 1,
  TSS_COLORARG1 = 2,
  TSS_COLORARG2 = 3,
  TSS_ALPHAOP = 4,
  TSS_ALPHAARG1 = 5,
  TSS_ALPHAARG2 = 6,
};
constexpr int kStageStateCount = 33;
constexpr int kStageCount = 8;
enum TextureOp : uint32_t {
  TOP_DISABLE = 1,
  TOP_SELECTARG1 = 2,
  TOP_SELECTARG2 = 3,
  TOP_MODULATE = 4,
  TOP_MODULATE2X = 5,
  TOP_MODULATE4X = 6,
  TOP_ADD = 7,
  TOP_ADDSIGNED = 8,
  TOP_SUBTRACT = 10,
};
enum TextureArg : uint32_t {
  TA_DIFFUSE = 0,
  TA_CURRENT = 1,
  TA_TEXTURE = 2,
  TA_TFACTOR = 3,
  TA_COMPLEMENT = 0x10,
  TA_ALPHAREPLICATE = 0x20
};

enum PrimitiveType : int32_t {
  PT_POINTLIST = 1,
  PT_LINELIST = 2,
  PT_LINESTRIP = 3,
  PT_TRIANGLELIST = 4,
  PT_TRIANGLESTRIP = 5,
  PT_TRIANGLEFAN = 6,
};
// Vertices a draw of `count` primitives reads.
int verticesFor(int32_t type, uint32_t count);

constexpr uint32_t CLEAR_TARGET = 1;
constexpr uint32_t CLEAR_ZBUFFER = 2;
constexpr uint32_t CLEAR_STENCIL = 4;

constexpr uint32_t FVF_XYZ = 0x002;
constexpr uint32_t FVF_NORMAL = 0x010;
constexpr uint32_t FVF_DIFFUSE = 0x040;
constexpr uint32_t FVF_TEX1 = 0x100;

// Vertex declarations
enum DeclType : uint8_t {
  DECLTYPE_FLOAT1 = 0,
  DECLTYPE_FLOAT2 = 1,
  DECLTYPE_FLOAT3 = 2,
  DECLTYPE_FLOAT4 = 3,
  DECLTYPE_D3DCOLOR = 4,
  DECLTYPE_UNUSED = 17
};
enum DeclUsage : uint8_t {
  DECLUSAGE_POSITION = 0,
  DECLUSAGE_BLENDWEIGHT = 1,
  DECLUSAGE_BLENDINDICES = 2,
  DECLUSAGE_TEXCOORD = 5,
  DECLUSAGE_COLOR = 10
};
struct VertexElement {
  uint16_t stream;
  uint16_t offset;
  uint8_t type;
  uint8_t method;
  uint8_t usage;
  uint8_t usageIndex;
};
constexpr VertexElement kDeclEnd{0xFF, 0, DECLTYPE_UNUSED, 0, 0, 0};

struct DisplayMode {
  uint32_t width = 0, height = 0, refreshRate = 0;
  int32_t format = FMT_UNKNOWN;
};

struct Caps {
  uint32_t vertexShaderVersion = 0;
  uint32_t pixelShaderVersion = 0;
};

struct PresentParameters {
  uint32_t backBufferWidth = 0, backBufferHeight = 0;
  int32_t backBufferFormat = FMT_UNKNOWN;
  uint32_t backBufferCount = 0;
  int32_t multiSampleType = 0;
  uint32_t multiSampleQuality = 0;
  int32_t swapEffect = 0;
  uint32_t deviceWindow = 0;  // the console's window handle
  bool windowed = false;
  bool enableAutoDepthStencil = false;
  int32_t autoDepthStencilFormat = FMT_UNKNOWN;
  uint32_t flags = 0;
  uint32_t fullScreenRefreshRate = 0;
  uint32_t presentationInterval = 0;
};

struct Viewport {
  uint32_t x = 0, y = 0, width = 0, height = 0;
  float minZ = 0, maxZ = 1;
};

struct Rect {
  int32_t left = 0, top = 0, right = 0, bottom = 0;
};

struct SurfaceDesc {
  int32_t format = FMT_UNKNOWN;
  int32_t type = RTYPE_SURFACE;
  uint32_t usage = 0;
  int32_t pool = POOL_DEFAULT;
  int32_t multiSampleType = 0;
  uint32_t multiSampleQuality = 0;
  uint32_t width = 0, height = 0;
};

inline SurfaceDesc surfaceDesc(int32_t format, uint32_t width, uint32_t height, uint32_t usage = 0,
                               int32_t pool = POOL_DEFAULT, int32_t type = RTYPE_SURFACE) {
  SurfaceDesc d;
  d.format = format;
  d.type = type;
  d.usage = usage;
  d.pool = pool;
  d.width = width;
  d.height = height;
  return d;
}

struct LockedRect {
  int32_t pitch = 0;
  void* bits = nullptr;
};

struct BufferDesc {
  int32_t format = FMT_UNKNOWN;
  uint32_t usage = 0;
  int32_t pool = POOL_DEFAULT;
  uint32_t size = 0;
  uint32_t fvf = 0;
};

// Reference counted as the device's objects are: made with one reference,
// gone at the last release.
class Unknown {
 public:
  void addRef() { ++refs_; }
  uint32_t release() {
    const uint32_t left = --refs_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~Unknown() = default;

 private:
  uint32_t refs_ = 1;
};

// Releases and nulls a pointer that may be null.
template <class T>
void releaseAndNull(T*& p) {
  if (p) p->release();
  p = nullptr;
}

class Surface : public Unknown {
 public:
  virtual HRESULT getDesc(SurfaceDesc& out) = 0;
  virtual HRESULT lockRect(LockedRect& out, const Rect* rect, uint32_t flags) = 0;
  virtual HRESULT unlockRect() = 0;
};

class Texture : public Unknown {
 public:
  virtual HRESULT getLevelDesc(uint32_t level, SurfaceDesc& out) = 0;
  virtual HRESULT getSurfaceLevel(uint32_t level, Surface** out) = 0;
};

class VertexBuffer : public Unknown {
 public:
  virtual HRESULT lock(uint32_t offset, uint32_t size, void** out, uint32_t flags) = 0;
  virtual HRESULT unlock() = 0;
  virtual HRESULT getDesc(BufferDesc& out) = 0;
};

class IndexBuffer : public Unknown {
 public:
  virtual HRESULT lock(uint32_t offset, uint32_t size, void** out, uint32_t flags) = 0;
  virtual HRESULT unlock() = 0;
  virtual HRESULT getDesc(BufferDesc& out) = 0;
};

class StateBlock : public Unknown {
 public:
  virtual HRESULT capture() = 0;
  virtual HRESULT apply() = 0;
};

class VertexDeclaration : public Unknown {};

// Effect handles name a parameter, an element of an array parameter or a
// technique; null names nothing.
using EffectHandle = const void*;

enum ParameterType : int32_t {
  PT_FLOAT = 0,
  PT_VECTOR = 1,
  PT_MATRIX = 2,  // 4 rows by `columns`
  PT_TEXTURE = 3,
  PT_SAMPLER = 4,
};

struct EffectDesc {
  uint32_t parameters = 0;
  uint32_t techniques = 0;
};

struct ParameterDesc {
  const char* name = nullptr;
  int32_t type = PT_FLOAT;
  uint32_t rows = 0, columns = 0;
  uint32_t elements = 0;  // 0 for a single value
};

// The compiled effect: parameters by name and index, techniques of one pass,
// and a pass bracket that binds the technique's programs and values.
class Effect : public Unknown {
 public:
  virtual HRESULT getDesc(EffectDesc& out) = 0;
  virtual EffectHandle getParameter(EffectHandle parent, uint32_t index) = 0;
  virtual HRESULT getParameterDesc(EffectHandle parameter, ParameterDesc& out) = 0;
  virtual EffectHandle getParameterElement(EffectHandle parameter, uint32_t index) = 0;
  virtual EffectHandle getParameterByName(EffectHandle parent, const char* name) = 0;
  virtual EffectHandle getTechniqueByName(const char* name) = 0;
  virtual HRESULT validateTechnique(EffectHandle technique) = 0;
  virtual HRESULT setFloatArray(EffectHandle parameter, const float* values, uint32_t count) = 0;
  virtual HRESULT setVector(EffectHandle parameter, const float values[4]) = 0;
  virtual HRESULT setMatrix(EffectHandle parameter, const float values[16]) = 0;
  virtual HRESULT setTexture(EffectHandle parameter, Texture* texture) = 0;
  virtual HRESULT setTechnique(EffectHandle technique) = 0;
  virtual EffectHandle getCurrentTechnique() = 0;
  virtual const char* nameOf(EffectHandle handle) = 0;  // for logs and tests
  virtual HRESULT begin(uint32_t* passes, uint32_t flags) = 0;
  virtual HRESULT beginPass(uint32_t pass) = 0;
  virtual HRESULT endPass() = 0;
  virtual HRESULT end() = 0;
};

class Device : public Unknown {
 public:
  virtual HRESULT getDeviceCaps(Caps& out) = 0;
  virtual HRESULT testCooperativeLevel() = 0;
  virtual HRESULT reset(PresentParameters& parameters) = 0;
  virtual HRESULT present() = 0;
  virtual HRESULT beginScene() = 0;
  virtual HRESULT endScene() = 0;

  virtual HRESULT getBackBuffer(uint32_t swapChain, uint32_t index, Surface** out) = 0;
  virtual HRESULT getDepthStencilSurface(Surface** out) = 0;
  virtual HRESULT setRenderTarget(uint32_t index, Surface* target) = 0;
  virtual HRESULT setDepthStencilSurface(Surface* surface) = 0;
  virtual HRESULT createDepthStencilSurface(uint32_t width, uint32_t height, int32_t format,
                                            int32_t multiSample, uint32_t quality, bool discard,
                                            Surface** out) = 0;
  virtual HRESULT createOffscreenPlainSurface(uint32_t width, uint32_t height, int32_t format,
                                              int32_t pool, Surface** out) = 0;
  virtual HRESULT getRenderTargetData(Surface* target, Surface* destination) = 0;

  virtual HRESULT createTexture(uint32_t width, uint32_t height, uint32_t levels, uint32_t usage,
                                int32_t format, int32_t pool, Texture** out) = 0;
  virtual HRESULT createVertexBuffer(uint32_t size, uint32_t usage, uint32_t fvf, int32_t pool,
                                     VertexBuffer** out) = 0;
  virtual HRESULT createIndexBuffer(uint32_t size, uint32_t usage, int32_t format, int32_t pool,
                                    IndexBuffer** out) = 0;
  virtual HRESULT createStateBlock(uint32_t type, StateBlock** out) = 0;
  virtual HRESULT createVertexDeclaration(const VertexElement* elements,
                                          VertexDeclaration** out) = 0;
  // Compiles an effect text for this device. On failure `errors` holds the
  // compiler's messages.
  virtual HRESULT createEffect(const char* text, std::size_t length, Effect** out,
                               std::string* errors) = 0;

  virtual HRESULT setRenderState(uint32_t state, uint32_t value) = 0;
  virtual HRESULT getRenderState(uint32_t state, uint32_t* value) = 0;
  virtual HRESULT setSamplerState(uint32_t sampler, uint32_t type, uint32_t value) = 0;
  virtual HRESULT setTextureStageState(uint32_t stage, uint32_t type, uint32_t value) = 0;
  virtual HRESULT setTexture(uint32_t stage, Texture* texture) = 0;
  virtual HRESULT setViewport(const Viewport& viewport) = 0;
  virtual HRESULT getViewport(Viewport& out) = 0;
  virtual HRESULT setScissorRect(const Rect& rect) = 0;
  virtual HRESULT clear(uint32_t count, const Rect* rects, uint32_t flags, uint32_t color, float z,
                        uint32_t stencil) = 0;

  virtual HRESULT setFVF(uint32_t fvf) = 0;
  virtual HRESULT setVertexDeclaration(VertexDeclaration* declaration) = 0;
  virtual HRESULT setStreamSource(uint32_t stream, VertexBuffer* buffer, uint32_t offset,
                                  uint32_t stride) = 0;
  virtual HRESULT setIndices(IndexBuffer* buffer) = 0;
  virtual HRESULT drawPrimitiveUP(int32_t type, uint32_t count, const void* vertices,
                                  uint32_t stride) = 0;
  virtual HRESULT drawPrimitive(int32_t type, uint32_t startVertex, uint32_t count) = 0;
  virtual HRESULT drawIndexedPrimitive(int32_t type, int32_t baseVertex, uint32_t minIndex,
                                       uint32_t vertexCount, uint32_t startIndex,
                                       uint32_t count) = 0;
};

// The process-wide entry, as Direct3DCreate9 gives it.
class Direct3D : public Unknown {
 public:
  virtual HRESULT getAdapterDisplayMode(uint32_t adapter, DisplayMode& out) = 0;
  virtual HRESULT getDeviceCaps(uint32_t adapter, int32_t deviceType, Caps& out) = 0;
  virtual HRESULT checkDeviceType(uint32_t adapter, int32_t deviceType, int32_t displayFormat,
                                  int32_t backBufferFormat, bool windowed) = 0;
  virtual HRESULT checkDeviceFormat(uint32_t adapter, int32_t deviceType, int32_t displayFormat,
                                    uint32_t usage, int32_t resourceType, int32_t format) = 0;
  virtual HRESULT createDevice(uint32_t adapter, int32_t deviceType, uint32_t focusWindow,
                               uint32_t behaviorFlags, PresentParameters& parameters,
                               Device** out) = 0;
};

// The backend in use: OpenGL unless a test installed another. Does not add a
// reference; the system lives to the end of the process.
Direct3D& direct3D();
void setDirect3D(Direct3D* system);  // null: back to the default

}  // namespace vostan::gfx
