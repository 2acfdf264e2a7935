package vostan.tests.audio;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import mirelo.app.win32.AudioManagerWin32;
import mirelo.app.win32.ClipSoundContextWin32;
import vostan.demo.ClickSound;

/** Plays clips through the natives on the default device (a silent one without a sound card). */
public final class ClipSoundEndToEnd {
  private static void check(boolean ok, String what) {
    if (!ok) throw new AssertionError(what);
  }

  private static ByteBuffer tone(int rate, double seconds) {
    int frames = (int) (rate * seconds);
    ByteBuffer b = ByteBuffer.allocateDirect(frames * 2).order(ByteOrder.LITTLE_ENDIAN);
    for (int i = 0; i < frames; i++) b.putShort((short) (Math.sin(i * 0.1) * 8000));
    b.flip();
    return b;
  }

  public static void main(String[] args) throws Exception {
    AudioManagerWin32 audio = new AudioManagerWin32();
    check(audio.init(), "the device opens, a silent one at least");
    audio.setSpeaker(5);
    check(audio.getSpeaker() == 1, "speaker configuration stays 1");
    check(audio.getPan() == 1.0f, "master pan reads 1");
    audio.setVolume(0.8f);
    check(audio.getVolume() == 0.8f, "master volume");
    check(audio.setListener(1, 2, 3, 0, 0, 1, 0, 1, 0) >= 0, "listener set");
    check(audio.commit() >= 0, "listener committed");
    float[] l = audio.getListener();
    check(l[0] == 1 && l[1] == 2 && l[2] == 3 && l[5] == 1 && l[7] == 1, "listener read back");

    // 200 ms clip, two voices.
    ClipSoundContextWin32 clip =
        new ClipSoundContextWin32(22050, 16, 1, tone(22050, 0.2), ClipSoundContextWin32.MODE_STEREO, 2);
    ClipSoundContextWin32.Sound a = clip.createSound(1, 0.5f, 1, 1, 100);
    ClipSoundContextWin32.Sound b = clip.createSound(1, 0.5f, 1, 1, 100);
    ClipSoundContextWin32.Sound c = clip.createSound(1, 0.5f, 1, 1, 100);
    a.setPitch(3.0f);
    check(a.getPitch() == 2.0f, "pitch clamps at 2");
    a.setPitch(1.0f);
    a.setCursor(100);
    check(a.getCursor() == 200, "cursor reads back in bytes");
    a.setCursor(0);

    check(a.play(false), "a plays");
    check(b.play(true), "b plays");
    check(a.playing() >= 0 && b.playing() >= 0, "both bound");
    check(clip.getFreeBufferIndex(false) == -1, "pool full");
    check(c.play(false), "c takes the oldest voice that doesn't loop");
    check(a.playing() == -1, "a lost its voice to c");
    // The silent device plays at the pace of real time, so c ends.
    long until = System.currentTimeMillis() + 3000;
    while (c.playing() >= 0 && System.currentTimeMillis() < until) Thread.sleep(20);
    check(c.playing() == -1, "a finished clip gives its voice back");
    check(b.playing() >= 0, "a looping clip goes on");
    b.stop();
    check(b.playing() == -1, "stopped");

    ClipSoundContextWin32 spatial =
        new ClipSoundContextWin32(22050, 16, 1, tone(22050, 0.2), ClipSoundContextWin32.MODE_3D, 3);
    ClipSoundContextWin32.Sound s = spatial.createSound(1, 0.5f, 1, 1, 50);
    s.setPosition(4, 5, 6);
    float[] p = s.getPosition();
    check(p[0] == 4 && p[1] == 5 && p[2] == 6, "position read back");
    s.setMinDistance(2);
    s.setMaxDistance(20);
    check(s.getMinDistance() == 2 && s.getMaxDistance() == 20, "distances");
    check(s.play(true), "3D voice plays");
    s.setPosition(1, 0, 0);
    audio.commit();
    s.stop();

    check(ClickSound.init(audio), "the demo's click shares the device");
    check(ClickSound.play(0.25f), "the demo's click plays");

    for (ClipSoundContextWin32.Sound x : new ClipSoundContextWin32.Sound[] {a, b, c}) x.dispose();
    s.dispose();
    clip.dispose();
    spatial.dispose();
    // Closing ends sound: a context still held goes quiet and stays callable,
    // and the device opens again.
    ClipSoundContextWin32 held =
        new ClipSoundContextWin32(22050, 16, 1, tone(22050, 0.2), ClipSoundContextWin32.MODE_STEREO, 1);
    ClipSoundContextWin32.Sound h = held.createSound(1, 0.5f, 1, 1, 100);
    check(h.play(true), "plays before the close");
    audio.close();
    audio.close();
    h.play(true);
    h.setVolume(0.5f);
    h.stop();
    h.dispose();
    held.dispose();
    check(audio.init(), "the device opens again after a close");
    ClipSoundContextWin32 again =
        new ClipSoundContextWin32(22050, 16, 1, tone(22050, 0.2), ClipSoundContextWin32.MODE_STEREO, 1);
    // Left playing on purpose: the process's exit must close the device itself.
    check(again.createSound(1, 0.5f, 1, 1, 100).play(true), "a clip plays on the new device");
    System.out.println("clip sounds: ok");
  }
}
