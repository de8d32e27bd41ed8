/*
 * Extraction: which type-1 parameters would a pending command or an update message set, and to
 * what? The new values are written to the cache before they are handed out; a command is answered.
 *
 * msg: a message of the platform. handle: a command request, built from such a message. Both stay
 * the caller's.
 *
 * The four out-arguments of every extraction, none of which may be NULL; set what they point to to
 * NULL and 0 before:
 *
 *   tlv_array         the new values, a TLV array in network byte order; of a command, each
 *                     parameter once
 *   num_extract_info  how many records there are
 *   is_cmd            1: they come from a command; 0: from an update message
 *   extract_info      the records, one for each parameter and interface
 *
 * Where there is nothing to check they are left alone (a dispatched command has 0 records then).
 * What an extraction has stored in *tlv_array and *extract_info is the caller's to release with
 * mtrack_free, on success and on failure alike.
 *
 * A command is answered once: positively by the dispatch when the result is 0, negatively with a
 * message for the user by the extractor that refuses it. Not answered: an unknown command, a
 * message without a usable request, MST region reset under a wrong identifier, an interface command
 * whose member ports all left their channels meanwhile (see stp_mcec_extract_if_params).
 *
 * Result codes of all extractions:
 *
 *   0                             done; the cache shows what will be once the command is applied
 *   STP_MCEC_ERR_INVALID_ARG      unknown opcode or command; a port mode or guard that is none; a
 *                                 message without a usable request; a list attribute is missing,
 *                                 or shorter than its number of ranges requires
 *   STP_MCEC_ERR_NO_MEMORY        a cache entry could not be allocated
 *   STP_MCEC_RESULT_NO_BLOCK      a block for the caller could not be allocated
 *   STP_MCEC_RESULT_PVRST_REFUSED the mode command was refused
 *   STP_MCEC_ERR_NO_MCEC_INFO     an interface command lost its member ports
 *   a code of the TLV library     an entry could not be read, or not be added
 *
 * An attribute that is too short for the word it should have counts as absent. On a failure the
 * cache keeps what was written before the step that failed; a command that is refused for what it
 * asks has written nothing. The memory types of the blocks are those of STP_MCEC_LIB_MEM_TYPES,
 * records and array of their own for each extractor.
 */
#ifndef DRAIMIOFAF_EXTRACT_H
#define DRAIMIOFAF_EXTRACT_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The entry: a command request (opcode STP_MCEC_MTS_OPC_CMD_REQ of platform/mts.h) goes to the
 * dispatch, an update message (STP_MCEC_MTS_OPC_TYPE1_UPD) to its extractor. A request handle of
 * more than 64 KiB counts as none.
 *
 *   uint8_t *array = NULL;
 *   uint32_t count = 0, is_cmd = 0;
 *   mcecm_app_cmd_extract_info_t *records = NULL;
 *   uint32_t result = stp_mcec_type1_cfg_param_extractor(msg, &array, &count, &is_cmd, &records);
 *   ...
 *   mtrack_free(records);   // each when it is not NULL
 *   mtrack_free(array);
 */
STP_MCEC_API uint32_t
stp_mcec_type1_cfg_param_extractor(void *msg, uint8_t **tlv_array, uint32_t *num_extract_info,
                                   uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info);

/*
 * The dispatch: hand a command to its extractor (see STP_MCEC_COMMANDS) and answer it positively
 * when that returns 0. A gated command is answered positively at once while no multi-chassis trunk
 * exists. Identifier 62 is gated and refused with an answer; any other unknown one is not answered.
 * msg is not read.
 */
STP_MCEC_API uint32_t stp_mcec_param_extractor_from_cli(
    void *msg, void *handle, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info);

/*
 * Update message: store every parameter it carries, and hand out a copy of its array with one
 * record for each entry. The payload; the words of its header are in host byte order, the values in
 * its array in network byte order:
 *
 *   0          4          8          12         16                      16 + length
 *   +----------+----------+----------+----------+-----------------------+
 *   | is       | if_index | unread   | length   | TLV array             |
 *   | global   |          |          |          |                       |
 *   +----------+----------+----------+----------+-----------------------+
 *
 * Entries are cached under if_index as it stands. The message is no command and is not answered.
 *
 * STP_MCEC_ERR_INVALID_ARG: no payload, length 0 or no entry (the out-arguments are left alone); or
 * an entry reaches past length (the records are handed out, the array is not).
 */
STP_MCEC_API uint32_t stp_mcec_param_extractor_from_stp_type1_upd(
    void *msg, uint8_t **tlv_array, uint32_t *num_extract_info, uint32_t *is_cmd,
    mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_STP_MODE: the mode. Rapid-PVST without the attribute and in the negating form. Any
 * word of the attribute is cached; one that is neither MST nor Rapid-PVST makes every later check
 * fail with STP_MCEC_ERR_FAILURE.
 *
 * STP_MCEC_RESULT_PVRST_REFUSED: Rapid-PVST with more than STP_MCEC_PVRST_MAX_USER_VLANS user
 * VLANs.
 */
STP_MCEC_API uint32_t stp_mcec_extract_stp_mode_param(void *handle, uint32_t cmd_id,
                                                      uint8_t **tlv_array,
                                                      uint32_t *num_extract_info, uint32_t *is_cmd,
                                                      mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_STP_ENDIS: spanning tree enabled (positive form) or disabled on a list of VLANs; the
 * array carries all VLANs on which it is disabled then. VLANs above 4095 are left out.
 */
STP_MCEC_API uint32_t stp_mcec_extract_stp_endis_param(void *handle, uint32_t cmd_id,
                                                       uint8_t **tlv_array,
                                                       uint32_t *num_extract_info, uint32_t *is_cmd,
                                                       mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_MST_REGION_RESET: name, revision and VLAN map to their defaults, as far as they are
 * cached; records and entries name exactly those. The entry of the VLAN map has 80 bytes.
 */
STP_MCEC_API uint32_t stp_mcec_extract_reset_mst_region_cfg(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info);

#ifdef __cplusplus
}
#endif

#endif
