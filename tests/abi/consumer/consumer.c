/* Links the installed libraries through the umbrella header. */
#include <oxa/oxa.h>

int main(void) {
  void* p = oxa_serv_allocate(64, 128);
  const int ok = p != NULL && oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for") != NULL;
  oxa_serv_deallocate(p);
  return ok ? 0 : 1;
}
