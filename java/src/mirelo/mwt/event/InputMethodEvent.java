package mirelo.mwt.event;

public class InputMethodEvent extends MWTEvent {
  public static final int COMPOSITION_CHANGED = 1100;

  private final String text;
  private final int[] attributes;
  private final int committedCount;
  private final int caret;

  public InputMethodEvent(int id, String text, int[] attributes, int committedCount, int caret) {
    super(id);
    this.text = text;
    this.attributes = attributes;
    this.committedCount = committedCount;
    this.caret = caret;
  }

  public String getText() {
    return text;
  }

  public int[] getAttributes() {
    return attributes;
  }

  public int getCommittedCount() {
    return committedCount;
  }

  public int getCaret() {
    return caret;
  }

  @Override
  public String toString() {
    return "InputMethodEvent[id=" + getID() + ",text=" + text + ",committed=" + committedCount
        + ",caret=" + caret + "]";
  }
}
