// Writes a test song: a known synthetic signal encoded as Ogg Vorbis, with an
// optional "mdj" comment. Tests decode the file straight through as their
// reference, so the signal only has to make every frame distinct from its
// neighbours and never repeat; beat clicks make the tempo audible in the demo.
//
//   mdjsong -o out.ogg [--frames N] [--rate HZ] [--channels C] [--quality Q]
//           [--freq HZ] [--clicks BPM] [--noise AMP] [--tag TEXT] [--tag-name NAME]
#include <vorbis/vorbisenc.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Options {
  std::string out;
  long frames = 132300;
  long rate = 44100;
  int channels = 2;
  float quality = 0.3f;
  double freq = 440.0;
  double clicksBpm = 0;
  double noise = 0;  // amplitude of white noise, for a bit rate like real music's
  bool hasTag = false;
  std::string tag;
  std::string tagName = "mdj";
};

int usage(const char* why) {
  fprintf(stderr,
          "mdjsong: %s\nusage: mdjsong -o out.ogg [--frames N] [--rate HZ] [--channels C] "
          "[--quality Q] [--freq HZ] [--clicks BPM] [--noise AMP] [--tag TEXT] [--tag-name NAME]\n",
          why);
  return 2;
}

bool parseArgs(int argc, char** argv, Options* o) {
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    if (i + 1 >= argc) return false;
    const char* v = argv[++i];
    if (a == "-o") {
      o->out = v;
    } else if (a == "--frames") {
      o->frames = strtol(v, nullptr, 10);
    } else if (a == "--rate") {
      o->rate = strtol(v, nullptr, 10);
    } else if (a == "--channels") {
      o->channels = static_cast<int>(strtol(v, nullptr, 10));
    } else if (a == "--quality") {
      o->quality = strtof(v, nullptr);
    } else if (a == "--freq") {
      o->freq = strtod(v, nullptr);
    } else if (a == "--clicks") {
      o->clicksBpm = strtod(v, nullptr);
    } else if (a == "--noise") {
      o->noise = strtod(v, nullptr);
    } else if (a == "--tag") {
      o->hasTag = true;
      o->tag = v;
    } else if (a == "--tag-name") {
      o->tagName = v;
    } else {
      return false;
    }
  }
  return !o->out.empty() && o->frames > 0 && o->rate > 0 && o->channels > 0;
}

// Channel c at frame i: a sine per channel at its own frequency under an
// amplitude that rises across the whole song, so no stretch of it repeats.
float sample(const Options& o, int c, long i) {
  double t = static_cast<double>(i) / o.rate;
  double amp = 0.25 + 0.2 * static_cast<double>(i) / o.frames;
  double f = o.freq * (1.0 + 0.5 * c);
  double v = amp * std::sin(2.0 * kPi * f * t + 0.7 * c);
  if (o.clicksBpm > 0) {
    double beat = t * o.clicksBpm / 60.0;
    double since = (beat - std::floor(beat)) * 60.0 / o.clicksBpm;
    if (since < 0.03) v += 0.3 * std::sin(2.0 * kPi * 1760.0 * since) * (1.0 - since / 0.03);
  }
  if (o.noise > 0) {
    // A hash of frame and channel: the same noise on every run.
    uint32_t h = static_cast<uint32_t>(i) * 2654435761u ^ static_cast<uint32_t>(c) * 40503u;
    h ^= h >> 15;
    h *= 2246822519u;
    h ^= h >> 13;
    v += o.noise * (static_cast<double>(h) / 4294967295.0 * 2.0 - 1.0);
  }
  return static_cast<float>(v);
}

class Writer {
 public:
  explicit Writer(FILE* f) : file(f) {}
  bool page(const ogg_page& og) {
    return fwrite(og.header, 1, og.header_len, file) == size_t(og.header_len) &&
           fwrite(og.body, 1, og.body_len, file) == size_t(og.body_len);
  }

 private:
  FILE* file;
};

int encode(const Options& o) {
  FILE* file = fopen(o.out.c_str(), "wb");
  if (!file) {
    perror(o.out.c_str());
    return 1;
  }
  Writer writer(file);
  bool ok = true;

  vorbis_info vi;
  vorbis_info_init(&vi);
  if (vorbis_encode_init_vbr(&vi, o.channels, o.rate, o.quality) != 0) {
    fprintf(stderr, "mdjsong: the encoder refuses %d channels at %ld Hz\n", o.channels, o.rate);
    fclose(file);
    return 1;
  }
  vorbis_comment vc;
  vorbis_comment_init(&vc);
  vorbis_comment_add_tag(&vc, "ENCODER", "mdjsong");
  if (o.hasTag) vorbis_comment_add_tag(&vc, o.tagName.c_str(), o.tag.c_str());

  vorbis_dsp_state vd;
  vorbis_block vb;
  vorbis_analysis_init(&vd, &vi);
  vorbis_block_init(&vd, &vb);
  ogg_stream_state os;
  ogg_stream_init(&os, 0x6d646a31);  // a fixed serial keeps the output reproducible

  ogg_packet header, comment, codebooks;
  vorbis_analysis_headerout(&vd, &vc, &header, &comment, &codebooks);
  ogg_stream_packetin(&os, &header);
  ogg_stream_packetin(&os, &comment);
  ogg_stream_packetin(&os, &codebooks);
  ogg_page og;
  while (ogg_stream_flush(&os, &og) != 0) ok = ok && writer.page(og);

  auto drain = [&] {
    ogg_packet op;
    while (vorbis_analysis_blockout(&vd, &vb) == 1) {
      vorbis_analysis(&vb, nullptr);
      vorbis_bitrate_addblock(&vb);
      while (vorbis_bitrate_flushpacket(&vd, &op) == 1) {
        ogg_stream_packetin(&os, &op);
        while (ogg_stream_pageout(&os, &og) != 0) ok = ok && writer.page(og);
      }
    }
  };

  constexpr long kChunk = 1024;
  for (long at = 0; at < o.frames; at += kChunk) {
    long n = o.frames - at < kChunk ? o.frames - at : kChunk;
    float** buffer = vorbis_analysis_buffer(&vd, static_cast<int>(n));
    for (int c = 0; c < o.channels; ++c) {
      for (long i = 0; i < n; ++i) buffer[c][i] = sample(o, c, at + i);
    }
    vorbis_analysis_wrote(&vd, static_cast<int>(n));
    drain();
  }
  vorbis_analysis_wrote(&vd, 0);
  drain();
  while (ogg_stream_flush(&os, &og) != 0) ok = ok && writer.page(og);

  ogg_stream_clear(&os);
  vorbis_block_clear(&vb);
  vorbis_dsp_clear(&vd);
  vorbis_comment_clear(&vc);
  vorbis_info_clear(&vi);
  if (fclose(file) != 0) ok = false;
  if (!ok) {
    fprintf(stderr, "mdjsong: can't write %s\n", o.out.c_str());
    remove(o.out.c_str());
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  if (!parseArgs(argc, argv, &o)) return usage("bad arguments");
  return encode(o);
}
