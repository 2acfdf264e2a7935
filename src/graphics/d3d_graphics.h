#pragma once
// The graphics state of the process, reached as theConsole.graphics: the
// device and what is made from it, the shadow copy of the render state, the
// immediate-mode batch and the tables of textures.
#include <cstdint>

#include "graphics/gl_array.h"
#include "platform/gfx/gfx.h"

namespace vostan {

// One vertex of an immediate batch, laid out as FVF 0x142 reads it.
struct ImmediateVertex {
  float x = 0, y = 0, z = 0;
  uint32_t color = 0xFFFFFFFFu;  // red in the low byte
  float u = 0, v = 0;
};
static_assert(sizeof(ImmediateVertex) == 24);

// A texture slot; Java keeps the slot's address as its handle.
struct TextureEntry {
  gfx::Texture* texture = nullptr;
  gfx::SurfaceDesc desc;
  int32_t glFormat = 0;
};

// One row of the back-buffer formats offered to Java.
struct PixelFormatRow {
  int32_t format, colorBits, red, green, blue, alpha;
};

class D3DGraphics {
 public:
  static constexpr int kMaxTextures = 10000;
  static constexpr int kMaxVertices = 5000;
  // Quads are expanded in place to six vertices each.
  static constexpr int kMaxQuadVertices = kMaxVertices / 6 * 4;
  static constexpr int kStages = 8;
  static constexpr int kAttribDepth = 10;
  static constexpr int kSkinHandles = 32;

  enum TechniqueIndex {
    TEC1,
    TEC2,
    TECMIX1,
    TECDEPTH1,
    TECSHADOW1,
    TECSHADOW2,
    TEC1W,
    TEC2W,
    TECMIX1W,
    TECDEPTH1W,
    TECSHADOW1W,
    TECSHADOW2W,
    TECDEPTH2,
    TECDEPTH2W,
    TECDEPTH3,
    TECDEPTH3W,
    TECBLUR,
    TECDOF,
    TECBLOOM1,
    TECBLOOM2,
    kTechniqueCount
  };
  static const char* const kTechniqueNames[kTechniqueCount];
  static const PixelFormatRow kPixelFormats[5];

  D3DGraphics();
  virtual ~D3DGraphics();
  D3DGraphics(const D3DGraphics&) = delete;
  D3DGraphics& operator=(const D3DGraphics&) = delete;

  // Device lifecycle. Negative results are failures.
  int32_t createDevice(uint32_t window, int64_t pixelFormat);
  void disposeDevice();
  bool hasDevice() const { return device != nullptr; }
  // Rows of kPixelFormats the display can use, at most 5; E_FAIL without a
  // display mode.
  int32_t pixelFormatRows(PixelFormatRow out[5]);
  int32_t beginScene();
  int32_t endScene();
  int32_t swapBuffers();
  int32_t resetDevice();
  int32_t createEffect();
  const char* getString(int32_t name) const;

  // Render state
  void setEnable(int32_t capability, bool value);
  void setBlend(int32_t mode);
  void alphaFunc(int32_t function, float reference);
  void depthFunc(int32_t function);
  void depthMask(bool value);
  void stencilFunc(int32_t function, int32_t reference, int32_t mask);
  void stencilOp(int32_t fail, int32_t depthFail, int32_t pass);
  void colorMask(bool value);
  void cullFace(int32_t face);
  void fillMode(int32_t mode);
  void shadeModel(int32_t mode);
  void polygonOffset(float bias);
  void scissor(int32_t x, int32_t y, int32_t width, int32_t height);
  void viewPort(int32_t x, int32_t y, int32_t width, int32_t height);
  void setClearColor(float r, float g, float b, float a);
  void clear(int32_t mask);
  void pushAttrib();
  void popAttrib();
  void setMatrix(int32_t which, const float* values);
  void texGen(const float* values);
  void textureStageState(int32_t name, int32_t value);
  int32_t getTextureStageState(int32_t name) const;
  void setLightingColor(float r, float g, float b, float a);
  void setRenderMode(int32_t mode) { renderMode = mode; }
  void depthWrite(int32_t mode) { techniqueMode = mode; }
  void color4ub(uint8_t r, uint8_t g, uint8_t b, uint8_t a);
  void color1ui(uint32_t rgba);
  void color4f(float r, float g, float b, float a);
  void color3f(float r, float g, float b) { color4f(r, g, b, 1.0f); }
  void selectTechnique(int32_t flags);

  // Immediate geometry
  void begin(int32_t mode);
  void end();
  // Most primitives of the current type the batch's array can feed.
  int32_t maxPrimitives() const;
  void texCoord2f(float u, float v) {
    currentVertex.u = u;
    currentVertex.v = v;
  }
  void vertex2f(float x, float y) { vertex3f(x, y, 0.0f); }
  void vertex3f(float x, float y, float z) {
    currentVertex.x = x;
    currentVertex.y = y;
    currentVertex.z = z;
    // Past the batch's capacity the vertex is dropped.
    if (vertexCount < kMaxVertices) vertices[vertexCount++] = currentVertex;
  }
  void t2fV2f(float u, float v, float x, float y) {
    currentVertex.u = u;
    currentVertex.v = v;
    vertex3f(x, y, 0.0f);
  }

  // Native arrays and indexed drawing. A record bound by pointer() stays
  // bound until it is replaced or cleared.
  void pointer(int32_t kind, GLArrayRecord* record);
  // Draws `count` 16-bit indices as a triangle list from the bound arrays;
  // `start` and `end` bound the indices that occur. Draws nothing when an
  // index would reach past a bound array or the dynamic buffer's room.
  struct IndexSource {
    // The indices, held only for the time of their copy; null for none.
    virtual const uint16_t* acquire() = 0;
    virtual void release() = 0;

   protected:
    ~IndexSource() = default;
  };
  void drawIndexed(int32_t start, int32_t end, int32_t count, IndexSource& indices);
  void drawIndexed(int32_t start, int32_t end, int32_t count, const uint16_t* indices);
  void drawIndexedResident(int32_t start, int32_t end, int32_t count, GLArrayRecord* indices);
  // The stream flags of the bound arrays: 1 position, 2 texture
  // coordinates, 4 colours, 8 weights.
  int32_t streamFlags() const;
  static constexpr int32_t kDynamicIndices = 32768;

  // Render to texture and shadows
  void startRenderTexture(TextureEntry* entry, int32_t x, int32_t y, int32_t width, int32_t height);
  void finishRenderTexture();
  void setupShadow(TextureEntry* depthMap, const float* matrix, uint32_t rgba);
  void finishShadow();
  // The entry of a texture handle this object handed out; null for 0 and
  // for anything else.
  TextureEntry* liveTextureEntry(int32_t handle) const;

  // The height the viewport and scissor flip against: the console's client
  // area, or the texture being drawn into.
  int32_t targetHeight() const;

  // Where the console's client height comes from; set by the library's
  // natives, by tests directly.
  static int32_t (*clientHeightSource)();
  // Waits for something to happen to the window while the device is lost.
  static void (*waitForWindow)();

  // ---- data
  gfx::Device* device = nullptr;
  gfx::PresentParameters presentParameters;
  gfx::Caps caps;
  gfx::Surface* depthSurface = nullptr;
  gfx::Surface* backBuffer = nullptr;
  gfx::Surface* renderTargetDepth = nullptr;
  gfx::Effect* effect = nullptr;
  gfx::EffectHandle matHandle = nullptr, mvmatHandle = nullptr, texgenmatHandle = nullptr,
                    unicolorHandle = nullptr, shadowcolorHandle = nullptr,
                    texshadowHandle = nullptr;
  gfx::EffectHandle skinmatHandles[kSkinHandles] = {};
  gfx::EffectHandle techniques[kTechniqueCount] = {};
  bool inScene = false;

  int32_t textureCount = 0;
  TextureEntry* textures;  // kMaxTextures entries in low memory
  int32_t freeTextureCount = 0;
  TextureEntry** freeTextures;
  int32_t currentStage = 0;
  TextureEntry* boundTextures[kStages] = {};
  int32_t renderTextureHeight = 0;  // 0: drawing to the back buffer
  // Level 0 of the render texture drawn into, with a reference; null for
  // the back buffer.
  gfx::Surface* renderTargetSurface = nullptr;
  int32_t renderTargetWidth = 0;

  ImmediateVertex currentVertex;
  int32_t beginMode = 0;
  int32_t primitiveType = 0;
  int32_t verticesPerPrimitive = 0, primitiveAdjust = 0;
  int32_t vertexCount = 0;
  ImmediateVertex vertices[kMaxVertices];

  GLArrayRecord *vertexArray = nullptr, *texCoordArray = nullptr, *colorArray = nullptr,
                *weightArray = nullptr;
  GLArrayTable arrays;

  gfx::VertexDeclaration* vertexDeclarations[16] = {};
  gfx::IndexBuffer* dynamicIndexBuffer = nullptr;

  uint32_t clearColor = 0;
  bool blendEnable = false;
  uint32_t srcBlend = 0, destBlend = 0;
  bool alphaTestEnable = false;
  uint32_t alphaFunction = 0, alphaRef = 0;
  bool depthTestEnable = false;
  uint32_t depthFunction = 0;
  bool depthWriteEnable = false;
  bool cullEnable = false;
  uint32_t cullMode = gfx::CULL_CW;
  bool stencilEnable = false;
  uint32_t stencilFail = gfx::STENCILOP_KEEP, stencilZFail = gfx::STENCILOP_KEEP,
           stencilPass = gfx::STENCILOP_KEEP;
  uint32_t stencilFunction = 0, stencilRef = 0, stencilMask = 0;
  uint32_t colorWrite = 0;
  uint32_t fillModeValue = 0;
  uint32_t shadeMode = gfx::SHADE_GOURAUD;
  float depthBias = 0;

  gfx::StateBlock* stateBlocks[kAttribDepth] = {};
  int32_t attribDepth = 0;
  int32_t renderMode = 0;
  int32_t techniqueMode = 0;
  float lightingColor[4] = {1.0f, 1.0f, 1.0f, 1.0f};

 private:
  // Vertices every bound array has room for.
  uint32_t boundVertexCapacity() const;
  // Technique, streams, colour and declaration of an indexed draw.
  void bindArrays();
  void drawBoundTriangles(int32_t start, int32_t end, int32_t count);
  void releaseDeviceObjects();
  void fetchSurfaces();
  void createStateBlocks();
};

// Maps of the OpenGL enumerants the natives take.
uint32_t mapCompare(int32_t function);
uint32_t mapStencilOp(int32_t op);

}  // namespace vostan
