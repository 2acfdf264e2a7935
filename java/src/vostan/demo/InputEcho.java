package vostan.demo;

import java.io.File;
import java.util.Arrays;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.dnd.DropTargetEvent;
import mirelo.mwt.event.InputMethodEvent;

/**
 * The demo's input methods and file drops: compositions are taken in the active mode, so that the
 * game sees each change of the text being composed, and files may be dropped on the window. Both
 * kinds of event are described in full.
 */
final class InputEcho {
  private InputEcho() {}

  /** Takes compositions in the active mode, with the candidate list near the top left corner. */
  static void start() {
    WinConsole.n_setInputMethodActiveMode();
    WinConsole.n_setCandidateLocation(16, 16);
    WinConsole.n_enableDrop(true);
  }

  /** A line about a composition or a drop, or null for other events. */
  static String describe(Object event) {
    if (event instanceof InputMethodEvent) {
      InputMethodEvent e = (InputMethodEvent) event;
      if (e.getText() == null) return "composition ended without text";
      String committed = e.getText().substring(0, e.getCommittedCount());
      String composing = e.getText().substring(e.getCommittedCount());
      return "committed \"" + committed + "\", composing \"" + composing + "\", caret "
          + e.getCaret() + ", attributes " + Arrays.toString(e.getAttributes());
    }
    if (event instanceof DropTargetEvent) {
      DropTargetEvent e = (DropTargetEvent) event;
      String what = e.getID() == DropTargetEvent.DRAG_ENTERED ? "drag entered"
          : e.getID() == DropTargetEvent.DRAGGED_OVER ? "dragged over"
          : e.getID() == DropTargetEvent.DROPPED ? "dropped" : "drag left";
      Object files = e.getFiles();
      return what + " at " + e.getX() + "," + e.getY() + ": "
          + (files instanceof File[] ? Arrays.toString((File[]) files) : "no files");
    }
    return null;
  }
}
