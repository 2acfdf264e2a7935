package mirelo.gfx;

/** Vertex and index data kept by the native layer, handed to draws by handle. */
public final class GLArray {
  private GLArray() {}

  public static native long newGLArray(int kind, int size);
  public static native long newGLArray(int kind, int size, Object data);
  public static native void deleteGLArray(long handle);
  public static native void compact();
  public static native void dispose(long handle);
  public static native void memcpy(long source, int sourceOffset, long destination,
      int destinationOffset, int size);
  public static native void memcpy(Object destination, long source, int sourceOffset,
      int destinationOffset, int size);
  public static native void memcpy(long destination, Object source, int sourceOffset,
      int destinationOffset, int size);
}
