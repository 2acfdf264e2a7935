package vostan.demo;

import java.io.File;
import mirelo.app.win32.WinConsole;

/** The demo's web view: a local page in a corner of the window, where the build has web views. */
final class WebPanel {
  private WebPanel() {}

  /** Shows the page named by the system property vostan.page, if any, at the window's right. */
  static void show(int windowWidth) {
    String page = System.getProperty("vostan.page");
    if (page == null || !new File(page).exists()) return;
    String url = new File(page).toURI().toString().replace("file:/", "file:///");
    WinConsole.n_selectInlineWeb(0);
    WinConsole.n_setInlineWebURL(url);
    WinConsole.n_showInlineWeb(windowWidth - 250, 10, 240, 150);
    System.out.println("web view 0 at " + url);
  }

  /** Prints where the view went if a link was followed. */
  static void report() {
    WinConsole.n_selectInlineWeb(0);
    String url = WinConsole.n_getInlineWebURL();
    if (url != null) System.out.println("web view 0 stands at " + url);
    WinConsole.n_hideInlineWeb();
  }
}
