package vostan.demo;

import static mirelo.gfx.GL.GL_BLEND;
import static mirelo.gfx.GL.GL_DEPTH_TEST;
import static mirelo.gfx.GL.GL_QUADS;
import static mirelo.gfx.GL.GL_RGBA;
import static mirelo.gfx.GL.GL_TEXTURE_2D;
import static mirelo.gfx.GL.GL_UNSIGNED_BYTE;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Paths;
import mirelo.app.VecMovie;
import mirelo.gfx.GLGraphics;

/** The build's movie played into a texture and shown on a quad in the window's top left. */
final class MovieQuad {
  static final int SIZE = 256;
  static final int LEFT = 16;
  static final int TOP = 16;

  final VecMovie movie;
  private final int texture;
  private final long root;
  private final float[] matrix = new float[16];
  private int shown = -1;

  private MovieQuad(VecMovie movie) {
    this.movie = movie;
    root = movie.rootClip();
    texture = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(texture, GL_TEXTURE_2D, 0, GL_RGBA, SIZE, SIZE, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, null);
  }

  /** Null when there is no movie at the path or it does not open. */
  static MovieQuad open(String path) {
    if (path == null) return null;
    try {
      return new MovieQuad(new VecMovie(Files.readAllBytes(Paths.get(path)), SIZE, SIZE));
    } catch (IOException | RuntimeException e) {
      System.out.println("no movie: " + e.getMessage());
      return null;
    }
  }

  String describe() {
    return String.format("movie: %d frames at %.0f per second, drawn at %dx%d", movie.frameCount(),
        movie.frameRate(), SIZE, SIZE);
  }

  /** Steps the movie to where `millis` of play time has brought it, then draws it. */
  void draw(long millis, int width, int height) {
    int frame = (int) (millis * movie.frameRate() / 1000) % movie.frameCount();
    GLGraphics.n_mglBindTexture(texture);
    // The texture keeps its pixels between frames: upload only when the movie moved.
    if (frame != shown) {
      movie.moveClipFrame(root, frame);
      movie.drawToTexture(0, 0);
      shown = frame;
    }

    QuadScene.setPixelTransform(matrix, width, height);
    GLGraphics.n_mglSetEnable(GL_BLEND, false);
    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, false);
    GLGraphics.n_mglColor4f(1, 1, 1, 1);
    GLGraphics.n_mglBegin(GL_QUADS);
    GLGraphics.n_mglT2fV2f(0, 0, LEFT, TOP);
    GLGraphics.n_mglT2fV2f(1, 0, LEFT + SIZE, TOP);
    GLGraphics.n_mglT2fV2f(1, 1, LEFT + SIZE, TOP + SIZE);
    GLGraphics.n_mglT2fV2f(0, 1, LEFT, TOP + SIZE);
    GLGraphics.n_mglEnd();
    GLGraphics.n_mglBindTexture(0);
    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, true);
  }

  /** The name of the clip under a window point, or null. */
  String clipAt(int x, int y) {
    if (x < LEFT || y < TOP || x >= LEFT + SIZE || y >= TOP + SIZE) return null;
    long clip = movie.hitClip(x - LEFT, y - TOP);
    return clip == 0 ? null : movie.clipName(clip);
  }
}
