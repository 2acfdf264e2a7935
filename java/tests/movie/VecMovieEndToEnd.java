package mirelo.app;

import java.awt.image.BufferedImage;
import java.awt.image.WritableRaster;
import java.io.File;
import java.nio.file.Files;
import java.util.Arrays;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;
import vostan.test.MovieHooks;

/**
 * A movie from Java into a texture: what the texture holds equals what vostan-movie writes for the
 * same frame. Usage: VecMovieEndToEnd SAMPLE.swf VOSTAN_MOVIE WORK_DIR
 */
public final class VecMovieEndToEnd {
  private static final int GL_TEXTURE_2D = 3553;
  private static final int GL_RGBA = 6408;
  private static final int GL_UNSIGNED_BYTE = 5121;

  private static int failures = 0;
  private static String exporter;
  private static File swf;
  private static File work;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  /** The exporter's premultiplied picture of a frame, as RGBA bytes. */
  private static byte[] exported(int frame, int width, int height) throws Exception {
    File png = new File(work, "frame" + frame + "-" + width + "x" + height + ".png");
    Process p = new ProcessBuilder(exporter, "render", swf.getPath(), "--frame",
        Integer.toString(frame), "--size", width + "x" + height, "--premultiplied", "--out",
        png.getPath()).inheritIO().start();
    check(p.waitFor() == 0, "vostan-movie wrote " + png.getName());
    BufferedImage image = javax.imageio.ImageIO.read(png);
    WritableRaster raster = image.getRaster();
    byte[] rgba = new byte[width * height * 4];
    int[] px = new int[4];
    for (int y = 0; y < height; y++) {
      for (int x = 0; x < width; x++) {
        raster.getPixel(x, y, px);
        for (int k = 0; k < 4; k++) rgba[(y * width + x) * 4 + k] = (byte) px[k];
      }
    }
    return rgba;
  }

  /** The top-left width by height pixels of a texture of textureWidth columns. */
  private static byte[] corner(byte[] rgba, int textureWidth, int width, int height) {
    byte[] out = new byte[width * height * 4];
    for (int y = 0; y < height; y++)
      System.arraycopy(rgba, y * textureWidth * 4, out, y * width * 4, width * 4);
    return out;
  }

  private static String firstDifference(byte[] a, byte[] b, int width) {
    if (a == null || b == null || a.length != b.length) return "sizes differ";
    for (int i = 0; i < a.length; i++) {
      if (a[i] != b[i]) {
        int pixel = i / 4;
        return "first difference at (" + pixel % width + ", " + pixel / width + ")";
      }
    }
    return "equal";
  }

  private static int texture(int width, int height) {
    int t = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(t, GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, null);
    return t;
  }

  public static void main(String[] args) throws Exception {
    swf = new File(args[0]);
    exporter = args[1];
    work = new File(args[2]);
    work.mkdirs();
    System.loadLibrary("vostan");
    WinConsole.n_init();
    check(WinConsole.n_createWindow("movie", 64, 64, 1), "window");
    check(WinConsole.n_createGraphics(0), "n_createGraphics");
    check(WinConsole.n_makeCurrent(), "n_makeCurrent");

    VecMovie v = new VecMovie();
    check(v.n_init(null, 0, 0, 10, 10) == 0, "a null array opens nothing");
    byte[] bytes = Files.readAllBytes(swf.toPath());
    byte[] garbage = Arrays.copyOf(bytes, bytes.length);
    garbage[0] = 'G';
    check(v.n_init(garbage, 0, garbage.length, 10, 10) == 0, "neither does a bad signature");
    // The movie's bytes may lie anywhere in the array.
    byte[] padded = new byte[bytes.length + 11];
    System.arraycopy(bytes, 0, padded, 7, bytes.length);
    long m = v.n_init(padded, 7, bytes.length, 550, 400);
    check(m != 0, "opened from an offset");
    Arrays.fill(padded, (byte) 0);  // the movie keeps nothing of the array

    check(v.n_getParamf(m, 0) == 24.5f, "frame rate " + v.n_getParamf(m, 0));
    check(v.n_getParamf(m, 1) == 3.0f, "frame count " + v.n_getParamf(m, 1));
    check(v.n_getParamf(m, 2) == 0.0f, "other parameters are 0");
    long root = v.n_getRootClip(m);
    check("_level0".equals(v.n_getClipParamv(root, 0)), "root name " + v.n_getClipParamv(root, 0));
    check(v.n_getClipParamv(root, 1) == null, "other string parameters are null");

    int big = texture(640, 480);
    v.n_moveClipFrame(m, root, 1);
    v.n_drawToTexture(m, 0, 0, 0);
    byte[] first = MovieHooks.textureRgba(big);
    byte[] expected1 = exported(1, 550, 400);
    byte[] got1 = corner(first, 640, 550, 400);
    check(Arrays.equals(got1, expected1),
        "frame 1 in the texture equals the exporter's: " + firstDifference(got1, expected1, 550));

    // Hit tests and names through the natives; the cases live in the C++ tests.
    long hero = v.n_getHitClip(m, 205, 105);
    check(hero != 0 && "hero".equals(v.n_getClipParamv(hero, 0)), "hit inside the hero's square");
    check(v.n_getClipParamf(hero, 1) == 2.0f, "the hero has 2 frames");
    check("instance7".equals(v.n_getClipParamv(v.n_getHitClip(m, 355, 305), 0)),
        "an unnamed sprite at depth 7 is instance7");
    check(v.n_getHitClip(m, 266, 105) == 0, "just right of the hero's square: nothing");

    // Scribble on the texture: a draw with nothing changed uploads the whole unchanged
    // surface once more, over the scribble.
    GLGraphics.n_mglTexSubImage2D(GL_TEXTURE_2D, 0, 500, 350, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE,
        new byte[] {1, 2, 3, 4, 5, 6, 7, 8});
    check(!Arrays.equals(MovieHooks.textureRgba(big), first), "the scribble is in the texture");
    v.n_drawToTexture(m, 0, 0, 0);
    check(Arrays.equals(MovieHooks.textureRgba(big), first), "second draw: the same pixels");

    // Frame 2 drawn over frame 1 (only what changed) equals frame 2 drawn afresh.
    v.n_moveClipFrame(m, root, 2);
    v.n_drawToTexture(m, 0, 0, 0);
    byte[] got2 = corner(MovieHooks.textureRgba(big), 640, 550, 400);
    byte[] expected2 = exported(2, 550, 400);
    check(Arrays.equals(got2, expected2),
        "frame 2 after frame 1 equals the exporter's: " + firstDifference(got2, expected2, 550));

    // A texture smaller than the surface is left alone.
    int small = texture(100, 100);
    byte[] before = MovieHooks.textureRgba(small);
    v.n_moveClipFrame(m, root, 0);
    v.n_drawToTexture(m, 0, 0, 0);
    check(Arrays.equals(MovieHooks.textureRgba(small), before), "a small texture is untouched");

    // A new size, drawn at an offset.
    GLGraphics.n_mglBindTexture(big);
    v.n_setSize(m, 275, 200);
    v.n_drawToTexture(m, 0, 0, 0);
    byte[] half = corner(MovieHooks.textureRgba(big), 640, 275, 200);
    byte[] expectedHalf = exported(0, 275, 200);
    check(Arrays.equals(half, expectedHalf),
        "a resized movie redraws all: " + firstDifference(half, expectedHalf, 275));

    v.n_dispose(m);
    v.n_dispose(0);
    v.n_setSize(0, 10, 10);
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    System.out.println(failures == 0 ? "all passed" : failures + " failed");
    System.exit(failures == 0 ? 0 : 1);
  }
}
