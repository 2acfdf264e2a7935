#include "platform/gfx/gl_buffer.h"

#define GL_GLEXT_PROTOTYPES 1
#include <GL/glcorearb.h>

namespace vostan::gfx {

template <class Base>
GLBuffer<Base>::~GLBuffer() {
  if (!name_) return;
  context_.makeCurrent();
  glDeleteBuffers(1, &name_);
}

template <class Base>
void GLBuffer<Base>::bind(uint32_t target) {
  if (!name_) glGenBuffers(1, &name_);
  glBindBuffer(target, name_);
  if (!stale_) return;
  stale_ = false;
  auto& bytes = this->bytes();
  glBufferData(target, static_cast<GLsizeiptr>(bytes.size()), bytes.data(), GL_STATIC_DRAW);
}

template class GLBuffer<VertexBuffer>;
template class GLBuffer<IndexBuffer>;

}  // namespace vostan::gfx
