// Mode word, error status, callback and input-vector pointer of the calling
// thread, and the parser of the OXA_VML_MODE environment variable.
//
// OXA_VML_MODE holds words separated by single commas, no blanks, nothing after
// the last word, e.g. "VML_EP,VML_ERRMODE_STDERR" (mode 0x403). Each word ORs
// its bits into the mode; anything malformed rejects the whole value.
#include <cstring>

#include "oxa/service.h"
#include "oxa/vector_math.h"
#include "vector_math/frame/thread_state.hpp"

namespace {

struct ModeWord {
  const char* text;  // without the "VML_" prefix
  int32_t length;
  uint32_t bits;
};

// Tried in this order; a word matches as a prefix of the text at the cursor, so
// the character after it decides (comma or end). "DOUBLE_CONSISTEN" lacks its
// last letter on purpose: "VML_DOUBLE_CONSISTENT" is thereby rejected, and
// existing configurations depend on that.
constexpr ModeWord kModeWords[] = {
    {"LA", 2, 0x1},
    {"HA", 2, 0x2},
    {"EP", 2, 0x3},
    {"DEFAULT_PRECISION", 17, 0x0},
    {"FLOAT_CONSISTENT", 16, 0x10},
    {"DOUBLE_CONSISTEN", 16, 0x20},
    {"RESTORE", 7, 0x30},
    {"ERRMODE_IGNORE", 14, 0x100},
    {"ERRMODE_ERRNO", 13, 0x200},
    {"ERRMODE_STDERR", 14, 0x400},
    {"ERRMODE_EXCEPT", 14, 0x800},
    {"ERRMODE_CALLBACK", 16, 0x1000},
    {"ERRMODE_DEFAULT", 15, 0x1A00},
};

constexpr int32_t kBufferLength = 256;

const ModeWord* match_word(const char* buffer, int32_t p) {
  for (const ModeWord& w : kModeWords)
    if (w.length + p + 4 < kBufferLength && std::strncmp(buffer + p + 4, w.text, w.length) == 0)
      return &w;
  return nullptr;
}

uint32_t set_mode(uint32_t mode) {
  uint32_t* slot = oxa::vml::mode_slot();
  const uint32_t previous = oxa::vml::current_mode();
  uint32_t next = previous;
  if (mode & OXA_VML_ACCURACY_MASK) next = (next & ~0xFu) | (mode & 0xFu);
  if (mode & OXA_VML_ERRMODE_MASK) next = (next & ~0xFF00u) | (mode & 0xFF00u);
  if (mode & OXA_VML_DENORMAL_MASK) next = (next & ~0x3C0000u) | (mode & 0x3C0000u);
  *slot = next;
  return previous;
}

// Sets or clears the callback bit by rewriting the whole error field; a field
// that would become 0 is ignored by set_mode and so left as it was.
void sync_callback_bit(bool installed) {
  const uint32_t field = oxa::vml::current_mode() & OXA_VML_ERRMODE_MASK;
  set_mode(installed ? field | OXA_VML_ERRMODE_CALLBACK : field & ~uint32_t{OXA_VML_ERRMODE_CALLBACK});
}

}  // namespace

extern "C" {

int64_t oxa_vml_kernel_ReadEnvVarMode(void) {
  char buffer[kBufferLength];
  if (oxa_serv_getenv("OXA_VML_MODE", buffer, kBufferLength) < 1) return -1;
  int64_t bits = 0;
  int32_t p = 0;
  for (;;) {
    if (std::strncmp(buffer + p, "VML_", 4) != 0) return -1;
    const ModeWord* w = match_word(buffer, p);
    if (w == nullptr) return -1;
    const char next = buffer[p + 4 + w->length];
    if (next != ',' && next != '\0') return -1;
    bits |= w->bits;
    if (next == '\0') return bits;
    p += 4 + w->length + 1;
  }
}

uint32_t oxa_vml_kernel_GetMode(void) { return oxa::vml::current_mode(); }
uint32_t oxa_vml_kernel_SetMode(uint32_t mode) { return set_mode(mode); }

int32_t oxa_vml_kernel_GetTTableIndex(void) {
  return static_cast<int32_t>(oxa::vml::current_mode() & OXA_VML_ACCURACY_MASK) - 1;
}
int32_t oxa_vml_kernel_GetTTableIndexM(int32_t, uint32_t mode) {
  return static_cast<int32_t>(mode & OXA_VML_ACCURACY_MASK) - 1;
}

int32_t oxa_vml_kernel_SetErrStatus(int32_t status) {
  int32_t* slot = oxa::vml::status_slot();
  const int32_t previous = *slot;
  *slot = status;
  return previous;
}
int32_t oxa_vml_kernel_GetErrStatus(void) { return *oxa::vml::status_slot(); }
int32_t oxa_vml_kernel_ClearErrStatus(void) { return oxa_vml_kernel_SetErrStatus(0); }

VmlErrorCallBack oxa_vml_kernel_SetErrorCallBack(VmlErrorCallBack callback) {
  VmlErrorCallBack* slot = oxa::vml::callback_slot();
  const VmlErrorCallBack previous = *slot;
  *slot = callback;
  sync_callback_bit(callback != nullptr);
  return previous;
}
VmlErrorCallBack oxa_vml_kernel_GetErrorCallBack(void) { return *oxa::vml::callback_slot(); }
VmlErrorCallBack oxa_vml_kernel_ClearErrorCallBack(void) {
  return oxa_vml_kernel_SetErrorCallBack(nullptr);
}

const void* oxa_vml_kernel_SetInterfInputVectorPointer(const void* pointer) {
  *oxa::vml::input_vector_slot() = pointer;
  return pointer;
}

// The same entry points under their short names.
uint32_t _vmlGetMode(void) { return oxa_vml_kernel_GetMode(); }
uint32_t _vmlSetMode(uint32_t mode) { return oxa_vml_kernel_SetMode(mode); }
int32_t _vmlSetErrStatus(int32_t status) { return oxa_vml_kernel_SetErrStatus(status); }
int32_t _vmlGetErrStatus(void) { return oxa_vml_kernel_GetErrStatus(); }
int32_t _vmlClearErrStatus(void) { return oxa_vml_kernel_ClearErrStatus(); }
VmlErrorCallBack _vmlSetErrorCallBack(VmlErrorCallBack callback) {
  return oxa_vml_kernel_SetErrorCallBack(callback);
}
VmlErrorCallBack _vmlGetErrorCallBack(void) { return oxa_vml_kernel_GetErrorCallBack(); }
VmlErrorCallBack _vmlClearErrorCallBack(void) { return oxa_vml_kernel_ClearErrorCallBack(); }
const void* _vmlSetInterfInputVectorPointer(const void* pointer) {
  return oxa_vml_kernel_SetInterfInputVectorPointer(pointer);
}

}  // extern "C"
