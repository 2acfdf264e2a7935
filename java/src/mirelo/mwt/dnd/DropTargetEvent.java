package mirelo.mwt.dnd;

import mirelo.mwt.event.MWTEvent;

public class DropTargetEvent extends MWTEvent {
  public static final int DRAG_ENTERED = 3000;
  public static final int DRAG_LEFT = 3001;
  public static final int DRAGGED_OVER = 3002;
  public static final int DROPPED = 3003;

  private final int keyState;
  private final int x;
  private final int y;
  private final Object files;

  public DropTargetEvent(int id, int keyState, int x, int y, Object files) {
    super(id);
    this.keyState = keyState;
    this.x = x;
    this.y = y;
    this.files = files;
  }

  public int getKeyState() {
    return keyState;
  }

  public int getX() {
    return x;
  }

  public int getY() {
    return y;
  }

  public Object getFiles() {
    return files;
  }

  @Override
  public String toString() {
    return "DropTargetEvent[id=" + getID() + ",x=" + x + ",y=" + y + "]";
  }
}
