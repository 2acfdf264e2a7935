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
  /** Parameter of {@link #n_getParamf}: frames per second. */
  public static final int PARAM_FRAME_RATE = 0;

  /** Parameter of {@link #n_getParamf} and {@link #n_getClipParamf}: the number of frames. */
  public static final int PARAM_FRAME_COUNT = 1;

  /** Parameter of {@link #n_getClipParamv}: the clip's instance name. */
  public static final int PARAM_NAME = 0;

  private long movie;

  /** An object without a movie, for calling the natives with handles of one's own. */
  public VecMovie() {}

  /**
   * Opens a movie, plain or compressed SWF, to be drawn at width by height pixels.
   *
   * @param data the movie's bytes; copied
   * @param width surface width in pixels
   * @param height surface height in pixels
   * @throws IllegalArgumentException when the bytes are no movie
   */
  public VecMovie(byte[] data, int width, int height) {
    movie = n_init(data, 0, data.length, width, height);
    if (movie == 0) throw new IllegalArgumentException("not a readable movie");
  }

  /**
   * The movie's native handle.
   *
   * @return the handle, 0 after {@link #dispose}
   */
  public long handle() {
    return movie;
  }

  /** Frees the movie, its clips and its surface; its clip handles die with it. */
  public void dispose() {
    n_dispose(movie);
    movie = 0;
  }

  /**
   * Changes the surface size; the movie is scaled to it and redrawn whole.
   *
   * @param width surface width in pixels
   * @param height surface height in pixels
   */
  public void setSize(int width, int height) {
    n_setSize(movie, width, height);
  }

  /**
   * Redraws what changed and uploads the surface at (x, y) of the bound texture.
   *
   * @param x texel column of the surface's left edge
   * @param y texel row of the surface's top edge
   */
  public void drawToTexture(int x, int y) {
    n_drawToTexture(movie, 0, x, y);
  }

  /**
   * The clip of the main timeline.
   *
   * @return its handle
   */
  public long rootClip() {
    return n_getRootClip(movie);
  }

  /**
   * Shows a frame of a clip: its display list is brought to that frame and what changed is marked
   * for the next draw.
   *
   * @param clip a clip of this movie
   * @param frame the frame, 0 for the first
   */
  public void moveClipFrame(long clip, int frame) {
    n_moveClipFrame(movie, clip, frame);
  }

  /**
   * The clip under a surface pixel, as of the last draw.
   *
   * @param x pixel column of the surface
   * @param y pixel row of the surface
   * @return the clip's handle, or 0; never the root clip
   */
  public long hitClip(int x, int y) {
    return n_getHitClip(movie, x, y);
  }

  /**
   * The movie's frame rate.
   *
   * @return frames per second
   */
  public float frameRate() {
    return n_getParamf(movie, PARAM_FRAME_RATE);
  }

  /**
   * How many frames the main timeline has.
   *
   * @return the frame count
   */
  public int frameCount() {
    return (int) n_getParamf(movie, PARAM_FRAME_COUNT);
  }

  /**
   * How many frames a clip has.
   *
   * @param clip a clip of this movie
   * @return the frame count
   */
  public int clipFrameCount(long clip) {
    return (int) n_getClipParamf(clip, PARAM_FRAME_COUNT);
  }

  /**
   * A clip's instance name.
   *
   * @param clip a clip of this movie
   * @return the name, or null for an unnamed clip
   */
  public String clipName(long clip) {
    return n_getClipParamv(clip, PARAM_NAME);
  }

  /**
   * Opens a movie, plain or compressed SWF, from part of a byte array; the bytes are copied.
   *
   * @param data the bytes
   * @param offset where the movie starts in data
   * @param length the movie's length in bytes
   * @param width surface width in pixels
   * @param height surface height in pixels
   * @return the movie's handle, or 0 when the bytes are no movie
   */
  native long n_init(byte[] data, int offset, int length, int width, int height);

  /**
   * Frees a movie, its clips and its surface.
   *
   * @param movie the handle; 0 does nothing
   */
  native void n_dispose(long movie);

  /**
   * Gives a movie a new, empty surface of another size; the movie is scaled to it and redrawn whole
   * at the next draw.
   *
   * @param movie the handle; 0 does nothing
   * @param width surface width in pixels
   * @param height surface height in pixels
   */
  native void n_setSize(long movie, int width, int height);

  /**
   * Redraws what changed since the last draw and uploads the surface into the bound texture.
   *
   * @param movie the handle
   * @param unused ignored
   * @param x texel column of the surface's left edge
   * @param y texel row of the surface's top edge
   */
  native void n_drawToTexture(long movie, int unused, int x, int y);

  /**
   * Brings a clip's display list to a frame and marks what changed for the next draw.
   *
   * @param movie the clip's movie
   * @param clip the clip
   * @param frame the frame, 0 for the first
   */
  native void n_moveClipFrame(long movie, long clip, int frame);

  /**
   * The clip of the main timeline.
   *
   * @param movie the handle
   * @return the clip's handle
   */
  native long n_getRootClip(long movie);

  /**
   * The clip under a surface pixel, as of the last draw.
   *
   * @param movie the handle
   * @param x pixel column of the surface
   * @param y pixel row of the surface
   * @return the clip's handle, or 0; never the root clip
   */
  native long n_getHitClip(long movie, int x, int y);

  /**
   * A number describing a movie.
   *
   * @param movie the handle
   * @param id {@link #PARAM_FRAME_RATE} or {@link #PARAM_FRAME_COUNT}
   * @return the value; 0 for another id
   */
  native float n_getParamf(long movie, int id);

  /**
   * A number describing a clip.
   *
   * @param clip the clip's handle
   * @param id {@link #PARAM_FRAME_COUNT}
   * @return the value; 0 for another id
   */
  native float n_getClipParamf(long clip, int id);

  /**
   * A text describing a clip.
   *
   * @param clip the clip's handle
   * @param id {@link #PARAM_NAME}
   * @return the value, or null for an unnamed clip or another id
   */
  native String n_getClipParamv(long clip, int id);
}
