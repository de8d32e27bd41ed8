/*
 * The configuration commands and their attributes. Part of types.h.
 */
#ifndef DRAIMIOFAF_COMMANDS_H
#define DRAIMIOFAF_COMMANDS_H

#include <stdint.h>

/*
 * Configuration commands: X(name, identifier, sub-extractor, gated, set of its parameters as bits
 * of STP_MCEC_SETS). A GATED command is extracted only while a multi-chassis trunk exists; the
 * interface commands decide for each port.
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

/* The bit of a parameter in the set of parameters that a command sets. */
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
 *   VLAN_LIST       VLAN ranges, words:      | unused | n | first last | first last | ...
 *   IFINDEX         interface ranges, words: | unused | n | unused | unused | first last | ...
 *   IF_PORT_MODE, IF_PORT_TYPE   one word: STP_MCEC_IF_PORT_MODE_*
 *   IF_GUARD        one word: STP_MCEC_IF_GUARD_*
 *   IF_MST_SIMULATE_PVST         if present, disables the simulation; the value is not read
 *
 * The _2 identifiers have the same meaning, in another form of the command.
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

/* Values of the attributes IF_PORT_MODE and IF_PORT_TYPE, and of IF_GUARD. */
enum {
  STP_MCEC_IF_PORT_MODE_NORMAL = 2,
  STP_MCEC_IF_PORT_MODE_EDGE_TRUNK = 3,
  STP_MCEC_IF_PORT_MODE_NETWORK = 4,
  STP_MCEC_IF_PORT_MODE_EDGE = 5,
  STP_MCEC_IF_GUARD_ROOT = 1,
  STP_MCEC_IF_GUARD_LOOP = 2,
  STP_MCEC_IF_GUARD_NONE = 3,
};

/* The layer mode of interfaces that run spanning tree. */
enum { STP_MCEC_IF_LAYER_MODE_ACCEPTED = 2 };

#endif
