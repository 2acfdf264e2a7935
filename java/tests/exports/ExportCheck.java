package vostan.test;

import java.io.BufferedReader;
import java.io.File;
import java.io.IOException;
import java.io.InputStreamReader;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.net.URL;
import java.net.URLClassLoader;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Enumeration;
import java.util.List;
import java.util.Set;
import java.util.TreeSet;
import java.util.jar.JarEntry;
import java.util.jar.JarFile;

/**
 * Every native method of the classes in a jar must be exported by the library under the name the
 * JVM looks up, and the library exports no Java_... name that belongs to no native of the jar
 * (such as another jar's natives). Usage: ExportCheck JAR LIBRARY [NM]. Fails listing each missing
 * and each stray name.
 */
public final class ExportCheck {
  private ExportCheck() {}

  /** The JNI escape of one name or descriptor part: '/' is a separator, not escaped. */
  static String mangle(String s) {
    StringBuilder b = new StringBuilder();
    for (int i = 0; i < s.length(); i++) {
      char c = s.charAt(i);
      if (c == '/' || c == '.') {
        b.append('_');
      } else if (c == '_') {
        b.append("_1");
      } else if (c == ';') {
        b.append("_2");
      } else if (c == '[') {
        b.append("_3");
      } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) {
        b.append(c);
      } else {
        b.append(String.format("_0%04x", (int) c));
      }
    }
    return b.toString();
  }

  static String descriptor(Class<?> t) {
    if (t.isArray())
      return t.getName().replace('.', '/');
    if (t == int.class)
      return "I";
    if (t == long.class)
      return "J";
    if (t == float.class)
      return "F";
    if (t == double.class)
      return "D";
    if (t == boolean.class)
      return "Z";
    if (t == byte.class)
      return "B";
    if (t == char.class)
      return "C";
    if (t == short.class)
      return "S";
    if (t == void.class)
      return "V";
    return "L" + t.getName().replace('.', '/') + ";";
  }

  static String shortName(Method m) {
    return "Java_" + mangle(m.getDeclaringClass().getName()) + "_" + mangle(m.getName());
  }

  static String longName(Method m) {
    StringBuilder args = new StringBuilder();
    for (Class<?> p : m.getParameterTypes()) args.append(descriptor(p));
    return shortName(m) + "__" + mangle(args.toString());
  }

  /** The names are the JVM's, so a fault here would let wrong exports pass. */
  private static void selfCheck() throws Exception {
    String[][] cases = {
        {"n_init", "n_1init"},
        {"java/lang/Object;", "java_lang_Object_2"},
        {"[I[Ljava/lang/String;", "_3I_3Ljava_lang_String_2"},
        {"Outer$Inner", "Outer_00024Inner"},
        {"caf\u00e9", "caf_000e9"},
    };
    for (String[] c : cases) {
      if (!mangle(c[0]).equals(c[1])) {
        throw new AssertionError("mangle(" + c[0] + ") = " + mangle(c[0]) + ", not " + c[1]);
      }
    }
    class Sample {
      native void memcpy(long a, int b, long c, int d, int e);

      native void memcpy(long a, Object b, int c, int d, int e);

      native void n_1x(int[][] a, String b);
    }
    Method m = Sample.class.getDeclaredMethod(
        "memcpy", long.class, Object.class, int.class, int.class, int.class);
    String prefix = "Java_" + mangle(Sample.class.getName()) + "_";
    if (!longName(m).equals(prefix + "memcpy__JLjava_lang_Object_2III")) {
      throw new AssertionError("long name " + longName(m));
    }
    m = Sample.class.getDeclaredMethod("n_1x", int[][].class, String.class);
    if (!longName(m).equals(prefix + "n_11x___3_3ILjava_lang_String_2")) {
      throw new AssertionError("long name " + longName(m));
    }
  }

  private static Set<String> exports(String nm, String library)
      throws IOException, InterruptedException {
    Process p = new ProcessBuilder(nm, "-D", "--defined-only", library)
                    .redirectError(ProcessBuilder.Redirect.INHERIT)
                    .start();
    Set<String> names = new TreeSet<>();
    try (BufferedReader r = new BufferedReader(
             new InputStreamReader(p.getInputStream(), StandardCharsets.UTF_8))) {
      String line;
      while ((line = r.readLine()) != null) {
        String[] f = line.trim().split("\\s+");
        if (f.length >= 3 && "TtWi".indexOf(f[1].charAt(0)) >= 0)
          names.add(f[2]);
      }
    }
    if (p.waitFor() != 0)
      throw new IOException(nm + " failed on " + library);
    return names;
  }

  public static void main(String[] args) throws Exception {
    if (args.length < 2) {
      System.err.println("usage: ExportCheck JAR LIBRARY [NM]");
      System.exit(2);
    }
    selfCheck();
    Set<String> exported = exports(args.length > 2 ? args[2] : "nm", args[1]);
    Set<String> matched = new TreeSet<>();
    List<String> missing = new ArrayList<>();
    int classes = 0;
    int natives = 0;
    try (JarFile jar = new JarFile(args[0]);
         URLClassLoader loader = new URLClassLoader(
             new URL[] {new File(args[0]).toURI().toURL()}, ExportCheck.class.getClassLoader())) {
      Enumeration<JarEntry> entries = jar.entries();
      while (entries.hasMoreElements()) {
        String entry = entries.nextElement().getName();
        if (!entry.endsWith(".class") || entry.endsWith("module-info.class")
            || entry.endsWith("package-info.class")) {
          continue;
        }
        String className = entry.substring(0, entry.length() - 6).replace('/', '.');
        // Not initialised: a class may load the library in its static block.
        Class<?> cls = Class.forName(className, false, loader);
        classes++;
        Method[] methods = cls.getDeclaredMethods();
        for (Method m : methods) {
          if (!Modifier.isNative(m.getModifiers()))
            continue;
          natives++;
          boolean overloaded = false;
          boolean nativeOverload = false;
          for (Method o : methods) {
            if (o != m && o.getName().equals(m.getName())) {
              overloaded = true;
              nativeOverload |= Modifier.isNative(o.getModifiers());
            }
          }
          String shortName = shortName(m);
          String longName = longName(m);
          // The JVM tries the short name first: with two native overloads it
          // would bind both to one function, so only the long name will do.
          boolean found =
              exported.contains(longName) || (!nativeOverload && exported.contains(shortName));
          if (found) {
            matched.add(exported.contains(longName) ? longName : shortName);
          } else {
            missing.add((overloaded ? longName : shortName) + "  (" + cls.getName() + "."
                + m.getName() + descriptorOf(m) + ")");
          }
        }
      }
    }
    List<String> unmatched = new ArrayList<>();
    for (String name : exported) {
      if (name.startsWith("Java_") && !matched.contains(name))
        unmatched.add(name);
    }
    System.out.println(classes + " classes, " + natives + " natives, " + matched.size()
        + " exported, " + missing.size() + " missing");
    for (String name : unmatched) {
      System.out.println("stray: export matches no native: " + name);
    }
    for (String name : missing) {
      System.out.println("missing: " + name);
    }
    System.exit(missing.isEmpty() && unmatched.isEmpty() ? 0 : 1);
  }

  private static String descriptorOf(Method m) {
    StringBuilder b = new StringBuilder("(");
    for (Class<?> p : m.getParameterTypes()) b.append(descriptor(p));
    return b.append(')').append(descriptor(m.getReturnType())).toString();
  }
}
