package mirelo.mwt.event;

/**
 * The mouse over the client area: buttons, motion, wheel, entering and leaving. Positions are in
 * pixels from the client area's top left corner. The ids differ from AWT's past {@link
 * #MOUSE_MOVED}.
 */
public class MouseEvent extends MWTEvent {
  /** A press and release without a drag between: comes after {@link #MOUSE_RELEASED}. */
  public static final int MOUSE_CLICKED = 500;

  /** A button went down; {@link #getClickCount} counts quick presses at one place. */
  public static final int MOUSE_PRESSED = 501;

  /** A button went up. */
  public static final int MOUSE_RELEASED = 502;

  /** The pointer moved with no button down. */
  public static final int MOUSE_MOVED = 503;

  /** The pointer moved with a button down; no click follows the release. */
  public static final int MOUSE_DRAGGED = 504;

  /** One step of the wheel; {@link #getWheelRotation} gives its direction. */
  public static final int MOUSE_WHEEL = 505;

  /** The pointer came into the client area. */
  public static final int MOUSE_ENTERED = 506;

  /** The pointer left the client area. */
  public static final int MOUSE_EXITED = 507;

  private final int modifiers;
  private final int x;
  private final int y;
  private final int clickCount;
  private final boolean popupTrigger;
  private final int wheelRotation;

  /**
   * Makes a mouse event.
   *
   * @param id one of the id constants of this class
   * @param modifiers the bits of {@link Modifiers}, with the button's bit
   * @param x pixels from the client area's left edge
   * @param y pixels from the client area's top edge
   * @param clickCount 1 for a single press, 2 for a double one and so on; 0 for motion
   * @param popupTrigger true on the release of the right button
   * @param wheelRotation 1 or -1 for a wheel step, else 0
   */
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

  /**
   * The buttons and modifier keys held. A left-button event also carries {@link Modifiers#SHIFT},
   * a middle-button event {@link Modifiers#CONTROL}.
   *
   * @return the bits of {@link Modifiers}
   */
  public int getModifiers() {
    return modifiers;
  }

  /**
   * The horizontal position.
   *
   * @return pixels from the client area's left edge
   */
  public int getX() {
    return x;
  }

  /**
   * The vertical position.
   *
   * @return pixels from the client area's top edge
   */
  public int getY() {
    return y;
  }

  /**
   * How many presses of the same button, in the system's double-click time and area, this one ends.
   *
   * @return 1 for a single press, 2 for a double one and so on; 0 for motion and wheel events
   */
  public int getClickCount() {
    return clickCount;
  }

  /**
   * Whether this event should open a context menu.
   *
   * @return true for the release of the right button
   */
  public boolean isPopupTrigger() {
    return popupTrigger;
  }

  /**
   * The direction of a wheel step, whatever its size.
   *
   * @return 1 away from the user, -1 towards the user; 0 for other events
   */
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
