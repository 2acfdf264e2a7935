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
  auto& bytes = this->bytes();
  const auto size = static_cast<GLsizeiptr>(bytes.size());
  // The default pool holds what is written again and again.
  BufferDesc desc;
  this->getDesc(desc);
  const GLenum usage = desc.pool == POOL_DEFAULT ? GL_STREAM_DRAW : GL_STATIC_DRAW;
  if (!allocated_ || (dirtyFrom_ == 0 && dirtyTo_ == bytes.size())) {
    glBufferData(target, size, bytes.data(), usage);
    allocated_ = true;
  } else if (dirtyTo_ > dirtyFrom_) {
    glBufferSubData(target, dirtyFrom_, dirtyTo_ - dirtyFrom_, bytes.data() + dirtyFrom_);
  }
  dirtyFrom_ = UINT32_MAX, dirtyTo_ = 0;
}

template class GLBuffer<VertexBuffer>;
template class GLBuffer<IndexBuffer>;

}  // namespace vostan::gfx
