#include "audio/mdj/mdj_controller.h"

#include <cmath>

namespace vostan {

namespace {

// A tempo map a beat-locked change can use: a first section with a tempo.
bool hasTempoMap(const MDJInfo* info) {
  return info && info->sectionCount > 0 && std::isfinite(info->sections[0].tempo) &&
         info->sections[0].tempo > 0.0f;
}

}  // namespace

MDJController::MDJController(MDJSong* song) : song(song) {
  if (song) song->addRef();
}

MDJController::~MDJController() {
  if (song) song->release();
}

void MDJController::dropSong() {
  if (song) song->release();
  song = nullptr;
}

std::unique_ptr<MDJController> MDJPlayController::begin(MDJMixer& mixer) {
  MDJTrack* first = mixer.getTrack(0);
  MDJTrack* second = mixer.getTrack(1);
  first->stop();
  first->setGain(1.0f);
  first->setSong(song);
  first->prefill();
  if (second->isPlaying()) second->stop();
  dropSong();
  return nullptr;
}

std::unique_ptr<MDJController> MDJStopController::begin(MDJMixer& mixer) {
  mixer.getTrack(0)->stop();
  mixer.getTrack(1)->stop();
  return nullptr;
}

MDJFadeinController::MDJFadeinController(MDJSong* song, int32_t duration)
    : MDJController(song), duration(duration > 0 ? duration : 1) {}

std::unique_ptr<MDJController> MDJFadeinController::begin(MDJMixer& mixer) {
  if (mixer.getTrack(0)->isPlaying()) {
    outgoing = mixer.getTrack(0);
    outgoingGain = outgoing->getGain();
    incoming = mixer.getTrack(1);
  } else {
    incoming = mixer.getTrack(0);
  }
  incomingGain = 1.0f;
  incoming->stop();
  incoming->setGain(0.0f);
  incoming->setSong(song);
  incoming->prefill();
  dropSong();
  return nullptr;
}

int32_t MDJFadeinController::advance(MDJMixer& mixer, int32_t frames) {
  elapsed += frames;
  if (elapsed > duration) elapsed = duration;
  const float x = static_cast<float>(elapsed) / static_cast<float>(duration);
  incoming->setGain(incomingGain * x);
  if (outgoing) outgoing->setGain((1.0f - x) * outgoingGain);
  if (elapsed < duration) return 1;
  if (outgoing) outgoing->stop();
  mixer.makeMain(incoming);
  return 0;
}

MDJBeatSyncController::MDJBeatSyncController(MDJSong* song, int32_t trick)
    : MDJController(song), trick(trick) {}

std::unique_ptr<MDJController> MDJBeatSyncController::begin(MDJMixer& mixer) {
  oldTrack = mixer.getTrack(0);
  newTrack = mixer.getTrack(1);
  if (!oldTrack->isPlaying()) return std::make_unique<MDJPlayController>(song);
  if (hasTempoMap(oldTrack->getInfo()) && hasTempoMap(song->getInfo())) {
    state = 0;
    motion = getMotion(0);
    beatScale = 1.0f;
    return nullptr;
  }
  // Without tempo maps on both sides there is no beat to meet on.
  return std::make_unique<MDJFadeinController>(song, kLongFadeFrames);
}

int32_t MDJBeatSyncController::advance(MDJMixer& mixer, int32_t frames) {
  if (state == 0) return waitForBeat(frames);
  if (state == 1) return runMotion(mixer, frames);
  return 0;
}

int32_t MDJBeatSyncController::waitForBeat(int32_t frames) {
  const int32_t before = wholeBeat(oldTrack->beatPosition(-frames));
  const int32_t now = wholeBeat(oldTrack->beatPosition(0));
  if (before == now) return 1;
  const MDJSection* section = oldTrack->sectionAt(0);
  // A change interval of 0 or less in a damaged tag allows every beat.
  const int32_t interval = section && section->syncBeats > 0 ? section->syncBeats : 1;
  if (now % interval != 0) return 1;

  state = 1;
  const float tempo = oldTrack->currentTempo();
  const MDJSection& entry = song->getInfo()->sections[0];
  newTrack->setSong(song);
  song->seekFrame(entry.startFrame);
  newTrack->setPitch(tempo / entry.tempo);
  newTrack->setGain(1.0f);
  newTrack->prefill();
  elapsed = 0;
  dropSong();
  return 1;
}

int32_t MDJBeatSyncController::runMotion(MDJMixer& mixer, int32_t frames) {
  elapsed += frames;
  const int32_t beats = beatsBetween(elapsed, 0, newTrack->currentTempo(), kBeatRate);
  const float t = static_cast<float>(beats / 65536.0) * beatScale;
  if (motion->apply(mixer, t)) return 1;
  oldTrack->stop();
  mixer.makeMain(newTrack);
  mixer.setCrossfade(0.0f);
  return 0;
}

std::unique_ptr<MDJController> createController(MDJMixer&, int32_t trick, MDJSong* song) {
  switch (trick) {
    case kTrickStop:
      return std::make_unique<MDJStopController>();
    case kTrickPlay:
      if (song) return std::make_unique<MDJPlayController>(song);
      break;
    case kTrickFadeShort:
      if (song) return std::make_unique<MDJFadeinController>(song, kShortFadeFrames);
      break;
    case kTrickFadeLong:
      if (song) return std::make_unique<MDJFadeinController>(song, kLongFadeFrames);
      break;
    case 11:
    case 12:
    case 13:
      if (song) return std::make_unique<MDJBeatSyncController>(song, trick);
      break;
    default:
      break;
  }
  return nullptr;
}

bool MDJControllerQueue::push(std::unique_ptr<MDJController> c) {
  if (!c || count >= kCapacity) return false;
  items[count++] = std::move(c);
  return true;
}

void MDJControllerQueue::popHead() {
  for (int32_t i = 1; i < count; ++i) items[i - 1] = std::move(items[i]);
  items[--count].reset();
}

int32_t MDJControllerQueue::run(MDJMixer& mixer, int32_t frames) {
  while (count > 0) {
    while (items[0]->needsBegin) {
      std::unique_ptr<MDJController> next = items[0]->begin(mixer);
      items[0]->needsBegin = false;
      // A replacement begins at once, in the same pass.
      if (next) items[0] = std::move(next);
    }
    if (items[0]->advance(mixer, frames) != 0) break;
    popHead();
  }
  return count;
}

void MDJControllerQueue::clear() {
  while (count > 0) popHead();
}

}  // namespace vostan
