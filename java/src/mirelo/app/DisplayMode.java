package mirelo.app;

public class DisplayMode {
  public final int width;
  public final int height;
  public final int bits;
  public final int refresh;

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
