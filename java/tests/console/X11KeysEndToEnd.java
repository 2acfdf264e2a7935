package vostan.test;

import static vostan.test.ConsoleChecks.check;
import static vostan.test.ConsoleChecks.finish;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.dnd.DropTargetEvent;
import mirelo.mwt.event.KeyEvent;
import mirelo.mwt.event.MWTEvent;

/**
 * Keys typed with xdotool at the console's window on an X server reach Java with the engine's key
 * codes and characters; files dropped arrive as the drop events in order.
 */
public final class X11KeysEndToEnd {
  private static final String TITLE = "x11 keys";

  private static String run(String... command) {
    try {
      Process p = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
      String out = new String(p.getInputStream().readAllBytes()).trim();
      p.waitFor();
      return out;
    } catch (IOException | InterruptedException e) {
      return "";
    }
  }

  /** Pumps until the events stop coming for a while. */
  private static List<MWTEvent> pumpUntilQuiet() throws InterruptedException {
    List<MWTEvent> events = new ArrayList<>();
    long quietSince = System.currentTimeMillis();
    long start = quietSince;
    while (System.currentTimeMillis() - quietSince < 100 && System.currentTimeMillis() - start < 3000) {
      WinConsole.n_update();
      Object e;
      while ((e = WinConsole.n_peekEvent()) != null) {
        events.add((MWTEvent) e);
        quietSince = System.currentTimeMillis();
      }
      Thread.sleep(5);
    }
    return events;
  }

  private static String character(char c) {
    if (c == 0xFFFF) return "-";
    if (c < 33 || c == 127) return "#" + (int) c;
    return String.valueOf(c);
  }

  /** Key events in short form: P code/char for pressed, R for released, T char for typed. */
  private static String keys(List<MWTEvent> events) {
    StringBuilder out = new StringBuilder();
    for (MWTEvent e : events) {
      if (!(e instanceof KeyEvent)) continue;
      KeyEvent k = (KeyEvent) e;
      if (out.length() > 0) out.append(' ');
      switch (k.getID()) {
        case 401: out.append('P').append(k.getKeyCode()).append('/'); break;
        case 402: out.append('R').append(k.getKeyCode()).append('/'); break;
        default: out.append("T/"); break;
      }
      out.append(character(k.getKeyChar()));
    }
    return out.toString();
  }

  private static void key(String xdoKeys, String expected) throws InterruptedException {
    run("xdotool", "key", "--delay", "30", xdoKeys);
    String got = keys(pumpUntilQuiet());
    check(got.equals(expected), String.format("%-14s %s", xdoKeys, got)
        + (got.equals(expected) ? "" : "   expected " + expected));
  }

  public static void main(String[] args) throws InterruptedException {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow(TITLE, 320, 240, 1), "n_createWindow");
    pumpUntilQuiet();
    long xWindow = SdlInject.x11Window(WinConsole.n_getWindowHandle());
    check(xWindow != 0, "the window is on the X server: " + xWindow);
    String x = Long.toString(xWindow);
    run("xdotool", "mousemove", "--window", x, "20", "20");
    run("xdotool", "windowfocus", "--sync", x);
    pumpUntilQuiet();

    // Letters and digits: code, and the character of the key.
    key("a", "P65/a T/a R65/a");
    // xdotool lets go of the modifier first; the released key keeps the character
    // its press made, as the key state is read anew only by the next n_update.
    key("shift+b", "P16/- P66/B T/B R16/- R66/B");
    key("5", "P53/5 T/5 R53/5");
    key("ctrl+c", "P17/- P67/#3 R17/- R67/#3");
    // Punctuation: the codes of the table, laid out for the Japanese keyboard. The
    // key events' characters come from the code as if it were a virtual key.
    key("comma", "P44/- T/, R44/-");
    key("minus", "P45/- T/- R45/-");
    key("period", "P46/#127 T/. R46/#127");
    key("slash", "P47/- T// R47/-");
    key("semicolon", "T/;");
    key("equal", "P59/- T/= R59/-");
    key("grave", "P192/` T/` R192/`");
    key("bracketleft", "P91/- T/[ R91/-");
    key("backslash", "P92/- T/\\ R92/-");
    key("bracketright", "P93/- T/] R93/-");
    key("apostrophe", "P514/- T/' R514/-");
    // Editing and navigation.
    key("space", "P32/#32 T/#32 R32/#32");
    key("Return", "P10/- R10/-");
    key("Tab", "P9/#9 R9/#9");
    key("BackSpace", "P8/#8 R8/#8");
    key("Escape", "P27/#27 R27/#27");
    key("Delete", "P127/- R127/-");
    key("Insert", "P155/- R155/-");
    key("Home", "P36/- R36/-");
    key("Prior", "P33/- R33/-");
    key("Left", "P37/- R37/-");
    // Function keys; F10 is a system key but still an event.
    key("F1", "P112/- R112/-");
    key("F10", "P121/- R121/-");
    key("F12", "P123/- R123/-");
    // Modifiers.
    key("shift", "P16/- R16/-");
    key("ctrl", "P17/- R17/-");
    key("alt", "P18/- R18/-");
    key("alt+x", "P18/- P88/x T/x R18/- R88/x");
    key("Caps_Lock", "P20/- R20/-");
    key("a", "P65/A T/A R65/A");
    key("Caps_Lock", "P20/- R20/-");
    // The numeric pad, with num lock and without. (The pad's keys are named by
    // their navigation keysyms, which xdotool types without touching num lock.)
    key("Num_Lock", "P144/- R144/-");
    key("KP_End", "P97/1 T/1 R97/1");
    key("KP_Begin", "P101/5 T/5 R101/5");
    key("KP_Delete", "P110/. T/. R110/.");
    key("KP_Multiply", "P106/* T/* R106/*");
    key("KP_Add", "P107/+ T/+ R107/+");
    key("KP_Subtract", "P109/- T/- R109/-");
    key("KP_Divide", "P111// T// R111//");
    key("KP_Enter", "P10/- R10/-");
    key("Num_Lock", "P144/- R144/-");
    key("KP_End", "P35/- R35/-");
    key("KP_Begin", "P12/- R12/-");
    key("KP_Delete", "P127/- R127/-");

    // A file dropped on the window: enter, over and drop with one File[].
    WinConsole.n_enableDrop(true);
    SdlInject.dropFiles(WinConsole.n_getWindowHandle(), new String[] {"/tmp/a.swf", "/tmp/b.ogg"});
    List<Integer> ids = new ArrayList<>();
    Object files = null;
    boolean same = true;
    for (MWTEvent e : pumpUntilQuiet()) {
      if (!(e instanceof DropTargetEvent)) continue;
      DropTargetEvent d = (DropTargetEvent) e;
      ids.add(d.getID());
      if (files == null) files = d.getFiles();
      same &= d.getFiles() == files;
      System.out.println("drop event " + d.getID() + " at " + d.getX() + "," + d.getY());
    }
    check(ids.equals(List.of(3000, 3002, 3003)) && same
            && ((java.io.File[]) files).length == 2,
        "a drop: enter, over, drop with one array: " + ids);

    check(WinConsole.n_disposeDisplay(), "n_disposeDisplay");
    finish("x11 keys end-to-end");
  }
}
