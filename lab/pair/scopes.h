// The scopes of a comparison: the switch, and each multi-chassis channel. On each side the lowest
// port of a channel is compared; the indexes of these ports may differ.
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

  // One side of a scope.
  struct End {
    bool present = true;  // false if the switch does not have the channel
    uint32_t port = 0;
    std::string port_name;
    std::vector<Member> others;  // the rest of the channel's ports

    bool operator==(const End &) const = default;
  };

  Kind kind = Kind::of_switch;
  std::string name = "switch";
  std::array<End, 2> ends = {};

  bool operator==(const PairScope &) const = default;
};

// Returns the switch, and the channels that have a port on either side, in natural order of their
// names. A verdict depends on all of these scopes.
std::vector<PairScope> find_scopes(const SettingsPairView &pair);

// Returns the VLANs that channels of the same name carry on both switches.
Vlans twin_vlans(const SettingsPairView &pair);

}  // namespace lab
