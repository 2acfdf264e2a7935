package vostan.demo;

import java.io.File;
import mirelo.app.win32.AudioManagerWin32;
import mirelo.app.win32.WinConsole;
import mirelo.mwt.event.ApplicationEvent;
import mirelo.mwt.event.KeyEvent;
import mirelo.mwt.event.MouseEvent;
import vostan.Vostan;

/**
 * The engine's demo: opens the game window and runs a game's main loop in it. Each frame it pumps
 * the window's events and prints them, draws a rotating quad scene with the build's movie playing
 * on a textured quad and a skinned figure casting a shadow (B switches its bloom), writes a frame
 * counter and the last events in a system font, and swaps. A mouse press plays a click panned to
 * where it happened, over the song the build synthesised, and names the movie clip under the
 * pointer; any other key changes the song on the beat. The first game controller's stick moves
 * the quad and its buttons play the click.
 *
 * <p>System properties: vostan.song and vostan.movie (the build's files), vostan.frames (a folder
 * that receives PNG pictures of a few frames and a WAV of the music).
 */
public final class Demo {
  private static final int WIDTH = 640;
  private static final int HEIGHT = 480;

  private Demo() {}

  public static void main(String[] args) throws InterruptedException {
    final int seconds = args.length > 0 ? Integer.parseInt(args[0]) : 8;
    final String framesDir = System.getProperty("vostan.frames");
    Vostan.load();
    WinConsole.n_init();
    if (!WinConsole.n_createWindow("vostan demo", WIDTH, HEIGHT, 1)) {
      System.out.println("could not open the window");
      System.exit(1);
    }
    int size = WinConsole.n_getScreenSize();
    System.out.println("window " + WinConsole.n_getWindowHandle() + ", client area "
        + (size >>> 16) + "x" + (size & 0xFFFF) + "; running for " + seconds + " s");

    final boolean graphics = WinConsole.n_createGraphics(0);
    System.out.println(graphics ? "graphics device ready" : "no graphics device: events only");
    QuadScene scene = graphics ? new QuadScene() : null;
    MovieQuad movie = graphics ? MovieQuad.open(System.getProperty("vostan.movie")) : null;
    if (movie != null) System.out.println(movie.describe());
    TextOverlay text = graphics ? TextOverlay.open("DejaVu Sans") : null;
    SkinnedFigure figure = graphics ? new SkinnedFigure() : null;

    InputEcho.start();
    AudioManagerWin32 audio = new AudioManagerWin32();
    if (!audio.init()) audio = null;
    System.out.println(audio == null ? "no sound device" : "sound device open");
    if (audio != null) ClickSound.init(audio);
    BackgroundSong song = null;
    Pads pads = Pads.scan();
    WebPanel.show(WIDTH);

    final int start = WinConsole.n_getTimeMillis();
    int frames = 0;
    int events = 0;
    int pictures = 0;
    boolean closed = false;
    while (!closed && WinConsole.n_getTimeMillis() - start < seconds * 1000) {
      WinConsole.n_update();
      Object e;
      while ((e = WinConsole.n_peekEvent()) != null) {
        int t = WinConsole.n_getTimeMillis() - start;
        System.out.printf("%6d ms  %s%n", t, e);
        String detail = InputEcho.describe(e);
        if (detail != null) System.out.println("         " + detail);
        events++;
        if (text != null) text.event(e);
        if (e instanceof ApplicationEvent) {
          int id = ((ApplicationEvent) e).getID();
          if (id == ApplicationEvent.CLOSE_REQUESTED) {
            System.out.println("close requested: leaving");
            closed = true;
          }
          // Sounds play only while the window is in front, so the song waits for activation.
          if (id == ApplicationEvent.ACTIVATED && song == null) {
            song = BackgroundSong.start(
                System.getProperty("vostan.song"), audio, framesDir != null);
            System.out.println("         " + song.description + (song.playing() ? ", playing" : ""));
          }
        }
        if (e instanceof KeyEvent && ((KeyEvent) e).getID() == KeyEvent.KEY_PRESSED) {
          boolean figures = figure != null && figure.keyPressed(((KeyEvent) e).getKeyCode());
          if (!figures && song != null) System.out.println("         " + song.change());
        }
        if (e instanceof MouseEvent && ((MouseEvent) e).getID() == MouseEvent.MOUSE_PRESSED) {
          MouseEvent m = (MouseEvent) e;
          if (audio != null) {
            float pan = m.getX() / (float) WIDTH;
            System.out.printf("         click sound at pan %.2f: %s%n", pan,
                ClickSound.play(pan) ? "playing" : "not played");
          }
          if (movie != null) {
            String clip = movie.clipAt(m.getX(), m.getY());
            if (clip != null) System.out.println("         clicked the movie's \"" + clip + "\"");
          }
        }
      }
      if (pads.poll() && audio != null) {
        boolean played = ClickSound.play(0.5f);
        System.out.println(
            "         controller button: click " + (played ? "playing" : "not played"));
      }
      if (scene != null) scene.setOffset(pads.x() * 0.5f, -pads.y() * 0.5f);
      // A recording nobody types into still shows a change on the beat.
      if (framesDir != null && song != null && !song.changed()
          && WinConsole.n_getTimeMillis() - start >= 3000) {
        System.out.println("         no key pressed: " + song.change());
      }
      if (graphics && WinConsole.n_makeCurrent()) {
        long now = WinConsole.n_getTimeMillis() - start;
        scene.draw(WIDTH, HEIGHT, QuadScene.angleAt(now));
        if (movie != null) movie.draw(now, WIDTH, HEIGHT);
        figure.draw(now, WIDTH, HEIGHT);
        if (text != null) text.draw(frames, now, WIDTH, HEIGHT);
        // A few pictures spread over the run, for a run nobody watches; the spacing
        // avoids multiples of the movie's and the quad's loops, so each shows a new pose.
        if (framesDir != null && pictures < 3 && now >= (pictures + 1) * seconds * 290L) {
          File png = new File(framesDir, "frame" + (pictures + 1) + ".png");
          if (QuadScene.writeFramePng(png.getPath())) System.out.println("         wrote " + png);
          pictures++;
        }
        WinConsole.n_swapBuffers();
      }
      frames++;
      Thread.sleep(graphics ? 5 : 16);
    }
    System.out.println(frames + " frames, " + events + " events");
    WebPanel.report();
    if (song != null) song.stop(framesDir);
    // The device would close at exit too; a game that goes on without sound gives it back here.
    if (audio != null) audio.close();
    if (graphics) {
      WinConsole.n_free();
      WinConsole.n_disposeGraphics();
    }
    WinConsole.n_disposeDisplay();
    // A web engine, once started, keeps threads that must not outlive the JVM's own teardown.
    System.exit(0);
  }
}
