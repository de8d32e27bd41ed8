/*
 * A host process: uses libdraimiofaf in the usual order.
 *
 *   1. an update message contains the switch's type-1 parameters
 *   2. a command arrives that would change one of them
 *   3. the switch's parameters are exported for the peer
 *   4. they are compared with the peer's
 *   5. they are reported as text
 *
 * No initialisation is necessary: a process that is linked with the library loads it, and loading
 * registers it with the platform's memory tracker and creates its cache. The platform must be
 * available by then: in a library that this program is also linked with, or in the program itself.
 *
 * The library uses no locks: call it from one thread only.
 */
#include <draimiofaf/cache.h>
#include <draimiofaf/check.h>
#include <draimiofaf/extract.h>
#include <draimiofaf/foundation.h>
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/platform/mts.h>
#include <draimiofaf/platform/tlv.h>
#include <stdio.h>
#include <string.h>

/* --- messages: created by the platform here, received on a switch --- */

#if __has_include("platform.h")
#include "platform.h" /* the platform in platform/ */

static void set_up(void) {
  static const platform_switch_t with_trunk = {.has_trunk = 1};
  platform_set_switch(&with_trunk);
}

static mts_msg_t *new_command(uint32_t cmd_id) {
  return platform_command(cmd_id, 1, NULL, 0);
}

static const char *get_answer(const mts_msg_t *msg) {
  return platform_answer(msg);
}

#define new_message platform_message
#define release_message platform_message_free

#else
#include <draimiofaf/standin/standin.h>

static void set_up(void) {
  standin_reset();
  standin_set_trunk(1);
}

static mts_msg_t *new_command(uint32_t cmd_id) {
  return standin_command(cmd_id, 1, NULL, 0);
}

/* Returns the answer to the only command so far. */
static const char *get_answer(const mts_msg_t *msg) {
  (void)msg;
  return standin_answer_count() > 0 ? standin_answer_at(0).text : NULL;
}

#define new_message standin_message
#define release_message standin_message_free
#endif

/* --- the process --- */

/* A parameter whose value is a word. Values in an array, a message and the cache are in network
 * byte order; everything else is in host byte order. */
typedef struct setting {
  uint16_t type;
  uint8_t value[4];
} setting_t;

static const setting_t ours[] = {
    {STP_MCEC_TYPE1_STP_MODE, {0, 0, 0, STP_MCEC_STP_MODE_MST}},
    {STP_MCEC_TYPE1_MST_REGION_REVISION, {0, 0, 0, 7}},
    {STP_MCEC_TYPE1_LOOP_GUARD, {0, 0, 0, 0}},
};
enum { settings = sizeof ours / sizeof ours[0] };

/* Enough for the arrays of this example on every platform. */
enum { buffer_size = 256 };

/*
 * Writes a TLV array of the settings to a buffer. A buffer filled with zeros is an empty array.
 * Returns the size of the array: its header and the footprint of every entry, which only the
 * platform knows.
 */
static uint32_t make_array(void *buffer, const setting_t *from) {
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  memset(buffer, 0, buffer_size);
  for (int i = 0; i < settings; ++i) {
    size += tlv_aligned_data_size_get(sizeof from[i].value);
    if (size > buffer_size ||
        tlv_aligned_array_add_tlv(buffer, size, from[i].type, sizeof from[i].value, from[i].value,
                                  TLV_ALIGNED_FLAG) != 0) {
      return 0;
    }
  }
  return size;
}

/* Passes a message to the library. The caller owns what it returns, whatever the result is: frees
 * each pointer that is not NULL with mtrack_free. */
static uint32_t extract(mts_msg_t *msg) {
  uint8_t *array = NULL;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *records = NULL;
  const uint32_t result =
      stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &records);

  printf("  result 0x%X\n", result);
  for (uint32_t i = 0; records != NULL && i < count; ++i) {
    if (records[i].valid == 0) continue;
    printf("  %s: %s\n", is_cmd != 0 ? "to check" : "stored",
           stp_mcec_type1_cfg_type_to_str((uint16_t)records[i].type));
  }
  if (records != NULL) mtrack_free(records);
  if (array != NULL) mtrack_free(array);
  return result;
}

/* Passes an update message: four words in host byte order, followed by the array. */
static uint32_t process_update(void) {
  unsigned char payload[STP_MCEC_TYPE1_UPD_HDR_SIZE + buffer_size];
  const uint32_t length = make_array(payload + STP_MCEC_TYPE1_UPD_HDR_SIZE, ours);
  const uint32_t header[4] = {1 /* of the switch */, 0 /* interface */, 0 /* unused */, length};
  memcpy(payload, header, sizeof header);
  mts_msg_t *msg =
      new_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload, STP_MCEC_TYPE1_UPD_HDR_SIZE + length);
  puts("update message");
  const uint32_t result = extract(msg);
  release_message(msg);
  return result;
}

/* Passes a command request: the library answers it, and writes the new value to its cache. */
static uint32_t process_command(void) {
  mts_msg_t *msg = new_command(STP_MCEC_CMD_GBL_LOOPGUARD);
  puts("command: spanning-tree loopguard default");
  const uint32_t result = extract(msg);
  const char *answer = get_answer(msg);
  printf("  answer: %s\n", answer == NULL ? "none" : answer[0] == '\0' ? "accepted" : answer);
  release_message(msg);
  return result;
}

/* Compares our array with the peer's, which still has loop guard off. The first parameter that
 * differs determines the result. The VLAN arguments are for Rapid-PVST, which compares the VLANs
 * that both switches carry. */
static uint32_t check(void *local) {
  static const bmp4096_t shared_vlans = {sizeof shared_vlans.bmp, {0}};
  bmp4096_t pass, fail;
  unsigned char peer[buffer_size];
  if (make_array(peer, ours) == 0) return STP_MCEC_ERR_FAILURE;
  return stp_mcec_type1_cfg_compat_check(0, local, peer, 1, &shared_vlans, &pass, &fail);
}

static void report(void *array) {
  void *block = NULL;
  const uint32_t result = stp_mcec_type1_cfg_get_param_info(array, &block);
  const mcecm_app_info_report_t *found = block;
  printf("report\n  result 0x%X\n", result);
  for (uint32_t i = 0; found != NULL && i < found->count; ++i) {
    printf("  %s: %s\n", found->records[i].param_name, found->records[i].param_value);
  }
  if (block != NULL) mtrack_free(block);
}

int main(void) {
  set_up();
  if (process_update() != 0 || process_command() != 0) return 1;

  /* 1: the parameters of the switch. For an interface, pass 0 and its index. */
  void *array = NULL;
  if (stp_mcec_type1_cfg_get_params(1, 0, &array) != 0) return 1;
  /* The size of the array to send to the peer. */
  printf("export\n  %u bytes\n", stp_mcec_get_mcec_params_tlv_size(1, 0));

  const uint32_t result = check(array);
  printf("check\n  result 0x%X%s\n", result,
         result == STP_MCEC_ERR_TYPE1_LOOP_GUARD ? ", loop guard differs" : "");
  report(array);
  mtrack_free(array);

  /* Unloading, at the end of the process, releases the cache. */
  return result == STP_MCEC_ERR_TYPE1_LOOP_GUARD ? 0 : 1;
}
