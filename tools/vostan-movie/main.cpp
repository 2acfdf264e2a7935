// vostan-movie: shows what the player makes of a movie without Java.
//   vostan-movie render IN.swf --frame N [--size WxH] [--background [movie|transparent|#rrggbb]
//                | --premultiplied] --out OUT.png
//   vostan-movie render IN.swf --frames FIRST-LAST [options] --out DIR
//   vostan-movie info [--json] IN.swf
//   vostan-movie --version
// A frame is reached and drawn the way the VecMovie natives do it: the root
// clip is moved to frame N, then the movie is drawn and its surface handed out
// as an upload.
#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "movie/natives/movie_host.h"
#include "movie/render/dd_render.h"

namespace {

const char* program = "vostan-movie";
std::string currentInput;

[[noreturn]] void fail(const std::string& message) {
  std::fprintf(stderr, "%s: %s\n", program, message.c_str());
  std::exit(1);
}

void usage() {
  std::fprintf(stderr,
               "usage: %s render IN.swf --frame N [--size WxH]\n"
               "                [--background [movie|transparent|#rrggbb] | --premultiplied] "
               "--out OUT.png\n"
               "       %s render IN.swf --frames FIRST-LAST [same options] --out DIR\n"
               "       %s info [--json] IN.swf\n"
               "       %s --version\n"
               "Frames count from 0; a frame past those the movie holds shows as the player\n"
               "shows it. The picture holds the movie's pixels with straight alpha (as with\n"
               "--background transparent); --background or --background movie lays them over\n"
               "the movie's background colour (white when it sets none), --background #rrggbb\n"
               "over that colour; --premultiplied writes them as the movie keeps them (what a\n"
               "texture receives). A frame range writes DIR/frame_NNNN.png for each frame.\n",
               program, program, program, program);
  std::exit(2);
}

// Structure errors inside a movie end the program with the reader's message.
[[noreturn]] void fatalSink(const char* message) {
  std::string text = message;
  while (!text.empty() && text.back() == '\n') text.pop_back();
  fail(currentInput + ": damaged movie: " + text);
}

void quietWarn(const char*) {}

std::vector<uint8_t> readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fail("cannot read " + path + ": " + std::strerror(errno));
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
  if (bytes.size() < 8 || (bytes[0] != 'F' && bytes[0] != 'C') || bytes[1] != 'W' ||
      bytes[2] != 'S')
    fail(path + ": not a SWF movie");
  return bytes;
}

struct BlockLog {
  std::map<int, int> skipped, unknown;
};

void onBlock(void* context, const ddTimeline*, int type, int32_t, ddBlockAction action) {
  auto* log = static_cast<BlockLog*>(context);
  if (type == 0) return;  // the end of a sprite
  if (action == ddBlockSkipped) log->skipped[type]++;
  if (action == ddBlockUnknown) log->unknown[type]++;
}

// Opens with warnings silenced (they go to standard output, which `info`
// uses) and the reader's report of every block.
ddMovie* open(const std::string& path, const std::vector<uint8_t>& bytes, int width, int height,
              BlockLog* log) {
  currentInput = path;
  ddSetFatalSink(fatalSink);
  ddSetWarnSink(quietWarn);
  ddMovie* movie = ddMovie_openBytes(bytes.data(), int32_t(bytes.size()), width, height,
                                     log ? onBlock : nullptr, log);
  if (!movie) fail(path + ": the movie does not open (bad header or compressed body)");
  return movie;
}

const char* blockName(int type) {
  switch (type) {
    case 6:
      return "DefineBits (JPEG)";
    case 7:
      return "DefineButton";
    case 8:
      return "JPEGTables";
    case 10:
      return "DefineFont";
    case 11:
      return "DefineText";
    case 12:
      return "DoAction";
    case 13:
      return "DefineFontInfo";
    case 14:
      return "DefineSound";
    case 15:
      return "StartSound";
    case 17:
      return "DefineButtonSound";
    case 18:
      return "SoundStreamHead";
    case 19:
      return "SoundStreamBlock";
    case 21:
      return "DefineBitsJPEG2";
    case 24:
      return "Protect";
    case 33:
      return "DefineText2";
    case 34:
      return "DefineButton2";
    case 35:
      return "DefineBitsJPEG3";
    case 37:
      return "DefineEditText";
    case 45:
      return "SoundStreamHead2";
    case 46:
      return "DefineMorphShape";
    case 48:
      return "DefineFont2";
    case 58:
      return "EnableDebugger";
    case 59:
      return "DoInitAction";
    case 62:
      return "DefineFontInfo2";
    default:
      return "";
  }
}

int pixels(ddFixed v) {
  return int((int64_t(v) + 512) >> 10);
}

std::string jsonString(const std::string& text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += char(c);
    } else if (c < 0x20) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
      out += escaped;
    } else {
      out += char(c);
    }
  }
  return out + "\"";
}

void infoJson(const std::string& path, const std::vector<uint8_t>& bytes, const ddMovie* movie,
              const BlockLog& log, uint32_t length) {
  const ddTimeline* root = movie->rootTimeline;
  std::printf("{\n  \"file\": %s,\n", jsonString(path).c_str());
  std::printf("  \"signature\": \"%c%c%c\",\n  \"version\": %d,\n  \"compressed\": %s,\n", bytes[0],
              bytes[1], bytes[2], int(bytes[3]), bytes[0] == 'C' ? "true" : "false");
  std::printf("  \"length\": %u,\n  \"fileBytes\": %zu,\n", length, bytes.size());
  std::printf("  \"width\": %d,\n  \"height\": %d,\n  \"frameRate\": %g,\n",
              pixels(root->frameWidth), pixels(root->frameHeight), double(movie->frameRate));
  std::printf("  \"framesStated\": %d,\n  \"framesRead\": %d,\n", root->nFrames, root->framesRead);
  const ddColor bg = movie->backgroundColor;
  if (bg >> 24)
    std::printf("  \"background\": \"#%02x%02x%02x\",\n", bg & 255, (bg >> 8) & 255,
                (bg >> 16) & 255);
  else
    std::printf("  \"background\": null,\n");
  std::printf("  \"characters\": [");
  const ddDictionary* d = root->dictionary;
  const char* separator = "\n";
  for (int32_t id = 0; id < d->count; id++) {
    const ddCharacter* c = d->entries[id];
    if (!c) continue;
    std::printf("%s    {\"id\": %d, ", separator, id);
    separator = ",\n";
    switch (c->type) {
      case ddCharacterShape: {
        const ddShape* sh = reinterpret_cast<const ddShapeCharacter*>(c)->shape;
        std::printf("\"kind\": \"shape\", \"fills\": %d, \"records\": %d}", sh->fillCount,
                    sh->recordCount);
        break;
      }
      case ddCharacterBitmap: {
        const ddSurface* b = reinterpret_cast<const ddBitmapCharacter*>(c)->surface;
        std::printf("\"kind\": \"bitmap\", \"width\": %d, \"height\": %d}", b->width, b->height);
        break;
      }
      case ddCharacterTimeline:
        std::printf("\"kind\": \"sprite\", \"frames\": %d}",
                    reinterpret_cast<const ddTimeline*>(c)->framesRead);
        break;
      default:
        std::printf("\"kind\": \"other\", \"type\": %d}", c->type);
    }
  }
  std::printf("%s],\n  \"blocksSkipped\": [", separator[0] == ',' ? "\n  " : "");
  separator = "\n";
  for (const auto& [type, count] : log.skipped) {
    std::printf("%s    {\"type\": %d, \"name\": %s, \"count\": %d}", separator, type,
                jsonString(blockName(type)).c_str(), count);
    separator = ",\n";
  }
  for (const auto& [type, count] : log.unknown) {
    std::printf("%s    {\"type\": %d, \"name\": null, \"count\": %d}", separator, type, count);
    separator = ",\n";
  }
  std::printf("%s]\n}\n", separator[0] == ',' ? "\n  " : "");
}

int info(const std::string& path, bool json) {
  std::vector<uint8_t> bytes = readFile(path);
  BlockLog log;
  ddMovie* movie = open(path, bytes, 1, 1, &log);
  const ddTimeline* root = movie->rootTimeline;
  uint32_t length = uint32_t(bytes[4]) | uint32_t(bytes[5]) << 8 | uint32_t(bytes[6]) << 16 |
                    uint32_t(bytes[7]) << 24;
  if (json) {
    infoJson(path, bytes, movie, log, length);
    ddMovie_dispose(movie);
    return 0;
  }
  std::printf("file: %s\n", path.c_str());
  std::printf("header: %c%c%c version %d, %s, %u bytes uncompressed (%zu in the file)\n", bytes[0],
              bytes[1], bytes[2], int(bytes[3]), bytes[0] == 'C' ? "compressed" : "plain", length,
              bytes.size());
  std::printf("frame: %d x %d px, %g frames per second\n", pixels(root->frameWidth),
              pixels(root->frameHeight), double(movie->frameRate));
  std::printf("frames: %d stated, %d read\n", root->nFrames, root->framesRead);
  const ddColor bg = movie->backgroundColor;
  if (bg >> 24)
    std::printf("background: #%02x%02x%02x\n", bg & 255, (bg >> 8) & 255, (bg >> 16) & 255);
  else
    std::printf("background: none\n");

  const ddDictionary* d = root->dictionary;
  int characters = 0;
  for (int32_t id = 0; id < d->count; id++) characters += d->entries[id] != nullptr;
  std::printf("characters: %d\n", characters);
  for (int32_t id = 0; id < d->count; id++) {
    const ddCharacter* c = d->entries[id];
    if (!c) continue;
    switch (c->type) {
      case ddCharacterShape: {
        const ddShape* s = reinterpret_cast<const ddShapeCharacter*>(c)->shape;
        std::printf("  %d shape, %d fills, %d records\n", id, s->fillCount, s->recordCount);
        break;
      }
      case ddCharacterBitmap: {
        const ddSurface* s = reinterpret_cast<const ddBitmapCharacter*>(c)->surface;
        std::printf("  %d bitmap %d x %d\n", id, s->width, s->height);
        break;
      }
      case ddCharacterTimeline:
        std::printf("  %d sprite, %d frames\n", id,
                    reinterpret_cast<const ddTimeline*>(c)->framesRead);
        break;
      case ddCharacterMorph: {
        const ddShape* s = reinterpret_cast<const ddMorphCharacter*>(c)->start;
        std::printf("  %d morph, %d fills, %d records\n", id, s->fillCount, s->recordCount);
        break;
      }
      case ddCharacterFont: {
        const ddFont* f = reinterpret_cast<const ddFont*>(c);
        std::printf("  %d font%s%s, %d glyphs\n", id, f->name ? " " : "", f->name ? f->name : "",
                    f->glyphCount);
        break;
      }
      case ddCharacterText: {
        int glyphs = 0;
        for (const ddTextRecord* r = reinterpret_cast<const ddTextCharacter*>(c)->records; r;
             r = r->next)
          glyphs += r->glyphCount;
        std::printf("  %d text, %d glyphs\n", id, glyphs);
        break;
      }
      case ddCharacterEditText: {
        const char* text = reinterpret_cast<const ddEditTextCharacter*>(c)->text;
        std::printf("  %d edit text \"%s\"\n", id, text ? text : "");
        break;
      }
      default:
        std::printf("  %d type %d\n", id, c->type);
    }
  }
  if (log.skipped.empty() && log.unknown.empty()) {
    std::printf("blocks skipped: none\n");
  } else {
    std::printf("blocks skipped:\n");
    for (const auto& [type, count] : log.skipped)
      std::printf("  %d %s x %d\n", type, blockName(type), count);
    for (const auto& [type, count] : log.unknown) std::printf("  %d unknown x %d\n", type, count);
  }
  ddMovie_dispose(movie);
  return 0;
}

int parseInt(const std::string& text, const char* what) {
  char* end = nullptr;
  errno = 0;
  long v = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end || errno || v < 0 || v > 1000000)
    fail(std::string("bad ") + what + ": " + text);
  return int(v);
}

struct Capture {
  std::vector<uint8_t> rgba;
  int width = 0, height = 0;
};

void capture(void* context, int32_t, int32_t, int32_t width, int32_t height, const void* rgba) {
  auto* c = static_cast<Capture*>(context);
  const auto* p = static_cast<const uint8_t*>(rgba);
  c->rgba.assign(p, p + size_t(width) * height * 4);
  c->width = width;
  c->height = height;
}

void writePng(const std::string& path, const Capture& picture) {
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) fail("cannot write " + path + ": " + std::strerror(errno));
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    std::fclose(f);
    fail("cannot write " + path + ": PNG encoding failed");
  }
  png_init_io(png, f);
  png_set_IHDR(png, info, png_uint_32(picture.width), png_uint_32(picture.height), 8,
               PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < picture.height; y++)
    png_write_row(png, picture.rgba.data() + size_t(y) * picture.width * 4);
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  if (std::fclose(f) != 0) fail("cannot write " + path + ": " + std::strerror(errno));
}

enum class Mode { Straight, Background, Premultiplied };

// A colour given as #rrggbb, as a colour word.
bool parseColour(const std::string& text, ddColor* colour) {
  if (text.size() != 7 || text[0] != '#') return false;
  char* end = nullptr;
  const unsigned long v = std::strtoul(text.c_str() + 1, &end, 16);
  if (*end) return false;
  *colour = ddColor((v >> 16) & 255) | ddColor((v >> 8) & 255) << 8 | ddColor(v & 255) << 16 |
            0xFF000000u;
  return true;
}

void finishPixels(Capture& c, Mode mode, ddColor background) {
  if (mode == Mode::Premultiplied) return;
  // Without a background block players show white.
  const ddColor bg = background >> 24 ? background : 0xFFFFFFFFu;
  for (size_t i = 0; i < c.rgba.size(); i += 4) {
    uint8_t* px = &c.rgba[i];
    const uint32_t a = px[3];
    for (int k = 0; k < 3; k++) {
      uint32_t v = mode == Mode::Background
                       ? px[k] + (((bg >> (8 * k)) & 255) * (255 - a) + 127) / 255
                       : (a ? (px[k] * 255u + a / 2) / a : 0);
      px[k] = uint8_t(v > 255 ? 255 : v);
    }
    if (mode == Mode::Background) px[3] = 255;
  }
}

int render(const std::vector<std::string>& args) {
  std::string in, out;
  bool range = false;
  int frame = -1, last = -1, width = 0, height = 0;
  Mode mode = Mode::Straight;
  bool ownColour = false;
  ddColor colour = 0;
  for (size_t i = 0; i < args.size(); i++) {
    const std::string& a = args[i];
    auto value = [&]() -> const std::string& {
      if (i + 1 >= args.size()) fail(a + " needs a value");
      return args[++i];
    };
    if (a == "--frame") {
      frame = parseInt(value(), "frame");
      last = frame;
    } else if (a == "--frames") {
      const std::string& v = value();
      const size_t dash = v.find('-');
      if (dash == std::string::npos) fail("bad frame range: " + v + " (expected FIRST-LAST)");
      frame = parseInt(v.substr(0, dash), "first frame");
      last = parseInt(v.substr(dash + 1), "last frame");
      if (last < frame) fail("bad frame range: " + v + " (the last frame comes before the first)");
      range = true;
    } else if (a == "--out") {
      out = value();
    } else if (a == "--size") {
      const std::string& v = value();
      size_t x = v.find('x');
      if (x == std::string::npos) fail("bad size: " + v + " (expected WxH)");
      width = parseInt(v.substr(0, x), "width");
      height = parseInt(v.substr(x + 1), "height");
      if (width < 1 || width > ddRowWidth || height < 1 || height > 8192)
        fail("bad size: " + v + " (1 to " + std::to_string(ddRowWidth) +
             " pixels wide, 1 to 8192 high)");
    } else if (a == "--background") {
      // The value is optional: a bare --background means the movie's own colour.
      const std::string next = i + 1 < args.size() ? args[i + 1] : "";
      mode = Mode::Background;
      if (next == "movie") {
        i++;
      } else if (next == "transparent") {
        mode = Mode::Straight;
        i++;
      } else if (!next.empty() && next[0] == '#') {
        if (!parseColour(next, &colour)) fail("bad colour: " + next + " (expected #rrggbb)");
        ownColour = true;
        i++;
      }
    } else if (a == "--premultiplied") {
      mode = Mode::Premultiplied;
    } else if (!a.empty() && a[0] == '-') {
      fail("unknown option " + a);
    } else if (in.empty()) {
      in = a;
    } else {
      fail("more than one input: " + a);
    }
  }
  if (in.empty() || out.empty() || frame < 0) usage();

  std::vector<uint8_t> bytes = readFile(in);
  if (!width) {
    // The movie's own size, as wide as the rasteriser goes.
    ddMovie* probe = open(in, bytes, 1, 1, nullptr);
    width = std::max(1, std::min(pixels(probe->rootTimeline->frameWidth), ddRowWidth));
    height = std::max(1, std::min(pixels(probe->rootTimeline->frameHeight), 8192));
    ddMovie_dispose(probe);
  }
  if (range) {
    std::error_code error;
    std::filesystem::create_directories(out, error);
    if (error) fail("cannot make " + out + ": " + error.message());
  }
  // Opened at its final size, as Java opens movies.
  ddMovie* movie = open(in, bytes, width, height, nullptr);
  const int frames = movie->rootTimeline->framesRead;
  // Frames are reached one after the other, as a game steps through them.
  for (int f = frame; f <= last; f++) {
    // The player shows its first frame for one past the frames it holds.
    if (f > 0 && f >= frames)
      std::fprintf(stderr,
                   "%s: frame %d is past the %d the movie holds: shown as the player does\n",
                   program, f, frames);
    ddMovie_moveClip(movie, movie->rootClip, f);
    Capture picture;
    ddMovie_drawToTexture(movie, 0, 0, ddTextureTarget{true, width, height, capture, &picture});
    finishPixels(picture, mode, ownColour ? colour : movie->backgroundColor);
    char name[32];
    std::snprintf(name, sizeof name, "frame_%04d.png", f);
    writePng(range ? (std::filesystem::path(out) / name).string() : out, picture);
  }
  ddMovie_dispose(movie);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) usage();
  const std::string command = args[0];
  args.erase(args.begin());
  if (command == "render") return render(args);
  if (command == "info") {
    const bool json = !args.empty() && args[0] == "--json";
    if (json) args.erase(args.begin());
    if (args.size() != 1) usage();
    return info(args[0], json);
  }
  if (command == "--version") {
    std::printf("%s %s\n", program, VOSTAN_VERSION);
    return 0;
  }
  if (command == "--help" || command == "-h") usage();
  fail("unknown command " + command + " (render or info)");
}
