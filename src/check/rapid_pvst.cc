// The check of the Rapid-PVST parameter: compares the VLANs with spanning tree disabled, one by
// one, for the twin VLANs, which the caller passes.

#include "check/compare.h"
#include "draimiofaf/check.h"
#include "foundation/bitmap.h"

using namespace mcec;

namespace {

// A value shorter than a bitmap record differs; its VLANs are not compared. Copies the records
// because the exported comparison, whose name is in the log lines, takes writable ones.
bool twin_vlans_agree(const Tlv &local, const Tlv &peer, const void *compat_vlans, void *pass_vlans,
                      void *fail_vlans) {
  if (std::min(local.value.size(), peer.value.size()) < sizeof(bmp4096_t)) return false;
  auto local_record = load<bmp4096_t>(local.value.data());
  auto peer_record = load<bmp4096_t>(peer.value.data());
  return stp_mcec_pvrst_endis_check_for_twin_vlans(local.type, &local_record, &peer_record,
                                                   compat_vlans, pass_vlans, fail_vlans) == 0;
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
    const Parameter *parameter = check::find_compared(STP_MCEC_COMPARED_IN_RAPID_PVST, tlv.type);
    if (parameter == nullptr) continue;
    if (check_stp_endis != 1) return 0;
    Tlv peer{};
    const auto absent = check::find_peer_value(here(), remote_param, tlv.type, peer);
    if (absent) return *absent;
    if (check::values_agree(tlv.value, peer.value)) continue;
    return twin_vlans_agree(tlv, peer, compat_vlans, pass_vlans, fail_vlans)
               ? 0
               : check::log_mismatch(here(), *parameter);
  }
  if (walk.code != 0) return log_failure(here(), not_read, walk.code);
  hist_log(here(), "PVRST type-1 compat check passed\n");
  return 0;
}

extern "C" uint32_t stp_mcec_pvrst_endis_check_for_twin_vlans(uint16_t type, void *local_vlans,
                                                              void *remote_vlans,
                                                              const void *compat_vlans,
                                                              void *pass_vlans, void *fail_vlans) {
  const VlanSet local = vlans_of(local_vlans);
  const VlanSet remote = vlans_of(remote_vlans);
  hist_log(here(), "local stp disabled vlans: %s\n", range_text(local));
  hist_log(here(), "remote stp disabled vlans: %s\n", range_text(remote));

  const VlanSet twins = vlans_of(compat_vlans);
  hist_log(here(), "compatcheck vlans: %s\n", range_text(twins));
  VlanSet pass;
  VlanSet fail;
  for (std::size_t i = 0; i < twins.size(); ++i) {
    fail[i] = twins[i] & (local[i] ^ remote[i]);
    pass[i] = twins[i] & ~fail[i];
  }
  write_record(pass_vlans, pass);
  write_record(fail_vlans, fail);
  hist_log(here(), "compatcheck pass vlans: %s\n", range_text(pass));
  hist_log(here(), "compatcheck fail vlans: %s\n", range_text(fail));
  return is_empty(fail) ? 0 : mismatch_of(type);
}
