package vostan.test;

/** Read-back and plain-GL helpers in the device's current GL context (libvostan_gfxhooks). */
public final class GfxHooks {
  private GfxHooks() {}

  static {
    System.loadLibrary("vostan_gfxhooks");
  }

  /** 0xAARRGGBB of the back buffer at x from the left, y from the top. */
  public static native int pixel(int x, int y);

  /** Nanoseconds to draw `count` quads with plain GL calls, one draw each. */
  public static native long plainQuads(int count);

  /**
   * Nanoseconds to draw a mesh `draws` times with plain GL glDrawElements from vertex buffers made
   * once; the indices are uploaded for every draw unless `resident`.
   */
  public static native long plainIndexed(
      float[] positions, int[] colours, short[] indices, int draws, boolean resident);
}
