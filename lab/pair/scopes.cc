#include "pair/scopes.h"

#include <algorithm>
#include <map>

namespace lab {
namespace {

struct NaturalLess {
  bool operator()(const std::string &a, const std::string &b) const { return natural_less(a, b); }
};

using Ends = std::array<PairScope::End, 2>;

void collect_ports(std::map<std::string, Ends, NaturalLess> &channels, const Settings &settings,
                   std::size_t which) {
  std::map<uint32_t, std::string> names;
  for (const Channel &channel : settings.channels) names[channel.id] = channel.name;
  for (const Port &port : settings.ports) {
    if (port.channel == 0) continue;
    const auto [at, is_new] = channels.try_emplace(names.at(port.channel));
    Ends &ends = at->second;
    if (is_new) ends[0].present = ends[1].present = false;
    if (ends[which].present) {
      ends[which].others.push_back({port.index, port_name(port)});
    } else {
      ends[which] = {true, port.index, port_name(port), {}};
    }
  }
}

}  // namespace

std::vector<PairScope> find_scopes(const SettingsPairView &pair) {
  std::map<std::string, Ends, NaturalLess> channels;
  for (std::size_t which = 0; which < pair.size(); ++which) {
    collect_ports(channels, *pair[which], which);
  }
  std::vector<PairScope> scopes = {PairScope{}};
  for (auto &[name, ends] : channels) {
    // A switch without the channel checks the peer's array under the index of the peer's port.
    for (std::size_t which = 0; which < ends.size(); ++which) {
      if (!ends[which].present) ends[which].port = ends[1 - which].port;
    }
    scopes.push_back({PairScope::Kind::of_channel, name, std::move(ends)});
  }
  return scopes;
}

Vlans twin_vlans(const SettingsPairView &pair) {
  Vlans twins;
  for (const Channel &channel : pair[0]->channels) {
    const Channel *half = find_channel(*pair[1], channel.name);
    if (half != nullptr) twins |= channel.vlans & half->vlans;
  }
  return twins;
}

}  // namespace lab
