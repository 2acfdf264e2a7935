// Natives of the demo's QuadScene, in the demo's own library: a game does not
// ship them. The picture is read with plain GL from the context the engine made
// current on this thread, so nothing of the engine's internals is needed.
#include <SDL.h>
#include <jni.h>
#include <png.h>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

// The default framebuffer's back buffer as RGB rows, top row first.
bool readBackBuffer(std::vector<png_byte>& rgb, int& width, int& height) {
  SDL_Window* window = SDL_GL_GetCurrentWindow();
  if (!window) return false;
  SDL_GL_GetDrawableSize(window, &width, &height);
  if (width <= 0 || height <= 0) return false;
  // The engine's bindings and pack state stay as they were.
  GLint readFramebuffer = 0, packBuffer = 0, packAlignment = 4, readBuffer = GL_BACK;
  glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readFramebuffer);
  glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &packBuffer);
  glGetIntegerv(GL_PACK_ALIGNMENT, &packAlignment);
  glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  glGetIntegerv(GL_READ_BUFFER, &readBuffer);
  glReadBuffer(GL_BACK);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  const std::size_t row = std::size_t(width) * 3;
  std::vector<png_byte> bottomUp(row * std::size_t(height));
  glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, bottomUp.data());
  const bool ok = glGetError() == GL_NO_ERROR;
  glPixelStorei(GL_PACK_ALIGNMENT, packAlignment);
  glBindBuffer(GL_PIXEL_PACK_BUFFER, GLuint(packBuffer));
  glReadBuffer(GLenum(readBuffer));
  glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(readFramebuffer));
  rgb.resize(bottomUp.size());
  for (int y = 0; y < height; ++y) {
    const png_byte* from = &bottomUp[std::size_t(height - 1 - y) * row];
    std::copy(from, from + row, &rgb[std::size_t(y) * row]);
  }
  return ok;
}

}  // namespace

extern "C" JNIEXPORT jboolean JNICALL Java_vostan_demo_QuadScene_writeFramePng(JNIEnv* env, jclass,
                                                                               jstring path) {
  if (!path) return JNI_FALSE;
  std::vector<png_byte> rgb;
  int width = 0, height = 0;
  if (!readBackBuffer(rgb, width, height)) return JNI_FALSE;
  const char* p = env->GetStringUTFChars(path, nullptr);
  if (!p) return JNI_FALSE;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = png_uint_32(width);
  image.height = png_uint_32(height);
  image.format = PNG_FORMAT_RGB;
  const bool ok = png_image_write_to_file(&image, p, 0, rgb.data(), 0, nullptr) != 0;
  env->ReleaseStringUTFChars(path, p);
  return ok ? JNI_TRUE : JNI_FALSE;
}
