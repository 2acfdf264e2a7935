package mirelo.app;

import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Random;
import mirelo.app.win32.AudioBridge;
import mirelo.app.win32.WinConsole;
import mirelo.gfx.GLGraphics;

/**
 * Thousands of random native calls against a real window, valid and invalid: handles live, dead,
 * crossed and made up; arrays of every kind and length; sizes at the edges. It passes when the
 * process survives with no report from the checked JNI or a sanitizer. Usage: RandomCalls
 * SAMPLE.swf TONE.ogg [CALLS [SEED]]
 */
public final class RandomCalls {
  private static Random random;
  private static final List<Long> movies = new ArrayList<>();
  private static final List<Long> clips = new ArrayList<>();
  private static final List<Long> songs = new ArrayList<>();
  private static final List<Long> dead = new ArrayList<>();
  private static final List<Integer> textures = new ArrayList<>();
  private static byte[] swf;
  private static byte[] ogg;

  private RandomCalls() {}

  private static int pick(int... values) {
    return values[random.nextInt(values.length)];
  }

  /** Mostly small sizes, sometimes an edge. */
  static int size() {
    switch (random.nextInt(8)) {
      case 0:
        return pick(0, -1, Integer.MIN_VALUE, Integer.MAX_VALUE, 65536, 100000);
      case 1:
        return random.nextInt(2000) - 1000;
      default:
        return random.nextInt(64) + 1;
    }
  }

  static int index() {
    return random.nextInt(4) == 0 ? random.nextInt() : random.nextInt(8) - 1;
  }

  /** A handle from one of the pools, a dead one, or one made up. */
  static long handle(List<Long> pool) {
    int r = random.nextInt(10);
    if (r < 6 && !pool.isEmpty()) return pool.get(random.nextInt(pool.size()));
    if (r < 7 && !dead.isEmpty()) return dead.get(random.nextInt(dead.size()));
    if (r < 8 && !movies.isEmpty()) return movies.get(random.nextInt(movies.size()));
    if (r < 9 && !clips.isEmpty()) return clips.get(random.nextInt(clips.size()));
    return pick(0, -1, 1, 12345) + (random.nextBoolean() ? 0L : random.nextLong());
  }

  static int texture() {
    if (random.nextInt(4) > 0 && !textures.isEmpty())
      return textures.get(random.nextInt(textures.size())) + (random.nextInt(8) == 0 ? 1 : 0);
    return pick(0, 1, -1, 12345, Integer.MAX_VALUE);
  }

  /** An array of a random kind and length, or something that is no array. */
  static Object pixels() {
    int n = random.nextInt(6) == 0 ? random.nextInt(70000) : random.nextInt(256);
    switch (random.nextInt(7)) {
      case 0:
        return null;
      case 1:
        return new int[n];
      case 2:
        return new short[n];
      case 3:
        return "pixels";
      case 4:
        return ByteBuffer.allocateDirect(n);
      default:
        return new byte[n];
    }
  }

  static float[] floats() {
    int r = random.nextInt(5);
    return r == 0 ? null : new float[r == 1 ? random.nextInt(20) : 16];
  }

  static ByteBuffer buffer(int bytes) {
    int r = random.nextInt(4);
    if (r == 0) return null;
    if (r == 1) return ByteBuffer.allocate(Math.max(0, bytes));
    return ByteBuffer.allocateDirect(Math.max(0, Math.min(bytes, 1 << 20)) / (r == 2 ? 2 : 1));
  }

  static void graphics() {
    switch (random.nextInt(14)) {
      case 0:
        textures.add(GLGraphics.n_mglCreateTexture());
        break;
      case 1:
        GLGraphics.n_mglDeleteTexture(texture());
        break;
      case 2:
        GLGraphics.n_mglBindTexture(texture());
        break;
      case 3:
        GLGraphics.n_mglTexImage2D(texture(), 3553, 0, pick(6408, 6407, 6406, 6409, 0), size(),
            size(), random.nextInt(3), pick(6408, 6407, 32993, 6409, 7), pick(5121, 33639, 5126, 1),
            pixels());
        break;
      case 4:
        GLGraphics.n_mglTexSubImage2D(3553, 0, size(), size(), size(), size(), pick(6408, 32993),
            pick(5121, 33639), pixels());
        break;
      case 5:
        GLGraphics.n_mglReadPixels(size(), size(), size(), size(), pick(6408, 32993, 6409),
            pick(5121, 33639), pixels());
        break;
      case 6: {
        GLGraphics.n_mglBegin(random.nextInt(12) - 1);
        int n = random.nextInt(10) == 0 ? 7000 : random.nextInt(40);
        for (int i = 0; i < n; i++) {
          GLGraphics.n_mglTexCoord2f(random.nextFloat(), random.nextFloat());
          GLGraphics.n_mglVertex3f(random.nextFloat() * 2 - 1, random.nextFloat() * 2 - 1, 0);
        }
        if (random.nextInt(5) > 0) GLGraphics.n_mglEnd();
        break;
      }
      case 7:
        GLGraphics.n_mglEnd();
        break;
      case 8:
        GLGraphics.n_mglSetMatrix(pick(0, 1, 20, 51, 52, -1), floats());
        GLGraphics.n_mglTexGen(0, floats());
        break;
      case 9:
        if (random.nextBoolean()) GLGraphics.n_mglPushAttrib(0);
        else GLGraphics.n_mglPopAttrib();
        break;
      case 10:
        GLGraphics.n_mglViewPort(size(), size(), size(), size());
        GLGraphics.n_mglScissor(size(), size(), size(), size());
        GLGraphics.n_mglSetEnable(pick(3042, 2929, 3089, 2884, 0), random.nextBoolean());
        break;
      case 11:
        GLGraphics.n_mglTextureStageState(pick(10240, 10241, 0), pick(9728, 9729));
        GLGraphics.n_mglGetTextureStageState(pick(4096, 4097, 4099, 0));
        GLGraphics.n_mglDepthWrite(random.nextInt(12) - 1);
        GLGraphics.n_mglRenderMode(pick(0, 0x2002F, 0x2005F, 5));
        break;
      case 12:
        GLGraphics.n_mglClear(0x4100);
        break;
      default:
        WinConsole.n_update();
        while (WinConsole.n_peekEvent() != null) {}
        WinConsole.n_free();
        WinConsole.n_swapBuffers();
        WinConsole.n_makeCurrent();
    }
  }

  static void movie(VecMovie m) {
    switch (random.nextInt(9)) {
      case 0: {
        byte[] data = random.nextInt(3) == 0 ? new byte[random.nextInt(100)] : swf;
        long h = m.n_init(data, random.nextInt(4) == 0 ? size() : 0,
            random.nextInt(4) == 0 ? size() : data.length, size(), size());
        if (h != 0) movies.add(h);
        break;
      }
      case 1:
        AudioBridge.retire(random, movies, dead, m::n_dispose);
        break;
      case 2:
        m.n_setSize(handle(movies), size(), size());
        break;
      case 3:
        m.n_drawToTexture(handle(movies), 0, size(), size());
        break;
      case 4:
        m.n_moveClipFrame(handle(movies), handle(clips), random.nextInt(40) - 5);
        break;
      case 5: {
        long c = m.n_getRootClip(handle(movies));
        if (c != 0) clips.add(c);
        c = m.n_getHitClip(handle(movies), size(), size());
        if (c != 0) clips.add(c);
        break;
      }
      case 6:
        m.n_getParamf(handle(movies), index());
        break;
      case 7:
        m.n_getClipParamf(handle(clips), index());
        break;
      default:
        m.n_getClipParamv(handle(clips), index());
    }
  }

  static void vorbis(VorbisSong s) {
    switch (random.nextInt(4)) {
      case 0: {
        byte[] data = random.nextBoolean() ? ogg : java.util.Arrays.copyOf(ogg, random.nextInt(ogg.length));
        if (random.nextInt(4) == 0) data[random.nextInt(data.length)] ^= (byte) random.nextInt(256);
        long h = s.n_init(data);
        if (h != 0) songs.add(h);
        break;
      }
      case 1:
        AudioBridge.retire(random, songs, dead, s::n_dispose);
        break;
      default: {
        int first = random.nextInt(3) == 0 ? size() : random.nextInt(2000);
        int end = first + (random.nextInt(3) == 0 ? size() : random.nextInt(500));
        s.n_decode(handle(songs), first, end, random.nextFloat() * 2, buffer((end - first) * 4));
      }
    }
  }

  public static void main(String[] args) throws Exception {
    System.loadLibrary("vostan");
    swf = Files.readAllBytes(Path.of(args[0]));
    ogg = Files.readAllBytes(Path.of(args[1]));
    int calls = args.length > 2 ? Integer.parseInt(args[2]) : 4000;
    long seed = args.length > 3 ? Long.parseLong(args[3]) : System.nanoTime();
    // Printed first: a crash leaves no other report.
    System.out.println("RandomCalls seed " + seed + " calls " + calls);
    random = new Random(seed);
    WinConsole.n_init();
    if (!WinConsole.n_createWindow("random", 64, 64, 1) || !WinConsole.n_createGraphics(0)) {
      System.out.println("no window or device; seed " + seed);
      System.exit(1);
    }
    WinConsole.n_makeCurrent();
    VecMovie m = new VecMovie();
    VorbisSong s = new VorbisSong();
    AudioBridge audio = new AudioBridge(random);
    for (int i = 0; i < calls; i++) {
      try {
        switch (random.nextInt(5)) {
          case 0:
          case 1:
            graphics();
            break;
          case 2:
            movie(m);
            break;
          case 3:
            vorbis(s);
            break;
          default:
            audio.step(dead);
        }
      } catch (Throwable t) {
        System.out.println("call " + i + " threw " + t + "; seed " + seed);
        System.exit(1);
      }
    }
    for (long h : movies) m.n_dispose(h);
    for (long h : songs) s.n_dispose(h);
    WinConsole.n_free();
    WinConsole.n_disposeGraphics();
    WinConsole.n_disposeDisplay();
    System.out.println("RandomCalls done, seed " + seed);
  }
}
