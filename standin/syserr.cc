#include "syserr.h"

#include <cstdio>

const char *syserr2str(uint32_t code) {
  static char text[32];
  std::snprintf(text, sizeof text, "system error 0x%X", code);
  return text;
}
