// The check of what counts in Rapid-PVST: the VLANs on which spanning tree is disabled, VLAN by
// VLAN over those that the caller names because both switches carry them.

#include "check/compare.h"
#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "foundation/bitmap.h"

using namespace mcec;

namespace {

// The values of parameter 2 against each other. A value that is no whole bitmap record disagrees
// without a look at its VLANs.
Ended compare_disabled_vlans(const char *operation, const Tlv &local, const void *remote,
                             const void *compat_vlans, void *pass_vlans, void *fail_vlans) {
  Tlv peer{};
  if (const Ended absent = check::find_at_peer(operation, remote, local.type, peer)) return absent;
  if (check::agree(local.value, peer.value)) return go_on;
  const bool whole = std::min(local.value.size(), peer.value.size()) >= bitmap_record_size;
  if (whole &&
      stp_mcec_pvrst_endis_check_for_twin_vlans(
          local.type, const_cast<uint8_t *>(local.value.data()),
          const_cast<uint8_t *>(peer.value.data()), compat_vlans, pass_vlans, fail_vlans) == 0) {
    return 0;
  }
  return check::mismatch(operation, local.type);
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
  MCEC_LOG(__func__, "PVRST type-1 compat check\n");
  if (const Ended missing = check::missing_array(__func__, local_param, remote_param)) {
    return *missing;
  }
  const char *const operation = __func__;
  const Ended ended = check::walk_compared(
      local_param, Compared::in_rapid_pvst,
      [=](uint32_t code) { return check::log_unread(operation, code); },
      [=](const Tlv &tlv) -> Ended {
        if (check_stp_endis != 1) return 0;
        return compare_disabled_vlans(operation, tlv, remote_param, compat_vlans, pass_vlans,
                                      fail_vlans);
      });
  if (ended) return *ended;
  MCEC_LOG(__func__, "PVRST type-1 compat check passed\n");
  return 0;
}

extern "C" uint32_t stp_mcec_pvrst_endis_check_for_twin_vlans(uint16_t type, void *local_vlans,
                                                              void *remote_vlans,
                                                              const void *compat_vlans,
                                                              void *pass_vlans, void *fail_vlans) {
  const VlanSet local = vlans_of(local_vlans);
  const VlanSet remote = vlans_of(remote_vlans);
  MCEC_LOG(__func__, "local stp disabled vlans: %s\n", text_of(local));
  MCEC_LOG(__func__, "remote stp disabled vlans: %s\n", text_of(remote));

  const VlanSet twins = vlans_of(compat_vlans);
  MCEC_LOG(__func__, "compatcheck vlans: %s\n", text_of(twins));
  VlanSet pass{};
  VlanSet fail{};
  for (std::size_t i = 0; i < twins.size(); ++i) {
    fail[i] = twins[i] & (local[i] ^ remote[i]);
    pass[i] = twins[i] & ~fail[i];
  }
  write_record(pass_vlans, pass);
  write_record(fail_vlans, fail);
  MCEC_LOG(__func__, "compatcheck pass vlans: %s\n", text_of(pass));
  MCEC_LOG(__func__, "compatcheck fail vlans: %s\n", text_of(fail));
  return count(fail) == 0 ? 0 : stp_mcec_get_type1_cfg_compat_chk_errcode(type);
}
