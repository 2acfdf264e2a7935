package mirelo.mwt.event;

/**
 * Key codes of {@link KeyEvent#getKeyCode} and {@code WinConsole.n_isKeyPressed}: the values of
 * {@code java.awt.event.KeyEvent}'s {@code VK_} constants, under the same names. These are the keys
 * the console reports; a key not named here gives no key event. Codes below 256 can be polled with
 * {@code n_isKeyPressed}.
 */
public final class KeyCode {
  private KeyCode() {}

  /** Enter (return). */
  public static final int VK_ENTER = 10;

  /** The back space key. */
  public static final int VK_BACK_SPACE = 8;

  /** The tab key. */
  public static final int VK_TAB = 9;

  /** The cancel key. */
  public static final int VK_CANCEL = 3;

  /** The clear key. */
  public static final int VK_CLEAR = 12;

  /** The shift key. */
  public static final int VK_SHIFT = 16;

  /** The control key. */
  public static final int VK_CONTROL = 17;

  /** The alt key. */
  public static final int VK_ALT = 18;

  /** The pause key. */
  public static final int VK_PAUSE = 19;

  /** The caps lock key. */
  public static final int VK_CAPS_LOCK = 20;

  /** The escape key. */
  public static final int VK_ESCAPE = 27;

  /** Convert, of a Japanese keyboard: with alt it comes as {@link #VK_ALL_CANDIDATES}, with shift as {@link #VK_PREVIOUS_CANDIDATE}. */
  public static final int VK_CONVERT = 28;

  /** The nonconvert key. */
  public static final int VK_NONCONVERT = 29;

  /** The space key. */
  public static final int VK_SPACE = 32;

  /** The page up key. */
  public static final int VK_PAGE_UP = 33;

  /** The page down key. */
  public static final int VK_PAGE_DOWN = 34;

  /** The end key. */
  public static final int VK_END = 35;

  /** The home key. */
  public static final int VK_HOME = 36;

  /** The left key. */
  public static final int VK_LEFT = 37;

  /** The up key. */
  public static final int VK_UP = 38;

  /** The right key. */
  public static final int VK_RIGHT = 39;

  /** The down key. */
  public static final int VK_DOWN = 40;

  /** The comma key. */
  public static final int VK_COMMA = 44;

  /** The minus key. */
  public static final int VK_MINUS = 45;

  /** The period key. */
  public static final int VK_PERIOD = 46;

  /** The slash key. */
  public static final int VK_SLASH = 47;

  /** Digit 0 of the main keyboard. */
  public static final int VK_0 = 48;

  /** The 1 key. */
  public static final int VK_1 = 49;

  /** The 2 key. */
  public static final int VK_2 = 50;

  /** The 3 key. */
  public static final int VK_3 = 51;

  /** The 4 key. */
  public static final int VK_4 = 52;

  /** The 5 key. */
  public static final int VK_5 = 53;

  /** The 6 key. */
  public static final int VK_6 = 54;

  /** The 7 key. */
  public static final int VK_7 = 55;

  /** The 8 key. */
  public static final int VK_8 = 56;

  /** The 9 key. */
  public static final int VK_9 = 57;

  /** The key right of L on a Japanese keyboard. The semicolon key of a US keyboard gives no event. */
  public static final int VK_SEMICOLON = 59;

  /** Letter keys, A to Z. */
  public static final int VK_A = 65;

  /** The B key. */
  public static final int VK_B = 66;

  /** The C key. */
  public static final int VK_C = 67;

  /** The D key. */
  public static final int VK_D = 68;

  /** The E key. */
  public static final int VK_E = 69;

  /** The F key. */
  public static final int VK_F = 70;

  /** The G key. */
  public static final int VK_G = 71;

  /** The H key. */
  public static final int VK_H = 72;

  /** The I key. */
  public static final int VK_I = 73;

  /** The J key. */
  public static final int VK_J = 74;

  /** The K key. */
  public static final int VK_K = 75;

  /** The L key. */
  public static final int VK_L = 76;

  /** The M key. */
  public static final int VK_M = 77;

  /** The N key. */
  public static final int VK_N = 78;

  /** The O key. */
  public static final int VK_O = 79;

  /** The P key. */
  public static final int VK_P = 80;

  /** The Q key. */
  public static final int VK_Q = 81;

  /** The R key. */
  public static final int VK_R = 82;

  /** The S key. */
  public static final int VK_S = 83;

  /** The T key. */
  public static final int VK_T = 84;

  /** The U key. */
  public static final int VK_U = 85;

  /** The V key. */
  public static final int VK_V = 86;

  /** The W key. */
  public static final int VK_W = 87;

  /** The X key. */
  public static final int VK_X = 88;

  /** The Y key. */
  public static final int VK_Y = 89;

  /** The Z key. */
  public static final int VK_Z = 90;

  /** The open bracket key. */
  public static final int VK_OPEN_BRACKET = 91;

  /** The back slash key. */
  public static final int VK_BACK_SLASH = 92;

  /** The close bracket key. */
  public static final int VK_CLOSE_BRACKET = 93;

  /** Numeric pad digits, 0 to 9. */
  public static final int VK_NUMPAD0 = 96;

  /** Numeric pad 1. */
  public static final int VK_NUMPAD1 = 97;

  /** Numeric pad 2. */
  public static final int VK_NUMPAD2 = 98;

  /** Numeric pad 3. */
  public static final int VK_NUMPAD3 = 99;

  /** Numeric pad 4. */
  public static final int VK_NUMPAD4 = 100;

  /** Numeric pad 5. */
  public static final int VK_NUMPAD5 = 101;

  /** Numeric pad 6. */
  public static final int VK_NUMPAD6 = 102;

  /** Numeric pad 7. */
  public static final int VK_NUMPAD7 = 103;

  /** Numeric pad 8. */
  public static final int VK_NUMPAD8 = 104;

  /** Numeric pad 9. */
  public static final int VK_NUMPAD9 = 105;

  /** The multiply key. */
  public static final int VK_MULTIPLY = 106;

  /** The add key. */
  public static final int VK_ADD = 107;

  /** The separator key. */
  public static final int VK_SEPARATOR = 108;

  /** The subtract key. */
  public static final int VK_SUBTRACT = 109;

  /** The decimal key. */
  public static final int VK_DECIMAL = 110;

  /** The divide key. */
  public static final int VK_DIVIDE = 111;

  /** F1 to F12. */
  public static final int VK_F1 = 112;

  /** The F2 key. */
  public static final int VK_F2 = 113;

  /** The F3 key. */
  public static final int VK_F3 = 114;

  /** The F4 key. */
  public static final int VK_F4 = 115;

  /** The F5 key. */
  public static final int VK_F5 = 116;

  /** The F6 key. */
  public static final int VK_F6 = 117;

  /** The F7 key. */
  public static final int VK_F7 = 118;

  /** The F8 key. */
  public static final int VK_F8 = 119;

  /** The F9 key. */
  public static final int VK_F9 = 120;

  /** The F10 key. */
  public static final int VK_F10 = 121;

  /** The F11 key. */
  public static final int VK_F11 = 122;

  /** The F12 key. */
  public static final int VK_F12 = 123;

  /** The delete key. */
  public static final int VK_DELETE = 127;

  /** The num lock key. */
  public static final int VK_NUM_LOCK = 144;

  /** The scroll lock key. */
  public static final int VK_SCROLL_LOCK = 145;

  /** The printscreen key. */
  public static final int VK_PRINTSCREEN = 154;

  /** The insert key. */
  public static final int VK_INSERT = 155;

  /** The help key. */
  public static final int VK_HELP = 156;

  /** The back quote key. */
  public static final int VK_BACK_QUOTE = 192;

  /** Alphanumeric, of a Japanese keyboard; with alt it comes as {@link #VK_CODE_INPUT}. */
  public static final int VK_ALPHANUMERIC = 240;

  /** The katakana key. */
  public static final int VK_KATAKANA = 241;

  /** The hiragana key. */
  public static final int VK_HIRAGANA = 242;

  /** The full width key. */
  public static final int VK_FULL_WIDTH = 243;

  /** The half width key. */
  public static final int VK_HALF_WIDTH = 244;

  /** The roman characters key. */
  public static final int VK_ROMAN_CHARACTERS = 245;

  /** The all candidates key. */
  public static final int VK_ALL_CANDIDATES = 256;

  /** The previous candidate key. */
  public static final int VK_PREVIOUS_CANDIDATE = 257;

  /** The code input key. */
  public static final int VK_CODE_INPUT = 258;

  /** The kana lock key. */
  public static final int VK_KANA_LOCK = 262;

  /** Kanji: input method on and off. */
  public static final int VK_INPUT_METHOD_ON_OFF = 263;

  /** The circumflex key. */
  public static final int VK_CIRCUMFLEX = 514;

  /** F13 to F24. These cannot be polled with {@code n_isKeyPressed}. */
  public static final int VK_F13 = 61440;

  /** The F14 key. */
  public static final int VK_F14 = 61441;

  /** The F15 key. */
  public static final int VK_F15 = 61442;

  /** The F16 key. */
  public static final int VK_F16 = 61443;

  /** The F17 key. */
  public static final int VK_F17 = 61444;

  /** The F18 key. */
  public static final int VK_F18 = 61445;

  /** The F19 key. */
  public static final int VK_F19 = 61446;

  /** The F20 key. */
  public static final int VK_F20 = 61447;

  /** The F21 key. */
  public static final int VK_F21 = 61448;

  /** The F22 key. */
  public static final int VK_F22 = 61449;

  /** The F23 key. */
  public static final int VK_F23 = 61450;

  /** The F24 key. */
  public static final int VK_F24 = 61451;
}
