package mirelo.gfx;

/**
 * The OpenGL enumerants that {@link GLGraphics} and {@link GLArray} take, with OpenGL's names and
 * values. The layer maps each to its device's own; where a native's table has no row for a value,
 * the default noted here applies.
 */
public final class GL {
  private GL() {}

  // Capabilities of n_mglSetEnable; no other capability may be passed.

  /** Blending, with the preset of {@link GLGraphics#n_mglSetBlend}. */
  public static final int GL_BLEND = 0x0BE2;

  /** Capability {@code GL_DEPTH_TEST}. */
  public static final int GL_DEPTH_TEST = 0x0B71;

  /** Capability {@code GL_STENCIL_TEST}. */
  public static final int GL_STENCIL_TEST = 0x0B90;

  /** Capability {@code GL_ALPHA_TEST}. */
  public static final int GL_ALPHA_TEST = 0x0BC0;

  /** Face culling, of the face chosen by {@link GLGraphics#n_mglCullFace}. */
  public static final int GL_CULL_FACE = 0x0B44;

  // Comparison functions of n_mglAlphaFunc, n_mglDepthFunc and n_mglStencilFunc.

  /** Comparison function {@code GL_NEVER}. */
  public static final int GL_NEVER = 0x0200;

  /** Comparison function {@code GL_LESS}. */
  public static final int GL_LESS = 0x0201;

  /** Equal is not supported: it compares as {@link #GL_ALWAYS}. */
  public static final int GL_EQUAL = 0x0202;

  /** Comparison function {@code GL_LEQUAL}. */
  public static final int GL_LEQUAL = 0x0203;

  /** Comparison function {@code GL_GREATER}. */
  public static final int GL_GREATER = 0x0204;

  /** Comparison function {@code GL_NOTEQUAL}. */
  public static final int GL_NOTEQUAL = 0x0205;

  /** Comparison function {@code GL_GEQUAL}. */
  public static final int GL_GEQUAL = 0x0206;

  /** Always; so does every value not named here. */
  public static final int GL_ALWAYS = 0x0207;

  // Stencil operations of n_mglStencilOp; increment and decrement wrap.

  /** Stencil operation {@code GL_ZERO}. */
  public static final int GL_ZERO = 0;

  /** Keep; so does every value not named here. */
  public static final int GL_KEEP = 0x1E00;

  /** Stencil operation {@code GL_REPLACE}. */
  public static final int GL_REPLACE = 0x1E01;

  /** Stencil operation {@code GL_INCR}. */
  public static final int GL_INCR = 0x1E02;

  /** Stencil operation {@code GL_DECR}. */
  public static final int GL_DECR = 0x1E03;

  // Faces, fill and shade modes of n_mglCullFace, n_mglFillMode, n_mglShadeModel.

  /** Cull front faces. */
  public static final int GL_FRONT = 0x0404;

  /** Cull back faces; so does every value but {@link #GL_FRONT}. */
  public static final int GL_BACK = 0x0405;

  /** Wireframe. */
  public static final int GL_LINE = 0x1B01;

  /** Solid; so does every value but {@link #GL_LINE}. */
  public static final int GL_FILL = 0x1B02;

  /** Flat shading. */
  public static final int GL_FLAT = 0x1D00;

  /** Gouraud shading; so does every value but {@link #GL_FLAT}. */
  public static final int GL_SMOOTH = 0x1D01;

  // Bits of the mask of n_mglClear. The depth clears to 1 and the stencil to 0; the whole target is cleared.

  /** Clear mask bit {@code GL_DEPTH_BUFFER_BIT}. */
  public static final int GL_DEPTH_BUFFER_BIT = 0x0100;

  /** Clear mask bit {@code GL_STENCIL_BUFFER_BIT}. */
  public static final int GL_STENCIL_BUFFER_BIT = 0x0400;

  /** Clear mask bit {@code GL_COLOR_BUFFER_BIT}. */
  public static final int GL_COLOR_BUFFER_BIT = 0x4000;

  // Primitives of n_mglBegin; the indexed draws always draw triangle lists.

  /** Primitive {@code GL_POINTS}. */
  public static final int GL_POINTS = 0;

  /** Primitive {@code GL_LINES}. */
  public static final int GL_LINES = 1;

  /** Primitive {@code GL_TRIANGLES}. */
  public static final int GL_TRIANGLES = 4;

  /** Primitive {@code GL_TRIANGLE_STRIP}. */
  public static final int GL_TRIANGLE_STRIP = 5;

  /** Primitive {@code GL_TRIANGLE_FAN}. */
  public static final int GL_TRIANGLE_FAN = 6;

  /** Quads: four vertices each, drawn as two triangles. */
  public static final int GL_QUADS = 7;

  /** Primitive {@code GL_QUAD_STRIP}. */
  public static final int GL_QUAD_STRIP = 8;

  // Kinds of GLArray and of n_mglPointer.

  /** Positions, three floats a vertex. */
  public static final int GL_VERTEX_ARRAY = 0x8074;

  /** Normals: kept, but no draw uses them. */
  public static final int GL_NORMAL_ARRAY = 0x8075;

  /** Colours, four bytes a vertex, red first. */
  public static final int GL_COLOR_ARRAY = 0x8076;

  /** 16-bit triangle indices, for {@code n_mglDrawIndexedR}. */
  public static final int GL_INDEX_ARRAY = 0x8077;

  /** Texture coordinates, two floats a vertex. */
  public static final int GL_TEXTURE_COORD_ARRAY = 0x8078;

  /** Skin weights, four floats a vertex: each holds a bone index in its integer part and that bone's weight in its fraction (3.25 is weight 0.25 of bone 3). */
  public static final int GL_EDGE_FLAG_ARRAY = 0x8079;

  // Component types of pixel arrays, and the index type of the indexed draws.

  /** Component type {@code GL_BYTE}. */
  public static final int GL_BYTE = 0x1400;

  /** Component type {@code GL_UNSIGNED_BYTE}. */
  public static final int GL_UNSIGNED_BYTE = 0x1401;

  /** Component type {@code GL_SHORT}. */
  public static final int GL_SHORT = 0x1402;

  /** Component type {@code GL_UNSIGNED_SHORT}. */
  public static final int GL_UNSIGNED_SHORT = 0x1403;

  /** Component type {@code GL_INT}. */
  public static final int GL_INT = 0x1404;

  /** Component type {@code GL_UNSIGNED_INT}. */
  public static final int GL_UNSIGNED_INT = 0x1405;

  // Packed pixel types.

  /** Packed pixel type {@code GL_UNSIGNED_BYTE_3_3_2}. */
  public static final int GL_UNSIGNED_BYTE_3_3_2 = 0x8032;

  /** Packed pixel type {@code GL_UNSIGNED_SHORT_4_4_4_4}. */
  public static final int GL_UNSIGNED_SHORT_4_4_4_4 = 0x8033;

  /** Packed pixel type {@code GL_UNSIGNED_SHORT_5_5_5_1}. */
  public static final int GL_UNSIGNED_SHORT_5_5_5_1 = 0x8034;

  /** Packed pixel type {@code GL_UNSIGNED_INT_8_8_8_8}. */
  public static final int GL_UNSIGNED_INT_8_8_8_8 = 0x8035;

  /** Packed pixel type {@code GL_UNSIGNED_INT_10_10_10_2}. */
  public static final int GL_UNSIGNED_INT_10_10_10_2 = 0x8036;

  /** Packed pixel type {@code GL_UNSIGNED_BYTE_2_3_3_REV}. */
  public static final int GL_UNSIGNED_BYTE_2_3_3_REV = 0x8362;

  /** Packed pixel type {@code GL_UNSIGNED_SHORT_5_6_5}. */
  public static final int GL_UNSIGNED_SHORT_5_6_5 = 0x8363;

  /** Packed pixel type {@code GL_UNSIGNED_SHORT_5_6_5_REV}. */
  public static final int GL_UNSIGNED_SHORT_5_6_5_REV = 0x8364;

  /** Packed pixel type {@code GL_UNSIGNED_SHORT_4_4_4_4_REV}. */
  public static final int GL_UNSIGNED_SHORT_4_4_4_4_REV = 0x8365;

  /** Packed pixel type {@code GL_UNSIGNED_SHORT_1_5_5_5_REV}. */
  public static final int GL_UNSIGNED_SHORT_1_5_5_5_REV = 0x8366;

  /** Packed pixel type {@code GL_UNSIGNED_INT_8_8_8_8_REV}. */
  public static final int GL_UNSIGNED_INT_8_8_8_8_REV = 0x8367;

  /** Packed pixel type {@code GL_UNSIGNED_INT_2_10_10_10_REV}. */
  public static final int GL_UNSIGNED_INT_2_10_10_10_REV = 0x8368;

  // Pixel formats of the texture uploads and of n_mglReadPixels, and internal formats of n_mglTexImage2D.

  /** Pixel format {@code GL_COLOR_INDEX}. */
  public static final int GL_COLOR_INDEX = 0x1900;

  /** Pixel format {@code GL_STENCIL_INDEX}. */
  public static final int GL_STENCIL_INDEX = 0x1901;

  /** Depth; as an internal format with the render-texture flag, a depth texture for shadows. */
  public static final int GL_DEPTH_COMPONENT = 0x1902;

  /** Pixel format {@code GL_RED}. */
  public static final int GL_RED = 0x1903;

  /** Pixel format {@code GL_GREEN}. */
  public static final int GL_GREEN = 0x1904;

  /** Pixel format {@code GL_BLUE}. */
  public static final int GL_BLUE = 0x1905;

  /** Pixel format {@code GL_ALPHA}. */
  public static final int GL_ALPHA = 0x1906;

  /** Pixel format {@code GL_RGB}. */
  public static final int GL_RGB = 0x1907;

  /** Pixel format {@code GL_RGBA}. */
  public static final int GL_RGBA = 0x1908;

  /** Pixel format {@code GL_LUMINANCE}. */
  public static final int GL_LUMINANCE = 0x1909;

  /** Pixel format {@code GL_LUMINANCE_ALPHA}. */
  public static final int GL_LUMINANCE_ALPHA = 0x190A;

  /** Pixel format {@code GL_ABGR_EXT}. */
  public static final int GL_ABGR_EXT = 0x8000;

  /** Pixel format {@code GL_BGRA}. */
  public static final int GL_BGRA = 0x80E1;

  /** Pixel format {@code GL_RGB5}. */
  public static final int GL_RGB5 = 0x8050;

  /** Pixel format {@code GL_RGB8}. */
  public static final int GL_RGB8 = 0x8051;

  /** Pixel format {@code GL_RGBA4}. */
  public static final int GL_RGBA4 = 0x8056;

  /** Pixel format {@code GL_RGB5_A1}. */
  public static final int GL_RGB5_A1 = 0x8057;

  /** Pixel format {@code GL_RGBA8}. */
  public static final int GL_RGBA8 = 0x8058;

  /** The texture target games pass to {@code n_mglTexImage2D}; the target is not looked at. */
  public static final int GL_TEXTURE_2D = 0x0DE1;

  // Names of n_mglTextureStageState and n_mglGetTextureStageState, and filter values.

  /** Width of the bound texture, for {@code n_mglGetTextureStageState}. */
  public static final int GL_TEXTURE_WIDTH = 0x1000;

  /** Height of the bound texture, for {@code n_mglGetTextureStageState}. */
  public static final int GL_TEXTURE_HEIGHT = 0x1001;

  /** Internal format of the bound texture, for {@code n_mglGetTextureStageState}. */
  public static final int GL_TEXTURE_INTERNAL_FORMAT = 0x1003;

  /** Point sampling. */
  public static final int GL_NEAREST = 0x2600;

  /** Linear filtering; so does every value but {@link #GL_NEAREST}. */
  public static final int GL_LINEAR = 0x2601;

  /** Texture state {@code GL_TEXTURE_MAG_FILTER}. */
  public static final int GL_TEXTURE_MAG_FILTER = 0x2800;

  /** Texture state {@code GL_TEXTURE_MIN_FILTER}. */
  public static final int GL_TEXTURE_MIN_FILTER = 0x2801;
}
