// What is compared of a pair: the switch, and each multi-chassis channel, whose lowest port speaks
// for it on each side, whatever the indexes are.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "switch/settings.h"

namespace lab {

struct PairScope {
  enum class Kind : uint8_t { of_switch, of_port, of_channel };

  struct Member {
    uint32_t port;
    std::string name;

    bool operator==(const Member &) const = default;
  };

  // One side of it.
  struct End {
    bool present = true;  // false: this switch has no such channel
    uint32_t port = 0;
    std::string port_name;
    std::vector<Member> others;  // of the channel, after the port

    bool operator==(const End &) const = default;
  };

  Kind kind = Kind::of_switch;
  std::string name = "switch";
  std::array<End, 2> ends = {};

  bool operator==(const PairScope &) const = default;
};

// All that a verdict depends on: the switch, and the channels that have a port on either side, in
// natural order of their names.
std::vector<PairScope> find_scopes(const PairOfSettings &pair);

// The VLANs that the same channel carries on both switches.
Vlans twin_vlans(const PairOfSettings &pair);

}  // namespace lab
