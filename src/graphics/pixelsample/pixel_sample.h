#pragma once
// Pixel sample converters: each object reads and writes runs of pixels of one
// memory layout and turns them to and from the common 32-bit word, red in bits
// 31-24, green 23-16, blue 15-8, alpha 7-0. A conversion between two layouts is
// two samples and a row of common words between them.
//
// Narrow channels go to the top of their byte with zero low bits, wide ones
// keep their top byte: no rounding, no scaling, no bit replication. Several
// members have one-sided faults (noted below) that images depend on; they are
// kept exactly as they are.
#include <cstdint>
#include <memory>

namespace vostan {

class PixelSample {
 public:
  // Fills pixels[0 .. end - start) from pixels start .. end - 1 of the memory.
  virtual void getPixels(uint32_t* pixels, int32_t start, int32_t end) = 0;
  // Writes `count` pixels from index 0 of `memory`, which becomes this
  // sample's memory from now on. Wrapping samples may rewrite `pixels`.
  virtual void setPixels(uint32_t* pixels, void* memory, int32_t count) = 0;
  virtual int32_t getPixelSize() const = 0;
  // Samples are deleted through this interface, and wrappers own their inner
  // sample, so the destructor has to be virtual.
  virtual ~PixelSample() = default;
};

// Reads zeros and writes nothing: the stand-in for absent memory.
class NullPixelSample final : public PixelSample {
 public:
  explicit NullPixelSample(void* memory) : memory_(static_cast<uint8_t*>(memory)) {}
  void getPixels(uint32_t* pixels, int32_t start, int32_t end) override;
  void setPixels(uint32_t* pixels, void* memory, int32_t count) override;
  int32_t getPixelSize() const override { return 1; }
  uint8_t* memory() const { return memory_; }

 private:
  uint8_t* memory_;
};

// The per-pixel bit rules of each layout live in the implementation file.
namespace layout {
struct Byte1;
struct Bytes2;
struct Bytes3;
struct Bytes4;
struct Short1;
struct Shorts2;
struct Shorts3;
struct Shorts4;
struct Int1;
struct Ints2;
struct Ints3;
struct Ints4;
struct Byte332;
struct Byte233Rev;
struct Short565;
struct Short555;
struct Short565Rev;
struct Short4444;
struct Short4444Rev;
struct Short5551;
struct Short1555Rev;
struct Short1555;
struct Int8888;
struct Int8888Rev;
struct Int1010102;
struct Int2101010Rev;
struct BGRX8880;
}  // namespace layout

// A sample over one packed or plain memory layout.
template <class Layout>
class LayoutPixelSample final : public PixelSample {
 public:
  explicit LayoutPixelSample(void* memory) : memory_(static_cast<uint8_t*>(memory)) {}
  void getPixels(uint32_t* pixels, int32_t start, int32_t end) override;
  void setPixels(uint32_t* pixels, void* memory, int32_t count) override;
  int32_t getPixelSize() const override;
  uint8_t* memory() const { return memory_; }

 private:
  uint8_t* memory_;
};

// Plain layouts: 1 to 4 channels of bytes, shorts or 32-bit words.
using Byte1PixelSample = LayoutPixelSample<layout::Byte1>;
using Bytes2PixelSample = LayoutPixelSample<layout::Bytes2>;
using Bytes3PixelSample = LayoutPixelSample<layout::Bytes3>;
using Bytes4PixelSample = LayoutPixelSample<layout::Bytes4>;
using Short1PixelSample = LayoutPixelSample<layout::Short1>;
using Shorts2PixelSample = LayoutPixelSample<layout::Shorts2>;
using Shorts3PixelSample = LayoutPixelSample<layout::Shorts3>;
using Shorts4PixelSample = LayoutPixelSample<layout::Shorts4>;
using Int1PixelSample = LayoutPixelSample<layout::Int1>;
using Ints2PixelSample = LayoutPixelSample<layout::Ints2>;
using Ints3PixelSample = LayoutPixelSample<layout::Ints3>;
// Writes word 2 twice (blue, then alpha over it) and never word 3.
using Ints4PixelSample = LayoutPixelSample<layout::Ints4>;

// Packed layouts.
using Byte332PixelSample = LayoutPixelSample<layout::Byte332>;
using Byte233RevPixelSample = LayoutPixelSample<layout::Byte233Rev>;
using Short565PixelSample = LayoutPixelSample<layout::Short565>;
// Reads R at 14-10 but writes R at 15-11, G at 10-6, B at 5-1.
using Short555PixelSample = LayoutPixelSample<layout::Short555>;
// Reads green through the wrong mask: bits 14-9 land in 27-22, over red.
using Short565RevPixelSample = LayoutPixelSample<layout::Short565Rev>;
using Short4444PixelSample = LayoutPixelSample<layout::Short4444>;
using Short4444RevPixelSample = LayoutPixelSample<layout::Short4444Rev>;
using Short5551PixelSample = LayoutPixelSample<layout::Short5551>;
using Short1555RevPixelSample = LayoutPixelSample<layout::Short1555Rev>;
// Reads each colour channel one bit short (half its value), alpha 0 or 255,
// and indexes memory from 0 whatever `start` is, last pixel first.
using Short1555PixelSample = LayoutPixelSample<layout::Short1555>;
using Int8888PixelSample = LayoutPixelSample<layout::Int8888>;
using Int8888RevPixelSample = LayoutPixelSample<layout::Int8888Rev>;
// Reads green through the wrong mask: bits 17-10 land in 19-12.
using Int1010102PixelSample = LayoutPixelSample<layout::Int1010102>;
using Int2101010RevPixelSample = LayoutPixelSample<layout::Int2101010Rev>;
// X8R8G8B8 surfaces; reads last pixel first.
using BGRX8880PixelSample = LayoutPixelSample<layout::BGRX8880>;

// Sorts out the channels of a plain layout on top of an owned inner sample.
class ComponentsPixelSample : public PixelSample {
 public:
  // Picks the inner layout from a GL component type (byte, short or int, signed
  // or not) and a count of 1 to 4. Anything else leaves the inner sample null;
  // such a sample must not be used.
  ComponentsPixelSample(int32_t count, void* memory, int32_t type);
  // Wraps `inner` and owns it: how a packed layout gets its channels sorted.
  explicit ComponentsPixelSample(PixelSample* inner) : inner_(inner) {}
  // A sample passed with a type code would be taken for memory.
  ComponentsPixelSample(int32_t count, PixelSample* inner, int32_t type) = delete;

  int32_t getPixelSize() const override { return inner_->getPixelSize(); }
  PixelSample* inner() const { return inner_.get(); }

 protected:
  std::unique_ptr<PixelSample> inner_;
};

namespace channels {
struct RGBA;
struct BGRA;
struct ABGR;
struct RGB;
struct Red;
struct Green;
struct Blue;
struct Alpha;
struct Luminance;
struct LuminanceAlpha;
}  // namespace channels

// getPixels rewrites the row after the inner read, last word first; setPixels
// rewrites the caller's row in place, first word first, before the inner write.
template <class Channels>
class ChannelsPixelSample final : public ComponentsPixelSample {
 public:
  ChannelsPixelSample(void* memory, int32_t type);
  explicit ChannelsPixelSample(PixelSample* inner) : ComponentsPixelSample(inner) {}
  ChannelsPixelSample(PixelSample* inner, int32_t type) = delete;
  void getPixels(uint32_t* pixels, int32_t start, int32_t end) override;
  void setPixels(uint32_t* pixels, void* memory, int32_t count) override;
};

using RGBAPixelSample = ChannelsPixelSample<channels::RGBA>;
using BGRAPixelSample = ChannelsPixelSample<channels::BGRA>;
using ABGRPixelSample = ChannelsPixelSample<channels::ABGR>;
// Alpha reads as 255 and is lost on writing.
using RGBPixelSample = ChannelsPixelSample<channels::RGB>;
// One channel: (r, 0, 0, 255), (0, g, 0, 255), (0, 0, b, 255), (255, 255, 255, a).
using RedPixelSample = ChannelsPixelSample<channels::Red>;
using GreenPixelSample = ChannelsPixelSample<channels::Green>;
using BluePixelSample = ChannelsPixelSample<channels::Blue>;
using AlphaPixelSample = ChannelsPixelSample<channels::Alpha>;
// Reads (l, l, l, 255); writes (r + g + b) / 3, truncated.
using LuminancePixelSample = ChannelsPixelSample<channels::Luminance>;
using LuminanceAlphaPixelSample = ChannelsPixelSample<channels::LuminanceAlpha>;

}  // namespace vostan
