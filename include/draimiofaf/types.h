/*
 * Shared records, codes and constants of libdraimiofaf: what the other headers and the processes
 * that load the library have in common. C11 and C++20.
 *
 * Byte order: a value inside a TLV array or in the cache is in network byte order; the fields of
 * the records below are in host byte order unless they say otherwise.
 */
#ifndef DRAIMIOFAF_TYPES_H
#define DRAIMIOFAF_TYPES_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define STP_MCEC_API __attribute__((visibility("default")))
#else
#define STP_MCEC_API
#endif

/* The layouts of the records are part of the binary interface. */
#define STP_MCEC_SIZE_IS(record, size) static_assert(sizeof(record) == (size), "size of " #record)
#define STP_MCEC_FIELD_AT(record, field, offset) \
  static_assert(offsetof(record, field) == (offset), #record "." #field)

/*
 * The twelve type-1 parameters, the settings that must be equal on both peers of a multi-chassis
 * port channel: X(name, type, scope, length of the value in bytes, mismatch code, kind of value,
 * default word, modes in which it is compared, whether it is compared on pod ports).
 *
 * GLOBAL parameters belong to the switch and are cached under interface index 0, INTERFACE ones
 * under the index of their interface. The default word is that of the kinds that are one word; any
 * word but 0 is the default of BRIDGE_ASSURANCE and GBL_MST_SIMULATE_PVST. The default of the other
 * kinds is a value of zero bytes.
 *
 *   STP_MODE                 one word: STP_MCEC_STP_MODE_*; Rapid-PVST by default
 *   STP_ENDIS                bmp4096_t, a set bit is a VLAN on which spanning tree is disabled
 *   MST_REGION_NAME          text, NUL-terminated unless it fills the value
 *   MST_REGION_REVISION      one word
 *   MST_REGION_VI_MAP        4096 16-bit words, the MST instance of VLAN 0 to 4095
 *   LOOP_GUARD               one word, 0 disabled (the default), else enabled
 *   BRIDGE_ASSURANCE         one word, 0 disabled, else enabled (the default)
 *   GBL_PORT_TYPE            one word of STP_MCEC_GBL_PORT_TYPE_* flags, 0 by default
 *   GBL_MST_SIMULATE_PVST    one word, 0 disabled, else enabled (the default)
 *   IFI_PORT_TYPE            one word: STP_MCEC_IFI_PORT_TYPE_*
 *   IFI_PORT_GUARD           one word: STP_MCEC_IFI_PORT_GUARD_*
 *   IFI_MST_SIMULATE_PVST    one word: STP_MCEC_IFI_MST_SIMULATE_PVST_*
 */
#define STP_MCEC_TYPE1_PARAMETERS(X)                                                   \
  X(STP_MODE, 1, GLOBAL, 4, 0x40DD003B, CHOICE, 5, IN_EVERY_MODE, ON_POD)              \
  X(STP_ENDIS, 2, GLOBAL, 516, 0x40DD003C, VLANS, 0, IN_RAPID_PVST, ON_POD)            \
  X(MST_REGION_NAME, 3, GLOBAL, 32, 0x40DD003D, TEXT, 0, IN_MST, ON_POD)               \
  X(MST_REGION_REVISION, 4, GLOBAL, 4, 0x40DD003E, NUMBER, 0, IN_MST, ON_POD)          \
  X(MST_REGION_VI_MAP, 5, GLOBAL, 8192, 0x40DD003F, MAP, 0, IN_MST, ON_POD)            \
  X(LOOP_GUARD, 6, GLOBAL, 4, 0x40DD0040, CHOICE, 0, IN_EVERY_MODE, ON_POD)            \
  X(BRIDGE_ASSURANCE, 7, GLOBAL, 4, 0x40DD0041, CHOICE, 1, IN_EVERY_MODE, ON_POD)      \
  X(GBL_PORT_TYPE, 8, GLOBAL, 4, 0x40DD0042, FLAGS, 0, IN_EVERY_MODE, ON_POD)          \
  X(GBL_MST_SIMULATE_PVST, 9, GLOBAL, 4, 0x40DD0045, CHOICE, 1, IN_MST, ON_POD)        \
  X(IFI_PORT_TYPE, 10, INTERFACE, 4, 0x40DD0043, CHOICE, 0, IN_EVERY_MODE, NOT_ON_POD) \
  X(IFI_PORT_GUARD, 11, INTERFACE, 4, 0x40DD0044, CHOICE, 0, IN_EVERY_MODE, ON_POD)    \
  X(IFI_MST_SIMULATE_PVST, 12, INTERFACE, 4, 0x40DD0046, CHOICE, 0, IN_MST, ON_POD)

/* What a value is, and the modes in which peers must agree on it: columns of the list above. */
enum {
  STP_MCEC_KIND_NUMBER,
  STP_MCEC_KIND_CHOICE, /* a word that stands for one of a few texts */
  STP_MCEC_KIND_FLAGS,  /* a word of flags */
  STP_MCEC_KIND_TEXT,
  STP_MCEC_KIND_VLANS,
  STP_MCEC_KIND_MAP,

  STP_MCEC_COMPARED_IN_EVERY_MODE = 0,
  STP_MCEC_COMPARED_IN_MST,
  STP_MCEC_COMPARED_IN_RAPID_PVST,

  STP_MCEC_COMPARED_NOT_ON_POD = 0,
  STP_MCEC_COMPARED_ON_POD,
};

/* The type of a parameter, as TLVs, cache nodes and records carry it. */
typedef uint16_t stp_mcec_type1_cfg_type_t;

/* STP_MCEC_TYPE1_STP_MODE (1) to STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST (12). */
enum {
#define STP_MCEC_ENUMERATOR(name, type, ...) STP_MCEC_TYPE1_##name = (type),
  STP_MCEC_TYPE1_PARAMETERS(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
};

/*
 * Result codes besides 0 (success) and the twelve mismatch codes: X(name, code). 1 is returned
 * where a block for the caller cannot be allocated. The codes of the platform's TLV library pass
 * through unchanged.
 *
 *   FAILURE            a check could not be carried out; also the mismatch code of no parameter
 *   NO_MEMORY          a cache node or its value could not be allocated
 *   INVALID_ARG        a required argument is missing or out of range, or a message or command is
 *                      unknown
 *   TYPE1_PARAM_NULL   one of the two arrays of a check is missing
 *   NO_MCEC_INFO       the interface has no multi-chassis port channel
 */
#define STP_MCEC_RESULT_CODES(X)      \
  X(ERR_FAILURE, 0x40DD0001)          \
  X(ERR_NO_MEMORY, 0x40DD0002)        \
  X(ERR_INVALID_ARG, 0x40DD0003)      \
  X(ERR_TYPE1_PARAM_NULL, 0x40DD003A) \
  X(ERR_NO_MCEC_INFO, 0x41B70016)

/* STP_MCEC_ERR_FAILURE and the like, and a mismatch code for each parameter, for instance
 * STP_MCEC_ERR_TYPE1_LOOP_GUARD. */
enum {
#define STP_MCEC_ENUMERATOR(name, code) STP_MCEC_##name = (code),
  STP_MCEC_RESULT_CODES(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
#define STP_MCEC_ENUMERATOR(name, type, scope, length, code, ...) \
  STP_MCEC_ERR_TYPE1_##name = (code),
      STP_MCEC_TYPE1_PARAMETERS(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
};

/* A block for the caller could not be allocated. */
#define STP_MCEC_RESULT_NO_BLOCK UINT32_C(1)
/* Rapid-PVST refused: more than STP_MCEC_PVRST_MAX_USER_VLANS user VLANs are configured. */
#define STP_MCEC_RESULT_PVRST_REFUSED UINT32_C(0xFFFFFFFF)

/* Values of STP_MODE, and the most user VLANs with which Rapid-PVST is accepted. */
enum {
  STP_MCEC_STP_MODE_MST = 4,
  STP_MCEC_STP_MODE_RAPID_PVST = 5,
  STP_MCEC_PVRST_MAX_USER_VLANS = 507,
};

/* Flags of GBL_PORT_TYPE: what the ports of the switch are unless their interface says otherwise.
 * NORMAL is set by the commands exactly when neither EDGE nor NETWORK is. */
enum {
  STP_MCEC_GBL_PORT_TYPE_EDGE = 0x1,
  STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD = 0x2,
  STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER = 0x4,
  STP_MCEC_GBL_PORT_TYPE_NETWORK = 0x8,
  STP_MCEC_GBL_PORT_TYPE_NORMAL = 0x10,
};

/* Values of the parameters of an interface; 0, what it has when nothing is configured, is their
 * default. */
enum {
  STP_MCEC_IFI_PORT_TYPE_DEFAULT = 0,
  STP_MCEC_IFI_PORT_TYPE_EDGE = 1,
  STP_MCEC_IFI_PORT_TYPE_NORMAL = 2,
  STP_MCEC_IFI_PORT_TYPE_EDGE_TRUNK = 3,
  STP_MCEC_IFI_PORT_TYPE_NETWORK = 4,

  STP_MCEC_IFI_PORT_GUARD_DEFAULT = 0,
  STP_MCEC_IFI_PORT_GUARD_ROOT = 1,
  STP_MCEC_IFI_PORT_GUARD_LOOP = 2,
  STP_MCEC_IFI_PORT_GUARD_NONE = 3,

  STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT = 0,
  STP_MCEC_IFI_MST_SIMULATE_PVST_ENABLED = 1,
  STP_MCEC_IFI_MST_SIMULATE_PVST_DISABLED = 2,
  STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT_ENABLED = 3,
  STP_MCEC_IFI_MST_SIMULATE_PVST_DEFAULT_DISABLED = 4,
};

/*
 * A set of VLANs 0 to 4095, 516 bytes:
 *
 *   0        4                                    516
 *   +--------+------------------------------------+
 *   | size   | bmp: VLAN n is bit 0x80 >> (n % 8) |
 *   | = 512  |      of bmp[n / 8]                 |
 *   +--------+------------------------------------+
 *
 * size is in network byte order inside a TLV, a cached value or a message, in host byte order in
 * the records that a check is given and fills. The bitmap bytes have no byte order.
 */
typedef struct bmp4096 {
  uint32_t size;
  uint8_t bmp[512];
} bmp4096_t;

STP_MCEC_SIZE_IS(bmp4096_t, 516);
STP_MCEC_FIELD_AT(bmp4096_t, bmp, 4);

/* The block a cache node's value lives in: len bytes, as in a TLV. */
typedef uint8_t type1_cfg_avl_val_t;

/* A node of the cache, and (with len and val zero) the key that finds it. */
typedef struct type1_cfg_avl_node {
  uint32_t if_index; /* 0 for a global parameter */
  stp_mcec_type1_cfg_type_t type;
  uint16_t len;             /* bytes of val; does not change in a node's life */
  type1_cfg_avl_val_t *val; /* owned by the node; network byte order */
} type1_cfg_avl_node_t;

STP_MCEC_SIZE_IS(type1_cfg_avl_node_t, 8 + sizeof(void *));
STP_MCEC_FIELD_AT(type1_cfg_avl_node_t, type, 4);
STP_MCEC_FIELD_AT(type1_cfg_avl_node_t, len, 6);
STP_MCEC_FIELD_AT(type1_cfg_avl_node_t, val, 8);

/* One parameter on one interface that the caller of an extraction is to check. */
typedef struct mcecm_app_cmd_extract_info {
  uint32_t type;      /* the parameter, whose value is in the TLV array */
  uint32_t valid;     /* 1; 0: a slot that was not filled, to be ignored */
  uint32_t is_global; /* not 0 for a parameter of the switch */
  uint32_t if_index;  /* the interface, 0 for a parameter of the switch */
} mcecm_app_cmd_extract_info_t;

STP_MCEC_SIZE_IS(mcecm_app_cmd_extract_info_t, 16);
STP_MCEC_FIELD_AT(mcecm_app_cmd_extract_info_t, valid, 4);
STP_MCEC_FIELD_AT(mcecm_app_cmd_extract_info_t, is_global, 8);
STP_MCEC_FIELD_AT(mcecm_app_cmd_extract_info_t, if_index, 12);

/* One parameter for display: texts are NUL-terminated and cut to 99 characters. */
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

/* The block of a report: count records follow the count, mcecm_app_info_t[count]. */
typedef struct mcecm_app_info_report {
  uint32_t count;
  mcecm_app_info_t records[1];
} mcecm_app_info_report_t;

STP_MCEC_FIELD_AT(mcecm_app_info_report_t, records, 4);

enum {
  STP_MCEC_APP_CODE = 171,
  /* By this number the library is known to the memory tracker and the event history. */
  STP_MCEC_LIB_SERVICE_ID = 633,
  /* A TLV array takes this many bytes besides its entries. */
  STP_MCEC_TLV_ARRAY_HDR_SIZE = 4,
  /* In both kinds of update message the TLV array starts this many bytes into the payload. */
  STP_MCEC_TYPE1_UPD_HDR_SIZE = 16,
};

/*
 * Memory types, one for each place that allocates: X(name, number). Blocks that the library hands
 * out carry them, and are released with mtrack_free: 4 the report, 6 the exported array, and each
 * extractor's array and records:
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

/* The type of a block, as the memory tracker is told it. */
typedef uint32_t stp_mcec_lib_mem_type_t;

enum {
#define STP_MCEC_ENUMERATOR(name, number) STP_MCEC_LIB_MEM_##name = (number),
  STP_MCEC_LIB_MEM_TYPES(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
};

/*
 * Configuration commands: X(name, identifier, sub-extractor, gated, the parameters that it sets as
 * bits of STP_MCEC_SETS). A GATED command concerns the check only while a multi-chassis trunk
 * exists; the interface commands decide port by port.
 */
#define STP_MCEC_COMMANDS(X)                                                                       \
  X(STP_MODE, 1, stp_mcec_extract_stp_mode_param, GATED, STP_MCEC_SETS(STP_MODE))                  \
  X(STP_ENDIS, 2, stp_mcec_extract_stp_endis_param, GATED, STP_MCEC_SETS(STP_ENDIS))               \
  X(IF_PORT_MODE, 13, stp_mcec_extract_if_params, UNGATED, STP_MCEC_SETS(IFI_PORT_TYPE))           \
  X(IF_GUARD, 17, stp_mcec_extract_if_params, UNGATED, STP_MCEC_SETS(IFI_PORT_GUARD))              \
  X(GBL_EDGE, 18, stp_mcec_extract_gbl_port_type_param, GATED, STP_MCEC_SETS(GBL_PORT_TYPE))       \
  X(GBL_EDGE_BPDUGUARD, 19, stp_mcec_extract_gbl_port_type_param, GATED,                           \
    STP_MCEC_SETS(GBL_PORT_TYPE))                                                                  \
  X(GBL_EDGE_BPDUFILTER, 20, stp_mcec_extract_gbl_port_type_param, GATED,                          \
    STP_MCEC_SETS(GBL_PORT_TYPE))                                                                  \
  X(GBL_LOOPGUARD, 21, stp_mcec_extract_gbl_params, GATED, STP_MCEC_SETS(LOOP_GUARD))              \
  X(MST_REGION_RESET, 43, stp_mcec_extract_reset_mst_region_cfg, GATED,                            \
    STP_MCEC_SETS(MST_REGION_NAME) | STP_MCEC_SETS(MST_REGION_REVISION) |                          \
        STP_MCEC_SETS(MST_REGION_VI_MAP))                                                          \
  X(GBL_NETWORK, 45, stp_mcec_extract_gbl_port_type_param, GATED, STP_MCEC_SETS(GBL_PORT_TYPE))    \
  X(GBL_BRIDGE_ASSURANCE, 46, stp_mcec_extract_gbl_params, GATED, STP_MCEC_SETS(BRIDGE_ASSURANCE)) \
  X(IF_PORT_TYPE, 47, stp_mcec_extract_if_params, UNGATED, STP_MCEC_SETS(IFI_PORT_TYPE))           \
  X(IF_EDGE_TRUNK, 48, stp_mcec_extract_if_params, UNGATED, STP_MCEC_SETS(IFI_PORT_TYPE))          \
  X(GBL_MST_SIMULATE_PVST, 49, stp_mcec_extract_gbl_params, GATED,                                 \
    STP_MCEC_SETS(GBL_MST_SIMULATE_PVST))                                                          \
  X(IF_MST_SIMULATE_PVST, 50, stp_mcec_extract_if_params, UNGATED,                                 \
    STP_MCEC_SETS(IFI_MST_SIMULATE_PVST))

/* The bit of a parameter in the set of those that a command sets. */
#define STP_MCEC_SETS(name) (UINT32_C(1) << STP_MCEC_TYPE1_##name)

enum {
#define STP_MCEC_ENUMERATOR(name, id, ...) STP_MCEC_CMD_##name = (id),
  STP_MCEC_COMMANDS(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
};

/*
 * Attributes of the commands; words are in host byte order.
 *
 *   STP_MODE        the mode, one word
 *   VLAN_LIST       a VLAN range list:   | unread | n | first last | first last | ...   (words)
 *   IFINDEX         the interface ranges: | unread | n | unread | unread | first last | ... (words)
 *   IF_PORT_MODE, IF_PORT_TYPE   one word: STP_MCEC_IF_PORT_MODE_*
 *   IF_GUARD        one word: STP_MCEC_IF_GUARD_*
 *   IF_MST_SIMULATE_PVST         its presence disables the simulation; the value is not read
 *
 * The _2 identifiers say the same as their namesakes, from another form of the command.
 */
enum {
  STP_MCEC_ATTR_STP_MODE = 0x2020002,
  STP_MCEC_ATTR_VLAN_LIST = 0x13020005,
  STP_MCEC_ATTR_IFINDEX = 0xD030001,
  STP_MCEC_ATTR_IF_PORT_MODE = 0x2020036,
  STP_MCEC_ATTR_IF_PORT_MODE_2 = 0x202003C,
  STP_MCEC_ATTR_IF_PORT_TYPE = 0x202003F,
  STP_MCEC_ATTR_IF_PORT_TYPE_2 = 0x2020048,
  STP_MCEC_ATTR_IF_GUARD = 0x2020065,
  STP_MCEC_ATTR_IF_GUARD_2 = 0x2020068,
  STP_MCEC_ATTR_IF_MST_SIMULATE_PVST = 0x202008B,
  STP_MCEC_ATTR_IF_MST_SIMULATE_PVST_2 = 0x2020091,
};

/* Words of the attributes IF_PORT_MODE and IF_PORT_TYPE, and of IF_GUARD. */
enum {
  STP_MCEC_IF_PORT_MODE_NORMAL = 2,
  STP_MCEC_IF_PORT_MODE_EDGE_TRUNK = 3,
  STP_MCEC_IF_PORT_MODE_NETWORK = 4,
  STP_MCEC_IF_PORT_MODE_EDGE = 5,
  STP_MCEC_IF_GUARD_ROOT = 1,
  STP_MCEC_IF_GUARD_LOOP = 2,
  STP_MCEC_IF_GUARD_NONE = 3,
};

/* The layer mode of an interface that spanning tree runs on. */
enum { STP_MCEC_IF_LAYER_MODE_ACCEPTED = 2 };

#endif
