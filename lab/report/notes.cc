#include "report/notes.h"

#include <algorithm>
#include <set>

#include "draimiofaf/types.h"
#include "pair/scopes.h"

namespace lab {
namespace {

using enum NoteKind;

constexpr NoteRule rules[] = {
    {spanning_tree_on_one_half, "spanning-tree-on-one-half", Severity::warning},
    {vlan_on_one_half, "vlan-on-one-half", Severity::warning},
    {port_setting, "port-setting", Severity::warning},
    {spanning_tree_off_on_channel, "spanning-tree-off-on-channel", Severity::warning},
    {vlan_timer, "vlan-timer", Severity::warning},
    {timer, "timer", Severity::warning},
    {domain, "domain", Severity::warning},
    {peers_do_not_cross, "peers-do-not-cross", Severity::warning},
    {same_address, "same-address", Severity::warning},
    {no_peer_link, "no-peer-link", Severity::warning},
    {spanning_tree_off, "spanning-tree-off", Severity::info},
    {acceptance, "acceptance", Severity::warning},
};

constexpr bool is_in_order() {
  for (std::size_t i = 0; i < std::size(rules); ++i) {
    if (std::size_t(rules[i].kind) != i) return false;
  }
  return std::size(rules) == std::size_t(acceptance) + 1;
}
static_assert(is_in_order());

using TextMap = std::map<std::string, std::string>;

std::optional<std::string> value_in(const TextMap &texts, const std::string &name) {
  const auto found = texts.find(name);
  return found != texts.end() ? std::optional(found->second) : std::nullopt;
}

NoteField field_of(const std::string &name, const TextMap &left, const TextMap &right) {
  return {name, {value_in(left, name), value_in(right, name)}, {}};
}

bool differs(const NoteField &field, const std::string &by_default) {
  return field.values[0].value_or(by_default) != field.values[1].value_or(by_default);
}

// --- channels ---

void add_port_notes(const std::string &channel, const std::array<const Port *, 2> &ports,
                    std::vector<Note> &notes) {
  const auto &[left, right] = ports;
  if (left->spanning_tree != right->spanning_tree) {
    notes.push_back({spanning_tree_on_one_half, channel, left->spanning_tree ? 0U : 1U, {}, {}});
  }
  std::set<std::string> names;
  for (const Port *port : ports) {
    for (const auto &[name, value] : port->uncovered) names.insert(name);
  }
  Note setting{port_setting, channel, {}, {}, {}};
  for (const std::string &name : names) {
    const NoteField field = field_of(name, left->uncovered, right->uncovered);
    if (differs(field, name == "link_type" ? "auto" : "false")) setting.fields.push_back(field);
  }
  if (!setting.fields.empty()) notes.push_back(setting);
}

void add_channel_notes(const PairOfSettings &settings, const Channel &channel,
                       std::vector<Note> &notes) {
  const Channel *half = find_channel(*settings[1], channel.name);
  if (half == nullptr) return;
  if (channel.vlans != half->vlans) {
    notes.push_back({vlan_on_one_half,
                     channel.name,
                     {},
                     {channel.vlans & ~half->vlans, half->vlans & ~channel.vlans},
                     {}});
  }
  const std::array<const Port *, 2> ports = {port_of_channel(*settings[0], channel.name),
                                             port_of_channel(*settings[1], channel.name)};
  if (ports[0] == nullptr || ports[1] == nullptr) return;
  add_port_notes(channel.name, ports, notes);
  if (settings[0]->spanning_tree && settings[1]->spanning_tree && !ports[0]->spanning_tree &&
      !ports[1]->spanning_tree) {
    notes.push_back({spanning_tree_off_on_channel, channel.name, {}, {}, {}});
  }
}

// --- timers ---

std::vector<NoteField> differing_timers(const Timers &left, const Timers &right) {
  std::vector<NoteField> fields;
  for (const auto &[name, value] : timer_defaults) {
    const NoteField field = field_of(name, left, right);
    if (differs(field, value)) fields.push_back(field);
  }
  return fields;
}

// A field for each timer and pair of values, with the VLANs that have them.
std::vector<NoteField> differing_vlan_timers(const PairOfSettings &settings) {
  static const Timers none;
  const auto timers_of = [](const Settings &of, uint32_t vlan) -> const Timers & {
    const auto found = of.vlan_timers.find(vlan);
    return found != of.vlan_timers.end() ? found->second : none;
  };
  std::vector<NoteField> all;
  const Vlans twins = twin_vlans(settings);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    if (!twins[vlan]) continue;
    for (NoteField &field :
         differing_timers(timers_of(*settings[0], vlan), timers_of(*settings[1], vlan))) {
      auto at = std::find_if(all.begin(), all.end(), [&](const NoteField &known) {
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
    const auto fields = differing_vlan_timers(settings);
    if (!fields.empty()) notes.push_back({vlan_timer, "", {}, {}, fields});
  }
  const auto fields = differing_timers(settings[0]->timers, settings[1]->timers);
  if (!fields.empty()) notes.push_back({timer, "", {}, {}, fields});
}

// --- the switches ---

// A value of the domains of both sides. A switch has one, as a rule; of several all are listed.
NoteField domain_field(const std::string &name, const PairOfSettings &settings,
                       std::optional<std::string> (*value_of)(const Domain &)) {
  NoteField field{name, {}, {}};
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
  Note differing{domain, "", {}, {}, {}};
  for (const NoteField &field :
       {domain_field("id", settings, [](const Domain &of) { return std::optional(of.id); }),
        domain_field("system-id", settings, [](const Domain &of) { return of.system_id; })}) {
    if (field.values[0] != field.values[1]) differing.fields.push_back(field);
  }
  if (!differing.fields.empty()) notes.push_back(differing);
  const bool cross = std::any_of(left.begin(), left.end(), [&](const Domain &ours) {
    return std::any_of(right.begin(), right.end(),
                       [&](const Domain &theirs) { return are_peers(ours, theirs); });
  });
  if (cross || is_intended) return;
  notes.push_back(
      {peers_do_not_cross,
       "",
       {},
       {},
       {domain_field("source", settings, [](const Domain &of) { return if_given(of.source); }),
        domain_field("peer", settings, [](const Domain &of) { return if_given(of.peer); })}});
}

void add_switch_notes(const PairOfSettings &settings, bool is_intended, std::vector<Note> &notes) {
  add_domain_notes(settings, is_intended, notes);
  const auto &[left, right] = settings;
  if (!is_intended && !left->address.empty() && key_of(left->address) == key_of(right->address)) {
    notes.push_back({same_address, "", {}, {}, {{"address", {left->address, right->address}, {}}}});
  }
  for (std::size_t side = 0; side < settings.size(); ++side) {
    if (!settings[side]->channels.empty() && !settings[side]->trunk) {
      notes.push_back({no_peer_link, "", side, {}, {}});
    }
  }
  if (!left->spanning_tree && !right->spanning_tree) {
    notes.push_back({spanning_tree_off, "", {}, {}, {}});
  }
}

}  // namespace

std::span<const NoteRule> note_rules() {
  return rules;
}

const NoteRule &rule_of(NoteKind kind) {
  return rules[std::size_t(kind)];
}

const NoteRule *find_note_rule(std::string_view key) {
  const auto *found = std::find_if(std::begin(rules), std::end(rules), [=](const NoteRule &rule) {
    return std::string_view(rule.key) == key;
  });
  return found != std::end(rules) ? found : nullptr;
}

std::vector<Note> find_notes(const PairOfSettings &settings, bool is_intended) {
  std::vector<Note> notes;
  for (const Channel &channel : settings[0]->channels) add_channel_notes(settings, channel, notes);
  add_timer_notes(settings, notes);
  add_switch_notes(settings, is_intended, notes);
  std::stable_sort(notes.begin(), notes.end(),
                   [](const Note &a, const Note &b) { return a.kind < b.kind; });
  return notes;
}

}  // namespace lab
