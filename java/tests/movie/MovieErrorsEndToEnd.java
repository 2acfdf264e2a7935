package mirelo.app;

import java.io.ByteArrayOutputStream;
import java.io.File;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * Damaged movies and the library's log, seen from Java. By default a damaged movie ends the
 * process; with "vostan.movie.recoverable" it only fails to open. The library's log lines come in
 * order with Java's own output through a pipe, and "vostan.log=off" silences them. Each case runs
 * in a JVM of its own, whose output is read here. Usage: MovieErrorsEndToEnd SAMPLE.swf
 */
public final class MovieErrorsEndToEnd {
  private static void check(boolean ok, String what) {
    if (!ok) throw new AssertionError(what);
  }

  /** A plain movie whose one shape has a fill of an unknown kind, which the reader can't go past. */
  static byte[] damagedMovie() {
    byte[] body = {
      0x00, // frame rectangle of zero-bit fields
      0x00, 0x0C, // 12 frames per second
      0x01, 0x00, // one frame
      (byte) 0x85, 0x00, // block 2 (shape), 5 bytes
      0x01, 0x00, // id 1
      0x00, // bounds
      0x01, // one fill
      0x55, // of an unknown kind
      0x40, 0x00, // show frame
      0x00, 0x00 // end
    };
    byte[] file = new byte[8 + body.length];
    file[0] = 'F';
    file[1] = 'W';
    file[2] = 'S';
    file[3] = 6;
    file[4] = (byte) file.length;
    System.arraycopy(body, 0, file, 8, body.length);
    return file;
  }

  /** The child: opens the damaged movie twice between Java lines, then the good one. */
  private static void child(String swf, boolean graphics) throws Exception {
    if (graphics) {
      // Making the device logs lines of its own, which nothing flushes by hand.
      mirelo.app.win32.WinConsole.n_init();
      check(mirelo.app.win32.WinConsole.n_createWindow("errors", 32, 32, 1), "window");
      check(mirelo.app.win32.WinConsole.n_createGraphics(0), "graphics");
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

  private static final class Run {
    int status;
    List<String> lines = new ArrayList<>();
  }

  private static Run run(String swf, boolean graphics, String... properties) throws Exception {
    List<String> command = new ArrayList<>();
    command.add(new File(System.getProperty("java.home"), "bin/java").getPath());
    // A JVM ended from under it may find its signal handlers changed and say so
    // when it checks JNI, so the child that must die goes without the check.
    if (graphics) command.add("-Xcheck:jni");
    command.add("-Djava.library.path=" + System.getProperty("java.library.path"));
    command.addAll(Arrays.asList(properties));
    command.addAll(Arrays.asList("-cp", System.getProperty("java.class.path")));
    command.addAll(Arrays.asList(MovieErrorsEndToEnd.class.getName(), "--child", swf, String.valueOf(graphics)));
    // Standard output alone, through a pipe: the case where buffering reorders lines.
    ProcessBuilder builder = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT);
    builder.environment().put("SDL_VIDEODRIVER", "offscreen");
    Process p = builder.start();
    ByteArrayOutputStream out = new ByteArrayOutputStream();
    p.getInputStream().transferTo(out);
    Run r = new Run();
    r.status = p.waitFor();
    for (String line : out.toString(StandardCharsets.UTF_8).split("\n"))
      if (!line.isEmpty()) r.lines.add(line);
    System.out.println("child " + Arrays.toString(properties) + " exit " + r.status + ": " + r.lines);
    return r;
  }

  public static void main(String[] args) throws Exception {
    if (args.length == 3 && args[0].equals("--child")) {
      System.loadLibrary("vostan");
      child(args[1], Boolean.parseBoolean(args[2]));
      return;
    }
    String swf = args[0];

    Run fatal = run(swf, false);
    check(fatal.status == 255, "by default a damaged movie ends the process with -1");
    check(fatal.lines.size() >= 2
            && fatal.lines.subList(0, 2).equals(List.of("java: first open", "Unknown fill type: 85"))
            && fatal.lines.stream().filter(l -> l.startsWith("java:")).count() == 1,
        "the reader's message comes after Java's line, and nothing runs after it");

    Run recovered = run(swf, true, "-Dvostan.movie.recoverable=true");
    check(recovered.status == 0, "a recoverable error leaves the process alive");
    int made = recovered.lines.indexOf("java: graphics made");
    check(recovered.lines.indexOf("D3D device created..") == 0 && made > 0,
        "the device's log line comes before the Java line printed after it");
    check(recovered.lines.subList(made + 1, recovered.lines.size()).equals(List.of("java: first open", "Unknown fill type: 85",
            "DAMEDESITA...... ", "java: second open, got 0", "Unknown fill type: 85",
            "DAMEDESITA...... ", "java: opened twice, got 0", "java: good movie opens")),
        "each damaged open fails with its message, in order with Java's lines");

    Run quiet = run(swf, true, "-Dvostan.movie.recoverable=true", "-Dvostan.log=off");
    check(quiet.status == 0, "quiet run lives");
    check(quiet.lines.equals(List.of("java: graphics made", "java: first open", "java: second open, got 0",
            "java: opened twice, got 0", "java: good movie opens")),
        "with the log off only Java's lines remain");
    System.out.println("movie errors: ok");
  }
}
