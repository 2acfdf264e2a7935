package mirelo.app.win32;

import mirelo.app.Controller;
import mirelo.app.DisplayMode;
import mirelo.gfx.PixelFormat;
import mirelo.mwt.dnd.DropTargetEvent;
import mirelo.mwt.event.ApplicationEvent;
import mirelo.mwt.event.InputMethodEvent;
import mirelo.mwt.event.KeyEvent;
import mirelo.mwt.event.MouseEvent;

/**
 * The console: the game's one window, its event stream and its display state. All natives are
 * static and act on the one console that {@link #n_init} makes; call them from the thread that made
 * the window. Load the library first with {@link vostan.Vostan#load}.
 *
 * <p>Start with {@link #n_init}, {@link #n_createWindow} (or {@link #n_createDisplay}) and {@link
 * #n_createGraphics}. Each frame: {@link #n_update}, {@link #n_peekEvent} until it returns null,
 * {@link #n_makeCurrent}, drawing with {@link mirelo.gfx.GLGraphics}, {@link #n_free} and {@link
 * #n_swapBuffers}. End with {@link #n_disposeGraphics} and {@link #n_disposeDisplay}.
 */
public final class WinConsole {
  private WinConsole() {}

  // Lifecycle
  /**
   * Makes the console, once, before any other native of the engine: builds the key tables and the
   * graphics object. A second call makes a second console and loses the first.
   *
   * @return the console's address as a number, not 0
   */
  public static native int n_init();

  /**
   * Opens the game window, replacing any display; from full screen the desktop's mode and windows
   * come back first. The first event after it is {@code ApplicationEvent.RESIZED}.
   *
   * @param title the caption; null for none
   * @param width client area width in pixels
   * @param height client area height in pixels
   * @param frame one of {@link FrameStyle}
   * @return false when the window's size could not be worked out
   */
  public static native boolean n_createWindow(String title, int width, int height, int frame);

  /**
   * Goes full screen in the given mode with a window of that size, replacing any display.
   *
   * @param width screen width in pixels
   * @param height screen height in pixels
   * @param bits bits per pixel, or {@link FrameStyle#UNSPECIFIED}
   * @param refresh refresh rate in hertz, or {@link FrameStyle#UNSPECIFIED}
   * @return true
   */
  public static native boolean n_createDisplay(int width, int height, int bits, int refresh);

  /**
   * Closes the window with its graphics device and gives the screen its default mode back.
   *
   * @return true
   */
  public static native boolean n_disposeDisplay();

  /**
   * Makes the graphics device on the window, replacing any device: native arrays carry over,
   * textures do not.
   *
   * @param pixelFormat the {@link PixelFormat#format} of an entry of {@link #n_getPixelFormatList},
   *     or 0; the back buffer takes the display's format in any case
   * @return whether the device was made; false without a window
   */
  public static native boolean n_createGraphics(long pixelFormat);

  /**
   * Releases the graphics device; a display change does this by itself.
   */
  public static native void n_disposeGraphics();

  /**
   * Begins a frame's drawing.
   *
   * @return false without a window or device: draw nothing then
   */
  public static native boolean n_makeCurrent();

  /**
   * Ends a frame's drawing, after {@link #n_makeCurrent}.
   */
  public static native void n_free();

  /**
   * Shows the frame drawn.
   */
  public static native void n_swapBuffers();

  /**
   * The per-frame tick, before the events are fetched: follows the pointer in and out of the client
   * area, moves a caption-only window being dragged, and takes the keyboard's state for {@link
   * #n_isKeyPressed} and the modifiers.
   */
  public static native void n_update();

  /**
   * Minimises the window; from full screen the desktop's mode comes back first.
   *
   * @param restoreMode whether restoring the window sets the full-screen mode again
   */
  public static native void n_minimize(boolean restoreMode);

  /**
   * A millisecond clock for the game's timing.
   *
   * @return milliseconds from an arbitrary start; it wraps around
   */
  public static native int n_getTimeMillis();

  /**
   * Whether the window is the active one.
   *
   * @return true while it has the focus
   */
  public static native boolean n_isForeProcess();

  /**
   * The size of the client area.
   *
   * @return the width in the high 16 bits, the height in the low 16 bits
   */
  public static native int n_getScreenSize();

  /**
   * The window's handle.
   *
   * @return the handle, 0 without a window
   */
  public static native int n_getWindowHandle();

  /**
   * Kept for compatibility: the setting is stored and has no effect.
   *
   * @param enabled ignored
   */
  public static native void n_enableScreenSaver(boolean enabled);

  /**
   * Reserved: does nothing.
   *
   * @param a ignored
   * @param b ignored
   * @return 0
   */
  public static native int n_command(int a, int b);

  // Event pump
  /**
   * The next event, one per call: call until null every frame, after {@link #n_update}. The event
   * stays valid until the next call.
   *
   * @return a {@code KeyEvent}, {@code MouseEvent}, {@code ApplicationEvent}, {@code
   *     InputMethodEvent} or {@code DropTargetEvent}; null when there are none (or after a resize,
   *     which may leave events for the next frame)
   */
  public static native Object n_peekEvent();

  /**
   * Switches event ids off for good: those events are never made. Input method events cannot be
   * switched off.
   *
   * @param ids event ids, 0 to 3999
   */
  public static native void n_disableEvents(int[] ids);

  // Keyboard and mouse
  /**
   * Whether a key was down at the last {@link #n_update}.
   *
   * @param keyCode a {@code KeyCode} below 256; other codes cannot be polled and answer false
   * @return true when it was down
   */
  public static native boolean n_isKeyPressed(int keyCode);

  /**
   * The modifier keys and mouse buttons held at the last {@link #n_update}.
   *
   * @return the bits of {@code Modifiers}
   */
  public static native int n_getModifiers();

  /**
   * Where the pointer is, relative to the client area.
   *
   * @return x in the high 16 bits, y in the low 16 bits
   */
  public static native int n_getMousePos();

  /**
   * Moves the pointer.
   *
   * @param x pixels from the client area's left edge (from the screen's in full screen)
   * @param y pixels from the client area's top edge (from the screen's in full screen)
   */
  public static native void n_setMousePos(int x, int y);

  /**
   * Shows or hides the pointer over the client area; outside it the pointer always shows.
   *
   * @param visible whether it shows
   */
  public static native void n_setCursorVisible(boolean visible);

  // Input methods
  /**
   * Attaches the input method to the window or, for false, cancels any composition and detaches it.
   *
   * @param enabled whether the input method may be used
   */
  public static native void n_enableInputMethods(boolean enabled);

  /**
   * Active input: the game draws the composition itself from {@code InputMethodEvent}s.
   *
   * @return 1
   */
  public static native int n_setInputMethodActiveMode();

  /**
   * Passive input: the system shows composition and candidates, and the game gets the finished
   * characters as typed keys.
   *
   * @param passive true and false alike
   */
  public static native void n_setInputMethodPassiveMode(boolean passive);

  /**
   * Where the input method's candidate list opens next.
   *
   * @param x pixels from the client area's left edge
   * @param y pixels from the client area's top edge
   */
  public static native void n_setCandidateLocation(int x, int y);

  // Display modes
  /**
   * The screen's present mode.
   *
   * @return the mode
   */
  public static native DisplayMode n_getDisplayMode();

  /**
   * The modes the screen offers.
   *
   * @return the modes
   */
  public static native DisplayMode[] n_getDisplayModeList();

  /**
   * Kept for compatibility: always false; use {@link #n_getDisplayModeList}.
   *
   * @param width ignored
   * @param height ignored
   * @param bits ignored
   * @param refresh ignored
   * @return false
   */
  public static native boolean n_isDisplayAvailable(int width, int height, int bits, int refresh);

  /**
   * The back-buffer formats the graphics device can use, the desktop's last.
   *
   * @return the formats
   */
  public static native PixelFormat[] n_getPixelFormatList();

  // Drag and drop
  /**
   * Lets files be dropped on the window from other programs ({@code DropTargetEvent}s).
   *
   * @param enabled whether drops are taken
   */
  public static native void n_enableDrop(boolean enabled);

  // Inline web views
  /**
   * Shows the selected web view at a place of the client area; a shown view is not moved.
   *
   * @param x left edge, pixels from the client area's left
   * @param y top edge, pixels from the client area's top
   * @param width width in pixels
   * @param height height in pixels
   */
  public static native void n_showInlineWeb(int x, int y, int width, int height);

  /**
   * Closes the selected web view; its address is kept.
   */
  public static native void n_hideInlineWeb();

  /**
   * Sets the selected web view's address, and loads it when the view is shown.
   *
   * @param url the address
   */
  public static native void n_setInlineWebURL(String url);

  /**
   * The selected web view's address.
   *
   * @return the address, or null
   */
  public static native String n_getInlineWebURL();

  /**
   * Selects the web view the other web natives act on.
   *
   * @param slot 0 to 9; other values are ignored
   */
  public static native void n_selectInlineWeb(int slot);

  /**
   * Reserved.
   *
   * @param param ignored
   * @return 0
   */
  public static native int n_getInlineWebParam(int param);

  /**
   * Reserved: does nothing.
   *
   * @param param ignored
   * @param value ignored
   */
  public static native void n_setInlineWebParam(int param, int value);

  // Game controllers
  /**
   * Looks for game controllers; the controllers of an earlier scan are dead afterwards.
   *
   * @return the controllers found, possibly none
   */
  public static native Controller[] n_scanControllers();

  // Factories the library calls.
  static KeyEvent createKeyEvent(int id, int modifiers, int keyCode, char keyChar) {
    return new KeyEvent(id, modifiers, keyCode, keyChar);
  }

  static MouseEvent createMouseEvent(int id, int modifiers, int x, int y, int clickCount,
      boolean popupTrigger, int wheelRotation) {
    return new MouseEvent(id, modifiers, x, y, clickCount, popupTrigger, wheelRotation);
  }

  static ApplicationEvent createApplicationEvent(int id) {
    return new ApplicationEvent(id);
  }

  static InputMethodEvent createInputMethodEvent(int id, String text, int[] attributes,
      int committedCount, int caret) {
    return new InputMethodEvent(id, text, attributes, committedCount, caret);
  }

  static DropTargetEvent createDropTargetEvent(int id, int keyState, int x, int y, Object files) {
    return new DropTargetEvent(id, keyState, x, y, files);
  }

  static DisplayMode createDisplayMode(int width, int height, int bits, int refresh) {
    return new DisplayMode(width, height, bits, refresh);
  }

  static PixelFormat createPixelFormat(long format, int colorBits, int redBits, int greenBits,
      int blueBits, int alphaBits, int depthBits, int stencilBits) {
    return new PixelFormat(format, colorBits, redBits, greenBits, blueBits, alphaBits, depthBits,
        stencilBits);
  }

  static Controller createController(String name, long handle) {
    return new Controller(name, handle);
  }
}
