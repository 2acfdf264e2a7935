package mirelo.gfx;

/**
 * Vertex and index data kept by the native layer, handed to draws by handle ({@link
 * GLGraphics#n_mglPointer}, {@link GLGraphics#n_mglDrawIndexedR}). A kind is an OpenGL array
 * name: 32884 positions (3 floats a vertex), 32886 colours (4 bytes, red first), 32888 texture
 * coordinates (2 floats), 32889 skin weights (4 floats, each a bone index plus its share as the
 * fraction), 32887 16-bit triangle indices. An array goes to the graphics device at its first
 * draw and survives a new device. Offsets and sizes are in bytes. Copies that would reach outside
 * an array or a Java array are refused and change nothing; a dead or made-up handle is ignored.
 */
public final class GLArray {
  private GLArray() {}

  /**
   * Makes an array without data.
   *
   * @param kind one of the array kinds of {@link GL}, such as {@link GL#GL_VERTEX_ARRAY}
   * @param size its size in bytes, fixed
   * @return the array's handle; 0 when none is left or the size is negative or above 64 MB
   */
  public static native long newGLArray(int kind, int size);

  /**
   * Makes an array holding a copy of the first bytes of a Java array.
   *
   * @param kind one of the array kinds of {@link GL}, such as {@link GL#GL_VERTEX_ARRAY}
   * @param size its size in bytes, fixed
   * @param data a primitive array of at least size bytes, or null for none
   * @return the array's handle; 0 when the Java array is shorter than size, the size is negative
   *     or above 64 MB, or none is left
   */
  public static native long newGLArray(int kind, int size, Object data);

  /**
   * Marks an array for deletion by the next {@link #compact}; until then it stays usable.
   *
   * @param handle the array
   */
  public static native void deleteGLArray(long handle);

  /** Deletes the arrays marked by {@link #deleteGLArray}. */
  public static native void compact();

  /**
   * Frees an array's data and device buffers at once; the handle is dead afterwards.
   *
   * @param handle the array
   */
  public static native void dispose(long handle);

  /**
   * Copies bytes from one array to another.
   *
   * @param source the array read
   * @param sourceOffset where reading starts
   * @param destination the array written
   * @param destinationOffset where writing starts
   * @param size how many bytes
   */
  public static native void memcpy(long source, int sourceOffset, long destination,
      int destinationOffset, int size);

  /**
   * Copies bytes from an array into a Java array.
   *
   * @param destination a primitive Java array
   * @param source the array read
   * @param sourceOffset where reading starts
   * @param destinationOffset where writing starts in the Java array, in bytes
   * @param size how many bytes
   */
  public static native void memcpy(Object destination, long source, int sourceOffset,
      int destinationOffset, int size);

  /**
   * Copies bytes from a Java array into an array.
   *
   * @param destination the array written
   * @param source a primitive Java array
   * @param sourceOffset where reading starts in the Java array, in bytes
   * @param destinationOffset where writing starts
   * @param size how many bytes
   */
  public static native void memcpy(long destination, Object source, int sourceOffset,
      int destinationOffset, int size);
}
