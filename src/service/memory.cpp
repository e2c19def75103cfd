// Aligned allocation and checked copying for every oxa subsystem.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "oxa/service.h"

namespace {

// x86-64 user space spans 47 bits; no request above it can be met, and refusing
// it here keeps allocators (sanitizer ones included) from aborting on it.
constexpr size_t kLargestRequest = size_t{1} << 47;

bool is_power_of_two(size_t v) { return v != 0 && (v & (v - 1)) == 0; }

}  // namespace

extern "C" void* oxa_serv_allocate(size_t size, size_t alignment) {
  if (size == 0 || !is_power_of_two(alignment) || size > kLargestRequest ||
      alignment > kLargestRequest) {
    return nullptr;
  }
  if (alignment < sizeof(void*)) alignment = sizeof(void*);
  void* block = nullptr;
  if (posix_memalign(&block, alignment, size) != 0) return nullptr;
  return block;
}

extern "C" void oxa_serv_deallocate(void* pointer) { std::free(pointer); }

extern "C" int32_t oxa_serv_memcpy_s(void* dest, size_t dest_size, const void* src,
                                     size_t count) {
  if (dest == nullptr || src == nullptr) return EINVAL;
  if (count > dest_size) return ERANGE;
  if (count != 0) std::memmove(dest, src, count);
  return 0;
}
