package mirelo.gfx;

/**
 * Blend presets of {@link GLGraphics#n_mglSetBlend}: the layer takes a preset, not a pair of
 * factors. Blending itself is switched with {@code n_mglSetEnable(GL.GL_BLEND, true)}. Another
 * value keeps the factors as they are.
 */
public final class Blend {
  private Blend() {}

  /** Ordinary transparency: source by its alpha over destination by one minus that alpha. */
  public static final int ALPHA = 1;

  /** Additive: source plus destination. */
  public static final int ADD = 2;

  /** Multiplicative: source times destination colour. */
  public static final int MULTIPLY = 3;

  /** Additive by alpha: source by its alpha plus destination. */
  public static final int ADD_ALPHA = 4;

  /** Source plus destination scaled by the source's alpha. */
  public static final int ADD_DEST_BY_ALPHA = 5;
}
