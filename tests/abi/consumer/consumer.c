/* Links the installed libraries through the umbrella header; on Linux, also
 * checks that loading them started no thread (the installed kernel library
 * still finds the single-threaded BLAS). */
#include <oxa/oxa.h>

#ifdef __linux__
#include <dirent.h>

static int thread_count(void) {
  DIR* dir = opendir("/proc/self/task");
  if (dir == NULL) return -1;
  int n = 0;
  for (struct dirent* e = readdir(dir); e != NULL; e = readdir(dir)) n += e->d_name[0] != '.';
  closedir(dir);
  return n;
}
#else
static int thread_count(void) { return 1; }
#endif

int main(void) {
  void* p = oxa_serv_allocate(64, 128);
  int ok = p != NULL && oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for") != NULL;
  oxa_serv_deallocate(p);
  StreamState* stream = NULL;
  const uint32_t seed = 1;
  ok = ok && _vslNewStreamEx(&stream, OXA_BRNG_MCG59, 1, &seed) == 0 && _vslDeleteStream(&stream) == 0;
  return ok && thread_count() == 1 ? 0 : 1;
}
