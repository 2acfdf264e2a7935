package mirelo.gfx.font;

import vostan.test.misuse.Cases;

/** SystemFont natives with null names and arguments and made-up handles. */
public final class FontMisuse {
  private FontMisuse() {}

  /** Runs the cases of this class into c; `when` names the moment in the lines. */
  public static void run(Cases c, String when) {
    SystemFont f = new SystemFont();
    c.quiet(when + ": fonts from nothing", () -> {
      f.n_init(null, 12, 0);
      f.n_init("no such face", -5, -1);
      f.n_init("", Integer.MAX_VALUE, 0);
      SystemFont.n_activateFont(null);
      SystemFont.n_activateFont("/no/such/file.ttf");
    });
    for (long h : new long[] {0, 12345, -1}) {
      c.quiet(when + ": font natives on " + h, () -> {
        f.n_setAltFont(h, null, 12, 0, 0, 0);
        f.n_initCharacter(h, 'a', null);
        f.n_initCharacter(h, 'a', "not character info");
        f.n_initCharacter(h, 'a', new SystemFont.CharacterInfo());
        f.n_createCache(h, 'a', 0, 0, 16, 16, 0, 0, 0, false);
        f.n_createCache(h, 'a', -5, -5, 100000, 100000, 0, 0, 0, true);
      });
    }
  }
}
