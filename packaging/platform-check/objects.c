/*
 * Checks which object defines each name. The names are short, and another library of a process may
 * define one of them, too: the loader uses the first that it finds, without a message.
 *
 * This file is position-independent, so that an address is the one that the loader found.
 */
#include <dlfcn.h>
#include <draimiofaf/platform/avl.h>
#include <draimiofaf/platform/cmd_req.h>
#include <draimiofaf/platform/if_index.h>
#include <draimiofaf/platform/im.h>
#include <draimiofaf/platform/mcecm.h>
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/platform/satmgr.h>
#include <draimiofaf/platform/sdwrap.h>
#include <draimiofaf/platform/syserr.h>
#include <draimiofaf/platform/sysmgr.h>
#include <draimiofaf/platform/tlv.h>
#include <fnmatch.h>
#include <stdio.h>
#include <string.h>

#include "check.h"

static const struct {
  const char *name;
  uintptr_t address;
} names[] = {
#define ROW(name) \
  { #name, (uintptr_t) & (name) }
    ROW(mtrack_init),
    ROW(mtrack_uninit),
    ROW(mtrack_alloc),
    ROW(mtrack_free),
    ROW(sdwrap_hist_init_for_uuid),
    ROW(sdwrap_his_log_event_for_uuid_inst),
    ROW(syserr2str),
    ROW(avl_create),
    ROW(avl_destroy),
    ROW(avl_find),
    ROW(avl_insert),
    ROW(avl_delete),
    ROW(tlv_aligned_data_size_get),
    ROW(tlv_aligned_array_add_tlv),
    ROW(tlv_aligned_array_get_num_tlvs),
    ROW(tlv_aligned_array_get_next_tlv),
    ROW(tlv_aligned_array_find_tlv),
    ROW(mts_opc_get),
    ROW(mts_opc_name_get),
    ROW(mts_payload_get),
    ROW(cmd_req_handle_get_1),
    ROW(cmd_req_handle_get_2),
    ROW(cmd_req_cmdId_getnext),
    ROW(cmd_req_attr_get),
    ROW(cmd_req_attr_getnext),
    ROW(cmd_req_action_is_set),
    ROW(cmd_req_action_is_del),
    ROW(cmd_rsp_send_ok),
    ROW(cmd_rsp_send_nok),
    ROW(mcecm_sdb_generate_if_key),
    ROW(mcecm_sdb_generate_mct_key),
    ROW(mcecm_sdb_info_get),
    ROW(mcecm_api_is_internal_mcec),
    ROW(mcec_stp_vlan_count),
    ROW(if_index_get_type),
    ROW(if_index_get_num_ports_in_if_index_range),
    ROW(if_index_get_if_index_in_range),
    ROW(im_get_ifindex_layermode_list),
    ROW(sysmgr_slc_get),
    ROW(satmgr_if_is_pod_port),
#undef ROW
};
enum { name_count = sizeof names / sizeof names[0] };

_Static_assert(name_count == 40, "the names of a platform");

/* Returns the file name of the object that contains an address. */
static const char *object_of(uintptr_t address) {
  Dl_info found, program;
  if (dladdr((const void *)address, &found) == 0) return "unknown";
  if (dladdr((const void *)(uintptr_t)&object_of, &program) != 0 &&
      found.dli_fbase == program.dli_fbase) {
    return PLATFORM_CHECK_PROGRAM;
  }
  const char *slash = strrchr(found.dli_fname, '/');
  return slash != NULL ? slash + 1 : found.dli_fname;
}

static const char *expected_object(const char *name) {
  const platform_check_object_t *row = platform_check_objects;
  while (row->names != NULL && fnmatch(row->names, name, 0) != 0) ++row;
  return row->names != NULL ? row->object : "a row in platform_check_objects";
}

static void verify_objects(void) {
  char unexpected[300] = "";
  for (int i = 0; i < name_count; ++i) {
    const char *object = object_of(names[i].address);
    const char *expected = expected_object(names[i].name);
    printf("# %-42s %s\n", names[i].name, object);
    if (fnmatch(expected, object, 0) == 0) continue;
    const size_t length = strlen(unexpected);
    snprintf(unexpected + length, sizeof unexpected - length, "%s%s is bound to %s, expected %s",
             length > 0 ? "; " : "", names[i].name, object, expected);
  }
  fflush(stdout);
  REQUIRE(unexpected[0] == '\0', "%s", unexpected);
}

const contract_t object_contracts[] = {
    {"objects", "each of the 40 names is bound to the expected object", verify_objects},
    {NULL, NULL, NULL},
};
