// What a mapping in a scenario or a state file says of the world around the library, and how it is
// applied to a switch.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "switch/settings.h"
#include "text/yaml.h"

namespace lab {

// What a mapping calls a channel: by its number or its name.
struct ChannelRef {
  std::string name;  // empty: no channel
  uint32_t id = 0;   // 0: not given
};

struct ChannelGroup {
  ChannelRef channel;
  std::optional<bool> internal;
  std::optional<Vlans> vlans;
};

// What a mapping says of some ports; what it does not give stays as it was.
struct PortGroup {
  Ranges indexes;
  std::string name;  // of the one port
  std::optional<ChannelRef> channel;
  std::optional<bool> pod;
  std::optional<bool> spanning_tree;
  std::vector<Entry> parameters;
  std::map<std::string, std::string> uncovered;
};

// What a mapping says of the world around the library.
struct World {
  std::optional<bool> trunk;
  std::optional<Vlans> user_vlans;
  std::vector<ChannelGroup> channels;
  std::vector<PortGroup> ports;
};

// The keys of a mapping that are of the world.
std::vector<std::string> world_keys();

// `with_parameters`: ports may have them.
World read_world(Reader &reader, const YAML::Node &node, bool with_parameters);

// Adds an error for each number that would make one channel or port of two.
void check_collisions(Reader &reader, const YAML::Node &node, const Settings &before,
                      const World &world);

// The change that brings a switch what a mapping says; the settings become what it makes them.
WorldChange change_by(const World &world, Settings &settings);

// Adds a parameter, or replaces the one of its type.
void put_entry(std::vector<Entry> &entries, const Entry &entry);

}  // namespace lab
