package vostan;

import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.file.AtomicMoveNotSupportedException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.nio.file.StandardCopyOption;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.Arrays;
import java.util.Locale;

/**
 * Loads the engine's native library, {@code libvostan.so}, once per process. Call {@link #load()}
 * before the first native call of the engine (the sound classes call it themselves).
 *
 * <p>The library is looked for in two places, in this order:
 *
 * <ol>
 *   <li>{@code java.library.path}, as {@code System.loadLibrary("vostan")} does;
 *   <li>a natives jar on the class path ({@code vostan-natives-linux-x86_64.jar}, made by the build
 *       beside {@code vostan.jar}), which holds the library as the resource {@code
 *       natives/<platform>/libvostan.so}. It is copied to a folder named after its contents under
 *       {@code java.io.tmpdir} and loaded from there; later runs find the copy and reuse it.
 * </ol>
 *
 * <p>The library links to SDL2, OpenAL, FreeType and the other system libraries it uses; those are
 * found by the system loader as usual.
 */
public final class Vostan {
  /** The library's name, as given to {@code System.loadLibrary}. */
  public static final String LIBRARY = "vostan";

  private static String loadedFrom;

  private Vostan() {}

  /**
   * Loads the library unless this class has loaded it already.
   *
   * @throws UnsatisfiedLinkError when neither {@code java.library.path} nor the class path has a
   *     library for this platform, or the library found cannot be loaded; the message names the
   *     places tried
   */
  public static synchronized void load() {
    if (loadedFrom != null) {
      return;
    }
    UnsatisfiedLinkError notOnPath;
    try {
      System.loadLibrary(LIBRARY);
      loadedFrom = "java.library.path";
      return;
    } catch (UnsatisfiedLinkError e) {
      notOnPath = e;
    }
    String resource = resourceName(LIBRARY);
    Path file;
    try {
      file = extract(resource);
    } catch (IOException e) {
      UnsatisfiedLinkError error =
          new UnsatisfiedLinkError("could not copy " + resource + " out of the class path: " + e);
      error.addSuppressed(notOnPath);
      throw error;
    }
    if (file == null) {
      UnsatisfiedLinkError error = new UnsatisfiedLinkError("no " + System.mapLibraryName(LIBRARY)
          + " on java.library.path and no " + resource
          + " on the class path (add vostan-natives-" + platform() + ".jar)");
      error.addSuppressed(notOnPath);
      throw error;
    }
    System.load(file.toString());
    loadedFrom = file.toString();
  }

  /**
   * Where the library was loaded from: {@code "java.library.path"}, or the path of the copy taken
   * from the natives jar; null before {@link #load()} has succeeded.
   *
   * @return the place, or null
   */
  public static synchronized String loadedFrom() {
    return loadedFrom;
  }

  /**
   * The platform part of resource and jar names: the operating system and the processor, such as
   * {@code linux-x86_64}.
   *
   * @return the platform's name
   */
  public static String platform() {
    String os = System.getProperty("os.name", "").toLowerCase(Locale.ROOT);
    String arch = System.getProperty("os.arch", "").toLowerCase(Locale.ROOT);
    if (os.startsWith("windows")) {
      os = "windows";
    } else if (os.startsWith("mac")) {
      os = "macos";
    } else {
      os = os.replace(' ', '_');
    }
    if (arch.equals("amd64") || arch.equals("x86-64")) {
      arch = "x86_64";
    } else if (arch.equals("arm64")) {
      arch = "aarch64";
    }
    return os + "-" + arch;
  }

  /** The class-path resource that holds the library {@code name} for this platform. */
  static String resourceName(String name) {
    return "natives/" + platform() + "/" + System.mapLibraryName(name);
  }

  /**
   * Copies a class-path resource to a file under {@code java.io.tmpdir}, in a folder named after the
   * user and a digest of its bytes, unless an identical copy is there already. The copy is written under a temporary name
   * and moved into place, so JVMs starting together never load a half-written file.
   *
   * @return the file, or null when the class path has no such resource
   */
  static Path extract(String resource) throws IOException {
    byte[] bytes;
    try (InputStream in = Vostan.class.getClassLoader().getResourceAsStream(resource)) {
      if (in == null) {
        return null;
      }
      bytes = in.readAllBytes();
    }
    // The user's name keeps users of a shared tmpdir apart; a copy is trusted
    // only when it holds the same bytes.
    String user = System.getProperty("user.name", "").replaceAll("[^A-Za-z0-9_.-]", "_");
    Path dir = Paths.get(
        System.getProperty("java.io.tmpdir"), "vostan-natives-" + user + "-" + digest(bytes));
    Path file = dir.resolve(resource.substring(resource.lastIndexOf('/') + 1));
    if (Files.isRegularFile(file) && Arrays.equals(Files.readAllBytes(file), bytes)) {
      return file;
    }
    Files.createDirectories(dir);
    Path part = Files.createTempFile(dir, "part", ".tmp");
    try {
      try (OutputStream out = Files.newOutputStream(part)) {
        out.write(bytes);
      }
      try {
        Files.move(part, file, StandardCopyOption.ATOMIC_MOVE, StandardCopyOption.REPLACE_EXISTING);
      } catch (AtomicMoveNotSupportedException e) {
        Files.move(part, file, StandardCopyOption.REPLACE_EXISTING);
      }
    } finally {
      Files.deleteIfExists(part);
    }
    return file;
  }

  private static String digest(byte[] bytes) {
    try {
      byte[] d = MessageDigest.getInstance("SHA-256").digest(bytes);
      StringBuilder hex = new StringBuilder();
      for (int i = 0; i < 8; i++) {
        hex.append(String.format("%02x", d[i] & 0xFF));
      }
      return hex.toString();
    } catch (NoSuchAlgorithmException e) {
      throw new IllegalStateException("every JVM has SHA-256", e);
    }
  }
}
