package vostan.test;

/** The JVM tests' report: a line for each check, the failures counted, and the exit status. */
public final class Checks {
  private static int failures = 0;

  private Checks() {}

  /** Prints the check's line and counts it when it failed. */
  public static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  /** Whether the red, green and blue of two 0xAARRGGBB colours lie within `tolerance`. */
  public static boolean near(int argb, int expected, int tolerance) {
    for (int shift = 0; shift < 24; shift += 8) {
      int a = (argb >> shift) & 0xFF;
      int e = (expected >> shift) & 0xFF;
      if (Math.abs(a - e) > tolerance) return false;
    }
    return true;
  }

  /** Prints the summary and ends the JVM, with status 1 when a check failed. */
  public static void finish() {
    System.out.println(failures == 0 ? "all passed" : failures + " failed");
    System.exit(failures == 0 ? 0 : 1);
  }
}
