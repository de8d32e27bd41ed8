/*
 * A host process: what a process that loads libdraimiofaf does with it, in the order in which it
 * would.
 *
 *   1. an update message has the switch's type-1 parameters
 *   2. a command arrives that would change one of them
 *   3. the switch's parameters are exported for the peer
 *   4. they are checked against the peer's
 *   5. and reported as text
 *
 * There is nothing to initialise: linking with the library loads it, and loading it registers it
 * with the platform's memory tracker and makes its cache. The platform must be there by then: as a
 * library that this program is linked with too, or inside the program.
 *
 * Everything here is called from one thread. The library takes no locks.
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

/* --- messages: on a switch they arrive, here the platform makes them --- */

#if __has_include("platform.h")
#include "platform.h" /* the platform in platform/ */

static void set_up(void) {
  static const platform_switch_t with_trunk = {.has_trunk = 1};
  platform_set_switch(&with_trunk);
}

static mts_msg_t *new_command(uint32_t cmd_id) {
  return platform_command(cmd_id, 1, NULL, 0);
}

static const char *answer_of(const mts_msg_t *msg) {
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

/* Of the only command so far. */
static const char *answer_of(const mts_msg_t *msg) {
  (void)msg;
  return standin_answer_count() > 0 ? standin_answer_at(0).text : NULL;
}

#define new_message standin_message
#define release_message standin_message_free
#endif

/* --- the process --- */

/* A parameter whose value is a word. Values are in network byte order in an array, a message and
 * the cache; everything else is in host byte order. */
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

/* Arrays of this page fit here on every platform: an entry takes its head and its value. */
enum { buffer_size = 256 };

/*
 * Make a TLV array of the settings, in a buffer that is all zero: zeros are an empty array. Its
 * size is the header's and every entry's footprint; only the platform knows these.
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

/* Hand a message to the library. What comes back is ours, whatever the result is, and goes back
 * with mtrack_free: each pointer that is not NULL. */
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

/* An update message: four words in host byte order, and the array behind them. */
static uint32_t take_update(void) {
  unsigned char payload[STP_MCEC_TYPE1_UPD_HDR_SIZE + buffer_size];
  const uint32_t length = make_array(payload + STP_MCEC_TYPE1_UPD_HDR_SIZE, ours);
  const uint32_t header[4] = {1 /* of the switch */, 0 /* interface */, 0 /* unread */, length};
  memcpy(payload, header, sizeof header);
  mts_msg_t *msg =
      new_message(STP_MCEC_MTS_OPC_TYPE1_UPD, payload, STP_MCEC_TYPE1_UPD_HDR_SIZE + length);
  puts("update message");
  const uint32_t result = extract(msg);
  release_message(msg);
  return result;
}

/* A command request: the library answers it, and its cache shows what will be. */
static uint32_t take_command(void) {
  mts_msg_t *msg = new_command(STP_MCEC_CMD_GBL_LOOPGUARD);
  puts("command: spanning-tree loopguard default");
  const uint32_t result = extract(msg);
  const char *answer = answer_of(msg);
  printf("  answer: %s\n", answer == NULL ? "none" : answer[0] == '\0' ? "accepted" : answer);
  release_message(msg);
  return result;
}

/* Check our array against the peer's, which still has loop guard off: the first parameter that
 * differs gives the result. The VLAN arguments are for Rapid-PVST, where the VLANs that both
 * switches share are compared. */
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
  if (take_update() != 0 || take_command() != 0) return 1;

  /* 1: the parameters of the switch. 0 and an interface index: those of the interface. */
  void *array = NULL;
  if (stp_mcec_type1_cfg_get_params(1, 0, &array) != 0) return 1;
  /* To the peer go these bytes: */
  printf("export\n  %u bytes\n", stp_mcec_get_mcec_params_tlv_size(1, 0));

  const uint32_t result = check(array);
  printf("check\n  result 0x%X%s\n", result,
         result == STP_MCEC_ERR_TYPE1_LOOP_GUARD ? ", loop guard differs" : "");
  report(array);
  mtrack_free(array);

  /* Unloading, at the end of the process, releases the cache. */
  return result == STP_MCEC_ERR_TYPE1_LOOP_GUARD ? 0 : 1;
}
