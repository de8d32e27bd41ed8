#include "sysmgr.h"

#include "ports.h"
#include "standin.h"

namespace {

uint32_t partition = 0;

}  // namespace

namespace standin {

void reset_partition() {
  partition = 0;
}

}  // namespace standin

uint32_t sysmgr_slc_get() {
  return partition;
}

void standin_set_partition(uint32_t slc) {
  partition = slc;
}
