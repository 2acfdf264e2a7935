#pragma once
// A command from the Java thread to the mixer thread.
#include <cstdint>
#include <memory>

namespace vostan {

constexpr int32_t eventKindSong = 1015;   // open `path` as the pending song
constexpr int32_t eventKindTrick = 1016;  // change songs by `trick`

struct MDJEvent {
  virtual ~MDJEvent() = default;
  int32_t kind = 0;
  int32_t trick = 0;
  std::unique_ptr<char[]> path;
};

}  // namespace vostan
