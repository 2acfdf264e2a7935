package mirelo.mwt.event;

/**
 * The bits of the modifier word that key and mouse events carry ({@link KeyEvent#getModifiers},
 * {@link MouseEvent#getModifiers}) and that {@code WinConsole.n_getModifiers} returns. Keyboard
 * bits are AWT's; the button bits are the console's own.
 *
 * <p>A left-button event also carries {@link #SHIFT} and a middle-button event {@link #CONTROL}:
 * test the button bits first.
 */
public final class Modifiers {
  private Modifiers() {}

  /** A shift key is down. */
  public static final int SHIFT = 1;

  /** A control key is down. */
  public static final int CONTROL = 2;

  /** An alt key is down. */
  public static final int ALT = 8;

  /** Alt-graph: only on typed-key events, in place of {@link #ALT} and {@link #CONTROL}. */
  public static final int ALT_GRAPH = 32;

  /** The left mouse button. */
  public static final int BUTTON1 = 64;

  /** The right mouse button. */
  public static final int BUTTON3 = 128;

  /** The middle mouse button. */
  public static final int BUTTON2 = 256;
}
