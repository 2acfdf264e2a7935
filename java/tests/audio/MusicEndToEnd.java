package mirelo.app.win32;

import vostan.MusicCapture;

/**
 * The music system from Java on the default device (a silent one at the pace of real time without
 * a sound card): two songs, play, a beat-locked change, and the change found in the captured
 * stream on the frame of the beat. Also the natives' answers to bad input. Usage: MusicEndToEnd
 * PLAYING_SONG INCOMING_SONG, the build's test songs whose beat 4 falls 88576 frames into the
 * first and whose left channel is a 440 Hz and a 1000 Hz sine.
 */
public final class MusicEndToEnd {
  private static final int CHANGE_FRAME = 88576;

  private MusicEndToEnd() {}

  private static void check(boolean ok, String what) {
    if (!ok) throw new AssertionError(what);
    System.out.println("ok: " + what);
  }

  /** What a 440 Hz sine can't explain: the second difference against its own frequency. */
  private static double residual(short[] stereo, int frame) {
    double k = 2 * Math.cos(2 * Math.PI * 440.0 / 44100.0);
    return stereo[2 * frame] - k * stereo[2 * frame - 2] + stereo[2 * frame - 4];
  }

  public static void main(String[] args) throws Exception {
    check(new AudioManagerWin32().init(), "the sound device opens");
    MDJSoundContextWin32 music = new MDJSoundContextWin32();
    check(music.isOpen(), "the music context starts");
    check(music.getVolume() == 0.6f, "the volume starts at 0.6");
    music.setVolume(0.25f);
    check(music.getVolume() == 0.25f, "the volume reads back through n_getPitch");
    music.setVolume(0.6f);
    check(!music.n_stop(music.handle()) && !music.n_playing(music.handle()),
        "n_stop and n_playing answer false");

    check(MusicCapture.start(music, 44100 * 6), "the capture starts");
    check(music.setSongFile(args[0]), "first song named");
    check(music.play(false), "play posted");
    Thread.sleep(300);
    check(music.setSongFile(args[1]), "second song named");
    check(music.setTrick(MDJSoundContextWin32.TRICK_BEAT_SYNC), "beat sync posted");
    // The change comes two seconds into the first song; the stream runs a
    // little more than a quarter second behind the mixing.
    Thread.sleep(3200);
    short[] heard = MusicCapture.stop(music);
    check(heard != null && heard.length > 2 * (CHANGE_FRAME + 44100), "about 3 s captured");

    int start = 0;
    while (start < heard.length / 2 && heard[2 * start + 1] == 0) start++;
    check(start < 44100, "the first song starts within a second: frame " + start);
    int change = start + 64;
    while (change < heard.length / 2 && Math.abs(residual(heard, change)) < 500) change++;
    check(change - start == CHANGE_FRAME,
        "the second song is heard from the beat's frame: " + (change - start));

    // Bad input does nothing: null, arrays of a wrong length, dead and made-up handles.
    music.writeStream(null);
    music.writeStream(new float[3]);
    music.writeStream(new float[88202]);
    check(music.getStreamSize() == 0, "refused arrays queue nothing");
    music.writeStream(new float[882]);
    check(music.getStreamSize() <= 882, "an even array is queued");
    check(!music.setSongFile(null), "a null path is refused");
    music.setSongFile("/no/such/song.ogg");
    music.setTrick(MDJSoundContextWin32.TRICK_PLAY);
    music.setTrick(-7);
    long handle = music.handle();
    music.dispose();
    check(music.handle() == 0, "dispose forgets the handle");
    for (long dead : new long[] {handle, 0, 12345, -1, Long.MIN_VALUE}) {
      check(!music.n_setMDJTrick(dead, 11) && !music.n_play(dead, true)
              && !music.n_setMDJSongFile(dead, args[0]),
          "commands to handle " + dead + " go nowhere");
      music.n_setVolume(dead, 0.5f);
      music.n_writeStream(dead, new float[2]);
      check(music.n_getPitch(dead) == 0 && music.n_getStreamSize(dead) == 0,
          "handle " + dead + " reads as nothing");
      music.n_dispose(dead);
    }
    check(MusicCapture.stop(music) == null, "no capture left");
    System.out.println("music: ok");
  }
}
