package vostan.test;

import static vostan.test.ConsoleChecks.check;
import static vostan.test.ConsoleChecks.finish;
import static vostan.test.ConsoleChecks.pump;

import java.io.File;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import mirelo.app.DisplayMode;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.dnd.DropTargetEvent;
import mirelo.mwt.event.ApplicationEvent;
import mirelo.mwt.event.KeyEvent;
import mirelo.mwt.event.MWTEvent;
import mirelo.mwt.event.MouseEvent;

/** The console in a real JVM: a window, its first events, and input pushed through SDL. */
public final class ConsoleEndToEnd {
  private static List<Integer> ids(List<MWTEvent> events) {
    List<Integer> ids = new ArrayList<>();
    for (MWTEvent e : events) {
      ids.add(e.getID());
    }
    return ids;
  }

  private static <T> T find(List<MWTEvent> events, int id, Class<T> type) {
    for (MWTEvent e : events) {
      if (e.getID() == id) {
        return type.cast(e);
      }
    }
    return null;
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    check(WinConsole.n_init() != 0, "n_init gives the console's address");
    check(!WinConsole.n_createGraphics(0), "no graphics before a display");
    check(WinConsole.n_createWindow("End to end", 320, 240, 1), "n_createWindow");
    final int window = WinConsole.n_getWindowHandle();
    check(window != 0, "the window has a handle");
    check(WinConsole.n_getScreenSize() == ((320 << 16) | 240), "client size 320x240");

    Object first = WinConsole.n_peekEvent();
    check(first instanceof ApplicationEvent && ((MWTEvent) first).getID() == 2104,
        "first event is the resize (2104), got " + first);
    List<MWTEvent> startup = pump();
    System.out.println("startup events: " + ids(startup));
    check(ids(startup).contains(2102), "activation follows");

    SdlInject.motion(window, 50, 60, 0);
    SdlInject.button(window, 1, true, 50, 60);
    SdlInject.button(window, 1, false, 50, 60);
    SdlInject.wheel(window, -1);
    List<MWTEvent> mouse = pump();
    System.out.println("mouse events: " + mouse);
    List<Integer> mouseIds = ids(mouse);
    // The pointer is now over the client area: n_update adds the enter event.
    check(mouseIds.contains(506), "entered once the pointer is inside");
    mouseIds.remove(Integer.valueOf(506));
    check(mouseIds.equals(List.of(503, 501, 502, 500, 505)),
        "move, press, release, click, wheel in order: " + mouseIds);
    MouseEvent move = find(mouse, 503, MouseEvent.class);
    check(move != null && move.getX() == 50 && move.getY() == 60, "move at (50, 60)");
    MouseEvent clicked = find(mouse, 500, MouseEvent.class);
    check(clicked != null && clicked.getClickCount() == 1, "one click");
    MouseEvent wheel = find(mouse, 505, MouseEvent.class);
    check(wheel != null && wheel.getWheelRotation() == -1, "wheel towards the user is -1");

    // SDL scan code 4 is the A key.
    SdlInject.key(window, 4, 'a', true);
    SdlInject.text(window, "a");
    SdlInject.key(window, 4, 'a', false);
    List<MWTEvent> keys = pump();
    System.out.println("key events: " + keys);
    check(ids(keys).equals(List.of(401, 400, 402)), "pressed, typed, released: " + ids(keys));
    KeyEvent pressed = find(keys, 401, KeyEvent.class);
    check(pressed != null && pressed.getKeyCode() == 65 && pressed.getKeyChar() == 'a',
        "key code 65 with character a");
    KeyEvent typed = find(keys, 400, KeyEvent.class);
    check(typed != null && typed.getKeyChar() == 'a' && typed.getKeyCode() == 0, "typed a");

    WinConsole.n_disableEvents(new int[] {503});
    WinConsole.n_disableEvents(null);
    SdlInject.motion(window, 70, 80, 0);
    SdlInject.close(window);
    List<MWTEvent> rest = pump();
    check(ids(rest).equals(List.of(2101)), "moves are off, close is asked: " + ids(rest));
    check(WinConsole.n_getWindowHandle() == window, "the window stays after a close request");

    WinConsole.n_enableDrop(true);
    WinConsole.n_enableDrop(true);
    SdlInject.dropFiles(window, new String[] {"/tmp/one.swf", "/tmp/caf\u00e9.ogg"});
    List<MWTEvent> drops = pump();
    check(ids(drops).equals(List.of(3000, 3002, 3003)),
        "files dropped: enter, over, drop: " + ids(drops));
    DropTargetEvent entered = find(drops, 3000, DropTargetEvent.class);
    DropTargetEvent dropped = find(drops, 3003, DropTargetEvent.class);
    check(entered != null && dropped != null && entered.getFiles() == dropped.getFiles(),
        "one File[] from enter to drop");
    File[] files = entered == null ? null : (File[]) entered.getFiles();
    check(files != null
            && Arrays.asList(files).equals(
                List.of(new File("/tmp/one.swf"), new File("/tmp/caf\u00e9.ogg"))),
        "the files, in order: " + (files == null ? null : Arrays.asList(files)));
    WinConsole.n_enableDrop(false);
    SdlInject.dropFiles(window, new String[] {"/tmp/ignored"});
    check(pump().isEmpty(), "no drop events once dropping is off");

    DisplayMode mode = WinConsole.n_getDisplayMode();
    DisplayMode[] modes = WinConsole.n_getDisplayModeList();
    System.out.println("display mode " + mode + ", list " + Arrays.toString(modes));
    check(mode != null && mode.width > 0 && mode.height > 0, "the present display mode");
    check(modes != null && modes.length > 0, "a list of display modes");
    check(!WinConsole.n_isDisplayAvailable(mode.width, mode.height, mode.bits, mode.refresh),
        "n_isDisplayAvailable is always false");

    int t0 = WinConsole.n_getTimeMillis();
    int t1 = WinConsole.n_getTimeMillis();
    check(t1 - t0 >= 0, "the clock does not run backwards");

    check(WinConsole.n_disposeDisplay(), "n_disposeDisplay");
    check(WinConsole.n_getWindowHandle() == 0, "no window after dispose");
    check(WinConsole.n_peekEvent() == null, "nothing left");

    finish("console end-to-end");
  }
}
