// Thread-specific blocks behind the per-thread values. Every access runs the
// slot's pthread_once guard, then pthread_getspecific; a thread without a block
// gets a zeroed malloc block, freed by the slot's destructor at thread exit.
#include "vector_math/frame/thread_state.hpp"

#include <pthread.h>

#include <cstdlib>
#include <cstring>

#include "oxa/service.h"

namespace oxa::vml {
namespace {

void* slot_block(pthread_once_t* once, void (*create)(), pthread_key_t* key, size_t bytes) {
  pthread_once(once, create);
  void* block = pthread_getspecific(*key);
  if (block == nullptr) {
    block = std::malloc(bytes);
    if (block == nullptr) oxa_serv_exit(3);
    std::memset(block, 0, bytes);
    pthread_setspecific(*key, block);
  }
  return block;
}

void free_block(void* block) { std::free(block); }

template <pthread_key_t* Key>
void create_key() {
  pthread_key_create(Key, free_block);
}

// The four slots: key, once-guard, creator and destructor of each.
pthread_key_t Mode_key;
pthread_once_t Mode_konce = PTHREAD_ONCE_INIT;
void (*const Mode_alloc_key)() = create_key<&Mode_key>;
void (*const Mode_destroy)(void*) = free_block;

pthread_key_t ErrStatus_key;
pthread_once_t ErrStatus_konce = PTHREAD_ONCE_INIT;
void (*const ErrStatus_alloc_key)() = create_key<&ErrStatus_key>;
void (*const ErrStatus_destroy)(void*) = free_block;

pthread_key_t CallBack_key;
pthread_once_t CallBack_konce = PTHREAD_ONCE_INIT;
void (*const CallBack_alloc_key)() = create_key<&CallBack_key>;
void (*const CallBack_destroy)(void*) = free_block;

pthread_key_t InputVecorPointer_key;
pthread_once_t InputVecorPointer_konce = PTHREAD_ONCE_INIT;
void (*const InputVecorPointer_alloc_key)() = create_key<&InputVecorPointer_key>;
void (*const InputVecorPointer_destroy)(void*) = free_block;

}  // namespace

uint32_t* mode_slot() {
  return static_cast<uint32_t*>(slot_block(&Mode_konce, Mode_alloc_key, &Mode_key, 8));
}
int32_t* status_slot() {
  return static_cast<int32_t*>(
      slot_block(&ErrStatus_konce, ErrStatus_alloc_key, &ErrStatus_key, 8));
}
VmlErrorCallBack* callback_slot() {
  return static_cast<VmlErrorCallBack*>(
      slot_block(&CallBack_konce, CallBack_alloc_key, &CallBack_key, 16));
}
const void** input_vector_slot() {
  return static_cast<const void**>(slot_block(
      &InputVecorPointer_konce, InputVecorPointer_alloc_key, &InputVecorPointer_key, 16));
}

uint32_t current_mode() {
  uint32_t* mode = mode_slot();
  if (*mode == 0) {
    const int64_t env = oxa_vml_kernel_ReadEnvVarMode();
    *mode = env != -1 ? static_cast<uint32_t>(env) : uint32_t{OXA_VML_DEFAULT_MODE};
  }
  return *mode;
}

}  // namespace oxa::vml
