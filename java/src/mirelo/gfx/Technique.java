package mirelo.gfx;

/**
 * How draws are shaded: the mode of {@link GLGraphics#n_mglDepthWrite} (which, in spite of its
 * name, writes no depth state) and the render mode of {@link GLGraphics#n_mglRenderMode}. Each draw
 * picks its effect technique from these two and from whether it has colours and skin weights.
 */
public final class Technique {
  private Technique() {}

  /** Normal drawing: textured, coloured or lit by the lighting colour. */
  public static final int NORMAL = 0;

  /** Depth only, into a depth texture. */
  public static final int DEPTH = 1;

  /** Drawing with the shadow set up by {@code n_mglSetupShadow}. */
  public static final int SHADOWED = 2;

  /** Depth, with the texture's alpha cutting holes. */
  public static final int DEPTH_ALPHA = 3;

  /** Depth with luminous alpha. */
  public static final int DEPTH_LUMINOUS_ALPHA = 4;

  /** Image filter: blur. */
  public static final int BLUR = 5;

  /** Image filter: depth of field. */
  public static final int DEPTH_OF_FIELD = 6;

  /** Image filter: bloom, first stage. */
  public static final int BLOOM_FIRST = 7;

  /** Image filter: bloom, second stage. */
  public static final int BLOOM_SECOND = 8;

  /** Above 8: every draw keeps the technique of the draw before it. */
  public static final int KEEP = 9;

  /** Render mode: plain drawing. */
  public static final int RENDER_PLAIN = 0;

  /** Render mode: plain drawing, the second value the layer accepts for it. */
  public static final int RENDER_PLAIN_ALT = 0x2002F;

  /**
   * Render mode: texture coordinates generated from eye space by the {@code n_mglTexGen} matrix; no
   * shadow is drawn. Any other render mode keeps the technique of the last draw in modes {@link
   * #NORMAL} and {@link #SHADOWED}.
   */
  public static final int RENDER_TEXGEN = 0x2005F;
}
