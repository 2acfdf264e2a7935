package mirelo.app.win32;

import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.List;
import java.util.Random;
import java.util.function.LongConsumer;

/** The random calls' sound part: the package-private sound natives, with random arguments. */
public final class AudioBridge {
  private final Random random;
  private final AudioManagerWin32 audio = new AudioManagerWin32();
  private final ClipSoundContextWin32 clip;
  private final List<Long> contexts = new ArrayList<>();
  private final List<Long> sounds = new ArrayList<>();
  private final ByteBuffer pcm = ByteBuffer.allocateDirect(2000);

  /** Sound calls drawn from `random`, on the device when one opens. */
  public AudioBridge(Random random) {
    this.random = random;
    clip = audio.initNative() ? new ClipSoundContextWin32(22050, 16, 1, pcm, 0, 2) : null;
  }

  /**
   * Disposes a handle: now and then a live one from the pool, which joins the dead; otherwise a
   * dead or made-up one, which must change nothing.
   */
  public static void retire(Random random, List<Long> pool, List<Long> dead, LongConsumer dispose) {
    if (!pool.isEmpty() && random.nextInt(3) == 0) {
      long h = pool.remove(random.nextInt(pool.size()));
      dispose.accept(h);
      dead.add(h);
    } else if (!dead.isEmpty() && random.nextBoolean()) {
      dispose.accept(dead.get(random.nextInt(dead.size())));
    } else {
      dispose.accept(random.nextLong());
    }
  }

  private long handle(List<Long> pool, List<Long> dead) {
    int r = random.nextInt(8);
    if (r < 5 && !pool.isEmpty()) return pool.get(random.nextInt(pool.size()));
    if (r < 6 && !dead.isEmpty()) return dead.get(random.nextInt(dead.size()));
    if (r < 7 && !contexts.isEmpty()) return contexts.get(random.nextInt(contexts.size()));
    return random.nextBoolean() ? 0 : random.nextLong();
  }

  /** One random sound call. */
  public void step(List<Long> dead) {
    if (clip == null) {
      audio.getListenerNative(random.nextBoolean() ? null : new float[random.nextInt(12)]);
      audio.setVolumeNative(random.nextFloat());
      return;
    }
    switch (random.nextInt(8)) {
      case 0: {
        int size = random.nextInt(4) == 0 ? random.nextInt() : random.nextInt(2200);
        ByteBuffer data = random.nextInt(4) == 0 ? ByteBuffer.allocate(100) : pcm;
        float[] rates = {22050, 0, -1, 1e9f, Float.NaN};
        int[] bits = {16, 8, 0, 24, -1};
        float rate = random.nextInt(3) == 0 ? rates[random.nextInt(rates.length)] : 22050;
        int sampleBits = random.nextInt(3) == 0 ? bits[random.nextInt(bits.length)] : 16;
        long h = clip.initNative(rate, sampleBits, random.nextInt(4),
            random.nextInt(8) == 0 ? null : data, size, 0, random.nextInt(4), random.nextInt(6) - 1);
        if (h != 0) contexts.add(h);
        break;
      }
      case 1:
        retire(random, contexts, dead, clip::disposeNative);
        break;
      case 2: {
        long h = clip.createSoundNative(handle(contexts, dead), 1, random.nextFloat(), 1, 1, 100);
        if (h != 0) sounds.add(h);
        break;
      }
      case 3:
        retire(random, sounds, dead, clip::disposeSoundNative);
        break;
      case 4:
        clip.playNative(handle(sounds, dead), random.nextInt(8) - 2, random.nextBoolean());
        break;
      case 5:
        clip.getFreeBufferIndexNative(handle(contexts, dead), random.nextInt(3));
        clip.stopNative(handle(sounds, dead));
        clip.playingNative(handle(sounds, dead));
        break;
      case 6: {
        long s = handle(sounds, dead);
        clip.setCursorNative(s, random.nextInt());
        clip.setPositionNative(s, random.nextFloat(), 0, 1);
        clip.getPositionNative(s, random.nextBoolean() ? null : new float[random.nextInt(5)]);
        clip.setPitchNative(s, random.nextFloat() * 4);
        clip.setVolumeNative(s, random.nextFloat());
        clip.setPanNative(s, random.nextFloat());
        break;
      }
      default:
        audio.setListenerNative(0, 0, 0, 0, 0, 1, 0, 1, 0);
        audio.getListenerNative(random.nextBoolean() ? null : new float[random.nextInt(12)]);
        audio.commitNative();
    }
  }
}
