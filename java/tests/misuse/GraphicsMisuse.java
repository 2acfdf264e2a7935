package vostan.test.misuse;

import java.nio.ByteBuffer;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;
import vostan.test.GfxHooks;

/** The graphics natives with wrong arrays, made-up handles, bad sizes and over-full batches. */
public final class GraphicsMisuse {
  private static final int SIZE = 64;
  private static final int TEX = 3553;
  private static final int RGBA = 6408;
  private static final int UBYTE = 5121;
  private static final float[] IDENTITY = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

  private GraphicsMisuse() {}

  private static int width() {
    return GLGraphics.n_mglGetTextureStageState(4096);
  }

  /** Two white triangles over the window's middle on blue, textured if a texture is bound. */
  private static void quad() {
    GLGraphics.n_mglClearColor(0, 0, 1, 1);
    GLGraphics.n_mglClear(0x4000);
    GLGraphics.n_mglBegin(4);
    float[] corners = {-1, 1, 1, 1, 1, -1, -1, 1, 1, -1, -1, -1};
    for (int i = 0; i < corners.length; i += 2) {
      GLGraphics.n_mglTexCoord2f((corners[i] + 1) / 2, (1 - corners[i + 1]) / 2);
      GLGraphics.n_mglVertex2f(corners[i], corners[i + 1]);
    }
    GLGraphics.n_mglEnd();
  }

  private static boolean white(int argb) {
    return (argb & 0xFFFFFF) == 0xFFFFFF;
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    Cases c = new Cases("graphics");
    WinConsole.n_init();
    c.check(WinConsole.n_createWindow("misuse", SIZE, SIZE, 1), "window");
    c.check(WinConsole.n_createGraphics(0), "graphics");
    c.check(WinConsole.n_makeCurrent(), "scene");
    GLGraphics.n_mglSetMatrix(0, IDENTITY);
    GLGraphics.n_mglViewPort(0, 0, SIZE, SIZE);

    // Matrices: 16 floats or nothing.
    c.quiet("matrices of null, 3 and 0 floats are ignored", () -> {
      GLGraphics.n_mglSetMatrix(0, null);
      GLGraphics.n_mglSetMatrix(0, new float[3]);
      GLGraphics.n_mglSetMatrix(1, new float[0]);
      GLGraphics.n_mglSetMatrix(25, new float[15]);
      GLGraphics.n_mglTexGen(0, null);
      GLGraphics.n_mglTexGen(0, new float[3]);
    });
    GLGraphics.n_mglBindTexture(0);
    quad();
    c.check(white(GfxHooks.pixel(SIZE / 2, SIZE / 2)), "the identity matrix stayed: the quad fills");

    // Batches: an mglEnd without mglBegin, and more vertices than the batch holds.
    c.quiet("mglEnd before any batch", GLGraphics::n_mglEnd);
    c.quiet("2,000,000 vertices in one batch", () -> {
      GLGraphics.n_mglBegin(4);
      for (int i = 0; i < 2_000_000; i++) GLGraphics.n_mglVertex2f(i % 3 == 0 ? -1 : 1, 1);
      GLGraphics.n_mglEnd();
    });
    c.quiet("6000 quad vertices", () -> {
      GLGraphics.n_mglBegin(7);
      for (int i = 0; i < 6000; i++) GLGraphics.n_mglT2fV2f(0, 0, 0, 0);
      GLGraphics.n_mglEnd();
    });
    c.quiet("a mode that keeps a full batch's type", () -> {
      GLGraphics.n_mglBegin(2);
      for (int i = 0; i < 5000; i++) GLGraphics.n_mglVertex2f(0, 0);
      GLGraphics.n_mglEnd();
    });
    quad();
    c.check(white(GfxHooks.pixel(SIZE / 2, SIZE / 2)), "a correct batch draws after the full ones");

    // Texture handles: only slots of the store count.
    int texture = GLGraphics.n_mglCreateTexture();
    c.check(texture != 0, "a texture");
    c.quiet("binding made-up handles binds nothing", () -> {
      for (int h : new int[] {1, -1, 12345, Integer.MAX_VALUE, Integer.MIN_VALUE, texture + 1}) {
        GLGraphics.n_mglBindTexture(h);
        GLGraphics.n_mglDeleteTexture(h);
        GLGraphics.n_mglTexImage2D(h, TEX, 0, RGBA, 2, 2, 0, RGBA, UBYTE, new byte[16]);
      }
    });
    c.check(width() == 0, "nothing is bound after made-up handles");
    GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 4, 4, 0, RGBA, UBYTE, new byte[64]);
    c.check(width() == 4, "a 4x4 texture");

    // Pixel arrays: the kind and length must cover the rectangle, else nothing changes.
    c.quiet("256x256 from 4 bytes, from a String and from a buffer", () -> {
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 256, 256, 0, RGBA, UBYTE, new byte[4]);
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 256, 256, 0, RGBA, UBYTE, "pixels");
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 256, 256, 0, RGBA, UBYTE,
          ByteBuffer.allocateDirect(256 * 256 * 4));
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 256, 256, 0, RGBA, UBYTE, new Object[4]);
    });
    c.check(width() == 4, "refused images leave the texture as it was");
    c.quiet("sub-images short, outside and of the wrong kind", () -> {
      GLGraphics.n_mglTexSubImage2D(TEX, 0, 0, 0, 4, 4, RGBA, UBYTE, new byte[8]);
      GLGraphics.n_mglTexSubImage2D(TEX, 0, 2, 2, 4, 4, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglTexSubImage2D(TEX, 0, -1, 0, 2, 2, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglTexSubImage2D(TEX, 0, Integer.MAX_VALUE, 0, 2, 2, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglTexSubImage2D(TEX, 0, 0, 0, 1, 1, RGBA, UBYTE, "text");
    });
    c.quiet("an int array of the right size is taken", () ->
        GLGraphics.n_mglTexSubImage2D(TEX, 0, 0, 0, 4, 4, RGBA, UBYTE, new int[16]));

    // Sizes: negative, and far beyond any device.
    c.quiet("negative and huge texture sizes", () -> {
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, -5, 4, 0, RGBA, UBYTE, null);
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 4, Integer.MIN_VALUE, 0, RGBA, UBYTE, null);
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 100000, 100000, 0, RGBA, UBYTE, null);
      GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 65536, 65536, 1, RGBA, UBYTE, null);
    });
    c.check(width() == 0, "a texture too large for the device is not made");
    GLGraphics.n_mglTexImage2D(texture, TEX, 0, RGBA, 8, 8, 0, RGBA, UBYTE, null);
    c.check(width() == 8, "the handle works after the failed creation");

    // Read-back: the rectangle inside the back buffer, the array holding it.
    c.quiet("read-backs outside, short, negative and huge", () -> {
      GLGraphics.n_mglReadPixels(0, 0, 64, 64, RGBA, UBYTE, new byte[16]);
      GLGraphics.n_mglReadPixels(-10, 0, 4, 4, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglReadPixels(0, 60, 4, 8, RGBA, UBYTE, new byte[128]);
      GLGraphics.n_mglReadPixels(1000, 1000, 4, 4, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglReadPixels(0, 0, -4, 4, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglReadPixels(0, 0, 100000, 100000, RGBA, UBYTE, new byte[64]);
      GLGraphics.n_mglReadPixels(0, 0, 4, 4, RGBA, UBYTE, "text");
      GLGraphics.n_mglReadPixels(0, 0, 4, 4, RGBA, UBYTE, null);
    });
    GLGraphics.n_mglBindTexture(0);
    quad();
    byte[] back = new byte[4 * 4 * 4];
    GLGraphics.n_mglReadPixels(0, 0, 4, 4, RGBA, UBYTE, back);
    c.check(back[0] != 0 || back[1] != 0 || back[2] != 0, "a good read-back still reads");

    // Slots run out at the store's size: the rest get 0.
    int made = 0;
    int last = -1;
    for (int i = 0; i < 10_100; i++) {
      last = GLGraphics.n_mglCreateTexture();
      if (last != 0) made++;
    }
    c.check(last == 0 && made < 10_000, "the store refuses handles once full (" + made + " made)");
    GLGraphics.n_mglDeleteTexture(texture);
    c.check(GLGraphics.n_mglCreateTexture() == texture, "a deleted slot comes back when full");

    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    c.finish();
  }
}
