#pragma once
// A check of an Ogg Vorbis file's three header packets, done before the
// decoder sees them. The decoder trusts a few numbers of the setup header
// (codebook shapes, floor and residue layouts) as divisors and indices, so a
// damaged header can take the process down inside it; files that pass this
// check have headers whose every number lies in the range the format allows
// and whose cross references point at things that exist.
#include <cstddef>
#include <cstdint>
#include <string>

namespace vostan::audio {

struct HeaderCheck {
  bool ok = false;
  std::string reason;  // why a file was refused, for the log
};

// Checks the headers of every Vorbis stream that begins in `bytes`. Pages
// with a bad checksum are skipped, as the decoder skips them. A file with no
// complete Vorbis headers passes: the decoder refuses it by itself.
HeaderCheck checkVorbisHeaders(const uint8_t* bytes, std::size_t size);

// The same for a file on disk, read whole.
HeaderCheck checkVorbisFile(const char* path);

}  // namespace vostan::audio
