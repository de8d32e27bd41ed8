/*
 * Messages for the host process in host.c. On a switch they arrive; in this example the platform
 * makes them: desk_standin.c on the stand-in, desk_platform.c on the platform in platform/.
 */
#ifndef EXAMPLE_DESK_H
#define EXAMPLE_DESK_H

#include <draimiofaf/platform/mts.h>

/* A switch with a multi-chassis trunk. */
void desk_set_up(void);

/* A command in its positive form, without attributes; an update message with a copy of its payload.
 * Release either with desk_release. */
mts_msg_t *desk_command(uint32_t cmd_id);
mts_msg_t *desk_update(const void *payload, uint32_t size);
void desk_release(mts_msg_t *msg);

/* How the command was answered: NULL not at all, "" accepted, else the text of the refusal. */
const char *desk_answer(const mts_msg_t *msg);

#endif
