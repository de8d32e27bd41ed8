// What the stand-in's sources share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "standin.h"

namespace standin {

__attribute__((format(printf, 1, 2))) void misuse(const char *format, ...);

// Count a call; true when it is one that must fail.
bool fails(standin_operation_t operation);

// Each source puts back what it keeps.
void reset_history();
void reset_requests();
void reset_switch();

// Where the platform's own memory ends: blocks of the memory tracker and payloads of messages. A
// TLV array in one of them is not read past its end, whatever its header claims.
void note_extent(const void *start, std::size_t size);
void forget_extent(const void *start);

// The bytes from an address to the end of what it lies in; SIZE_MAX for memory of others.
std::size_t extent_from(const void *at);

}  // namespace standin
