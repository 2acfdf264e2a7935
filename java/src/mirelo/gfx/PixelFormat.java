package mirelo.gfx;

/**
 * A back-buffer format the graphics device offers, from {@code WinConsole.n_getPixelFormatList}.
 * Pass its {@link #format} to {@code WinConsole.n_createGraphics}; 0 takes the desktop's.
 */
public class PixelFormat {
  /** The format's value, to pass to {@code WinConsole.n_createGraphics}. */
  public final long format;

  /** Bits of colour per pixel. */
  public final int colorBits;

  /** Bits of red. */
  public final int redBits;

  /** Bits of green. */
  public final int greenBits;

  /** Bits of blue. */
  public final int blueBits;

  /** Bits of alpha. */
  public final int alphaBits;

  /** Bits of the depth buffer. */
  public final int depthBits;

  /** Bits of the stencil buffer. */
  public final int stencilBits;

  /**
   * Makes a pixel format description.
   *
   * @param format the format's value
   * @param colorBits bits of colour per pixel
   * @param redBits bits of red
   * @param greenBits bits of green
   * @param blueBits bits of blue
   * @param alphaBits bits of alpha
   * @param depthBits bits of depth
   * @param stencilBits bits of stencil
   */
  public PixelFormat(long format, int colorBits, int redBits, int greenBits, int blueBits,
      int alphaBits, int depthBits, int stencilBits) {
    this.format = format;
    this.colorBits = colorBits;
    this.redBits = redBits;
    this.greenBits = greenBits;
    this.blueBits = blueBits;
    this.alphaBits = alphaBits;
    this.depthBits = depthBits;
    this.stencilBits = stencilBits;
  }

  @Override
  public String toString() {
    return "PixelFormat[" + format + ": " + colorBits + " bits, depth " + depthBits + ", stencil "
        + stencilBits + "]";
  }
}
