/*
 * Extraction of the port commands: the global defaults and the settings of interfaces. Output
 * arguments, answers and result codes are those of extract.h.
 */
#ifndef DRAIMIOFAF_EXTRACT_PORT_H
#define DRAIMIOFAF_EXTRACT_PORT_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * STP_MCEC_CMD_GBL_LOOPGUARD, _BRIDGE_ASSURANCE, _MST_SIMULATE_PVST: sets the parameter to 1 in the
 * positive form, to 0 in the negated form.
 */
STP_MCEC_API uint32_t stp_mcec_extract_gbl_params(void *handle, uint32_t cmd_id,
                                                  uint8_t **tlv_array, uint32_t *num_extract_info,
                                                  uint32_t *is_cmd,
                                                  mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_GBL_EDGE, _NETWORK, _EDGE_BPDUGUARD, _EDGE_BPDUFILTER: sets or clears one flag of
 * the cached word. Edge and network exclude each other; without either, ports are normal. Other
 * bits of the word do not change.
 */
STP_MCEC_API uint32_t stp_mcec_extract_gbl_port_type_param(
    void *handle, uint32_t cmd_id, uint8_t **tlv_array, uint32_t *num_extract_info,
    uint32_t *is_cmd, mcecm_app_cmd_extract_info_t **extract_info);

/*
 * STP_MCEC_CMD_IF_*: sets the value of the command on every port of its interface ranges that is a
 * member of a multi-chassis port channel. Returns one record for each such port and one entry for
 * all. Returns nothing if there is no such port, or if the first port is a pod host interface on an
 * internal channel. A list without ranges may end after its number of ranges.
 *
 * The ports are counted first and queried again for the records; they may leave their channels in
 * between. While at least one member is left, the result is 0 and unfilled records have valid 0. If
 * none is left, no record is valid and *tlv_array is NULL; the result is that of the last
 * membership query:
 *
 *   STP_MCEC_ERR_NO_MCEC_INFO   the ports are still in the ranges, or the last port of the count
 *                               was not a member; the command is not answered
 *   0                           the platform no longer has a port in the ranges, and the last port
 *                               of the count was a member; the dispatch accepts the command
 */
STP_MCEC_API uint32_t stp_mcec_extract_if_params(void *handle, uint32_t cmd_id, uint8_t **tlv_array,
                                                 uint32_t *num_extract_info, uint32_t *is_cmd,
                                                 mcecm_app_cmd_extract_info_t **extract_info);

/*
 * Finds the parameter that an interface command sets, and its value. Does not answer the command.
 *
 * *value: host byte order. *type: 10, 11 or 12. *is_del: set to 1 if the command is in its negated
 * form, else not written.
 *
 * Returns 0, or STP_MCEC_ERR_INVALID_ARG for another command or an unknown mode or guard; then
 * nothing is written.
 */
STP_MCEC_API uint32_t stp_mcec_extract_if_param_val(void *handle, uint32_t cmd_id, uint32_t *value,
                                                    uint16_t *type, uint32_t *is_del);

#ifdef __cplusplus
}
#endif

#endif
