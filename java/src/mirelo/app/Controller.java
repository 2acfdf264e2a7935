package mirelo.app;

/** A game controller found by the console's scan. */
public class Controller {
  protected final String name;
  protected final long handle;

  public Controller(String name, long handle) {
    this.name = name;
    this.handle = handle;
  }

  public String getName() { return name; }

  native void n_dispose(long handle);

  native void n_poll(long handle);

  native int n_getNumAxes(long handle);

  native float n_getAxesValue(long handle, int axis);

  native int n_getNumButtons(long handle);

  native boolean n_isButtonPressed(long handle, int index);

  native int n_getNumHatSwitches(long handle);

  native float n_getHatSwitchValue(long handle, int hat);

  native boolean n_hasForceFeedback(long handle);

  native boolean n_setForceFeedback(long handle, float x, float y, int duration);
}
