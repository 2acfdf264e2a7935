package vostan;

import java.io.DataOutputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import mirelo.app.win32.MDJSoundContextWin32;

/**
 * A copy of what a music context writes to the sound device: 16-bit stereo at 44100 Hz, from the
 * quarter mixed after {@link #start} on. For recording the game's music, runs nobody listens to,
 * and tests that compare samples.
 */
public final class MusicCapture {
  static {
    Vostan.load();
  }

  private MusicCapture() {}

  /**
   * Starts copying the music a context plays, replacing an earlier capture of it.
   *
   * @param music the context
   * @param maxFrames how many frames to keep at most; later ones are dropped
   * @return false for a closed context or a count below 1
   */
  public static boolean start(MDJSoundContextWin32 music, int maxFrames) {
    return start(music.handle(), maxFrames);
  }

  /**
   * Ends the capture.
   *
   * @param music the context
   * @return interleaved left and right samples, or null when nothing was captured
   */
  public static short[] stop(MDJSoundContextWin32 music) {
    return stop(music.handle());
  }

  /**
   * Writes samples of 44100 Hz stereo as a WAV file.
   *
   * @param path the file
   * @param stereo interleaved left and right samples
   * @throws IOException when the file cannot be written
   */
  public static void writeWav(String path, short[] stereo) throws IOException {
    ByteBuffer b = ByteBuffer.allocate(44 + stereo.length * 2).order(ByteOrder.LITTLE_ENDIAN);
    b.put("RIFF".getBytes()).putInt(36 + stereo.length * 2).put("WAVE".getBytes());
    b.put("fmt ".getBytes()).putInt(16).putShort((short) 1).putShort((short) 2);
    b.putInt(44100).putInt(44100 * 4).putShort((short) 4).putShort((short) 16);
    b.put("data".getBytes()).putInt(stereo.length * 2);
    for (short s : stereo) b.putShort(s);
    try (DataOutputStream out = new DataOutputStream(new FileOutputStream(path))) {
      out.write(b.array());
    }
  }

  private static native boolean start(long context, int maxFrames);

  private static native short[] stop(long context);
}
