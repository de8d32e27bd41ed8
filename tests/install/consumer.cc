// A C++ process that knows the installed tree only: every header, and a round through a parameter.

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
#include <draimiofaf/standin/standin.h>
#include <draimiofaf/stp.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <vector>

int main() {
  const uint8_t on[4] = {0, 0, 0, 1};
  std::vector<uint8_t> array(STP_MCEC_TLV_ARRAY_HDR_SIZE + tlv_aligned_data_size_get(sizeof on));
  tlv_aligned_array_add_tlv(array.data(), uint32_t(array.size()), STP_MCEC_TYPE1_LOOP_GUARD,
                            sizeof on, on, 1);
  if (stp_mcec_type1_cfg_cache_rebuild(array.data(), 0, 0) != 0) return 1;
  void *exported = nullptr;
  if (stp_mcec_type1_cfg_get_params(1, 0, &exported) != 0) return 1;
  const std::unique_ptr<void, void (*)(void *)> owned(exported, mtrack_free);
  void *report = nullptr;
  if (stp_mcec_type1_cfg_get_param_info(exported, &report) != 0) return 1;
  std::cout << static_cast<mcecm_app_info_report_t *>(report)->records[0].param_name << ": "
            << static_cast<mcecm_app_info_report_t *>(report)->records[0].param_value << '\n';
  mtrack_free(report);
  return standin_live_blocks(STP_MCEC_LIB_MEM_mcecm_app_info_t) == 0 ? 0 : 1;
}
