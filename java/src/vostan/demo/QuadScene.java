package vostan.demo;

import static mirelo.gfx.GL.GL_COLOR_BUFFER_BIT;
import static mirelo.gfx.GL.GL_DEPTH_BUFFER_BIT;
import static mirelo.gfx.GL.GL_QUADS;
import static mirelo.gfx.GL.GL_TRIANGLE_FAN;
import static mirelo.gfx.GL.GL_TRIANGLE_STRIP;

import mirelo.gfx.GLGraphics;
import mirelo.gfx.MatrixSlot;

/**
 * The demo's picture: a rotating quad with a colour at each corner over a striped floor and a
 * yellow fan, drawn through GLGraphics between the console's makeCurrent and swapBuffers.
 */
public final class QuadScene {
  static {
    // The picture writer lives outside the engine's library.
    System.loadLibrary("vostan_demo");
  }

  private final float[] matrix = new float[16];
  private float offsetX;
  private float offsetY;

  /** Writes the back buffer as it stands (before the swap) to a PNG file. */
  public static native boolean writeFramePng(String path);

  /** The rotation of the quad after `millis` of running time. */
  public static float angleAt(long millis) {
    return (float) ((millis % 4000L) * (2.0 * Math.PI / 4000.0));
  }

  /** Moves the quad by this much from the middle, in the floor's units. */
  public void setOffset(float x, float y) {
    offsetX = x;
    offsetY = y;
  }

  /** Draws one frame on a client area of `width` by `height` with the quad turned by `angle`. */
  public void draw(int width, int height, float angle) {
    GLGraphics.n_mglViewPort(0, 0, width, height);
    GLGraphics.n_mglClearColor(0.1f, 0.1f, 0.3f, 1.0f);
    GLGraphics.n_mglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    // Clip space with square units: x runs from -aspect to aspect.
    final float aspect = (float) width / height;
    setTransform(1.0f / aspect, 0.0f, 1.0f);
    GLGraphics.n_mglBegin(GL_TRIANGLE_STRIP);
    for (int i = 0; i <= 8; i++) {
      float x = -aspect + i * (2 * aspect / 8);
      GLGraphics.n_mglColor3f(0.2f, (i & 1) == 0 ? 0.5f : 0.35f, 0.2f);
      GLGraphics.n_mglVertex2f(x, -1.0f);
      GLGraphics.n_mglVertex2f(x, -0.6f);
    }
    GLGraphics.n_mglEnd();

    GLGraphics.n_mglColor3f(1.0f, 0.9f, 0.2f);
    GLGraphics.n_mglBegin(GL_TRIANGLE_FAN);
    GLGraphics.n_mglVertex2f(aspect - 0.3f, 0.7f);
    for (int i = 0; i <= 12; i++) {
      double a = i * Math.PI / 6;
      GLGraphics.n_mglVertex2f(aspect - 0.3f + 0.15f * (float) Math.cos(a),
          0.7f + 0.15f * (float) Math.sin(a));
    }
    GLGraphics.n_mglEnd();

    setTransform(1.0f / aspect, angle, 0.5f);
    matrix[12] = offsetX / aspect;
    matrix[13] = offsetY;
    GLGraphics.n_mglSetMatrix(0, matrix);
    GLGraphics.n_mglBegin(GL_QUADS);
    GLGraphics.n_mglColor3f(1, 0, 0);
    GLGraphics.n_mglT2fV2f(0, 0, -1, -1);
    GLGraphics.n_mglColor3f(0, 1, 0);
    GLGraphics.n_mglT2fV2f(1, 0, 1, -1);
    GLGraphics.n_mglColor3f(0, 0, 1);
    GLGraphics.n_mglT2fV2f(1, 1, 1, 1);
    GLGraphics.n_mglColor3f(1, 1, 1);
    GLGraphics.n_mglT2fV2f(0, 1, -1, 1);
    GLGraphics.n_mglEnd();
  }

  /** Sets a transform from pixel coordinates, y down, to clip space; `matrix` is scratch. */
  static void setPixelTransform(float[] matrix, int width, int height) {
    java.util.Arrays.fill(matrix, 0.0f);
    matrix[0] = 2.0f / width;
    matrix[5] = -2.0f / height;
    matrix[10] = 1.0f;
    matrix[12] = -1.0f;
    matrix[13] = 1.0f;
    matrix[15] = 1.0f;
    GLGraphics.n_mglSetMatrix(0, matrix);
  }

  /** Row-vector transform: scale by `size`, turn by `angle`, squeeze x by `xScale`. */
  private void setTransform(float xScale, float angle, float size) {
    final float c = (float) Math.cos(angle) * size;
    final float n = (float) Math.sin(angle) * size;
    java.util.Arrays.fill(matrix, 0.0f);
    matrix[0] = c * xScale;
    matrix[1] = n;
    matrix[4] = -n * xScale;
    matrix[5] = c;
    matrix[10] = 1.0f;
    matrix[15] = 1.0f;
    GLGraphics.n_mglSetMatrix(MatrixSlot.TRANSFORM, matrix);
  }
}
