// Loading and unloading: the library makes itself known to the memory tracker and owns its cache
// from the first to the second.

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/foundation.h"
#include "foundation/runtime.h"

using namespace mcec;

// Here, so that a program that is linked with the static library has this file too.
avl_tree_t *stp_mcec_type1_cfg_avl = nullptr;

namespace {

constexpr char library_name[] = "STP MCEC Type-1 CFG LIB";

// Memory types 0 to 20; the tracker may keep the array.
const char *mem_type_names[STP_MCEC_LIB_MEM_MAX];

__attribute__((constructor)) void load_library() {
  for (uint32_t type = 0; type < STP_MCEC_LIB_MEM_MAX; ++type) {
    mem_type_names[type] = __stp_mcec_lib_mem_type_t_find(type);
  }
  mtrack_init(library_name, STP_MCEC_LIB_SERVICE_ID, mem_type_names, STP_MCEC_LIB_MEM_MAX);
  stp_mcec_type1_cfg_avl = avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
}

__attribute__((destructor)) void unload_library() {
  avl_destroy(stp_mcec_type1_cfg_avl, stp_mcec_type1_cfg_avl_free);
  mtrack_uninit(STP_MCEC_LIB_SERVICE_ID);
}

}  // namespace
