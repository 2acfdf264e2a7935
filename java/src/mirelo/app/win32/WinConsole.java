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
 * static and act on the one console that {@link #n_init} makes.
 */
public final class WinConsole {
  private WinConsole() {}

  // Lifecycle
  public static native int n_init();

  public static native boolean n_createWindow(String title, int width, int height, int frame);

  public static native boolean n_createDisplay(int width, int height, int bits, int refresh);

  public static native boolean n_disposeDisplay();

  public static native boolean n_createGraphics(long pixelFormat);

  public static native void n_disposeGraphics();

  public static native boolean n_makeCurrent();

  public static native void n_free();

  public static native void n_swapBuffers();

  public static native void n_update();

  public static native void n_minimize(boolean restoreMode);

  public static native int n_getTimeMillis();

  public static native boolean n_isForeProcess();

  public static native int n_getScreenSize();

  public static native int n_getWindowHandle();

  public static native void n_enableScreenSaver(boolean enabled);

  public static native int n_command(int a, int b);

  // Event pump
  public static native Object n_peekEvent();

  public static native void n_disableEvents(int[] ids);

  // Keyboard and mouse
  public static native boolean n_isKeyPressed(int keyCode);

  public static native int n_getModifiers();

  public static native int n_getMousePos();

  public static native void n_setMousePos(int x, int y);

  public static native void n_setCursorVisible(boolean visible);

  // Input methods
  public static native void n_enableInputMethods(boolean enabled);

  public static native int n_setInputMethodActiveMode();

  public static native void n_setInputMethodPassiveMode(boolean passive);

  public static native void n_setCandidateLocation(int x, int y);

  // Display modes
  public static native DisplayMode n_getDisplayMode();

  public static native DisplayMode[] n_getDisplayModeList();

  public static native boolean n_isDisplayAvailable(int width, int height, int bits, int refresh);

  public static native PixelFormat[] n_getPixelFormatList();

  // Drag and drop
  public static native void n_enableDrop(boolean enabled);

  // Inline web views
  public static native void n_showInlineWeb(int x, int y, int width, int height);

  public static native void n_hideInlineWeb();

  public static native void n_setInlineWebURL(String url);

  public static native String n_getInlineWebURL();

  public static native void n_selectInlineWeb(int slot);

  public static native int n_getInlineWebParam(int param);

  public static native void n_setInlineWebParam(int param, int value);

  // Game controllers
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
