package vostan.bench;

import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;
import vostan.test.GfxHooks;

/**
 * Textured quads per second: immediate mode from Java (mglBegin, four mglT2fV2f, mglEnd per quad)
 * against the same quads drawn by plain GL calls in C++, in the same window and context.
 */
public final class QuadsBench {
  private static final int GL_QUADS = 7;

  private static long javaQuads(int count) {
    long t0 = System.nanoTime();
    for (int i = 0; i < count; i++) {
      float x = (i % 16) / 16.0f;
      float y = (i % 9) / 9.0f;
      GLGraphics.n_mglBegin(GL_QUADS);
      GLGraphics.n_mglT2fV2f(0, 0, x, y);
      GLGraphics.n_mglT2fV2f(1, 0, x + 0.1f, y);
      GLGraphics.n_mglT2fV2f(1, 1, x + 0.1f, y + 0.1f);
      GLGraphics.n_mglT2fV2f(0, 1, x, y + 0.1f);
      GLGraphics.n_mglEnd();
    }
    GfxHooks.pixel(0, 0);  // waits for the drawing to finish
    return System.nanoTime() - t0;
  }

  public static void main(String[] args) {
    final int count = args.length > 0 ? Integer.parseInt(args[0]) : 20000;
    System.loadLibrary("vostan");
    WinConsole.n_init();
    WinConsole.n_createWindow("quads", 320, 240, 1);
    if (!WinConsole.n_createGraphics(0) || !WinConsole.n_makeCurrent()) {
      throw new AssertionError("no graphics device");
    }
    final float[] identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    GLGraphics.n_mglSetMatrix(0, identity);
    long bestJava = Long.MAX_VALUE;
    long bestPlain = Long.MAX_VALUE;
    for (int round = 0; round < 5; round++) {  // the first rounds warm the JIT and driver up
      GLGraphics.n_mglClear(0x4000);
      bestJava = Math.min(bestJava, javaQuads(count));
      GLGraphics.n_mglClear(0x4000);
      bestPlain = Math.min(bestPlain, GfxHooks.plainQuads(count));
      WinConsole.n_swapBuffers();
    }
    double javaRate = count * 1e9 / bestJava;
    double plainRate = count * 1e9 / bestPlain;
    System.out.printf("immediate mode from Java  %10.0f quads/s%n", javaRate);
    System.out.printf("plain GL from C++         %10.0f quads/s%n", plainRate);
    System.out.printf("ratio Java / plain        %10.2f%n", javaRate / plainRate);
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
  }
}
