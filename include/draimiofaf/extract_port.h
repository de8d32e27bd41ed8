/*
 * Extraction of the port commands: the switch-wide defaults and the settings of interfaces. The
 * out-arguments, the answers and the result codes are those of extract.h.
 */
#ifndef DRAIMIOFAF_EXTRACT_PORT_H
#define DRAIMIOFAF_EXTRACT_PORT_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * STP_MCEC_CMD_GBL_LOOPGUARD, _BRIDGE_ASSURANCE, _MST_SIMULATE_PVST: 1 in the positive form, 0 in
 * the negating one.
 */
STP_MCEC_API uint32_t stp_mcec_extract_gbl_params(void *handle, uint32_t cmd_id,
                                                  uint8_t **tlv_array, uint32_t *num_extract_info,
                                                  uint32_t *is_cmd,
                                                  mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_GBL_EDGE, _NETWORK, _EDGE_BPDUGUARD, _EDGE_BPDUFILTER: set or clear a flag of the
 * cached word. Edge and network exclude each other; without both, ports are normal. Other bits of
 * the word stay.
 */
STP_MCEC_API uint32_t stp_mcec_extract_gbl_port_type_param(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_IF_*: the value of the command for every port of its interface ranges that is a
 * member of a multi-chassis port channel, one record for each and one entry for all. Nothing is
 * handed out when none is, nor when the first port is a pod host interface on an internal channel.
 * A list of no ranges may end behind its number of ranges.
 *
 * Ports are counted, then asked for again, and may leave their channels in between. While at least
 * one member is left, the result is 0 and the records that were not filled have valid 0. When none
 * is left, no record is valid and *tlv_array is NULL; the result is that of the last membership
 * query:
 *
 *   STP_MCEC_ERR_NO_MCEC_INFO   the ports are still in the ranges; the command is not answered
 *   0                           the platform has no port in the ranges any more, and the last one
 *                               that was counted was a member; the dispatch accepts the command.
 *                               When that one was none: as above.
 */
STP_MCEC_API uint32_t stp_mcec_extract_if_params(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                                                 uint32_t *num_extract_info, uint32_t *is_cmd,
                                                 mcecm_app_cmd_extract_info_t **extract_info);

/*
 * The parameter that an interface command sets and its value. Does not answer the command.
 *
 * *value: host byte order. *type: 10, 11 or 12. *is_del: 1 when the command is in its negating
 * form, else left alone.
 *
 * 0, or STP_MCEC_ERR_INVALID_ARG for another command or an unknown mode or guard: nothing is
 * written.
 */
STP_MCEC_API uint32_t stp_mcec_extract_if_param_val(void *handle, uint32_t cmd_id, uint32_t *value,
                                                    uint16_t *type, uint32_t *is_del);

#ifdef __cplusplus
}
#endif

#endif
