// The ports of an interface command.
#pragma once

#include <cstdint>

#include "extract/request.h"
#include "if_index.h"

namespace mcec::extract {

// A walk over the ports of the ranges that are members of a multi-chassis port channel:
//
//   Members members{.list = list};
//   while (next(members)) ...
struct Members {
  RangeList list;
  uint32_t membership = 0;  // the result of the last membership query
  uint32_t if_index = 0;    // of the member
  uint32_t channel = 0;
  uint32_t next_range = 0;
  Range range = {};
  uint32_t port_count = 0;  // in the range
  uint32_t position = 0;
};

// Finds the next member. Returns false if there are no more.
inline bool next(Members &walk) {
  const Range &range = walk.range;
  do {
    while (walk.position == walk.port_count) {
      if (walk.next_range == walk.list.count) return false;
      walk.range = walk.list[walk.next_range++];
      walk.port_count = walk.position = 0;
      if_index_get_num_ports_in_if_index_range(range.first, range.last, &walk.port_count);
    }
    walk.if_index = 0;
    if_index_get_if_index_in_range(range.first, range.last, &walk.if_index, walk.position++);
    walk.membership = find_channel(walk.if_index, walk.channel);
  } while (walk.membership != 0);
  return true;
}

}  // namespace mcec::extract
