// Feeds arbitrary bytes to the stream file loader. A load must end with a
// status and either no stream or a stream that can be saved, generated from
// and deleted; the sanitizers catch leaks and out-of-bounds accesses.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "oxa/streams.h"
#include "streams/registry.hpp"

namespace {

const std::string& image_path() {
  static const std::string path = "/dev/shm/oxa_fuzz_" + std::to_string(::getpid()) + ".img";
  return path;
}

bool generator_owned_here(int32_t id) {
  return id == OXA_BRNG_MT19937 || id == OXA_BRNG_PHILOX4X32X10 || id == OXA_BRNG_ARS5;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FILE* f = std::fopen(image_path().c_str(), "wb");
  if (f == nullptr) return 0;
  if (size) std::fwrite(data, size, 1, f);
  std::fclose(f);

  StreamState* s = nullptr;
  const int32_t status = _vslLoadStreamF(&s, image_path().c_str(), -1);
  if ((status < 0) != (s == nullptr)) __builtin_trap();
  if (s == nullptr) return 0;
  std::string copy(size_t(_vslGetStreamSize(s)), '\0');
  if (_vslSaveStreamM(s, copy.data()) != 0) __builtin_trap();
  if (generator_owned_here(s->brng)) {
    uint32_t words[64];
    double reals[16];
    const BrngProperties& row = oxa::streams::decode_brng(s->brng).props();
    row.GenBits(s, 16, words);
    row.GenDouble(s, 16, reals, 0.0, 1.0);
    _vslSkipAheadStream(s, uint64_t(size) * 977);
    row.GenBits(s, 5, words);
  }
  _vslDeleteStream(&s);
  return 0;
}
