package mirelo.mwt.event;

public class MouseEvent extends MWTEvent {
  public static final int MOUSE_CLICKED = 500;
  public static final int MOUSE_PRESSED = 501;
  public static final int MOUSE_RELEASED = 502;
  public static final int MOUSE_MOVED = 503;
  public static final int MOUSE_DRAGGED = 504;
  public static final int MOUSE_WHEEL = 505;
  public static final int MOUSE_ENTERED = 506;
  public static final int MOUSE_EXITED = 507;

  private final int modifiers;
  private final int x;
  private final int y;
  private final int clickCount;
  private final boolean popupTrigger;
  private final int wheelRotation;

  public MouseEvent(int id, int modifiers, int x, int y, int clickCount, boolean popupTrigger,
      int wheelRotation) {
    super(id);
    this.modifiers = modifiers;
    this.x = x;
    this.y = y;
    this.clickCount = clickCount;
    this.popupTrigger = popupTrigger;
    this.wheelRotation = wheelRotation;
  }

  public int getModifiers() {
    return modifiers;
  }

  public int getX() {
    return x;
  }

  public int getY() {
    return y;
  }

  public int getClickCount() {
    return clickCount;
  }

  public boolean isPopupTrigger() {
    return popupTrigger;
  }

  public int getWheelRotation() {
    return wheelRotation;
  }

  @Override
  public String toString() {
    return "MouseEvent[id=" + getID() + ",modifiers=" + modifiers + ",x=" + x + ",y=" + y
        + ",clickCount=" + clickCount + ",popup=" + popupTrigger + ",rotation=" + wheelRotation
        + "]";
  }
}
