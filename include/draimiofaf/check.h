/*
 * Checks: do the type-1 parameters of the local switch and of its peer agree? And the report, which
 * turns an array into records for display.
 *
 * The arrays are TLV arrays of the platform, local and peer's, both of one scope (the switch or one
 * interface); they stay the caller's and are not written. First the parameters of every mode are
 * compared, then those of the mode, each time in the order of the local array; the first that
 * disagrees decides the result. Parameters that only the peer has are not compared: a local array
 * without entries agrees with any other, so let both switches check. Which parameters count depends
 * on the spanning-tree mode in the cache, not in the arrays; without one, or with one that is
 * neither MST nor Rapid-PVST, every check through the common one fails:
 *
 *   in every mode   1 mode, 6 loop guard, 7 bridge assurance, 8 global port type,
 *                   10 interface port type (a difference on a pod host interface is ignored),
 *                   11 interface port guard
 *   MST             3, 4, 5 the region, 9 and 12 simulate PVST
 *   Rapid-PVST      2 VLANs with spanning tree disabled, over the twin VLANs only
 *
 * Values are compared byte by byte over the length of the local one; a peer's value that is
 * shorter differs from it.
 *
 * Result codes of all checks:
 *
 *   0                              what was compared agrees
 *   STP_MCEC_ERR_TYPE1_<name>      the first parameter that differs
 *   STP_MCEC_ERR_INVALID_ARG       both arrays are NULL
 *   STP_MCEC_ERR_TYPE1_PARAM_NULL  one of the arrays is NULL
 *   STP_MCEC_ERR_FAILURE           the peer lacks a parameter that is compared; or (common check)
 *                                  no mode is cached, or one that is neither MST nor Rapid-PVST
 *   a code of the TLV library      the local array could not be read
 *
 * Arguments of all checks:
 *
 *   caller_data        not read
 *   check_stp_endis    1: compare the VLANs with spanning tree disabled, and none of the three
 *                      that follow may be NULL; else leave them out, and the three may be NULL
 *   compat_vlans       bmp4096_t, read only: the twin VLANs; its size word is not read
 *   pass_vlans,        bmp4096_t, size in host byte order: the twin VLANs that agree and those that
 *   fail_vlans         do not. Written, on success and on failure, only when the values of
 *                      parameter 2 were compared VLAN by VLAN: in Rapid-PVST, with check_stp_endis
 *                      1, and when the values differ and neither is shorter than a bmp4096_t.
 */
#ifndef DRAIMIOFAF_CHECK_H
#define DRAIMIOFAF_CHECK_H

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The check of arrays that belong to the switch, or to an interface that is no pod host interface.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_compat_check(uint32_t caller_data, void *local_param,
                                                      void *remote_param, uint32_t check_stp_endis,
                                                      const void *compat_vlans, void *pass_vlans,
                                                      void *fail_vlans);

/* The check of an interface's arrays. The satellite manager is asked whether if_index is a pod host
 * interface. */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_compat_check_with_ifindex(
    uint32_t if_index, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans);

/* What both lead to: the parameters of every mode, then the check of the cached mode. is_pod_hif is
 * not 0 for a pod host interface. */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_compat_check_common(
    uint32_t is_pod_hif, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans);

/* The parameters of MST alone, whatever mode is cached. */
STP_MCEC_API uint32_t stp_mcec_mst_type1_cfg_compat_check(uint32_t is_pod_hif, uint32_t caller_data,
                                                          void *local_param, void *remote_param);

/* The parameter of Rapid-PVST alone, whatever mode is cached. */
STP_MCEC_API uint32_t stp_mcec_pvrst_type1_cfg_compat_check(
    uint32_t is_pod_hif, uint32_t caller_data, void *local_param, void *remote_param,
    uint32_t check_stp_endis, const void *compat_vlans, void *pass_vlans, void *fail_vlans);

/*
 * Compare two sets of VLANs over the twin VLANs.
 *
 * type: the parameter, for the result code. local_vlans, remote_vlans: bmp4096_t, size in network
 * byte order, read only. The other records as above; both results are always written. No pointer
 * may be NULL.
 *
 * 0 when every twin VLAN is in both sets or in neither, else the mismatch code of type.
 */
STP_MCEC_API uint32_t stp_mcec_pvrst_endis_check_for_twin_vlans(uint16_t type, void *local_vlans,
                                                                void *remote_vlans,
                                                                const void *compat_vlans,
                                                                void *pass_vlans, void *fail_vlans);

/*
 * Turn a TLV array into records for display, one for each entry, in its order; the cached value of
 * a parameter of the switch is logged beside it. The array stays the caller's and is not written.
 * The value of MST_REGION_VI_MAP has no text: its param_value is "".
 *
 * param_info: not NULL. *param_info: the report, a block of 4 + count * sizeof(mcecm_app_info_t)
 * bytes, memory type mcecm_app_info_t, the caller's to release with mtrack_free on success and on
 * failure alike.
 *
 * 0: every entry is a record.
 * STP_MCEC_ERR_INVALID_ARG: the array is NULL or empty, *param_info is as it was; or an entry is no
 *     parameter: its record has no name and no value, those after it are zero.
 * STP_MCEC_RESULT_NO_BLOCK: the report could not be allocated; *param_info is NULL.
 * A code of the TLV library: an entry could not be read; its record and those after it are zero.
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_get_param_info(void *param_array, void **param_info);

#ifdef __cplusplus
}
#endif

#endif
