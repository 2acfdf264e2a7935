#pragma once
// Picks the pixel samples for a texture transfer: one over locked surface
// memory by Direct3D format, one over caller memory by GL format and type.
#include <cstdint>
#include <memory>

#include "graphics/pixelsample/pixel_sample.h"

namespace vostan {

// The GL enumerants the selection knows.
namespace gl {
inline constexpr int32_t kByte = 5120;
inline constexpr int32_t kUnsignedByte = 5121;
inline constexpr int32_t kShort = 5122;
inline constexpr int32_t kUnsignedShort = 5123;
inline constexpr int32_t kInt = 5124;
inline constexpr int32_t kUnsignedInt = 5125;
inline constexpr int32_t kUnsignedByte332 = 32818;
inline constexpr int32_t kUnsignedShort4444 = 32819;
inline constexpr int32_t kUnsignedShort5551 = 32820;
inline constexpr int32_t kUnsignedInt8888 = 32821;
inline constexpr int32_t kUnsignedInt1010102 = 32822;
inline constexpr int32_t kUnsignedByte233Rev = 33634;
inline constexpr int32_t kUnsignedShort565 = 33635;
inline constexpr int32_t kUnsignedShort565Rev = 33636;
inline constexpr int32_t kUnsignedShort4444Rev = 33637;
inline constexpr int32_t kUnsignedShort1555Rev = 33638;
inline constexpr int32_t kUnsignedInt8888Rev = 33639;
inline constexpr int32_t kUnsignedInt2101010Rev = 33640;

inline constexpr int32_t kColorIndex = 6400;
inline constexpr int32_t kStencilIndex = 6401;
inline constexpr int32_t kDepthComponent = 6402;
inline constexpr int32_t kRed = 6403;
inline constexpr int32_t kGreen = 6404;
inline constexpr int32_t kBlue = 6405;
inline constexpr int32_t kAlpha = 6406;
inline constexpr int32_t kRgb = 6407;
inline constexpr int32_t kRgba = 6408;
inline constexpr int32_t kLuminance = 6409;
inline constexpr int32_t kLuminanceAlpha = 6410;
inline constexpr int32_t kAbgrExt = 32768;
inline constexpr int32_t kBgra = 32993;
}  // namespace gl

// The Direct3D surface formats that have a sample.
namespace d3dfmt {
inline constexpr int32_t kR8G8B8 = 20;
inline constexpr int32_t kA8R8G8B8 = 21;
inline constexpr int32_t kX8R8G8B8 = 22;
inline constexpr int32_t kR5G6B5 = 23;
inline constexpr int32_t kX1R5G5B5 = 24;
inline constexpr int32_t kA1R5G5B5 = 25;
inline constexpr int32_t kA4R4G4B4 = 26;
inline constexpr int32_t kA8 = 28;
inline constexpr int32_t kL8 = 50;
inline constexpr int32_t kA8L8 = 51;
inline constexpr int32_t kR16F = 111;
}  // namespace d3dfmt

// The sample over locked memory of a surface format; NullPixelSample for null
// bits, null for a format without a sample.
std::unique_ptr<PixelSample> sampleForSurface(int32_t format, void* bits);

// The sample over caller memory of a GL format and type; NullPixelSample for
// null pixels, null for a format (or packed type) without a sample.
std::unique_ptr<PixelSample> sampleForMemory(int32_t format, int32_t type, void* pixels);

}  // namespace vostan
