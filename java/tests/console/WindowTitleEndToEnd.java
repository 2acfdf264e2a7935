package vostan.test;

import java.nio.charset.StandardCharsets;
import mirelo.app.win32.WinConsole;

/**
 * A window title with characters the text code page lacks (CJK, an emoji) reaches the X server
 * as UTF-8, intact. Runs on a private X server (scripts/with-xvfb.sh) through SDL's X11 driver.
 */
public final class WindowTitleEndToEnd {
  static final String TITLE = "vostan \u00c4 \u65e5\u672c\u8a9e \ud83c\udfae";

  private static void check(boolean ok, String what) {
    if (!ok) throw new AssertionError(what);
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow(TITLE, 64, 48, 1), "window");
    byte[] shown = SdlInject.titleOnX11(WinConsole.n_getWindowHandle());
    check(shown != null, "the window is on X11 and has a UTF-8 name");
    String got = new String(shown, StandardCharsets.UTF_8);
    check(got.equals(TITLE), "title on X11: " + got);
    WinConsole.n_disposeDisplay();
    System.out.println("window title: ok");
  }
}
