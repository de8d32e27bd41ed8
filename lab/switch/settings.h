// The settings of a switch, read from a scenario, a state file, a dump or a database. A switch
// process is set up from this record, and pairs are compared by it.
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

// A multi-chassis port channel. The channel of the same name on the peer is its other half.
struct Channel {
  std::string name;  // "PortChannel10", or "channel 10"
  uint32_t id = 0;   // of the platform; not 0
  bool internal = false;
  Vlans vlans;  // carried by the channel

  bool operator==(const Channel &) const = default;
};

// The index of a port that represents a whole channel is the sum of this and the channel's id.
constexpr uint32_t first_channel_index = 0x16000000;

struct Port {
  uint32_t index = 0;
  std::string name;      // empty if the port has only an index
  uint32_t channel = 0;  // the id of its multi-chassis channel; 0 if it is in none
  bool pod = false;
  std::vector<Entry> parameters;  // types 10 to 12
  bool spanning_tree = true;      // enabled on the port
  // Fields of the port that no parameter covers: "bpdu_guard", "link_type".
  std::map<std::string, std::string> uncovered;

  bool operator==(const Port &) const = default;
};

// A multi-chassis domain as configured on one switch. The values are not parsed.
struct Domain {
  std::string id;
  std::optional<std::string> system_id;
  std::string source;  // the address of the switch; empty if unknown
  std::string peer;    // the address of the peer; empty if unknown

  bool operator==(const Domain &) const = default;
};

// Timers by name. The values are not parsed; a missing timer has its default.
using Timers = std::map<std::string, std::string>;

struct TimerDefault {
  const char *name;
  const char *value;
};
inline constexpr std::array<TimerDefault, 4> timer_defaults = {
    {{"forward-delay", "15"}, {"hello-time", "2"}, {"max-age", "20"}, {"max-hops", "20"}}};

struct Settings {
  std::string name;           // empty if unknown
  std::string address;        // of the bridge; not parsed
  bool spanning_tree = true;  // enabled on the switch
  bool trunk = true;          // the multi-chassis trunk exists
  std::vector<Domain> domains;
  Timers timers;                           // of the running mode
  std::map<uint32_t, Timers> vlan_timers;  // by VLAN, in Rapid-PVST
  Vlans user_vlans;
  std::vector<Channel> channels;  // in natural order of their names
  std::vector<Port> ports;        // by index
  std::vector<Entry> parameters;  // types 1 to 9, in the order in which they reach the cache

  bool operator==(const Settings &) const = default;
};

// The result of reading the settings of a source.
struct ReadSettings {
  Settings settings;
  InputErrors errors;       // if there are any, the settings are invalid
  std::string source = {};  // the label of the source, for messages
};

// The settings of the left and the right switch.
using SettingsPair = std::array<Settings, 2>;
using SettingsPairView = std::array<const Settings *, 2>;

// These return nullptr if there is no match.
const Port *find_port(const Settings &settings, uint32_t index);
const Port *find_port(const Settings &settings, std::string_view name);
const Channel *find_channel(const Settings &settings, uint32_t id);
const Channel *find_channel(const Settings &settings, std::string_view name);
const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type);

// Returns the first port of a channel, or nullptr if there is no such channel or no port in it.
const Port *find_channel_port(const Settings &settings, std::string_view channel);

// Returns the mode of spanning tree (STP_MCEC_STP_MODE_*), nullopt if it is disabled or unknown.
std::optional<uint32_t> running_mode(const Settings &settings);

// Returns the ports with indexes from `first` to `last`.
std::span<const Port> ports_between(const Settings &settings, uint32_t first, uint32_t last);

// Return the port with an index and the channel with a name, which is added if it is missing.
// Invalidate references that were returned before.
Port &port_at(Settings &settings, uint32_t index);
Channel &channel_named(Settings &settings, const std::string &name);

// Adds a parameter, or replaces the one of its type.
void put_entry(std::vector<Entry> &entries, const Entry &entry);

// Returns the name of a port, or its index if it has no name.
std::string port_name(const Port &port);

}  // namespace lab
