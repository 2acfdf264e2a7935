package vostan.test;

import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;

import static vostan.test.Checks.check;
import static vostan.test.Checks.near;

/** Textures from Java: byte and int arrays in, a textured quad out, handles reused. */
public final class TextureEndToEnd {
  private static final int GL_TEXTURE_2D = 3553;
  private static final int GL_RGBA = 6408;
  private static final int GL_BGRA = 32993;
  private static final int GL_UNSIGNED_BYTE = 5121;
  private static final int GL_UNSIGNED_INT_8_8_8_8_REV = 33639;
  private static final int SIZE = 64;

  /** The colour of texel (x, y) of a 2 by 2 texture drawn over the whole window. */
  private static void texel(int x, int y, int expected, String what) {
    int p = GfxHooks.pixel(x * SIZE / 2 + SIZE / 4, y * SIZE / 2 + SIZE / 4);
    check(near(p, expected, 2), what + ": " + String.format("%08x", p));
  }

  /** Clears to blue and draws the bound texture over the whole window. */
  static void drawBound() {
    GLGraphics.n_mglClearColor(0, 0, 1, 1);
    GLGraphics.n_mglClear(0x4000);
    GLGraphics.n_mglBegin(7);
    GLGraphics.n_mglT2fV2f(0, 0, -1, 1);
    GLGraphics.n_mglT2fV2f(1, 0, 1, 1);
    GLGraphics.n_mglT2fV2f(1, 1, 1, -1);
    GLGraphics.n_mglT2fV2f(0, 1, -1, -1);
    GLGraphics.n_mglEnd();
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("textures", SIZE, SIZE, 1), "window");
    check(WinConsole.n_createGraphics(0), "n_createGraphics");
    check(WinConsole.n_makeCurrent(), "n_makeCurrent");
    GLGraphics.n_mglSetMatrix(0, new float[] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    GLGraphics.n_mglViewPort(0, 0, SIZE, SIZE);
    GLGraphics.n_mglSetEnable(3042, true);
    GLGraphics.n_mglSetBlend(1);

    int texture = GLGraphics.n_mglCreateTexture();
    check(texture != 0, "a handle");
    byte[] rgba = {
      (byte) 255, 0, 0, (byte) 255, 0, (byte) 255, 0, (byte) 255,
      0, 0, (byte) 255, (byte) 255, (byte) 255, (byte) 255, (byte) 255, (byte) 128};
    GLGraphics.n_mglTexImage2D(texture, GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, rgba);
    check(GLGraphics.n_mglGetTextureStageState(4096) == 2
        && GLGraphics.n_mglGetTextureStageState(4097) == 2
        && GLGraphics.n_mglGetTextureStageState(4099) == 32856, "size and format of the bound");
    drawBound();
    texel(0, 0, 0xFF0000, "first byte is the top-left red");
    texel(1, 0, 0x00FF00, "then green");
    texel(0, 1, 0x0000FF, "second row blue");
    texel(1, 1, 0x8080FF, "half-transparent white over blue");

    // An int array in BGRA words changes one texel.
    GLGraphics.n_mglTexSubImage2D(GL_TEXTURE_2D, 0, 1, 0, 1, 1, GL_BGRA,
        GL_UNSIGNED_INT_8_8_8_8_REV, new int[] {0xFFFFFF00});
    drawBound();
    texel(1, 0, 0xFFFF00, "sub-image from an int array");
    texel(0, 0, 0xFF0000, "the rest unchanged");

    // A null array makes a cleared texture; unbound, the quad takes the vertex colour.
    GLGraphics.n_mglTexImage2D(texture, GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, null);
    drawBound();
    texel(0, 0, 0x0000FF, "a texture of no pixels is transparent");
    GLGraphics.n_mglBindTexture(0);
    check(GLGraphics.n_mglGetTextureStageState(4096) == 0, "nothing bound");
    drawBound();
    texel(0, 0, 0xFFFFFF, "untextured white");

    // The checked JNI hands out copies that a release without copy-back drops, so only the
    // call's good conduct is checked here; the pixels are checked in the native tests.
    int[] back = new int[4];
    GLGraphics.n_mglReadPixels(0, 0, 2, 2, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, back);
    GLGraphics.n_mglReadPixels(0, 0, 2, 2, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, null);

    GLGraphics.n_mglDeleteTexture(texture);
    GLGraphics.n_mglDeleteTexture(texture);
    check(GLGraphics.n_mglCreateTexture() == texture, "a deleted handle comes back");
    check(GLGraphics.n_mglCreateTexture() != texture, "once");

    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    Checks.finish();
  }
}
