// Tag texts of any bytes: the parser must stay inside the text and the
// section search and beat arithmetic must stay defined on what it accepts.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "audio/mdj/mdj_song.h"
#include "audio/mdj/mdj_track.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A heap copy without a terminator, so a read past the end is caught.
  char* text = static_cast<char*>(malloc(size ? size : 1));
  for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(data[i]);
  vostan::MDJInfo info;
  if (info.parse(text, size)) {
    if (info.sectionCount < 0 || (info.sectionCount > 0 && !info.sections)) abort();
    for (int32_t frame : {INT32_MIN, -1, 0, 44100, info.loopStart, info.loopEnd, INT32_MAX}) {
      const vostan::MDJSection* s = info.findSection(frame);
      if ((s == nullptr) != (info.sectionCount == 0)) abort();
      if (s) vostan::beatsBetween(frame, s->startFrame, s->tempo, vostan::kBeatRate);
    }
  }
  free(text);
  return 0;
}
