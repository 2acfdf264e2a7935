package vostan;

import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.Arrays;
import java.util.Comparator;
import mirelo.app.win32.WinConsole;

/**
 * The loader in a JVM whose java.library.path has no libvostan.so. Usage: LoaderTest jar | missing.
 * "jar": the natives jar is on the class path; the library comes out of it into a fresh tmpdir,
 * natives answer, a second extraction reuses the copy, and a damaged copy is replaced. "missing":
 * no natives jar either; load() fails naming what to add.
 */
public final class LoaderTest {
  private LoaderTest() {}

  private static void check(boolean ok, String what) {
    if (!ok) {
      throw new AssertionError(what);
    }
    System.out.println("ok: " + what);
  }

  public static void main(String[] args) throws Exception {
    Path tmp = Files.createTempDirectory("vostan-loader-test");
    try {
      run(args[0], tmp);
    } finally {
      try (var files = Files.walk(tmp)) {
        files.sorted(Comparator.reverseOrder()).forEach(p -> p.toFile().delete());
      }
    }
  }

  private static void run(String mode, Path tmp) throws Exception {
    System.setProperty("java.io.tmpdir", tmp.toString());
    String resource = Vostan.resourceName(Vostan.LIBRARY);
    check(resource.equals("natives/linux-x86_64/libvostan.so"), "resource name " + resource);

    if (mode.equals("missing")) {
      try {
        Vostan.load();
        check(false, "load() without a library");
      } catch (UnsatisfiedLinkError e) {
        check(e.getMessage().contains("vostan-natives-linux-x86_64.jar"), "error names the jar: "
            + e.getMessage());
      }
      check(Vostan.loadedFrom() == null, "nothing loaded");
      return;
    }

    Vostan.load();
    Path file = Path.of(Vostan.loadedFrom());
    check(file.startsWith(tmp) && file.getFileName().toString().equals("libvostan.so"),
        "loaded from a copy in tmpdir: " + file);
    byte[] expected;
    try (InputStream in = LoaderTest.class.getClassLoader().getResourceAsStream(resource)) {
      expected = in.readAllBytes();
    }
    check(Arrays.equals(Files.readAllBytes(file), expected), "the copy holds the jar's bytes");
    int t0 = WinConsole.n_getTimeMillis();
    Thread.sleep(20);
    check(WinConsole.n_getTimeMillis() - t0 >= 15, "a native of the loaded library answers");
    Vostan.load();
    check(Vostan.loadedFrom().equals(file.toString()), "a second load() changes nothing");

    // Another run finds the copy and leaves it alone.
    FileTime old = FileTime.fromMillis(1_000_000_000_000L);
    Files.setLastModifiedTime(file, old);
    check(Vostan.extract(resource).equals(file), "a second extraction finds the same file");
    check(Files.getLastModifiedTime(file).equals(old), "an identical copy is not written again");

    // A damaged or foreign copy (in another tmpdir: the loaded one is mapped) is replaced.
    Path other = Files.createTempDirectory(tmp, "other");
    System.setProperty("java.io.tmpdir", other.toString());
    Path copy = Vostan.extract(resource);
    check(copy.startsWith(other), "a new tmpdir gets its own copy");
    Files.write(copy, Arrays.copyOf(expected, expected.length / 2));
    check(Vostan.extract(resource).equals(copy)
            && Arrays.equals(Files.readAllBytes(copy), expected),
        "a truncated copy is written again");
    try (var leftovers = Files.list(copy.getParent())) {
      check(leftovers.count() == 1, "no temporary files are left beside the copy");
    }
  }
}
