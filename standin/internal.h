// Shared by the sources of the stand-in.
#pragma once

#include <cstddef>
#include <cstdint>

#include "standin.h"

namespace standin {

__attribute__((format(printf, 1, 2))) void misuse(const char *format, ...);

// Counts a call, and returns true if it must fail.
bool fails(standin_operation_t operation);

void reset_switch();

// The extents of the platform's own memory: blocks of the memory tracker and payloads of messages.
// A TLV array in one of them is not read past its end, whatever its header states.
void add_extent(const void *start, std::size_t size);
void remove_extent(const void *start);

// Returns the bytes from an address to the end of its extent, or SIZE_MAX if the address is in no
// extent.
std::size_t bytes_to_end(const void *at);

}  // namespace standin
