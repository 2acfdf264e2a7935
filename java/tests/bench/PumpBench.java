package vostan.bench;

import mirelo.app.win32.WinConsole;
import vostan.test.SdlInject;

/**
 * The pump from Java: an empty n_peekEvent, and one mouse event's round trip from the window
 * system to a Java object, in ns per call, with the native heap allocations of this thread.
 */
public final class PumpBench {
  private static void report(String what, long nanos, long calls, long mallocs) {
    System.out.printf("%-28s %8.1f ns/call   %s%n", what, (double) nanos / calls,
        mallocs < 0 ? "(allocations not counted: preload libvostan_malloccount.so)"
            : String.format("%.4f native allocations/call", (double) mallocs / calls));
  }

  public static void main(String[] args) {
    final long calls = args.length > 0 ? Long.parseLong(args[0]) : 2_000_000L;
    System.loadLibrary("vostan");
    WinConsole.n_init();
    WinConsole.n_createWindow("bench", 320, 240, 1);
    final int window = WinConsole.n_getWindowHandle();
    for (int i = 0; i < 100; i++) {
      WinConsole.n_update();
      while (WinConsole.n_peekEvent() != null) {}
    }
    WinConsole.n_disableEvents(new int[] {506, 507});

    for (int round = 0; round < 2; round++) {  // the first round warms the JIT up
      long m0 = SdlInject.mallocs();
      long t0 = System.nanoTime();
      for (long i = 0; i < calls; i++) {
        if (WinConsole.n_peekEvent() != null) throw new AssertionError("queue not empty");
      }
      long t1 = System.nanoTime();
      long m1 = SdlInject.mallocs();
      if (round == 1) report("n_peekEvent, empty queue", t1 - t0, calls, m0 < 0 ? -1 : m1 - m0);

      final long trips = calls / 4;
      m0 = SdlInject.mallocs();
      t0 = System.nanoTime();
      for (long i = 0; i < trips; i++) {
        SdlInject.motion(window, (int) (i & 255) + 1, 10, 0);
        if (WinConsole.n_peekEvent() == null) throw new AssertionError("event lost at " + i);
      }
      t1 = System.nanoTime();
      m1 = SdlInject.mallocs();
      if (round == 1) report("mouse move round trip", t1 - t0, trips, m0 < 0 ? -1 : m1 - m0);
    }
    WinConsole.n_disposeDisplay();
  }
}
