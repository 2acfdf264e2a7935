// Test and benchmark helpers for the JVM, in the GL context that the graphics
// device made current on the calling thread: pixels of the back buffer, a
// PNG of it, and the plain-GL counterpart of immediate-mode quads.
#include <SDL.h>
#include <jni.h>
#include <png.h>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <chrono>
#include <vector>

namespace {

bool drawableSize(int& w, int& h) {
  SDL_Window* window = SDL_GL_GetCurrentWindow();
  if (!window) return false;
  SDL_GL_GetDrawableSize(window, &w, &h);
  return true;
}

GLuint compile(GLenum stage, const char* text) {
  GLuint s = glCreateShader(stage);
  glShaderSource(s, 1, &text, nullptr);
  glCompileShader(s);
  return s;
}

}  // namespace

// 0xAARRGGBB of the pixel at x from the left, y from the top; 0 without a context.
extern "C" JNIEXPORT jint JNICALL Java_vostan_test_GfxHooks_pixel(JNIEnv*, jclass, jint x, jint y) {
  int w, h;
  if (!drawableSize(w, h)) return 0;
  uint8_t bgra[4] = {};
  glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  glReadPixels(x, h - 1 - y, 1, 1, GL_BGRA, GL_UNSIGNED_BYTE, bgra);
  return static_cast<jint>(uint32_t{bgra[3]} << 24 | uint32_t{bgra[2]} << 16 |
                           uint32_t{bgra[1]} << 8 | bgra[0]);
}

extern "C" JNIEXPORT jboolean JNICALL Java_vostan_test_GfxHooks_writePng(JNIEnv* env, jclass,
                                                                         jstring path) {
  int w, h;
  if (!drawableSize(w, h)) return JNI_FALSE;
  std::vector<uint8_t> rgb(static_cast<std::size_t>(w) * h * 3);
  glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, w, h, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
  const char* p = env->GetStringUTFChars(path, nullptr);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(w);
  image.height = static_cast<png_uint_32>(h);
  image.format = PNG_FORMAT_RGB;
  // GL's rows run bottom up; a negative stride tells libpng so.
  const bool ok = png_image_write_to_file(&image, p, 0, rgb.data(), -w * 3, nullptr) != 0;
  env->ReleaseStringUTFChars(path, p);
  return ok ? JNI_TRUE : JNI_FALSE;
}

// Draws `count` textured quads the way a plain GL program would, one draw of
// two triangles each from client memory, and gives the nanoseconds it took.
extern "C" JNIEXPORT jlong JNICALL Java_vostan_test_GfxHooks_plainQuads(JNIEnv*, jclass,
                                                                        jint count) {
  static GLuint program = 0, vao = 0, vbo = 0;
  if (!program) {
    const GLuint v = compile(GL_VERTEX_SHADER,
                             "#version 330 core\n"
                             "layout(location = 0) in vec4 p; layout(location = 1) in vec4 c;\n"
                             "layout(location = 2) in vec2 uv; uniform mat4 m;\n"
                             "out vec4 vc; out vec2 vuv;\n"
                             "void main() { gl_Position = m * p; vc = c; vuv = uv; }\n");
    const GLuint f = compile(GL_FRAGMENT_SHADER,
                             "#version 330 core\nin vec4 vc; in vec2 vuv; out vec4 o;\n"
                             "void main() { o = vc; }\n");
    program = glCreateProgram();
    glAttachShader(program, v);
    glAttachShader(program, f);
    glLinkProgram(program);
    glDeleteShader(v);
    glDeleteShader(f);
    glGenVertexArrays(1, &vao);
    glGenBuffers(1, &vbo);
  }
  struct Vertex {
    float x, y, z;
    uint32_t color;
    float u, v;
  };
  const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  const auto start = std::chrono::steady_clock::now();
  glUseProgram(program);
  glUniformMatrix4fv(glGetUniformLocation(program, "m"), 1, GL_FALSE, identity);
  glBindVertexArray(vao);
  glBindBuffer(GL_ARRAY_BUFFER, vbo);
  glEnableVertexAttribArray(0);
  glEnableVertexAttribArray(1);
  glEnableVertexAttribArray(2);
  Vertex quad[6];
  for (jint i = 0; i < count; ++i) {
    const float x = static_cast<float>(i % 16) / 16.0f, y = static_cast<float>(i % 9) / 9.0f;
    const Vertex a{x, y, 0, 0xFFFFFFFFu, 0, 0}, b{x + 0.1f, y, 0, 0xFFFFFFFFu, 1, 0},
        c{x + 0.1f, y + 0.1f, 0, 0xFFFFFFFFu, 1, 1}, d{x, y + 0.1f, 0, 0xFFFFFFFFu, 0, 1};
    quad[0] = a, quad[1] = b, quad[2] = c, quad[3] = a, quad[4] = c, quad[5] = d;
    glBufferData(GL_ARRAY_BUFFER, sizeof quad, quad, GL_STREAM_DRAW);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Vertex), nullptr);
    glVertexAttribPointer(1, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, sizeof(Vertex),
                          reinterpret_cast<void*>(12));
    glVertexAttribPointer(2, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), reinterpret_cast<void*>(16));
    glDrawArrays(GL_TRIANGLES, 0, 6);
  }
  glFinish();
  const auto end = std::chrono::steady_clock::now();
  glUseProgram(0);
  return std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count();
}
