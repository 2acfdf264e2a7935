package vostan.test;

/** Plugs SDL virtual joysticks in and moves them, as a player would. */
public final class JoystickInject {
  static {
    System.loadLibrary("vostan_testhooks");
  }

  private JoystickInject() {}

  /** A new virtual joystick; its slot, or -1. */
  public static native int attach(String name, int axes, int buttons, int hats);

  /** Raw SDL axis value, -32768 to 32767. */
  public static native void axis(int slot, int axis, int value);

  public static native void button(int slot, int button, boolean down);

  /** SDL hat bits: 1 up, 2 right, 4 down, 8 left. */
  public static native void hat(int slot, int hat, int value);

  public static native void detach(int slot);
}
