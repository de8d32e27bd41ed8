/*
 * A process for installed trees, in C11 and C++20. Includes every header; caches, exports and
 * reports a parameter. With LIBRARY defined, it opens the library with dlopen, and is not linked
 * with it.
 */
#include <dlfcn.h>
#include <draimiofaf/cache.h>
#include <draimiofaf/check.h>
#include <draimiofaf/extract.h>
#include <draimiofaf/extract_port.h>
#include <draimiofaf/foundation.h>
#include <draimiofaf/platform/avl.h>
#include <draimiofaf/platform/cmd_req.h>
#include <draimiofaf/platform/if_index.h>
#include <draimiofaf/platform/im.h>
#include <draimiofaf/platform/mcecm.h>
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/platform/mts.h>
#include <draimiofaf/platform/satmgr.h>
#include <draimiofaf/platform/sdwrap.h>
#include <draimiofaf/platform/syserr.h>
#include <draimiofaf/platform/sysmgr.h>
#include <draimiofaf/platform/tlv.h>
#include <draimiofaf/stp.h>
#include <stdio.h>

#ifdef LIBRARY
#define FUNCTION(name) (__extension__(__typeof__(name) *) dlsym(library, #name))
#else
#define FUNCTION(name) name
#endif

int main(void) {
  static const uint8_t on[4] = {0, 0, 0, 1};
  uint8_t array[64] = {0};
#ifdef LIBRARY
  void *library = dlopen(LIBRARY, RTLD_NOW);
  if (library == NULL) return puts(dlerror()) < 0 ? 2 : 1;
#endif
  if (tlv_aligned_array_add_tlv(array, sizeof array, STP_MCEC_TYPE1_LOOP_GUARD, sizeof on, on,
                                TLV_ALIGNED_FLAG) != 0) {
    return 1;
  }
  void *exported = NULL;
  void *report = NULL;
  if (FUNCTION(stp_mcec_type1_cfg_cache_rebuild)(array, 0, 0) != 0 ||
      FUNCTION(stp_mcec_type1_cfg_get_params)(1, 0, &exported) != 0 ||
      FUNCTION(stp_mcec_type1_cfg_get_param_info)(exported, &report) != 0) {
    return 1;
  }
  const mcecm_app_info_t *record = ((mcecm_app_info_report_t *)report)->records;
  printf("%s: %s\n", record->param_name, record->param_value);
  mtrack_free(report);
  mtrack_free(exported);
#ifdef LIBRARY
  dlclose(library);
#endif
  return 0;
}
