package vostan.test;

/** Texture read-back for the movie tests (libvostan_moviehooks). */
public final class MovieHooks {
  private MovieHooks() {}

  static {
    System.loadLibrary("vostan_moviehooks");
  }

  /** RGBA bytes of a texture's pixels, rows top first; null for an empty slot. */
  public static native byte[] textureRgba(int texture);
}
