package mirelo.app;

/** A game controller found by the console's scan. */
public class Controller {
  protected final String name;
  protected final long handle;

  public Controller(String name, long handle) {
    this.name = name;
    this.handle = handle;
  }

  public String getName() {
    return name;
  }
}
