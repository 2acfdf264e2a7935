#pragma once
// Controllers: commands of the music system that take time. One runs at a
// time, from the head of a queue: it begins once, then advances every control
// step until it reports that it is through.
#include <cstdint>
#include <memory>

#include "audio/mdj/mdj_mixer.h"
#include "audio/mdj/mdj_motion.h"
#include "audio/mdj/mdj_song.h"

namespace vostan {

// Trick codes: how the next song takes over.
constexpr int32_t kTrickPlay = 0;
constexpr int32_t kTrickStop = 1;
constexpr int32_t kTrickFadeShort = 3;
constexpr int32_t kTrickFadeLong = 4;
constexpr int32_t kTrickBeatSync = 11;  // 12 and 13 act alike

constexpr int32_t kShortFadeFrames = 176400;  // 4 s
constexpr int32_t kLongFadeFrames = 352800;   // 8 s

class MDJController {
 public:
  // Takes a reference to `song`, which may be null.
  explicit MDJController(MDJSong* song);
  MDJController(const MDJController&) = delete;
  MDJController& operator=(const MDJController&) = delete;
  // Gives the song back if it was never handed to a track.
  virtual ~MDJController();

  // A controller to run in this one's place, or null to stay.
  virtual std::unique_ptr<MDJController> begin(MDJMixer& mixer) = 0;
  // Non-zero to stay in the queue; `frames` since the last call.
  virtual int32_t advance(MDJMixer& mixer, int32_t frames) { return 0; }
  virtual void reserved(int32_t) {}

  int32_t state = 0;
  bool needsBegin = true;

 protected:
  // Hands the reference over: the song is the track's now.
  void dropSong();
  MDJSong* song = nullptr;
};

// Starts the song at once on the first track; the other one stops.
class MDJPlayController : public MDJController {
 public:
  using MDJController::MDJController;
  std::unique_ptr<MDJController> begin(MDJMixer& mixer) override;
};

class MDJStopController : public MDJController {
 public:
  MDJStopController() : MDJController(nullptr) {}
  std::unique_ptr<MDJController> begin(MDJMixer& mixer) override;
};

// A straight-line change over `duration` output frames: the song comes in on
// the free track while the playing one goes out.
class MDJFadeinController : public MDJController {
 public:
  MDJFadeinController(MDJSong* song, int32_t duration);
  std::unique_ptr<MDJController> begin(MDJMixer& mixer) override;
  int32_t advance(MDJMixer& mixer, int32_t frames) override;

 private:
  int32_t elapsed = 0;
  int32_t duration;
  MDJTrack* outgoing = nullptr;
  MDJTrack* incoming = nullptr;
  float outgoingGain = 0;
  float incomingGain = 0;
};

// Waits for a whole beat of the playing song at which a change may begin,
// starts the new song there at the old tempo, and cross-fades by motion 0.
// Songs without a tempo map change by a long fade instead.
class MDJBeatSyncController : public MDJController {
 public:
  MDJBeatSyncController(MDJSong* song, int32_t trick);
  std::unique_ptr<MDJController> begin(MDJMixer& mixer) override;
  int32_t advance(MDJMixer& mixer, int32_t frames) override;
  // The code it was made from; all beat-sync codes act alike.
  int32_t getTrick() const { return trick; }

 private:
  int32_t waitForBeat(int32_t frames);
  int32_t runMotion(MDJMixer& mixer, int32_t frames);

  int32_t trick;
  MDJTrack* oldTrack = nullptr;
  MDJTrack* newTrack = nullptr;
  const MDJMotion* motion = nullptr;
  float beatScale = 1.0f;
  int32_t elapsed = 0;
};

// The controller for a trick code, or null: for an unknown code, and for
// the codes that bring a song in when `song` is null.
std::unique_ptr<MDJController> createController(MDJMixer& mixer, int32_t trick, MDJSong* song);

// The queue of controllers that run one after the other.
class MDJControllerQueue {
 public:
  static constexpr int32_t kCapacity = 10;

  // False, and `c` is deleted, when the queue is full.
  bool push(std::unique_ptr<MDJController> c);
  // Begins and advances the head by `frames`, moving on to the next one as
  // each finishes; returns how many remain.
  int32_t run(MDJMixer& mixer, int32_t frames);
  bool empty() const { return count == 0; }
  int32_t size() const { return count; }
  void clear();

 private:
  void popHead();

  std::unique_ptr<MDJController> items[kCapacity];
  int32_t count = 0;
};

}  // namespace vostan
