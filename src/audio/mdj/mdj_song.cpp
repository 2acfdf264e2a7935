#include "audio/mdj/mdj_song.h"

#include <cstring>

#include "audio/vorbis/header_check.h"

namespace vostan {

namespace {

// Consecutive decoder failures after which the stream counts as ended here.
// A hole in a stream is reported once, so a handful is plenty.
constexpr int kMaxDecodeFailures = 64;

size_t readCallback(void* ptr, size_t size, size_t count, void* source) {
  return fread(ptr, size, count, static_cast<FILE*>(source));
}

int seekCallback(void* source, ogg_int64_t offset, int whence) {
  return fseeko(static_cast<FILE*>(source), static_cast<off_t>(offset), whence);
}

int closeCallback(void* source) {
  return fclose(static_cast<FILE*>(source));
}

long tellCallback(void* source) {
  return static_cast<long>(ftello(static_cast<FILE*>(source)));
}

}  // namespace

bool parseTagNumber(const char* text, size_t length, size_t* at, int32_t* value) {
  size_t i = *at;
  if (i > length) return false;
  bool negative = false;
  if (i < length && text[i] == '-') {
    negative = true;
    ++i;
  }
  // Unchecked digits and 32-bit wrap-around: a tag is written by our own tool
  // chain, and any byte must still give a defined number.
  uint32_t v = 0;
  for (;;) {
    if (i >= length) {
      i = length + 1;  // the end of the text is the last terminator
      break;
    }
    char c = text[i++];
    if (c == ',' || c == ' ' || c == '\0') break;
    v = v * 10u + static_cast<uint32_t>(static_cast<int32_t>(c)) - 48u;
  }
  if (negative) v = 0u - v;
  *value = static_cast<int32_t>(v);
  *at = i;
  return true;
}

bool MDJInfo::parse(const char* text, size_t length) {
  size_t at = 0;
  int32_t head[4];
  for (int32_t& h : head) {
    if (!parseTagNumber(text, length, &at, &h)) return false;
  }
  int32_t count = head[3];
  if (count < 0) return false;
  // Every number takes at least its terminator, and the end of the text
  // counts as one: refuse a count the text can't hold before allocating.
  uint64_t available = length + 1 - at;
  if (uint64_t(count) * 4 > available) return false;

  auto records = std::make_unique<MDJSection[]>(count);
  for (int32_t n = 0; n < count; ++n) {
    int32_t v[4];
    for (int32_t& x : v) {
      if (!parseTagNumber(text, length, &at, &x)) return false;
    }
    records[n].startFrame = v[0];
    records[n].tempo = static_cast<float>(static_cast<double>(v[1]) / 100000.0);
    records[n].syncBeats = v[2];
    records[n].sectionFlag = static_cast<uint8_t>(v[3]);
  }
  loopStart = head[0];
  loopEnd = head[1];
  reservedField = head[2];
  sectionCount = count;
  sections = std::move(records);
  return true;
}

const MDJSection* MDJInfo::findSection(int32_t frame) const {
  if (sectionCount <= 0) return nullptr;
  for (int32_t n = 0; n < sectionCount; ++n) {
    if (sections[n].startFrame <= frame) return &sections[n];
  }
  return &sections[sectionCount - 1];
}

MDJSong::MDJSong() {
  std::memset(&vorbisFile, 0, sizeof vorbisFile);
}

MDJSong::~MDJSong() {
  if (vorbisOpen) {
    ov_clear(&vorbisFile);  // closes songFile through the close callback
  } else if (songFile) {
    fclose(songFile);
  }
}

bool MDJSong::openFile(const char* path) {
  if (vorbisOpen || songFile) return false;  // one file per song object
  songFile = fopen(path, "rb");
  if (!songFile) {
    failed = Failure::cannotOpen;
    return false;
  }
  std::memset(&vorbisFile, 0, sizeof vorbisFile);
  // Headers that would make the decoder misbehave never reach it.
  const audio::HeaderCheck check = audio::checkVorbisFile(path);
  if (!check.ok) printf("song %s refused: %s\n", path, check.reason.c_str());
  ov_callbacks callbacks = {readCallback, seekCallback, closeCallback, tellCallback};
  if (!check.ok || ov_open_callbacks(songFile, &vorbisFile, nullptr, 0, callbacks) != 0) {
    // A failed open leaves the file to us.
    fclose(songFile);
    songFile = nullptr;
    failed = Failure::notVorbis;
    return false;
  }
  vorbisOpen = true;

  // A refused song is closed again, so that it reads nothing.
  auto refuse = [&](Failure why) {
    failed = why;
    printf("song %s refused: %s\n", path, describeFailure(why));
    ov_clear(&vorbisFile);
    vorbisOpen = false;
    songFile = nullptr;
    info.reset();
    return false;
  };

  // Every link is copied as a left and a right channel.
  for (long link = 0; link < ov_streams(&vorbisFile); ++link) {
    vorbis_info* vi = ov_info(&vorbisFile, static_cast<int>(link));
    if (!vi || vi->channels != 2) return refuse(Failure::notStereo);
  }
  sampleRate = static_cast<float>(ov_info(&vorbisFile, -1)->rate);

  if (vorbis_comment* comment = ov_comment(&vorbisFile, -1)) {
    if (const char* tag = vorbis_comment_query(comment, "mdj", 0)) {
      auto parsed = std::make_unique<MDJInfo>();
      if (!parsed->parse(tag, strlen(tag))) return refuse(Failure::badTag);
      info = std::move(parsed);
    }
  }

  ogg_int64_t total = ov_pcm_total(&vorbisFile, -1);
  if (total <= 0) return refuse(Failure::noFrames);
  endFrame = info && info->loopEnd != 0 ? info->loopEnd : static_cast<int32_t>(total);
  loopStart = info ? info->loopStart : 0;
  // Loop points that can't be reached would turn the song back for ever
  // without a frame in between.
  if (endFrame <= 0 || loopStart < 0 || loopStart >= endFrame || loopStart >= total) {
    return refuse(Failure::badLoop);
  }
  return true;
}

void MDJSong::turnBack() {
  // A song that loops whole goes back by a raw seek; a loop point inside the
  // stream needs the sample-exact one.
  if (loopStart != 0) {
    ov_pcm_seek(&vorbisFile, loopStart);
  } else {
    ov_raw_seek(&vorbisFile, 0);
  }
  ++loopCount;
  position = loopStart;
}

int32_t MDJSong::readFrames(float* const* leftRight, int32_t count) {
  if (!vorbisOpen || count <= 0) return 0;
  int32_t done = 0;
  int failures = 0;
  bool progress = true;  // frames came since the last turn back
  for (;;) {
    int64_t want = count - done;
    if (position + want > endFrame) want = int64_t(endFrame) - position;
    long got = 0;
    // At or past the loop end (after a seek) nothing is read: the song turns
    // back at once.
    if (want > 0) {
      float** pcm = nullptr;
      int bitstream = 0;
      got = ov_read_float(&vorbisFile, &pcm, static_cast<int>(want), &bitstream);
      if (got > 0) {
        std::memcpy(leftRight[0] + done, pcm[0], sizeof(float) * got);
        std::memcpy(leftRight[1] + done, pcm[1], sizeof(float) * got);
        done += static_cast<int32_t>(got);
        position += static_cast<int32_t>(got);
        failures = 0;
        progress = true;
        if (done >= count) return done;
      }
    }
    // A negative result is a hole in the stream: read on, unless it persists.
    if (got != 0 && position < endFrame && (got > 0 || ++failures < kMaxDecodeFailures)) continue;
    if (!progress) return done;  // the loop yields nothing: a broken stream
    progress = false;
    failures = 0;
    turnBack();
  }
}

void MDJSong::seekFrame(int32_t frame) {
  if (vorbisOpen) ov_pcm_seek(&vorbisFile, frame);
  position = frame;
}

const char* describeFailure(MDJSong::Failure failure) {
  switch (failure) {
    case MDJSong::Failure::none:
      return "no failure";
    case MDJSong::Failure::cannotOpen:
      return "the file can't be opened";
    case MDJSong::Failure::notVorbis:
      return "not an Ogg Vorbis stream";
    case MDJSong::Failure::notStereo:
      return "a song must have exactly two channels";
    case MDJSong::Failure::noFrames:
      return "the stream holds no frames";
    case MDJSong::Failure::badTag:
      return "the mdj tag holds fewer numbers than its section count needs";
    case MDJSong::Failure::badLoop:
      return "the loop start doesn't lie before the loop end";
  }
  return "unknown failure";
}

}  // namespace vostan
