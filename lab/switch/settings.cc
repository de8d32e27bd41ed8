#include "switch/settings.h"

#include <algorithm>

#include "draimiofaf/types.h"
#include "switch/values.h"

namespace lab {
namespace {

auto port_place(auto &ports, uint32_t index) {
  return std::lower_bound(ports.begin(), ports.end(), index,
                          [](const Port &port, uint32_t wanted) { return port.index < wanted; });
}

auto channel_place(auto &channels, std::string_view name) {
  return std::lower_bound(channels.begin(), channels.end(), name,
                          [](const Channel &channel, std::string_view wanted) {
                            return natural_less(channel.name, wanted);
                          });
}

}  // namespace

const Port *find_port(const Settings &settings, uint32_t index) {
  const auto at = port_place(settings.ports, index);
  return at != settings.ports.end() && at->index == index ? &*at : nullptr;
}

const Port *find_port(const Settings &settings, std::string_view name) {
  return find_in(settings.ports, [=](const Port &port) { return port.name == name; });
}

const Channel *find_channel(const Settings &settings, uint32_t id) {
  return find_in(settings.channels, [=](const Channel &channel) { return channel.id == id; });
}

const Channel *find_channel(const Settings &settings, std::string_view name) {
  const auto at = channel_place(settings.channels, name);
  return at != settings.channels.end() && at->name == name ? &*at : nullptr;
}

const Entry *find_entry(const std::vector<Entry> &entries, uint16_t type) {
  return find_in(entries, [=](const Entry &entry) { return entry.type == type; });
}

const Port *port_of_channel(const Settings &settings, std::string_view channel) {
  const Channel *of = find_channel(settings, channel);
  if (of == nullptr) return nullptr;
  return find_in(settings.ports, [=](const Port &port) { return port.channel == of->id; });
}

std::optional<uint32_t> running_mode(const Settings &settings) {
  const Entry *mode = find_entry(settings.parameters, STP_MCEC_TYPE1_STP_MODE);
  if (!settings.spanning_tree || mode == nullptr) return std::nullopt;
  return word_of(mode->value);
}

std::span<const Port> ports_between(const Settings &settings, uint32_t first, uint32_t last) {
  const auto begin = port_place(settings.ports, first);
  const auto end =
      std::upper_bound(begin, settings.ports.end(), last,
                       [](uint32_t wanted, const Port &port) { return wanted < port.index; });
  return {begin, end};
}

Port &port_at(Settings &settings, uint32_t index) {
  auto at = port_place(settings.ports, index);
  if (at == settings.ports.end() || at->index != index) {
    at = settings.ports.insert(at, Port{});
    at->index = index;
  }
  return *at;
}

Channel &channel_named(Settings &settings, const std::string &name) {
  auto at = channel_place(settings.channels, name);
  if (at == settings.channels.end() || at->name != name) {
    at = settings.channels.insert(at, Channel{});
    at->name = name;
  }
  return *at;
}

std::string port_name(const Port &port) {
  return port.name.empty() ? port_text(port.index) : port.name;
}

}  // namespace lab
