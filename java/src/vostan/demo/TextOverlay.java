package vostan.demo;

import static mirelo.gfx.GL.GL_BLEND;
import static mirelo.gfx.GL.GL_DEPTH_TEST;
import static mirelo.gfx.GL.GL_QUADS;
import static mirelo.gfx.GL.GL_RGBA;
import static mirelo.gfx.GL.GL_TEXTURE_2D;
import static mirelo.gfx.GL.GL_UNSIGNED_BYTE;

import java.util.ArrayDeque;
import java.util.HashMap;
import java.util.Map;
import mirelo.gfx.GLGraphics;
import mirelo.gfx.font.SystemFont;

/**
 * Text written over the picture every frame with a system font and its halo: a frame counter
 * and the last few events. Each character is drawn once into a glyph atlas texture when first
 * seen; a frame then draws one quad per character from the atlas.
 */
final class TextOverlay {
  private static final int ATLAS = 512;
  private static final int LINES = 4;
  private static final int MAX_CHARS = 52;

  /** Where a character lies in the atlas, and how it sits on the line. */
  private static final class Glyph {
    int x;
    int y;
    SystemFont.CharacterInfo info;
  }

  private final SystemFont font = new SystemFont();
  private final long handle;
  private final int texture;
  private final Map<Character, Glyph> glyphs = new HashMap<>();
  private final ArrayDeque<String> events = new ArrayDeque<>();
  private final float[] matrix = new float[16];
  private int nextX;
  private int nextY;

  private TextOverlay(String family) {
    handle = font.n_init(family, -15, SystemFont.ANTI_ALIASED | SystemFont.OUTLINED);
    // Characters the main family lacks, CJK among them, come from here.
    font.n_setAltFont(handle, "WenQuanYi Micro Hei", -15,
        SystemFont.ANTI_ALIASED | SystemFont.OUTLINED, 0, 0);
    texture = GLGraphics.n_mglCreateTexture();
    clearAtlas();
  }

  /** The overlay in the family, or null when the family draws nothing. */
  static TextOverlay open(String family) {
    TextOverlay overlay = new TextOverlay(family);
    if (overlay.font.height <= 0) {
      System.out.println("no font \"" + family + "\": no text");
      return null;
    }
    System.out.printf("text in %s, %.0f pixels a line%n", family, overlay.font.height);
    return overlay;
  }

  /** Keeps an event's text for the next frames. */
  void event(Object e) {
    String s = String.valueOf(e);
    events.addLast(s.length() > MAX_CHARS ? s.substring(0, MAX_CHARS) + "\u2026" : s);
    while (events.size() > LINES - 1) events.removeFirst();
  }

  private void clearAtlas() {
    GLGraphics.n_mglTexImage2D(texture, GL_TEXTURE_2D, 0, GL_RGBA, ATLAS, ATLAS, 0, GL_RGBA,
        GL_UNSIGNED_BYTE, null);
    glyphs.clear();
    nextX = 0;
    nextY = 0;
  }

  /** The character's place in the atlas, drawing it there the first time; texture bound. */
  private Glyph glyph(char c) {
    Glyph g = glyphs.get(c);
    if (g != null) return g;
    SystemFont.CharacterInfo info = new SystemFont.CharacterInfo();
    font.n_initCharacter(handle, c, info);
    if (nextX + info.cwidth > ATLAS) {
      nextX = 0;
      nextY += font.canvash;
    }
    if (nextY + font.canvash > ATLAS) {
      clearAtlas();
      GLGraphics.n_mglBindTexture(texture);
    }
    g = new Glyph();
    g.x = nextX;
    g.y = nextY;
    g.info = info;
    font.n_createCache(handle, c, g.x, g.y, info.cwidth, info.cheight, 0, 0, 0, info.usealt);
    nextX += info.cwidth + 1;
    glyphs.put(c, g);
    return g;
  }

  /** Writes the lines at the window's bottom left, over whatever is drawn. */
  void draw(int frame, long millis, int width, int height) {
    QuadScene.setPixelTransform(matrix, width, height);
    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, false);
    GLGraphics.n_mglSetEnable(GL_BLEND, true);
    GLGraphics.n_mglSetBlend(1);
    GLGraphics.n_mglColor4f(1, 1, 1, 1);
    GLGraphics.n_mglBindTexture(texture);

    float lineHeight = font.height + 2;
    float baseline = height - 8 - font.avdescent - (LINES - 1) * lineHeight;
    write(String.format("frame %d, %.1f s  \u6587\u5b57 \u2014 system font with halo", frame,
        millis / 1000.0), 8, baseline);
    for (String line : events) {
      baseline += lineHeight;
      write(line, 8, baseline);
    }
    GLGraphics.n_mglBindTexture(0);
    GLGraphics.n_mglSetEnable(GL_BLEND, false);
    GLGraphics.n_mglSetEnable(GL_DEPTH_TEST, true);
  }

  private void write(String text, float x, float baseline) {
    // Glyphs first, so that no atlas reset falls between the quads of one line.
    Glyph[] line = new Glyph[text.length()];
    for (int i = 0; i < text.length(); i++) line[i] = glyph(text.charAt(i));
    GLGraphics.n_mglBegin(GL_QUADS);
    for (Glyph g : line) {
      SystemFont.CharacterInfo info = g.info;
      if (info.cwidth > 0) {
        float left = x + info.lsb;
        float top = baseline + info.cy;
        float u0 = g.x / (float) ATLAS;
        float v0 = g.y / (float) ATLAS;
        float u1 = (g.x + info.cwidth) / (float) ATLAS;
        float v1 = (g.y + info.cheight) / (float) ATLAS;
        GLGraphics.n_mglT2fV2f(u0, v0, left, top);
        GLGraphics.n_mglT2fV2f(u1, v0, left + info.cwidth, top);
        GLGraphics.n_mglT2fV2f(u1, v1, left + info.cwidth, top + info.cheight);
        GLGraphics.n_mglT2fV2f(u0, v1, left, top + info.cheight);
      }
      // The advance makes room for the whole halo; letters may share some of it.
      x += info.advance - 3;
    }
    GLGraphics.n_mglEnd();
  }
}
