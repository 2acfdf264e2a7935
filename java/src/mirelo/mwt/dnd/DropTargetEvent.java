package mirelo.mwt.dnd;

import mirelo.mwt.event.MWTEvent;

/**
 * Files dragged over the window from another program, once {@code WinConsole.n_enableDrop(true)}
 * was called. Only drags that carry files give events.
 */
public class DropTargetEvent extends MWTEvent {
  /** A drag carrying files came over the window. */
  public static final int DRAG_ENTERED = 3000;

  /** The drag left the window, or was cancelled. */
  public static final int DRAG_LEFT = 3001;

  /** The drag moved over the window. */
  public static final int DRAGGED_OVER = 3002;

  /** The files were dropped on the window. */
  public static final int DROPPED = 3003;

  private final int keyState;
  private final int x;
  private final int y;
  private final Object files;

  /**
   * Makes a drop target event.
   *
   * @param id one of the constants of this class
   * @param keyState the mouse buttons and keys held, as the system's drag key state
   * @param x pixels from the client area's left edge
   * @param y pixels from the client area's top edge
   * @param files the dragged files as a {@code java.io.File[]}, or null
   */
  public DropTargetEvent(int id, int keyState, int x, int y, Object files) {
    super(id);
    this.keyState = keyState;
    this.x = x;
    this.y = y;
    this.files = files;
  }

  /**
   * The mouse buttons and keys held during the drag.
   *
   * @return the system's drag key state bits (1 left button, 2 right, 4 shift, 8 control, 16
   *     middle, 32 alt)
   */
  public int getKeyState() {
    return keyState;
  }

  /**
   * The horizontal position of the pointer.
   *
   * @return pixels from the client area's left edge
   */
  public int getX() {
    return x;
  }

  /**
   * The vertical position of the pointer.
   *
   * @return pixels from the client area's top edge
   */
  public int getY() {
    return y;
  }

  /**
   * The dragged files.
   *
   * @return a {@code java.io.File[]}, or null
   */
  public Object getFiles() {
    return files;
  }

  @Override
  public String toString() {
    return "DropTargetEvent[id=" + getID() + ",x=" + x + ",y=" + y + "]";
  }
}
