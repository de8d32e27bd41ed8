/*
 * The type-1 parameters, their names and values, and the result codes. Part of types.h.
 */
#ifndef DRAIMIOFAF_PARAMETERS_H
#define DRAIMIOFAF_PARAMETERS_H

#include <stdint.h>

/*
 * The twelve type-1 parameters, the settings that must be equal on both peers of a multi-chassis
 * port channel: X(name, type, scope, length of the value in bytes, mismatch code, kind of value,
 * default word, modes in which it is compared, whether it is compared on pod ports).
 *
 * GLOBAL parameters belong to the switch and are cached under interface index 0, INTERFACE ones
 * under the index of their interface. The default word applies to the kinds with one word; for
 * BRIDGE_ASSURANCE and GBL_MST_SIMULATE_PVST any word except 0 is the default. The default of the
 * other kinds is all zeros.
 *
 *   STP_MODE                 one word: STP_MCEC_STP_MODE_*; default Rapid-PVST
 *   STP_ENDIS                bmp4096_t; a set bit is a VLAN on which spanning tree is disabled
 *   MST_REGION_NAME          text, NUL-terminated unless it fills the value
 *   MST_REGION_REVISION      one word
 *   MST_REGION_VI_MAP        4096 16-bit words, the MST instances of VLANs 0 to 4095
 *   LOOP_GUARD               one word: 0 disabled (default), else enabled
 *   BRIDGE_ASSURANCE         one word: 0 disabled, else enabled (default)
 *   GBL_PORT_TYPE            one word of STP_MCEC_GBL_PORT_TYPE_* flags; default 0
 *   GBL_MST_SIMULATE_PVST    one word: 0 disabled, else enabled (default)
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

/* Kinds of values; the first three are one word. */
enum stp_mcec_kind {
  STP_MCEC_KIND_NUMBER,
  STP_MCEC_KIND_CHOICE, /* displayed as one of a few texts */
  STP_MCEC_KIND_FLAGS,
  STP_MCEC_KIND_TEXT,
  STP_MCEC_KIND_VLANS,
  STP_MCEC_KIND_MAP,
};

/* The modes in which a parameter is compared. */
enum stp_mcec_compared {
  STP_MCEC_COMPARED_IN_EVERY_MODE,
  STP_MCEC_COMPARED_IN_MST,
  STP_MCEC_COMPARED_IN_RAPID_PVST,
};

/* Whether a difference on a pod host interface is a mismatch. */
enum stp_mcec_compared_on_pod {
  STP_MCEC_COMPARED_NOT_ON_POD,
  STP_MCEC_COMPARED_ON_POD,
};

/*
 * The names of each parameter: X(name, name in log lines, title in the report, name in the files
 * and the output of mcec-lab). "Ifi Port Gaurd" is spelled as it is in the event history.
 */
#define STP_MCEC_TYPE1_NAMES(X)                                                                   \
  X(STP_MODE, "Mode", "STP Mode", "stp-mode")                                                     \
  X(STP_ENDIS, "Enable/Disable STP", "STP Disabled", "stp-endis")                                 \
  X(MST_REGION_NAME, "MST Region Name", "STP MST Region Name", "mst-region-name")                 \
  X(MST_REGION_REVISION, "MST Region Revision", "STP MST Region Revision", "mst-region-revision") \
  X(MST_REGION_VI_MAP, "MST Region VI Map", "STP MST Region Instance to VLAN Mapping",            \
    "mst-region-vi-map")                                                                          \
  X(LOOP_GUARD, "Loop Guard", "STP Loopguard", "loop-guard")                                      \
  X(BRIDGE_ASSURANCE, "Bridge Assurance", "STP Bridge Assurance", "bridge-assurance")             \
  X(GBL_PORT_TYPE, "Gbl Port Type", "STP Port Type, Edge BPDUFilter, Edge BPDUGuard",             \
    "gbl-port-type")                                                                              \
  X(GBL_MST_SIMULATE_PVST, "Gbl MST Simulate PVST", "STP MST Simulate PVST",                      \
    "gbl-mst-simulate-pvst")                                                                      \
  X(IFI_PORT_TYPE, "Ifi Port Type", "STP Port Type", "ifi-port-type")                             \
  X(IFI_PORT_GUARD, "Ifi Port Gaurd", "STP Port Guard", "ifi-port-guard")                         \
  X(IFI_MST_SIMULATE_PVST, "Ifi MST Simulate PVST", "STP MST Simulate PVST",                      \
    "ifi-mst-simulate-pvst")

/* STP_MCEC_TYPE1_STP_MODE (1) to STP_MCEC_TYPE1_IFI_MST_SIMULATE_PVST (12). */
enum {
#define STP_MCEC_ENUMERATOR(name, type, ...) STP_MCEC_TYPE1_##name = (type),
  STP_MCEC_TYPE1_PARAMETERS(STP_MCEC_ENUMERATOR)
#undef STP_MCEC_ENUMERATOR
};

/* Result codes other than 0 (success) and the mismatch codes: X(name, code). The texts are those of
 * STP_MCEC_RESULTS; codes of the platform's TLV library pass through unchanged. */
#define STP_MCEC_RESULT_CODES(X)      \
  X(ERR_FAILURE, 0x40DD0001)          \
  X(ERR_NO_MEMORY, 0x40DD0002)        \
  X(ERR_INVALID_ARG, 0x40DD0003)      \
  X(ERR_TYPE1_PARAM_NULL, 0x40DD003A) \
  X(ERR_NO_MCEC_INFO, 0x41B70016)

/* STP_MCEC_ERR_FAILURE and the other codes above, and one mismatch code for each parameter, for
 * instance STP_MCEC_ERR_TYPE1_LOOP_GUARD. */
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
/* Rapid-PVST was rejected: more than STP_MCEC_PVRST_MAX_USER_VLANS user VLANs are configured. */
#define STP_MCEC_RESULT_PVRST_REFUSED UINT32_C(0xFFFFFFFF)

/*
 * All result codes of the library with their texts: X(code, text).
 *
 *   switch (result) {
 *   #define TEXT_OF(code, text) case (code): return text;
 *     STP_MCEC_RESULTS(TEXT_OF)
 *     default: return syserr2str(result);     // a code of the TLV library
 *   }
 */
#define STP_MCEC_RESULTS(X)                                                                 \
  X(0, "success")                                                                           \
  X(STP_MCEC_RESULT_NO_BLOCK, "a block for the caller cannot be allocated")                 \
  X(STP_MCEC_RESULT_PVRST_REFUSED, "too many user VLANs for Rapid-PVST")                    \
  X(STP_MCEC_ERR_FAILURE, "the check cannot be carried out")                                \
  X(STP_MCEC_ERR_NO_MEMORY, "a cache entry cannot be allocated")                            \
  X(STP_MCEC_ERR_INVALID_ARG, "an argument is missing or invalid, or a request is unknown") \
  X(STP_MCEC_ERR_TYPE1_PARAM_NULL, "one of the two arrays is missing")                      \
  X(STP_MCEC_ERR_NO_MCEC_INFO, "the interface has no multi-chassis port channel")           \
  X(STP_MCEC_ERR_TYPE1_STP_MODE, "the spanning-tree mode differs")                          \
  X(STP_MCEC_ERR_TYPE1_STP_ENDIS, "the VLANs with spanning tree disabled differ")           \
  X(STP_MCEC_ERR_TYPE1_MST_REGION_NAME, "the MST region name differs")                      \
  X(STP_MCEC_ERR_TYPE1_MST_REGION_REVISION, "the MST region revision differs")              \
  X(STP_MCEC_ERR_TYPE1_MST_REGION_VI_MAP, "the MST instance-to-VLAN map differs")           \
  X(STP_MCEC_ERR_TYPE1_LOOP_GUARD, "loop guard differs")                                    \
  X(STP_MCEC_ERR_TYPE1_BRIDGE_ASSURANCE, "bridge assurance differs")                        \
  X(STP_MCEC_ERR_TYPE1_GBL_PORT_TYPE, "the global port type differs")                       \
  X(STP_MCEC_ERR_TYPE1_GBL_MST_SIMULATE_PVST, "global MST simulate PVST differs")           \
  X(STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE, "the port type of the interface differs")             \
  X(STP_MCEC_ERR_TYPE1_IFI_PORT_GUARD, "the port guard of the interface differs")           \
  X(STP_MCEC_ERR_TYPE1_IFI_MST_SIMULATE_PVST, "MST simulate PVST of the interface differs")

/* Values of STP_MODE, and the maximum number of user VLANs for Rapid-PVST. */
enum {
  STP_MCEC_STP_MODE_MST = 4,
  STP_MCEC_STP_MODE_RAPID_PVST = 5,
  STP_MCEC_PVRST_MAX_USER_VLANS = 507,
};

/* Flags of GBL_PORT_TYPE: the default of the switch's ports. The commands set NORMAL if neither
 * EDGE nor NETWORK is set, and clear it otherwise. */
enum {
  STP_MCEC_GBL_PORT_TYPE_EDGE = 0x1,
  STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUGUARD = 0x2,
  STP_MCEC_GBL_PORT_TYPE_EDGE_BPDUFILTER = 0x4,
  STP_MCEC_GBL_PORT_TYPE_NETWORK = 0x8,
  STP_MCEC_GBL_PORT_TYPE_NORMAL = 0x10,
};

/* Values of the parameters of an interface. The default is 0, nothing configured. */
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

#endif
