#include "run.h"

#include <algorithm>

#include "pair.h"
#include "wire.h"

namespace lab {
namespace {

// Scopes of a check that are asked at once; between them the watcher hears of the progress.
constexpr std::size_t scopes_at_once = 128;

struct Runner {
  const Scenario &scenario;
  RunOptions options;
  const Watcher &watcher;
  Pair pair;
  std::array<std::map<std::string, Json>, 2> saved;  // exported arrays by name
  std::size_t done = 0;
  std::size_t work = 0;
  const Step *at = nullptr;  // the step under way
  std::size_t number = 0;

  void worked(std::size_t amount) {
    done += amount;
    if (watcher.on_work) watcher.on_work(done, work);
  }

  std::array<Json, 2> ask_switches(const std::array<bool, 2> &on, Json request) {
    if (interrupted()) throw Interrupted{};
    if (options.log) request["log"] = true;
    return ask(pair, on, request);
  }
};

std::size_t work_of(const Step &step) {
  std::size_t work = step.requests.size();
  for (const Json &request : step.requests) {
    if (request.contains("scopes")) work += request["scopes"].size();
  }
  return work;
}

Json code_json(uint32_t code) {
  return {{"name", result_name(code)}, {"code", code}};
}

Json value_json(uint32_t type, const std::string &hex_value) {
  const Bytes value = unhex(hex_value);
  return {{"parameter", parameter_key(type)},
          {"type", type},
          {"length", value.size()},
          {"text", display(static_cast<uint16_t>(type), value)},
          {"bytes", hex_value}};
}

Json record_json(const Json &record) {
  const uint32_t type = record["type"];
  Json told = {{"parameter", parameter_key(type)}, {"type", type}};
  told["port"] = record["global"].get<bool>() ? Json(nullptr) : Json(port_text(record["port"]));
  if (record["valid"] != 1) told["valid"] = false;
  return told;
}

// "switch", or a port; nothing for a request that has no scope.
Json scope_name(const Json &request) {
  if (!request.contains("global")) return nullptr;
  return request["global"].get<bool>() ? Json("switch") : Json(port_text(request["port"]));
}

// What a request's reply says, in the words of the document. `told` gathers several requests of one
// step: the first result that is not 0 counts, lists grow.
void tell_reply(const Json &reply, Json &told, const Json &scope = Json()) {
  if (told.is_null()) told = Json::object();
  if (reply.contains("result") && (!told.contains("result") || told["result"]["code"] == 0)) {
    told["result"] = code_json(reply["result"]);
    if (reply["result"] == 0) told["result"]["name"] = "ok";
  }
  if (reply.contains("answers")) {
    told["answer"] = "none";
    for (const Json &answer : reply["answers"]) {
      std::string text =
          answer["accepted"].get<bool>() ? "accepted" : answer["text"].get<std::string>();
      while (text.ends_with("\n")) text.pop_back();
      told["answer"] = text;
      told["accepted"] = answer["accepted"];
    }
  }
  if (reply.contains("values")) {
    for (const char *key : {"records", "values"}) {
      if (!told.contains(key)) told[key] = Json::array();
    }
    for (const Json &record : reply["records"]) told["records"].push_back(record_json(record));
    for (const Json &value : reply["values"]) {
      const Json said = value_json(value["type"], value["value"]);
      // The same update of several ports is told once.
      const bool is_told =
          std::find(told["values"].begin(), told["values"].end(), said) != told["values"].end();
      if (!is_told) told["values"].push_back(said);
    }
  } else if (reply.contains("records")) {
    if (!told.contains("report")) told["report"] = Json::array();
    for (const Json &record : reply["records"]) {
      told["report"].push_back({{"scope", scope},
                                {"parameter", parameter_key(record["type"].get<uint32_t>())},
                                {"type", record["type"]},
                                {"component", record["component"]},
                                {"name", record["name"]},
                                {"value", record["value"]}});
    }
  }
  if (reply.contains("entries")) {
    told["parameters"] = Json::array();
    for (const Json &value : reply["entries"]) {
      told["parameters"].push_back(value_json(value["type"], value["value"]));
    }
  }
  if (reply.contains("log")) {
    Json &log = told["log"];
    if (!log.is_array()) log = Json::array();
    log.insert(log.end(), reply["log"].begin(), reply["log"].end());
  }
}

// Values that differ although they read the same: say what they are made of.
void tell_apart(const Json &parameter, Json &local_text, Json &peer_text) {
  if (local_text.is_null() || local_text != peer_text || parameter["local"] == parameter["peer"])
    return;
  const auto made_of = [](const std::string &hex_value) {
    const Bytes value = unhex(hex_value);
    return value.size() == 4 ? " (" + std::to_string(word_of(value)) + ")"
                             : " (" + std::to_string(value.size()) + " bytes)";
  };
  const std::string local = made_of(parameter["local"]);
  const std::string peer = made_of(parameter["peer"]);
  local_text =
      local_text.get<std::string>() + (local != peer ? local : " (other bytes than the peer's)");
  peer_text = peer_text.get<std::string>() + (local != peer ? peer : "");
}

// One scope as both switches see it. `mine` is the left switch's view, or that of the switch that
// would change; `other` the view from the other side, null when there is none.
Json tell_scope(const Json &mine, const Json &other, std::size_t mine_index) {
  const char *const mine_name = switch_names[mine_index];
  const char *const other_name = switch_names[1 - mine_index];
  const bool global = mine["global"];
  Json told = {{"scope", scope_name(mine)}};
  if (!global) told["pod"] = mine["pod"];
  Json &verdicts = told["verdicts"] = Json::object();
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    const Json &view = i == mine_index ? mine : other;
    if (!view.is_null()) verdicts[switch_names[i]] = code_json(view["verdict"]);
  }
  Json &parameters = told["parameters"] = Json::array();
  for (std::size_t row = 0; row < mine["parameters"].size(); ++row) {
    const Json &parameter = mine["parameters"][row];
    const uint32_t type = parameter["type"];
    Json line = {
        {"parameter", parameter_key(type)}, {"type", type}, {"left", nullptr}, {"right", nullptr}};
    if (parameter.contains("local")) line[mine_name] = value_json(type, parameter["local"])["text"];
    if (parameter.contains("peer")) line[other_name] = value_json(type, parameter["peer"])["text"];
    tell_apart(parameter, line[mine_name], line[other_name]);
    Json &states = line["states"] = Json::object();
    for (std::size_t i = 0; i < switch_names.size(); ++i) {
      const Json &view = i == mine_index ? mine : other;
      if (!view.is_null()) states[switch_names[i]] = view["parameters"][row]["state"];
    }
    parameters.push_back(std::move(line));
  }
  for (const Json *view : {&mine, &other}) {
    if (told.contains("pass") || !view->contains("pass")) continue;
    told["pass"] = (*view)["pass"];
    told["fail"] = (*view)["fail"];
  }
  return told;
}

void check(Runner &runner, const Step &step, Json &told) {
  Json &checks = told["checks"] = Json::array();
  const Json &whole = step.requests.front();
  const Json &scopes = whole["scopes"];
  for (std::size_t at = 0; at < scopes.size(); at += scopes_at_once) {
    const std::size_t end = std::min(at + scopes_at_once, scopes.size());
    Json request = whole;
    request["scopes"] = Json::array();
    for (std::size_t i = at; i < end; ++i) request["scopes"].push_back(scopes[i]);
    const std::array<Json, 2> replies = runner.ask_switches(step.on, request);
    for (std::size_t i = 0; i < end - at; ++i) {
      checks.push_back(tell_scope(replies[0]["scopes"][i], replies[1]["scopes"][i], 0));
    }
    for (std::size_t i = 0; i < replies.size(); ++i) {
      tell_reply({{"log", replies[i].value("log", Json::array())}},
                 told["switches"][switch_names[i]]);
    }
    runner.worked(end - at);
  }
  if (!runner.options.log) told.erase("switches");
}

// Give a request what an earlier step has saved.
Json completed(const Runner &runner, const Json &request, std::size_t which) {
  Json complete = request;
  if (!request.contains("from")) return complete;
  const auto found = runner.saved[which].find(request["from"]);
  const std::size_t other = 1 - which;
  const auto &array = found != runner.saved[which].end()
                          ? found->second
                          : runner.saved[other].at(request["from"].get<std::string>());
  complete["array"] = array;
  return complete;
}

void do_requests(Runner &runner, const Step &step, Json &told) {
  for (const Json &request : step.requests) {
    std::array<Json, 2> replies;
    if (request.contains("from")) {
      for (std::size_t i = 0; i < replies.size(); ++i) {
        if (!step.on[i]) continue;
        replies[i] = runner.ask_switches({i == 0, i == 1}, completed(runner, request, i))[i];
      }
    } else {
      replies = runner.ask_switches(step.on, request);
    }
    for (std::size_t i = 0; i < replies.size(); ++i) {
      if (!step.on[i]) continue;
      tell_reply(replies[i], told["switches"][switch_names[i]], scope_name(request));
      if (request.contains("as")) runner.saved[i][request["as"]] = replies[i]["array"];
    }
    runner.worked(1);
  }
}

// --- expectations ---

void expect(Json &told, const std::string &what, const Json &expected, const Json &found,
            bool holds) {
  told["expectations"].push_back(
      {{"what", what}, {"expected", expected}, {"found", found}, {"holds", holds}});
}

void expect(Json &told, const std::string &what, const Json &expected, const Json &found) {
  expect(told, what, expected, found, expected == found);
}

bool same_texts(const Json &expected, const Json &found) {
  return std::all_of(expected.items().begin(), expected.items().end(), [&](const auto &item) {
    const Json &text = found[item.key()];
    return text.is_string() && same_text(item.key(), item.value().template get<std::string>(),
                                         text.template get<std::string>());
  });
}

Json texts_of(const Json &list, const char *text_key, const Json &wanted) {
  Json texts = Json::object();
  for (const auto &[key, text] : wanted.items()) {
    texts[key] = nullptr;
    // Of several ports, the first that is not as wanted.
    for (const Json &item : list) {
      const bool as_wanted = texts[key].is_null() ||
                             same_text(key, texts[key].get<std::string>(), text.get<std::string>());
      if (item["parameter"] == key && as_wanted) texts[key] = item[text_key];
    }
  }
  return texts;
}

Json record_names(const Json &records) {
  Json names = Json::array();
  for (const Json &record : records) {
    if (record.contains("valid")) continue;
    const std::string key = record["parameter"];
    names.push_back(record["port"].is_null() ? key : key + "@" + record["port"].get<std::string>());
  }
  return names;
}

void expect_of_switches(const Step &step, Json &told) {
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (!step.on[i]) continue;
    const std::string name = switch_names[i];
    const Json &outcome = told["switches"][name];
    for (const auto &[key, expected] : step.expect.items()) {
      Json found;
      if (key == "result") {
        // The same word is used for 0 whatever is asked.
        expect(told, name + " result", expected == "agree" ? "ok" : expected,
               outcome["result"]["name"]);
        continue;
      }
      if (key == "answer") found = outcome["answer"];
      if (key == "records") found = record_names(outcome["records"]);
      if (key == "values" || key == "texts") {
        found = key == "values" ? texts_of(outcome["values"], "text", expected)
                                : texts_of(outcome["report"], "value", expected);
        expect(told, name + " " + key, expected, found, same_texts(expected, found));
        continue;
      }
      expect(told, name + " " + key, expected, found);
    }
  }
}

// Parameters that disagree, in the order of their types, over all scopes of a check.
Json differing(const Json &checks) {
  std::map<uint32_t, std::string> keys;
  for (const Json &check : checks) {
    for (const Json &parameter : check["parameters"]) {
      for (const auto &[side, state] : parameter["states"].items()) {
        if (state == "different" || state == "missing at the peer") {
          keys[parameter["type"]] = parameter["parameter"];
        }
      }
    }
  }
  Json list = Json::array();
  for (const auto &[type, key] : keys) list.push_back(key);
  return list;
}

// "agree", or the verdict of the first scope that does not.
std::string verdict_of(const Json &checks, const std::string &side) {
  for (const Json &check : checks) {
    const Json &verdict = check["verdicts"][side];
    if (verdict["code"] != 0) return verdict["name"];
  }
  return result_name(0);
}

void expect_of_check(const Step &step, Json &told) {
  const Json checks = told["checks"];
  for (const auto &[key, expected] : step.expect.items()) {
    if (key == "verdict" || key == "left" || key == "right") {
      for (const std::string side : switch_names) {
        if (key == "verdict" || key == side) {
          expect(told, side + " verdict", expected, verdict_of(checks, side));
        }
      }
    } else if (key == "differ") {
      Json sorted = expected;
      std::sort(sorted.begin(), sorted.end(), [](const Json &a, const Json &b) {
        return find_parameter(std::string_view(a.get_ref<const std::string &>()))->type <
               find_parameter(std::string_view(b.get_ref<const std::string &>()))->type;
      });
      expect(told, key, sorted, differing(checks));
    } else if (key == "pass" || key == "fail") {
      expect(told, key, expected, checks.empty() ? Json() : checks[0].value(key, Json()));
    } else {  // ports
      for (const auto &[port, verdict] : expected.items()) {
        for (const std::string side : switch_names) {
          Json found;
          for (const Json &check : checks) {
            if (check["scope"] == port) found = check["verdicts"][side]["name"];
          }
          expect(told, side + " verdict of " + port, verdict, found);
        }
      }
    }
  }
}

Json tell_step(const Step &step, std::size_t number) {
  Json on = Json::array();
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (step.on[i]) on.push_back(switch_names[i]);
  }
  Json told = {{"step", number},
               {"line", step.line},
               {"action", step.action},
               {"on", on},
               {"summary", step.summary}};
  if (!step.note.empty()) told["note"] = step.note;
  return told;
}

Json do_step(Runner &runner, std::size_t position) {
  const Step &step = runner.scenario.steps[position];
  runner.at = &step;
  runner.number = position + 1;
  Json told = tell_step(step, position + 1);
  if (step.action == "check") {
    check(runner, step, told);
    expect_of_check(step, told);
  } else {
    told["switches"] = Json::object();
    do_requests(runner, step, told);
    expect_of_switches(step, told);
  }
  return told;
}

void set_up(Runner &runner) {
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    for (const Json &request : runner.scenario.setup[i]) {
      runner.ask_switches({i == 0, i == 1}, request);
      runner.worked(1);
    }
  }
}

void do_steps(Runner &runner, std::size_t count, Json &outcome) {
  set_up(runner);
  for (std::size_t i = 0; i < count; ++i) {
    Json told = do_step(runner, i);
    if (runner.watcher.on_step) runner.watcher.on_step(told);
    outcome["steps"].push_back(std::move(told));
  }
}

Json tell_failure(const Runner &runner, const std::string &problem) {
  Json failed = {{"problem", problem}};
  if (runner.at != nullptr) {
    failed["step"] = runner.number;
    failed["line"] = runner.at->line;
    failed["summary"] = runner.at->summary;
  }
  return failed;
}

// What a run did with the first `count` steps of a scenario, then with `finish`.
template <class Finish>
Json outcome_of(const Scenario &scenario, const RunOptions &options, const Watcher &watcher,
                std::size_t count, Finish finish) {
  Json outcome = {{"scenario", scenario.path},
                  {"title", scenario.title},
                  {"about", scenario.about},
                  {"steps", Json::array()}};
  std::size_t work = scenario.setup[0].size() + scenario.setup[1].size();
  for (std::size_t i = 0; i < count; ++i) work += work_of(scenario.steps[i]);
  Runner runner{scenario, options, watcher, {}, {}, 0, work};
  try {
    do_steps(runner, count, outcome);
    finish(runner, outcome);
  } catch (const Interrupted &) {
    outcome["failed"] = tell_failure(runner, "interrupted");
  } catch (const SwitchFailed &failure) {
    outcome["failed"] = tell_failure(runner, failure.what());
  }
  outcome["holds"] = !outcome.contains("failed") && holds(outcome);
  return outcome;
}

// The command of a step, asked of each switch that it is for; its scopes are the switch and the
// command's ports.
void ask_what_if(Runner &runner, std::size_t position, Json &outcome) {
  const Step &step = runner.scenario.steps[position];
  runner.at = &step;
  runner.number = position + 1;
  Json told = tell_step(step, position + 1);
  for (std::size_t i = 0; i < switch_names.size(); ++i) {
    if (!step.on[i]) continue;
    Json scopes = {{{"global", true}, {"port", 0}}};
    for (const Json &port : step.requests.front()["ports"]) {
      scopes.push_back({{"global", false}, {"port", port}});
    }
    for (Json &scope : scopes) {
      Json request = scope;
      request["do"] = "export";
      scope["array"] = runner.ask_switches({i == 1, i == 0}, request)[1 - i]["array"];
    }
    Json request = {{"do", "what-if"}, {"command", step.requests.front()}, {"scopes", scopes}};
    if (!runner.scenario.twin_vlans.empty()) request["twin-vlans"] = runner.scenario.twin_vlans;
    const Json reply = runner.ask_switches({i == 0, i == 1}, request)[i];
    Json &side = told["switches"][switch_names[i]];
    tell_reply(reply, side);
    for (const char *when : {"now", "then"}) {
      side[when] = Json::array();
      for (const Json &scope : reply[when]) side[when].push_back(tell_scope(scope, Json(), i));
    }
  }
  outcome["what_if"] = std::move(told);
}

}  // namespace

Json run(const Scenario &scenario, const RunOptions &options, const Watcher &watcher) {
  return outcome_of(scenario, options, watcher, scenario.steps.size(), [](Runner &, Json &) {});
}

Json what_if(const Scenario &scenario, std::size_t position, const RunOptions &options,
             const Watcher &watcher) {
  return outcome_of(
      scenario, options, watcher, position,
      [position](Runner &runner, Json &outcome) { ask_what_if(runner, position, outcome); });
}

bool holds(const Json &outcome) {
  for (const Json &step : outcome["steps"]) {
    for (const Json &expectation : step.value("expectations", Json::array())) {
      if (!expectation["holds"]) return false;
    }
  }
  return true;
}

}  // namespace lab
