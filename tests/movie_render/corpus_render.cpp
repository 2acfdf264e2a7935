#include "corpus_render.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "movie/dd_movie.h"
#include "movie/dd_stream.h"
#include "movie/render/dd_render.h"

namespace corpus {

namespace fs = std::filesystem;

bool readPng(const std::string& path, Picture& out) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return false;
  image.format = PNG_FORMAT_RGBA;
  out.width = int(image.width);
  out.height = int(image.height);
  out.rgba.assign(PNG_IMAGE_SIZE(image), 0);
  if (!png_image_finish_read(&image, nullptr, out.rgba.data(), 0, nullptr)) {
    png_image_free(&image);
    return false;
  }
  return true;
}

bool writePng(const std::string& path, const Picture& picture) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = png_uint_32(picture.width);
  image.height = png_uint_32(picture.height);
  image.format = PNG_FORMAT_RGBA;
  return png_image_write_to_file(&image, path.c_str(), 0, picture.rgba.data(), 0, nullptr) != 0;
}

namespace {

// The few keys of test.toml that matter here: num_frames, the picture
// sections with their trigger, and the renderer's quality.
struct Toml {
  int numFrames = 1;
  bool antialiased = false;
  std::map<std::string, int> triggers;  // picture name to trigger, -1 for none
};

std::string trim(const std::string& s) {
  size_t a = s.find_first_not_of(" \t\r"), b = s.find_last_not_of(" \t\r");
  return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

Toml readToml(const fs::path& file) {
  Toml t;
  std::ifstream in(file);
  std::string line, section;
  const std::string prefix = "image_comparisons.";
  while (std::getline(in, line)) {
    line = trim(line.substr(0, line.find('#')));
    if (line.empty()) continue;
    if (line[0] == '[') {
      section =
          trim(line.substr(line.find_first_not_of('['), line.find(']') - line.rfind('[') - 1));
      if (section.rfind(prefix, 0) == 0) {
        std::string name = section.substr(prefix.size());
        name = name.substr(0, name.find('.'));
        t.triggers.emplace(name, -1);
        section = prefix + name;
      }
      continue;
    }
    size_t eq = line.find('=');
    if (eq == std::string::npos) continue;
    std::string key = trim(line.substr(0, eq)), value = trim(line.substr(eq + 1));
    if (section.empty() && key == "num_frames") t.numFrames = std::atoi(value.c_str());
    if (section.rfind(prefix, 0) == 0 && key == "trigger")
      t.triggers[section.substr(prefix.size())] = std::atoi(value.c_str());
    if (value.find("quality") != std::string::npos && value.find("\"high\"") != std::string::npos)
      t.antialiased = true;
  }
  return t;
}

struct BlockCounts {
  std::map<int, int> passed;
};

// Blocks that cannot change a picture: end, file attributes, metadata, scene
// labels, script limits, product and debugger records.
bool harmless(int type) {
  switch (type) {
    case 0:
    case 24:
    case 41:
    case 58:
    case 63:
    case 64:
    case 65:
    case 69:
    case 77:
    case 86:
      return true;
    default:
      return false;
  }
}

void onBlock(void* context, const ddTimeline*, int type, int32_t, ddBlockAction action) {
  if (action != ddBlockRead && !harmless(type)) static_cast<BlockCounts*>(context)->passed[type]++;
}

struct Fatal {
  std::string message;
};

[[noreturn]] void throwFatal(const char* message) {
  throw Fatal{message};
}

uint8_t channel(uint32_t word, int i) {
  return uint8_t(word >> (8 * i));
}

}  // namespace

std::vector<Case> listCases(const std::string& root) {
  std::vector<Case> cases;
  if (!fs::is_directory(root)) return cases;
  for (const auto& entry : fs::directory_iterator(root)) {
    fs::path dir = entry.path();
    if (!fs::exists(dir / "test.swf") || !fs::exists(dir / "test.toml")) continue;
    Toml toml = readToml(dir / "test.toml");
    for (const auto& [name, trigger] : toml.triggers) {
      fs::path png = dir / (name + ".expected.png");
      if (!fs::exists(png)) continue;
      cases.push_back(Case{dir.filename().string(), name, (dir / "test.swf").string(), png.string(),
                           trigger > 0 ? trigger : toml.numFrames, toml.antialiased});
    }
  }
  std::sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) {
    return a.movie != b.movie ? a.movie < b.movie : a.name < b.name;
  });
  return cases;
}

Rendered renderMovie(const std::vector<uint8_t>& swf, int framesAdvanced, int width, int height) {
  Rendered r;
  ddRender_install();
  BlockCounts blocks;
  // A movie the reader gives up on is reported, not a reason to stop: its
  // memory is tracked while it opens and released in one sweep.
  ddSink fatalSink = ddSetFatalSink(throwFatal);
  ddMemory_setTracking(true);
  ddMovie* movie = nullptr;
  int opened = -1;
  try {
    movie = ddMovie_create(ddSurface_create(width, height), swf.data(), int32_t(swf.size()));
    movie->stream->listener = onBlock;
    movie->stream->listenerContext = &blocks;
    opened = ddMovie_open(movie);
  } catch (const Fatal& f) {
    ddMemory_releaseTracked();
    r.fatal = f.message;
    movie = nullptr;
  }
  ddMemory_setTracking(false);
  ddSetFatalSink(fatalSink);
  if (!movie) return r;
  if (opened < 0) {
    ddMovie_dispose(movie);
    return r;
  }
  r.opened = true;
  for (const auto& [type, count] : blocks.passed) {
    r.allBlocksRead = false;
    r.skippedBlocks += std::to_string(type) + ":" + std::to_string(count) + " ";
  }
  ddMovie_start(movie);
  // A looping player that advanced n frames shows frame n - 1 of the cycle.
  int frames = movie->rootTimeline->framesRead;
  r.rootFrames = frames;
  r.shownFrame = frames > 0 ? (std::max(framesAdvanced, 1) - 1) % frames : 0;
  ddClip_moveFrame(movie, movie->rootClip, r.shownFrame);
  ddMovie_draw(movie, nullptr, nullptr);

  // The movie leaves its background to the caller: lay the premultiplied
  // pixels over it.
  const ddSurface* s = movie->surface;
  // Without a background block the stream's colour stays 0; players then show
  // white.
  const ddColor bg = movie->backgroundColor >> 24 ? movie->backgroundColor : 0xFFFFFFFFu;
  r.picture.width = width;
  r.picture.height = height;
  r.picture.rgba.resize(size_t(width) * height * 4);
  for (size_t i = 0; i < size_t(width) * height; i++) {
    ddColor p = s->pixels[i];
    uint32_t a = channel(p, 3);
    for (int c = 0; c < 3; c++) {
      uint32_t v = channel(p, c) + (channel(bg, c) * (255 - a) + 127) / 255;
      r.picture.rgba[i * 4 + c] = uint8_t(std::min<uint32_t>(v, 255));
    }
    r.picture.rgba[i * 4 + 3] = 255;
  }
  ddMovie_dispose(movie);
  return r;
}

Rendered renderMovieFile(const std::string& swfPath, int framesAdvanced, int width, int height) {
  std::ifstream in(swfPath, std::ios::binary);
  std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                             std::istreambuf_iterator<char>());
  if (bytes.empty()) return Rendered{};
  return renderMovie(bytes, framesAdvanced, width, height);
}

Comparison compare(const Picture& got, const Picture& expected, int tolerance,
                   Picture* difference) {
  Comparison c;
  if (got.width != expected.width || got.height != expected.height || got.rgba.empty()) return c;
  const size_t n = size_t(got.width) * got.height;
  if (difference) {
    difference->width = got.width;
    difference->height = got.height;
    difference->rgba.assign(n * 4, 255);
  }
  size_t within = 0;
  uint64_t total = 0;
  for (size_t i = 0; i < n; i++) {
    int worst = 0;
    // Expected pictures may carry alpha; compare them as laid over black, as
    // the rendered ones are opaque.
    const int ea = expected.rgba[i * 4 + 3];
    for (int k = 0; k < 3; k++) {
      int e = (expected.rgba[i * 4 + k] * ea + 127) / 255;
      int d = std::abs(int(got.rgba[i * 4 + k]) - e);
      total += uint64_t(d);
      worst = std::max(worst, d);
    }
    if (worst <= tolerance) within++;
    if (difference) {
      uint8_t* px = &difference->rgba[i * 4];
      uint8_t shade = uint8_t(255 - std::min(255, worst * 4));
      px[0] = worst > tolerance ? 255 : shade;
      px[1] = px[2] = shade;
    }
  }
  c.withinShare = double(within) / double(n);
  c.meanAbsError = double(total) / double(n * 3);
  return c;
}

std::map<std::string, std::pair<double, double>> readBaseline(const std::string& path) {
  std::map<std::string, std::pair<double, double>> baseline;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line);
    std::string key;
    double share, mean;
    if (line[0] != '#' && fields >> key >> share >> mean) baseline[key] = {share, mean};
  }
  return baseline;
}

}  // namespace corpus
