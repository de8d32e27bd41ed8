#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "internal.h"
#include "syserr.h"

namespace {

struct Failure {
  uint32_t calls = 0;
  uint32_t first = 0;
  uint32_t times = 0;
};

std::array<Failure, STANDIN_OPERATIONS> failures;
bool suspended = false;

void abort_on_misuse(const char *what) {
  std::fprintf(stderr, "stand-in: %s\n", what);
  std::abort();
}

void (*misuse_handler)(const char *) = abort_on_misuse;

}  // namespace

namespace standin {

void misuse(const char *format, ...) {
  char what[256];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(what, sizeof what, format, arguments);
  va_end(arguments);
  misuse_handler(what);
}

bool fails(standin_operation_t operation) {
  if (suspended) return false;
  Failure &failure = failures[operation];
  ++failure.calls;
  return failure.times > 0 && failure.calls >= failure.first &&
         failure.calls - failure.first < failure.times;
}

}  // namespace standin

void standin_reset() {
  failures = {};
  standin_history_clear();
  standin_answers_clear();
  standin_handle_size(0);
  standin::reset_switch();
}

void standin_on_misuse(void (*handler)(const char *)) {
  misuse_handler = handler != nullptr ? handler : abort_on_misuse;
}

void standin_fail(standin_operation_t operation, uint32_t nth, uint32_t times) {
  Failure &failure = failures[operation];
  failure.first = failure.calls + nth;
  failure.times = times;
}

void standin_suspend_failures(uint32_t is_suspended) {
  suspended = is_suspended != 0;
}

uint32_t standin_calls(standin_operation_t operation) {
  return failures[operation].calls;
}

const char *syserr2str(uint32_t code) {
  static char text[32];
  std::snprintf(text, sizeof text, "system error 0x%X", code);
  return text;
}
