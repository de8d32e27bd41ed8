// The entry points, and the checks of the parameters of every mode and of MST.

#include "cache/store.h"
#include "check/compare.h"
#include "draimiofaf/check.h"
#include "satmgr.h"

using namespace mcec;

extern "C" uint32_t stp_mcec_type1_cfg_compat_check(uint32_t caller_data, void *local_param,
                                                    void *remote_param, uint32_t check_stp_endis,
                                                    const void *compat_vlans, void *pass_vlans,
                                                    void *fail_vlans) {
  hist_log(here(), "Regular Interface type-1 compat check\n");
  return stp_mcec_type1_cfg_compat_check_common(0, caller_data, local_param, remote_param,
                                                check_stp_endis, compat_vlans, pass_vlans,
                                                fail_vlans);
}

extern "C" uint32_t stp_mcec_type1_cfg_compat_check_with_ifindex(
    uint32_t if_index, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans) {
  const bool is_pod_hif = satmgr_if_is_pod_port(if_index) != 0;
  hist_log(here(), "%s type-1 compat check\n", is_pod_hif ? "Pod HIF" : "Regular Interface");
  return stp_mcec_type1_cfg_compat_check_common(is_pod_hif ? 1 : 0, caller_data, local_param,
                                                remote_param, check_stp_endis, compat_vlans,
                                                pass_vlans, fail_vlans);
}

extern "C" uint32_t stp_mcec_type1_cfg_compat_check_common(
    uint32_t is_pod_hif, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans) {
  hist_log(here(), "type-1 compat check\n");
  if (const auto missing = check::missing_array(here(), local_param, remote_param)) return *missing;

  const cache::Node *cached = cache::find(0, STP_MCEC_TYPE1_STP_MODE);
  if (cached == nullptr) {
    hist_log(here(), "STP mode not found in cache\n");
    return STP_MCEC_ERR_FAILURE;
  }
  const uint32_t mode = word_of(cache::value_of(*cached));
  hist_log(here(), "current STP mode %s\n",
           choice_text(*find_parameter(STP_MCEC_TYPE1_STP_MODE), mode));

  Walk walk = walk_over(local_param);
  for (Tlv tlv; next(walk, tlv);) {
    const auto ended =
        check::compare(here(), STP_MCEC_COMPARED_IN_EVERY_MODE, tlv, remote_param, is_pod_hif != 0);
    if (ended) return *ended;
  }
  // An unreadable entry ends only this loop: the check of the mode finds it again.
  if (walk.code != 0) log_failure(here(), not_read, walk.code);

  uint32_t result = STP_MCEC_ERR_FAILURE;
  if (mode == STP_MCEC_STP_MODE_RAPID_PVST) {
    result = stp_mcec_pvrst_type1_cfg_compat_check(is_pod_hif, caller_data, local_param,
                                                   remote_param, check_stp_endis, compat_vlans,
                                                   pass_vlans, fail_vlans);
  } else if (mode == STP_MCEC_STP_MODE_MST) {
    result =
        stp_mcec_mst_type1_cfg_compat_check(is_pod_hif, caller_data, local_param, remote_param);
  }
  if (result == 0) hist_log(here(), "type-1 compat check passed\n");
  return result;
}

extern "C" uint32_t stp_mcec_mst_type1_cfg_compat_check(uint32_t is_pod_hif, uint32_t,
                                                        void *local_param, void *remote_param) {
  hist_log(here(), "MST type-1 compat check\n");
  if (const auto missing = check::missing_array(here(), local_param, remote_param)) return *missing;
  Walk walk = walk_over(local_param);
  for (Tlv tlv; next(walk, tlv);) {
    const auto ended =
        check::compare(here(), STP_MCEC_COMPARED_IN_MST, tlv, remote_param, is_pod_hif != 0);
    if (ended) return *ended;
  }
  if (walk.code != 0) return log_failure(here(), not_read, walk.code);
  hist_log(here(), "MST type-1 compat check passed\n");
  return 0;
}
