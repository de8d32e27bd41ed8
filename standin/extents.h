// Where the platform's own memory ends: blocks of the memory tracker and payloads of messages. A
// TLV array in one of them is not read past its end, whatever its header claims.
#pragma once

#include <cstddef>

namespace standin {

void note_extent(const void *start, std::size_t size);
void forget_extent(const void *start);

// The bytes from an address to the end of what it lies in; SIZE_MAX for memory of others.
std::size_t extent_from(const void *at);

}  // namespace standin
