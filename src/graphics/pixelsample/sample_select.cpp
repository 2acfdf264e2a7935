#include "graphics/pixelsample/sample_select.h"

namespace vostan {
namespace {

// Packed GL types have a layout sample of their own; null for the rest.
PixelSample* packedLayout(int32_t type, void* pixels) {
  switch (type) {
    case gl::kUnsignedByte332:
      return new Byte332PixelSample(pixels);
    case gl::kUnsignedShort4444:
      return new Short4444PixelSample(pixels);
    case gl::kUnsignedShort5551:
      return new Short5551PixelSample(pixels);
    case gl::kUnsignedInt8888:
      return new Int8888PixelSample(pixels);
    case gl::kUnsignedInt1010102:
      return new Int1010102PixelSample(pixels);
    case gl::kUnsignedByte233Rev:
      return new Byte233RevPixelSample(pixels);
    case gl::kUnsignedShort565:
      return new Short565PixelSample(pixels);
    case gl::kUnsignedShort565Rev:
      return new Short565RevPixelSample(pixels);
    case gl::kUnsignedShort4444Rev:
      return new Short4444RevPixelSample(pixels);
    case gl::kUnsignedShort1555Rev:
      return new Short1555RevPixelSample(pixels);
    case gl::kUnsignedInt8888Rev:
      return new Int8888RevPixelSample(pixels);
    case gl::kUnsignedInt2101010Rev:
      return new Int2101010RevPixelSample(pixels);
  }
  return nullptr;
}

// Builds channel sample S over `inner` when there is one, else over plain memory.
template <class S>
std::unique_ptr<PixelSample> channelsOver(std::unique_ptr<PixelSample>& inner, void* pixels,
                                          int32_t type) {
  if (inner) return std::make_unique<S>(inner.release());
  return std::make_unique<S>(pixels, type);
}

}  // namespace

std::unique_ptr<PixelSample> sampleForSurface(int32_t format, void* bits) {
  if (!bits) return std::make_unique<NullPixelSample>(bits);
  switch (format) {
    case d3dfmt::kR8G8B8:
      return std::make_unique<RGBPixelSample>(bits, gl::kUnsignedByte);
    case d3dfmt::kA8R8G8B8:
      return std::make_unique<BGRAPixelSample>(new Int8888RevPixelSample(bits));
    case d3dfmt::kX8R8G8B8:
      return std::make_unique<BGRX8880PixelSample>(bits);
    case d3dfmt::kR5G6B5:
      return std::make_unique<RGBPixelSample>(new Short565PixelSample(bits));
    case d3dfmt::kX1R5G5B5:
      return std::make_unique<RGBPixelSample>(new Short555PixelSample(bits));
    case d3dfmt::kA1R5G5B5:
      return std::make_unique<RGBAPixelSample>(new Short1555PixelSample(bits));
    case d3dfmt::kA4R4G4B4:
      return std::make_unique<RGBAPixelSample>(new Short4444PixelSample(bits));
    case d3dfmt::kA8:
      return std::make_unique<AlphaPixelSample>(bits, gl::kUnsignedByte);
    case d3dfmt::kL8:
      return std::make_unique<LuminancePixelSample>(bits, gl::kUnsignedByte);
    case d3dfmt::kA8L8:
      return std::make_unique<LuminanceAlphaPixelSample>(bits, gl::kUnsignedByte);
    case d3dfmt::kR16F:
      // The half-float bits are taken as an unsigned short, top byte only.
      return std::make_unique<LuminancePixelSample>(bits, gl::kUnsignedShort);
  }
  return nullptr;
}

std::unique_ptr<PixelSample> sampleForMemory(int32_t format, int32_t type, void* pixels) {
  if (!pixels) return std::make_unique<NullPixelSample>(pixels);
  std::unique_ptr<PixelSample> inner(packedLayout(type, pixels));
  // A type that is neither packed nor a component type would leave the
  // component sample with no inner layout: no sample, so nothing is moved.
  if (!inner && (type < gl::kByte || type > gl::kUnsignedInt)) return nullptr;
  switch (format) {
    case gl::kColorIndex:
    case gl::kStencilIndex:
    case gl::kDepthComponent:
    case gl::kLuminance:
      return channelsOver<LuminancePixelSample>(inner, pixels, type);
    case gl::kRed:
      return channelsOver<RedPixelSample>(inner, pixels, type);
    case gl::kGreen:
      return channelsOver<GreenPixelSample>(inner, pixels, type);
    case gl::kBlue:
      return channelsOver<BluePixelSample>(inner, pixels, type);
    case gl::kAlpha:
      return channelsOver<AlphaPixelSample>(inner, pixels, type);
    case gl::kRgb:
      return channelsOver<RGBPixelSample>(inner, pixels, type);
    case gl::kRgba:
      return channelsOver<RGBAPixelSample>(inner, pixels, type);
    case gl::kLuminanceAlpha:
      return channelsOver<LuminanceAlphaPixelSample>(inner, pixels, type);
    case gl::kAbgrExt:
      return channelsOver<ABGRPixelSample>(inner, pixels, type);
    case gl::kBgra:
      return channelsOver<BGRAPixelSample>(inner, pixels, type);
  }
  return nullptr;
}

}  // namespace vostan
