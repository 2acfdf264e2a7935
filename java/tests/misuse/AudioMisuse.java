package mirelo.app.win32;

import java.nio.ByteBuffer;
import vostan.test.misuse.Cases;

/** The sound device and clip sounds before the device, with bad buffers, voices and handles. */
public final class AudioMisuse {
  private AudioMisuse() {}

  /** Every sound native on a handle that names no live sound answers its nothing value. */
  private static void soundRefused(Cases c, ClipSoundContextWin32 k, long s, String what) {
    c.quiet(what + ": setters do nothing", () -> {
      k.setVolumeNative(s, 0.5f);
      k.setPanNative(s, 0.5f);
      k.setPitchNative(s, 1.5f);
      k.setCursorNative(s, 10);
      k.setPositionNative(s, 1, 2, 3);
      k.setMinDistanceNative(s, 1);
      k.setMaxDistanceNative(s, 2);
      k.getPositionNative(s, new float[3]);
    });
    c.check(!k.playNative(s, 0, false), what + ": no play");
    c.check(k.playingNative(s) == -1 && k.stopNative(s) == -1, what + ": not bound");
    c.check(k.getVolumeNative(s) == 0f && k.getCursorNative(s) == 0, what + ": no settings");
  }

  public static void main(String[] args) {
    Cases c = new Cases("audio");
    ByteBuffer pcm = ByteBuffer.allocateDirect(4410 * 2);
    AudioManagerWin32 audio = new AudioManagerWin32();
    ClipSoundContextWin32 k;
    try {
      new ClipSoundContextWin32(22050, 16, 1, pcm, 0, 2);
      c.check(false, "a clip context before the device");
    } catch (IllegalStateException e) {
      c.check(true, "no clip context before the device");
    }

    // Before initNative: every device native answers nothing.
    c.check(audio.commitNative() == 0 && audio.getVolumeNative() == 0f
        && audio.getSpeakerNative() == 0, "device queries before the device");
    c.quiet("device setters before the device", () -> {
      audio.setVolumeNative(0.5f);
      audio.setListenerNative(0, 0, 0, 0, 0, 1, 0, 1, 0);
      audio.getListenerNative(new float[9]);
    });
    c.check(audio.init(), "the device opens");

    c.quiet("listener into null and short arrays", () -> {
      audio.getListenerNative(null);
      audio.getListenerNative(new float[3]);
    });
    float[] listener = new float[9];
    audio.setListenerNative(1, 2, 3, 0, 0, 1, 0, 1, 0);
    audio.getListenerNative(listener);
    c.check(listener[0] == 1 && listener[2] == 3, "a good listener array is filled");

    // Clip data: a direct buffer holding the size asked for, and a sane pool.
    k = new ClipSoundContextWin32(22050, 16, 1, pcm, 0, 2);
    c.check(k.initNative(22050, 16, 1, null, 100, 0, 0, 2) == 0, "no data");
    c.check(k.initNative(22050, 16, 1, ByteBuffer.allocate(100), 100, 0, 0, 2) == 0, "heap buffer");
    c.check(k.initNative(22050, 16, 1, pcm, pcm.capacity() + 1, 0, 0, 2) == 0, "size past data");
    c.check(k.initNative(22050, 16, 1, pcm, -1, 0, 0, 2) == 0, "negative size");
    c.check(k.initNative(22050, 16, 1, pcm, 100, 0, 0, -1) == 0, "negative voices");
    c.check(k.initNative(22050, 16, 1, pcm, 100, 0, 0, 1 << 30) == 0, "a billion voices");

    long context = k.initNative(22050, 16, 1, pcm, pcm.capacity(), 0, 0, 2);
    c.check(context != 0, "a context");
    long sound = k.createSoundNative(context, 1, 0.5f, 1, 1, 100);
    c.check(sound != 0, "a sound");
    c.check(!k.playNative(sound, 2, false) && !k.playNative(sound, 1 << 20, false)
        && !k.playNative(sound, -1, false), "only the pool's voices play");
    c.check(k.playNative(sound, 1, true), "the last voice plays");
    c.quiet("position into null and short arrays", () -> {
      k.getPositionNative(sound, null);
      k.getPositionNative(sound, new float[1]);
    });

    // Made-up and crossed handles.
    c.check(k.createSoundNative(12345, 1, 0.5f, 1, 1, 100) == 0, "no sound of a made-up context");
    c.check(k.createSoundNative(sound, 1, 0.5f, 1, 1, 100) == 0, "no sound of a sound");
    c.check(k.getFreeBufferIndexNative(sound, 1) == -1, "a sound is no context");
    soundRefused(c, k, 0, "zero sound");
    soundRefused(c, k, 987654321L, "made-up sound");
    soundRefused(c, k, context, "a context as a sound");

    // A sound disposed while it plays leaves its voice free; a second dispose does nothing.
    long other = k.createSoundNative(context, 1, 0.5f, 1, 1, 100);
    c.check(k.playNative(other, 0, false), "a second sound plays");
    k.disposeSoundNative(other);
    k.disposeSoundNative(other);
    soundRefused(c, k, other, "a disposed sound");
    c.check(k.getFreeBufferIndexNative(context, 0) == 0, "its voice is free again");

    // A context disposed under its sounds: they are dead, even if a new context comes.
    k.disposeNative(context);
    k.disposeNative(context);
    soundRefused(c, k, sound, "a sound of a disposed context");
    c.check(k.getFreeBufferIndexNative(context, 1) == -1, "a disposed context");
    long again = k.initNative(22050, 16, 1, pcm, pcm.capacity(), 0, 0, 1);
    soundRefused(c, k, sound, "an orphaned sound after a new context");
    k.disposeSoundNative(sound);
    k.disposeNative(again);
    c.finish();
  }
}
