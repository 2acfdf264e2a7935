package mirelo.gfx.font;

/**
 * A font of the system, or one activated from a file, drawn one character at a time into the
 * bound texture. The fields are filled in by {@code n_init}.
 */
public class SystemFont {
  /** Creation flag: bold. */
  public static final int BOLD = 1;

  /** Creation flag: anti-aliased, 65 gray levels rather than one bit. */
  public static final int ANTI_ALIASED = 32;

  /** Creation flag: a light glyph on a dark halo; cells grow by 5 pixels in width and height. */
  public static final int OUTLINED = 64;

  /** The font's ascent in pixels. */
  public float avascent;

  /** The font's descent in pixels. */
  public float avdescent;

  /** The font's line height in pixels. */
  public float height;

  /** Width of the canvas a character is drawn in, in pixels. */
  public int canvasw;

  /** Height of the canvas a character is drawn in, in pixels. */
  public int canvash;

  /** Makes an object to open a font with. */
  public SystemFont() {}

  /** Metrics of one character, written by {@code n_initCharacter}; pixels. */
  public static class CharacterInfo {
    /** Height above the baseline. */
    public float ascent;

    /** Depth below the baseline. */
    public float descent;

    /** How far the pen moves on. */
    public float advance;

    /** Left side bearing: from the pen to the glyph's left edge. */
    public float lsb;

    /** Width of the glyph's box; 0 for the space. */
    public int cwidth;

    /** Height of the canvas the glyph is drawn in. */
    public int cheight;

    /** Minus the height above the baseline: the glyph's top relative to the baseline. */
    public int cy;

    /** Set when the alternate font draws the character; never cleared by the library. */
    public boolean usealt;

    /** Makes an empty record for {@code n_initCharacter} to fill. */
    public CharacterInfo() {}
  }

  /**
   * Makes the native font of a family at a height with the creation flags, and fills the line
   * metrics and canvas size of this object. A family that is not there gives a font that measures
   * and draws nothing.
   *
   * @param face the family's name
   * @param height positive: the cell's height; negative: the em's, in pixels
   * @param flags {@link #BOLD}, {@link #ANTI_ALIASED}, {@link #OUTLINED}, or together
   * @return the font's handle
   */
  public native long n_init(String face, int height, int flags);

  /**
   * Gives the font an alternate font for the characters it lacks; it shares the canvas.
   *
   * @param font the font's handle
   * @param face the alternate family's name
   * @param height as for {@link #n_init}
   * @param flags as for {@link #n_init}
   * @param altParamA kept, not used
   * @param altParamB kept, not used
   */
  public native void n_setAltFont(
      long font, String face, int height, int flags, int altParamA, int altParamB);

  /**
   * Makes the faces of a font file available to this process.
   *
   * @param path the font file
   * @return how many faces were added
   */
  public static native long n_activateFont(String path);

  /**
   * Fills a {@link CharacterInfo} with the metrics of a character.
   *
   * @param font the font's handle
   * @param character the character
   * @param characterInfo the {@link CharacterInfo} to fill
   */
  public native void n_initCharacter(long font, char character, Object characterInfo);

  /**
   * Draws a character into the bound texture with its cell's top-left corner at (x, y).
   *
   * @param font the font's handle
   * @param character the character; the space draws nothing
   * @param x texel column of the cell's left edge
   * @param y texel row of the cell's top edge
   * @param width cell width, at most {@link #canvasw}
   * @param height cell height, at most {@link #canvash}
   * @param unused1 ignored
   * @param unused2 ignored
   * @param unused3 ignored
   * @param useAlt take the character from the alternate font
   */
  public native void n_createCache(long font, char character, int x, int y, int width, int height,
      int unused1, int unused2, int unused3, boolean useAlt);
}
