#include "scenario.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <ios>
#include <map>
#include <set>

#include "reader.h"
#include "standin.h"

namespace lab {
namespace {

constexpr uint8_t port_interface_type = 26;

const std::map<std::string, uint32_t> port_type_words = {
    {"normal", STP_MCEC_IF_PORT_MODE_NORMAL},
    {"edge-trunk", STP_MCEC_IF_PORT_MODE_EDGE_TRUNK},
    {"network", STP_MCEC_IF_PORT_MODE_NETWORK},
    {"edge", STP_MCEC_IF_PORT_MODE_EDGE}};
const std::map<std::string, uint32_t> guard_words = {{"root", STP_MCEC_IF_GUARD_ROOT},
                                                     {"loop", STP_MCEC_IF_GUARD_LOOP},
                                                     {"none", STP_MCEC_IF_GUARD_NONE}};
const std::map<std::string, uint32_t> operation_words = {
    {"allocation", STANDIN_ALLOC},     {"tlv-add", STANDIN_TLV_ADD},
    {"tlv-read", STANDIN_TLV_NEXT},    {"tlv-find", STANDIN_TLV_FIND},
    {"history", STANDIN_HISTORY_INIT}, {"membership", STANDIN_MEMBERSHIP}};
const std::map<std::string, uint32_t> signal_words = {
    {"ABRT", SIGABRT}, {"SEGV", SIGSEGV}, {"KILL", SIGKILL}, {"BUS", SIGBUS}};

// What the expectations of a step may speak of.
const std::vector<std::string> result_only = {"result"};
const std::vector<std::string> of_command = {"answer", "result", "records", "values"};
const std::vector<std::string> of_update = {"result", "records", "values"};
const std::vector<std::string> of_check = {"verdict", "left", "right", "differ",
                                           "pass",    "fail", "ports"};
const std::vector<std::string> of_report = {"result", "texts"};

struct ScenarioReader;
struct ActionRule {
  std::vector<std::string> keys;    // besides the action's own, "on", "note" and "expect"
  std::vector<std::string> expect;  // empty: nothing can be expected
  void (ScenarioReader::*read)(const YAML::Node &node, const YAML::Node &value, Step &step);
};

const std::map<std::string, ActionRule> &action_rules();

struct ScenarioReader : Reader {
  std::array<std::set<uint32_t>, 2> members;  // as the steps so far leave them
  std::set<std::string> saved;                // names of exported arrays
  std::string twin_vlans;                     // of the scenario

  // --- the switches ---

  void port_group(const YAML::Node &node, std::size_t which, Json &world,
                  std::vector<Json> *requests) {
    std::vector<std::string> keys = {"ports", "member", "pod", "type", "layer-mode"};
    if (requests != nullptr) keys.push_back("parameters");
    if (!mapping(node, "a group of ports", keys)) return;
    if (!required(node, "ports", "a group of ports")) return;
    Json group;
    group["type"] = port_interface_type;
    group["layer"] = STP_MCEC_IF_LAYER_MODE_ACCEPTED;
    if (node["type"]) group["type"] = number(node["type"], "type", 0, UINT8_MAX);
    if (node["layer-mode"]) group["layer"] = number(node["layer-mode"], "layer-mode");
    if (node["member"]) group["member"] = number(node["member"], "member");
    if (node["pod"]) group["pod"] = boolean(node["pod"], "pod");
    Json values = Json::array();
    if (node["parameters"]) values = entries(node["parameters"], "parameters", false);
    for (const auto &[first, last] : port_ranges(node["ports"], "ports")) {
      group["first"] = first;
      group["last"] = last;
      world["ports"].push_back(group);
      for (uint32_t port = first;; ++port) {
        ports.insert(port);
        if (group.contains("member")) {
          if (group["member"] != 0) members[which].insert(port);
          if (group["member"] == 0) members[which].erase(port);
        }
        if (!values.empty() && requests != nullptr) {
          requests->push_back(
              {{"do", "cache-update"}, {"global", false}, {"port", port}, {"entries", values}});
        }
        if (port == last) break;
      }
    }
  }

  // The world of a switch, or of both, as far as a node says.
  Json world(const YAML::Node &node, const std::array<bool, 2> &on, std::vector<Json> *requests) {
    Json made = {{"do", "world"}};
    if (node["trunk"]) made["trunk"] = boolean(node["trunk"], "trunk");
    if (node["user-vlans"]) made["user-vlans"] = vlans(node["user-vlans"], "user-vlans");
    if (const YAML::Node groups = node["ports"]) {
      if (!groups.IsSequence()) expected(groups, "a list of groups of ports");
      made["ports"] = Json::array();
      for (std::size_t which = 0; groups.IsSequence() && which < on.size(); ++which) {
        if (!on[which]) continue;
        made["ports"].clear();
        for (const auto &group : groups) port_group(group, which, made, requests);
      }
    }
    if (const YAML::Node channels = node["internal-channels"]) {
      if (!channels.IsSequence()) expected(channels, "a list of channels, for instance [10, 11]");
      for (const auto &channel : channels) {
        made["internal-channels"].push_back(number(channel, "a channel"));
      }
    }
    return made;
  }

  std::vector<Json> switch_setup(const YAML::Node &node, std::size_t which) {
    std::vector<Json> requests;
    Json made = {{"do", "world"}, {"trunk", true}};
    if (node.IsDefined() && !node.IsNull() &&
        mapping(node, std::string("switch ") + (which == 0 ? "left" : "right"),
                {"trunk", "user-vlans", "ports", "internal-channels", "parameters"})) {
      made.update(world(node, {which == 0, which == 1}, &requests));
      if (node["parameters"]) {
        requests.push_back({{"do", "cache-update"},
                            {"global", true},
                            {"port", 0},
                            {"entries", entries(node["parameters"], "parameters", true)}});
      }
    }
    requests.insert(requests.begin(), made);
    return requests;
  }

  // --- steps ---

  static Json switch_scope() { return {{"global", true}, {"port", 0}}; }

  std::vector<Json> port_scopes(const YAML::Node &node, const std::string &what) {
    std::vector<Json> read;
    for (const uint32_t port : ports_in(existing_ports(node, what))) {
      read.push_back({{"global", false}, {"port", port}});
    }
    return read;
  }

  // "switch", or ports; one request for each scope.
  std::vector<Json> scopes(const YAML::Node &node, const std::string &what) {
    if (node.IsScalar() && node.Scalar() == "switch") return {switch_scope()};
    if (node.IsScalar() && parse_ranges(node.Scalar(), UINT32_MAX)) return port_scopes(node, what);
    expected(node, what + ": switch, or port indexes");
    return {};
  }

  // The scopes of a step that acts on the switch unless it has a key "port".
  std::vector<Json> scopes_by_port(const YAML::Node &node) {
    return node["port"] ? port_scopes(node["port"], "port") : std::vector<Json>{switch_scope()};
  }

  static std::string scope_text(const YAML::Node &node) {
    return node["port"] ? " of port " + node["port"].Scalar() : "";
  }

  // Let every request do the same to another scope.
  static void request_each(Step &step, const std::vector<Json> &of_scopes, const Json &request) {
    for (const Json &scope : of_scopes) {
      step.requests.push_back(request);
      step.requests.back().update(scope);
    }
  }

  static Json attribute(uint32_t id, const Bytes &value) {
    return {{"id", id}, {"value", hex(value)}};
  }

  static Bytes host_words(const std::vector<uint32_t> &words) {
    Bytes made(words.size() * sizeof(uint32_t));
    if (!made.empty()) std::memcpy(made.data(), words.data(), made.size());
    return made;
  }

  // A list of ranges behind a header of some words, of which the second is their number.
  static Bytes range_list(const Ranges &ranges, std::size_t header_words) {
    std::vector<uint32_t> words(header_words);
    words[1] = uint32_t(ranges.size());
    for (const auto &[first, last] : ranges) words.insert(words.end(), {first, last});
    return host_words(words);
  }

  void raw_attributes(const YAML::Node &node, Json &attributes) {
    if (!node.IsSequence()) return expected(node, "a list of attributes, {id, word or bytes}");
    for (const auto &raw : node) {
      if (!mapping(raw, "an attribute", {"id", "word", "bytes"})) continue;
      if (!required(raw, "id", "an attribute")) continue;
      const uint32_t id = number(raw["id"], "the attribute's id");
      if (raw["word"].IsDefined() == raw["bytes"].IsDefined()) {
        expected(raw, "an attribute with either a word or bytes");
        continue;
      }
      attributes.push_back(attribute(id, raw["word"].IsDefined()
                                             ? host_words({number(raw["word"], "a word")})
                                             : bytes(raw["bytes"], "an attribute")));
    }
  }

  void command(const YAML::Node &node, const YAML::Node &value, Step &step) {
    const CommandName *known =
        value.IsScalar() ? find_command(std::string_view(value.Scalar())) : nullptr;
    uint32_t id = known != nullptr ? known->id : 0;
    if (known == nullptr) {
      const auto given = value.IsScalar() ? parse_number(value.Scalar()) : std::nullopt;
      if (!given) {
        std::vector<std::string> keys;
        for (const CommandName &name : commands()) keys.push_back(name.key);
        expected(value, "a command: " + one_of(keys) + ", or an identifier");
      }
      id = given.value_or(0);
      known = find_command(id);
    }
    bool positive = true;
    if (node["form"]) {
      positive = word_value(node["form"], "form", {{"no", 0}, {"set", 1}}, false) != 0;
    }
    Json attributes = Json::array();
    const auto needs = [&](const char *key, std::initializer_list<uint32_t> ids) {
      if (!node[key]) return false;
      if (known == nullptr && id == 0) return false;
      if (std::find(ids.begin(), ids.end(), id) != ids.end()) return true;
      mistake(node[key], std::string("'") + key + "' does not belong to " +
                             (known != nullptr ? known->key : std::to_string(id)) +
                             "; expected it with " + one_of(names_of(ids)) + " only");
      return false;
    };
    if (needs("mode", {STP_MCEC_CMD_STP_MODE})) {
      const uint32_t mode = word_value(node["mode"], "mode", value_words(STP_MCEC_TYPE1_STP_MODE));
      attributes.push_back(attribute(STP_MCEC_ATTR_STP_MODE, host_words({mode})));
    }
    if (needs("vlans", {STP_MCEC_CMD_STP_ENDIS})) {
      attributes.push_back(
          attribute(STP_MCEC_ATTR_VLAN_LIST, range_list(vlans(node["vlans"], "vlans"), 2)));
    }
    if (needs("port-type", {STP_MCEC_CMD_IF_PORT_MODE, STP_MCEC_CMD_IF_PORT_TYPE})) {
      const uint32_t type = word_value(node["port-type"], "port-type", port_type_words);
      attributes.push_back(attribute(
          id == STP_MCEC_CMD_IF_PORT_MODE ? STP_MCEC_ATTR_IF_PORT_MODE : STP_MCEC_ATTR_IF_PORT_TYPE,
          host_words({type})));
    }
    if (needs("guard", {STP_MCEC_CMD_IF_GUARD})) {
      const uint32_t guard = word_value(node["guard"], "guard", guard_words);
      attributes.push_back(attribute(STP_MCEC_ATTR_IF_GUARD, host_words({guard})));
    }
    if (needs("simulate-pvst", {STP_MCEC_CMD_IF_MST_SIMULATE_PVST})) {
      word_value(node["simulate-pvst"], "simulate-pvst", {{"disabled", 0}}, false);
      attributes.push_back(attribute(STP_MCEC_ATTR_IF_MST_SIMULATE_PVST, {}));
    }
    Ranges ranges;
    if (node["ports"]) {
      ranges = existing_ports(node["ports"], "ports");
      attributes.push_back(attribute(STP_MCEC_ATTR_IFINDEX, range_list(ranges, 4)));
    }
    if (node["attributes"]) raw_attributes(node["attributes"], attributes);
    step.requests.push_back(
        {{"do", "command"}, {"id", id}, {"positive", positive}, {"attributes", attributes}});
    Json &affected = step.requests.back()["ports"] = Json::array();
    for (const uint32_t port : ports_in(ranges)) affected.push_back(port);

    step.summary = std::string(positive ? "" : "no ") +
                   (known != nullptr ? known->key : "command " + std::to_string(id));
    for (const char *key : {"mode", "vlans", "port-type", "guard", "simulate-pvst", "ports"}) {
      if (node[key] && node[key].IsScalar()) {
        step.summary += std::string(" ") + key + " " + node[key].Scalar();
      }
    }
  }

  static std::vector<std::string> names_of(std::initializer_list<uint32_t> ids) {
    std::vector<std::string> names;
    for (const uint32_t id : ids) names.push_back(find_command(id)->key);
    return names;
  }

  void update(const YAML::Node &node, const YAML::Node &value, Step &step) {
    const Json request = {{"do", step.action}, {"entries", entries(value, step.action)}};
    request_each(step, scopes_by_port(node), request);
    std::string keys;
    for (const Json &entry : request["entries"]) {
      keys += (keys.empty() ? " " : ", ") + parameter_key(entry["type"].get<uint32_t>());
    }
    step.summary = step.action + scope_text(node) + ":" + keys;
  }

  void delete_scope(const YAML::Node &, const YAML::Node &value, Step &step) {
    request_each(step, scopes(value, "what to delete"), {{"do", "delete"}});
    step.summary = "delete " + found_text(value);
  }

  void export_scope(const YAML::Node &node, const YAML::Node &value, Step &step) {
    Json request = {{"do", "export"}};
    if (node["as"]) {
      request["as"] = text(node["as"], "a name for the array");
      saved.insert(request["as"]);
    }
    request_each(step, scopes(value, "what to export"), request);
    if (step.requests.size() > 1) expected(value, "the switch or one port");
    step.summary = "export " + found_text(value);
  }

  void rebuild(const YAML::Node &node, const YAML::Node &value, Step &step) {
    const std::string name = text(value, "the name of an exported array");
    if (!saved.contains(name)) {
      const std::vector<std::string> names(saved.begin(), saved.end());
      expected(value, names.empty() ? "an array, but no step before has exported one 'as' a name"
                                    : "an array that a step before has exported: " + one_of(names));
    }
    request_each(step, scopes_by_port(node), {{"do", "rebuild"}, {"from", name}});
    step.summary = "rebuild" + scope_text(node) + " from " + name;
  }

  void check(const YAML::Node &node, const YAML::Node &value, Step &step) {
    std::vector<Json> checked;
    if (value.IsScalar() && value.Scalar() == "all") {
      checked.push_back(switch_scope());
      std::set<uint32_t> either = members[0];
      either.insert(members[1].begin(), members[1].end());
      for (const uint32_t port : either) checked.push_back({{"global", false}, {"port", port}});
    } else if (value.IsScalar() && (value.Scalar() == "switch" || !value.Scalar().empty())) {
      checked = scopes(value, "what to check (all, too)");
    } else {
      expected(value, "what to check: all, switch, or port indexes");
    }
    Json request = {{"do", "check"}, {"scopes", checked}};
    if (node["twin-vlans"]) {
      request["twin-vlans"] = vlan_record_hex(node["twin-vlans"], "twin-vlans");
    } else if (!twin_vlans.empty()) {
      request["twin-vlans"] = twin_vlans;
    }
    step.requests.push_back(std::move(request));
    step.on = {true, true};
    step.summary = "check " + found_text(value);
  }

  void report(const YAML::Node &, const YAML::Node &value, Step &step) {
    request_each(step, scopes(value, "what to report"), {{"do", "report"}});
    step.summary = "report " + found_text(value);
  }

  void change(const YAML::Node &, const YAML::Node &value, Step &step) {
    if (!mapping(value, "a change", {"trunk", "user-vlans", "ports", "internal-channels"})) return;
    step.requests.push_back(world(value, step.on, nullptr));
    step.summary = "change";
    for (const auto &pair : value) step.summary += " " + pair.first.Scalar();
  }

  void fail(const YAML::Node &node, const YAML::Node &value, Step &step) {
    const uint32_t operation = word_value(value, "what is to fail", operation_words, false);
    const uint32_t nth = node["nth"] ? number(node["nth"], "nth", 1) : 1;
    const uint32_t times = node["times"] ? number(node["times"], "times") : 1;
    step.requests.push_back(
        {{"do", "fail"}, {"operation", operation}, {"nth", nth}, {"times", times}});
    step.summary = "fail " + found_text(value) + " " + std::to_string(nth);
  }

  void crash(const YAML::Node &, const YAML::Node &value, Step &step) {
    const uint32_t number = word_value(value, "a signal", signal_words, false);
    step.requests.push_back({{"do", "crash"}, {"signal", number}});
    step.summary = "crash " + found_text(value);
  }

  static std::string found_text(const YAML::Node &node) {
    return node.IsScalar() ? printable(node.Scalar()) : "";
  }

  // --- expectations ---

  uint32_t result_code(const YAML::Node &node) {
    const auto code = node.IsScalar() ? find_result(node.Scalar()) : std::nullopt;
    if (!code) {
      std::vector<std::string> names = {"agree", "ok"};
      for (const auto &[name, known] : results()) names.push_back(name);
      expected(node, "a result: " + one_of(names) + ", or a number");
    }
    return code.value_or(0);
  }

  // {stp-mode: MST, ...}
  Json texts(const YAML::Node &node) {
    Json read = Json::object();
    if (!node.IsMap() || node.size() == 0) {
      expected(node, "parameters and texts, for instance {stp-mode: MST}");
      return read;
    }
    for (const auto &pair : node) {
      if (const ParameterName *name = parameter(pair.first)) {
        read[name->key] = text(pair.second, "a text");
      }
    }
    return read;
  }

  // [stp-mode, ifi-port-type@0x1000]
  Json records(const YAML::Node &node) {
    Json read = Json::array();
    if (!node.IsSequence()) {
      expected(node, "a list of records, for instance [stp-mode, ifi-port-type@0x1000]");
      return read;
    }
    for (const auto &record : node) {
      const std::string given = text(record, "a record");
      const std::size_t at = given.find('@');
      const YAML::Node name(given.substr(0, at));
      const ParameterName *known = find_parameter(std::string_view(name.Scalar()));
      const auto port = at == given.npos ? 0 : parse_number(given.substr(at + 1));
      if (known == nullptr || !port || known->is_global != (at == given.npos)) {
        expected(record,
                 "a parameter of the switch, or one of an interface and its port, for "
                 "instance ifi-port-type@0x1000");
        continue;
      }
      read.push_back(known->is_global ? known->key : known->key + "@" + port_text(*port));
    }
    return read;
  }

  Json expectation(const std::string &key, const YAML::Node &node) {
    if (key == "result" || key == "verdict" || key == "left" || key == "right") {
      return result_name(result_code(node));
    }
    if (key == "answer")
      return text(node, "an answer: accepted, none, or the message of a refusal");
    if (key == "records") return records(node);
    if (key == "values" || key == "texts") return texts(node);
    if (key == "pass" || key == "fail") return vlan_text(vlan_record(vlans(node, key)));
    if (key == "differ") {
      Json read = Json::array();
      if (!node.IsSequence()) expected(node, "a list of parameters, for instance [stp-mode]");
      for (const auto &name : node) {
        if (const ParameterName *known = parameter(name)) read.push_back(known->key);
      }
      return read;
    }
    Json read = Json::object();  // ports
    if (!node.IsMap() || node.size() == 0) {
      expected(node, "ports and verdicts, for instance {0x1000: agree}");
      return read;
    }
    for (const auto &pair : node) {
      for (const auto &[first, last] : existing_ports(pair.first, "a port")) {
        read[port_text(first)] = result_name(result_code(pair.second));
        if (first != last) expected(pair.first, "one port");
      }
    }
    return read;
  }

  void expectations(const YAML::Node &node, const ActionRule &rule, Step &step) {
    if (rule.expect.empty()) {
      return mistake(node, "nothing can be expected of '" + step.action + "'");
    }
    if (!mapping(node, "the expectations of '" + step.action + "'", rule.expect)) return;
    if (node.size() == 0) return expected(node, "at least one of " + one_of(rule.expect));
    for (const auto &pair : node) {
      const std::string key = pair.first.Scalar();
      if (std::find(rule.expect.begin(), rule.expect.end(), key) == rule.expect.end()) continue;
      step.expect[key] = expectation(key, pair.second);
    }
  }

  void read_on(const YAML::Node &node, Step &step) {
    const std::string given = node.IsScalar() ? node.Scalar() : "";
    if (given != "left" && given != "right" && given != "both") {
      return expected(node, "on: left, right or both");
    }
    step.on = {given != "right", given != "left"};
  }

  void step(const YAML::Node &node, Scenario &scenario) {
    Step made;
    made.line = node.Mark().line + 1;
    const ActionRule *rule = nullptr;
    YAML::Node value;
    for (const auto &pair : node.IsMap() ? node : YAML::Node(YAML::NodeType::Map)) {
      const auto known = action_rules().find(pair.first.IsScalar() ? pair.first.Scalar() : "");
      if (known == action_rules().end()) continue;
      if (rule != nullptr) {
        mistake(pair.first, "found '" + known->first + "' besides '" + made.action +
                                "'; expected one thing to do in a step");
      }
      made.action = known->first;
      rule = &known->second;
      value.reset(pair.second);
    }
    if (rule == nullptr) {
      std::string keys;
      for (const auto &pair : node.IsMap() ? node : YAML::Node(YAML::NodeType::Map)) {
        keys += (keys.empty() ? "'" : ", '") + found_text(pair.first) + "'";
      }
      return mistake(node, (keys.empty() ? found(node) : "found a step with " + keys) +
                               "; expected a step with one of " + one_of(step_actions()));
    }
    std::vector<std::string> allowed = {made.action, "on", "note", "expect"};
    allowed.insert(allowed.end(), rule->keys.begin(), rule->keys.end());
    if (made.action == "check") allowed.erase(allowed.begin() + 1);
    mapping(node, "a '" + made.action + "' step", allowed);
    if (node["on"] && made.action != "check") read_on(node["on"], made);
    if (node["note"]) made.note = text(node["note"], "a note");
    (this->*rule->read)(node, value, made);
    if (node["expect"]) expectations(node["expect"], *rule, made);
    scenario.steps.push_back(std::move(made));
  }

  void read(const YAML::Node &root, Scenario &scenario) {
    if (!root.IsMap()) return expected(root, "a scenario, a mapping with 'steps'");
    if (!mapping(root, "a scenario", {"title", "about", "twin-vlans", "switches", "steps"})) return;
    if (root["title"]) scenario.title = text(root["title"], "a title");
    if (root["about"]) scenario.about = text(root["about"], "a text");
    if (root["twin-vlans"]) twin_vlans = vlan_record_hex(root["twin-vlans"], "twin-vlans");
    scenario.twin_vlans = twin_vlans;
    const YAML::Node switches = root["switches"];
    if (switches && !switches.IsNull()) {
      mapping(switches, "switches", {"left", "right"});
    }
    const bool have_switches = switches && switches.IsMap();
    scenario.setup[0] = switch_setup(have_switches ? switches["left"] : YAML::Node(), 0);
    scenario.setup[1] = switch_setup(have_switches ? switches["right"] : YAML::Node(), 1);
    const YAML::Node steps = root["steps"];
    if (!required(root, "steps", "a scenario")) return;
    if (!steps.IsSequence() || steps.size() == 0) {
      return mistake(steps, "no step in 'steps'; expected a list of at least one");
    }
    for (const auto &node : steps) step(node, scenario);
  }
};

const std::map<std::string, ActionRule> &action_rules() {
  static const std::map<std::string, ActionRule> rules = {
      {"command",
       {{"form", "mode", "vlans", "ports", "port-type", "guard", "simulate-pvst", "attributes"},
        of_command,
        &ScenarioReader::command}},
      {"update", {{"port"}, of_update, &ScenarioReader::update}},
      {"cache-update", {{"port"}, result_only, &ScenarioReader::update}},
      {"delete", {{}, result_only, &ScenarioReader::delete_scope}},
      {"export", {{"as"}, {}, &ScenarioReader::export_scope}},
      {"rebuild", {{"port"}, result_only, &ScenarioReader::rebuild}},
      {"check", {{"twin-vlans"}, of_check, &ScenarioReader::check}},
      {"report", {{}, of_report, &ScenarioReader::report}},
      {"change", {{}, {}, &ScenarioReader::change}},
      {"fail", {{"nth", "times"}, {}, &ScenarioReader::fail}},
      {"crash", {{}, {}, &ScenarioReader::crash}},
  };
  return rules;
}

}  // namespace

std::vector<std::string> step_actions() {
  std::vector<std::string> actions;
  for (const auto &[action, rule] : action_rules()) actions.push_back(action);
  return actions;
}

ReadScenario read_scenario(const std::string &path) {
  ReadScenario read;
  read.scenario.path = printable(path);
  ScenarioReader reader;
  try {
    const std::vector<YAML::Node> documents = YAML::LoadAllFromFile(path);
    if (documents.empty()) {
      reader.mistakes.push_back({1, 1, "the file is empty; expected a scenario in YAML"});
    } else {
      reader.read(documents[0], read.scenario);
    }
    if (documents.size() > 1) {
      reader.mistake(documents[1],
                     "a second document begins here; expected one scenario in a file");
    }
  } catch (const YAML::BadFile &) {
    reader.mistakes.push_back({1, 1, "the file cannot be read; expected a scenario in YAML"});
  } catch (const YAML::Exception &problem) {
    reader.mistakes.push_back({std::max(problem.mark.line, 0) + 1,
                               std::max(problem.mark.column, 0) + 1,
                               "no YAML here: " + problem.msg + "; expected a scenario in YAML"});
  } catch (const std::ios_base::failure &) {
    reader.mistakes.push_back({1, 1, "this is no file to read; expected a scenario in YAML"});
  }
  read.mistakes = std::move(reader.mistakes);
  std::stable_sort(read.mistakes.begin(), read.mistakes.end(),
                   [](const Mistake &a, const Mistake &b) { return a.line < b.line; });
  return read;
}

}  // namespace lab
