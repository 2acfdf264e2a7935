// Damaged Vorbis headers are refused before the decoder sees them, by the
// memory decoder and by the music song alike; sound files pass untouched.
#include "audio/vorbis/header_check.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "audio/mdj/mdj_song.h"
#include "audio/vorbis/memory_source.h"
#include "ogg_maker.h"

namespace vostan::audio {
namespace {

using Bytes = std::vector<unsigned char>;

const char* const kHostileOgg = VOSTAN_CORPUS "/hostile/vorbis-setup-divide-by-zero.ogg";

Bytes readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

std::string writeTemp(const Bytes& bytes) {
  char name[] = "/tmp/vostan-header-XXXXXX";
  const int fd = mkstemp(name);
  EXPECT_GE(fd, 0);
  EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  close(fd);
  return name;
}

uint32_t pageCrc(const unsigned char* p, std::size_t n) {
  uint32_t crc = 0;
  for (std::size_t i = 0; i < n; ++i) {
    crc ^= uint32_t{p[i]} << 24;
    for (int k = 0; k < 8; ++k) crc = (crc & 0x80000000u) ? (crc << 1) ^ 0x04C11DB7u : crc << 1;
  }
  return crc;
}

// Offsets of the Ogg pages of a file, in order.
std::vector<std::size_t> pages(const Bytes& f) {
  std::vector<std::size_t> at;
  for (std::size_t p = 0; p + 27 <= f.size();) {
    at.push_back(p);
    std::size_t length = 27 + f[p + 26];
    for (int s = 0; s < f[p + 26]; ++s) length += f[p + 27 + s];
    p += length;
  }
  return at;
}

// Writes the page's checksum anew after an edit, so that only the headers'
// content is wrong.
void fixCrc(Bytes& f, std::size_t page) {
  std::size_t length = 27 + f[page + 26];
  for (int s = 0; s < f[page + 26]; ++s) length += f[page + 27 + s];
  std::memset(&f[page + 22], 0, 4);
  const uint32_t crc = pageCrc(&f[page], length);
  for (int k = 0; k < 4; ++k) f[page + 22 + k] = static_cast<unsigned char>(crc >> (8 * k));
}

// Where the setup packet starts: after the identification page, the comment
// and setup packets share the second page, the comment packet first.
std::size_t setupPacketOffset(const Bytes& f, std::size_t* page) {
  *page = pages(f).at(1);
  const int segments = f[*page + 26];
  std::size_t body = *page + 27 + segments, comment = 0;
  for (int s = 0; s < segments; ++s) {
    comment += f[*page + 27 + s];
    if (f[*page + 27 + s] < 255) break;
  }
  return body + comment;
}

bool memoryOpens(const Bytes& f) {
  MemorySource source(f.data(), static_cast<uint32_t>(f.size()));
  return source.open();
}

TEST(VorbisHeaders, EncodedFilesPass) {
  // (Six channels at top quality make the encoder itself leak; these do not.)
  for (const test::ToneOgg tone :
       {test::ToneOgg{}, test::ToneOgg{1, 22050, 5000, 0.3f, 0.0f},
        test::ToneOgg{2, 48000, 3000, 0.5f, 0.8f}, test::ToneOgg{2, 8000, 2000, 0.5f, -0.1f}}) {
    const Bytes f = test::makeToneOgg(tone);
    const HeaderCheck check = checkVorbisHeaders(f.data(), f.size());
    EXPECT_TRUE(check.ok) << tone.channels << " channels: " << check.reason;
    EXPECT_TRUE(memoryOpens(f));
  }
}

TEST(VorbisHeaders, TheDamagedSetupOfTheCorpusIsRefusedByBothOpeners) {
  const Bytes f = readFile(kHostileOgg);
  if (f.empty()) GTEST_SKIP() << "no corpus at " << kHostileOgg;
  const HeaderCheck check = checkVorbisHeaders(f.data(), f.size());
  EXPECT_FALSE(check.ok);
  EXPECT_FALSE(check.reason.empty());
  EXPECT_FALSE(memoryOpens(f));
  auto* song = new MDJSong;
  EXPECT_FALSE(song->openFile(kHostileOgg));
  EXPECT_EQ(song->failure(), MDJSong::Failure::notVorbis);
  float left[64], right[64];
  float* lr[2] = {left, right};
  EXPECT_EQ(song->readFrames(lr, 64), 0);
  song->release();
}

TEST(VorbisHeaders, ACodebookOfNoDimensionIsRefused) {
  Bytes f = test::makeToneOgg({});
  std::size_t page = 0;
  const std::size_t setup = setupPacketOffset(f, &page);
  // "\x05vorbis", the book count, the sync "BCV", then the first book's dimension.
  ASSERT_EQ(std::memcmp(&f[setup + 8], "BCV", 3), 0);
  f[setup + 11] = f[setup + 12] = 0;
  fixCrc(f, page);
  EXPECT_FALSE(checkVorbisHeaders(f.data(), f.size()).ok);
  EXPECT_FALSE(memoryOpens(f));
  const std::string path = writeTemp(f);
  auto* song = new MDJSong;
  EXPECT_FALSE(song->openFile(path.c_str()));
  song->release();
  std::remove(path.c_str());
}

TEST(VorbisHeaders, DamagedPagesAreSkippedAsTheDecoderSkipsThem) {
  // A bad checksum hides the page from both the check and the decoder: the
  // check never reads the damaged book and finds no setup packet where the
  // page was; the decoder refuses the file on its own.
  Bytes f = test::makeToneOgg({});
  std::size_t page = 0;
  const std::size_t setup = setupPacketOffset(f, &page);
  f[setup + 11] = f[setup + 12] = 0;  // no checksum update
  const HeaderCheck check = checkVorbisHeaders(f.data(), f.size());
  EXPECT_EQ(check.reason, "no setup header");
  EXPECT_FALSE(memoryOpens(f));
}

}  // namespace
}  // namespace vostan::audio
