#include "switch/settings.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "switch/values.h"

namespace lab {

std::span<const Port> ports_between(const Settings &settings, uint32_t first, uint32_t last) {
  const auto &ports = settings.ports;
  return {std::ranges::lower_bound(ports, first, {}, &Port::index),
          std::ranges::upper_bound(ports, last, {}, &Port::index)};
}

const Port *find_port(const Settings &settings, uint32_t index) {
  const std::span<const Port> found = ports_between(settings, index, index);
  return found.empty() ? nullptr : &found[0];
}

const Port *find_port(const Settings &settings, std::string_view name) {
  if (name.empty()) return nullptr;  // the name of every port that has only an index
  return find_in(settings.ports, [=](const Port &port) { return port.name == name; });
}

const Channel *find_channel(const Settings &settings, uint32_t id) {
  return find_in(settings.channels, [=](const Channel &channel) { return channel.id == id; });
}

const Channel *find_channel(const Settings &settings, std::string_view name) {
  return find_in(settings.channels, [=](const Channel &channel) { return channel.name == name; });
}

const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type) {
  return find_in(entries, [=](const Entry &entry) { return entry.type == type; });
}

const Port *find_channel_port(const Settings &settings, std::string_view channel) {
  const Channel *found = find_channel(settings, channel);
  if (found == nullptr) return nullptr;
  return find_in(settings.ports, [=](const Port &port) { return port.channel == found->id; });
}

std::optional<uint32_t> running_mode(const Settings &settings) {
  const Entry *mode = find_entry(settings.parameters, STP_MCEC_TYPE1_STP_MODE);
  if (!settings.spanning_tree || mode == nullptr) return std::nullopt;
  return word_of(mode->value);
}

Port &port_at(Settings &settings, uint32_t index) {
  auto at = std::ranges::lower_bound(settings.ports, index, {}, &Port::index);
  if (at == settings.ports.end() || at->index != index) {
    at = settings.ports.insert(at, Port{});
    at->index = index;
  }
  return *at;
}

Channel &channel_named(Settings &settings, const std::string &name) {
  auto at = std::ranges::lower_bound(settings.channels, name, natural_less, &Channel::name);
  if (at == settings.channels.end() || at->name != name) {
    at = settings.channels.insert(at, Channel{});
    at->name = name;
  }
  return *at;
}

void put_entry(std::vector<Entry> &entries, const Entry &entry) {
  std::erase_if(entries, [&](const Entry &old) { return old.type == entry.type; });
  entries.push_back(entry);
}

std::string port_name(const Port &port) {
  return port.name.empty() ? port_text(port.index) : port.name;
}

}  // namespace lab
