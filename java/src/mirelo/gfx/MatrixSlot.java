package mirelo.gfx;

/**
 * The matrices of {@link GLGraphics#n_mglSetMatrix}. The layer keeps no matrix stack and does no
 * matrix arithmetic: Java passes finished products, 16 floats in row-vector order (a point is a row
 * multiplied on the left, so the translation is in elements 12 to 14).
 */
public final class MatrixSlot {
  private MatrixSlot() {}

  /** The full transform of a vertex from object to clip space. */
  public static final int TRANSFORM = 0;

  /** Object to eye space; its first three columns are used. Lighting and shadows use it. */
  public static final int MODEL_VIEW = 1;

  /** The first bone of skinned geometry; bone {@code i} is {@code BONE_0 + i}. */
  public static final int BONE_0 = 20;

  /** How many bones the effect has. */
  public static final int BONE_COUNT = 29;

  /**
   * The slot of a bone.
   *
   * @param index the bone, 0 to {@link #BONE_COUNT} - 1
   * @return the value to pass as {@code which}
   */
  public static int bone(int index) {
    return BONE_0 + index;
  }
}
