package vostan.test.misuse;

import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;

/** The console and the graphics natives called too early, too late and with nulls. */
public final class ConsoleMisuse {
  private static final float[] IDENTITY = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

  private ConsoleMisuse() {}

  /** Every graphics native that needs a device, called when there is none. */
  static void graphicsWithoutDevice(Cases c, String when) {
    c.quiet(when + ": state and matrices do nothing", () -> {
      GLGraphics.n_mglSetEnable(3042, true);
      GLGraphics.n_mglSetBlend(1);
      GLGraphics.n_mglClearColor(1, 0, 0, 1);
      GLGraphics.n_mglClear(0x4000);
      GLGraphics.n_mglClear(0x4000, 0, 0, 1, 1);
      GLGraphics.n_mglViewPort(0, 0, 10, 10);
      GLGraphics.n_mglScissor(0, 0, 10, 10);
      GLGraphics.n_mglSetMatrix(0, IDENTITY);
      GLGraphics.n_mglTexGen(0, IDENTITY);
      GLGraphics.n_mglPushAttrib(0);
      GLGraphics.n_mglPopAttrib();
      GLGraphics.n_mglTextureStageState(10240, 9728);
      GLGraphics.n_mglColor4f(1, 1, 1, 1);
      GLGraphics.n_mglColor4ub((byte) 1, (byte) 2, (byte) 3, (byte) 4);
      GLGraphics.n_mglDepthWrite(1);
    });
    c.quiet(when + ": a batch draws nothing", () -> {
      GLGraphics.n_mglBegin(7);
      GLGraphics.n_mglT2fV2f(0, 0, 0, 0);
      GLGraphics.n_mglVertex3f(0, 0, 0);
      GLGraphics.n_mglEnd();
      GLGraphics.n_mglEnd();
    });
    c.check(GLGraphics.n_mglGetString(7938) == null, when + ": no device string");
    c.check(GLGraphics.n_mglCreateTexture() == 0, when + ": no texture handle");
    c.check(GLGraphics.n_mglGetTextureStageState(4096) == 0, when + ": nothing bound");
    c.quiet(when + ": texture calls do nothing", () -> {
      GLGraphics.n_mglBindTexture(0x1234);
      GLGraphics.n_mglDeleteTexture(0x1234);
      GLGraphics.n_mglTexImage2D(0x1234, 3553, 0, 6408, 4, 4, 0, 6408, 5121, new byte[64]);
      GLGraphics.n_mglTexSubImage2D(3553, 0, 0, 0, 4, 4, 6408, 5121, new byte[64]);
      GLGraphics.n_mglReadPixels(0, 0, 4, 4, 6408, 5121, new byte[64]);
    });
  }

  /** Web view calls on slots that do not exist, with null text and sizes past any window. */
  static void webViews() {
    for (int slot : new int[] {-1, 10, Integer.MIN_VALUE, 3}) {
      WinConsole.n_selectInlineWeb(slot);
      WinConsole.n_setInlineWebURL(null);
      WinConsole.n_showInlineWeb(-5, -5, Integer.MAX_VALUE, -1);
      WinConsole.n_setInlineWebParam(-1, 7);
      WinConsole.n_getInlineWebParam(Integer.MAX_VALUE);
      WinConsole.n_hideInlineWeb();
    }
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    Cases c = new Cases("console");

    // Before n_init: no console, so nothing happens and nothing is answered.
    c.check(!WinConsole.n_createWindow("early", 64, 64, 1), "n_createWindow before n_init");
    c.check(!WinConsole.n_createGraphics(0), "n_createGraphics before n_init");
    c.check(!WinConsole.n_makeCurrent(), "n_makeCurrent before n_init");
    c.quiet("the frame natives before n_init", () -> {
      WinConsole.n_update();
      WinConsole.n_free();
      WinConsole.n_swapBuffers();
      WinConsole.n_disposeGraphics();
      WinConsole.n_minimize(true);
      WinConsole.n_enableScreenSaver(false);
      WinConsole.n_disableEvents(new int[] {500, 501});
      WinConsole.n_setMousePos(3, 4);
      WinConsole.n_setCursorVisible(false);
      WinConsole.n_enableInputMethods(true);
      WinConsole.n_setInputMethodPassiveMode(true);
      WinConsole.n_setCandidateLocation(1, 2);
      WinConsole.n_enableDrop(true);
      webViews();
    });
    c.check(WinConsole.n_getInlineWebURL() == null, "no web page before n_init");
    c.check(WinConsole.n_peekEvent() == null, "n_peekEvent before n_init");
    c.check(WinConsole.n_getScreenSize() == 0 && WinConsole.n_getWindowHandle() == 0
        && WinConsole.n_getModifiers() == 0 && !WinConsole.n_isForeProcess(),
        "console queries before n_init answer nothing");
    c.check(WinConsole.n_getPixelFormatList() == null, "no pixel formats before n_init");
    graphicsWithoutDevice(c, "before n_init");

    WinConsole.n_init();
    c.check(WinConsole.n_peekEvent() == null, "no event without a window");
    c.quiet("n_update and events without a window", () -> {
      WinConsole.n_update();
      WinConsole.n_disableEvents(null);
      WinConsole.n_disableEvents(new int[0]);
    });
    graphicsWithoutDevice(c, "before n_createGraphics");
    c.check(WinConsole.n_createWindow(null, 64, 64, 1), "a window with no title");
    graphicsWithoutDevice(c, "with a window, before n_createGraphics");
    c.quiet("web views with bad slots, sizes and a null address", ConsoleMisuse::webViews);
    c.check(WinConsole.n_createGraphics(0), "graphics");
    c.check(WinConsole.n_makeCurrent(), "a scene");
    c.check(GLGraphics.n_mglGetString(7938) != null, "the device string with a device");
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    graphicsWithoutDevice(c, "after n_disposeGraphics");
    c.check(!WinConsole.n_makeCurrent(), "no scene after n_disposeGraphics");
    c.check(WinConsole.n_createGraphics(0), "graphics again");
    c.check(GLGraphics.n_mglCreateTexture() != 0, "textures again");
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    c.quiet("the frame after n_disposeDisplay", () -> {
      WinConsole.n_update();
      while (WinConsole.n_peekEvent() != null) {}
      WinConsole.n_free();
      WinConsole.n_swapBuffers();
    });
    graphicsWithoutDevice(c, "after n_disposeDisplay");
    c.finish();
  }
}
