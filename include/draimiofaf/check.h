/*
 * Checks: compare the type-1 parameters of the local switch with those of its peer. Report: convert
 * an array to records for display.
 *
 * Both arrays are TLV arrays of the platform for the same scope (the switch or one interface). They
 * are not modified, and the caller keeps ownership. A check first compares the parameters that
 * apply in every mode, then those of the current mode, each time in the order of the local array;
 * the first difference determines the result. Parameters that only the peer has are not compared: a
 * local array without entries agrees with every other array, so run the check on both switches.
 * The current mode is the spanning-tree mode in the cache, not the one in the arrays. If no mode is
 * cached, or one other than MST and Rapid-PVST, every check through the common one fails:
 *
 *   in every mode   1 mode, 6 loop guard, 7 bridge assurance, 8 global port type,
 *                   10 interface port type (a difference on a pod host interface is ignored),
 *                   11 interface port guard
 *   MST             3, 4, 5 the region, 9 and 12 simulate PVST
 *   Rapid-PVST      2 VLANs with spanning tree disabled, for the twin VLANs only
 *
 * Values are compared byte by byte over the length of the local one; a shorter peer value differs.
 *
 * Result codes of all checks:
 *
 *   0                              all compared parameters agree
 *   STP_MCEC_ERR_TYPE1_<name>      the first parameter that differs
 *   STP_MCEC_ERR_INVALID_ARG       both arrays are NULL
 *   STP_MCEC_ERR_TYPE1_PARAM_NULL  one of the arrays is NULL
 *   STP_MCEC_ERR_FAILURE           the peer lacks a compared parameter; or (common check) no mode
 *                                  is cached, or one other than MST and Rapid-PVST
 *   a code of the TLV library      the local array could not be read
 *
 * Arguments of all checks:
 *
 *   caller_data        ignored
 *   check_stp_endis    1: compare the VLANs with spanning tree disabled; none of the next three
 *                      arguments may be NULL. Otherwise: skip them; the three may be NULL
 *   compat_vlans       bmp4096_t, read only: the twin VLANs; its size word is not read
 *   pass_vlans,        bmp4096_t, size in host byte order: the twin VLANs that agree and those that
 *   fail_vlans         do not. Written, on success and on failure, only if the values of parameter
 *                      2 were compared VLAN by VLAN: in Rapid-PVST, with check_stp_endis 1, if the
 *                      values differ and neither is shorter than a bmp4096_t.
 */
#ifndef DRAIMIOFAF_CHECK_H
#define DRAIMIOFAF_CHECK_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Checks the arrays of the switch, or of an interface that is not a pod host interface. */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_compat_check(uint32_t caller_data, void *local_param,
                                                      void *remote_param, uint32_t check_stp_endis,
                                                      const void *compat_vlans, void *pass_vlans,
                                                      void *fail_vlans);

/* Checks the arrays of an interface. The satellite manager decides whether if_index is a pod host
 * interface. */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_compat_check_with_ifindex(
    uint32_t if_index, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans);

/* Does the work of both functions above: checks the parameters of every mode, then those of the
 * cached mode. is_pod_hif is not 0 for a pod host interface. */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_compat_check_common(
    uint32_t is_pod_hif, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans);

/* Checks only the parameters of MST, whatever mode is cached. */
STP_MCEC_API uint32_t stp_mcec_mst_type1_cfg_compat_check(uint32_t is_pod_hif, uint32_t caller_data,
                                                          void *local_param, void *remote_param);

/* Checks only the parameter of Rapid-PVST, whatever mode is cached. */
STP_MCEC_API uint32_t stp_mcec_pvrst_type1_cfg_compat_check(
    uint32_t is_pod_hif, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans);

/*
 * Compares two sets of VLANs, for the twin VLANs only.
 *
 * type: the parameter, which determines the result code. local_vlans, remote_vlans: bmp4096_t, size
 * in network byte order, read only. The other records are as above; both results are always
 * written. No pointer may be NULL.
 *
 * Returns 0 if every twin VLAN is in both sets or in neither, else the mismatch code of type.
 */
STP_MCEC_API uint32_t stp_mcec_pvrst_endis_check_for_twin_vlans(uint16_t type, void *local_vlans,
                                                                void *remote_vlans,
                                                                const void *compat_vlans,
                                                                void *pass_vlans, void *fail_vlans);

/*
 * Converts a TLV array to records for display, one for each entry, in its order. Logs each value of
 * a parameter of the switch together with the cached one. The array is not modified, and the caller
 * keeps ownership. The value of MST_REGION_VI_MAP has no text: its param_value is "".
 *
 * param_info: not NULL. *param_info: the report, a block of 4 + count * sizeof(mcecm_app_info_t)
 * bytes, memory type mcecm_app_info_t. The caller frees it with mtrack_free, on success and on
 * failure.
 *
 * Returns 0 if every entry has a record.
 * STP_MCEC_ERR_INVALID_ARG: the array is NULL or empty, *param_info is unchanged; or the type of an
 *     entry is unknown: its record has no name and no value, and the records after it are zero.
 * STP_MCEC_RESULT_NO_BLOCK: the report could not be allocated; *param_info is NULL.
 * A code of the TLV library: an entry could not be read; its record and those after it are zero.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_get_param_info(void *param_array, void **param_info);

#ifdef __cplusplus
}
#endif

#endif
