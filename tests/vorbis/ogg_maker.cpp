#include "ogg_maker.h"

#include <vorbis/vorbisenc.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace vostan::test {

float toneSample(int channel, int64_t frame, long rate, float amplitude) {
  const double hz = 440.0 * (channel + 2) / 2.0;
  return static_cast<float>(amplitude *
                            std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(frame) /
                                     static_cast<double>(rate)));
}

namespace {

void append(std::vector<unsigned char>& out, const ogg_page& page) {
  out.insert(out.end(), page.header, page.header + page.header_len);
  out.insert(out.end(), page.body, page.body + page.body_len);
}

}  // namespace

std::vector<unsigned char> makeToneOgg(const ToneOgg& tone) {
  vorbis_info vi;
  vorbis_info_init(&vi);
  if (vorbis_encode_init_vbr(&vi, tone.channels, tone.rate, tone.quality) != 0)
    throw std::runtime_error("vorbis_encode_init_vbr");
  vorbis_comment vc;
  vorbis_comment_init(&vc);
  vorbis_dsp_state vd;
  vorbis_block vb;
  vorbis_analysis_init(&vd, &vi);
  vorbis_block_init(&vd, &vb);
  ogg_stream_state os;
  ogg_stream_init(&os, 1234);

  std::vector<unsigned char> out;
  ogg_packet header, comments, codebooks;
  vorbis_analysis_headerout(&vd, &vc, &header, &comments, &codebooks);
  ogg_stream_packetin(&os, &header);
  ogg_stream_packetin(&os, &comments);
  ogg_stream_packetin(&os, &codebooks);
  ogg_page page;
  while (ogg_stream_flush(&os, &page)) append(out, page);

  constexpr int64_t kChunk = 1024;
  int64_t frame = 0;
  bool eos = false;
  while (!eos) {
    const int64_t n = std::min(kChunk, tone.frames - frame);
    if (n > 0) {
      float** buffer = vorbis_analysis_buffer(&vd, static_cast<int>(n));
      for (int c = 0; c < tone.channels; ++c)
        for (int64_t i = 0; i < n; ++i)
          buffer[c][i] = toneSample(c, frame + i, tone.rate, tone.amplitude);
      vorbis_analysis_wrote(&vd, static_cast<int>(n));
      frame += n;
    } else {
      vorbis_analysis_wrote(&vd, 0);
    }
    while (vorbis_analysis_blockout(&vd, &vb) == 1) {
      vorbis_analysis(&vb, nullptr);
      vorbis_bitrate_addblock(&vb);
      ogg_packet packet;
      while (vorbis_bitrate_flushpacket(&vd, &packet)) {
        ogg_stream_packetin(&os, &packet);
        while (ogg_stream_pageout(&os, &page)) {
          append(out, page);
          if (ogg_page_eos(&page)) eos = true;
        }
      }
    }
  }
  ogg_stream_clear(&os);
  vorbis_block_clear(&vb);
  vorbis_dsp_clear(&vd);
  vorbis_comment_clear(&vc);
  vorbis_info_clear(&vi);
  return out;
}

}  // namespace vostan::test
