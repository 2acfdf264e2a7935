package vostan.test;

import java.io.File;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;
import mirelo.gfx.PixelFormat;
import vostan.demo.QuadScene;

/** The graphics device from Java: formats, strings, and the demo scene's pixels. */
public final class QuadSceneTest {
  private static int failures = 0;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  private static String hex(int argb) {
    return String.format("%08x", argb);
  }

  private static boolean near(int argb, int expected, int tolerance) {
    for (int shift = 0; shift < 24; shift += 8) {
      int a = (argb >> shift) & 0xFF;
      int e = (expected >> shift) & 0xFF;
      if (Math.abs(a - e) > tolerance) return false;
    }
    return true;
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("graphics", 160, 120, 1), "window");
    PixelFormat[] formats = WinConsole.n_getPixelFormatList();
    check(formats != null && formats.length >= 2, "pixel formats: "
        + (formats == null ? "null" : java.util.Arrays.toString(formats)));
    check(formats != null && formats[formats.length - 1].format == 0
        && formats[formats.length - 1].colorBits == 24 && formats[0].depthBits == 24
        && formats[0].stencilBits == 8, "the desktop's format comes last with 24 bits");
    check(WinConsole.n_createGraphics(0), "n_createGraphics");
    check("D3D9".equals(GLGraphics.n_mglGetString(7938)), "version string");
    check(GLGraphics.n_mglGetString(7939).contains("GL_ARB_shader_objects"), "extensions");

    QuadScene scene = new QuadScene();
    check(WinConsole.n_makeCurrent(), "n_makeCurrent");
    scene.draw(160, 120, 0.0f);
    final int clear = 0xFF1A1A4C;  // 0.1, 0.1, 0.3
    check(near(GfxHooks.pixel(2, 2), clear, 1), "corner is the clear colour: "
        + hex(GfxHooks.pixel(2, 2)));
    // The quad spans half the height, 30 pixels either side of the centre, and is cut into
    // triangles along its red to blue diagonal: the centre is half of each.
    int centre = GfxHooks.pixel(80, 60);
    check(near(centre, 0xFF7F007F, 10), "the quad's centre lies on the red-blue diagonal: "
        + hex(centre));
    check(near(GfxHooks.pixel(52, 88), 0xFFFF0000, 40), "bottom left corner red: "
        + hex(GfxHooks.pixel(52, 88)));
    check(near(GfxHooks.pixel(107, 88), 0xFF00FF00, 40), "bottom right corner green: "
        + hex(GfxHooks.pixel(107, 88)));
    check(near(GfxHooks.pixel(107, 32), 0xFF0000FF, 40), "top right corner blue: "
        + hex(GfxHooks.pixel(107, 32)));
    check(near(GfxHooks.pixel(80, 118), 0xFF338033, 2)
        || near(GfxHooks.pixel(80, 118), 0xFF335933, 2), "the floor: "
        + hex(GfxHooks.pixel(80, 118)));
    check(near(GfxHooks.pixel(136, 18), 0xFFFFE533, 2), "the sun: "
        + hex(GfxHooks.pixel(136, 18)));

    // Turned by 45 degrees the square's corners leave the unturned square's corners empty.
    scene.draw(160, 120, (float) (Math.PI / 4));
    check(near(GfxHooks.pixel(53, 33), clear, 1), "a turned quad leaves the old corner: "
        + hex(GfxHooks.pixel(53, 33)));
    check(!near(GfxHooks.pixel(80, 20), clear, 10), "and reaches up to the top: "
        + hex(GfxHooks.pixel(80, 20)));
    File png = new File(System.getProperty("java.io.tmpdir"), "vostan-quad-scene.png");
    png.delete();
    check(QuadScene.writeFramePng(png.getPath()) && png.length() > 100, "frame written to " + png);
    try {
      java.awt.image.BufferedImage picture = javax.imageio.ImageIO.read(png);
      check(picture.getWidth() == 160 && picture.getHeight() == 120
          && picture.getRGB(80, 20) == GfxHooks.pixel(80, 20)
          && picture.getRGB(136, 18) == GfxHooks.pixel(136, 18),
          "the picture holds the back buffer's pixels, top row first");
    } catch (java.io.IOException e) {
      check(false, "picture read back: " + e);
    }

    for (int frame = 0; frame < 10; frame++) {
      scene.draw(160, 120, QuadScene.angleAt(frame * 100L));
      WinConsole.n_swapBuffers();
    }
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    System.out.println(failures == 0 ? "all passed" : failures + " failed");
    System.exit(failures == 0 ? 0 : 1);
  }
}
