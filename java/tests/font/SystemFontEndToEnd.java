package vostan.test;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;
import mirelo.gfx.font.SystemFont;

/**
 * System fonts from Java: characters measured and drawn into a texture, the texture drawn over
 * the window, and the glyphs' ink looked for where their cells lie; then calls with bad handles,
 * objects and files, which must do nothing.
 */
public final class SystemFontEndToEnd {
  private static final int GL_TEXTURE_2D = 3553;
  private static final int GL_RGBA = 6408;
  private static final int GL_UNSIGNED_BYTE = 5121;
  private static final int WIDTH = 256;
  private static final int HEIGHT = 64;

  private static int failures = 0;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  /** A cell drawn into the texture: where it lies. */
  private static final class Cell {
    final int x;
    final int width;
    final int height;

    Cell(int x, int width, int height) {
      this.x = x;
      this.width = width;
      this.height = height;
    }
  }

  /** Lays out `text` on row 0 of the bound texture from `x`, as Java's text engine would. */
  private static Cell[] draw(SystemFont font, long handle, String text, int x) {
    Cell[] cells = new Cell[text.length()];
    for (int i = 0; i < text.length(); i++) {
      SystemFont.CharacterInfo info = new SystemFont.CharacterInfo();
      font.n_initCharacter(handle, text.charAt(i), info);
      font.n_createCache(handle, text.charAt(i), x, 0, info.cwidth, info.cheight, 0, 0, 0,
          info.usealt);
      cells[i] = new Cell(x, info.cwidth, info.cheight);
      x += Math.max(info.cwidth, (int) info.advance) + 2;
    }
    return cells;
  }

  private static boolean white(int argb) {
    return ((argb >> 16) & 0xFF) > 200 && ((argb >> 8) & 0xFF) > 200 && (argb & 0xFF) > 200;
  }

  private static boolean blue(int argb) {
    return (argb & 0xFFFFFF) == 0x0000FF;
  }

  private static boolean dark(int argb) {
    return ((argb >> 16) & 0xFF) < 40 && ((argb >> 8) & 0xFF) < 40 && (argb & 0xFF) < 120;
  }

  /** How many window pixels in the rectangle pass the test. */
  private interface PixelTest {
    boolean test(int argb);
  }

  private static int count(int x0, int y0, int x1, int y1, PixelTest t) {
    int n = 0;
    for (int y = y0; y < y1; y++) {
      for (int x = x0; x < x1; x++) {
        if (t.test(GfxHooks.pixel(x, y))) n++;
      }
    }
    return n;
  }

  private static int clearTexture(int texture) {
    GLGraphics.n_mglTexImage2D(texture, GL_TEXTURE_2D, 0, GL_RGBA, WIDTH, HEIGHT, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, null);
    return texture;
  }

  private static String writeFile(String name, byte[] bytes) throws IOException {
    File f = File.createTempFile(name, ".ttf");
    f.deleteOnExit();
    try (FileOutputStream out = new FileOutputStream(f)) {
      out.write(bytes);
    }
    return f.getPath();
  }

  public static void main(String[] args) throws IOException {
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("fonts", WIDTH, HEIGHT, 1), "window");
    check(WinConsole.n_createGraphics(0), "n_createGraphics");
    check(WinConsole.n_makeCurrent(), "n_makeCurrent");
    GLGraphics.n_mglSetMatrix(0, new float[] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    GLGraphics.n_mglViewPort(0, 0, WIDTH, HEIGHT);
    GLGraphics.n_mglSetEnable(3042, true);
    GLGraphics.n_mglSetBlend(1);
    int texture = clearTexture(GLGraphics.n_mglCreateTexture());

    SystemFont font = new SystemFont();
    long handle = font.n_init("DejaVu Sans", -24, SystemFont.ANTI_ALIASED);
    check(handle != 0, "a font");
    check(font.avascent > 15 && font.avdescent > 3 && font.height == font.avascent
        + font.avdescent, "line metrics " + font.avascent + "+" + font.avdescent);
    check(font.canvash == (int) font.height + 2 && font.canvasw % 4 == 2, "canvas "
        + font.canvasw + "x" + font.canvash);

    // Latin from the main font, CJK from the alternate, and a space between.
    font.n_setAltFont(handle, "WenQuanYi Micro Hei", -24, SystemFont.ANTI_ALIASED, 0, 0);
    SystemFont.CharacterInfo info = new SystemFont.CharacterInfo();
    font.n_initCharacter(handle, '\u4e2d', info);
    check(info.usealt && info.cwidth > 15, "the CJK character comes from the alternate font");
    Cell[] cells = draw(font, handle, "Hg \u4e2d", 4);
    TextureEndToEnd.drawBound();
    for (int i = 0; i < cells.length; i++) {
      Cell c = cells[i];
      int ink = count(c.x, 0, c.x + Math.max(c.width, 1), c.height, SystemFontEndToEnd::white);
      check(i == 2 ? c.width == 0 : ink > 20, "cell " + i + " at " + c.x + ": " + ink
          + " white pixels");
    }
    Cell last = cells[cells.length - 1];
    check(count(last.x + last.width, 0, WIDTH, HEIGHT, SystemFontEndToEnd::blue)
        == (WIDTH - last.x - last.width) * HEIGHT, "no ink right of the text");
    check(count(0, last.height, WIDTH, HEIGHT, SystemFontEndToEnd::blue)
        == WIDTH * (HEIGHT - last.height), "no ink below the cells");

    // The outlined font: 5 wider canvas, and a dark edge around a light body.
    SystemFont outlined = new SystemFont();
    long haloed =
        outlined.n_init("DejaVu Sans", -24, SystemFont.ANTI_ALIASED | SystemFont.OUTLINED);
    check(outlined.canvasw == font.canvasw + 5, "outlined canvas is 5 wider");
    clearTexture(texture);
    Cell o = draw(outlined, haloed, "O", 0)[0];
    TextureEndToEnd.drawBound();
    check(count(0, 0, o.width, o.height, SystemFontEndToEnd::dark) > 20
        && count(0, 0, o.width, o.height, SystemFontEndToEnd::white) > 20, "halo round a body");

    // Bad input does nothing: dead handles, null and foreign objects, null and damaged files.
    clearTexture(texture);
    SystemFont.CharacterInfo untouched = new SystemFont.CharacterInfo();
    font.n_initCharacter(handle + 8, 'A', untouched);
    font.n_initCharacter(0x12345678L, 'A', untouched);
    font.n_initCharacter(handle, 'A', null);
    font.n_initCharacter(handle, 'A', "not a character object");
    check(untouched.cwidth == 0 && untouched.advance == 0, "dead handles write nothing");
    font.n_createCache(0x12345678L, 'A', 0, 0, 20, 20, 0, 0, 0, false);
    font.n_createCache(handle, 'A', WIDTH - 2, HEIGHT - 2, 20, 20, 0, 0, 0, false);
    font.n_createCache(handle, 'A', -10, 0, 20, 20, 0, 0, 0, false);
    font.n_createCache(handle, 'A', 0, 0, -20, Integer.MIN_VALUE, 0, 0, 0, true);
    font.n_setAltFont(0x12345678L, "DejaVu Sans", -24, 0, 0, 0);
    font.n_setAltFont(handle, null, -24, 0, 0, 0);
    TextureEndToEnd.drawBound();
    check(count(0, 0, WIDTH, HEIGHT, SystemFontEndToEnd::blue) == WIDTH * HEIGHT,
        "nothing drawn");

    SystemFont missing = new SystemFont();
    long none = missing.n_init("No Such Family Anywhere", 20, SystemFont.ANTI_ALIASED);
    check(none != 0 && missing.height == 0, "a missing family gives a font without glyphs");
    SystemFont nameless = new SystemFont();
    check(nameless.n_init(null, Integer.MIN_VALUE, -1) != 0, "a null face");

    check(SystemFont.n_activateFont(null) == 0, "no path");
    check(SystemFont.n_activateFont("/nowhere/font.ttf") == 0, "no file");
    byte[] noise = new byte[2048];
    new java.util.Random(3).nextBytes(noise);
    check(SystemFont.n_activateFont(writeFile("noise", noise)) == 0, "a damaged file is refused");
    byte[] good = java.nio.file.Files.readAllBytes(
        java.nio.file.Paths.get("/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf"));
    check(SystemFont.n_activateFont(writeFile("good", good)) == 1, "a font file adds one face");

    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    System.out.println(failures == 0 ? "all passed" : failures + " failed");
    System.exit(failures == 0 ? 0 : 1);
  }
}
