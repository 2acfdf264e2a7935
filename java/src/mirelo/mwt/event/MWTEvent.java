package mirelo.mwt.event;

/**
 * Base of the events the console hands to the game. {@code WinConsole.n_peekEvent} returns one at a
 * time; its class and {@link #getID} tell what happened. An event id can be switched off for good
 * with {@code WinConsole.n_disableEvents}.
 */
public abstract class MWTEvent {
  private final int id;

  /**
   * Makes an event.
   *
   * @param id what happened: one of the id constants of the subclass
   */
  protected MWTEvent(int id) {
    this.id = id;
  }

  /**
   * What happened.
   *
   * @return the event id, one of the id constants of the event's class
   */
  public int getID() {
    return id;
  }
}
