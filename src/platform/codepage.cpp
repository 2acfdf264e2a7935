#include "platform/codepage.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace vostan::platform {
namespace {

// One converter per direction, reopened only when the code page changes, so
// that converting a typed character costs no allocation.
struct Converter {
  iconv_t cd = reinterpret_cast<iconv_t>(-1);
  int codePage = -1;
};
std::mutex convMutex;
Converter toBytes, toWide;

void codePageName(int codePage, char* name, std::size_t size) {
  if (codePage == 0 || codePage == 65001)
    std::snprintf(name, size, "UTF-8");
  else
    std::snprintf(name, size, "CP%d", codePage);
}

iconv_t open(Converter& c, int codePage, bool wideToBytes) {
  if (c.codePage == codePage) return c.cd;
  if (c.cd != reinterpret_cast<iconv_t>(-1)) iconv_close(c.cd);
  char name[32];
  codePageName(codePage, name, sizeof name);
  c.cd = wideToBytes ? iconv_open(name, "UTF-16LE") : iconv_open("UTF-16LE", name);
  if (c.cd == reinterpret_cast<iconv_t>(-1)) {
    // An unknown page falls back to the default one rather than losing text.
    c.cd = wideToBytes ? iconv_open("UTF-8", "UTF-16LE") : iconv_open("UTF-16LE", "UTF-8");
  }
  c.codePage = codePage;
  return c.cd;
}

}  // namespace

std::size_t wideToMultiByte(int codePage, const char16_t* src, std::size_t count, char* dst,
                            std::size_t capacity) {
  std::lock_guard<std::mutex> lock(convMutex);
  iconv_t cd = open(toBytes, codePage, true);
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* in = const_cast<char*>(reinterpret_cast<const char*>(src));
  std::size_t inLeft = count * 2;
  char* out = dst;
  std::size_t outLeft = capacity;
  while (inLeft > 0 && outLeft > 0) {
    if (iconv(cd, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1)) break;
    if (errno == E2BIG) break;
    // Unrepresentable or broken: one '?' for the unit (or surrogate pair), then go on.
    std::size_t skip = 2;
    if (inLeft >= 4) {
      uint16_t unit;
      std::memcpy(&unit, in, 2);
      if (unit >= 0xD800 && unit < 0xDC00) skip = 4;
    }
    skip = skip > inLeft ? inLeft : skip;
    in += skip;
    inLeft -= skip;
    *out++ = '?';
    --outLeft;
  }
  return static_cast<std::size_t>(out - dst);
}

std::size_t multiByteToWide(int codePage, const char* src, std::size_t count, char16_t* dst,
                            std::size_t capacity) {
  std::lock_guard<std::mutex> lock(convMutex);
  iconv_t cd = open(toWide, codePage, false);
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* in = const_cast<char*>(src);
  std::size_t inLeft = count;
  char16_t scratch[64];
  std::size_t produced = 0;
  while (inLeft > 0) {
    char16_t* target = dst ? dst + produced : scratch;
    std::size_t room = dst ? capacity - produced : sizeof scratch / sizeof scratch[0];
    if (room == 0) break;
    char* out = reinterpret_cast<char*>(target);
    std::size_t outLeft = room * 2;
    std::size_t r = iconv(cd, &in, &inLeft, &out, &outLeft);
    produced += (room * 2 - outLeft) / 2;
    if (r != static_cast<std::size_t>(-1)) break;
    if (errno == E2BIG) {
      if (dst) break;
      continue;  // counting only: the scratch buffer was full
    }
    // A byte the page does not define (or a lead byte at the end) reads as '?'.
    ++in;
    --inLeft;
    if (dst) {
      if (produced >= capacity) break;
      dst[produced] = u'?';
    }
    ++produced;
  }
  return produced;
}

bool isDBCSLeadByte(int codePage, uint8_t b) {
  switch (codePage) {
    case 932:
      return (b >= 0x81 && b <= 0x9F) || (b >= 0xE0 && b <= 0xFC);
    case 936:
    case 949:
    case 950:
      return b >= 0x81 && b <= 0xFE;
    default:
      return false;
  }
}

int ansiCodePageOfLanguage(uint16_t languageId) {
  switch (languageId & 0x3FF) {
    case 0x00:
      return 0;
    case 0x11:
      return 932;
    case 0x12:
      return 949;
    case 0x04:
      return (languageId == 0x804 || languageId == 0x1004) ? 936 : 950;
    case 0x02:
    case 0x19:
    case 0x22:
    case 0x23:
    case 0x2F:
      return 1251;
    case 0x05:
    case 0x0E:
    case 0x15:
    case 0x18:
    case 0x1A:
    case 0x1B:
    case 0x1C:
    case 0x24:
      return 1250;
    case 0x08:
      return 1253;
    case 0x1F:
      return 1254;
    case 0x0D:
      return 1255;
    case 0x01:
      return 1256;
    case 0x25:
    case 0x26:
    case 0x27:
      return 1257;
    case 0x1E:
      return 874;
    case 0x2A:
      return 1258;
    default:
      return 1252;
  }
}

uint16_t localeLanguageId() {
  locale_t loc = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(0));
  const char* name = loc ? nl_langinfo_l(_NL_LOCALE_NAME(LC_CTYPE), loc) : "C";
  struct Entry {
    const char* prefix;
    uint16_t id;
  };
  static const Entry kLanguages[] = {
      {"ja", 0x411}, {"ko", 0x412}, {"zh_CN", 0x804}, {"zh_SG", 0x1004}, {"zh", 0x404},
      {"ru", 0x419}, {"uk", 0x422}, {"bg", 0x402},    {"cs", 0x405},     {"pl", 0x415},
      {"hu", 0x40E}, {"sk", 0x41B}, {"sl", 0x424},    {"ro", 0x418},     {"hr", 0x41A},
      {"el", 0x408}, {"tr", 0x41F}, {"he", 0x40D},    {"ar", 0x401},     {"et", 0x425},
      {"lv", 0x426}, {"lt", 0x427}, {"th", 0x41E},    {"vi", 0x42A},     {"de", 0x407},
      {"fr", 0x40C}, {"es", 0x40A}, {"it", 0x410},    {"nl", 0x413},     {"pt", 0x416},
  };
  uint16_t id = 0x409;
  for (const Entry& e : kLanguages) {
    if (std::strncmp(name, e.prefix, std::strlen(e.prefix)) == 0) {
      id = e.id;
      break;
    }
  }
  if (loc) freelocale(loc);
  return id;
}

std::string wideToUtf8(const char16_t* src, std::size_t count) {
  std::string out(count * 3, '\0');  // a surrogate pair's four bytes fit in its two units' six
  out.resize(wideToMultiByte(0, src, count, out.data(), out.size()));
  return out;
}

std::string codePageToUtf8(int codePage, const char* text) {
  if (!text) return {};
  const std::size_t length = std::strlen(text);
  std::u16string wide(multiByteToWide(codePage, text, length, nullptr, 0), u'\0');
  wide.resize(multiByteToWide(codePage, text, length, wide.data(), wide.size()));
  return wideToUtf8(wide.data(), wide.size());
}

}  // namespace vostan::platform
