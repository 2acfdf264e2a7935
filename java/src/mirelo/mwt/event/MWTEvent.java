package mirelo.mwt.event;

/** Base of the events the console hands to the game. */
public abstract class MWTEvent {
  private final int id;

  protected MWTEvent(int id) {
    this.id = id;
  }

  public int getID() {
    return id;
  }
}
