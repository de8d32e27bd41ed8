/*
 * Foundation: the catalogue of the type-1 parameters, VLAN bitmaps, and the runtime services.
 *
 * Loading the library registers its memory types with the memory tracker and creates the cache;
 * unloading it frees the cache and unregisters. The library uses no locks: the process must not
 * call it from two threads at a time.
 */
#ifndef DRAIMIOFAF_FOUNDATION_H
#define DRAIMIOFAF_FOUNDATION_H

#include <stdio.h>

#include "draimiofaf/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- catalogue ----------------------------------------------------------------------------- */

/*
 * Returns the display name of a parameter, for instance "Loop Guard", or "Unknown" for an unknown
 * type. The text is static.
 */
STP_MCEC_API const char *stp_mcec_type1_cfg_type_to_str(uint16_t type);

/*
 * Returns the result code of a check in which this parameter is the first that differs, or
 * STP_MCEC_ERR_FAILURE for an unknown type.
 */
STP_MCEC_API uint32_t stp_mcec_get_type1_cfg_compat_chk_errcode(uint16_t type);

/*
 * Returns 1 if the value is the parameter's default, else 0; 0 for an unknown type.
 *
 * value: in network byte order, as in a TLV; not NULL, not modified. The function reads the bytes
 * that the test needs (516 bytes of STP_ENDIS, the first byte of MST_REGION_NAME, 4 bytes of a
 * word), whatever len is: a caller whose value may be shorter must check the length first.
 * len: length of the value in bytes. Used only for MST_REGION_VI_MAP: a map that is not 8192 bytes
 * long is not the default.
 *
 *   uint8_t mode[4] = {0, 0, 0, STP_MCEC_STP_MODE_RAPID_PVST};
 *   stp_mcec_type1_cfg_param_is_default(STP_MCEC_TYPE1_STP_MODE, sizeof mode, mode);    // 1
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_param_is_default(uint32_t type, uint32_t len, void *value);

/* --- VLAN bitmaps: records are bmp4096_t at any address, not NULL ----------------------------- */

/* Converts src's size word from host to network byte order and writes it to dst; the bitmap bytes
 * are neither read nor written. dst may be src. */
STP_MCEC_API void stp_mcec_lib_bmp4096_hton(const void *src, void *dst);

/* The same, from network to host byte order. */
STP_MCEC_API void stp_mcec_lib_bmp4096_ntoh(const void *src, void *dst);

/*
 * Returns the VLANs of a record as text, ascending, "" if there are none: "1-3,5,7-8". The size
 * word is not read. The text is in stp_vlan_bmp_str_buf, which the next call, a check, a report or
 * an extraction overwrites.
 */
STP_MCEC_API const char *stp_mcec_lib_bmp4096_to_str(const void *record);

/* Returns the number of user VLANs in the multi-chassis manager's set, 0 to 4096. */
STP_MCEC_API uint32_t stp_mcecm_get_vlan_count(void);

/* The buffer for all VLAN texts. Any text fits: the longest, with two of every three VLANs set, is
 * shorter than 13000 bytes. */
STP_MCEC_API extern char stp_vlan_bmp_str_buf[16384];

/* --- runtime services ------------------------------------------------------------------------- */

/* Returns the name of a memory type, "STP_MCEC_LIB_MEM_NONE" for 0, or NULL above
 * STP_MCEC_LIB_MEM_MAX. */
STP_MCEC_API const char *__stp_mcec_lib_mem_type_t_find(uint32_t type);

/* Returns the memory type with this name (not NULL, case-insensitive), or STP_MCEC_LIB_MEM_NONE if
 * there is none. */
STP_MCEC_API uint32_t __stp_mcec_lib_mem_type_t_str2enum(const char *name);

/* Initialises the event history. Every log line calls it until it has succeeded once. */
STP_MCEC_API void stp_mcec_lib_sdwrap_init(void);

/*
 * Writes one line to the debug log file, "/zarn/tmp/stp_mcec_lib_dbg.log." and the partition
 * number. It is for the processes that load the library; the library itself writes no lines there.
 * The first call opens the file for appending and writes a banner. If the file cannot be opened,
 * the line is dropped, and the next call tries again. The first argument is ignored.
 */
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
STP_MCEC_API void
stp_mcec_lib_debug_print(uint32_t unused, const char *format, ...);

/*
 * Finds the multi-chassis port channel of an interface. Returns 0 and writes its identifier to
 * *mcec_id, or returns STP_MCEC_ERR_NO_MCEC_INFO and leaves *mcec_id unchanged if the interface has
 * none. mcec_id: not NULL.
 */
STP_MCEC_API uint32_t stp_mcec_lib_get_mcec_id(uint32_t if_index, uint32_t *mcec_id);

/* Returns 1 if the multi-chassis trunk exists, else 0. */
STP_MCEC_API uint32_t stp_mcec_lib_mct_exists(void);

/* 1 after the event history has been initialized, else 0. */
STP_MCEC_API extern int stp_mcec_lib_sdwrap_init_done;

/* The debug log file, NULL until it is opened. The library never closes it. */
STP_MCEC_API extern FILE *stp_mcec_lib_debug_file;

#ifdef __cplusplus
}
#endif

#endif
