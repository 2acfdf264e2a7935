package mirelo.app.win32;

/**
 * The music system: songs that change on the beat by a trick code, and a
 * stream of samples from Java added on top. Needs {@link AudioManagerWin32#init}.
 */
public class MDJSoundContextWin32 {
  static {
    System.loadLibrary("vostan");
  }

  native long n_init();

  native void n_dispose(long handle);

  native boolean n_setMDJSongFile(long handle, String path);

  native boolean n_setMDJTrick(long handle, int trick);

  native boolean n_play(long handle, boolean looping);

  native boolean n_stop(long handle);

  native boolean n_playing(long handle);

  native void n_setVolume(long handle, float volume);

  native float n_getPitch(long handle);

  /** Floats queued in the stream, two per frame. */
  native float n_getStreamSize(long handle);

  /** Interleaved stereo; an even length. */
  native void n_writeStream(long handle, float[] samples);
}
