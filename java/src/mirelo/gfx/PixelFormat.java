package mirelo.gfx;

/** A back-buffer format the graphics device offers. */
public class PixelFormat {
  public final long format;
  public final int colorBits;
  public final int redBits;
  public final int greenBits;
  public final int blueBits;
  public final int alphaBits;
  public final int depthBits;
  public final int stencilBits;

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
