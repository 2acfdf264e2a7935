package mirelo.app.win32;

import vostan.test.misuse.Cases;

/** The music natives with made-up handles, null paths and arrays, and a damaged song. */
public final class MusicMisuse {
  private MusicMisuse() {}

  /** Runs the cases of this class into c; hostileOgg, when given, is a damaged song file. */
  public static void run(Cases c, String hostileOgg) {
    MDJSoundContextWin32 m = new MDJSoundContextWin32();
    for (long h : new long[] {0, 12345, -1}) {
      c.quiet("music natives on " + h, () -> {
        m.n_setMDJSongFile(h, null);
        m.n_setMDJSongFile(h, "/no/such/song.ogg");
        m.n_setMDJTrick(h, -1);
        m.n_play(h, true);
        m.n_setVolume(h, 2);
        m.n_writeStream(h, null);
        m.n_writeStream(h, new float[1]);
        m.n_stop(h);
        m.n_dispose(h);
      });
      c.check(!m.n_playing(h), "music " + h + " is not playing");
    }
    c.check(m.n_init() == 0, "no music context before the sound device");
    c.check(new AudioManagerWin32().init(), "the sound device");
    long context = m.n_init();
    if (context != 0) {
      c.quiet("a live context with bad songs and streams", () -> {
        m.n_setMDJSongFile(context, null);
        if (hostileOgg != null) m.n_setMDJSongFile(context, hostileOgg);
        m.n_setMDJTrick(context, Integer.MIN_VALUE);
        m.n_play(context, false);
        m.n_writeStream(context, null);
        m.n_writeStream(context, new float[3]);
        m.n_writeStream(context, new float[1 << 20]);
      });
      m.n_dispose(context);
      c.quiet("the same handle after n_dispose", () -> {
        m.n_play(context, false);
        m.n_dispose(context);
      });
    }
  }
}
