package vostan.demo;

import mirelo.app.Controller;
import mirelo.app.win32.WinConsole;

/**
 * The demo's game controllers: the scan's list goes to the log, and the first controller's stick
 * and buttons are read once a frame.
 */
final class Pads {
  private final Controller pad;
  private boolean wasDown;

  private Pads(Controller pad) {
    this.pad = pad;
  }

  /** Scans the attached controllers and prints them. */
  static Pads scan() {
    Controller[] all = WinConsole.n_scanControllers();
    if (all == null || all.length == 0) {
      System.out.println("no game controllers");
      return new Pads(null);
    }
    for (Controller c : all) {
      System.out.println("controller \"" + c.getName() + "\": " + c.getNumAxes() + " axes, "
          + c.getNumButtons() + " buttons" + (c.hasForceFeedback() ? ", force feedback" : ""));
    }
    return new Pads(all[0]);
  }

  /**
   * Reads the first controller.
   *
   * @return whether a button went down since the last frame
   */
  boolean poll() {
    if (pad == null) return false;
    pad.poll();
    boolean down = false;
    for (int i = 0; i < pad.getNumButtons(); i++) down |= pad.isButtonPressed(i);
    boolean pressed = down && !wasDown;
    wasDown = down;
    // A press pushes back briefly where the device can.
    if (pressed && pad.hasForceFeedback()) pad.setForceFeedback(0, 0.5f, 150);
    return pressed;
  }

  /** The stick, -1 to 1 each way; 0 without a controller. */
  float x() {
    return pad == null ? 0 : pad.getAxesValue(0);
  }

  float y() {
    return pad == null ? 0 : pad.getAxesValue(1);
  }
}
