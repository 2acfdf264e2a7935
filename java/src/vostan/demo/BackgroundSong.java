package vostan.demo;

import java.io.File;
import java.io.IOException;
import mirelo.app.win32.AudioManagerWin32;
import mirelo.app.win32.MDJSoundContextWin32;
import vostan.MusicCapture;

/**
 * The songs the build synthesises, on the music mixer: the first plays from the start, and each
 * {@link #change} brings the other one in on the beat. A run nobody hears keeps what the mixer
 * played as a WAV file.
 */
final class BackgroundSong {
  private MDJSoundContextWin32 music;
  private final String[] songs;
  private int current;
  private long lastChange;
  final String description;

  private BackgroundSong(MDJSoundContextWin32 music, String[] songs, String description) {
    this.music = music;
    this.songs = songs;
    this.description = description;
  }

  /** Plays the song at path; the second song is demo2.ogg beside it. Captures if asked. */
  static BackgroundSong start(String path, AudioManagerWin32 audio, boolean capture) {
    if (path == null || audio == null) return new BackgroundSong(null, null, "no song");
    File first = new File(path);
    if (!first.isFile()) return new BackgroundSong(null, null, "no song at " + path);
    File second = new File(first.getParentFile(), "demo2.ogg");
    MDJSoundContextWin32 music = new MDJSoundContextWin32();
    if (!music.isOpen()) return new BackgroundSong(null, null, "the music mixer could not start");
    if (capture) MusicCapture.start(music, 44100 * 120);
    music.setSongFile(first.getPath());
    music.play(true);
    return new BackgroundSong(music, new String[] {first.getPath(), second.getPath()},
        "song " + first.getName() + " on the music mixer; a key brings in " + second.getName()
            + " on the beat");
  }

  /** Whether a change was ever asked for. */
  boolean changed() {
    return lastChange != 0;
  }

  boolean playing() {
    return music != null;
  }

  /** Names the other song and asks for a beat-locked change to it. */
  String change() {
    if (music == null) return "no music";
    // A change waits up to two seconds for its beat and then takes eight.
    long now = System.currentTimeMillis();
    if (now - lastChange < 10000) return "a change is under way";
    lastChange = now;
    current ^= 1;
    music.setSongFile(songs[current]);
    music.setTrick(MDJSoundContextWin32.TRICK_BEAT_SYNC);
    return "changing to " + new File(songs[current]).getName() + " on the beat";
  }

  /** Stops the music; with a folder, first writes what the mixer played there as music.wav. */
  void stop(String wavFolder) {
    if (music == null) return;
    short[] played = MusicCapture.stop(music);
    if (wavFolder != null && played != null) {
      File wav = new File(wavFolder, "music.wav");
      try {
        MusicCapture.writeWav(wav.getPath(), played);
        double seconds = played.length / 2 / 44100.0;
        System.out.printf("         wrote %s (%.1f s of music)%n", wav, seconds);
      } catch (IOException e) {
        System.out.println("         could not write " + wav + ": " + e.getMessage());
      }
    }
    music.dispose();
    music = null;
  }
}
