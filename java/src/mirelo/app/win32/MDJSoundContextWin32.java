package mirelo.app.win32;

/**
 * The music system: songs that change on the beat by a trick code, and a
 * stream of samples from Java added on top. Needs {@link AudioManagerWin32#init}.
 *
 * <p>Name the next song with {@link #setSongFile}, then say how it takes over with
 * {@link #setTrick} or {@link #play}. Songs are opened and changed on the library's mixer thread,
 * so these calls return at once; a song that can't be opened is reported on standard output and
 * leaves the previous one pending.
 */
public class MDJSoundContextWin32 {
  static {
    vostan.Vostan.load();
  }

  /** The pending song starts at once; the other track stops. */
  public static final int TRICK_PLAY = 0;
  /** Both tracks stop; the pending song is dropped. */
  public static final int TRICK_STOP = 1;
  /** A straight cross-fade over 4 seconds. */
  public static final int TRICK_FADE_SHORT = 3;
  /** A straight cross-fade over 8 seconds. */
  public static final int TRICK_FADE_LONG = 4;
  /**
   * The pending song comes in at the next beat at which the playing song allows a change, at
   * the playing song's tempo, and takes over across sixteen beats. 12 and 13 act the same.
   */
  public static final int TRICK_BEAT_SYNC = 11;

  private long handle;

  /** Starts the music system on the sound device; {@link #isOpen} tells whether it could. */
  public MDJSoundContextWin32() {
    handle = n_init();
  }

  /**
   * Whether the stream buffer could be made and the mixer runs.
   *
   * @return true while the context is open
   */
  public boolean isOpen() {
    return handle != 0;
  }

  /**
   * The native handle.
   *
   * @return the handle, 0 when not open or disposed
   */
  public long handle() {
    return handle;
  }

  /**
   * Names the song file (an Ogg Vorbis file with an "mdj" tag) that the next trick uses.
   *
   * @param path the song file
   * @return whether the mixer took the request; false for a closed context
   */
  public boolean setSongFile(String path) {
    return n_setMDJSongFile(handle, path);
  }

  /**
   * Changes to the pending song by a trick code.
   *
   * @param trick a trick code, such as {@link #TRICK_BEAT_SYNC}
   * @return whether the mixer took the request; false for a closed context
   */
  public boolean setTrick(int trick) {
    return n_setMDJTrick(handle, trick);
  }

  /**
   * Starts the pending song at once.
   *
   * @param looping ignored: songs always loop
   * @return whether the mixer took the request; false for a closed context
   */
  public boolean play(boolean looping) {
    return n_play(handle, looping);
  }

  /**
   * Sets the music's volume.
   *
   * @param volume a linear factor; 0.6 at start
   */
  public void setVolume(float volume) {
    n_setVolume(handle, volume);
  }

  /**
   * The music's volume.
   *
   * @return a linear factor
   */
  public float getVolume() {
    return n_getPitch(handle);
  }

  /**
   * How much of the stream is waiting.
   *
   * @return floats written with {@link #writeStream} and not yet played, two per frame
   */
  public float getStreamSize() {
    return n_getStreamSize(handle);
  }

  /**
   * Adds interleaved stereo floats at 44100 Hz on top of the music. Keep the length even and the
   * queued amount below one second; other arrays are ignored.
   *
   * @param samples left and right samples, -1 to 1
   */
  public void writeStream(float[] samples) {
    n_writeStream(handle, samples);
  }

  /** Stops the mixer thread and frees the context; later calls do nothing. */
  public void dispose() {
    n_dispose(handle);
    handle = 0;
  }

  /**
   * Makes the context: the stream buffer on the sound device and the mixer thread.
   *
   * @return the handle, or 0 when the device has no room
   */
  native long n_init();

  /**
   * Stops the mixer thread and frees the context; later calls with the handle do nothing.
   *
   * @param handle the context
   */
  native void n_dispose(long handle);

  /**
   * Names the song the next trick takes, opened on the mixer thread.
   *
   * @param handle the context
   * @param path the song file
   * @return whether the request was queued
   */
  native boolean n_setMDJSongFile(long handle, String path);

  /**
   * Asks for a change to the pending song.
   *
   * @param handle the context
   * @param trick a trick code
   * @return whether the request was queued
   */
  native boolean n_setMDJTrick(long handle, int trick);

  /**
   * Starts the pending song at once.
   *
   * @param handle the context
   * @param looping ignored
   * @return whether the request was queued
   */
  native boolean n_play(long handle, boolean looping);

  /** Does nothing: stopping is {@link #TRICK_STOP}. */
  native boolean n_stop(long handle);

  /** Always false. */
  native boolean n_playing(long handle);

  /**
   * Sets the music's volume.
   *
   * @param handle the context
   * @param volume a linear factor
   */
  native void n_setVolume(long handle, float volume);

  /** The volume, despite the name. */
  native float n_getPitch(long handle);

  /** Floats queued in the stream, two per frame. */
  native float n_getStreamSize(long handle);

  /** Interleaved stereo; an even length. */
  native void n_writeStream(long handle, float[] samples);
}
