package mirelo.mwt.event;

/** Something happened to the game's window as a whole: it needs painting, closing, focus, size. */
public class ApplicationEvent extends MWTEvent {
  /** The window needs to be drawn again. */
  public static final int PAINT = 2100;

  /**
   * The user asked to close the window. The window stays open: the game decides what closing means
   * and disposes the display itself.
   */
  public static final int CLOSE_REQUESTED = 2101;

  /** The window became the active one; clip sounds and music are heard again. */
  public static final int ACTIVATED = 2102;

  /** The window lost the focus. */
  public static final int DEACTIVATED = 2103;

  /**
   * The client area changed size; {@code WinConsole.n_getScreenSize} has the new size. It is also
   * the first event after a display is made.
   */
  public static final int RESIZED = 2104;

  /**
   * Makes an application event.
   *
   * @param id one of the constants of this class
   */
  public ApplicationEvent(int id) {
    super(id);
  }

  @Override
  public String toString() {
    return "ApplicationEvent[id=" + getID() + "]";
  }
}
