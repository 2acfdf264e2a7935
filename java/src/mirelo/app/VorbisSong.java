package mirelo.app;

import java.nio.ByteBuffer;

/** An Ogg Vorbis file held in memory, decoded on demand into 16-bit PCM. */
public class VorbisSong {
  // Written by n_init.
  public float freq;
  public int samplebits;
  public int channel;
  public int frames;

  /** Copies the file; returns the handle, or 0 when it is no Ogg Vorbis stream. */
  public native long n_init(byte[] file);

  /**
   * Decodes frames [first, end) into the direct buffer as little-endian signed 16-bit samples,
   * scaled by gain. The buffer must hold (end - first) * channel * 2 bytes.
   */
  public native void n_decode(long handle, int first, int end, float gain, ByteBuffer buffer);

  public native void n_dispose(long handle);
}
