// Loads and unloads the library: registers it with the memory tracker, creates and destroys the
// cache.

#include "avl.h"
#include "draimiofaf/cache.h"
#include "foundation/runtime.h"

using namespace mcec;

// Defined here, so that a program linked with the static library also links this file.
avl_tree_t *stp_mcec_type1_cfg_avl = nullptr;

__attribute__((constructor)) static void load_library() {
  mtrack_init("STP MCEC Type-1 CFG LIB", STP_MCEC_LIB_SERVICE_ID, mem_type_names,
              STP_MCEC_LIB_MEM_MAX);
  stp_mcec_type1_cfg_avl = avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
}

__attribute__((destructor)) static void unload_library() {
  avl_destroy(stp_mcec_type1_cfg_avl, stp_mcec_type1_cfg_avl_free);
  mtrack_uninit(STP_MCEC_LIB_SERVICE_ID);
}
