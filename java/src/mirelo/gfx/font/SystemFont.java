package mirelo.gfx.font;

/** A font of the system, or one activated from a file, drawn one character at a time. */
public class SystemFont {
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

  native long n_init(String face, int height, int flags);

  native void n_setAltFont(
      long font, String face, int height, int flags, int altParamA, int altParamB);

  /** Makes the faces of a font file available to this process; returns how many were added. */
  static native long n_activateFont(String path);

  native void n_initCharacter(long font, char character, Object characterInfo);

  native void n_createCache(long font, char character, int x, int y, int width, int height,
      int unused1, int unused2, int unused3, boolean useAlt);
}
