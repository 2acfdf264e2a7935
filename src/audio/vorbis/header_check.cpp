#include "audio/vorbis/header_check.h"

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace vostan::audio {

namespace {

// ------------------------------------------------------------ Ogg pages

uint32_t crcUpdate(uint32_t crc, const uint8_t* p, std::size_t n) {
  static const std::array<uint32_t, 256> table = [] {
    std::array<uint32_t, 256> t{};
    for (uint32_t i = 0; i < 256; ++i) {
      uint32_t r = i << 24;
      for (int k = 0; k < 8; ++k) r = (r & 0x80000000u) ? (r << 1) ^ 0x04C11DB7u : r << 1;
      t[i] = r;
    }
    return t;
  }();
  for (std::size_t i = 0; i < n; ++i) crc = (crc << 8) ^ table[((crc >> 24) ^ p[i]) & 0xFF];
  return crc;
}

// The page's checksum is taken with its own field as zeros.
uint32_t pageCrc(const uint8_t* page, std::size_t length) {
  static const uint8_t zeros[4] = {};
  uint32_t crc = crcUpdate(0, page, 22);
  crc = crcUpdate(crc, zeros, 4);
  return crcUpdate(crc, page + 26, length - 26);
}

uint32_t le32(const uint8_t* p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

// The first three packets of one logical stream.
struct Stream {
  std::vector<std::vector<uint8_t>> packets;
  std::vector<uint8_t> partial;
  bool done() const { return packets.size() >= 3; }
};

// ------------------------------------------------------------ bit reader

// Vorbis packs values least significant bit first.
class Bits {
 public:
  Bits(const std::vector<uint8_t>& packet) : data_(packet.data()), bits_(packet.size() * 8) {}
  // -1 past the end, as the decoder's reader answers.
  int64_t read(int n) {
    if (n == 0) return 0;
    if (position_ + static_cast<std::size_t>(n) > bits_) {
      position_ = bits_;
      ended_ = true;
      return -1;
    }
    uint64_t v = 0;
    for (int i = 0; i < n; ++i, ++position_)
      v |= uint64_t{(data_[position_ >> 3] >> (position_ & 7)) & 1u} << i;
    return static_cast<int64_t>(v);
  }
  bool ended() const { return ended_; }

 private:
  const uint8_t* data_;
  std::size_t bits_;
  std::size_t position_ = 0;
  bool ended_ = false;
};

int ilog(int64_t v) {
  int n = 0;
  while (v > 0) {
    ++n;
    v >>= 1;
  }
  return n;
}

// The largest r with r^dim <= entries.
int64_t lookup1Values(int64_t entries, int64_t dim) {
  int64_t r = 0;
  for (;;) {
    int64_t next = r + 1, power = 1;
    bool over = false;
    for (int64_t d = 0; d < dim && !over; ++d) {
      power *= next;
      over = power > entries;
    }
    if (over) return r;
    r = next;
  }
}

struct Book {
  int64_t dim = 0, entries = 0;
  int lookupType = 0;
};

class Refusal {
 public:
  bool operator()(const char* why) {
    if (reason.empty()) reason = why;
    return false;
  }
  std::string reason;
};

bool identification(const std::vector<uint8_t>& p, int& channels, Refusal& refuse) {
  if (p.size() < 30 || p[0] != 1 || std::memcmp(&p[1], "vorbis", 6) != 0)
    return refuse("no identification header");
  channels = p[11];
  const uint32_t rate = le32(&p[12]);
  const int small = p[28] & 0x0F, large = p[28] >> 4;
  if (le32(&p[7]) != 0 || channels == 0 || rate == 0) return refuse("bad identification header");
  if (small < 6 || large > 13 || small > large || !(p[29] & 1)) return refuse("bad block sizes");
  return true;
}

bool codebook(Bits& b, Book& book, Refusal& refuse) {
  if (b.read(24) != 0x564342) return refuse("codebook sync");
  book.dim = b.read(16);
  book.entries = b.read(24);
  if (book.entries <= 0 || book.dim <= 0) return refuse("empty codebook");
  // The decoder sizes its tables from these; more would not be a real book.
  if (ilog(book.dim) + ilog(book.entries) > 24) return refuse("codebook too large");
  // The code lengths must make a whole prefix code: the sum of 2^-length
  // over the used entries is exactly 1 (a single entry is let pass). The
  // decoder gives up on any other tree halfway through setting up, and a
  // later seek would decode with the half-made books.
  const uint64_t whole = uint64_t{1} << 32;
  uint64_t kraft = 0;
  int64_t used = 0;
  if (b.read(1) == 1) {  // ordered lengths
    int64_t length = b.read(5) + 1;
    for (int64_t entry = 0; entry < book.entries; ++length) {
      const int64_t count = b.read(ilog(book.entries - entry));
      if (count < 0 || length > 32 || entry + count > book.entries)
        return refuse("codebook lengths");
      entry += count;
      used += count;
      kraft += static_cast<uint64_t>(count) << (32 - length);
      if (kraft > whole) return refuse("codebook lengths overfill the code");
    }
  } else {
    const bool sparse = b.read(1) == 1;
    for (int64_t i = 0; i < book.entries; ++i) {
      if (sparse && b.read(1) != 1) continue;
      const int64_t length = b.read(5) + 1;
      if (length < 1) return refuse("codebook lengths");
      ++used;
      kraft += uint64_t{1} << (32 - length);
      if (kraft > whole) return refuse("codebook lengths overfill the code");
    }
  }
  if (used > 1 && kraft != whole) return refuse("codebook lengths leave the code open");
  book.lookupType = static_cast<int>(b.read(4));
  if (book.lookupType == 1 || book.lookupType == 2) {
    b.read(32);
    b.read(32);
    const int64_t valueBits = b.read(4) + 1;
    b.read(1);
    const int64_t values =
        book.lookupType == 1 ? lookup1Values(book.entries, book.dim) : book.entries * book.dim;
    if (values <= 0) return refuse("codebook values");
    for (int64_t i = 0; i < values; ++i)
      if (b.read(static_cast<int>(valueBits)) < 0) return refuse("codebook values");
  } else if (book.lookupType != 0) {
    return refuse("codebook lookup type");
  }
  return !b.ended() || refuse("codebook truncated");
}

bool floor(Bits& b, const std::vector<Book>& books, Refusal& refuse) {
  const auto bookIndex = [&](int64_t i) { return i >= 0 && i < int64_t(books.size()); };
  const int64_t type = b.read(16);
  if (type == 0) {
    const int64_t order = b.read(8), rate = b.read(16), barkMap = b.read(16);
    b.read(6);
    b.read(8);
    const int64_t count = b.read(4) + 1;
    if (order < 1 || rate < 1 || barkMap < 1) return refuse("floor 0 shape");
    for (int64_t i = 0; i < count; ++i)
      if (!bookIndex(b.read(8))) return refuse("floor 0 book");
    return !b.ended() || refuse("floor truncated");
  }
  if (type != 1) return refuse("floor type");
  const int64_t partitions = b.read(5);
  std::vector<int64_t> partitionClass(static_cast<std::size_t>(partitions < 0 ? 0 : partitions));
  int64_t maxClass = -1;
  for (auto& c : partitionClass) {
    c = b.read(4);
    if (c > maxClass) maxClass = c;
  }
  std::vector<int64_t> classDim(static_cast<std::size_t>(maxClass + 1));
  for (int64_t c = 0; c <= maxClass; ++c) {
    classDim[c] = b.read(3) + 1;
    const int64_t subclass = b.read(2);
    if (subclass < 0) return refuse("floor truncated");
    if (subclass && !bookIndex(b.read(8))) return refuse("floor 1 master book");
    for (int64_t k = 0; k < (int64_t{1} << subclass); ++k) {
      const int64_t book = b.read(8) - 1;
      if (book < -1 || book >= int64_t(books.size())) return refuse("floor 1 book");
    }
  }
  b.read(2);  // multiplier
  const int64_t rangeBits = b.read(4);
  if (rangeBits < 0) return refuse("floor truncated");
  std::vector<int64_t> xs{0, int64_t{1} << rangeBits};
  for (const int64_t c : partitionClass) {
    for (int64_t k = 0; k < classDim[c]; ++k) {
      const int64_t x = b.read(static_cast<int>(rangeBits));
      if (x < 0) return refuse("floor truncated");
      xs.push_back(x);
    }
  }
  // The decoder keeps at most 65 points, each at its own place.
  if (xs.size() > 65) return refuse("floor 1 points");
  std::vector<bool> seen(static_cast<std::size_t>((int64_t{1} << rangeBits) + 1));
  for (const int64_t x : xs) {
    if (seen[x]) return refuse("floor 1 repeated point");
    seen[x] = true;
  }
  return true;
}

bool residue(Bits& b, const std::vector<Book>& books, Refusal& refuse) {
  const int64_t type = b.read(16);
  if (type < 0 || type > 2) return refuse("residue type");
  b.read(24);  // begin
  b.read(24);  // end
  const int64_t partitionSize = b.read(24) + 1;
  const int64_t classifications = b.read(6) + 1;
  const int64_t classbook = b.read(8);
  if (b.ended() || partitionSize < 1) return refuse("residue truncated");
  if (classbook < 0 || classbook >= int64_t(books.size())) return refuse("residue class book");
  // The class book spells a word of `dim` classifications per entry: it needs
  // a dimension and enough entries for every word it can name.
  const Book& cb = books[classbook];
  int64_t words = 1;
  for (int64_t d = 0; d < cb.dim; ++d) {
    words *= classifications;
    if (words > cb.entries) return refuse("residue class book too small");
  }
  std::vector<int64_t> cascade(static_cast<std::size_t>(classifications));
  for (auto& c : cascade) {
    const int64_t low = b.read(3);
    const int64_t high = b.read(1) == 1 ? b.read(5) : 0;
    c = high * 8 + low;
  }
  for (const int64_t c : cascade) {
    for (int bit = 0; bit < 8; ++bit) {
      if (!(c & (1 << bit))) continue;
      const int64_t book = b.read(8);
      if (book < 0 || book >= int64_t(books.size())) return refuse("residue book");
      // Residue values come from a book's vectors: a book without them, or
      // of no dimension, cannot decode any.
      if (books[book].lookupType == 0) return refuse("residue book without values");
    }
  }
  return !b.ended() || refuse("residue truncated");
}

bool mapping(Bits& b, int channels, int64_t floors, int64_t residues, Refusal& refuse) {
  if (b.read(16) != 0) return refuse("mapping type");
  int64_t submaps = 1;
  if (b.read(1) == 1) submaps = b.read(4) + 1;
  if (b.read(1) == 1) {
    const int64_t steps = b.read(8) + 1;
    const int width = ilog(channels - 1);
    for (int64_t i = 0; i < steps; ++i) {
      const int64_t magnitude = b.read(width), angle = b.read(width);
      if (magnitude < 0 || angle < 0 || magnitude == angle || magnitude >= channels ||
          angle >= channels)
        return refuse("mapping coupling");
    }
  }
  if (b.read(2) != 0) return refuse("mapping reserved bits");
  if (submaps > 1) {
    for (int c = 0; c < channels; ++c) {
      const int64_t mux = b.read(4);
      if (mux < 0 || mux >= submaps) return refuse("mapping mux");
    }
  }
  for (int64_t s = 0; s < submaps; ++s) {
    b.read(8);
    const int64_t f = b.read(8), r = b.read(8);
    if (f < 0 || f >= floors || r < 0 || r >= residues) return refuse("mapping submap");
  }
  return !b.ended() || refuse("mapping truncated");
}

bool setup(const std::vector<uint8_t>& p, int channels, Refusal& refuse) {
  if (p.size() < 7 || p[0] != 5 || std::memcmp(&p[1], "vorbis", 6) != 0)
    return refuse("no setup header");
  const std::vector<uint8_t> body(p.begin() + 7, p.end());
  Bits b(body);
  std::vector<Book> books(static_cast<std::size_t>(b.read(8) + 1));
  for (Book& book : books)
    if (!codebook(b, book, refuse)) return false;
  const int64_t times = b.read(6) + 1;
  for (int64_t i = 0; i < times; ++i)
    if (b.read(16) != 0) return refuse("time domain");
  const int64_t floors = b.read(6) + 1;
  for (int64_t i = 0; i < floors; ++i)
    if (!floor(b, books, refuse)) return false;
  const int64_t residues = b.read(6) + 1;
  for (int64_t i = 0; i < residues; ++i)
    if (!residue(b, books, refuse)) return false;
  const int64_t mappings = b.read(6) + 1;
  for (int64_t i = 0; i < mappings; ++i)
    if (!mapping(b, channels, floors, residues, refuse)) return false;
  const int64_t modes = b.read(6) + 1;
  for (int64_t i = 0; i < modes; ++i) {
    b.read(1);
    const int64_t window = b.read(16), transform = b.read(16), map = b.read(8);
    if (window != 0 || transform != 0 || map < 0 || map >= mappings) return refuse("mode");
  }
  if (b.read(1) != 1) return refuse("setup framing");
  return true;
}

}  // namespace

HeaderCheck checkVorbisHeaders(const uint8_t* bytes, std::size_t size) {
  std::map<uint32_t, Stream> streams;
  std::size_t at = 0;
  // Every "OggS" is looked at, so no page can hide inside another; only the
  // pages that start a stream or carry headers still missing are checked
  // and read, which keeps a long song's audio pages cheap to pass over.
  while (at + 27 <= size) {
    const void* next = memmem(bytes + at, size - at, "OggS", 4);
    if (!next) break;
    at = static_cast<std::size_t>(static_cast<const uint8_t*>(next) - bytes);
    if (at + 27 > size) break;
    const uint8_t* page = bytes + at;
    const uint32_t serial = le32(page + 14);
    const auto known = streams.find(serial);
    const bool wanted = (page[5] & 2) || (known != streams.end() && !known->second.done());
    if (!wanted) {
      ++at;
      continue;
    }
    const std::size_t segments = page[26];
    std::size_t length = 27 + segments;
    if (at + length > size) break;
    for (std::size_t s = 0; s < segments; ++s) length += page[27 + s];
    if (at + length > size) break;
    if (page[4] != 0 || pageCrc(page, length) != le32(page + 22)) {
      ++at;  // the decoder's sync skips a damaged page the same way
      continue;
    }
    if (page[5] & 2) streams[serial] = Stream{};
    const auto found = streams.find(serial);
    if (found != streams.end() && !found->second.done()) {
      Stream& stream = found->second;
      const uint8_t* body = page + 27 + segments;
      for (std::size_t s = 0; s < segments && !stream.done(); ++s) {
        stream.partial.insert(stream.partial.end(), body, body + page[27 + s]);
        body += page[27 + s];
        if (page[27 + s] < 255) {
          stream.packets.push_back(std::move(stream.partial));
          stream.partial.clear();
        }
      }
    }
    at += length;
  }
  HeaderCheck result;
  for (const auto& [serial, stream] : streams) {
    if (!stream.done() || stream.packets[0].size() < 7 || stream.packets[0][0] != 1 ||
        std::memcmp(&stream.packets[0][1], "vorbis", 6) != 0)
      continue;  // not Vorbis, or cut short: the decoder refuses what it needs
    Refusal refuse;
    int channels = 0;
    if (!identification(stream.packets[0], channels, refuse) ||
        !setup(stream.packets[2], channels, refuse)) {
      result.reason = refuse.reason;
      return result;
    }
  }
  result.ok = true;
  return result;
}

HeaderCheck checkVorbisFile(const char* path) {
  HeaderCheck result;
  struct stat info {};
  if (!path || stat(path, &info) != 0) {
    result.ok = true;  // the opener reports a missing file itself
    return result;
  }
  // Songs are opened again and again on the mixer thread: a file that has
  // not changed keeps its verdict.
  struct Known {
    off_t size;
    struct timespec modified;
    HeaderCheck verdict;
  };
  static std::mutex lock;
  static auto* known = new std::map<std::string, Known>;
  {
    std::lock_guard<std::mutex> hold(lock);
    const auto it = known->find(path);
    if (it != known->end() && it->second.size == info.st_size &&
        it->second.modified.tv_sec == info.st_mtim.tv_sec &&
        it->second.modified.tv_nsec == info.st_mtim.tv_nsec)
      return it->second.verdict;
  }
  std::FILE* f = std::fopen(path, "rb");
  if (!f) {
    result.ok = true;
    return result;
  }
  std::vector<uint8_t> bytes;
  uint8_t chunk[65536];
  std::size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0)
    bytes.insert(bytes.end(), chunk, chunk + n);
  std::fclose(f);
  result = checkVorbisHeaders(bytes.data(), bytes.size());
  std::lock_guard<std::mutex> hold(lock);
  (*known)[path] = Known{info.st_size, info.st_mtim, result};
  return result;
}

}  // namespace vostan::audio
