package vostan.test.misuse;

import mirelo.app.ControllerMisuse;
import mirelo.app.win32.MusicMisuse;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLArray;
import mirelo.gfx.GLGraphics;
import mirelo.gfx.font.FontMisuse;

/**
 * Controllers, fonts, the music system and native arrays with made-up handles and nulls, before
 * and after the console and its device. Usage: LaterMisuse [HOSTILE.ogg]
 */
public final class LaterMisuse {
  private LaterMisuse() {}

  private static void arrays(Cases c, String when) {
    c.quiet(when + ": native arrays on made-up handles and nulls", () -> {
      GLArray.deleteGLArray(12345);
      GLArray.dispose(-1);
      GLArray.memcpy(12345, 0, 678, 0, 16);
      GLArray.memcpy(null, 12345, 0, 0, 16);
      GLArray.memcpy(12345, null, 0, 0, 16);
      GLArray.memcpy(new byte[4], 12345, 0, 0, 1 << 20);
      GLArray.memcpy(12345, new float[4], -1, 0, 16);
      GLArray.newGLArray(0, -1);
      GLArray.newGLArray(0, Integer.MAX_VALUE, null);
      GLArray.newGLArray(0, 16, "not an array");
      GLArray.compact();
      GLGraphics.n_mglPointer(0, 12345);
      GLGraphics.n_mglDrawIndexed(4, 0, 3, 0, 3, null);
      GLGraphics.n_mglDrawIndexed(4, 0, 3, 0, 30000, new short[3]);
      GLGraphics.n_mglDrawIndexedR(4, 0, 3, 0, 3, 12345);
      GLGraphics.n_mglSetupShadow(12345, null, 0);
      GLGraphics.n_mglSetupShadow(0, new float[2], 0);
      GLGraphics.n_mglStartRenderTexture(12345, 0, 0, 0, -1, -1);
      GLGraphics.n_mglFinishRenderTexture();
      GLGraphics.n_mglFinishShadow(0);
    });
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    Cases c = new Cases("later");
    String hostileOgg = args.length > 0 ? args[0] : null;
    ControllerMisuse.run(c, "before n_init");
    FontMisuse.run(c, "before n_init");
    arrays(c, "before n_init");
    c.quiet("n_scanControllers before n_init", WinConsole::n_scanControllers);
    WinConsole.n_init();
    c.check(WinConsole.n_createWindow("later", 64, 64, 1), "window");
    arrays(c, "before n_createGraphics");
    c.check(WinConsole.n_createGraphics(0), "graphics");
    arrays(c, "with a device");
    ControllerMisuse.run(c, "with a window");
    FontMisuse.run(c, "with a device");
    MusicMisuse.run(c, hostileOgg);
    WinConsole.n_disposeGraphics();
    arrays(c, "after n_disposeGraphics");
    WinConsole.n_disposeDisplay();
    c.finish();
  }
}
