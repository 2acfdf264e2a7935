package vostan.bench;

import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLArray;
import mirelo.gfx.GLGraphics;
import vostan.test.GfxHooks;

/**
 * Indexed triangles per second: a coloured grid mesh drawn from GLArray records with the indices
 * from a Java short[] each draw (mglDrawIndexed) and from an index record (mglDrawIndexedR),
 * against the same data drawn by plain GL glDrawElements in C++, in the same window and context.
 */
public final class IndexedBench {
  private static int side = 64;  // vertices a side: 7938 triangles
  private static int draws = 200;
  private static float extent = 0.9f;  // half the mesh's width in clip space

  private static long javaDraws(short[] indices, long resident) {
    long t0 = System.nanoTime();
    for (int i = 0; i < draws; i++) {
      if (resident != 0) {
        GLGraphics.n_mglDrawIndexedR(4, 0, side * side - 1, indices.length, 5123, resident);
      } else {
        GLGraphics.n_mglDrawIndexed(4, 0, side * side - 1, indices.length, 5123, indices);
      }
    }
    GfxHooks.pixel(0, 0);  // waits for the drawing to finish
    return System.nanoTime() - t0;
  }

  /**
   * Arguments: vertices a side of the grid (64), draws a round (200), half the mesh's width in
   * clip space (0.9: nearly the whole window).
   */
  public static void main(String[] args) {
    if (args.length > 0) side = Integer.parseInt(args[0]);
    if (args.length > 1) draws = Integer.parseInt(args[1]);
    if (args.length > 2) extent = Float.parseFloat(args[2]);
    System.loadLibrary("vostan");
    WinConsole.n_init();
    WinConsole.n_createWindow("indexed", 320, 240, 1);
    if (!WinConsole.n_createGraphics(0) || !WinConsole.n_makeCurrent()) {
      throw new AssertionError("no graphics device");
    }
    float[] positions = new float[side * side * 3];
    int[] colours = new int[side * side];
    for (int j = 0; j < side; j++) {
      for (int i = 0; i < side; i++) {
        int v = j * side + i;
        positions[v * 3] = extent * (2.0f * i / (side - 1) - 1);
        positions[v * 3 + 1] = extent * (2.0f * j / (side - 1) - 1);
        colours[v] = 0xFF000000 | (i * 4) << 16 | (j * 4) << 8 | 0x80;
      }
    }
    short[] indices = new short[(side - 1) * (side - 1) * 6];
    int n = 0;
    for (int j = 0; j + 1 < side; j++) {
      for (int i = 0; i + 1 < side; i++) {
        short a = (short) (j * side + i);
        short c = (short) (a + side);
        for (short v : new short[] {a, (short) (a + 1), (short) (c + 1), a, (short) (c + 1), c}) {
          indices[n++] = v;
        }
      }
    }
    GLGraphics.n_mglSetMatrix(0, new float[] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    GLGraphics.n_mglPointer(32884, GLArray.newGLArray(32884, positions.length * 4, positions));
    GLGraphics.n_mglPointer(32886, GLArray.newGLArray(32886, colours.length * 4, colours));
    long resident = GLArray.newGLArray(32887, indices.length * 2, indices);

    final double triangles = (double) draws * (indices.length / 3);
    for (boolean fromRecord : new boolean[] {false, true}) {
      long bestJava = Long.MAX_VALUE;
      long bestPlain = Long.MAX_VALUE;
      for (int round = 0; round < 5; round++) {  // the first rounds warm the JIT and driver up
        GLGraphics.n_mglClear(0x4000);
        bestJava = Math.min(bestJava, javaDraws(indices, fromRecord ? resident : 0));
        GLGraphics.n_mglClear(0x4000);
        bestPlain = Math.min(bestPlain,
            GfxHooks.plainIndexed(positions, colours, indices, draws, fromRecord));
        WinConsole.n_swapBuffers();
      }
      double javaRate = triangles * 1e9 / bestJava;
      double plainRate = triangles * 1e9 / bestPlain;
      String how = fromRecord ? "resident indices (mglDrawIndexedR)" : "indices from short[]";
      System.out.printf("%s%n", how);
      System.out.printf("  GLArray from Java         %12.0f triangles/s%n", javaRate);
      System.out.printf("  plain GL glDrawElements   %12.0f triangles/s%n", plainRate);
      System.out.printf("  ratio Java / plain        %12.2f%n", javaRate / plainRate);
    }
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
  }
}
