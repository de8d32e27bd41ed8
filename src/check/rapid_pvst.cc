// The check of what counts in Rapid-PVST: the VLANs on which spanning tree is disabled, VLAN by
// VLAN over those that the caller names because both switches carry them.

#include "check/compare.h"
#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "foundation/bitmap.h"

using namespace mcec;

namespace {

// A value that is no whole bitmap record disagrees without a look at its VLANs.
bool are_whole(Bytes local, Bytes remote) {
  return std::min(local.size(), remote.size()) >= bitmap_record_size;
}

void write_record(void *record, const VlanSet &vlans) {
  store(record, static_cast<uint32_t>(sizeof vlans));
  store_vlans(record, vlans);
}

}  // namespace

extern "C" uint32_t stp_mcec_pvrst_type1_cfg_compat_check(uint32_t, uint32_t, void *local_param,
                                                          void *remote_param,
                                                          uint32_t check_stp_endis,
                                                          const void *compat_vlans,
                                                          void *pass_vlans, void *fail_vlans) {
  hist_log(here(), "PVRST type-1 compat check\n");
  if (const auto missing = check::missing_array(here(), local_param, remote_param)) return *missing;
  Walk walk = walk_over(local_param);
  for (Tlv tlv; next(walk, tlv);) {
    const Parameter *parameter = check::find_compared(Compared::in_rapid_pvst, tlv.type);
    if (parameter == nullptr) continue;
    if (check_stp_endis != 1) return 0;
    Tlv peer{};
    const auto absent = check::find_at_peer(here(), remote_param, tlv.type, peer);
    if (absent) return *absent;
    if (check::agree(tlv.value, peer.value)) continue;
    // Of the sets only the VLANs that the caller names count.
    const bool twins_agree =
        are_whole(tlv.value, peer.value) &&
        stp_mcec_pvrst_endis_check_for_twin_vlans(tlv.type, const_cast<uint8_t *>(tlv.value.data()),
                                                  const_cast<uint8_t *>(peer.value.data()),
                                                  compat_vlans, pass_vlans, fail_vlans) == 0;
    return twins_agree ? 0 : check::mismatch(here(), *parameter);
  }
  if (walk.code != 0) return check::log_unread(here(), walk.code);
  hist_log(here(), "PVRST type-1 compat check passed\n");
  return 0;
}

extern "C" uint32_t stp_mcec_pvrst_endis_check_for_twin_vlans(uint16_t type, void *local_vlans,
                                                              void *remote_vlans,
                                                              const void *compat_vlans,
                                                              void *pass_vlans, void *fail_vlans) {
  const VlanSet local = vlans_of(local_vlans);
  const VlanSet remote = vlans_of(remote_vlans);
  hist_log(here(), {"local stp disabled vlans: ", range_text(local), "\n"});
  hist_log(here(), {"remote stp disabled vlans: ", range_text(remote), "\n"});

  const VlanSet twins = vlans_of(compat_vlans);
  hist_log(here(), {"compatcheck vlans: ", range_text(twins), "\n"});
  VlanSet pass;
  VlanSet fail;
  for (std::size_t i = 0; i < twins.size(); ++i) {
    fail[i] = twins[i] & (local[i] ^ remote[i]);
    pass[i] = twins[i] & ~fail[i];
  }
  write_record(pass_vlans, pass);
  write_record(fail_vlans, fail);
  hist_log(here(), {"compatcheck pass vlans: ", range_text(pass), "\n"});
  hist_log(here(), {"compatcheck fail vlans: ", range_text(fail), "\n"});
  return is_empty(fail) ? 0 : stp_mcec_get_type1_cfg_compat_chk_errcode(type);
}
