/*
 * Foundation: the catalogue of the type-1 parameters, VLAN bitmaps, and the runtime services.
 *
 * Loading the library registers its memory types with the memory tracker and creates the cache;
 * unloading it releases the cache and unregisters. The library takes no lock: the process that
 * loads it makes one call into it at a time.
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
 * The display name of a parameter, for instance "Loop Guard"; "Unknown" for a type that is none.
 * The text is static.
 */
STP_MCEC_API const char *stp_mcec_type1_cfg_type_to_str(uint16_t type);

/*
 * The result code of a check in which this parameter is the first to differ;
 * STP_MCEC_ERR_FAILURE for a type that is none.
 */
STP_MCEC_API uint32_t stp_mcec_get_type1_cfg_compat_chk_errcode(uint16_t type);

/*
 * 1 when the value is the parameter's default, else 0; 0 for a type that is none.
 *
 * value: in network byte order, as in a TLV; not NULL, not written. It is read as far as the test
 * needs (516 bytes of STP_ENDIS, the first byte of MST_REGION_NAME, 4 bytes of a word), whatever
 * len is: a caller whose value may be shorter tests its length first.
 * len: bytes of the value. Only MST_REGION_VI_MAP looks at it: a map that is not 8192 bytes long
 * is not the default.
 *
 *   uint8_t mode[4] = {0, 0, 0, STP_MCEC_STP_MODE_RAPID_PVST};
 *   stp_mcec_type1_cfg_param_is_default(STP_MCEC_TYPE1_STP_MODE, sizeof mode, mode);    // 1
 */
STP_MCEC_API uint32_t stp_mcec_type1_cfg_param_is_default(uint32_t type, uint32_t len, void *value);

/* --- VLAN bitmaps: records are bmp4096_t at any address, not NULL ----------------------------- */

/* Write src's size word, taken from host to network byte order, to dst's; the bitmap bytes are
 * neither read nor written. dst may be src. */
STP_MCEC_API void stp_mcec_lib_bmp4096_hton(const void *src, void *dst);

/* The same from network to host byte order. */
STP_MCEC_API void stp_mcec_lib_bmp4096_ntoh(const void *src, void *dst);

/*
 * The VLANs of a record as text, ascending, "" when there is none: "1-3,5,7-8". The size word is
 * not read. The text is in stp_vlan_bmp_str_buf and lasts until the next call, or until a check, a
 * report or an extraction writes another.
 */
STP_MCEC_API const char *stp_mcec_lib_bmp4096_to_str(const void *record);

/* How many user VLANs are configured, 0 to 4096: those in the multi-chassis manager's set. */
STP_MCEC_API uint32_t stp_mcecm_get_vlan_count(void);

/* The one place where VLAN text is written. Any text fits: the longest, of two VLANs in three, stay
 * below 13000 bytes. */
STP_MCEC_API extern char stp_vlan_bmp_str_buf[16384];

/* --- runtime services ------------------------------------------------------------------------- */

/* The name of a memory type, "STP_MCEC_LIB_MEM_NONE" for 0; NULL above STP_MCEC_LIB_MEM_MAX. */
STP_MCEC_API const char *__stp_mcec_lib_mem_type_t_find(uint32_t type);

/* The memory type of a name, upper or lower case, not NULL; STP_MCEC_LIB_MEM_NONE for no such
 * name. */
STP_MCEC_API uint32_t __stp_mcec_lib_mem_type_t_str2enum(const char *name);

/* Initialise the event history. Called by each line that is logged until it has succeeded once. */
STP_MCEC_API void stp_mcec_lib_sdwrap_init(void);

/*
 * Write one line to the debug log file, "/zarn/tmp/stp_mcec_lib_dbg.log." and the partition
 * number, for the processes that load the library; it writes nothing there itself. The first call
 * opens the file for appending and writes a banner; while it cannot be opened, lines are dropped
 * and each call tries again. The first argument has no effect.
 */
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
STP_MCEC_API void
stp_mcec_lib_debug_print(uint32_t unused, const char *format, ...);

/*
 * Find the multi-chassis port channel of an interface. 0 with its identifier in *mcec_id, or
 * STP_MCEC_ERR_NO_MCEC_INFO with *mcec_id as it was when the interface has none. mcec_id: not NULL.
 */
STP_MCEC_API uint32_t stp_mcec_lib_get_mcec_id(uint32_t if_index, uint32_t *mcec_id);

/* 1 when the multi-chassis trunk exists, else 0. */
STP_MCEC_API uint32_t stp_mcec_lib_mct_exists(void);

/* 1 once the event history was initialised. */
STP_MCEC_API extern int stp_mcec_lib_sdwrap_init_done;

/* The debug log file, NULL until it is opened; the library never closes it. */
STP_MCEC_API extern FILE *stp_mcec_lib_debug_file;

#ifdef __cplusplus
}
#endif

#endif
