// Message catalogue of the library's diagnostics (the vector-math "stderr"
// error mode prints through it) and process exit.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "oxa/service.h"

namespace {

enum class Args { kName, kNameIndex, kIndexValue };

struct Message {
  int32_t number;
  Args args;
  const char* text;
};

// Element-report lines print the value with 17 significant digits so that a
// double is reproduced exactly from the text.
constexpr Message kCatalogue[] = {
    {735, Args::kNameIndex, "oxa vml: %s: invalid argument at element %lld\n"},
    {736, Args::kName, "oxa vml: %s: argument array not accessible\n"},
    {737, Args::kName, "oxa vml: %s: argument outside the function's domain\n"},
    {738, Args::kName, "oxa vml: %s: singularity, result is infinite\n"},
    {739, Args::kName, "oxa vml: %s: result overflows\n"},
    {740, Args::kName, "oxa vml: %s: result underflows\n"},
    {741, Args::kName, "oxa vml: %s: unknown error\n"},
    {742, Args::kIndexValue, "  element %lld: argument %.17g\n"},
    {743, Args::kIndexValue, "  element %lld: result %.17g\n"},
    {744, Args::kIndexValue, "  element %lld: argument %.17g\n"},
    {745, Args::kIndexValue, "  element %lld: first result %.17g\n"},
    {746, Args::kIndexValue, "  element %lld: second result %.17g\n"},
    {747, Args::kIndexValue, "  element %lld: first argument %.17g\n"},
    {748, Args::kIndexValue, "  element %lld: second argument %.17g\n"},
    {749, Args::kIndexValue, "  element %lld: result %.17g\n"},
    {750, Args::kIndexValue, "  element %lld: first argument %.17g\n"},
    {751, Args::kIndexValue, "  element %lld: second argument %.17g\n"},
    {752, Args::kIndexValue, "  element %lld: first result %.17g\n"},
    {753, Args::kIndexValue, "  element %lld: second result %.17g\n"},
};

constexpr int32_t arg_count(Args a) { return a == Args::kName ? 1 : 2; }

const Message* find(int32_t number) {
  for (const Message& m : kCatalogue)
    if (m.number == number) return &m;
  return nullptr;
}

}  // namespace

extern "C" int32_t oxa_serv_print(int32_t channel, int32_t message, int32_t nargs, ...) {
  FILE* out = channel == 0 ? stdout : channel == 1 ? stderr : nullptr;
  const Message* m = find(message);
  if (out == nullptr || m == nullptr || nargs != arg_count(m->args)) return -1;

  va_list ap;
  va_start(ap, nargs);
  int written = -1;
  switch (m->args) {
    case Args::kName: {
      const char* name = va_arg(ap, const char*);
      written = std::fprintf(out, m->text, name ? name : "?");
      break;
    }
    case Args::kNameIndex: {
      const char* name = va_arg(ap, const char*);
      const long long index = va_arg(ap, int64_t);
      written = std::fprintf(out, m->text, name ? name : "?", index);
      break;
    }
    case Args::kIndexValue: {
      const long long index = va_arg(ap, int64_t);
      const double value = va_arg(ap, double);
      written = std::fprintf(out, m->text, index, value);
      break;
    }
  }
  va_end(ap);
  return written < 0 ? -1 : written;
}

extern "C" void oxa_serv_exit(int32_t code) { std::exit(code); }
