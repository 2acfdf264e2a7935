package vostan.demo;

import mirelo.app.win32.WinConsole;

/**
 * The engine's first light: opens the game window, pumps its events and prints them, the way a
 * game's main loop does once a frame.
 */
public final class Demo {
  private Demo() {}

  public static void main(String[] args) throws InterruptedException {
    final int seconds = args.length > 0 ? Integer.parseInt(args[0]) : 8;
    System.loadLibrary("vostan");
    WinConsole.n_init();
    if (!WinConsole.n_createWindow("vostan demo", 640, 480, 1)) {
      System.out.println("could not open the window");
      System.exit(1);
    }
    int size = WinConsole.n_getScreenSize();
    System.out.println("window " + WinConsole.n_getWindowHandle() + ", client area "
        + (size >>> 16) + "x" + (size & 0xFFFF) + "; printing events for " + seconds + " s");
    final int start = WinConsole.n_getTimeMillis();
    int frames = 0;
    int events = 0;
    boolean closed = false;
    while (!closed && WinConsole.n_getTimeMillis() - start < seconds * 1000) {
      WinConsole.n_update();
      Object e;
      while ((e = WinConsole.n_peekEvent()) != null) {
        int t = WinConsole.n_getTimeMillis() - start;
        System.out.printf("%6d ms  %s%n", t, e);
        events++;
        if (e.toString().contains("id=2101")) {
          System.out.println("close requested: leaving");
          closed = true;
        }
      }
      frames++;
      Thread.sleep(16);
    }
    System.out.println(frames + " frames, " + events + " events");
    WinConsole.n_disposeDisplay();
  }
}
