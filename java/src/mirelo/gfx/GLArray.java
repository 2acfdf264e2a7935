package mirelo.gfx;

/**
 * Vertex and index data kept by the native layer, handed to draws by handle. A kind is an
 * OpenGL array name: 32884 positions (3 floats a vertex), 32886 colours (4 bytes, red first),
 * 32888 texture coordinates (2 floats), 32889 skin weights (4 floats, each a bone index plus its
 * share as the fraction), 32887 16-bit triangle indices. The data moves to the device at the first
 * draw and survives the device's loss. Copies that would reach outside a record or a Java array
 * are refused and change nothing; a dead or made-up handle is ignored.
 */
public final class GLArray {
  private GLArray() {}

  /**
   * A record of {@code size} bytes of {@code kind} without data; 0 when none is left or the size
   * is negative or above 64 MB.
   */
  public static native long newGLArray(int kind, int size);

  /**
   * A record of {@code size} bytes of {@code kind}, filled from the start of the primitive array
   * {@code data} (null: no data). 0 when the array is shorter than {@code size}, the size is
   * negative or above 64 MB, or none is left.
   */
  public static native long newGLArray(int kind, int size, Object data);

  /** Notes a record for the next {@link #compact}; the record stays usable until then. */
  public static native void deleteGLArray(long handle);

  /** Frees every record noted by {@link #deleteGLArray}; their slots are used again. */
  public static native void compact();

  /** Lets go of a record's data and device buffer at once; it holds nothing afterwards. */
  public static native void dispose(long handle);

  /** Copies {@code size} bytes from one record to another; offsets count bytes. */
  public static native void memcpy(long source, int sourceOffset, long destination,
      int destinationOffset, int size);

  /**
   * Copies {@code size} bytes of a record into a primitive Java array; the array's offset counts
   * bytes.
   */
  public static native void memcpy(Object destination, long source, int sourceOffset,
      int destinationOffset, int size);

  /**
   * Copies {@code size} bytes of a primitive Java array into a record; the array's offset counts
   * bytes.
   */
  public static native void memcpy(long destination, Object source, int sourceOffset,
      int destinationOffset, int size);
}
