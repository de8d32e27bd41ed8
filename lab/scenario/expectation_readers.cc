// How what is expected of a step is read.

#include <algorithm>

#include "scenario/expectations.h"
#include "switch/state_reader.h"

namespace lab {
namespace {

void add_expected(std::vector<Expected> &all, const ExpectationKind &kind, Finding value) {
  all.push_back({.kind = &kind, .subject = "", .side = {}, .value = std::move(value)});
}

uint32_t read_code(StepReader &reader, const YAML::Node &node) {
  const std::string given = node.IsScalar() ? node.Scalar() : "";
  const auto code = find_result(given);
  if (!code) {
    reader.expected(node, "a result: " + one_of(result_keys(), given) + ", or a number");
  }
  return code.value_or(0);
}

// A port as reports call it, by its name or its index; "" where there is none such.
std::string find_name_of_port(const StepReader &reader, const std::string &given) {
  const auto index = parse_number(given);
  for (const Settings &settings : reader.now) {
    const Port *port = index ? find_port(settings, *index) : find_port(settings, given);
    if (port != nullptr) return port_name(*port);
  }
  return index ? port_text(*index) : "";
}

// [stp-mode, ifi-port-type@0x1000]
std::vector<ParameterRecord> read_records(StepReader &reader, const YAML::Node &node) {
  std::vector<ParameterRecord> records;
  const std::string example = "for instance [stp-mode, ifi-port-type@0x1000]";
  if (!reader.sequence(node, "a list of records, " + example)) return records;
  for (const auto &record : node) {
    const std::string given = reader.text(record, "a record");
    const std::size_t at = given.find('@');
    const Parameter *known = find_parameter(std::string_view(given).substr(0, at));
    const std::string port =
        at == given.npos ? "" : find_name_of_port(reader, given.substr(at + 1));
    if (known == nullptr || known->is_global != port.empty()) {
      reader.expected(record,
                      "a parameter of the switch, or one of an interface and its port, " + example);
      continue;
    }
    records.push_back({.type = known->type, .port = port});
  }
  return records;
}

// A mapping with at least one entry.
template <class Each>
void read_mapping(StepReader &reader, const YAML::Node &node, const std::string &what, Each each) {
  reader.entries(node, what, each);
  if (node.IsMap() && node.size() == 0) reader.expected(node, what);
}

void add_verdict_of(std::vector<Expected> &all, const ExpectationKind &kind, std::string subject,
                    uint32_t code) {
  all.push_back(
      {.kind = &kind, .subject = std::move(subject), .side = {}, .value = CheckCode{code}});
}

}  // namespace

void read_expected_result(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                          std::vector<Expected> &all) {
  add_expected(all, kind, ResultCode{read_code(reader, node)});
}

void read_expected_code(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                        std::vector<Expected> &all) {
  add_expected(all, kind, CheckCode{read_code(reader, node)});
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    if (kind.key == std::string_view(switch_names[side])) all.back().side = side;
  }
}

void read_expected_answer(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                          std::vector<Expected> &all) {
  add_expected(all, kind,
               reader.text(node, "an answer: accepted, none, or the message of a refusal"));
}

void read_expected_records(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                           std::vector<Expected> &all) {
  add_expected(all, kind, read_records(reader, node));
}

// {stp-mode: MST, ...}
void read_expected_texts(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                         std::vector<Expected> &all) {
  TextsByType texts;
  read_mapping(reader, node, "parameters and texts, for instance {stp-mode: MST}",
               [&](const YAML::Node &key, const YAML::Node &value) {
                 if (const Parameter *name = read_parameter_name(reader, key)) {
                   texts.emplace_back(name->type, reader.text(value, "a text"));
                 }
               });
  add_expected(all, kind, std::move(texts));
}

void read_expected_types(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                         std::vector<Expected> &all) {
  std::vector<uint16_t> types;
  if (reader.sequence(node, "a list of parameters, for instance [stp-mode]")) {
    for (const auto &name : node) {
      const Parameter *known = read_parameter_name(reader, name);
      if (known != nullptr) types.push_back(known->type);
    }
  }
  std::sort(types.begin(), types.end());
  types.erase(std::unique(types.begin(), types.end()), types.end());
  add_expected(all, kind, std::move(types));
}

void read_expected_vlans(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                         std::vector<Expected> &all) {
  add_expected(all, kind, read_vlan_list(reader, node, "twin VLANs"));
}

// {0x1000: agree}
void read_expected_ports(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                         std::vector<Expected> &all) {
  read_mapping(reader, node, "ports and verdicts, for instance {0x1000: agree}",
               [&](const YAML::Node &key, const YAML::Node &value) {
                 const std::vector<PortOfPair> ports = read_ports(reader, key, "a port");
                 if (ports.size() > 1) reader.expected(key, "one port");
                 for (const PortOfPair &port : ports) {
                   add_verdict_of(all, kind, scope_of(port, reader.now).name,
                                  read_code(reader, value));
                 }
               });
}

// {10: agree}
void read_expected_channels(StepReader &reader, const YAML::Node &node, const ExpectationKind &kind,
                            std::vector<Expected> &all) {
  read_mapping(reader, node, "channels and verdicts, for instance {10: agree}",
               [&](const YAML::Node &key, const YAML::Node &value) {
                 const std::string given = key.IsScalar() ? key.Scalar() : "";
                 add_verdict_of(all, kind, read_channel_name(reader, key, given),
                                read_code(reader, value));
               });
}

// {left: [ifi-port-guard@0x1001]}
void read_expected_inconsistent(StepReader &reader, const YAML::Node &node,
                                const ExpectationKind &kind, std::vector<Expected> &all) {
  if (!reader.mapping(node, "inconsistent ports", {switch_names.begin(), switch_names.end()})) {
    return;
  }
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    const YAML::Node records = node[switch_names[side]];
    if (!records) continue;
    add_expected(all, kind, read_records(reader, records));
    all.back().side = side;
  }
}

}  // namespace lab
