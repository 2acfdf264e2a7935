package mirelo.app;

/** A screen mode: size, colour depth and refresh rate, as the console lists and sets them. */
public class DisplayMode {
  /** Width in pixels. */
  public final int width;

  /** Height in pixels. */
  public final int height;

  /** Bits per pixel. */
  public final int bits;

  /** Refresh rate in hertz; 0 or 1 when the system does not tell. */
  public final int refresh;

  /**
   * Makes a display mode.
   *
   * @param width width in pixels
   * @param height height in pixels
   * @param bits bits per pixel
   * @param refresh refresh rate in hertz
   */
  public DisplayMode(int width, int height, int bits, int refresh) {
    this.width = width;
    this.height = height;
    this.bits = bits;
    this.refresh = refresh;
  }

  @Override
  public String toString() {
    return width + "x" + height + "x" + bits + "@" + refresh;
  }
}
