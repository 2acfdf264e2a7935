package vostan.bench;

import mirelo.app.Controller;
import mirelo.app.win32.WinConsole;
import vostan.test.JoystickInject;
import vostan.test.SdlInject;

/**
 * One controller poll from Java: a virtual joystick of 6 axes and 32 buttons, polled and read the
 * way a game reads it each frame, in ns per poll, with the native heap allocations of this thread.
 */
public final class ControllerBench {
  public static void main(String[] args) {
    final long polls = args.length > 0 ? Long.parseLong(args[0]) : 1_000_000L;
    System.loadLibrary("vostan");
    WinConsole.n_init();
    int slot = JoystickInject.attach("Bench Pad", 6, 32, 0);
    Controller pad = null;
    for (Controller c : WinConsole.n_scanControllers()) {
      if (c.getName().equals("Bench Pad")) pad = c;
    }
    if (slot < 0 || pad == null) throw new AssertionError("no virtual joystick");

    float sink = 0;
    for (int round = 0; round < 2; round++) {  // the first round warms the JIT up
      long m0 = SdlInject.mallocs();
      long t0 = System.nanoTime();
      for (long i = 0; i < polls; i++) {
        pad.poll();
      }
      long t1 = System.nanoTime();
      long m1 = SdlInject.mallocs();
      long t2 = System.nanoTime();
      for (long i = 0; i < polls; i++) {
        pad.poll();
        for (int a = 0; a < 6; a++) sink += pad.getAxesValue(a);
        for (int b = 0; b < 32; b++) sink += pad.isButtonPressed(b) ? 1 : 0;
      }
      long t3 = System.nanoTime();
      if (round == 1) {
        System.out.printf("poll                          %8.1f ns/poll   %s%n",
            (double) (t1 - t0) / polls,
            m0 < 0 ? "(allocations not counted: preload libvostan_malloccount.so)"
                : String.format("%.4f native allocations/poll", (double) (m1 - m0) / polls));
        System.out.printf("poll + 6 axes + 32 buttons    %8.1f ns/frame%n", (double) (t3 - t2) / polls);
      }
    }
    if (sink == 12345.678f) System.out.println();
  }
}
