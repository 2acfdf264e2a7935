#include "plain_quads.h"

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

#include <chrono>

namespace vostan::test {

namespace {

GLuint compile(GLenum stage, const char* text) {
  GLuint s = glCreateShader(stage);
  glShaderSource(s, 1, &text, nullptr);
  glCompileShader(s);
  return s;
}

// Position, colour and texture coordinates through a matrix; the colour out.
GLuint plainProgram() {
  static GLuint program = 0;
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
  }
  return program;
}

}  // namespace

int64_t plainQuads(int count) {
  static GLuint vao = 0, vbo = 0;
  const GLuint program = plainProgram();
  if (!vao) {
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
  GLint previous = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &previous);
  glUseProgram(program);
  glUniformMatrix4fv(glGetUniformLocation(program, "m"), 1, GL_FALSE, identity);
  glBindVertexArray(vao);
  glBindBuffer(GL_ARRAY_BUFFER, vbo);
  glEnableVertexAttribArray(0);
  glEnableVertexAttribArray(1);
  glEnableVertexAttribArray(2);
  Vertex quad[6];
  for (int i = 0; i < count; ++i) {
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
  // The device keeps its program bound between draws; give it back.
  glUseProgram(static_cast<GLuint>(previous));
  return std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count();
}

int64_t plainIndexed(const float* positions, const uint32_t* colours, int vertexCount,
                     const uint16_t* indices, int indexCount, int draws, bool resident) {
  const GLuint program = plainProgram();
  GLuint vao = 0, buffers[3] = {};
  glGenVertexArrays(1, &vao);
  glGenBuffers(3, buffers);
  GLint previous = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &previous);
  glUseProgram(program);
  const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  glUniformMatrix4fv(glGetUniformLocation(program, "m"), 1, GL_FALSE, identity);
  glBindVertexArray(vao);
  glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
  glBufferData(GL_ARRAY_BUFFER, vertexCount * 12, positions, GL_STATIC_DRAW);
  glEnableVertexAttribArray(0);
  glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 12, nullptr);
  glBindBuffer(GL_ARRAY_BUFFER, buffers[1]);
  glBufferData(GL_ARRAY_BUFFER, vertexCount * 4, colours, GL_STATIC_DRAW);
  glEnableVertexAttribArray(1);
  glVertexAttribPointer(1, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, 4, nullptr);
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[2]);
  const GLsizeiptr bytes = static_cast<GLsizeiptr>(indexCount) * 2;
  glBufferData(GL_ELEMENT_ARRAY_BUFFER, bytes, indices, GL_STATIC_DRAW);
  glFinish();  // the one-time uploads are not timed
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < draws; ++i) {
    if (!resident) glBufferData(GL_ELEMENT_ARRAY_BUFFER, bytes, indices, GL_STREAM_DRAW);
    glDrawElements(GL_TRIANGLES, indexCount, GL_UNSIGNED_SHORT, nullptr);
  }
  glFinish();
  const auto end = std::chrono::steady_clock::now();
  glBindVertexArray(0);
  glDeleteBuffers(3, buffers);
  glDeleteVertexArrays(1, &vao);
  glUseProgram(static_cast<GLuint>(previous));
  return std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count();
}

}  // namespace vostan::test
