package vostan.demo;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import mirelo.app.win32.AudioManagerWin32;
import mirelo.app.win32.ClipSoundContextWin32;

/**
 * A short synthesised click for the demo: a decaying tone in a pool of four
 * voices, so that fast clicks overlap. Each click rises a little in pitch.
 */
public final class ClickSound {
  private static final int RATE = 22050;
  private static AudioManagerWin32 audio;
  private static ClipSoundContextWin32 clip;
  private static ClipSoundContextWin32.Sound[] sounds;
  private static int next;

  private ClickSound() {}

  /** Uses a sound device that the caller has started already. */
  public static synchronized boolean init(AudioManagerWin32 started) {
    audio = started;
    return init();
  }

  /** Starts the sound device if nobody has; false when there is none. */
  public static synchronized boolean init() {
    if (clip != null) return true;
    if (audio == null) {
      audio = new AudioManagerWin32();
      if (!audio.init()) {
        audio = null;
        return false;
      }
    }
    clip = new ClipSoundContextWin32(RATE, 16, 1, tone(660.0, 0.15), 0, 4);
    sounds = new ClipSoundContextWin32.Sound[4];
    for (int i = 0; i < sounds.length; i++) sounds[i] = clip.createSound(0.5f, 0.5f, 1.0f, 1, 100);
    return true;
  }

  /** Plays one click; the pan follows x from 0 (left) to 1 (right). */
  public static synchronized boolean play(float x) {
    if (!init()) return false;
    ClipSoundContextWin32.Sound s = sounds[next];
    next = (next + 1) % sounds.length;
    s.setPan(Math.max(0f, Math.min(1f, x)));
    s.setPitch(1.0f + 0.05f * next);
    return s.play(false);
  }

  /** 16-bit mono, a sine with an exponential decay. */
  static ByteBuffer tone(double hz, double seconds) {
    int frames = (int) (RATE * seconds);
    ByteBuffer b = ByteBuffer.allocateDirect(frames * 2).order(ByteOrder.LITTLE_ENDIAN);
    for (int i = 0; i < frames; i++) {
      double t = (double) i / RATE;
      double v = Math.sin(2 * Math.PI * hz * t) * Math.exp(-t * 25.0);
      b.putShort((short) Math.round(v * 20000));
    }
    b.flip();
    return b;
  }
}
