#pragma once
// Vertex and index buffers of the OpenGL backend: the bytes live in system
// memory, where a lock hands them out, and go to a GL buffer object at the
// first draw after an unlock.
#include "platform/gfx/gl_texture.h"
#include "platform/gfx/memory_objects.h"

namespace vostan::gfx {

template <class Base>
class GLBuffer : public MemoryBuffer<Base> {
 public:
  GLBuffer(const BufferDesc& desc, const GLContextRef& context)
      : MemoryBuffer<Base>(desc), context_(context) {}
  HRESULT unlock() override {
    stale_ = true;
    return OK;
  }
  // Binds the buffer object to `target` with the bytes of the last unlock;
  // the context must be current.
  void bind(uint32_t target);
  uint32_t name() const { return name_; }

 protected:
  ~GLBuffer() override;

 private:
  GLContextRef context_;
  uint32_t name_ = 0;
  bool stale_ = true;
};

using GLVertexBuffer = GLBuffer<VertexBuffer>;
using GLIndexBuffer = GLBuffer<IndexBuffer>;

}  // namespace vostan::gfx
