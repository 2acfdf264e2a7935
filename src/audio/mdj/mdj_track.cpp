#include "audio/mdj/mdj_track.h"

#include <algorithm>

namespace vostan {

int32_t beatsBetween(int32_t frame, int32_t startFrame, float tempo, double rate) {
  auto diff =
      static_cast<int32_t>(static_cast<uint32_t>(frame) - static_cast<uint32_t>(startFrame));
  double beats = static_cast<double>(diff) / (60.0 / tempo * rate) * 65536.0;
  if (!(beats > -2147483649.0 && beats < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(beats);
}

MDJTrack::MDJTrack() {
  for (int c = 0; c < 2; ++c) {
    storage[c] = std::make_unique<float[]>(kHistoryFrames + kWindowFrames);
    window[c] = storage[c].get() + kHistoryFrames;
  }
}

MDJTrack::~MDJTrack() {
  if (song) song->release();
}

void MDJTrack::setSong(MDJSong* next) {
  // The new reference first, so that setting the same song again is safe.
  if (next) next->addRef();
  if (song) song->release();
  song = next;
  playing = false;
}

bool MDJTrack::prefill() {
  if (!song) return false;
  readIndex = 0;
  endMark = -1;
  fraction = 0;
  for (int c = 0; c < 2; ++c) std::fill_n(storage[c].get(), kHistoryFrames, 0.0f);
  int32_t fill = 0;
  while (fill < kWindowFrames) {
    float* at[2] = {window[0] + fill, window[1] + fill};
    int32_t got = song->readFrames(at, kWindowFrames - fill);
    if (got < 1) {
      endMark = fill;
      for (int c = 0; c < 2; ++c) std::fill(window[c] + fill, window[c] + kWindowFrames, 0.0f);
      break;
    }
    fill += got;
  }
  playing = true;
  return true;
}

int32_t MDJTrack::streamFrame(int32_t offset) const {
  uint32_t frame = static_cast<uint32_t>(song->getPosition()) +
                   static_cast<uint32_t>(readIndex - kWindowFrames) + static_cast<uint32_t>(offset);
  return static_cast<int32_t>(frame);
}

float MDJTrack::currentTempo() const {
  const MDJInfo* info = getInfo();
  if (!info) return 0.0f;
  // The decoder's position, a window ahead of what is heard.
  const MDJSection* section = info->findSection(song->getPosition());
  if (!section) return 0.0f;
  return static_cast<float>(static_cast<double>(section->tempo) * pitch);
}

int32_t MDJTrack::beatPosition(int32_t offset) const {
  const MDJInfo* info = getInfo();
  if (!info) return 0;
  int32_t frame = streamFrame(offset);
  const MDJSection* section = info->findSection(frame);
  if (!section) return 0;
  return beatsBetween(frame, section->startFrame, section->tempo, kBeatRate);
}

const MDJSection* MDJTrack::sectionAt(int32_t offset) const {
  const MDJInfo* info = getInfo();
  return info ? info->findSection(streamFrame(offset)) : nullptr;
}

}  // namespace vostan
