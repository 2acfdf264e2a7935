#pragma once
// Vertex and index buffers of the OpenGL backend: the bytes live in system
// memory, where a lock hands them out, and go to a GL buffer object at the
// first draw after an unlock: all of them the first time, afterwards only the
// range the locks since the last upload could have changed.
#include <algorithm>

#include "platform/gfx/gl_texture.h"
#include "platform/gfx/memory_objects.h"

namespace vostan::gfx {

template <class Base>
class GLBuffer : public MemoryBuffer<Base> {
 public:
  GLBuffer(const BufferDesc& desc, const GLContextRef& context)
      : MemoryBuffer<Base>(desc), context_(context) {}
  HRESULT lock(uint32_t offset, uint32_t size, void** out, uint32_t flags) override {
    const HRESULT hr = MemoryBuffer<Base>::lock(offset, size, out, flags);
    if (!failed(hr) && !(flags & LOCK_READONLY)) {
      // Size 0 locks the rest of the buffer.
      const auto total = static_cast<uint32_t>(this->bytes().size());
      const uint32_t end = size && size <= total - offset ? offset + size : total;
      dirtyFrom_ = std::min(dirtyFrom_, offset);
      dirtyTo_ = std::max(dirtyTo_, end);
    }
    return hr;
  }
  HRESULT unlock() override { return OK; }
  // Binds the buffer object to `target` with the bytes of the last unlock;
  // the context must be current.
  void bind(uint32_t target);
  uint32_t name() const { return name_; }

 protected:
  ~GLBuffer() override;

 private:
  GLContextRef context_;
  uint32_t name_ = 0;
  bool allocated_ = false;
  uint32_t dirtyFrom_ = UINT32_MAX, dirtyTo_ = 0;
};

using GLVertexBuffer = GLBuffer<VertexBuffer>;
using GLIndexBuffer = GLBuffer<IndexBuffer>;

}  // namespace vostan::gfx
