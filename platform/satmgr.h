/*
 * Satellite manager: pods, the remote port extenders.
 */
#ifndef DRAIMIOFAF_PLATFORM_SATMGR_H
#define DRAIMIOFAF_PLATFORM_SATMGR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns a value other than 0 if the interface is a host-interface port of a pod. */
uint32_t satmgr_if_is_pod_port(uint32_t if_index);

#ifdef __cplusplus
}
#endif

#endif
