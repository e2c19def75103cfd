// Writes one saved image per generator (with chunks for some) into the
// directory given as the argument: the starting corpus of the loader fuzzer.
// Images of two chunks sharing a key follow, written byte by byte: sizes 0
// then 16 (once loaded with null data under a size, and saved through it),
// and 16 and 16 (a valid share).
#include <cstdio>
#include <string>
#include <vector>

#include "oxa/service.h"
#include "oxa/streams.h"

namespace {

using Bytes = std::vector<unsigned char>;

void put(Bytes& b, uint64_t v, int n) {
  for (int i = 0; i < n; ++i) b.push_back(uint8_t(v >> (8 * i)));
}

// An MCG31M1 image whose chunks (id 2 + i) share one key and have these sizes.
Bytes shared_key_image(std::initializer_list<uint32_t> sizes) {
  Bytes b = {1, 'R', 'N', 'G'};
  put(b, 16, 2), put(b, 8, 2), put(b, sizes.size(), 2), put(b, 0, 2), put(b, OXA_BRNG_MCG31M1, 4);
  put(b, 77, 8);
  uint32_t id = 2;
  for (uint32_t size : sizes) {
    put(b, id++, 4), put(b, 0x5EED, 8), put(b, 0xC0DE, 8), put(b, size, 4);
    for (uint32_t i = 0; i < size; ++i) b.push_back(uint8_t(i));
  }
  return b;
}

void write(const std::string& path, const Bytes& b) {
  if (FILE* f = std::fopen(path.c_str(), "wb")) {
    std::fwrite(b.data(), b.size(), 1, f);
    std::fclose(f);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string dir = argv[1];
  const uint32_t seeds[] = {1, 2, 3, 4, 5, 6, 7, 8};
  for (int32_t r = 0; r < _vslGetNumRegBrngs(); ++r) {
    StreamState* s = nullptr;
    if (_vslNewStreamEx(&s, (r + 1) << 20, 8, seeds) != 0) {
      _vslDeleteStream(&s);
      continue;
    }
    for (uint32_t k = 0; k < uint32_t(r % 3); ++k) {
      void* data = oxa_serv_allocate(16 + 8 * k, 128);
      if (data) _vslAddChunk(s, 2 + k, nullptr, data, 16 + 8 * k);
    }
    const std::string path = dir + "/brng_row_" + std::to_string(r) + ".img";
    _vslSaveStreamF(s, path.c_str(), -1);
    _vslDeleteStream(&s);
  }
  write(dir + "/shared_key_sizes_0_16.img", shared_key_image({0, 16}));
  write(dir + "/shared_key_sizes_16_16.img", shared_key_image({16, 16}));
  return 0;
}
