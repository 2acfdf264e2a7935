package mirelo.app;

/**
 * A vector movie played by the library. The natives take the movie or clip handle they act on and
 * do not use the receiver.
 */
public class VecMovie {
  native long n_init(byte[] data, int offset, int length, int width, int height);

  native void n_dispose(long movie);

  native void n_setSize(long movie, int width, int height);

  native void n_drawToTexture(long movie, int unused, int x, int y);

  native void n_moveClipFrame(long movie, long clip, int frame);

  native long n_getRootClip(long movie);

  native long n_getHitClip(long movie, int x, int y);

  native float n_getParamf(long movie, int id);

  native float n_getClipParamf(long clip, int id);

  native String n_getClipParamv(long clip, int id);
}
