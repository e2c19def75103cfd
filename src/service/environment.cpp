// Environment lookup with a caller-sized buffer.
#include <cstdlib>
#include <cstring>

#include "oxa/service.h"

extern "C" int32_t oxa_serv_getenv(const char* name, char* buffer, int32_t length) {
  if (name == nullptr) return 0;
  const char* value = std::getenv(name);
  if (value == nullptr) return 0;
  const size_t full = std::strlen(value);
  if (buffer != nullptr && length >= 1) {
    const size_t room = static_cast<size_t>(length) - 1;
    const size_t n = full < room ? full : room;
    std::memcpy(buffer, value, n);
    buffer[n] = '\0';
  }
  return full > INT32_MAX ? INT32_MAX : static_cast<int32_t>(full);
}
