package mirelo.app;

import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import vostan.test.misuse.Cases;

/**
 * Vorbis songs from bad bytes, decoded into bad buffers and after disposal. Usage: VorbisMisuse
 * TONE.ogg [HOSTILE.ogg]
 */
public final class VorbisMisuse {
  private VorbisMisuse() {}

  public static void main(String[] args) throws Exception {
    System.loadLibrary("vostan");
    Cases c = new Cases("vorbis");
    byte[] tone = Files.readAllBytes(Path.of(args[0]));
    VorbisSong s = new VorbisSong();
    c.check(s.n_init(null) == 0, "no bytes");
    c.check(s.n_init(new byte[0]) == 0, "empty");
    c.check(s.n_init(new byte[4096]) == 0, "zeros");
    c.quiet("a file cut short", () -> s.n_dispose(s.n_init(java.util.Arrays.copyOf(tone, 200))));
    if (args.length > 1 && Files.exists(Path.of(args[1])))
      c.check(s.n_init(Files.readAllBytes(Path.of(args[1]))) == 0, "a damaged setup is refused");

    long song = s.n_init(tone);
    c.check(song != 0 && s.channel > 0, "the tone opens");
    int stride = s.channel * 2;
    ByteBuffer good = ByteBuffer.allocateDirect(100 * stride);
    c.quiet("decoding into bad buffers and ranges", () -> {
      s.n_decode(song, 0, 100, 1f, null);
      s.n_decode(song, 0, 100, 1f, ByteBuffer.allocate(100 * stride));
      s.n_decode(song, 0, 100, 1f, ByteBuffer.allocateDirect(16));
      s.n_decode(song, 0, 100, 1f, good.asReadOnlyBuffer());
      s.n_decode(song, -50, 50, 1f, good);
      s.n_decode(song, 100, 0, 1f, good);
      s.n_decode(song, 0, Integer.MAX_VALUE, 1f, good);
      s.n_decode(song, Integer.MIN_VALUE, Integer.MAX_VALUE, 1f, good);
    });
    c.quiet("decoding on made-up handles", () -> {
      s.n_decode(0, 0, 100, 1f, good);
      s.n_decode(12345, 0, 100, 1f, good);
      s.n_decode(-1, 0, 100, 1f, good);
    });
    s.n_decode(song, 0, 100, 1f, good);
    boolean any = false;
    for (int i = 0; i < good.capacity(); i++) any |= good.get(i) != 0;
    c.check(any, "a good decode still writes samples");
    s.n_dispose(song);
    s.n_dispose(song);
    s.n_dispose(424242);
    ByteBuffer after = ByteBuffer.allocateDirect(100 * stride);
    s.n_decode(song, 0, 100, 1f, after);
    boolean untouched = true;
    for (int i = 0; i < after.capacity(); i++) untouched &= after.get(i) == 0;
    c.check(untouched, "nothing is decoded after n_dispose");
    c.finish();
  }
}
