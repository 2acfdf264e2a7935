#pragma once
// A picture of a device's back buffer as it stands, for the demo and tests.
#include "platform/gfx/gfx.h"

namespace vostan::gfx {

// Reads back buffer 0 through the device and writes it as an RGB PNG.
bool writeBackBufferPng(Device& device, const char* path);

}  // namespace vostan::gfx
