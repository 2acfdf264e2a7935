package vostan.demo;

import mirelo.app.win32.AudioManagerWin32;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.event.MouseEvent;

/**
 * The engine's first light: opens the game window, pumps its events and prints them, the way a
 * game's main loop does once a frame. A mouse press plays a click panned to where it happened,
 * over the song the build synthesised (path in the system property vostan.song).
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
    AudioManagerWin32 audio = new AudioManagerWin32();
    if (!audio.init()) audio = null;
    System.out.println(audio == null ? "no sound device" : "sound device open");
    if (audio != null) ClickSound.init(audio);
    BackgroundSong song = null;
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
        // Sounds play only while the window is in front, so the song waits for activation.
        if (song == null && e.toString().contains("id=2102")) {
          song = BackgroundSong.start(System.getProperty("vostan.song"), audio);
          System.out.println("         " + song.description + (song.playing() ? ", playing" : ""));
        }
        if (e instanceof MouseEvent && ((MouseEvent) e).getID() == MouseEvent.MOUSE_PRESSED
            && audio != null) {
          float x = ((MouseEvent) e).getX() / 640f;
          System.out.printf("         click sound at pan %.2f: %s%n", x,
              ClickSound.play(x) ? "playing" : "not played");
        }
        if (e.toString().contains("id=2101")) {
          System.out.println("close requested: leaving");
          closed = true;
        }
      }
      frames++;
      Thread.sleep(16);
    }
    System.out.println(frames + " frames, " + events + " events");
    if (song != null) song.stop();
    WinConsole.n_disposeDisplay();
  }
}
