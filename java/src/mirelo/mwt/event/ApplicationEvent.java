package mirelo.mwt.event;

public class ApplicationEvent extends MWTEvent {
  public static final int PAINT = 2100;
  public static final int CLOSE_REQUESTED = 2101;
  public static final int ACTIVATED = 2102;
  public static final int DEACTIVATED = 2103;
  public static final int RESIZED = 2104;

  public ApplicationEvent(int id) {
    super(id);
  }

  @Override
  public String toString() {
    return "ApplicationEvent[id=" + getID() + "]";
  }
}
