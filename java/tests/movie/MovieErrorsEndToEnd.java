package mirelo.app;

import java.io.File;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import mirelo.app.win32.WinConsole;

/**
 * Damaged movies and the library's log, seen from Java. By default a damaged movie ends the
 * process; with "vostan.movie.recoverable" it only fails to open. The library's log lines come in
 * order with Java's output through a pipe, and "vostan.log=off" silences them. Each case runs in a
 * JVM of its own whose standard output is read here. Usage: MovieErrorsEndToEnd SAMPLE.swf
 */
public final class MovieErrorsEndToEnd {
  private static void check(boolean ok, String what) {
    if (!ok) throw new AssertionError(what);
  }

  /** A plain movie whose one shape has a fill of an unknown kind, which the reader can't pass. */
  static byte[] damagedMovie() {
    byte[] body = {0x00, 0x00, 0x0C, 0x01, 0x00, // empty frame, 12 per second, one frame
        (byte) 0x85, 0x00, 0x01, 0x00, 0x00, 0x01, 0x55, // shape 1: one fill of kind 0x55
        0x40, 0x00, 0x00, 0x00}; // show frame, end
    byte[] file = new byte[8 + body.length];
    file[0] = 'F';
    file[1] = 'W';
    file[2] = 'S';
    file[3] = 6;
    file[4] = (byte) file.length;
    System.arraycopy(body, 0, file, 8, body.length);
    return file;
  }

  /** The child: makes a device (which logs unflushed lines), then opens the damaged movie twice. */
  private static void child(String swf, boolean graphics) throws Exception {
    if (graphics) {
      WinConsole.n_init();
      check(WinConsole.n_createWindow("errors", 32, 32, 1), "window");
      check(WinConsole.n_createGraphics(0), "graphics");
      System.out.println("java: graphics made");
    }
    VecMovie v = new VecMovie();
    byte[] damaged = damagedMovie();
    System.out.println("java: first open");
    long first = v.n_init(damaged, 0, damaged.length, 32, 32);
    System.out.println("java: second open, got " + first);
    long second = v.n_init(damaged, 0, damaged.length, 32, 32);
    System.out.println("java: opened twice, got " + second);
    byte[] good = Files.readAllBytes(new File(swf).toPath());
    long m = v.n_init(good, 0, good.length, 64, 64);
    System.out.println("java: good movie " + (m != 0 ? "opens" : "fails"));
    v.n_dispose(m);
  }

  /** The child's lines on standard output, then its exit status. */
  private static List<String> run(String swf, boolean graphics, String... properties)
      throws Exception {
    List<String> command = new ArrayList<>(
        List.of(new File(System.getProperty("java.home"), "bin/java").getPath(),
            "-Djava.library.path=" + System.getProperty("java.library.path")));
    // A JVM ended from under it may find its signal handlers changed and say so
    // when it checks JNI, so the child that must die goes without the check.
    if (graphics) command.add("-Xcheck:jni");
    command.addAll(Arrays.asList(properties));
    command.addAll(List.of("-cp", System.getProperty("java.class.path"),
        MovieErrorsEndToEnd.class.getName(), "--child", swf, String.valueOf(graphics)));
    ProcessBuilder b = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT);
    b.environment().put("SDL_VIDEODRIVER", "offscreen");
    Process p = b.start();
    String out = new String(p.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
    List<String> lines = new ArrayList<>(Arrays.asList(out.split("\n")));
    lines.add("exit " + p.waitFor());
    System.out.println("child " + Arrays.toString(properties) + ": " + lines);
    return lines;
  }

  public static void main(String[] args) throws Exception {
    if (args.length == 3 && args[0].equals("--child")) {
      System.loadLibrary("vostan");
      child(args[1], Boolean.parseBoolean(args[2]));
      return;
    }
    String swf = args[0];
    List<String> fatal = run(swf, false);
    check(fatal.subList(0, 2).equals(List.of("java: first open", "Unknown fill type: 85"))
            && fatal.stream().filter(l -> l.startsWith("java:")).count() == 1
            && fatal.get(fatal.size() - 1).equals("exit 255"),
        "by default the reader's message ends the process with -1");

    List<String> movieLines = List.of("java: first open", "Unknown fill type: 85",
        "DAMEDESITA...... ", "java: second open, got 0", "Unknown fill type: 85",
        "DAMEDESITA...... ", "java: opened twice, got 0", "java: good movie opens", "exit 0");
    List<String> recovered = run(swf, true, "-Dvostan.movie.recoverable=true");
    int made = recovered.indexOf("java: graphics made");
    check(recovered.indexOf("D3D device created..") == 0 && made > 0,
        "the device's log line comes before the Java line printed after it");
    check(recovered.subList(made + 1, recovered.size()).equals(movieLines),
        "each damaged open fails with its message, in order, and the process lives");

    List<String> quiet = run(swf, true, "-Dvostan.movie.recoverable=true", "-Dvostan.log=off");
    List<String> javaOnly = new ArrayList<>(List.of("java: graphics made"));
    movieLines.stream().filter(l -> l.startsWith("java:") || l.startsWith("exit")).forEach(javaOnly::add);
    check(quiet.equals(javaOnly), "with the log off only Java's lines remain");
    System.out.println("movie errors: ok");
  }
}
