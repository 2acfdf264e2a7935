package mirelo.app;

import java.nio.file.Files;
import java.nio.file.Path;
import mirelo.app.win32.WinConsole;
import vostan.test.misuse.Cases;

/**
 * The movie natives with dead, made-up and crossed handles, ranges beyond the array, bad sizes
 * and a file made to hold memory. Usage: MovieMisuse SAMPLE.swf HOSTILE.swf
 */
public final class MovieMisuse {
  private MovieMisuse() {}

  /** Every native on a handle that names no movie, or a clip handle that names no clip. */
  private static void refusedEverywhere(Cases c, VecMovie m, long movie, long clip, String what) {
    c.quiet(what + ": nothing is done", () -> {
      m.n_setSize(movie, 32, 32);
      m.n_drawToTexture(movie, 0, 0, 0);
      m.n_moveClipFrame(movie, clip, 1);
    });
    c.check(m.n_getRootClip(movie) == 0, what + ": no root clip");
    c.check(m.n_getHitClip(movie, 1, 1) == 0, what + ": no hit clip");
    c.check(m.n_getParamf(movie, 1) == 0f, what + ": no frame count");
    c.check(m.n_getClipParamf(clip, 1) == 0f, what + ": no clip frame count");
    c.check(m.n_getClipParamv(clip, 0) == null, what + ": no clip name");
  }

  public static void main(String[] args) throws Exception {
    System.loadLibrary("vostan");
    Cases c = new Cases("movie");
    byte[] sample = Files.readAllBytes(Path.of(args[0]));
    VecMovie m = new VecMovie();

    // Before any console or texture: a movie opens and draws into nothing.
    c.check(m.n_init(null, 0, 0, 16, 16) == 0, "no data, no movie");
    c.check(m.n_init(sample, -1, sample.length, 16, 16) == 0, "negative offset");
    c.check(m.n_init(sample, 0, sample.length + 1, 16, 16) == 0, "length past the array");
    c.check(m.n_init(sample, 10, sample.length - 5, 16, 16) == 0, "range past the array");
    c.check(m.n_init(sample, 0, -3, 16, 16) == 0, "negative length");
    c.check(m.n_init(sample, Integer.MAX_VALUE, Integer.MAX_VALUE, 16, 16) == 0, "huge range");
    c.check(m.n_init(sample, 0, sample.length, -16, 16) == 0, "negative width");
    c.check(m.n_init(sample, 0, sample.length, 100000, 100000) == 0, "a surface beyond memory");
    c.quiet("a cut header reads as zeros", () -> m.n_dispose(m.n_init(new byte[] {'F', 'W', 'S'}, 0, 3, 16, 16)));
    c.check(m.n_init(new byte[64], 0, 64, 16, 16) == 0, "zeros");

    long movie = m.n_init(sample, 0, sample.length, 64, 64);
    c.check(movie != 0, "the sample opens");
    long root = m.n_getRootClip(movie);
    c.check(root != 0 && m.n_getClipParamv(root, 0) != null, "its root clip has a name");
    float frames = m.n_getParamf(movie, 1);
    c.quiet("drawing with no console", () -> m.n_drawToTexture(movie, 0, 0, 0));

    // Made-up handles, and a clip handle where a movie goes and the other way round.
    refusedEverywhere(c, m, 0, 0, "zero handles");
    refusedEverywhere(c, m, 12345, 678, "made-up handles");
    refusedEverywhere(c, m, -1, Long.MIN_VALUE, "negative handles");
    refusedEverywhere(c, m, root, movie, "crossed handles");
    c.quiet("sizes past the surface bound are refused", () -> {
      m.n_setSize(movie, -1, 10);
      m.n_setSize(movie, 65536, 65536);
    });
    c.check(m.n_getParamf(movie, 1) == frames, "the movie is unchanged by all that");

    // A clip of one movie is no clip of another.
    long other = m.n_init(sample, 0, sample.length, 32, 32);
    long otherRoot = m.n_getRootClip(other);
    c.quiet("moving another movie's clip", () -> m.n_moveClipFrame(movie, otherRoot, 1));
    m.n_dispose(other);
    c.check(m.n_getClipParamf(otherRoot, 1) == 0f, "a disposed movie's clips are dead");
    c.check(m.n_getClipParamf(root, 1) == frames, "the live movie's clip lives on");

    // After dispose, everything on the movie and its clips is refused; dispose twice is a no-op.
    m.n_dispose(movie);
    refusedEverywhere(c, m, movie, root, "after n_dispose");
    c.quiet("a second n_dispose", () -> m.n_dispose(movie));

    // A file made to hold memory: opening it stays within a bound of its size.
    if (args.length > 1 && Files.exists(Path.of(args[1]))) {
      byte[] hostile = Files.readAllBytes(Path.of(args[1]));
      long before = Cases.residentKb();
      long h = m.n_init(hostile, 0, hostile.length, 64, 64);
      long root2 = h == 0 ? 0 : m.n_getRootClip(h);
      for (int f = 0; f < 4 && h != 0; f++) {
        m.n_moveClipFrame(h, root2, f);
        m.n_drawToTexture(h, 0, 0, 0);
      }
      long grown = (Cases.residentKb() - before) / 1024;
      c.check(grown < 96, "the amplifying movie held " + grown + " MB, within its budget");
      m.n_dispose(h);
    }

    // With a console and a texture, a disposed movie still draws nothing.
    WinConsole.n_init();
    c.check(WinConsole.n_createWindow("movie", 64, 64, 1), "window");
    c.check(WinConsole.n_createGraphics(0), "graphics");
    refusedEverywhere(c, m, movie, root, "after n_dispose, with a device");
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    c.finish();
  }
}
