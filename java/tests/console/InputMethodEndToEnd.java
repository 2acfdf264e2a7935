package vostan.test;

import static vostan.test.ConsoleChecks.check;
import static vostan.test.ConsoleChecks.finish;
import static vostan.test.ConsoleChecks.pump;

import java.util.Arrays;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.event.InputMethodEvent;
import mirelo.mwt.event.KeyEvent;
import mirelo.mwt.event.MWTEvent;

/** Compositions pushed through SDL's text-editing events reach Java as input method events. */
public final class InputMethodEndToEnd {
  /** The frames' input method events as [text attributes committed caret], typed keys as such. */
  private static void expect(String expected, String what) {
    StringBuilder got = new StringBuilder();
    for (MWTEvent e : pump()) {
      if (e instanceof InputMethodEvent) {
        InputMethodEvent m = (InputMethodEvent) e;
        got.append("[" + m.getText() + " " + Arrays.toString(m.getAttributes()) + " "
            + m.getCommittedCount() + " " + m.getCaret() + "]");
      } else if (e.getID() == 400) {
        got.append("typed ").append(((KeyEvent) e).getKeyChar());
      }
    }
    check(got.toString().equals(expected), what + ": " + got);
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    // Before the console exists these calls do nothing.
    WinConsole.n_enableInputMethods(false);
    WinConsole.n_setInputMethodPassiveMode(true);
    WinConsole.n_setCandidateLocation(1, 2);
    check(WinConsole.n_setInputMethodActiveMode() == 0, "no active mode before n_init");

    WinConsole.n_init();
    check(WinConsole.n_createWindow("input methods", 320, 240, 1), "n_createWindow");
    final int window = WinConsole.n_getWindowHandle();
    pump();

    // Passive: the system shows the composition, and its result arrives typed.
    SdlInject.editing(window, "e", 1, 0);
    SdlInject.text(window, "\u00e9");
    expect("typed \u00e9", "passive mode types the committed text");

    check(WinConsole.n_setInputMethodActiveMode() == 1, "active mode");
    WinConsole.n_setCandidateLocation(30, 40);
    SdlInject.editing(window, "\u304b\u3093", 2, 0);
    SdlInject.editing(window, "\u6f22\u5b57", 0, 2);
    SdlInject.text(window, "\u6f22\u5b57");
    expect("[\u304b\u3093 [0, 0] 0 2][\u6f22\u5b57 [1, 1] 0 0][\u6f22\u5b57 null 2 0]",
        "composing, converting, committing");

    // Input method events can't be disabled; an empty composition cancels.
    WinConsole.n_disableEvents(new int[] {1100});
    SdlInject.editing(window, "x", 1, 0);
    SdlInject.editing(window, "", 0, 0);
    SdlInject.text(window, "y");
    expect("[x [0] 0 1][null null 0 0]typed y", "cancel, then plain typing");

    // Longer than SDL's event buffer (40 characters, 120 bytes): all of it arrives.
    char[] kana = new char[40];
    for (int i = 0; i < kana.length; i++) kana[i] = (char) ('\u3041' + i);
    int[] inputs = new int[kana.length];
    SdlInject.editing(window, new String(kana), 40, 0);
    expect("[" + new String(kana) + " " + Arrays.toString(inputs) + " 0 40]", "a long composition");

    // Switching input methods off cancels the composition; later reports are not
    // compositions, and typing goes on.
    WinConsole.n_enableInputMethods(false);
    SdlInject.editing(window, "zz", 2, 0);
    SdlInject.text(window, "q");
    expect("[null null 0 0]typed q", "off: the composition is cancelled");
    WinConsole.n_enableInputMethods(true);
    SdlInject.editing(window, "\u3042", 1, 0);
    expect("[\u3042 [0] 0 1]", "on again");

    check(WinConsole.n_disposeDisplay(), "n_disposeDisplay");
    finish("input methods end-to-end");
  }
}
