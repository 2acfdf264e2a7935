package vostan.test;

import static vostan.test.ConsoleChecks.check;
import static vostan.test.ConsoleChecks.finish;

import mirelo.app.win32.WinConsole;
import mirelo.mwt.event.KeyEvent;

/** Keys typed with xdotool at the window on an X server reach Java with the table's codes. */
public final class X11KeysEndToEnd {
  // xdotool's keys, then the events: P code/character pressed, R released, T typed; "-" is
  // the undefined character, #n a control one. The key events' characters come from the code
  // taken as a virtual key, so most punctuation has none. xdotool lets go of a modifier first,
  // and the released key keeps its press's character until n_update reads the keys anew.
  private static final String[][] KEYS = {
    {"a", "P65/a T/a R65/a"}, {"shift+b", "P16/- P66/B T/B R16/- R66/B"},
    {"ctrl+c", "P17/- P67/#3 R17/- R67/#3"}, {"5", "P53/5 T/5 R53/5"},
    {"comma", "P44/- T/, R44/-"}, {"period", "P46/#127 T/. R46/#127"}, {"semicolon", "T/;"},
    {"equal", "P59/- T/= R59/-"}, {"grave", "P192/` T/` R192/`"},
    {"apostrophe", "P514/- T/' R514/-"}, {"bracketright", "P93/- T/] R93/-"},
    {"Return", "P10/- R10/-"}, {"Escape", "P27/#27 R27/#27"}, {"Delete", "P127/- R127/-"},
    {"Insert", "P155/- R155/-"}, {"Prior", "P33/- R33/-"}, {"F1", "P112/- R112/-"},
    {"F10", "P121/- R121/-"}, {"alt+x", "P18/- P88/x T/x R18/- R88/x"},
    {"Caps_Lock", "P20/- R20/-"}, {"a", "P65/A T/A R65/A"}, {"Caps_Lock", "P20/- R20/-"},
    // The pad by its navigation keysyms, which xdotool types without touching num lock.
    {"Num_Lock", "P144/- R144/-"}, {"KP_End", "P97/1 T/1 R97/1"},
    {"KP_Delete", "P110/. T/. R110/."}, {"KP_Multiply", "P106/* T/* R106/*"},
    {"KP_Enter", "P10/- R10/-"}, {"Num_Lock", "P144/- R144/-"}, {"KP_End", "P35/- R35/-"},
    {"KP_Begin", "P12/- R12/-"}, {"KP_Delete", "P127/- R127/-"},
  };

  private static void xdotool(String... args) throws Exception {
    String[] command = new String[args.length + 1];
    command[0] = "xdotool";
    System.arraycopy(args, 0, command, 1, args.length);
    new ProcessBuilder(command).inheritIO().start().waitFor();
  }

  /** The key events until they stop coming for a while, in short form. */
  private static String keys() throws InterruptedException {
    StringBuilder out = new StringBuilder();
    long start = System.currentTimeMillis(), quietSince = start;
    while (System.currentTimeMillis() - quietSince < 100 && quietSince - start < 3000) {
      WinConsole.n_update();
      for (Object e; (e = WinConsole.n_peekEvent()) != null; ) {
        quietSince = System.currentTimeMillis();
        if (!(e instanceof KeyEvent)) continue;
        KeyEvent k = (KeyEvent) e;
        char c = k.getKeyChar();
        out.append(out.length() > 0 ? " " : "").append(k.getID() == 401 ? "P" + k.getKeyCode()
            : k.getID() == 402 ? "R" + k.getKeyCode() : "T").append('/')
            .append(c == 0xFFFF ? "-" : c < 33 || c == 127 ? "#" + (int) c : String.valueOf(c));
      }
      Thread.sleep(5);
    }
    return out.toString();
  }

  public static void main(String[] args) throws Exception {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("x11 keys", 320, 240, 1), "n_createWindow");
    long x = SdlInject.x11Window(WinConsole.n_getWindowHandle());
    check(x != 0, "the window is on the X server");
    xdotool("mousemove", "--window", Long.toString(x), "20", "20");
    xdotool("windowfocus", "--sync", Long.toString(x));
    keys();
    for (String[] k : KEYS) {
      xdotool("key", "--delay", "30", k[0]);
      String got = keys();
      check(got.equals(k[1]), k[0] + ": " + got + (got.equals(k[1]) ? "" : ", expected " + k[1]));
    }
    WinConsole.n_disposeDisplay();
    finish("x11 keys end-to-end");
  }
}
