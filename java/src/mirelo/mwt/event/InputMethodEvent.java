package mirelo.mwt.event;

/**
 * The input method's composition changed: text was committed, composed, or both. The text is the
 * committed part followed by the part still being composed. These events cannot be disabled.
 */
public class InputMethodEvent extends MWTEvent {
  /** The composition changed. */
  public static final int COMPOSITION_CHANGED = 1100;

  private final String text;
  private final int[] attributes;
  private final int committedCount;
  private final int caret;

  /**
   * Makes an input method event.
   *
   * @param id {@link #COMPOSITION_CHANGED}
   * @param text committed text followed by composed text, or null for an empty composition
   * @param attributes one composition attribute per character of text, or null
   * @param committedCount how many leading characters of text are committed
   * @param caret the caret, in characters of the composed part
   */
  public InputMethodEvent(int id, String text, int[] attributes, int committedCount, int caret) {
    super(id);
    this.text = text;
    this.attributes = attributes;
    this.committedCount = committedCount;
    this.caret = caret;
  }

  /**
   * The committed text followed by the composed text.
   *
   * @return the text, or null when the composition became empty
   */
  public String getText() {
    return text;
  }

  /**
   * How each character of the text is shown: the input method's attribute, 0 (input) to 5 (fixed
   * converted); committed characters have 2 (converted) when composed text follows them.
   *
   * @return one attribute per character of the text, or null when there are none
   */
  public int[] getAttributes() {
    return attributes;
  }

  /**
   * How much of the text is final.
   *
   * @return the number of leading characters of the text that are committed
   */
  public int getCommittedCount() {
    return committedCount;
  }

  /**
   * Where the caret stands in the composed part.
   *
   * @return the caret, in characters from the start of the composed part
   */
  public int getCaret() {
    return caret;
  }

  @Override
  public String toString() {
    return "InputMethodEvent[id=" + getID() + ",text=" + text + ",committed=" + committedCount
        + ",caret=" + caret + "]";
  }
}
