package mirelo.gfx;

/**
 * The drawing layer: an OpenGL-flavoured set of calls on the one graphics device of the process.
 * Enumerant arguments take OpenGL's values.
 */
public final class GLGraphics {
  private GLGraphics() {}

  // Device
  public static native String n_mglGetString(int name);

  // Render state and matrices
  public static native void n_mglSetEnable(int capability, boolean value);
  public static native void n_mglSetBlend(int mode);
  public static native void n_mglAlphaFunc(int function, float reference);
  public static native void n_mglDepthFunc(int function);
  public static native void n_mglDepthMask(boolean value);
  public static native void n_mglStencilFunc(int function, int reference, int mask);
  public static native void n_mglStencilOp(int fail, int depthFail, int pass);
  public static native void n_mglColorMask(boolean value);
  public static native void n_mglCullFace(int face);
  public static native void n_mglFillMode(int mode);
  public static native void n_mglShadeModel(int mode);
  public static native void n_mglPolygonOffset(float bias);
  public static native void n_mglScissor(int x, int y, int width, int height);
  public static native void n_mglViewPort(int x, int y, int width, int height);
  public static native void n_mglClearColor(float r, float g, float b, float a);
  public static native void n_mglClear(int mask);
  public static native void n_mglClear(int mask, int x, int y, int width, int height);
  public static native void n_mglPushAttrib(int mask);
  public static native void n_mglPopAttrib();
  public static native void n_mglSetMatrix(int which, float[] matrix);
  public static native void n_mglTexGen(int coord, float[] matrix);
  public static native void n_mglTextureStageState(int name, int value);
  public static native int n_mglGetTextureStageState(int name);
  public static native void n_mglLightingColor(float r, float g, float b, float a);
  public static native void n_mglRenderMode(int mode);
  public static native void n_mglDepthWrite(int mode);
  public static native void n_mglColor4ub(byte r, byte g, byte b, byte a);
  public static native void n_mglColor1ui(int rgba);
  public static native void n_mglColor4f(float r, float g, float b, float a);
  public static native void n_mglColor3f(float r, float g, float b);
  public static native void n_mglPointSize(float size);
  public static native void n_mglLineWidth(float width);
  public static native void n_mglReadBuffer(int mode);
  public static native void n_mglFlush();
  public static native void n_mglTextureStage(int stage);
  public static native void n_mglUnpackMode(int a, int b, int c, int d);

  // Immediate geometry
  public static native void n_mglBegin(int mode);
  public static native void n_mglEnd();
  public static native void n_mglTexCoord2f(float u, float v);
  public static native void n_mglVertex2f(float x, float y);
  public static native void n_mglVertex3f(float x, float y, float z);
  public static native void n_mglT2fV2f(float u, float v, float x, float y);

  // Native arrays and indexed drawing
  public static native void n_mglPointer(int kind, long array);
  public static native void n_mglDrawIndexed(
      int mode, int start, int end, int count, int type, short[] indices);
  public static native void n_mglDrawIndexedR(
      int mode, int start, int end, int count, int type, long indices);

  // Textures
  public static native int n_mglCreateTexture();
  public static native void n_mglDeleteTexture(int texture);
  public static native void n_mglBindTexture(int texture);
  public static native void n_mglTexImage2D(int texture, int target, int level,
      int internalFormat, int width, int height, int flags, int format, int type, Object pixels);
  public static native void n_mglTexSubImage2D(int target, int level, int x, int y, int width,
      int height, int format, int type, Object pixels);
  public static native void n_mglReadPixels(
      int x, int y, int width, int height, int format, int type, Object pixels);

  // Render to texture and shadows
  public static native void n_mglStartRenderTexture(
      int texture, int x, int y, int width, int height, int unused);
  public static native void n_mglFinishRenderTexture();
  public static native void n_mglSetupShadow(int depthTexture, float[] matrix, int color);
  public static native void n_mglFinishShadow(int unused);
}
