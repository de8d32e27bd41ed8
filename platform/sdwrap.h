/*
 * Event history: the diagnostic lines of a service, for whoever looks into a fault.
 */
#ifndef DRAIMIOFAF_PLATFORM_SDWRAP_H
#define DRAIMIOFAF_PLATFORM_SDWRAP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Prepare the history of a service; size: bytes to keep (the library asks for 0x40000). 0:
 * initialised. On any other result the library tries again with its next line.
 */
uint32_t sdwrap_hist_init_for_uuid(uint32_t service_id, uint32_t size);

/*
 * Append one record. The library passes event 0x730000, a and b 0, and as the record a word of 1 in
 * host byte order followed by the line with its NUL; length counts all of it, at most 516 bytes.
 * The line mostly ends in a line feed; one without is continued by the next. The record is copied
 * or written before the call returns. It is called also when the initialisation failed. The result
 * is not looked at.
 */
uint32_t sdwrap_his_log_event_for_uuid_inst(uint32_t service_id, uint32_t event, uint32_t a,
                                            uint32_t b, uint32_t length, const void *record);

#ifdef __cplusplus
}
#endif

#endif
