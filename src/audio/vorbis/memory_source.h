#pragma once
// An Ogg Vorbis file held in memory and decoded on demand into 16-bit PCM.
#include <vorbis/vorbisfile.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vostan::audio {

class MemorySource {
 public:
  // Room for a file of `size` bytes, to be filled through data() before open().
  explicit MemorySource(uint32_t size);
  // A private copy of the bytes.
  MemorySource(const void* bytes, uint32_t size);
  ~MemorySource();
  MemorySource(const MemorySource&) = delete;
  MemorySource& operator=(const MemorySource&) = delete;

  unsigned char* data() { return data_.get(); }
  uint32_t size() const { return size_; }

  // Starts the decoder on the bytes; false when they are no Vorbis stream.
  bool open();

  // Of the opened stream.
  int channels() const { return channels_; }
  long rate() const { return rate_; }
  int64_t totalFrames() const { return totalFrames_; }
  int pcmStride() const { return pcmStride_; }

  // Frames [first, end) as little-endian signed 16-bit samples at `out`, which
  // must hold (end - first) * pcmStride() bytes. Decoding stops silently where
  // the stream does; the gain, in steps of 1/256, is applied to the whole
  // range all the same, so what stood behind the decoded part is scaled too.
  void decode(int32_t first, int32_t end, float gain, void* out);

  // The callbacks the decoder reads the memory through.
  static size_t read(void* ptr, size_t element, size_t count, void* source);
  static int seek(void* source, ogg_int64_t offset, int origin);
  static int close(void* source);
  static long tell(void* source);

  uint32_t readPosition() const { return readPosition_; }

 private:
  uint32_t size_;
  std::unique_ptr<unsigned char[]> data_;
  uint32_t readPosition_ = 0;
  int pcmStride_ = 0;
  int channels_ = 0;
  long rate_ = 0;
  int64_t totalFrames_ = 0;
  bool opened_ = false;
  OggVorbis_File file_{};
};

// g = gain * 256 truncated; a sample becomes s * g / 256, truncated toward
// zero and clamped to 16 bits. `count` samples in place.
void applyGain(unsigned char* samples, int64_t count, float gain);

}  // namespace vostan::audio
