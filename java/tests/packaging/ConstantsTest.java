package vostan.test;

import java.lang.reflect.Field;
import java.lang.reflect.Modifier;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * The constants a game passes hold the values their names promise: the key codes are AWT's, the
 * modifier bits that share AWT's names are AWT's, and every GL enumerant is the one the OpenGL
 * headers define. Usage: ConstantsTest HEADER... (gl.h, glext.h).
 */
public final class ConstantsTest {
  private ConstantsTest() {}

  private static final List<String> failures = new ArrayList<>();

  private static Map<String, Integer> constants(Class<?> c) throws IllegalAccessException {
    Map<String, Integer> out = new HashMap<>();
    for (Field f : c.getDeclaredFields()) {
      int m = f.getModifiers();
      if (Modifier.isPublic(m) && Modifier.isStatic(m) && f.getType() == int.class) {
        out.put(f.getName(), f.getInt(null));
      }
    }
    return out;
  }

  private static void expect(String what, Object actual, Object expected) {
    if (!expected.equals(actual)) {
      failures.add(what + " is " + actual + ", not " + expected);
    }
  }

  @SuppressWarnings("deprecation") // AWT's old modifier masks are the ones these match.
  public static void main(String[] args) throws Exception {
    System.setProperty("java.awt.headless", "true");
    Map<String, Integer> keys = constants(mirelo.mwt.event.KeyCode.class);
    for (Map.Entry<String, Integer> k : keys.entrySet()) {
      Object awt;
      try {
        awt = java.awt.event.KeyEvent.class.getField(k.getKey()).getInt(null);
      } catch (NoSuchFieldException e) {
        awt = "missing in AWT";
      }
      expect("KeyCode." + k.getKey(), k.getValue(), awt);
    }

    expect("Modifiers.SHIFT", mirelo.mwt.event.Modifiers.SHIFT, java.awt.Event.SHIFT_MASK);
    expect("Modifiers.CONTROL", mirelo.mwt.event.Modifiers.CONTROL, java.awt.Event.CTRL_MASK);
    expect("Modifiers.ALT", mirelo.mwt.event.Modifiers.ALT, java.awt.Event.ALT_MASK);
    expect("Modifiers.ALT_GRAPH", mirelo.mwt.event.Modifiers.ALT_GRAPH,
        java.awt.event.InputEvent.ALT_GRAPH_MASK);
    expect("KeyEvent.KEY_PRESSED", mirelo.mwt.event.KeyEvent.KEY_PRESSED,
        java.awt.event.KeyEvent.KEY_PRESSED);

    Map<String, Integer> defined = new HashMap<>();
    Pattern define = Pattern.compile("^#define\\s+(GL_\\w+)\\s+(0x[0-9A-Fa-f]+|\\d+)\\b");
    for (String header : args) {
      for (String line : Files.readAllLines(Path.of(header))) {
        Matcher m = define.matcher(line);
        if (m.find()) {
          defined.putIfAbsent(m.group(1), (int) (long) Long.decode(m.group(2)));
        }
      }
    }
    Map<String, Integer> gl = constants(mirelo.gfx.GL.class);
    for (Map.Entry<String, Integer> e : gl.entrySet()) {
      Object header = defined.containsKey(e.getKey()) ? defined.get(e.getKey()) : "undefined";
      expect("GL." + e.getKey(), e.getValue(), header);
    }

    System.out.println(keys.size() + " key codes, " + gl.size() + " GL enumerants checked");
    for (String f : failures) {
      System.out.println("wrong: " + f);
    }
    System.exit(failures.isEmpty() && keys.size() > 100 && gl.size() > 50 ? 0 : 1);
  }
}
