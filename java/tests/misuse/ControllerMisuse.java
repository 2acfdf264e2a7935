package mirelo.app;

import vostan.test.misuse.Cases;

/** Controller natives on handles that name no controller. */
public final class ControllerMisuse {
  private ControllerMisuse() {}

  /** Runs the cases of this class into c; `when` names the moment in the lines. */
  public static void run(Cases c, String when) {
    Controller k = new Controller("none", 0);
    for (long h : new long[] {0, 12345, -1, Long.MIN_VALUE}) {
      c.quiet(when + ": controller natives on " + h, () -> {
        k.n_poll(h);
        k.n_setForceFeedback(h, 1, 1, 100);
        k.n_dispose(h);
      });
      c.check(k.n_getNumAxes(h) == 0 && k.n_getNumButtons(h) == 0 && k.n_getNumHatSwitches(h) == 0
          && !k.n_hasForceFeedback(h) && !k.n_isButtonPressed(h, 0) && k.n_getAxesValue(h, 3) == 0f
          && k.n_getHatSwitchValue(h, -1) == 0f, when + ": controller " + h + " has nothing");
    }
  }
}
