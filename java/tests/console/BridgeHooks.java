package vostan.test;

/** The library's text and exception helpers, exposed for tests. */
public final class BridgeHooks {
  static {
    System.loadLibrary("vostan_testhooks");
  }

  private BridgeHooks() {}

  public static native String multiByteRoundTrip(String s, int codePage);

  public static native int multiByteLength(String s, int codePage);

  public static native String fromNullBytes(int length);

  public static native String wideRoundTrip(String s);

  public static native String fromPath(byte[] utf8);

  public static native void throwInternal(String message);

  public static native void throwOutOfMemory();

  public static native void throwMissingClass();
}
