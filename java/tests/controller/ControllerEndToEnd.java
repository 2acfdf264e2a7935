package vostan.test;

import mirelo.app.Controller;
import mirelo.app.win32.WinConsole;

/** Controllers in a real JVM: SDL virtual joysticks scanned, moved and read from Java. */
public final class ControllerEndToEnd {
  private static int failures = 0;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  private static Controller find(Controller[] all, String name) {
    if (all != null) {
      for (Controller c : all) {
        if (c.getName().equals(name)) return c;
      }
    }
    return null;
  }

  /** What the controller code makes of a raw SDL axis value: -1000 to 1000, then thousandths. */
  private static float mapped(int raw) {
    return (float) (-1000 + (raw + 32768L) * 2000 / 65535) * 0.001f;
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    int pad = JoystickInject.attach("Vostan Pad", 6, 32, 1);
    int stick = JoystickInject.attach("Vostan Stick", 2, 4, 0);
    check(pad >= 0 && stick >= 0, "virtual joysticks attached");

    Controller[] all = WinConsole.n_scanControllers();
    check(all != null, "scan answers an array");
    Controller c = find(all, "Vostan Pad");
    check(c != null && find(all, "Vostan Stick") != null, "both found by name");
    if (c == null) System.exit(1);
    check(c.getNumAxes() == 6 && c.getNumButtons() == 32, "6 axes and 32 buttons");
    check(c.getNumHatSwitches() == 0, "hats not delivered");
    check(!c.hasForceFeedback() && c.setForceFeedback(1, 0, 0), "no force feedback, still accepted");

    int[] raw = {32767, -32768, 0, 16384, -12345, 100};
    for (int i = 0; i < raw.length; i++) JoystickInject.axis(pad, i, raw[i]);
    JoystickInject.button(pad, 5, true);
    JoystickInject.button(pad, 31, true);
    JoystickInject.hat(pad, 0, 2);
    c.poll();
    boolean axes = true;
    for (int i = 0; i < raw.length; i++) {
      axes &= c.getAxesValue(i) == mapped(raw[i]);
    }
    check(axes, "axes read as mapped: " + c.getAxesValue(0) + " " + c.getAxesValue(1) + " "
        + c.getAxesValue(3) + " " + c.getAxesValue(4));
    check(c.getAxesValue(0) == 1.0f && c.getAxesValue(1) == -1.0f, "full deflection is 1 and -1");
    check(c.getAxesValue(6) == 0.0f && c.getAxesValue(-1) == 0.0f, "other axes read 0");
    check(c.isButtonPressed(5) && c.isButtonPressed(31) && !c.isButtonPressed(4),
        "buttons pressed as set");
    check(!c.isButtonPressed(32) && !c.isButtonPressed(-1), "buttons outside the range are up");
    check(c.getHatSwitchValue(0) == 0.0f, "hat value 0");

    JoystickInject.button(pad, 5, false);
    JoystickInject.axis(pad, 0, -32768);
    c.poll();
    check(!c.isButtonPressed(5) && c.getAxesValue(0) == -1.0f, "a second poll reads the change");

    // Unplugged between polls: the last values stay.
    JoystickInject.detach(pad);
    c.poll();
    check(c.getAxesValue(0) == -1.0f && c.isButtonPressed(31), "unplugged keeps the last state");

    Controller[] again = WinConsole.n_scanControllers();
    check(again != null && find(again, "Vostan Pad") == null && find(again, "Vostan Stick") != null,
        "a rescan lists what is attached");
    c.poll();
    check(c.getNumAxes() == 0 && c.getAxesValue(0) == 0.0f && !c.setForceFeedback(1, 1, 0),
        "a controller of an earlier scan reads as nothing");
    Controller madeUp = new Controller("made up", 0x12345678L);
    madeUp.poll();
    check(madeUp.getNumButtons() == 0 && !madeUp.isButtonPressed(0), "a made-up handle is nothing");
    System.out.println();

    if (failures > 0) {
      System.out.println(failures + " check(s) failed");
      System.exit(1);
    }
    System.out.println("controller end to end: all checks passed");
  }
}
