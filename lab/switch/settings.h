// What a switch is set to: one record, wherever it comes from (a scenario, a state file, a dump or
// a database), and all that the lab needs to bring a switch up and to compare a pair.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "switch/vlans.h"
#include "text/error.h"
#include "text/text.h"

namespace lab {

// A parameter with its value in network byte order, as in a TLV array.
struct Entry {
  uint16_t type;
  Bytes value;

  bool operator==(const Entry &) const = default;
};

// A multi-chassis port channel. The peer's channel of the same name is its other half.
struct Channel {
  std::string name;  // "PortChannel10", or "channel 10"
  uint32_t id = 0;   // the platform's, not 0
  bool internal = false;
  Vlans vlans;  // that it carries

  bool operator==(const Channel &) const = default;
};

// The index of a port that stands for a whole channel is this and the channel's id.
constexpr uint32_t first_channel_index = 0x16000000;

struct Port {
  uint32_t index = 0;
  std::string name;      // empty: it is called by its index
  uint32_t channel = 0;  // the id of its multi-chassis channel; 0: a member of none
  bool pod = false;
  std::vector<Entry> parameters;  // types 10 to 12
  bool spanning_tree = true;      // does it run on the port?
  // What the switch says of the port that no parameter covers: "bpdu_guard", "link_type".
  std::map<std::string, std::string> uncovered;

  bool operator==(const Port &) const = default;
};

// A multi-chassis domain as one switch has it; its values are kept as they are written.
struct Domain {
  std::string id;
  std::optional<std::string> system_id;
  std::string source;  // the switch's own address, and the peer's; empty: not given
  std::string peer;

  bool operator==(const Domain &) const = default;
};

// Timers by name, as they are written. One that is not given has its default.
using Timers = std::map<std::string, std::string>;

struct TimerDefault {
  const char *name;
  const char *value;
};
inline constexpr std::array<TimerDefault, 4> timer_defaults = {
    {{"forward-delay", "15"}, {"hello-time", "2"}, {"max-age", "20"}, {"max-hops", "20"}}};

struct Settings {
  std::string name;           // the switch's own; empty: it has none
  std::string address;        // of the bridge, as written
  bool spanning_tree = true;  // does it run at all?
  bool trunk = true;          // does the multi-chassis trunk exist?
  std::vector<Domain> domains;
  Timers timers;                           // of the mode that runs
  std::map<uint32_t, Timers> vlan_timers;  // of VLANs, in Rapid-PVST
  Vlans user_vlans;
  std::vector<Channel> channels;  // in natural order of their names
  std::vector<Port> ports;        // by index
  std::vector<Entry> parameters;  // types 1 to 9, in the order in which they reach the cache

  bool operator==(const Settings &) const = default;
};

// Settings as they are read from a source.
struct ReadSettings {
  Settings settings;
  InputErrors errors;       // with some, the settings are of no use
  std::string source = {};  // as it may be shown, where it is not known to who reads
};

// Of both switches, left and right.
using SettingsPair = std::array<Settings, 2>;
using PairOfSettings = std::array<const Settings *, 2>;

// nullptr: there is none of that index or name.
const Port *find_port(const Settings &settings, uint32_t index);
const Port *find_port(const Settings &settings, std::string_view name);
const Channel *find_channel(const Settings &settings, uint32_t id);
const Channel *find_channel(const Settings &settings, std::string_view name);
const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type);

// The port that stands for a channel; nullptr: the switch has no such channel, or no port of it.
const Port *port_of_channel(const Settings &settings, std::string_view channel);

// The mode of spanning tree (STP_MCEC_STP_MODE_*); nothing: it is off, or not known.
std::optional<uint32_t> running_mode(const Settings &settings);

// The ports whose indexes lie in a range.
std::span<const Port> ports_between(const Settings &settings, uint32_t first, uint32_t last);

// The port of an index, the channel of a name; made, in its place, where there is none. What was
// returned before may have moved.
Port &port_at(Settings &settings, uint32_t index);
Channel &channel_named(Settings &settings, const std::string &name);

// Adds a parameter, or replaces the one of its type.
void put_entry(std::vector<Entry> &entries, const Entry &entry);

// The name, or the index of a port that has none.
std::string port_name(const Port &port);

}  // namespace lab
