/*
 * Extraction: find the type-1 parameters that a pending command or an update message sets, and
 * their new values. The values are written to the cache before they are returned; a command is
 * answered.
 *
 * msg: a message of the platform. handle: a command request, built from such a message. The caller
 * keeps ownership of both.
 *
 * Every extraction has four output arguments, none of which may be NULL. Initialise the variables
 * to NULL and 0:
 *
 *   tlv_array         the new values, a TLV array in network byte order; for a command, each
 *                     parameter once
 *   num_extract_info  the number of records
 *   is_cmd            1: the records are from a command; 0: from an update message
 *   extract_info      the records, one for each parameter and interface
 *
 * If there is nothing to check, they are not written, except that a dispatched command sets the
 * number of records to 0. The caller frees *tlv_array and *extract_info with mtrack_free, on
 * success and on failure.
 *
 * A command is answered once: the dispatch accepts it if the result is 0; the extractor that fails
 * rejects it with a message for the user. These are not answered: an unknown command, a message
 * without a usable request, MST region reset with a wrong identifier, an interface command whose
 * member ports have all left their channels meanwhile (see stp_mcec_extract_if_params).
 *
 * Result codes of all extractions:
 *
 *   0                             success; the cache has the state after the command is applied
 *   STP_MCEC_ERR_INVALID_ARG      unknown opcode or command; unknown port mode or guard; a message
 *                                 without a usable request; a list attribute that is missing, or
 *                                 too short for its number of ranges
 *   STP_MCEC_ERR_NO_MEMORY        a cache entry could not be allocated
 *   STP_MCEC_RESULT_NO_BLOCK      a block for the caller could not be allocated
 *   STP_MCEC_RESULT_PVRST_REFUSED the mode command was rejected
 *   STP_MCEC_ERR_NO_MCEC_INFO     the ports of an interface command are no longer members
 *   a code of the TLV library     an entry could not be read or added
 *
 * An attribute that is too short for its word is treated as absent. On failure the cache keeps what
 * was written before the step that failed; a command that is rejected because of its arguments has
 * written nothing. The memory types of the blocks are listed at STP_MCEC_LIB_MEM_TYPES; each
 * extractor has its own types for records and array.
 */
#ifndef DRAIMIOFAF_EXTRACT_H
#define DRAIMIOFAF_EXTRACT_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The entry point: passes a command request (opcode STP_MCEC_MTS_OPC_CMD_REQ of platform/mts.h) to
 * the dispatch, and an update message (STP_MCEC_MTS_OPC_TYPE1_UPD) to its extractor. A request
 * whose handle needs more than 64 KiB is treated as unusable.
 *
 *   uint8_t *array = NULL;
 *   uint32_t count = 0, is_cmd = 0;
 *   mcecm_app_cmd_extract_info_t *records = NULL;
 *   uint32_t result = stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &records);
 *   ...
 *   if (records != NULL) mtrack_free(records);
 *   if (array != NULL) mtrack_free(array);
 */
STP_MCEC_API uint32_t
stp_mcec_type1_cfg_param_extractor(void *msg, uint8_t **tlv_array, uint32_t *num_extract_info,
                                   uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info);

/*
 * The dispatch: calls the extractor of a command (see STP_MCEC_COMMANDS), and accepts the command
 * if the extractor returns 0. While no multi-chassis trunk exists, a gated command is accepted at
 * once. Identifier 62 is gated, and rejected with an answer; other unknown identifiers are not
 * answered. msg is not read.
 */
STP_MCEC_API uint32_t stp_mcec_param_extractor_from_cli(
    void *msg, void *handle, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info);

/*
 * Update message: stores every parameter in the message, and returns a copy of its array with one
 * record for each entry. Layout of the payload; the words of the header are in host byte order, the
 * values in the array in network byte order:
 *
 *   0          4          8          12         16                      16 + length
 *   +----------+----------+----------+----------+-----------------------+
 *   | is       | if_index | unused   | length   | TLV array             |
 *   | global   |          |          |          |                       |
 *   +----------+----------+----------+----------+-----------------------+
 *
 * Entries are cached under if_index, also if is global is set. An update message is not a command
 * and is not answered.
 *
 * STP_MCEC_ERR_INVALID_ARG: no payload, length 0 or no entries (the output arguments are not
 * written); or an entry extends past length (the records are returned, the array is not).
 */
STP_MCEC_API uint32_t stp_mcec_param_extractor_from_stp_type1_upd(
    void *msg, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_STP_MODE: sets the mode. Without the attribute, and in the negated form, the mode is
 * Rapid-PVST. Any value of the attribute is cached; one other than MST and Rapid-PVST makes every
 * later check fail with STP_MCEC_ERR_FAILURE.
 *
 * STP_MCEC_RESULT_PVRST_REFUSED: Rapid-PVST with more than STP_MCEC_PVRST_MAX_USER_VLANS user
 * VLANs.
 */
STP_MCEC_API uint32_t stp_mcec_extract_stp_mode_param(void *handle, uint32_t cmd_id,
                                                      uint8_t **tlv_array,
                                                      uint32_t *num_extract_info, uint32_t *is_cmd,
                                                      mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_STP_ENDIS: enables (positive form) or disables spanning tree on a list of VLANs. The
 * array contains all VLANs on which it is disabled afterwards. VLANs above 4095 are ignored.
 */
STP_MCEC_API uint32_t stp_mcec_extract_stp_endis_param(void *handle, uint32_t cmd_id,
                                                       uint8_t **tlv_array,
                                                       uint32_t *num_extract_info, uint32_t *is_cmd,
                                                       mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_MST_REGION_RESET: resets name, revision and VLAN map to their defaults. Only those
 * that are cached are reset and returned. The entry of the VLAN map has 80 bytes.
 */
STP_MCEC_API uint32_t stp_mcec_extract_reset_mst_region_cfg(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info);

#ifdef __cplusplus
}
#endif

#endif
