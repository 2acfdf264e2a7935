package mirelo.mwt.event;

public class KeyEvent extends MWTEvent {
  public static final int KEY_TYPED = 400;
  public static final int KEY_PRESSED = 401;
  public static final int KEY_RELEASED = 402;
  public static final char CHAR_UNDEFINED = 0xFFFF;

  private final int modifiers;
  private final int keyCode;
  private final char keyChar;

  public KeyEvent(int id, int modifiers, int keyCode, char keyChar) {
    super(id);
    this.modifiers = modifiers;
    this.keyCode = keyCode;
    this.keyChar = keyChar;
  }

  public int getModifiers() {
    return modifiers;
  }

  public int getKeyCode() {
    return keyCode;
  }

  public char getKeyChar() {
    return keyChar;
  }

  @Override
  public String toString() {
    return "KeyEvent[id=" + getID() + ",modifiers=" + modifiers + ",keyCode=" + keyCode
        + ",keyChar=" + (int) keyChar + "]";
  }
}
