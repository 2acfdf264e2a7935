package mirelo.app;

/**
 * A joystick or game pad found by {@link mirelo.app.win32.WinConsole#n_scanControllers()}.
 *
 * <p>Call {@link #poll()} once a frame; the other readers then answer from the state that poll
 * read. Axis values run from -1 to 1. A controller lives until the next scan: a scan replaces
 * every controller, and an object from an earlier scan reads as nothing (no axes, no buttons,
 * values 0). A device unplugged between polls keeps its last values.
 */
public class Controller {
  /** The device's product name. */
  protected final String name;

  /** The native controller this object stands for. */
  protected final long handle;

  /**
   * Made by the console's scan.
   *
   * @param name the device's product name
   * @param handle the native controller
   */
  public Controller(String name, long handle) {
    this.name = name;
    this.handle = handle;
  }

  /** @return the device's product name */
  public String getName() {
    return name;
  }

  /** Reads the device's state, and sends a changed force; call once a frame. */
  public void poll() {
    n_poll(handle);
  }

  /** @return how many axes the device has */
  public int getNumAxes() {
    return n_getNumAxes(handle);
  }

  /**
   * @param axis 0 to 5: X, Y, Z, rotation X, rotation Y, rotation Z
   * @return the axis at the last poll, -1 to 1; 0 for any other axis
   */
  public float getAxesValue(int axis) {
    return n_getAxesValue(handle, axis);
  }

  /** @return how many buttons the device has */
  public int getNumButtons() {
    return n_getNumButtons(handle);
  }

  /**
   * @param index 0 to {@link #getNumButtons()} - 1
   * @return whether the button was down at the last poll; false outside the range
   */
  public boolean isButtonPressed(int index) {
    return n_isButtonPressed(handle, index);
  }

  /** @return 0: hat switches are not delivered */
  public int getNumHatSwitches() {
    return n_getNumHatSwitches(handle);
  }

  /**
   * @param hat the hat switch
   * @return 0: hat switches are not delivered
   */
  public float getHatSwitchValue(int hat) {
    return n_getHatSwitchValue(handle, hat);
  }

  /** @return whether the device can push back */
  public boolean hasForceFeedback() {
    return n_hasForceFeedback(handle);
  }

  /**
   * Asks for a constant force, sent to the device at the next poll. (0, 0) stops it.
   *
   * @param x force along X, -1 to 1 (clamped)
   * @param y force along Y, -1 to 1 (clamped)
   * @param duration milliseconds until the force stops at a poll; 0 or less for no end
   * @return false only for a controller that is gone
   */
  public boolean setForceFeedback(float x, float y, int duration) {
    return n_setForceFeedback(handle, x, y, duration);
  }

  /** Nothing to give back: controllers live until the next scan. */
  public void dispose() {
    n_dispose(handle);
  }

  /**
   * Does nothing: controllers live until the next scan.
   *
   * @param handle the controller
   */
  native void n_dispose(long handle);

  /**
   * Reads the device's state and sends a changed force.
   *
   * @param handle the controller
   */
  native void n_poll(long handle);

  /**
   * How many axes the device has.
   *
   * @param handle the controller
   * @return the count
   */
  native int n_getNumAxes(long handle);

  /**
   * An axis at the last poll.
   *
   * @param handle the controller
   * @param axis 0 to 5: X, Y, Z, rotation X, rotation Y, rotation Z
   * @return -1 to 1; 0 for any other axis
   */
  native float n_getAxesValue(long handle, int axis);

  /**
   * How many buttons the device has.
   *
   * @param handle the controller
   * @return the count
   */
  native int n_getNumButtons(long handle);

  /**
   * Whether a button was down at the last poll.
   *
   * @param handle the controller
   * @param index the button
   * @return false outside the device's buttons
   */
  native boolean n_isButtonPressed(long handle, int index);

  /**
   * Hat switches are not delivered.
   *
   * @param handle the controller
   * @return 0
   */
  native int n_getNumHatSwitches(long handle);

  /**
   * Hat switches are not delivered.
   *
   * @param handle the controller
   * @param hat ignored
   * @return 0
   */
  native float n_getHatSwitchValue(long handle, int hat);

  /**
   * Whether the device can push back.
   *
   * @param handle the controller
   * @return true when it has force axes
   */
  native boolean n_hasForceFeedback(long handle);

  /**
   * Asks for a constant force, sent at the next poll; (0, 0) stops it.
   *
   * @param handle the controller
   * @param x force along X, -1 to 1
   * @param y force along Y, -1 to 1
   * @param duration milliseconds until it stops; 0 or less for no end
   * @return false for a controller that is gone
   */
  native boolean n_setForceFeedback(long handle, float x, float y, int duration);
}
