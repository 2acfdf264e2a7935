package vostan.test;

import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import mirelo.app.win32.WinConsole;

/**
 * A web view in a real window under X: a local page shown in a slot, a click on its link followed
 * (the slot's URL becomes the link's target), and the page kept across hiding and showing.
 */
public final class WebEndToEnd {
  private static int failures = 0;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  private static void pump(long millis) throws InterruptedException {
    long end = System.currentTimeMillis() + millis;
    while (System.currentTimeMillis() < end) {
      WinConsole.n_update();
      while (WinConsole.n_peekEvent() != null) {}
      Thread.sleep(10);
    }
  }

  private static String run(String... command) throws IOException, InterruptedException {
    Process p = new ProcessBuilder(command).redirectErrorStream(true).start();
    String out = new String(p.getInputStream().readAllBytes()).trim();
    p.waitFor();
    return out;
  }

  public static void main(String[] args) throws Exception {
    File dir = Files.createTempDirectory("vostan-web").toFile();
    File first = new File(dir, "first.html");
    File second = new File(dir, "second.html");
    Files.writeString(first.toPath(), "<html><body style='margin:0'><a id='go' href='second.html'"
        + " style='display:block;width:100%;height:300px;background:#c33'>go</a></body></html>");
    Files.writeString(second.toPath(), "<html><body style='background:#3c3'>second</body></html>");
    String firstUrl = first.toURI().toString().replace("file:/", "file:///");
    String secondUrl = second.toURI().toString().replace("file:/", "file:///");

    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("vostan web test", 320, 240, 1), "window open");
    WinConsole.n_selectInlineWeb(2);
    check(WinConsole.n_getInlineWebURL() == null, "no URL at first");
    WinConsole.n_setInlineWebURL(firstUrl);
    WinConsole.n_showInlineWeb(20, 20, 240, 180);
    pump(3000);
    check(firstUrl.equals(WinConsole.n_getInlineWebURL()), "the view went to " + firstUrl);

    // Where the game window stands on the screen; the view is at (20, 20) in it.
    int left = 0;
    int top = 0;
    for (String line : run("xwininfo", "-name", "vostan web test").split("\n")) {
      line = line.trim();
      if (line.startsWith("Absolute upper-left X:")) left = Integer.parseInt(line.substring(22).trim());
      if (line.startsWith("Absolute upper-left Y:")) top = Integer.parseInt(line.substring(22).trim());
    }
    boolean followed = false;
    for (int attempt = 0; attempt < 6 && !followed; attempt++) {
      // The page learns where the pointer is from its moves before it takes a click.
      run("xdotool", "mousemove", String.valueOf(left + 100 + attempt), String.valueOf(top + 90));
      pump(500);
      run("xdotool", "click", "1");
      pump(1500);
      followed = secondUrl.equals(WinConsole.n_getInlineWebURL());
    }
    check(followed, "the clicked link is the URL: " + WinConsole.n_getInlineWebURL());

    WinConsole.n_hideInlineWeb();
    pump(300);
    check(secondUrl.equals(WinConsole.n_getInlineWebURL()), "hiding keeps the URL");
    WinConsole.n_showInlineWeb(20, 20, 240, 180);
    pump(2000);
    check(secondUrl.equals(WinConsole.n_getInlineWebURL()), "showing again goes back to the page");
    WinConsole.n_selectInlineWeb(3);
    check(WinConsole.n_getInlineWebURL() == null, "other slots have their own URL");
    WinConsole.n_selectInlineWeb(2);
    WinConsole.n_hideInlineWeb();
    WinConsole.n_disposeDisplay();

    if (failures > 0) {
      System.out.println(failures + " check(s) failed");
      System.exit(1);
    }
    System.out.println("web end to end: all checks passed");
    // The web engine keeps threads of its own that would hold the JVM open.
    System.exit(0);
  }
}
