package mirelo.app.win32;

/**
 * The frame of a window made by {@link WinConsole#n_createWindow}, its last argument. A frame
 * keeps its value when the console goes full screen and back.
 */
public final class FrameStyle {
  private FrameStyle() {}

  /**
   * A caption and nothing else: no system menu and no border to size with. The console moves the
   * window itself while the user drags the caption, frame by frame, so the game keeps running.
   * Every value other than {@link #SIZABLE} and {@link #FIXED} means this.
   */
  public static final int CAPTION_ONLY = 0;

  /**
   * Caption, system menu, minimise box and a sizing border. Only this frame resets the graphics
   * device when the client area changes size. While the user moves or sizes it, the system's move
   * loop holds the game's thread.
   */
  public static final int SIZABLE = 1;

  /** Caption, system menu and minimise box; the size stays as created. */
  public static final int FIXED = 2;

  /** For {@link WinConsole#n_createDisplay}: leave the colour depth or the refresh rate open. */
  public static final int UNSPECIFIED = -1;
}
