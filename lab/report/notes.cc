#include <algorithm>

#include "draimiofaf/types.h"
#include "report/pair.h"

namespace lab {
namespace {

using enum NoteKind;

using TextMap = std::map<std::string, std::string>;

std::optional<std::string> find_text(const TextMap &texts, const std::string &name) {
  const auto found = texts.find(name);
  return found != texts.end() ? std::optional(found->second) : std::nullopt;
}

// Returns the fields of `defaults` whose values differ. A missing value has the default.
template <class Defaults>
std::vector<NoteField> find_differing(const TextMap &left, const TextMap &right,
                                      const Defaults &defaults) {
  std::vector<NoteField> fields;
  for (const auto &[name, default_text] : defaults) {
    NoteField field{name, {find_text(left, name), find_text(right, name)}};
    if (field.values[0].value_or(default_text) != field.values[1].value_or(default_text)) {
      fields.push_back(std::move(field));
    }
  }
  return fields;
}

// Adds a note unless there are no fields.
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

void add_channel_notes(const SettingsPairView &settings, const Channel &channel,
                       std::vector<Note> &notes) {
  const Channel *peer = find_channel(*settings[1], channel.name);
  if (peer == nullptr) return;
  if (channel.vlans != peer->vlans) {
    notes.push_back({.kind = vlan_on_one_half,
                     .channel = channel.name,
                     .vlans = {channel.vlans & ~peer->vlans, peer->vlans & ~channel.vlans}});
  }
  const Port *left = find_channel_port(*settings[0], channel.name);
  const Port *right = find_channel_port(*settings[1], channel.name);
  if (left == nullptr || right == nullptr) return;
  add_port_notes(channel.name, *left, *right, notes);
  if (settings[0]->spanning_tree && settings[1]->spanning_tree && !left->spanning_tree &&
      !right->spanning_tree) {
    notes.push_back({spanning_tree_off_on_channel, channel.name});
  }
}

// --- timers ---

// Returns a field for each timer and pair of values, with the VLANs that have these values.
std::vector<NoteField> find_differing_vlan_timers(const SettingsPairView &settings) {
  const auto timers_of = [&](std::size_t side, uint32_t vlan) {
    const auto found = settings[side]->vlan_timers.find(vlan);
    return found != settings[side]->vlan_timers.end() ? found->second : Timers{};
  };
  std::vector<NoteField> fields;
  const Vlans twins = twin_vlans(settings);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (!twins[vlan]) continue;
    for (NoteField &field :
         find_differing(timers_of(0, vlan), timers_of(1, vlan), timer_defaults)) {
      auto found = std::ranges::find_if(fields, [&](const NoteField &other) {
        return other.name == field.name && other.values == field.values;
      });
      if (found == fields.end()) found = fields.insert(fields.end(), field);
      found->vlans.set(vlan);
    }
  }
  return fields;
}

void add_timer_notes(const SettingsPairView &settings, std::vector<Note> &notes) {
  const auto mode = running_mode(*settings[0]);
  if (!mode || mode != running_mode(*settings[1])) return;
  if (mode == STP_MCEC_STP_MODE_RAPID_PVST) {
    add_field_note(vlan_timer, "", find_differing_vlan_timers(settings), notes);
  }
  add_field_note(timer, "",
                 find_differing(settings[0]->timers, settings[1]->timers, timer_defaults), notes);
}

// --- the switches ---

// Returns a value of the domains on both sides. A switch usually has one domain; the values of
// several are joined.
NoteField make_domain_field(const std::string &name, const SettingsPairView &settings,
                            std::optional<std::string> (*value_of)(const Domain &)) {
  NoteField field{name, {}};
  for (std::size_t side = 0; side < settings.size(); ++side) {
    auto &values = field.values[side];
    for (const Domain &domain : settings[side]->domains) {
      const auto value = value_of(domain);
      if (value) values = values ? *values + ", " + *value : *value;
    }
  }
  return field;
}

std::optional<std::string> null_if_empty(const std::string &text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

bool are_peers(const Domain &left, const Domain &right) {
  return !left.peer.empty() && !right.peer.empty() && left.peer == right.source &&
         right.peer == left.source;
}

void add_domain_notes(const SettingsPairView &settings, bool is_intended,
                      std::vector<Note> &notes) {
  const auto &left = settings[0]->domains;
  const auto &right = settings[1]->domains;
  if (left.empty() || right.empty()) return;
  std::vector<NoteField> differing = {
      make_domain_field("id", settings, [](const Domain &row) { return std::optional(row.id); }),
      make_domain_field("system-id", settings, [](const Domain &row) { return row.system_id; })};
  std::erase_if(differing, [](const auto &field) { return field.values[0] == field.values[1]; });
  add_field_note(domain, "", std::move(differing), notes);
  const bool has_peers = std::ranges::any_of(left, [&](const Domain &local) {
    return std::ranges::any_of(right, [&](const Domain &peer) { return are_peers(local, peer); });
  });
  if (has_peers || is_intended) return;
  add_field_note(peers_do_not_cross, "",
                 {make_domain_field("source", settings,
                                    [](const Domain &row) { return null_if_empty(row.source); }),
                  make_domain_field("peer", settings,
                                    [](const Domain &row) { return null_if_empty(row.peer); })},
                 notes);
}

void add_switch_notes(const SettingsPairView &settings, bool is_intended,
                      std::vector<Note> &notes) {
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

std::vector<Note> find_notes(const SettingsPairView &settings, bool is_intended) {
  std::vector<Note> notes;
  for (const Channel &channel : settings[0]->channels) add_channel_notes(settings, channel, notes);
  add_timer_notes(settings, notes);
  add_switch_notes(settings, is_intended, notes);
  std::ranges::stable_sort(notes, {}, &Note::kind);
  return notes;
}

}  // namespace lab
