package vostan.test;

import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLArray;
import mirelo.gfx.GLGraphics;

import static vostan.test.Checks.check;
import static vostan.test.Checks.near;

/**
 * Native arrays from Java: a skinned square drawn from arrays into a render texture and shown on
 * the window, copies in and out of records, wrong calls that must change nothing, and arrays that
 * outlive their device.
 */
public final class ArrayEndToEnd {
  private static final int SIZE = 64;
  private static final int VERTEX = 32884;
  private static final int INDEX = 32887;
  private static final int WEIGHT = 32889;
  private static final int WHITE = 0xFFFFFF;
  private static final int BLUE = 0x0000FF;

  private static void pixel(int x, int y, int expected, String what) {
    int p = GfxHooks.pixel(x, y);
    check(near(p, expected, 2), what + ": " + String.format("%06x", p & 0xFFFFFF));
  }

  private static float[] translate(float x, float y) {
    return new float[] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, 0, 1};
  }

  private static void clear(float r, float g, float b) {
    GLGraphics.n_mglClearColor(r, g, b, 1);
    GLGraphics.n_mglClear(0x4000 | 0x100);
  }

  /** The skinned square into the render texture, then the texture over the whole window. */
  private static void drawScene(int target, long positions, long weights, long indices) {
    GLGraphics.n_mglBindTexture(0);  // untextured, and not reading what it draws into
    GLGraphics.n_mglStartRenderTexture(target, 0, 0, SIZE, SIZE, 0);
    clear(0, 0, 1);
    GLGraphics.n_mglPointer(VERTEX, positions);
    GLGraphics.n_mglPointer(WEIGHT, weights);
    GLGraphics.n_mglColor3f(1, 1, 1);
    GLGraphics.n_mglDrawIndexedR(4, 0, 3, 6, 5123, indices);
    GLGraphics.n_mglPointer(WEIGHT, 0);
    GLGraphics.n_mglFinishRenderTexture();

    clear(0, 0, 0);
    GLGraphics.n_mglBindTexture(target);
    GLGraphics.n_mglBegin(7);
    GLGraphics.n_mglT2fV2f(0, 0, -1, 1);
    GLGraphics.n_mglT2fV2f(1, 0, 1, 1);
    GLGraphics.n_mglT2fV2f(1, 1, 1, -1);
    GLGraphics.n_mglT2fV2f(0, 1, -1, -1);
    GLGraphics.n_mglEnd();
    GLGraphics.n_mglBindTexture(0);
  }

  /** Bones 0 and 1 each take half of every vertex: the square moves by their mean. */
  private static void setBones() {
    GLGraphics.n_mglSetMatrix(0, translate(0, 0));
    GLGraphics.n_mglSetMatrix(20, translate(-0.5f, 0.5f));
    GLGraphics.n_mglSetMatrix(21, translate(0.5f, 0.5f));
  }

  private static void checkScene(String when) {
    pixel(32, 16, WHITE, when + ": the square moved up by the bones");
    pixel(32, 34, BLUE, when + ": not where it was made");
    pixel(4, 60, BLUE, when + ": the texture's clear colour around it");
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("arrays", SIZE, SIZE, 1), "window");
    check(WinConsole.n_createGraphics(0), "n_createGraphics");
    check(WinConsole.n_makeCurrent(), "n_makeCurrent");
    GLGraphics.n_mglViewPort(0, 0, SIZE, SIZE);

    float h = 0.25f;
    long positions = GLArray.newGLArray(VERTEX, 48,
        new float[] {-h, -h, 0, h, -h, 0, h, h, 0, -h, h, 0});
    float[] w = {0.5f, 1.5f, 0, 0};
    float[] weightData = new float[16];
    for (int v = 0; v < 4; v++) System.arraycopy(w, 0, weightData, v * 4, 4);
    long weights = GLArray.newGLArray(WEIGHT, 64, weightData);
    long indices = GLArray.newGLArray(INDEX, 12, new short[] {0, 1, 2, 0, 2, 3});
    check(positions != 0 && weights != 0 && indices != 0, "three records");
    check(positions > 0 && positions < (1L << 31), "a handle fits in 31 bits");

    int target = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(target, 3553, 0, 6408, SIZE, SIZE, 1, 6408, 5121, null);
    setBones();
    drawScene(target, positions, weights, indices);
    checkScene("first device");

    // Copies: a Java array into a record and back out, and record to record.
    int[] out = new int[4];
    GLArray.memcpy(out, positions, 12, 4, 8);
    check(out[0] == 0 && Float.intBitsToFloat(out[1]) == h && Float.intBitsToFloat(out[2]) == -h,
        "record to int[] at a byte offset");
    long copy = GLArray.newGLArray(VERTEX, 48, new byte[48]);
    GLArray.memcpy(positions, 0, copy, 0, 48);
    float[] back = new float[12];
    GLArray.memcpy(back, copy, 0, 0, 48);
    check(back[3] == h && back[11] == 0, "record to record");
    GLArray.memcpy(copy, new float[] {7, 8}, 4, 40, 4);
    GLArray.memcpy(back, copy, 0, 0, 48);
    check(back[10] == 8, "float[] into a record");

    // Wrong calls change nothing and warn of nothing.
    float[] before = back.clone();
    GLArray.memcpy(back, copy, 0, 0, 52);         // past the record
    GLArray.memcpy(back, copy, 4, 4, 48);         // past both
    GLArray.memcpy(copy, new float[2], 0, 0, 12); // past the Java array
    GLArray.memcpy(copy, null, 0, 0, 4);
    GLArray.memcpy(copy, "not an array", 0, 0, 4);
    GLArray.memcpy(copy, new Object[4], 0, 0, 4);
    GLArray.memcpy(copy, 0, 12345L, 0, 4);        // made up
    GLArray.memcpy(copy, 0, positions, 40, 16);   // past the destination
    GLArray.memcpy(back, copy, 0, 0, 48);
    check(java.util.Arrays.equals(back, before), "refused copies wrote nothing");
    check(GLArray.newGLArray(VERTEX, 64, new float[4]) == 0, "data shorter than the record");
    check(GLArray.newGLArray(VERTEX, -1) == 0, "a negative size");
    GLGraphics.n_mglDrawIndexed(4, 0, 3, 12, 5123, new short[] {0, 1, 2}); // count past the array
    GLGraphics.n_mglDrawIndexedR(4, 0, 3, 6, 5123, 999L);
    GLGraphics.n_mglStartRenderTexture(12345, 0, 0, 8, 8, 0);
    GLGraphics.n_mglSetupShadow(0, new float[3], 0);
    GLGraphics.n_mglFinishShadow(0);

    // A deleted record lives until the compact, then its slot comes back.
    GLArray.deleteGLArray(copy);
    GLArray.memcpy(back, copy, 0, 0, 4);
    check(back[0] == -h, "still readable before the compact");
    GLArray.compact();
    back[0] = 42;
    GLArray.memcpy(back, copy, 0, 0, 4);
    check(back[0] == 42, "a compacted handle reads nothing");
    check(GLArray.newGLArray(VERTEX, 4) == copy, "its slot is used again");

    // The device goes and comes back: the arrays and their handles stay.
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    check(WinConsole.n_createGraphics(0), "a second device");
    check(WinConsole.n_makeCurrent(), "n_makeCurrent again");
    GLGraphics.n_mglViewPort(0, 0, SIZE, SIZE);
    target = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(target, 3553, 0, 6408, SIZE, SIZE, 1, 6408, 5121, null);
    setBones();
    drawScene(target, positions, weights, indices);
    checkScene("second device");

    // Indices from a short[], straight onto the window; a disposed record draws nothing.
    GLGraphics.n_mglSetMatrix(0, translate(0, 0));
    GLGraphics.n_mglPointer(VERTEX, positions);
    clear(0, 0, 0);
    GLGraphics.n_mglDrawIndexed(1, 0, 3, 6, 5123, new short[] {0, 1, 2, 0, 2, 3});
    pixel(32, 32, WHITE, "a square from a short[]");
    GLArray.dispose(positions);
    clear(0, 0, 0);
    GLGraphics.n_mglDrawIndexed(4, 0, 3, 6, 5123, new short[] {0, 1, 2, 0, 2, 3});
    pixel(32, 32, 0, "nothing from a disposed record");

    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    Checks.finish();
  }
}
