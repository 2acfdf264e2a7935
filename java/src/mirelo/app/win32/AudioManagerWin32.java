package mirelo.app.win32;

/**
 * The sound device of the process: its 3D listener and the master volume of
 * clip sounds. {@link #init} must succeed before any clip sound or music
 * context is made.
 */
public class AudioManagerWin32 {
  static {
    vostan.Vostan.load();
  }

  /** Makes a manager; {@link #init} opens the device. */
  public AudioManagerWin32() {}

  /**
   * Opens the sound device, with a 3D listener at the origin looking along z.
   *
   * @return whether the device could be opened; without it no sound plays
   */
  public boolean init() {
    return initNative();
  }

  /**
   * Makes the listener settings given since the last commit audible, all at once.
   *
   * @return 0, or a negative code when the device failed
   */
  public int commit() {
    return commitNative();
  }

  /**
   * Places the listener; heard after {@link #commit}.
   *
   * @param px position x
   * @param py position y
   * @param pz position z
   * @param fx front vector x
   * @param fy front vector y
   * @param fz front vector z
   * @param tx top vector x
   * @param ty top vector y
   * @param tz top vector z
   * @return 0, or a negative code when the device failed
   */
  public int setListener(float px, float py, float pz, float fx, float fy, float fz, float tx,
      float ty, float tz) {
    return setListenerNative(px, py, pz, fx, fy, fz, tx, ty, tz);
  }

  /**
   * Where the listener stands and faces.
   *
   * @return nine values: position, front and top vectors
   */
  public float[] getListener() {
    float[] values = new float[9];
    getListenerNative(values);
    return values;
  }

  /**
   * Sets the master volume of clip sounds, applied to each sound from its next play or volume
   * change.
   *
   * @param volume linear factor, 1 at start
   */
  public void setVolume(float volume) {
    setVolumeNative(volume);
  }

  /**
   * The master volume of clip sounds.
   *
   * @return linear factor
   */
  public float getVolume() {
    return getVolumeNative();
  }

  /**
   * The master pan, which nothing changes.
   *
   * @return 1
   */
  public float getPan() {
    return getPanNative();
  }

  /**
   * Kept for compatibility: the speaker setting is not changed.
   *
   * @param config ignored
   */
  public void setSpeaker(int config) {
    setSpeakerNative(config);
  }

  /**
   * The speaker setting.
   *
   * @return 1
   */
  public int getSpeaker() {
    return getSpeakerNative();
  }

  /**
   * Closes the sound device: the library's audio threads stop and the output is given back.
   * Dispose clip sound and music contexts first; any still held go silent and their calls change
   * nothing. The process does this by itself at exit; a game calls it to release the device
   * earlier. A later {@link #init} opens the device anew.
   */
  public void close() {
    closeNative();
  }

  /**
   * Opens the sound device with its primary buffer and 3D listener.
   *
   * @return whether it could be opened
   */
  native boolean initNative();

  /** Stops the library's audio threads and closes the device. */
  native void closeNative();

  /**
   * Makes the deferred listener settings audible.
   *
   * @return 0, or a negative code
   */
  native int commitNative();

  /**
   * Reads the listener.
   *
   * @param values receives position, front and top: nine values
   */
  native void getListenerNative(float[] values);

  /**
   * Places the listener, deferred until the next commit.
   *
   * @param px position x
   * @param py position y
   * @param pz position z
   * @param fx front x
   * @param fy front y
   * @param fz front z
   * @param tx top x
   * @param ty top y
   * @param tz top z
   * @return 0, or a negative code
   */
  native int setListenerNative(float px, float py, float pz, float fx, float fy, float fz,
      float tx, float ty, float tz);

  /**
   * The master pan.
   *
   * @return 1
   */
  native float getPanNative();

  /**
   * The speaker setting.
   *
   * @return 1
   */
  native int getSpeakerNative();

  /**
   * Does nothing.
   *
   * @param config ignored
   */
  native void setSpeakerNative(int config);

  /**
   * The master volume of clip sounds.
   *
   * @return linear factor
   */
  native float getVolumeNative();

  /**
   * Sets the master volume of clip sounds, for each sound's next play or volume change.
   *
   * @param volume linear factor
   */
  native void setVolumeNative(float volume);
}
