// The check of what counts in MST: the region, and simulate PVST.

#include "check/compare.h"
#include "draimiofaf/check.h"

using namespace mcec;

extern "C" uint32_t stp_mcec_mst_type1_cfg_compat_check(uint32_t is_pod_hif, uint32_t,
                                                        void *local_param, void *remote_param) {
  MCEC_LOG(__func__, "MST type-1 compat check\n");
  if (const Ended missing = check::missing_array(__func__, local_param, remote_param)) {
    return *missing;
  }
  const char *const operation = __func__;
  const Ended ended = check::walk_compared(
      local_param, Compared::in_mst,
      [=](uint32_t code) { return check::log_unread(operation, code); },
      [=](const Tlv &tlv) {
        return check::compare_value(operation, is_pod_hif != 0, tlv, remote_param);
      });
  if (ended) return *ended;
  MCEC_LOG(__func__, "MST type-1 compat check passed\n");
  return 0;
}
