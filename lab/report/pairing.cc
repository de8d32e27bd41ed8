#include "report/pairing.h"

#include <algorithm>
#include <set>

namespace lab {
namespace {

constexpr std::array<const char *, 2> names = {"left", "right"};

// "10.0.0.1 with 10.0.0.2".
std::string peers_text(const Settings &settings) {
  std::string text;
  for (const auto &[source, peer] : settings.peerings) {
    text += (text.empty() ? "" : " and ") + (source.empty() ? "no address" : printable(source)) +
            " with " + (peer.empty() ? "no peer" : printable(peer));
  }
  return text.empty() ? "no peer" : text;
}

bool name_each_other(const PairOfSettings &settings) {
  for (const auto &[source, peer] : settings[0]->peerings) {
    const Peering crossed = {peer, source};
    const auto &others = settings[1]->peerings;
    if (!source.empty() && !peer.empty() &&
        std::find(others.begin(), others.end(), crossed) != others.end()) {
      return true;
    }
  }
  return false;
}

// "bpdu_guard (true on left, not set on right)"; empty: nothing differs.
std::string uncovered_text(const Port &left, const Port &right) {
  std::set<std::string> fields;
  for (const Port *port : {&left, &right}) {
    for (const auto &[field, value] : port->uncovered) fields.insert(field);
  }
  const auto on = [](const Port &port, const std::string &field) {
    const auto found = port.uncovered.find(field);
    return found != port.uncovered.end() ? printable(found->second) : "not set";
  };
  std::string text;
  for (const std::string &field : fields) {
    if (left.uncovered.contains(field) == right.uncovered.contains(field) &&
        on(left, field) == on(right, field)) {
      continue;
    }
    text += (text.empty() ? "" : ", ") + printable(field) + " (" + on(left, field) + " on left, " +
            on(right, field) + " on right)";
  }
  return text;
}

}  // namespace

const Port *port_of_channel(const Settings &settings, std::string_view channel) {
  const Channel *of = find_channel(settings, channel);
  for (const Port &port : settings.ports) {
    if (of != nullptr && port.channel == of->id) return &port;
  }
  return nullptr;
}

std::vector<std::string> notes_of(const PairOfSettings &settings) {
  const auto &[left, right] = settings;
  std::vector<std::string> notes;
  if (left->channels.empty() && right->channels.empty()) {
    notes.push_back("The pair has no multi-chassis channel.");
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (!settings[i]->trunk)
      notes.push_back(std::string("The ") + names[i] + " switch has no peer link.");
  }
  if (!left->address.empty() && key_of(left->address) == key_of(right->address)) {
    notes.push_back("Both switches have the address " + printable(left->address) + ".");
  }
  if (!name_each_other(settings)) {
    notes.push_back("The switches do not name each other as peers: left has " + peers_text(*left) +
                    ", right has " + peers_text(*right) + ".");
  }
  for (const Channel &channel : left->channels) {
    const Channel *other = find_channel(*right, channel.name);
    if (other == nullptr) continue;
    const std::array<Vlans, 2> alone = {channel.vlans & ~other->vlans,
                                        other->vlans & ~channel.vlans};
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (alone[i].none()) continue;
      notes.push_back("Only " + (names[i] + (" carries " + vlan_words(alone[i]))) + " on " +
                      printable(channel.name) + ".");
    }
    const Port *port = port_of_channel(*left, channel.name);
    const Port *other_port = port_of_channel(*right, channel.name);
    if (port == nullptr || other_port == nullptr) continue;
    if (const std::string fields = uncovered_text(*port, *other_port); !fields.empty()) {
      notes.push_back("The ports of " + printable(channel.name) +
                      " differ in what no parameter covers: " + fields + ".");
    }
  }
  notes.push_back("Timers and priorities of the region are not looked at.");
  return notes;
}

}  // namespace lab
