package mirelo.app;

import java.nio.ByteBuffer;

/** An Ogg Vorbis file held in memory, decoded on demand into 16-bit PCM. */
public class VorbisSong {
  /** Sample rate in hertz; set by {@link #n_init}. */
  public float freq;

  /** Bits per decoded sample, 16; set by {@link #n_init}. */
  public int samplebits;

  /** Number of channels; set by {@link #n_init}. */
  public int channel;

  /** Length in sample frames; set by {@link #n_init}. */
  public int frames;

  /** Makes an object to open songs with. */
  public VorbisSong() {}

  /**
   * Opens an Ogg Vorbis file held in memory and fills in the fields of this object.
   *
   * @param file the whole file; copied
   * @return the song's handle, or 0 when the bytes are no Ogg Vorbis stream
   */
  public native long n_init(byte[] file);

  /**
   * Decodes frames [first, end) into a direct buffer as little-endian signed 16-bit samples,
   * channels interleaved, scaled by gain.
   *
   * @param handle the song, from {@link #n_init}
   * @param first the first frame
   * @param end the frame after the last
   * @param gain linear factor applied to the samples
   * @param buffer a direct buffer of at least (end - first) * channel * 2 bytes
   */
  public native void n_decode(long handle, int first, int end, float gain, ByteBuffer buffer);

  /**
   * Frees a song; its handle is dead afterwards.
   *
   * @param handle the song, from {@link #n_init}
   */
  public native void n_dispose(long handle);
}
