package vostan.demo;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Paths;
import mirelo.app.VorbisSong;
import mirelo.app.win32.AudioManagerWin32;
import mirelo.app.win32.ClipSoundContextWin32;

/** The song the build synthesises, decoded whole and looped quietly under the clicks. */
final class BackgroundSong {
  private ClipSoundContextWin32 clip;
  private ClipSoundContextWin32.Sound sound;
  final String description;

  private BackgroundSong(String description) {
    this.description = description;
  }

  static BackgroundSong start(String path, AudioManagerWin32 audio) {
    if (path == null || audio == null) return new BackgroundSong("no song");
    byte[] file;
    try {
      file = Files.readAllBytes(Paths.get(path));
    } catch (IOException e) {
      return new BackgroundSong("no song at " + path);
    }
    VorbisSong song = new VorbisSong();
    long handle = song.n_init(file);
    if (handle == 0) return new BackgroundSong(path + " is no Ogg Vorbis stream");
    ByteBuffer pcm = ByteBuffer.allocateDirect(song.frames * song.channel * 2)
                         .order(ByteOrder.LITTLE_ENDIAN);
    song.n_decode(handle, 0, song.frames, 0.5f, pcm);
    song.n_dispose(handle);
    BackgroundSong s = new BackgroundSong(String.format("song %s: %d frames at %.0f Hz, %d channels",
        Paths.get(path).getFileName(), song.frames, song.freq, song.channel));
    s.clip = new ClipSoundContextWin32(song.freq, 16, song.channel, pcm, 0, 1);
    s.sound = s.clip.createSound(0.6f, 0.5f, 1.0f, 1, 100);
    s.sound.play(true);
    return s;
  }

  boolean playing() {
    return sound != null && sound.playing() >= 0;
  }

  void stop() {
    if (sound == null) return;
    sound.stop();
    sound.dispose();
    clip.dispose();
    sound = null;
  }
}
