#pragma once
// A song of the music system: one Ogg Vorbis stream whose "mdj" comment gives
// its loop points and its tempo map. The song loops by itself, so a reader
// never sees its end.
#include <vorbis/vorbisfile.h>

#include <cstdint>
#include <cstdio>
#include <memory>

namespace vostan {

// One stretch of constant tempo.
struct MDJSection {
  int32_t startFrame = 0;  // stream frame at which the beat count is zero
  float tempo = 0;         // beats per minute
  int32_t syncBeats = 0;   // beats between the points where a beat-locked change may begin
  uint8_t sectionFlag = 0;
};

// What the tag says. Sections are listed from the latest start down to the
// earliest, so the first one at or before a frame is the one in force.
class MDJInfo {
 public:
  virtual ~MDJInfo() = default;

  int32_t loopStart = 0;
  int32_t loopEnd = 0;  // 0: the end of the stream
  int32_t reservedField = 0;
  int32_t sectionCount = 0;
  std::unique_ptr<MDJSection[]> sections;

  // Reads the numbers of a tag into the fields. False when the text holds
  // fewer numbers than its section count announces, or a negative count; the
  // fields are then left as they were.
  bool parse(const char* text, size_t length);

  // The record in force at a stream frame: the first one that starts at or
  // before it, or the last one if none does. Null without sections.
  const MDJSection* findSection(int32_t frame) const;
};

// One number of a tag: an optional "-", then characters taken as digits, then
// one terminator (comma, blank or the end of the text), which is consumed.
// Returns false when `at` is already past the end of the text.
bool parseTagNumber(const char* text, size_t length, size_t* at, int32_t* value);

// Counted by hand and used on the mixer thread only, so the count is a plain
// word. Songs live on the heap; `release` deletes at the last reference.
class MDJSong {
 public:
  enum class Failure { none, cannotOpen, notVorbis, notStereo, noFrames, badTag, badLoop };

  MDJSong();
  MDJSong(const MDJSong&) = delete;
  MDJSong& operator=(const MDJSong&) = delete;

  // Opens and checks the file. A stream that can't be looped as a stereo song
  // is refused; `failure` tells why.
  bool openFile(const char* path);

  // Delivers `count` frames into leftRight[0] and leftRight[1], turning back
  // to the loop start whenever the loop end is reached. Fewer frames come
  // back only when the stream yields nothing more from its loop start: a
  // broken or truncated file.
  int32_t readFrames(float* const* leftRight, int32_t count);
  void seekFrame(int32_t frame);

  void addRef() { ++refCount; }
  void release() {
    if (--refCount < 1) delete this;
  }

  const MDJInfo* getInfo() const { return info.get(); }
  float getSampleRate() const { return sampleRate; }
  int32_t getPosition() const { return position; }
  int32_t getLoopCount() const { return loopCount; }
  int32_t getLoopStart() const { return loopStart; }
  int32_t getEndFrame() const { return endFrame; }
  int32_t getRefCount() const { return refCount; }
  Failure failure() const { return failed; }

 protected:
  virtual ~MDJSong();

 private:
  void turnBack();

  OggVorbis_File vorbisFile;
  bool vorbisOpen = false;
  std::unique_ptr<MDJInfo> info;
  FILE* songFile = nullptr;
  float sampleRate = 0;
  int32_t loopCount = 0;
  int32_t position = 0;
  int32_t loopStart = 0;
  int32_t endFrame = 0;
  int32_t refCount = 1;
  Failure failed = Failure::none;
};

const char* describeFailure(MDJSong::Failure failure);

}  // namespace vostan
