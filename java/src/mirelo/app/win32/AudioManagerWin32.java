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

  public boolean init() {
    return initNative();
  }

  /** Makes the listener settings given since the last commit audible, all at once. */
  public int commit() {
    return commitNative();
  }

  /** Position, front and top vectors; heard after {@link #commit}. */
  public int setListener(float px, float py, float pz, float fx, float fy, float fz, float tx,
      float ty, float tz) {
    return setListenerNative(px, py, pz, fx, fy, fz, tx, ty, tz);
  }

  /** Position, front and top, nine values. */
  public float[] getListener() {
    float[] values = new float[9];
    getListenerNative(values);
    return values;
  }

  public void setVolume(float volume) {
    setVolumeNative(volume);
  }

  public float getVolume() {
    return getVolumeNative();
  }

  public float getPan() {
    return getPanNative();
  }

  public void setSpeaker(int config) {
    setSpeakerNative(config);
  }

  public int getSpeaker() {
    return getSpeakerNative();
  }

  native boolean initNative();

  native int commitNative();

  native void getListenerNative(float[] values);

  native int setListenerNative(float px, float py, float pz, float fx, float fy, float fz,
      float tx, float ty, float tz);

  native float getPanNative();

  native int getSpeakerNative();

  native void setSpeakerNative(int config);

  native float getVolumeNative();

  native void setVolumeNative(float volume);
}
