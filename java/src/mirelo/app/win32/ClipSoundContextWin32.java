package mirelo.app.win32;

import java.nio.ByteBuffer;

/**
 * One piece of PCM data in a pool of voices. Sounds made from it keep their
 * own settings and take a voice while they play; when the pool is full the
 * oldest voice that doesn't loop is taken. Dispose the sounds before the
 * context.
 */
public class ClipSoundContextWin32 {
  static {
    vostan.Vostan.load();
  }

  /** A panned stereo voice; 1 to 3 are 3D voices. */
  public static final int MODE_STEREO = 0;
  public static final int MODE_3D = 1;
  public static final int MODE_3D_HRTF_LIGHT = 2;
  public static final int MODE_3D_HRTF_FULL = 3;

  private final ByteBuffer data; // read again whenever a lost voice is refilled
  private long handle;

  /** Data must be a direct buffer of little-endian PCM. Throws if the device refuses it. */
  public ClipSoundContextWin32(float frequency, int bits, int channels, ByteBuffer data,
      int mode, int voices) {
    if (!data.isDirect()) throw new IllegalArgumentException("the data must be a direct buffer");
    this.data = data;
    handle = initNative(frequency, bits, channels, data, data.capacity(), 0, mode, voices);
    if (handle == 0) throw new IllegalStateException("no sound buffers for this clip");
  }

  public void dispose() {
    disposeNative(handle);
    handle = 0;
  }

  public Sound createSound(float volume, float pan, float pitch, float minDistance,
      float maxDistance) {
    return new Sound(createSoundNative(handle, volume, pan, pitch, minDistance, maxDistance));
  }

  /** A voice to play on, or -1; with steal set the oldest voice is taken when none is free. */
  public int getFreeBufferIndex(boolean steal) {
    return getFreeBufferIndexNative(handle, steal ? 1 : 0);
  }

  /** One logical playing of the clip. */
  public final class Sound {
    private long sound;

    Sound(long sound) {
      this.sound = sound;
    }

    /** Takes a free voice, or the oldest one, and plays on it. */
    public boolean play(boolean looping) {
      int index = getFreeBufferIndex(true);
      return playNative(sound, index, looping);
    }

    public boolean play(int index, boolean looping) {
      return playNative(sound, index, looping);
    }

    public void stop() {
      stopNative(sound);
    }

    /** The voice it plays on, or -1. */
    public int playing() {
      return playingNative(sound);
    }

    public void dispose() {
      disposeSoundNative(sound);
      sound = 0;
    }

    public void setVolume(float v) { setVolumeNative(sound, v); }
    public float getVolume() { return getVolumeNative(sound); }
    public void setPan(float v) { setPanNative(sound, v); }
    public float getPan() { return getPanNative(sound); }
    public void setPitch(float v) { setPitchNative(sound, v); }
    public float getPitch() { return getPitchNative(sound); }
    /** Where the next play starts, in frames; read back in bytes. */
    public void setCursor(int frames) { setCursorNative(sound, frames); }
    public int getCursor() { return getCursorNative(sound); }
    public void setPosition(float x, float y, float z) { setPositionNative(sound, x, y, z); }
    public float[] getPosition() {
      float[] p = new float[3];
      getPositionNative(sound, p);
      return p;
    }
    public void setMinDistance(float v) { setMinDistanceNative(sound, v); }
    public float getMinDistance() { return getMinDistanceNative(sound); }
    public void setMaxDistance(float v) { setMaxDistanceNative(sound, v); }
    public float getMaxDistance() { return getMaxDistanceNative(sound); }
  }

  native long initNative(float frequency, int bits, int channels, ByteBuffer data, int size,
      int unused, int mode, int count);

  native void disposeNative(long context);

  native long createSoundNative(long context, float volume, float pan, float pitch,
      float minDistance, float maxDistance);

  native void disposeSoundNative(long sound);

  native int getFreeBufferIndexNative(long context, int mode);

  native boolean playNative(long sound, int index, boolean looping);

  native int playingNative(long sound);

  native int stopNative(long sound);

  native int getCursorNative(long sound);

  native void setCursorNative(long sound, int frames);

  native void getPositionNative(long sound, float[] position);

  native void setPositionNative(long sound, float x, float y, float z);

  native float getMinDistanceNative(long sound);

  native void setMinDistanceNative(long sound, float distance);

  native float getMaxDistanceNative(long sound);

  native void setMaxDistanceNative(long sound, float distance);

  native float getPanNative(long sound);

  native void setPanNative(long sound, float pan);

  native float getPitchNative(long sound);

  native void setPitchNative(long sound, float pitch);

  native float getVolumeNative(long sound);

  native void setVolumeNative(long sound, float volume);
}
