// Writes one saved image per generator (with chunks for some) into the
// directory given as the argument: the starting corpus of the loader fuzzer.
#include <cstdio>
#include <string>

#include "oxa/service.h"
#include "oxa/streams.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
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
    const std::string path = std::string(argv[1]) + "/brng_row_" + std::to_string(r) + ".img";
    _vslSaveStreamF(s, path.c_str(), -1);
    _vslDeleteStream(&s);
  }
  return 0;
}
