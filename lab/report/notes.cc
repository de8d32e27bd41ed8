#include <algorithm>

#include "draimiofaf/types.h"
#include "report/pair.h"

namespace lab {
namespace {

using enum NoteKind;

using TextMap = std::map<std::string, std::string>;

std::optional<std::string> value_in(const TextMap &texts, const std::string &name) {
  const auto found = texts.find(name);
  return found != texts.end() ? std::optional(found->second) : std::nullopt;
}

// The fields whose values differ, by their defaults, which count where there is no value.
template <class Defaults>
std::vector<NoteField> find_differing(const TextMap &left, const TextMap &right,
                                      const Defaults &defaults) {
  std::vector<NoteField> fields;
  for (const auto &[name, value] : defaults) {
    NoteField field{name, {value_in(left, name), value_in(right, name)}};
    if (field.values[0].value_or(value) != field.values[1].value_or(value)) {
      fields.push_back(std::move(field));
    }
  }
  return fields;
}

// Adds a note on fields, if there are any.
void add_field_note(NoteKind kind, const std::string &channel, std::vector<NoteField> fields,
                    std::vector<Note> &notes) {
  if (!fields.empty()) {
    notes.push_back({.kind = kind, .channel = channel, .fields = std::move(fields)});
  }
}

// --- channels ---

void add_port_notes(const std::string &channel, const Port &left, const Port &right,
                    std::vector<Note> &notes) {
  if (left.spanning_tree != right.spanning_tree) {
    notes.push_back({spanning_tree_on_one_half, channel, left.spanning_tree ? 0U : 1U});
  }
  TextMap defaults;
  for (const Port *port : {&left, &right}) {
    for (const auto &[name, value] : port->uncovered) {
      defaults[name] = name == "link_type" ? "auto" : "false";
    }
  }
  add_field_note(port_setting, channel, find_differing(left.uncovered, right.uncovered, defaults),
                 notes);
}

void add_channel_notes(const PairOfSettings &settings, const Channel &channel,
                       std::vector<Note> &notes) {
  const Channel *half = find_channel(*settings[1], channel.name);
  if (half == nullptr) return;
  if (channel.vlans != half->vlans) {
    notes.push_back({.kind = vlan_on_one_half,
                     .channel = channel.name,
                     .vlans = {channel.vlans & ~half->vlans, half->vlans & ~channel.vlans}});
  }
  const Port *left = port_of_channel(*settings[0], channel.name);
  const Port *right = port_of_channel(*settings[1], channel.name);
  if (left == nullptr || right == nullptr) return;
  add_port_notes(channel.name, *left, *right, notes);
  if (settings[0]->spanning_tree && settings[1]->spanning_tree && !left->spanning_tree &&
      !right->spanning_tree) {
    notes.push_back({spanning_tree_off_on_channel, channel.name});
  }
}

// --- timers ---

// A field for each timer and pair of values, with the VLANs that have them.
std::vector<NoteField> differing_vlan_timers(const PairOfSettings &settings) {
  const auto timers_of = [](const Settings &of, uint32_t vlan) {
    const auto found = of.vlan_timers.find(vlan);
    return found != of.vlan_timers.end() ? found->second : Timers{};
  };
  std::vector<NoteField> all;
  const Vlans twins = twin_vlans(settings);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (!twins[vlan]) continue;
    for (NoteField &field : find_differing(timers_of(*settings[0], vlan),
                                           timers_of(*settings[1], vlan), timer_defaults)) {
      auto at = std::ranges::find_if(all, [&](const NoteField &known) {
        return known.name == field.name && known.values == field.values;
      });
      if (at == all.end()) at = all.insert(all.end(), field);
      at->vlans.set(vlan);
    }
  }
  return all;
}

void add_timer_notes(const PairOfSettings &settings, std::vector<Note> &notes) {
  const auto mode = running_mode(*settings[0]);
  if (!mode || mode != running_mode(*settings[1])) return;
  if (mode == STP_MCEC_STP_MODE_RAPID_PVST) {
    add_field_note(vlan_timer, "", differing_vlan_timers(settings), notes);
  }
  add_field_note(timer, "",
                 find_differing(settings[0]->timers, settings[1]->timers, timer_defaults), notes);
}

// --- the switches ---

// A value of the domains of both sides. A switch has one, as a rule; of several all are listed.
NoteField domain_field(const std::string &name, const PairOfSettings &settings,
                       std::optional<std::string> (*value_of)(const Domain &)) {
  NoteField field{name, {}};
  for (std::size_t side = 0; side < settings.size(); ++side) {
    auto &all = field.values[side];
    for (const Domain &domain : settings[side]->domains) {
      const auto value = value_of(domain);
      if (value) all = all ? *all + ", " + *value : *value;
    }
  }
  return field;
}

std::optional<std::string> if_given(const std::string &text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

bool are_peers(const Domain &left, const Domain &right) {
  return !left.peer.empty() && !right.peer.empty() && left.peer == right.source &&
         right.peer == left.source;
}

void add_domain_notes(const PairOfSettings &settings, bool is_intended, std::vector<Note> &notes) {
  const auto &left = settings[0]->domains;
  const auto &right = settings[1]->domains;
  if (left.empty() || right.empty()) return;
  std::vector<NoteField> differing = {
      domain_field("id", settings, [](const Domain &of) { return std::optional(of.id); }),
      domain_field("system-id", settings, [](const Domain &of) { return of.system_id; })};
  std::erase_if(differing, [](const auto &field) { return field.values[0] == field.values[1]; });
  add_field_note(domain, "", std::move(differing), notes);
  const bool cross = std::ranges::any_of(left, [&](const Domain &ours) {
    return std::ranges::any_of(right, [&](const Domain &peer) { return are_peers(ours, peer); });
  });
  if (cross || is_intended) return;
  add_field_note(
      peers_do_not_cross, "",
      {domain_field("source", settings, [](const Domain &of) { return if_given(of.source); }),
       domain_field("peer", settings, [](const Domain &of) { return if_given(of.peer); })},
      notes);
}

void add_switch_notes(const PairOfSettings &settings, bool is_intended, std::vector<Note> &notes) {
  add_domain_notes(settings, is_intended, notes);
  const auto &[left, right] = settings;
  if (!is_intended && !left->address.empty() && key_of(left->address) == key_of(right->address)) {
    add_field_note(same_address, "", {{"address", {left->address, right->address}}}, notes);
  }
  for (std::size_t side = 0; side < settings.size(); ++side) {
    if (!settings[side]->channels.empty() && !settings[side]->trunk) {
      notes.push_back({no_peer_link, "", side});
    }
  }
  if (!left->spanning_tree && !right->spanning_tree) notes.push_back({spanning_tree_off});
}

}  // namespace

const std::vector<std::string> &note_keys() {
  static const std::vector<std::string> keys = {"spanning-tree-on-one-half",
                                                "vlan-on-one-half",
                                                "port-setting",
                                                "spanning-tree-off-on-channel",
                                                "vlan-timer",
                                                "timer",
                                                "domain",
                                                "peers-do-not-cross",
                                                "same-address",
                                                "no-peer-link",
                                                "spanning-tree-off",
                                                "acceptance"};
  return keys;
}

std::vector<Note> find_notes(const PairOfSettings &settings, bool is_intended) {
  std::vector<Note> notes;
  for (const Channel &channel : settings[0]->channels) add_channel_notes(settings, channel, notes);
  add_timer_notes(settings, notes);
  add_switch_notes(settings, is_intended, notes);
  std::ranges::stable_sort(notes, {}, &Note::kind);
  return notes;
}

}  // namespace lab
