#include "graphics/gl_array.h"

#include <cstring>
#include <memory>
#include <new>

#include "platform/low_memory.h"

namespace vostan {

using namespace gfx;

namespace {

uint32_t fvfOf(int32_t kind) {
  switch (kind) {
    case arraykind::kVertex:
    case arraykind::kWeight:  // weights travel as positions would
      return FVF_XYZ;
    case arraykind::kNormal:
      return FVF_NORMAL;
    case arraykind::kColor:
      return FVF_DIFFUSE;
    case arraykind::kTexCoord:
      return FVF_TEX1;
    default:
      return 0;
  }
}

uint16_t highestIndex(const uint8_t* bytes, uint32_t size) {
  uint16_t top = 0;
  for (uint32_t i = 0; i + 1 < size; i += 2) {
    uint16_t v;
    std::memcpy(&v, bytes + i, 2);
    if (v > top) top = v;
  }
  return top;
}

}  // namespace

bool GLArrayRecord::init(int32_t newKind, int32_t newSize, const void* data) {
  const uint32_t bytes = static_cast<uint32_t>(newSize);
  uint8_t* copy = nullptr;
  if (data) {
    copy = new (std::nothrow) uint8_t[bytes ? bytes : 1];
    if (!copy) return false;
    std::memcpy(copy, data, bytes);
  }
  kind = newKind;
  capacity = newSize;
  vertexDesc = BufferDesc{FMT_UNKNOWN, 0, POOL_MANAGED, bytes, fvfOf(newKind)};
  indexDesc = BufferDesc{FMT_INDEX16, 0, POOL_MANAGED, bytes, 0};
  systemCopy = copy;
  live = true;
  maxIndex = 0;
  if (isIndex()) rescanIndices();
  return true;
}

bool GLArrayRecord::holds(int64_t offset, int64_t count) const {
  return offset >= 0 && count >= 0 && offset + count <= static_cast<int64_t>(size());
}

VertexBuffer* GLArrayRecord::vertexBufferOf(Device* device) {
  if (!vertexBuffer) load(device);
  return vertexBuffer;
}

IndexBuffer* GLArrayRecord::indexBufferOf(Device* device) {
  if (!indexBuffer) load(device);
  return indexBuffer;
}

void GLArrayRecord::load(Device* device) {
  void* bits = nullptr;
  if (!isIndex()) {
    device->createVertexBuffer(vertexDesc.size, vertexDesc.usage, vertexDesc.fvf, vertexDesc.pool,
                               &vertexBuffer);
    if (!vertexBuffer || !systemCopy) return;
    if (!failed(vertexBuffer->lock(0, vertexDesc.size, &bits, 0))) {
      std::memcpy(bits, systemCopy, vertexDesc.size);
      vertexBuffer->unlock();
    }
  } else {
    device->createIndexBuffer(indexDesc.size, indexDesc.usage, FMT_INDEX16, indexDesc.pool,
                              &indexBuffer);
    if (!indexBuffer || !systemCopy) return;
    if (!failed(indexBuffer->lock(0, indexDesc.size, &bits, 0))) {
      std::memcpy(bits, systemCopy, indexDesc.size);
      indexBuffer->unlock();
    }
  }
  delete[] systemCopy;
  systemCopy = nullptr;
}

void GLArrayRecord::write(const void* source, uint32_t offset, uint32_t count) {
  void* bits = nullptr;
  if (vertexBuffer) {
    // A whole rewrite tells the device the old contents may go.
    const uint32_t flags = offset == 0 && count == vertexDesc.size ? LOCK_DISCARD : 0;
    if (failed(vertexBuffer->lock(offset, count, &bits, flags))) return;
    std::memcpy(bits, source, count);
    vertexBuffer->unlock();
  } else if (indexBuffer) {
    if (failed(indexBuffer->lock(offset, count, &bits, 0))) return;
    std::memcpy(bits, source, count);
    indexBuffer->unlock();
  } else if (systemCopy) {
    std::memcpy(systemCopy + offset, source, count);
  } else {
    return;
  }
  if (isIndex()) rescanIndices();
}

void GLArrayRecord::read(void* destination, uint32_t offset, uint32_t count) {
  void* bits = nullptr;
  if (vertexBuffer) {
    if (failed(vertexBuffer->lock(offset, count, &bits, LOCK_READONLY))) return;
    std::memcpy(destination, bits, count);
    vertexBuffer->unlock();
  } else if (indexBuffer) {
    if (failed(indexBuffer->lock(offset, count, &bits, LOCK_READONLY))) return;
    std::memcpy(destination, bits, count);
    indexBuffer->unlock();
  } else if (systemCopy) {
    std::memcpy(destination, systemCopy + offset, count);
  }
}

void GLArrayRecord::unload() {
  // The buffers go with the device; their bytes stay for the next one.
  auto keep = [this](auto* buffer, uint32_t size) {
    void* bits = nullptr;
    auto* copy = new (std::nothrow) uint8_t[size ? size : 1];
    if (copy && !failed(buffer->lock(0, size, &bits, LOCK_READONLY))) {
      std::memcpy(copy, bits, size);
      buffer->unlock();
      delete[] systemCopy;
      systemCopy = copy;
    } else {
      delete[] copy;
    }
  };
  if (vertexBuffer) {
    if (vertexDesc.pool != POOL_DEFAULT) keep(vertexBuffer, vertexDesc.size);
    releaseAndNull(vertexBuffer);
  }
  if (indexBuffer) {
    keep(indexBuffer, indexDesc.size);
    releaseAndNull(indexBuffer);
  }
}

void GLArrayRecord::dispose() {
  releaseAndNull(vertexBuffer);
  releaseAndNull(indexBuffer);
  delete[] systemCopy;
  systemCopy = nullptr;
  vertexDesc.size = 0;
  indexDesc.size = 0;
  maxIndex = 0;
}

void GLArrayRecord::rescanIndices() {
  void* bits = nullptr;
  if (systemCopy) {
    maxIndex = highestIndex(systemCopy, indexDesc.size);
  } else if (indexBuffer && !failed(indexBuffer->lock(0, indexDesc.size, &bits, LOCK_READONLY))) {
    maxIndex = highestIndex(static_cast<const uint8_t*>(bits), indexDesc.size);
    indexBuffer->unlock();
  }
}

bool copyBetweenRecords(GLArrayRecord* from, int32_t fromOffset, GLArrayRecord* to,
                        int32_t toOffset, int32_t size) {
  if (!from || !to || size <= 0 || !from->holds(fromOffset, size) || !to->holds(toOffset, size))
    return false;
  std::unique_ptr<uint8_t[]> block(new uint8_t[static_cast<uint32_t>(size)]());
  from->read(block.get(), static_cast<uint32_t>(fromOffset), static_cast<uint32_t>(size));
  to->write(block.get(), static_cast<uint32_t>(toOffset), static_cast<uint32_t>(size));
  return true;
}

namespace {

bool insideMemory(const uint8_t* memory, int64_t bytes, int64_t offset, int64_t size) {
  return memory && offset >= 0 && size > 0 && offset + size <= bytes;
}

}  // namespace

bool copyRecordToMemory(GLArrayRecord* from, int32_t fromOffset, uint8_t* memory,
                        int64_t memoryBytes, int32_t memoryOffset, int32_t size) {
  if (!from || !from->holds(fromOffset, size) ||
      !insideMemory(memory, memoryBytes, memoryOffset, size))
    return false;
  from->read(memory + memoryOffset, static_cast<uint32_t>(fromOffset), static_cast<uint32_t>(size));
  return true;
}

bool copyMemoryToRecord(const uint8_t* memory, int64_t memoryBytes, int32_t memoryOffset,
                        GLArrayRecord* to, int32_t toOffset, int32_t size) {
  if (!to || !to->holds(toOffset, size) || !insideMemory(memory, memoryBytes, memoryOffset, size))
    return false;
  to->write(memory + memoryOffset, static_cast<uint32_t>(toOffset), static_cast<uint32_t>(size));
  return true;
}

// ---- the table

GLArrayTable::GLArrayTable()
    : records_(static_cast<GLArrayRecord*>(
          platform::lowAlloc(sizeof(GLArrayRecord) * kMaxArrays, alignof(GLArrayRecord)))),
      free_(new GLArrayRecord*[kMaxArrays]) {
  for (int i = 0; i < kMaxArrays; ++i) new (&records_[i]) GLArrayRecord();
  pending_.reserve(200);
}

GLArrayTable::~GLArrayTable() {
  for (int i = 0; i < count_; ++i) records_[i].dispose();
  delete[] free_;
}

GLArrayRecord* GLArrayTable::allocate() {
  if (freeCount_ > 0) return free_[--freeCount_];
  if (count_ >= kMaxArrays) return nullptr;
  return &records_[count_++];
}

GLArrayRecord* GLArrayTable::create(int32_t kind, int32_t size, bool withData, const void* data,
                                    int64_t dataBytes) {
  if (size < 0 || size > kMaxBytes || (data && dataBytes < size)) return nullptr;
  // Made with data near the table's end, a record first makes room.
  if (withData) compactIfCrowded();
  GLArrayRecord* r = allocate();
  if (r && !r->init(kind, size, data)) {
    giveBack(r);
    throw std::bad_alloc();
  }
  return r;
}

void GLArrayTable::giveBack(GLArrayRecord* record) {
  record->dispose();
  record->live = false;
  free_[freeCount_++] = record;
}

GLArrayRecord* GLArrayTable::find(int64_t handle) const {
  const auto base = reinterpret_cast<uintptr_t>(records_);
  const auto at = static_cast<uintptr_t>(handle);
  if (handle <= 0 || at < base) return nullptr;
  const uintptr_t offset = at - base;
  if (offset % sizeof(GLArrayRecord) != 0 || offset / sizeof(GLArrayRecord) >= uintptr_t(count_))
    return nullptr;
  GLArrayRecord* r = &records_[offset / sizeof(GLArrayRecord)];
  return r->live ? r : nullptr;
}

int64_t GLArrayTable::handleOf(const GLArrayRecord* record) {
  return record ? platform::toHandle32(record) : 0;
}

void GLArrayTable::noteDelete(int64_t handle) {
  std::lock_guard<std::mutex> lock(pendingLock_);
  // The list grows in steps of a thousand.
  if (pending_.size() == pending_.capacity()) pending_.reserve(pending_.capacity() + 1000);
  pending_.push_back(handle);
}

void GLArrayTable::compact() {
  std::vector<int64_t> noted;
  {
    std::lock_guard<std::mutex> lock(pendingLock_);
    noted.swap(pending_);
    pending_.reserve(noted.capacity());
  }
  for (int64_t h : noted) {
    // A handle noted twice, or never made, frees nothing: a slot is on the
    // free list at most once.
    if (GLArrayRecord* r = find(h)) giveBack(r);
  }
}

void GLArrayTable::compactIfCrowded() {
  if (count_ >= kCompactThreshold && freeCount_ == 0) compact();
}

}  // namespace vostan
