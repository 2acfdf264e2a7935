package mirelo.mwt.event;

/**
 * A key went down or up, or a character was typed. Pressed and released events carry a key code
 * ({@link KeyCode}) and, where the key makes one, its character; typed events carry the character
 * only, code 0, and arrive after the press that made them. Double-byte characters of an input
 * method come as one typed event.
 */
public class KeyEvent extends MWTEvent {
  /** A character was typed: {@link #getKeyChar} holds it, the key code is 0. */
  public static final int KEY_TYPED = 400;

  /** A key went down; repeats while it is held. */
  public static final int KEY_PRESSED = 401;

  /** A key went up. */
  public static final int KEY_RELEASED = 402;

  /** The character of a key that makes none. */
  public static final char CHAR_UNDEFINED = 0xFFFF;

  private final int modifiers;
  private final int keyCode;
  private final char keyChar;

  /**
   * Makes a key event.
   *
   * @param id {@link #KEY_TYPED}, {@link #KEY_PRESSED} or {@link #KEY_RELEASED}
   * @param modifiers the bits of {@link Modifiers}
   * @param keyCode one of {@link KeyCode}, or 0 for a typed character
   * @param keyChar the character, or {@link #CHAR_UNDEFINED}
   */
  public KeyEvent(int id, int modifiers, int keyCode, char keyChar) {
    super(id);
    this.modifiers = modifiers;
    this.keyCode = keyCode;
    this.keyChar = keyChar;
  }

  /**
   * The modifier keys held.
   *
   * @return the bits of {@link Modifiers}
   */
  public int getModifiers() {
    return modifiers;
  }

  /**
   * The key.
   *
   * @return one of {@link KeyCode}, 0 for a typed character
   */
  public int getKeyCode() {
    return keyCode;
  }

  /**
   * The character the key makes with the modifiers held.
   *
   * @return the character, or {@link #CHAR_UNDEFINED}
   */
  public char getKeyChar() {
    return keyChar;
  }

  @Override
  public String toString() {
    return "KeyEvent[id=" + getID() + ",modifiers=" + modifiers + ",keyCode=" + keyCode
        + ",keyChar=" + (int) keyChar + "]";
  }
}
