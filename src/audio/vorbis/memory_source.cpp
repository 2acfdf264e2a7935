#include "audio/vorbis/memory_source.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "audio/vorbis/header_check.h"

namespace vostan::audio {

namespace {

// ov_read is asked for little-endian samples, which are read back in place.
static_assert(std::endian::native == std::endian::little);

// libvorbisfile never asks for more than this per call anyway.
constexpr int64_t kReadChunk = 4096;

MemorySource* self(void* source) {
  return static_cast<MemorySource*>(source);
}

}  // namespace

MemorySource::MemorySource(uint32_t size) : size_(size), data_(new unsigned char[size]) {}

MemorySource::MemorySource(const void* bytes, uint32_t size) : MemorySource(size) {
  if (size) std::memcpy(data_.get(), bytes, size);
}

MemorySource::~MemorySource() {
  if (opened_) ov_clear(&file_);
}

bool MemorySource::open() {
  readPosition_ = 0;
  // Headers that would make the decoder misbehave never reach it.
  const HeaderCheck check = checkVorbisHeaders(data_.get(), size_);
  if (!check.ok) {
    std::printf("vorbis headers refused: %s\n", check.reason.c_str());
    return false;
  }
  const ov_callbacks callbacks{&MemorySource::read, &MemorySource::seek, &MemorySource::close,
                               &MemorySource::tell};
  // A failed open has already released whatever the decoder made.
  if (ov_open_callbacks(this, &file_, nullptr, 0, callbacks) != 0) return false;
  opened_ = true;
  const vorbis_info* info = ov_info(&file_, -1);
  channels_ = info->channels;
  rate_ = info->rate;
  totalFrames_ = ov_pcm_total(&file_, -1);
  pcmStride_ = channels_ * 2;
  return true;
}

size_t MemorySource::read(void* ptr, size_t element, size_t count, void* source) {
  MemorySource* s = self(source);
  // The decoder reads bytes, element 1; 0 would be meaningless, so nothing is read.
  if (element == 0) return 0;
  // A seek may have gone past the end: nothing is left there.
  const size_t left = s->readPosition_ < s->size_ ? s->size_ - s->readPosition_ : 0;
  const size_t n = std::min(element * count, left);
  if (n) std::memcpy(ptr, s->data_.get() + s->readPosition_, n);
  s->readPosition_ += static_cast<uint32_t>(n);
  return n / element;
}

int MemorySource::seek(void* source, ogg_int64_t offset, int origin) {
  MemorySource* s = self(source);
  // Files are below 4 GB: the low 32 bits of the offset are all that count,
  // and positions wrap as 32-bit numbers.
  const auto low = static_cast<uint32_t>(static_cast<uint64_t>(offset));
  switch (origin) {
    case SEEK_SET:
      s->readPosition_ = low;
      break;
    case SEEK_CUR:
      s->readPosition_ += low;
      break;
    case SEEK_END:
      s->readPosition_ = low + s->size_;
      break;
    default:
      break;
  }
  return 0;
}

int MemorySource::close(void* source) {
  // The bytes belong to the source and go with it, not with the decoder.
  self(source)->readPosition_ = 0;
  return 0;
}

long MemorySource::tell(void* source) {
  return static_cast<long>(self(source)->readPosition_);
}

void MemorySource::decode(int32_t first, int32_t end, float gain, void* out) {
  auto* p = static_cast<unsigned char*>(out);
  // A caller streaming a song asks for the range behind the last one; a seek
  // there would only decode the same block again. A seek that fails leaves the
  // decoder where it was, and it reads on from there.
  if (ov_pcm_tell(&file_) != first) ov_pcm_seek(&file_, first);
  const int64_t total = (static_cast<int64_t>(end) - first) * pcmStride_;
  int64_t done = 0;
  int bitstream = 0;
  while (done < total) {
    const int n = static_cast<int>(std::min(total - done, kReadChunk));
    const long r = ov_read(&file_, reinterpret_cast<char*>(p + done), n, 0, 2, 1, &bitstream);
    if (r < 1) break;
    done += r;
  }
  if (total > 0) applyGain(p, total / 2, gain);
}

void applyGain(unsigned char* samples, int64_t count, float gain) {
  const double scaled = static_cast<double>(gain) * 256.0;
  // Out-of-range gains saturate rather than wrap; NaN is silence.
  int32_t g = 0;
  if (scaled >= 2147483647.0)
    g = 2147483647;
  else if (scaled <= -2147483648.0)
    g = -2147483647 - 1;
  else if (!std::isnan(scaled))
    g = static_cast<int32_t>(scaled);
  if (g == 256) return;  // unity: every sample maps to itself
  for (int64_t i = 0; i < count; ++i) {
    int16_t s;
    std::memcpy(&s, samples + 2 * i, 2);
    int64_t v = static_cast<int64_t>(s) * g / 256;
    v = std::clamp<int64_t>(v, -32768, 32767);
    const auto out = static_cast<int16_t>(v);
    std::memcpy(samples + 2 * i, &out, 2);
  }
}

}  // namespace vostan::audio
