package vostan.test;

import java.util.ArrayList;
import java.util.List;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.event.MWTEvent;

/** What the console's JVM tests share: checks that count their failures, and a few frames pumped. */
final class ConsoleChecks {
  private static int failures = 0;

  private ConsoleChecks() {}

  static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  /** Ends the JVM: status 0 when every check passed. */
  static void finish(String name) {
    System.out.println(failures == 0 ? name + ": all passed" : failures + " failed");
    System.exit(failures == 0 ? 0 : 1);
  }

  /**
   * The events of a few frames. Events pushed from this thread are in SDL's queue already; the
   * frames let the window system's own events settle too.
   */
  static List<MWTEvent> pump() {
    List<MWTEvent> events = new ArrayList<>();
    for (int frame = 0; frame < 5; frame++) {
      WinConsole.n_update();
      Object e;
      while ((e = WinConsole.n_peekEvent()) != null) {
        events.add((MWTEvent) e);
      }
    }
    return events;
  }
}
