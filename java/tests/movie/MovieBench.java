package vostan.bench;

import java.nio.file.Files;
import java.nio.file.Paths;
import mirelo.app.VecMovie;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;

/**
 * Movie frames per second from Java at 640 by 480: n_moveClipFrame plus n_drawToTexture into a
 * bound texture, cycling through the root's frames, and the same draw with nothing changed (the
 * update pass and the upload alone). Usage: MovieBench MOVIE.swf [SECONDS]
 */
public final class MovieBench {
  private static final int WIDTH = 640;
  private static final int HEIGHT = 480;

  interface Step {
    void run(int i);
  }

  /** Best of five rounds of frames per second, each round about `seconds` / 5 long. */
  private static double rate(Step step, double seconds) {
    double best = 0;
    for (int round = 0; round < 6; round++) {  // the first round warms up and is not counted
      long start = System.nanoTime();
      long end = start + (long) (seconds / 5 * 1e9);
      int frames = 0;
      long now;
      do {
        step.run(frames++);
        now = System.nanoTime();
      } while (now < end);
      if (round > 0) best = Math.max(best, frames * 1e9 / (now - start));
    }
    return best;
  }

  public static void main(String[] args) throws Exception {
    byte[] bytes = Files.readAllBytes(Paths.get(args[0]));
    double seconds = args.length > 1 ? Double.parseDouble(args[1]) : 5;
    System.loadLibrary("vostan");
    WinConsole.n_init();
    WinConsole.n_createWindow("movie bench", 64, 64, 1);
    if (!WinConsole.n_createGraphics(0) || !WinConsole.n_makeCurrent()) {
      throw new AssertionError("no graphics device");
    }
    int texture = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(texture, 3553, 0, 6408, WIDTH, HEIGHT, 0, 6408, 5121, null);

    VecMovie movie = new VecMovie(bytes, WIDTH, HEIGHT);
    long root = movie.rootClip();
    int frames = Math.max(1, movie.frameCount());
    Step still = i -> {
      movie.moveClipFrame(root, 0);
      movie.drawToTexture(0, 0);
    };
    // Still frames before and after, so that a drift of the machine shows.
    double stillBefore = rate(still, seconds);
    double cycling = rate(i -> {
      movie.moveClipFrame(root, i % frames);
      movie.drawToTexture(0, 0);
    }, seconds);
    double stillAfter = rate(still, seconds);
    System.out.printf("%s at %dx%d, %d root frames%n", Paths.get(args[0]).getParent().getFileName(),
        WIDTH, HEIGHT, frames);
    System.out.printf("frames cycling   %8.0f frames/s%n", cycling);
    System.out.printf("nothing changed  %8.0f frames/s before, %.0f after%n", stillBefore,
        stillAfter);
    movie.dispose();
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
  }
}
