package vostan.demo;

import static mirelo.gfx.GL.GL_BLEND;
import static mirelo.gfx.GL.GL_COLOR_BUFFER_BIT;
import static mirelo.gfx.GL.GL_DEPTH_BUFFER_BIT;
import static mirelo.gfx.GL.GL_DEPTH_COMPONENT;
import static mirelo.gfx.GL.GL_DEPTH_TEST;
import static mirelo.gfx.GL.GL_INDEX_ARRAY;
import static mirelo.gfx.GL.GL_RGBA;
import static mirelo.gfx.GL.GL_STENCIL_BUFFER_BIT;
import static mirelo.gfx.GL.GL_TEXTURE_2D;
import static mirelo.gfx.GL.GL_UNSIGNED_BYTE;
import static mirelo.gfx.GL.GL_VERTEX_ARRAY;

import mirelo.gfx.GLArray;
import mirelo.gfx.GLGraphics;

/**
 * A skinned figure on a floor, in a corner of the demo's window: a body that sways on its hips and
 * a head that nods on its neck (three bones), drawn from native arrays with a shadow map cast by a
 * slanting light, rendered into a texture and shown through an optional bloom filter (the B key
 * switches it).
 */
public final class SkinnedFigure {
  private static final int CLEAR_ALL =
      GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT;
  private static final int WEIGHT = 32889;
  private static final int SIZE = 256;
  private static final int SHOWN = 192;  // pixels a side on the window
  /** The B key, which switches the bloom. */
  public static final int KEY_BLOOM = 66;

  private final long bodyPositions;
  private final long bodyWeights;
  private final long floorPositions;
  private final long floorIndices;
  // Faces of the figure by direction, each shaded by its own colour.
  private final short[][] faces = new short[5][];
  private static final float[] SHADE = {1.0f, 0.8f, 0.65f, 0.8f, 0.95f};
  private final int shadowMap;
  private final int scene;
  private final int bright;
  private final int white;
  private boolean bloom = true;

  /** Makes the arrays and textures; the graphics device must exist. */
  public SkinnedFigure() {
    // Two boxes: the body from the floor to 1.1, the head above it, as rings of four corners.
    float[] heights = {0, 0.25f, 0.5f, 0.7f, 0.9f, 1.1f, 1.15f, 1.5f};
    float[] halfWidths = {0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.2f, 0.14f, 0.14f};
    float[] positions = new float[heights.length * 4 * 3];
    float[] weights = new float[heights.length * 4 * 4];
    for (int r = 0; r < heights.length; r++) {
      float y = heights[r];
      float[] w = weightsAt(y, r >= 6);
      for (int c = 0; c < 4; c++) {
        int v = r * 4 + c;
        float s = halfWidths[r];
        positions[v * 3] = (c == 1 || c == 2) ? s : -s;
        positions[v * 3 + 1] = y;
        positions[v * 3 + 2] = (c >= 2) ? -s : s;
        System.arraycopy(w, 0, weights, v * 4, 4);
      }
    }
    // Sides between rings 0-5 and 6-7 (front, right, back, left), then the head's top.
    for (int side = 0; side < 4; side++) {
      short[] list = new short[(5 + 1) * 6];
      int n = 0;
      for (int r = 0; r < heights.length - 1; r++) {
        if (r == 5) continue;  // no wall between the body and the head
        short a = (short) (r * 4 + side);
        short b = (short) (r * 4 + (side + 1) % 4);
        short c = (short) (a + 4);
        short d = (short) (b + 4);
        for (short i : new short[] {a, b, d, a, d, c}) list[n++] = i;
      }
      faces[side] = list;
    }
    short top = (short) (7 * 4);
    faces[4] = new short[] {top, (short) (top + 1), (short) (top + 2), top, (short) (top + 2),
        (short) (top + 3), 20, 21, 22, 20, 22, 23};
    bodyPositions = GLArray.newGLArray(GL_VERTEX_ARRAY, positions.length * 4, positions);
    bodyWeights = GLArray.newGLArray(WEIGHT, weights.length * 4, weights);
    floorPositions = GLArray.newGLArray(GL_VERTEX_ARRAY, 48,
        new float[] {-2.5f, 0, 2.5f, 2.5f, 0, 2.5f, 2.5f, 0, -2.5f, -2.5f, 0, -2.5f});
    floorIndices = GLArray.newGLArray(GL_INDEX_ARRAY, 12, new short[] {0, 1, 2, 0, 2, 3});

    shadowMap = renderTexture(GL_DEPTH_COMPONENT);  // depth, in a float texture where the device has one
    scene = renderTexture(GL_RGBA);
    bright = renderTexture(GL_RGBA);
    white = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(white, GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, new byte[] {-1, -1, -1, -1});
    GLGraphics.n_mglBindTexture(0);
  }

  private static int renderTexture(int format) {
    int t = GLGraphics.n_mglCreateTexture();
    GLGraphics.n_mglTexImage2D(
        t, GL_TEXTURE_2D, 0, format, SIZE, SIZE, 1, format, GL_UNSIGNED_BYTE, null);
    return t;
  }

  /**
   * Skin weights at height y: bone 0 (hips) below the waist, blending into bone 1 (the swaying
   * body) up to the shoulders; the head follows bone 2. Shares stay below one.
   */
  private static float[] weightsAt(float y, boolean head) {
    if (head) return new float[] {2.999f, 0, 0, 0};
    float t = Math.max(0, Math.min(1, (y - 0.5f) / 0.6f));
    return new float[] {(1 - t) * 0.999f, 1 + t * 0.999f, 0, 0};
  }

  /** Switches the bloom on the B key; true when the key was this class's. */
  public boolean keyPressed(int keyCode) {
    if (keyCode != KEY_BLOOM) return false;
    bloom = !bloom;
    System.out.println("         bloom " + (bloom ? "on" : "off"));
    return true;
  }

  /** Draws the figure's picture on the right of a window of `width` by `height`. */
  public void draw(long millis, int width, int height) {
    double t = millis / 1000.0;
    float sway = (float) (0.35 * Math.sin(t * Math.PI));
    float nod = (float) (0.5 * Math.sin(t * 2.3));
    float[] body = about(0, 0.5f, rotateZ(sway));
    float[] head = mul(about(0, 1.1f, rotateX(nod)), body);
    GLGraphics.n_mglSetMatrix(20, identity());
    GLGraphics.n_mglSetMatrix(21, body);
    GLGraphics.n_mglSetMatrix(22, head);

    float[] light = mul(lookAt(new float[] {2.2f, 4, 1.4f}, new float[] {0, 0.5f, 0}),
        ortho(2.6f, 1, 9));
    float[] camera = mul(lookAt(new float[] {0.9f, 2.4f, 3.3f}, new float[] {0, 0.6f, 0}),
        perspective(0.9f, 1, 0.5f, 20));
    float[] toMap = mul(light, new float[] {0.5f, 0, 0, 0, 0, -0.5f, 0, 0, 0, 0, 1, 0, 0.5f, 0.5f,
        -0.012f, 1});

    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, true);
    GLGraphics.n_mglDepthFunc(515);
    GLGraphics.n_mglDepthMask(true);
    GLGraphics.n_mglBindTexture(0);

    // The light's view: depth only, the figure alone casts.
    GLGraphics.n_mglStartRenderTexture(shadowMap, 0, 0, SIZE, SIZE, 0);
    GLGraphics.n_mglClearColor(1, 1, 1, 1);
    GLGraphics.n_mglClear(CLEAR_ALL);
    GLGraphics.n_mglSetMatrix(0, light);
    GLGraphics.n_mglDepthWrite(1);
    drawFigure(false);
    GLGraphics.n_mglDepthWrite(0);
    GLGraphics.n_mglFinishRenderTexture();

    // The camera's view with the shadow test, into the scene texture.
    GLGraphics.n_mglStartRenderTexture(scene, 0, 0, SIZE, SIZE, 0);
    GLGraphics.n_mglClearColor(0.05f, 0.05f, 0.15f, 1);
    GLGraphics.n_mglClear(CLEAR_ALL);
    GLGraphics.n_mglBindTexture(white);
    GLGraphics.n_mglSetMatrix(0, camera);
    GLGraphics.n_mglSetMatrix(1, identity());
    GLGraphics.n_mglSetupShadow(shadowMap, toMap, 0x59596BFF);
    GLGraphics.n_mglPointer(GL_VERTEX_ARRAY, floorPositions);
    GLGraphics.n_mglPointer(WEIGHT, 0);
    GLGraphics.n_mglColor3f(0.35f, 0.5f, 0.35f);
    GLGraphics.n_mglDrawIndexedR(4, 0, 3, 6, 5123, floorIndices);
    drawFigure(true);
    GLGraphics.n_mglFinishShadow(0);
    GLGraphics.n_mglFinishRenderTexture();
    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, false);

    if (bloom) {
      // What is bright enough glows: kept by the first stage, spread by the second.
      GLGraphics.n_mglStartRenderTexture(bright, 0, 0, SIZE, SIZE, 0);
      GLGraphics.n_mglClearColor(0, 0, 0, 1);
      GLGraphics.n_mglClear(0x4000);
      GLGraphics.n_mglSetMatrix(0, identity());
      GLGraphics.n_mglBindTexture(scene);
      GLGraphics.n_mglDepthWrite(7);
      GLGraphics.n_mglColor3f(1, 1, 1);
      screenQuad();
      GLGraphics.n_mglDepthWrite(0);
      GLGraphics.n_mglFinishRenderTexture();
    }

    // On the right, below the sun and the web view, above the text lines.
    GLGraphics.n_mglViewPort(width - SHOWN - 16, height - 168 - SHOWN, SHOWN, SHOWN);
    GLGraphics.n_mglSetMatrix(0, identity());
    GLGraphics.n_mglSetEnable(GL_BLEND, false);
    GLGraphics.n_mglColor3f(1, 1, 1);
    GLGraphics.n_mglBindTexture(scene);
    screenQuad();
    if (bloom) {
      GLGraphics.n_mglSetEnable(GL_BLEND, true);
      GLGraphics.n_mglSetBlend(2);
      GLGraphics.n_mglBindTexture(bright);
      GLGraphics.n_mglDepthWrite(8);
      for (int i = 0; i < 3; i++) screenQuad();  // the second stage gives a third each time
      GLGraphics.n_mglDepthWrite(0);
      GLGraphics.n_mglSetEnable(GL_BLEND, false);
    }
    GLGraphics.n_mglBindTexture(0);
    GLGraphics.n_mglViewPort(0, 0, width, height);
    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, true);
  }

  private void drawFigure(boolean coloured) {
    GLGraphics.n_mglPointer(GL_VERTEX_ARRAY, bodyPositions);
    GLGraphics.n_mglPointer(WEIGHT, bodyWeights);
    for (int f = 0; f < faces.length; f++) {
      float s = SHADE[f];
      if (coloured) GLGraphics.n_mglColor3f(0.95f * s, 0.55f * s, 0.2f * s);
      // The head's top is bright enough to glow.
      if (coloured && f == 4) GLGraphics.n_mglColor3f(1, 1, 0.8f);
      GLGraphics.n_mglDrawIndexed(4, 0, 31, faces[f].length, 5123, faces[f]);
    }
    GLGraphics.n_mglPointer(WEIGHT, 0);
  }

  private static void screenQuad() {
    GLGraphics.n_mglBegin(7);
    GLGraphics.n_mglT2fV2f(0, 0, -1, 1);
    GLGraphics.n_mglT2fV2f(1, 0, 1, 1);
    GLGraphics.n_mglT2fV2f(1, 1, 1, -1);
    GLGraphics.n_mglT2fV2f(0, 1, -1, -1);
    GLGraphics.n_mglEnd();
  }

  // Row-vector transforms: a point times the matrix; a * b applies a first.

  private static float[] identity() {
    return new float[] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  }

  private static float[] mul(float[] a, float[] b) {
    float[] r = new float[16];
    for (int i = 0; i < 4; i++) {
      for (int j = 0; j < 4; j++) {
        float s = 0;
        for (int k = 0; k < 4; k++) s += a[i * 4 + k] * b[k * 4 + j];
        r[i * 4 + j] = s;
      }
    }
    return r;
  }

  private static float[] translate(float x, float y, float z) {
    return new float[] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
  }

  private static float[] rotateZ(float a) {
    float c = (float) Math.cos(a);
    float s = (float) Math.sin(a);
    return new float[] {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  }

  private static float[] rotateX(float a) {
    float c = (float) Math.cos(a);
    float s = (float) Math.sin(a);
    return new float[] {1, 0, 0, 0, 0, c, s, 0, 0, -s, c, 0, 0, 0, 0, 1};
  }

  /** `m` about the point (x, y, 0). */
  private static float[] about(float x, float y, float[] m) {
    return mul(mul(translate(-x, -y, 0), m), translate(x, y, 0));
  }

  private static float[] lookAt(float[] eye, float[] at) {
    float[] f = normalize(new float[] {at[0] - eye[0], at[1] - eye[1], at[2] - eye[2]});
    float[] r = normalize(cross(f, new float[] {0, 1, 0}));
    float[] u = cross(r, f);
    return new float[] {r[0], u[0], -f[0], 0, r[1], u[1], -f[1], 0, r[2], u[2], -f[2], 0,
        -dot(r, eye), -dot(u, eye), dot(f, eye), 1};
  }

  /** Depth from 0 at `near` to 1 at `far`, the device's range. */
  private static float[] perspective(float fov, float aspect, float near, float far) {
    float f = (float) (1 / Math.tan(fov / 2));
    float q = far / (near - far);
    return new float[] {f / aspect, 0, 0, 0, 0, f, 0, 0, 0, 0, q, -1, 0, 0, near * q, 0};
  }

  private static float[] ortho(float half, float near, float far) {
    float d = far - near;
    return new float[] {1 / half, 0, 0, 0, 0, 1 / half, 0, 0, 0, 0, -1 / d, 0, 0, 0, -near / d, 1};
  }

  private static float[] cross(float[] a, float[] b) {
    return new float[] {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
        a[0] * b[1] - a[1] * b[0]};
  }

  private static float dot(float[] a, float[] b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
  }

  private static float[] normalize(float[] v) {
    float n = (float) Math.sqrt(dot(v, v));
    return new float[] {v[0] / n, v[1] / n, v[2] / n};
  }
}
