/*
 * Shared records of libdraimiofaf; includes commands.h and parameters.h for codes and constants.
 *
 * Byte order: values in a TLV array or in the cache are in network byte order. The fields of the
 * records below are in host byte order unless stated otherwise.
 */
#ifndef DRAIMIOFAF_TYPES_H
#define DRAIMIOFAF_TYPES_H

#if defined(__cplusplus) ? __cplusplus < 201103L \
                         : !defined(__STDC_VERSION__) || __STDC_VERSION__ < 201112L
#error "the headers of draimiofaf need C11 or C++11, or newer"
#endif

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "draimiofaf/commands.h"
#include "draimiofaf/parameters.h"
#include "draimiofaf/version.h"

#if defined(__GNUC__)
#define STP_MCEC_API __attribute__((visibility("default")))
#else
#define STP_MCEC_API
#endif

/* The record layouts are part of the binary interface. */
#define STP_MCEC_SIZE_IS(record, size) static_assert(sizeof(record) == (size), "size of " #record)
#define STP_MCEC_FIELD_AT(record, field, offset) \
  static_assert(offsetof(record, field) == (offset), #record "." #field)

/* The type of a parameter in TLVs, cache nodes and records. */
typedef uint16_t stp_mcec_type1_cfg_type_t;

/*
 * A set of VLANs 0 to 4095, 516 bytes:
 *
 *   0        4                                    516
 *   +--------+------------------------------------+
 *   | size   | bmp: VLAN n is bit 0x80 >> (n % 8) |
 *   | = 512  |      of bmp[n / 8]                 |
 *   +--------+------------------------------------+
 *
 * size is in network byte order in a TLV, a cached value or a message, in host byte order in the
 * records that a check reads and writes. The bitmap bytes have no byte order.
 */
typedef struct bmp4096 {
  uint32_t size;
  uint8_t bmp[512];
} bmp4096_t;

STP_MCEC_SIZE_IS(bmp4096_t, 516);
STP_MCEC_FIELD_AT(bmp4096_t, bmp, 4);

/* The value of a cache node: len bytes, as in a TLV. */
typedef uint8_t type1_cfg_avl_val_t;

/* A node of the cache. With len and val zero it is also the key of a search. */
typedef struct type1_cfg_avl_node {
  uint32_t if_index; /* 0 for a global parameter */
  stp_mcec_type1_cfg_type_t type;
  uint16_t len;             /* bytes of val; never changes */
  type1_cfg_avl_val_t *val; /* owned by the node; network byte order */
} type1_cfg_avl_node_t;

STP_MCEC_SIZE_IS(type1_cfg_avl_node_t, 8 + sizeof(void *));
STP_MCEC_FIELD_AT(type1_cfg_avl_node_t, type, 4);
STP_MCEC_FIELD_AT(type1_cfg_avl_node_t, len, 6);
STP_MCEC_FIELD_AT(type1_cfg_avl_node_t, val, 8);

/* A parameter on an interface that the caller of an extraction must check. */
typedef struct mcecm_app_cmd_extract_info {
  uint32_t type;      /* the parameter; its value is in the TLV array */
  uint32_t valid;     /* 1; 0: unfilled, to be ignored */
  uint32_t is_global; /* not 0 for a parameter of the switch */
  uint32_t if_index;  /* the interface, 0 for a parameter of the switch */
} mcecm_app_cmd_extract_info_t;

STP_MCEC_SIZE_IS(mcecm_app_cmd_extract_info_t, 16);
STP_MCEC_FIELD_AT(mcecm_app_cmd_extract_info_t, valid, 4);
STP_MCEC_FIELD_AT(mcecm_app_cmd_extract_info_t, is_global, 8);
STP_MCEC_FIELD_AT(mcecm_app_cmd_extract_info_t, if_index, 12);

/* A parameter for display. Texts are NUL-terminated and truncated to 99 characters. */
typedef struct mcecm_app_info {
  uint32_t app_code; /* STP_MCEC_APP_CODE */
  uint32_t param_type;
  uint32_t reserved;   /* 0 */
  char component[100]; /* "STP" */
  char param_name[100];
  char param_value[100];
} mcecm_app_info_t;

STP_MCEC_SIZE_IS(mcecm_app_info_t, 312);
STP_MCEC_FIELD_AT(mcecm_app_info_t, param_type, 4);
STP_MCEC_FIELD_AT(mcecm_app_info_t, reserved, 8);
STP_MCEC_FIELD_AT(mcecm_app_info_t, component, 12);
STP_MCEC_FIELD_AT(mcecm_app_info_t, param_name, 112);
STP_MCEC_FIELD_AT(mcecm_app_info_t, param_value, 212);

/* The block of a report: a count, followed by mcecm_app_info_t[count]. */
typedef struct mcecm_app_info_report {
  uint32_t count;
  mcecm_app_info_t records[1];
} mcecm_app_info_report_t;

STP_MCEC_FIELD_AT(mcecm_app_info_report_t, records, 4);

enum {
  STP_MCEC_APP_CODE = 171,
  /* The library's identifier in the memory tracker and the event history. */
  STP_MCEC_LIB_SERVICE_ID = 633,
  /* The size of a TLV array without its entries, in bytes. */
  STP_MCEC_TLV_ARRAY_HDR_SIZE = 4,
  /* The offset of the TLV array in the payload of both kinds of update message, in bytes. */
  STP_MCEC_TYPE1_UPD_HDR_SIZE = 16,
};

/*
 * Memory types, one for each place that allocates: X(name, number). The blocks that the library
 * returns have these types, and are freed with mtrack_free: 4 the report, 6 the exported array, and
 * the array and the records of each extractor:
 *
 *   enable/disable    7, 14      mode                9, 16      global parameters   11, 18
 *   MST region reset  8, 15      global port type   10, 17      interfaces          12, 19
 *                                                               update message      13, 20
 */
#define STP_MCEC_LIB_MEM_TYPES(X)      \
  X(NONE, 0)                           \
  X(type1_cfg_avl_node_t, 1)           \
  X(type1_cfg_avl_val_t, 2)            \
  X(tlv_array_t, 3)                    \
  X(mcecm_app_info_t, 4)               \
  X(mcecm_app_cmd_extract_info_t, 5)   \
  X(tlv_array_1_t, 6)                  \
  X(tlv_array_2_t, 7)                  \
  X(tlv_array_3_t, 8)                  \
  X(tlv_array_4_t, 9)                  \
  X(tlv_array_5_t, 10)                 \
  X(tlv_array_6_t, 11)                 \
  X(tlv_array_7_t, 12)                 \
  X(tlv_array_8_t, 13)                 \
  X(mcecm_app_cmd1_extract_info_t, 14) \
  X(mcecm_app_cmd2_extract_info_t, 15) \
  X(mcecm_app_cmd3_extract_info_t, 16) \
  X(mcecm_app_cmd4_extract_info_t, 17) \
  X(mcecm_app_cmd5_extract_info_t, 18) \
  X(mcecm_app_cmd6_extract_info_t, 19) \
  X(mcecm_app_cmd7_extract_info_t, 20) \
  X(MAX, 21)

/* A memory type, as passed to the memory tracker. */
typedef uint32_t stp_mcec_lib_mem_type_t;

enum {
#define STP_MCEC_ENUMERATOR(name, number) STP_MCEC_LIB_MEM_##name = (number),
  STP_MCEC_LIB_MEM_TYPES(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
};

#endif
