// The check of what counts in MST: the region, and simulate PVST.

#include "check/compare.h"
#include "draimiofaf/check.h"

using namespace mcec;

extern "C" uint32_t stp_mcec_mst_type1_cfg_compat_check(uint32_t is_pod_hif, uint32_t,
                                                        void *local_param, void *remote_param) {
  hist_log(here(), "MST type-1 compat check\n");
  if (const auto missing = check::missing_array(here(), local_param, remote_param)) return *missing;
  Walk walk = walk_over(local_param);
  for (Tlv tlv; next(walk, tlv);) {
    const auto ended = check::compare(here(), Compared::in_mst, tlv, remote_param, is_pod_hif != 0);
    if (ended) return *ended;
  }
  if (walk.code != 0) return check::log_unread(here(), walk.code);
  hist_log(here(), "MST type-1 compat check passed\n");
  return 0;
}
