package mirelo.app;

/**
 * A vector movie played by the library. The natives take the movie or clip handle they act on and
 * do not use the receiver; the methods around them keep one movie's handle.
 *
 * <p>A frame: move clips with {@link #moveClipFrame}, bind the texture the movie should go into,
 * then {@link #drawToTexture}. Only what changed is redrawn, but the whole surface is uploaded
 * each time. Hit tests answer for the state of the last draw.
 */
public class VecMovie {
  /** Parameter ids of {@link #n_getParamf} and {@link #n_getClipParamf}. */
  public static final int PARAM_FRAME_RATE = 0;
  public static final int PARAM_FRAME_COUNT = 1;
  /** Parameter id of {@link #n_getClipParamv}. */
  public static final int PARAM_NAME = 0;

  private long movie;

  public VecMovie() {}

  /** Opens a movie drawn at width by height pixels; throws if the bytes are no movie. */
  public VecMovie(byte[] data, int width, int height) {
    movie = n_init(data, 0, data.length, width, height);
    if (movie == 0) throw new IllegalArgumentException("not a readable movie");
  }

  public long handle() {
    return movie;
  }

  public void dispose() {
    n_dispose(movie);
    movie = 0;
  }

  public void setSize(int width, int height) {
    n_setSize(movie, width, height);
  }

  /** Redraws what changed and uploads the surface at (x, y) of the bound texture. */
  public void drawToTexture(int x, int y) {
    n_drawToTexture(movie, 0, x, y);
  }

  public long rootClip() {
    return n_getRootClip(movie);
  }

  public void moveClipFrame(long clip, int frame) {
    n_moveClipFrame(movie, clip, frame);
  }

  /** The clip under a surface pixel, or 0; never the root clip. */
  public long hitClip(int x, int y) {
    return n_getHitClip(movie, x, y);
  }

  public float frameRate() {
    return n_getParamf(movie, PARAM_FRAME_RATE);
  }

  public int frameCount() {
    return (int) n_getParamf(movie, PARAM_FRAME_COUNT);
  }

  public int clipFrameCount(long clip) {
    return (int) n_getClipParamf(clip, PARAM_FRAME_COUNT);
  }

  public String clipName(long clip) {
    return n_getClipParamv(clip, PARAM_NAME);
  }

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
