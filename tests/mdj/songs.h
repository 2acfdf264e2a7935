#pragma once
// Test songs made by the build, and a straight decode of them as reference.
#include <vorbis/vorbisfile.h>

#include <string>
#include <vector>

#include "audio/mdj/mdj_song.h"

namespace vostan::test {

inline std::string songPath(const char* name) {
  return std::string(MDJ_SONG_DIR) + "/" + name;
}

struct Decoded {
  std::vector<float> left, right;
};

// The whole stream, front to back, without any seek.
inline Decoded decodeStraight(const std::string& path) {
  Decoded d;
  OggVorbis_File vf;
  if (ov_fopen(path.c_str(), &vf) != 0) return d;
  float** pcm;
  int link;
  for (long got; (got = ov_read_float(&vf, &pcm, 4096, &link)) != 0;) {
    if (got < 0) continue;  // a hole in the stream
    d.left.insert(d.left.end(), pcm[0], pcm[0] + got);
    d.right.insert(d.right.end(), pcm[1], pcm[1] + got);
  }
  ov_clear(&vf);
  return d;
}

// Holds the creator's reference and gives it back.
struct SongRef {
  MDJSong* song = new MDJSong;
  explicit SongRef(const char* name) { song->openFile(songPath(name).c_str()); }
  SongRef(const SongRef&) = delete;
  ~SongRef() { song->release(); }
  MDJSong* operator->() const { return song; }
};

}  // namespace vostan::test
