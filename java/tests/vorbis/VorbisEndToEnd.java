package vostan.test;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Paths;
import mirelo.app.VorbisSong;

/**
 * VorbisSong through its natives: a stereo tone file (44100 Hz, 22050 frames, channel c a sine of
 * 440 * (c + 2) / 2 Hz at half scale) is opened, decoded whole and in a range with gain, and a
 * file that is no Ogg Vorbis is refused.
 */
public final class VorbisEndToEnd {
  private static int failures = 0;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok)
      failures++;
  }

  private static short[] decode(VorbisSong song, long handle, int first, int end, float gain) {
    ByteBuffer buffer =
        ByteBuffer.allocateDirect((end - first) * song.channel * 2).order(ByteOrder.LITTLE_ENDIAN);
    song.n_decode(handle, first, end, gain, buffer);
    short[] pcm = new short[(end - first) * song.channel];
    buffer.asShortBuffer().get(pcm);
    return pcm;
  }

  private static double snr(short[] pcm, int channel) {
    double signal = 0;
    double error = 0;
    double hz = 440.0 * (channel + 2) / 2.0;
    for (int i = 0; i < pcm.length / 2; i++) {
      double want = 0.5 * Math.sin(2 * Math.PI * hz * i / 44100.0) * 32768.0;
      double got = pcm[2 * i + channel];
      signal += want * want;
      error += (got - want) * (got - want);
    }
    return 10 * Math.log10(signal / Math.max(error, 1e-9));
  }

  public static void main(String[] args) throws Exception {
    System.loadLibrary("vostan");
    byte[] file = Files.readAllBytes(Paths.get(args[0]));

    VorbisSong song = new VorbisSong();
    long handle = song.n_init(file);
    check(handle != 0, "the tone file opens");
    check(song.freq == 44100.0f, "freq " + song.freq);
    check(song.samplebits == 16, "samplebits " + song.samplebits);
    check(song.channel == 2, "channel " + song.channel);
    check(song.frames == 22050, "frames " + song.frames);

    short[] whole = decode(song, handle, 0, song.frames, 1.0f);
    for (int c = 0; c < 2; c++) {
      double db = snr(whole, c);
      check(db > 30, String.format("channel %d matches its tone, %.1f dB", c, db));
    }

    // A range at twice the gain is the same span of the whole, doubled and clamped.
    short[] part = decode(song, handle, 5000, 6000, 2.0f);
    boolean same = true;
    int clamped = 0;
    for (int i = 0; i < part.length; i++) {
      int want = Math.max(-32768, Math.min(32767, whole[2 * 5000 + i] * 2));
      same &= part[i] == want;
      if (want == 32767 || want == -32768)
        clamped++;
    }
    check(same, "frames 5000 to 6000 at gain 2 are the whole decode's, doubled");
    check(clamped > 0, "gain 2 clamps the peaks (" + clamped + " samples)");
    song.n_dispose(handle);

    // A file that is no Ogg Vorbis gives 0 and leaves the fields alone.
    VorbisSong bad = new VorbisSong();
    byte[] notOgg = new byte[4096];
    for (int i = 0; i < notOgg.length; i++) notOgg[i] = (byte) (i * 37 + 11);
    check(bad.n_init(notOgg) == 0, "noise is refused");
    check(bad.frames == 0 && bad.channel == 0 && bad.freq == 0, "a refused file sets no field");
    byte[] cut = java.util.Arrays.copyOf(file, 100);
    check(bad.n_init(cut) == 0, "a file cut inside its headers is refused");

    System.out.println(failures == 0 ? "all checks passed" : failures + " checks failed");
    System.exit(failures == 0 ? 0 : 1);
  }
}
