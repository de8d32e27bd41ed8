// Floors of the library's functions: the same calls of the platform, the same log lines (formatted
// by vsnprintf), the same bytes read and written, and nothing else. And their common input.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "draimiofaf/types.h"
#include "mcecm.h"
#include "mts.h"

namespace bench {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t parameter_count = 9;

Bytes vlans(std::initializer_list<unsigned> set);

// Returns an array of the parameters of a switch.
Bytes make_array();

// Replaces the contents of the cache by these parameters, with the given mode.
void cache_parameters(uint32_t mode);

uint32_t check_floor(const void *local, const void *remote, uint32_t mode);
uint32_t export_floor(int32_t gbl, uint32_t if_index, void **out);
// Copies the texts from a report that the library returned before.
uint32_t report_floor(const void *array, const mcecm_app_info_report_t *texts, void **out);
uint32_t command_floor(mts_msg_t *msg, uint8_t **array, uint32_t *count, uint32_t *is_cmd,
                       mcecm_app_cmd_extract_info_t **records);
uint32_t twins_floor(uint16_t type, const uint8_t *local, const uint8_t *remote,
                     const uint8_t *twins, bmp4096_t *pass, bmp4096_t *fail);

}  // namespace bench
