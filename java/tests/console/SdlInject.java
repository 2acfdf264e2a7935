package vostan.test;

/** Pushes SDL events at the console's window, as a user would make them. */
public final class SdlInject {
  static {
    System.loadLibrary("vostan_testhooks");
  }

  private SdlInject() {}

  public static native void motion(int window, int x, int y, int buttons);

  public static native void button(int window, int button, boolean down, int x, int y);

  public static native void wheel(int window, int steps);

  public static native void key(int window, int scancode, int keycode, boolean down);

  public static native void text(int window, String text);

  /** A composition in progress: its text, caret and selected length, in characters. */
  public static native void editing(int window, String text, int start, int length);

  /** The X11 window behind the console's window; 0 on other video drivers. */
  public static native long x11Window(int window);

  public static native void close(int window);

  /** The window's title as the X server holds it, UTF-8; null off X11. */
  public static native byte[] titleOnX11(int window);

  public static native void dropFiles(int window, String[] paths);

  /** Allocations of this thread so far, with the counting malloc preloaded; else -1. */
  public static native long mallocs();
}
