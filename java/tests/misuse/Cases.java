package vostan.test.misuse;

/**
 * A group of misuse cases in one JVM: each case runs, its answers are checked, and the group
 * reports how many failed. A case that takes the JVM down ends the group with no report.
 */
public final class Cases {
  private final String group;
  private int failures;
  private int count;

  /** A new group, named in every line it prints. */
  public Cases(String group) {
    this.group = group;
  }

  /** Records one check. */
  public void check(boolean ok, String what) {
    count++;
    if (!ok) failures++;
    System.out.println((ok ? "ok   " : "FAIL ") + group + ": " + what);
  }

  /** A call that must return normally, with no exception pending afterwards. */
  public void quiet(String what, Runnable call) {
    try {
      call.run();
      check(true, what);
    } catch (Throwable t) {
      check(false, what + " threw " + t);
    }
  }

  /** A call that must throw the given kind of exception. */
  public void throwsKind(String what, Class<? extends Throwable> kind, Runnable call) {
    try {
      call.run();
      check(false, what + " returned without " + kind.getSimpleName());
    } catch (Throwable t) {
      check(kind.isInstance(t), what + " threw " + t);
    }
  }

  /** Ends the JVM with the group's result. */
  public void finish() {
    System.out.println(group + ": " + (count - failures) + " of " + count + " passed");
    System.exit(failures == 0 ? 0 : 1);
  }

  /** Resident memory of this process in kB, from /proc. */
  public static long residentKb() {
    try {
      for (String line : java.nio.file.Files.readAllLines(java.nio.file.Path.of("/proc/self/status"))) {
        if (line.startsWith("VmRSS:")) return Long.parseLong(line.replaceAll("[^0-9]", ""));
      }
    } catch (java.io.IOException e) {
      return -1;
    }
    return -1;
  }
}
