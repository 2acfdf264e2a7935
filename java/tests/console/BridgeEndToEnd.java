package vostan.test;

import java.nio.charset.StandardCharsets;

/** Text conversion and exception helpers against a real JVM. */
public final class BridgeEndToEnd {
  private static int failures = 0;

  private static void check(boolean ok, String what) {
    System.out.println((ok ? "ok   " : "FAIL ") + what);
    if (!ok) failures++;
  }

  private static Throwable thrown(Runnable r) {
    try {
      r.run();
    } catch (Throwable t) {
      return t;
    }
    return null;
  }

  public static void main(String[] args) {
    System.loadLibrary("vostan");
    check(BridgeHooks.multiByteRoundTrip(null, 1252) == null, "null text gives null");
    check("".equals(BridgeHooks.multiByteRoundTrip("", 1252)), "empty text stays empty");
    check("caf\u00e9".equals(BridgeHooks.multiByteRoundTrip("caf\u00e9", 1252)),
        "Latin-1 text round trip in code page 1252");
    check(BridgeHooks.multiByteLength("caf\u00e9", 1252) == 4, "one byte a character in 1252");
    check("a?b".equals(BridgeHooks.multiByteRoundTrip("a\u3042b", 1252)),
        "a character the page lacks becomes '?'");
    check("\u65e5\u672c".equals(BridgeHooks.multiByteRoundTrip("\u65e5\u672c", 932)),
        "Japanese text round trip in code page 932");
    check(BridgeHooks.multiByteLength("\u65e5\u672c", 932) == 4, "two bytes a character in 932");
    check("".equals(BridgeHooks.fromNullBytes(5)), "null bytes with length 5 give \"\"");
    check("x\u00e9\ud83d\ude00".equals(BridgeHooks.wideRoundTrip("x\u00e9\ud83d\ude00")),
        "UTF-16 copy keeps surrogate pairs");
    check(BridgeHooks.wideRoundTrip(null) == null, "wide copy of null is null");
    check("/tmp/\u00e9t\u00e9".equals(
              BridgeHooks.fromPath("/tmp/\u00e9t\u00e9".getBytes(StandardCharsets.UTF_8))),
        "paths come in the system code page (UTF-8)");

    Throwable t = thrown(() -> BridgeHooks.throwInternal("internal error"));
    check(t instanceof InternalError && "internal error".equals(t.getMessage()),
        "throwInternalError raises InternalError");
    t = thrown(BridgeHooks::throwOutOfMemory);
    check(t instanceof OutOfMemoryError, "throwOutOfMemoryError raises OutOfMemoryError");
    t = thrown(BridgeHooks::throwMissingClass);
    check(t instanceof NoClassDefFoundError, "a missing class leaves FindClass's error: " + t);

    System.out.println(failures == 0 ? "bridge end-to-end: all passed" : failures + " failed");
    System.exit(failures == 0 ? 0 : 1);
  }
}
