// The replaced global operator new and delete. Each new counts one allocation
// on its thread (a plain thread-local counter, so counting costs the same tiny
// amount for every caller and needs no synchronisation) and takes its memory
// from malloc; each delete gives it back with free.
#include "AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace TimelineEngineBench {

namespace {

thread_local std::uint64_t allocationCount = 0;

// The standard loop: retry through the new-handler until it gives up.
void* AllocateCounted(std::size_t size) {
  ++allocationCount;
  const std::size_t bytes = size == 0 ? 1 : size;
  for (;;) {
    if (void* memory = std::malloc(bytes)) {
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    handler();
  }
}

void* AllocateCountedAligned(std::size_t size, std::align_val_t alignment) {
  ++allocationCount;
  const auto align = static_cast<std::size_t>(alignment);
  // aligned_alloc wants a size that is a multiple of the alignment.
  const std::size_t bytes = ((size == 0 ? 1 : size) + align - 1) / align * align;
  for (;;) {
    if (void* memory = std::aligned_alloc(align, bytes)) {
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    handler();
  }
}

template <typename Allocate, typename... Args>
void* AllocateNoThrow(Allocate allocate, Args... args) noexcept {
  try {
    return allocate(args...);
  } catch (...) {
    return nullptr;
  }
}

}  // namespace

std::uint64_t AllocationsOnThisThread() {
  return allocationCount;
}

}  // namespace TimelineEngineBench

using TimelineEngineBench::AllocateCounted;
using TimelineEngineBench::AllocateCountedAligned;
using TimelineEngineBench::AllocateNoThrow;

void* operator new(std::size_t size) {
  return AllocateCounted(size);
}
void* operator new[](std::size_t size) {
  return AllocateCounted(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateNoThrow(AllocateCounted, size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateNoThrow(AllocateCounted, size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateCountedAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateCountedAligned(size, alignment);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return AllocateNoThrow(AllocateCountedAligned, size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return AllocateNoThrow(AllocateCountedAligned, size, alignment);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(memory);
}
