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

  /** A 3D voice placed by {@link Sound#setPosition}, heard from the listener. */
  public static final int MODE_3D = 1;

  /** A 3D voice with light head-related filtering. */
  public static final int MODE_3D_HRTF_LIGHT = 2;

  /** A 3D voice with full head-related filtering. */
  public static final int MODE_3D_HRTF_FULL = 3;

  private final ByteBuffer data; // read again whenever a lost voice is refilled
  private long handle;

  /**
   * Loads one clip into a pool of voices on the sound device, which {@link AudioManagerWin32#init}
   * must have opened.
   *
   * @param frequency sample rate in hertz
   * @param bits bits per sample, 8 or 16
   * @param channels 1 or 2
   * @param data a direct buffer of little-endian PCM, the whole of which is the clip; it is read
   *     again whenever a lost voice is refilled, so keep its contents
   * @param mode {@link #MODE_STEREO} or one of the 3D modes
   * @param voices how many copies may sound at once
   * @throws IllegalArgumentException when the buffer is not direct
   * @throws IllegalStateException when the device refuses the clip
   */
  public ClipSoundContextWin32(float frequency, int bits, int channels, ByteBuffer data,
      int mode, int voices) {
    if (!data.isDirect()) throw new IllegalArgumentException("the data must be a direct buffer");
    this.data = data;
    handle = initNative(frequency, bits, channels, data, data.capacity(), 0, mode, voices);
    if (handle == 0) throw new IllegalStateException("no sound buffers for this clip");
  }

  /** Frees the voices. Dispose the context's sounds first. */
  public void dispose() {
    disposeNative(handle);
    handle = 0;
  }

  /**
   * Makes a sound: one logical playing of the clip with its own settings, bound to a voice only
   * while it plays.
   *
   * @param volume linear gain, 1 for the clip as recorded, 0 silent
   * @param pan 0 left, 0.5 centre, 1 right; for stereo voices
   * @param pitch playback speed, 0.5 to 2
   * @param minDistance distance under which a 3D voice is heard at full volume
   * @param maxDistance distance past which a 3D voice gets no quieter
   * @return the sound
   */
  public Sound createSound(float volume, float pan, float pitch, float minDistance,
      float maxDistance) {
    return new Sound(createSoundNative(handle, volume, pan, pitch, minDistance, maxDistance));
  }

  /**
   * A voice to play on.
   *
   * @param steal when no voice is free, take the one that started first among those not looping
   * @return the voice's index, or -1 when none is free and steal is false
   */
  public int getFreeBufferIndex(boolean steal) {
    return getFreeBufferIndexNative(handle, steal ? 1 : 0);
  }

  /** One logical playing of the clip. */
  public final class Sound {
    private long sound;

    Sound(long sound) {
      this.sound = sound;
    }

    /**
     * Takes a free voice, or the oldest one, and plays on it from the cursor.
     *
     * @param looping play again from the start at the end, until stopped
     * @return whether it plays
     */
    public boolean play(boolean looping) {
      int index = getFreeBufferIndex(true);
      return playNative(sound, index, looping);
    }

    /**
     * Plays on a given voice from the cursor, taking it from the sound that holds it.
     *
     * @param index the voice, from {@link ClipSoundContextWin32#getFreeBufferIndex}
     * @param looping play again from the start at the end, until stopped
     * @return whether it plays
     */
    public boolean play(int index, boolean looping) {
      return playNative(sound, index, looping);
    }

    /** Stops and gives the voice back; the cursor stays where it was. */
    public void stop() {
      stopNative(sound);
    }

    /**
     * The voice it plays on.
     *
     * @return the voice's index, or -1 when it does not play
     */
    public int playing() {
      return playingNative(sound);
    }

    /** Stops the sound and frees it. */
    public void dispose() {
      disposeSoundNative(sound);
      sound = 0;
    }

    /**
     * Sets the volume, heard at once when playing; scaled by the master volume.
     *
     * @param v linear gain, 0 silent, 1 as recorded
     */
    public void setVolume(float v) { setVolumeNative(sound, v); }

    /**
     * The volume.
     *
     * @return linear gain
     */
    public float getVolume() { return getVolumeNative(sound); }

    /**
     * Sets the pan of a stereo voice.
     *
     * @param v 0 left, 0.5 centre, 1 right
     */
    public void setPan(float v) { setPanNative(sound, v); }

    /**
     * The pan.
     *
     * @return 0 left, 0.5 centre, 1 right
     */
    public float getPan() { return getPanNative(sound); }

    /**
     * Sets the playback speed.
     *
     * @param v speed factor, clamped to 0.5 to 2
     */
    public void setPitch(float v) { setPitchNative(sound, v); }

    /**
     * The playback speed.
     *
     * @return speed factor, 0.5 to 2
     */
    public float getPitch() { return getPitchNative(sound); }

    /**
     * Sets where the next play starts.
     *
     * @param frames sample frames from the start of the clip
     */
    public void setCursor(int frames) { setCursorNative(sound, frames); }

    /**
     * Where the next play starts.
     *
     * @return bytes (not frames) from the start of the clip
     */
    public int getCursor() { return getCursorNative(sound); }

    /**
     * Places a 3D voice; heard after {@link AudioManagerWin32#commit}.
     *
     * @param x position, in the listener's units
     * @param y position
     * @param z position
     */
    public void setPosition(float x, float y, float z) { setPositionNative(sound, x, y, z); }

    /**
     * Where a 3D voice stands.
     *
     * @return x, y and z
     */
    public float[] getPosition() {
      float[] p = new float[3];
      getPositionNative(sound, p);
      return p;
    }

    /**
     * Sets the distance under which a 3D voice is heard at full volume.
     *
     * @param v the distance
     */
    public void setMinDistance(float v) { setMinDistanceNative(sound, v); }

    /**
     * The distance under which a 3D voice is heard at full volume.
     *
     * @return the distance
     */
    public float getMinDistance() { return getMinDistanceNative(sound); }

    /**
     * Sets the distance past which a 3D voice gets no quieter.
     *
     * @param v the distance
     */
    public void setMaxDistance(float v) { setMaxDistanceNative(sound, v); }

    /**
     * The distance past which a 3D voice gets no quieter.
     *
     * @return the distance
     */
    public float getMaxDistance() { return getMaxDistanceNative(sound); }
  }

  /**
   * Loads a clip into a pool of voices: one buffer with the data and duplicates sharing it.
   *
   * @param frequency sample rate in hertz
   * @param bits bits per sample
   * @param channels 1 or 2
   * @param data a direct buffer of little-endian PCM
   * @param size bytes of data to use
   * @param unused ignored
   * @param mode {@link #MODE_STEREO} or a 3D mode
   * @param count how many voices
   * @return the context's handle, or 0 when the device refuses the clip
   */
  native long initNative(float frequency, int bits, int channels, ByteBuffer data, int size,
      int unused, int mode, int count);

  /**
   * Frees a context and its voices.
   *
   * @param context the handle
   */
  native void disposeNative(long context);

  /**
   * Makes a sound of a context, bound to no voice.
   *
   * @param context the handle
   * @param volume linear gain
   * @param pan 0 left to 1 right
   * @param pitch speed factor, clamped to 0.5 to 2
   * @param minDistance 3D distance of full volume
   * @param maxDistance 3D distance past which it gets no quieter
   * @return the sound's handle
   */
  native long createSoundNative(long context, float volume, float pan, float pitch,
      float minDistance, float maxDistance);

  /**
   * Stops a sound and frees it.
   *
   * @param sound the handle
   */
  native void disposeSoundNative(long sound);

  /**
   * A voice to play on.
   *
   * @param context the handle
   * @param mode 1 takes the oldest voice that does not loop when none is free; else none is taken
   * @return the voice, or -1
   */
  native int getFreeBufferIndexNative(long context, int mode);

  /**
   * Plays a sound on a voice from its cursor, taking the voice from whichever sound holds it.
   *
   * @param sound the handle
   * @param index the voice
   * @param looping whether it plays again from the start at the end
   * @return whether it plays
   */
  native boolean playNative(long sound, int index, boolean looping);

  /**
   * The voice a sound plays on.
   *
   * @param sound the handle
   * @return the voice, or -1
   */
  native int playingNative(long sound);

  /**
   * Stops a sound and gives its voice back; the cursor stays.
   *
   * @param sound the handle
   * @return -1
   */
  native int stopNative(long sound);

  /**
   * Where the next play starts.
   *
   * @param sound the handle
   * @return bytes from the start of the clip
   */
  native int getCursorNative(long sound);

  /**
   * Sets where the next play starts.
   *
   * @param sound the handle
   * @param frames sample frames from the start of the clip
   */
  native void setCursorNative(long sound, int frames);

  /**
   * Where a 3D sound stands.
   *
   * @param sound the handle
   * @param position receives x, y and z
   */
  native void getPositionNative(long sound, float[] position);

  /**
   * Places a 3D sound; heard after the listener's commit.
   *
   * @param sound the handle
   * @param x position
   * @param y position
   * @param z position
   */
  native void setPositionNative(long sound, float x, float y, float z);

  /**
   * The distance of full volume.
   *
   * @param sound the handle
   * @return the distance
   */
  native float getMinDistanceNative(long sound);

  /**
   * Sets the distance of full volume.
   *
   * @param sound the handle
   * @param distance the distance
   */
  native void setMinDistanceNative(long sound, float distance);

  /**
   * The distance past which the sound gets no quieter.
   *
   * @param sound the handle
   * @return the distance
   */
  native float getMaxDistanceNative(long sound);

  /**
   * Sets the distance past which the sound gets no quieter.
   *
   * @param sound the handle
   * @param distance the distance
   */
  native void setMaxDistanceNative(long sound, float distance);

  /**
   * The pan.
   *
   * @param sound the handle
   * @return 0 left to 1 right
   */
  native float getPanNative(long sound);

  /**
   * Sets the pan of a stereo voice.
   *
   * @param sound the handle
   * @param pan 0 left, 0.5 centre, 1 right
   */
  native void setPanNative(long sound, float pan);

  /**
   * The playback speed.
   *
   * @param sound the handle
   * @return speed factor
   */
  native float getPitchNative(long sound);

  /**
   * Sets the playback speed.
   *
   * @param sound the handle
   * @param pitch speed factor, clamped to 0.5 to 2
   */
  native void setPitchNative(long sound, float pitch);

  /**
   * The volume.
   *
   * @param sound the handle
   * @return linear gain
   */
  native float getVolumeNative(long sound);

  /**
   * Sets the volume, scaled by the master volume.
   *
   * @param sound the handle
   * @param volume linear gain
   */
  native void setVolumeNative(long sound, float volume);
}
