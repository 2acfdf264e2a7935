package mirelo.gfx;

/**
 * The drawing layer: an OpenGL-flavoured set of calls on the one graphics device of the process,
 * made by {@code WinConsole.n_createGraphics}. Draw between {@code WinConsole.n_makeCurrent} and
 * {@code WinConsole.n_free}, on the thread that made the window. Enumerant arguments take OpenGL's
 * values ({@link GL}); each setter goes to the device at once, unfiltered, so avoid redundant
 * calls. There is no matrix stack: Java does all matrix arithmetic ({@link MatrixSlot}).
 */
public final class GLGraphics {
  private GLGraphics() {}

  // Device
  /**
   * Describes the device.
   *
   * @param name {@code 0x1F02} (version) or {@code 0x1F03} (extensions)
   * @return "D3D9" for the version; for the extensions "GL_EXT_shadow GL_ARB_depth_texture
   *     GL_ARB_shader_objects" when the shadow and depth techniques can run, else "NASI!"; for
   *     other names "GL-String not available !"
   */
  public static native String n_mglGetString(int name);

  // Render state and matrices
  /**
   * Switches a capability, written through to the device at once.
   *
   * @param capability {@link GL#GL_BLEND}, {@link GL#GL_DEPTH_TEST}, {@link GL#GL_STENCIL_TEST},
   *     {@link GL#GL_ALPHA_TEST} or {@link GL#GL_CULL_FACE}; no other value
   * @param value on or off
   */
  public static native void n_mglSetEnable(int capability, boolean value);

  /**
   * Chooses the blend factors by preset; blending itself is {@code GL_BLEND}.
   *
   * @param mode one of {@link Blend}; another value keeps the factors
   */
  public static native void n_mglSetBlend(int mode);

  /**
   * Sets the alpha test.
   *
   * @param function a comparison function of {@link GL}
   * @param reference 0 to 1, compared as a byte (reference * 255, truncated)
   */
  public static native void n_mglAlphaFunc(int function, float reference);

  /**
   * Sets the depth comparison.
   *
   * @param function a comparison function of {@link GL}; {@code GL_EQUAL} compares as always
   */
  public static native void n_mglDepthFunc(int function);

  /**
   * Switches depth writes.
   *
   * @param value whether draws write depth
   */
  public static native void n_mglDepthMask(boolean value);

  /**
   * Sets the stencil test.
   *
   * @param function a comparison function of {@link GL}
   * @param reference the reference value
   * @param mask the mask applied to both sides
   */
  public static native void n_mglStencilFunc(int function, int reference, int mask);

  /**
   * Sets the stencil operations.
   *
   * @param fail when the stencil test fails: a stencil operation of {@link GL}
   * @param depthFail when the stencil test passes and the depth test fails
   * @param pass when both pass
   */
  public static native void n_mglStencilOp(int fail, int depthFail, int pass);

  /**
   * Switches colour writes, all four channels together.
   *
   * @param value whether draws write colour
   */
  public static native void n_mglColorMask(boolean value);

  /**
   * Chooses the face that culling removes; takes effect while {@code GL_CULL_FACE} is on.
   *
   * @param face {@link GL#GL_FRONT}; any other value culls back faces
   */
  public static native void n_mglCullFace(int face);

  /**
   * Chooses wireframe or solid drawing.
   *
   * @param mode {@link GL#GL_LINE} for wireframe; any other value fills
   */
  public static native void n_mglFillMode(int mode);

  /**
   * Chooses flat or smooth shading.
   *
   * @param mode {@link GL#GL_FLAT}; any other value shades smoothly
   */
  public static native void n_mglShadeModel(int mode);

  /**
   * Sets the depth bias, with a small slope bias of the same sign.
   *
   * @param bias added to depth; 0 for none
   */
  public static native void n_mglPolygonOffset(float bias);

  /**
   * Sets the scissor rectangle, with OpenGL's bottom-left origin.
   *
   * @param x left edge
   * @param y bottom edge, from the bottom of the target
   * @param width width; 0 switches the scissor test off
   * @param height height; 0 switches the scissor test off
   */
  public static native void n_mglScissor(int x, int y, int width, int height);

  /**
   * Sets the viewport, with OpenGL's bottom-left origin, on the client area or, between {@link
   * #n_mglStartRenderTexture} and {@link #n_mglFinishRenderTexture}, on the render texture.
   *
   * @param x left edge
   * @param y bottom edge, from the bottom of the target
   * @param width width
   * @param height height
   */
  public static native void n_mglViewPort(int x, int y, int width, int height);

  /**
   * Sets the colour that {@link #n_mglClear} fills with.
   *
   * @param r red, 0 to 1
   * @param g green, 0 to 1
   * @param b blue, 0 to 1
   * @param a alpha, 0 to 1
   */
  public static native void n_mglClearColor(float r, float g, float b, float a);

  /**
   * Clears the whole target, whatever the scissor; depth to 1 and stencil to 0.
   *
   * @param mask {@code GL_COLOR_BUFFER_BIT}, {@code GL_DEPTH_BUFFER_BIT}, {@code
   *     GL_STENCIL_BUFFER_BIT}, or together
   */
  public static native void n_mglClear(int mask);

  /**
   * Clears the whole target as {@link #n_mglClear(int)} does: the rectangle is not used.
   *
   * @param mask the buffers to clear, bits of {@link GL}
   * @param x ignored
   * @param y ignored
   * @param width ignored
   * @param height ignored
   */
  public static native void n_mglClear(int mask, int x, int y, int width, int height);

  /**
   * Saves the whole device state (render states, textures, viewport) on a stack of 10.
   * Pushes past the tenth save nothing but still count; do not pop through them.
   *
   * @param mask ignored: everything is saved
   */
  public static native void n_mglPushAttrib(int mask);

  /**
   * Restores the device state of the last {@link #n_mglPushAttrib}; nothing on an empty stack.
   * Culling set after a pop starts from the values last set, not from the restored ones.
   */
  public static native void n_mglPopAttrib();

  /**
   * Sets a matrix of the effect. Java does all matrix arithmetic: pass the finished product,
   * row-vector order.
   *
   * @param which one of {@link MatrixSlot}; other values do nothing
   * @param matrix 16 floats
   */
  public static native void n_mglSetMatrix(int which, float[] matrix);

  /**
   * Sets the matrix from eye space to generated texture coordinates, used in the render mode
   * {@link Technique#RENDER_TEXGEN}.
   *
   * @param coord ignored
   * @param matrix 16 floats, row-vector order
   */
  public static native void n_mglTexGen(int coord, float[] matrix);

  /**
   * Sets the filter of texture stage 0; there is no wrap mode.
   *
   * @param name {@link GL#GL_TEXTURE_MAG_FILTER} or {@link GL#GL_TEXTURE_MIN_FILTER}; others do
   *     nothing
   * @param value {@link GL#GL_NEAREST}, or anything else for linear filtering
   */
  public static native void n_mglTextureStageState(int name, int value);

  /**
   * Describes the texture bound to the current stage.
   *
   * @param name {@link GL#GL_TEXTURE_WIDTH}, {@link GL#GL_TEXTURE_HEIGHT} or {@link
   *     GL#GL_TEXTURE_INTERNAL_FORMAT}
   * @return the value, or 0 with no texture bound or for another name
   */
  public static native int n_mglGetTextureStageState(int name);

  /**
   * Sets the colour of indexed geometry that has no colour array; used from the next indexed draw.
   *
   * @param r red, 0 to 1
   * @param g green, 0 to 1
   * @param b blue, 0 to 1
   * @param a alpha, 0 to 1
   */
  public static native void n_mglLightingColor(float r, float g, float b, float a);

  /**
   * Sets the render mode, which with the technique mode picks each draw's technique.
   *
   * @param mode {@link Technique#RENDER_PLAIN}, {@link Technique#RENDER_PLAIN_ALT} or {@link
   *     Technique#RENDER_TEXGEN}
   */
  public static native void n_mglRenderMode(int mode);

  /**
   * Sets the technique mode; in spite of the name it writes no depth state.
   *
   * @param mode one of the modes of {@link Technique}
   */
  public static native void n_mglDepthWrite(int mode);

  /**
   * Sets the colour of the next vertices, and of indexed draws without a colour array.
   *
   * @param r red byte
   * @param g green byte
   * @param b blue byte
   * @param a alpha byte
   */
  public static native void n_mglColor4ub(byte r, byte g, byte b, byte a);

  /**
   * Sets the colour of the next vertices from one word.
   *
   * @param rgba {@code 0xRRGGBBAA}
   */
  public static native void n_mglColor1ui(int rgba);

  /**
   * Sets the colour of the next vertices.
   *
   * @param r red, 0 to 1
   * @param g green, 0 to 1
   * @param b blue, 0 to 1
   * @param a alpha, 0 to 1
   */
  public static native void n_mglColor4f(float r, float g, float b, float a);

  /**
   * Sets the colour of the next vertices, opaque.
   *
   * @param r red, 0 to 1
   * @param g green, 0 to 1
   * @param b blue, 0 to 1
   */
  public static native void n_mglColor3f(float r, float g, float b);

  /**
   * Does nothing: points are one pixel.
   *
   * @param size ignored
   */
  public static native void n_mglPointSize(float size);

  /**
   * Does nothing: lines are one pixel wide.
   *
   * @param width ignored
   */
  public static native void n_mglLineWidth(float width);

  /**
   * Does nothing: {@link #n_mglReadPixels} reads the back buffer.
   *
   * @param mode ignored
   */
  public static native void n_mglReadBuffer(int mode);

  /**
   * Does nothing: every call goes to the device at once.
   */
  public static native void n_mglFlush();

  /**
   * Does nothing: there is one texture stage.
   *
   * @param stage ignored
   */
  public static native void n_mglTextureStage(int stage);

  /**
   * Does nothing: pixel rows are always tightly packed.
   *
   * @param a ignored
   * @param b ignored
   * @param c ignored
   * @param d ignored
   */
  public static native void n_mglUnpackMode(int a, int b, int c, int d);

  // Immediate geometry
  /**
   * Starts a batch of immediate vertices, drawn by {@link #n_mglEnd}; up to 5000 vertices.
   *
   * @param mode a primitive of {@link GL}, such as {@link GL#GL_QUADS}
   */
  public static native void n_mglBegin(int mode);

  /**
   * Draws the batch since {@link #n_mglBegin} with the technique the state chooses.
   */
  public static native void n_mglEnd();

  /**
   * Sets the texture coordinates of the next vertices.
   *
   * @param u horizontal, 0 to 1 across the texture
   * @param v vertical, 0 at the top row
   */
  public static native void n_mglTexCoord2f(float u, float v);

  /**
   * Adds a vertex at depth 0 with the current colour and texture coordinates.
   *
   * @param x position
   * @param y position
   */
  public static native void n_mglVertex2f(float x, float y);

  /**
   * Adds a vertex with the current colour and texture coordinates.
   *
   * @param x position
   * @param y position
   * @param z position
   */
  public static native void n_mglVertex3f(float x, float y, float z);

  /**
   * Sets the texture coordinates and adds a vertex at depth 0, in one call.
   *
   * @param u horizontal texture coordinate
   * @param v vertical texture coordinate
   * @param x position
   * @param y position
   */
  public static native void n_mglT2fV2f(float u, float v, float x, float y);

  // Native arrays and indexed drawing
  /**
   * Chooses the array a stream of the indexed draws reads.
   *
   * @param kind {@link GL#GL_VERTEX_ARRAY}, {@link GL#GL_COLOR_ARRAY}, {@link
   *     GL#GL_TEXTURE_COORD_ARRAY} or {@link GL#GL_EDGE_FLAG_ARRAY} (skin weights); others are
   *     ignored
   * @param array a {@link GLArray} handle, or 0 for none
   */
  public static native void n_mglPointer(int kind, long array);

  /**
   * Draws a triangle list of 16-bit indices from a Java array into the arrays chosen with {@link
   * #n_mglPointer}.
   *
   * @param mode ignored: always triangles
   * @param start the lowest index used
   * @param end the highest index used
   * @param count how many indices to draw
   * @param type ignored: always {@code GL_UNSIGNED_SHORT}
   * @param indices the indices
   */
  public static native void n_mglDrawIndexed(
      int mode, int start, int end, int count, int type, short[] indices);

  /**
   * Draws a triangle list whose indices stay in an index {@link GLArray}.
   *
   * @param mode ignored: always triangles
   * @param start the lowest index used
   * @param end the highest index used
   * @param count how many indices to draw
   * @param type ignored: always {@code GL_UNSIGNED_SHORT}
   * @param indices the handle of a {@link GL#GL_INDEX_ARRAY} array
   */
  public static native void n_mglDrawIndexedR(
      int mode, int start, int end, int count, int type, long indices);

  // Textures
  /**
   * Takes a texture slot, empty until {@link #n_mglTexImage2D}.
   *
   * @return the texture's handle
   */
  public static native int n_mglCreateTexture();

  /**
   * Frees a texture and gives its slot back; a second delete is harmless.
   *
   * @param texture the handle; 0 is ignored
   */
  public static native void n_mglDeleteTexture(int texture);

  /**
   * Binds a texture for drawing and for uploads.
   *
   * @param texture the handle, or 0 to draw untextured
   */
  public static native void n_mglBindTexture(int texture);

  /**
   * Gives a texture its size and format and, unless it is a render texture, its pixels; the
   * texture is bound afterwards. Rows run top to bottom.
   *
   * @param texture the handle
   * @param target ignored
   * @param level ignored: one level
   * @param internalFormat an internal format of {@link GL}, such as {@link GL#GL_RGBA}
   * @param width texels across
   * @param height texels down
   * @param flags 1 makes a render texture for {@link #n_mglStartRenderTexture}, else 0
   * @param format the pixels' format, such as {@link GL#GL_RGBA}
   * @param type the pixels' type, such as {@link GL#GL_UNSIGNED_BYTE}
   * @param pixels a primitive array of width * height pixels, or null for transparent black
   */
  public static native void n_mglTexImage2D(int texture, int target, int level,
      int internalFormat, int width, int height, int flags, int format, int type, Object pixels);

  /**
   * Replaces a rectangle of the bound texture's pixels. Rows run top to bottom.
   *
   * @param target ignored
   * @param level ignored
   * @param x left texel
   * @param y top texel
   * @param width texels across
   * @param height texels down
   * @param format the pixels' format, such as {@link GL#GL_RGBA}
   * @param type the pixels' type, such as {@link GL#GL_UNSIGNED_BYTE}
   * @param pixels a primitive array of width * height pixels
   */
  public static native void n_mglTexSubImage2D(int target, int level, int x, int y, int width,
      int height, int format, int type, Object pixels);

  /**
   * Reads a rectangle of the back buffer, with OpenGL's bottom-left origin; the rows come bottom
   * up, the bottom row first, as OpenGL gives them.
   *
   * @param x left edge
   * @param y bottom edge, from the bottom of the client area
   * @param width pixels across
   * @param height pixels down
   * @param format the format to write, such as {@link GL#GL_RGBA}
   * @param type the type to write, such as {@link GL#GL_UNSIGNED_BYTE}
   * @param pixels a primitive array with room for width * height pixels; null is ignored
   */
  public static native void n_mglReadPixels(
      int x, int y, int width, int height, int format, int type, Object pixels);

  // Render to texture and shadows
  /**
   * Draws into a render texture instead of the back buffer, until {@link
   * #n_mglFinishRenderTexture}.
   *
   * @param texture a texture made with flags 1; 0 does nothing
   * @param x left edge of the viewport on the texture
   * @param y top edge of the viewport: not flipped, unlike {@link #n_mglViewPort}
   * @param width width of the viewport
   * @param height height of the viewport
   * @param unused ignored
   */
  public static native void n_mglStartRenderTexture(
      int texture, int x, int y, int width, int height, int unused);

  /**
   * Draws into the back buffer again; nothing without a render texture.
   */
  public static native void n_mglFinishRenderTexture();

  /**
   * Switches to shadowed drawing: the {@link Technique#SHADOWED} mode, with a depth texture drawn
   * from the light.
   *
   * @param depthTexture the light's depth texture
   * @param matrix eye space to the light's texture space, 16 floats
   * @param color the shadow's colour, {@code 0xRRGGBBAA}
   */
  public static native void n_mglSetupShadow(int depthTexture, float[] matrix, int color);

  /**
   * Ends shadowed drawing.
   *
   * @param unused ignored
   */
  public static native void n_mglFinishShadow(int unused);
}
