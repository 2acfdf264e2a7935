package mirelo.gfx.font;

/** A font of the system, or one activated from a file, drawn one character at a time. */
public class SystemFont {
  /** Creation flag: bold. */
  public static final int BOLD = 1;
  /** Creation flag: anti-aliased, 65 gray levels rather than one bit. */
  public static final int ANTI_ALIASED = 32;
  /** Creation flag: a light glyph on a dark halo; cells grow by 5 pixels in width and height. */
  public static final int OUTLINED = 64;

  // Written by n_init.
  public float avascent;
  public float avdescent;
  public float height;
  public int canvasw;
  public int canvash;

  /** Metrics of one character, written by n_initCharacter. */
  public static class CharacterInfo {
    public float ascent;
    public float descent;
    public float advance;
    public float lsb;
    public int cwidth;
    public int cheight;
    public int cy;
    public boolean usealt;
  }

  /**
   * Makes the native font of a family at a height (positive: the cell, negative: the em) with
   * the creation flags, and fills the line metrics and canvas size of this object. A family that
   * is not there gives a font that measures and draws nothing.
   */
  public native long n_init(String face, int height, int flags);

  /** Gives the font an alternate font for the characters it lacks; it shares the canvas. */
  public native void n_setAltFont(
      long font, String face, int height, int flags, int altParamA, int altParamB);

  /** Makes the faces of a font file available to this process; returns how many were added. */
  public static native long n_activateFont(String path);

  /** Fills a {@link CharacterInfo} with the metrics of a character. */
  public native void n_initCharacter(long font, char character, Object characterInfo);

  /**
   * Draws a character into the bound texture with its cell's top-left corner at (x, y), width
   * by height pixels; useAlt takes it from the alternate font.
   */
  public native void n_createCache(long font, char character, int x, int y, int width, int height,
      int unused1, int unused2, int unused3, boolean useAlt);
}
