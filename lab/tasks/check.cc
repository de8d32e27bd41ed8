#include "tasks/check.h"

#include <algorithm>

#include "switch/arrays.h"

namespace lab {
namespace {

// --- checks ---

// Scopes in one request; progress is reported between two.
constexpr std::size_t scopes_at_once = 128;

Check::Compared make_request(const PairScope &scope, std::size_t side) {
  const PairScope::End &end = scope.ends[side];
  Check::Compared compared{{scope.kind == PairScope::Kind::of_switch, end.port}, end.present, {}};
  for (const PairScope::Member &other : end.others) compared.others.push_back(other.port);
  return compared;
}

// Both views have the same types.
State find_state(const View &view, uint16_t type) {
  for (const View::Parameter &parameter : view.parameters) {
    if (parameter.type == type) return parameter.state;
  }
  return State::not_without_mode;
}

std::vector<InconsistentPort> name_ports(const View &view, const PairScope::End &end) {
  std::vector<InconsistentPort> ports;
  for (const View::InconsistentPort &port : view.inconsistent) {
    std::string name = port_text(port.port);
    for (const PairScope::Member &member : end.others) {
      if (member.port == port.port) name = member.name;
    }
    ports.push_back({std::move(name), port.types});
  }
  return ports;
}

ScopeReport report_scope(const PairScope &scope, const std::array<const View *, 2> &views) {
  ScopeReport report;
  report.scope = scope;
  for (std::size_t side = 0; side < views.size(); ++side) {
    const View &view = *views[side];
    report.on_pod = report.on_pod || view.pod;
    report.codes[side] = view.verdict;
    report.inconsistent[side] = name_ports(view, scope.ends[side]);
    if (!report.pass) {
      report.pass = view.pass;
      report.fail = view.fail;
    }
  }
  for (const View::Parameter &seen : views[0]->parameters) {
    report.parameters.push_back({.type = seen.type,
                                 .values = {seen.local, seen.peer},
                                 .states = {seen.state, find_state(*views[1], seen.type)}});
  }
  return report;
}

// --- other replies ---

std::string find_port_name(uint32_t index, const Settings &settings) {
  const Port *port = find_port(settings, index);
  return port != nullptr ? port_name(*port) : port_text(index);
}

void add_result(uint32_t code, SwitchReport &report) {
  if (report.result.value_or(0) == 0) report.result = code;
}

template <class List>
List &make_list(std::optional<List> &list) {
  return list ? *list : list.emplace();
}

void add_extracted(const Extracted &extracted, const Settings &settings, SwitchReport &report) {
  add_result(extracted.result, report);
  for (const Extracted::Response &response : extracted.responses) {
    std::string text = printable_lines(response.text);
    while (text.ends_with('\n')) text.pop_back();
    report.answer = CommandAnswer{response.accepted, text};
  }
  for (const Extracted::Record &record : extracted.records) {
    make_list(report.records)
        .push_back({.type = record.type,
                    .port = record.global ? "" : find_port_name(record.port, settings),
                    .is_valid = record.valid == 1});
  }
  // The same update of several ports is reported once.
  std::vector<Entry> &values = make_list(report.values);
  for (const Entry &entry : extracted.values) {
    if (std::find(values.begin(), values.end(), entry) == values.end()) values.push_back(entry);
  }
}

void add_reported(const Reported &reported, const Scope &scope, const Settings &settings,
                  SwitchReport &report) {
  add_result(reported.result, report);
  std::vector<DisplayRecord> &display = make_list(report.display);
  for (const Reported::Record &record : reported.records) {
    display.push_back({.scope = scope.global ? "switch" : find_port_name(scope.port, settings),
                       .type = record.type,
                       .component = printable(record.component),
                       .name = printable(record.name),
                       .value = printable(record.value)});
  }
}

}  // namespace

std::vector<ScopeReport> check_scopes(const Asker &ask, const std::vector<PairScope> &scopes,
                                      const std::optional<Vlans> &twins,
                                      const ReplyListener &listener) {
  std::vector<ScopeReport> checks;
  for (std::size_t at = 0; at < scopes.size(); at += scopes_at_once) {
    const std::size_t end = std::min(at + scopes_at_once, scopes.size());
    Requests requests;
    for (std::size_t side = 0; side < requests.size(); ++side) {
      Check check{{}, twins};
      for (std::size_t i = at; i < end; ++i) check.scopes.push_back(make_request(scopes[i], side));
      requests[side] = Request{false, std::move(check)};
    }
    const Replies replies = ask(requests);
    const auto &left = std::get<Checked>(replies[0]->answer).views;
    const auto &right = std::get<Checked>(replies[1]->answer).views;
    for (std::size_t i = at; i < end; ++i) {
      checks.push_back(report_scope(scopes[i], {&left.at(i - at), &right.at(i - at)}));
    }
    if (listener) listener(requests, replies, end - at);
  }
  return checks;
}

void add_reply(const Request &request, const Reply &reply, const Settings &settings,
               SwitchReport &report) {
  report.is_command = report.is_command || std::holds_alternative<Command>(request.asked);
  if (const auto *result = std::get_if<Result>(&reply.answer)) {
    add_result(result->code, report);
  } else if (const auto *extracted = std::get_if<Extracted>(&reply.answer)) {
    add_extracted(*extracted, settings, report);
  } else if (const auto *exported = std::get_if<Exported>(&reply.answer)) {
    add_result(exported->result, report);
    report.parameters = entries_of(exported->array);
  } else if (const auto *reported = std::get_if<Reported>(&reply.answer)) {
    add_reported(*reported, std::get<Report>(request.asked).scope, settings, report);
  }
  report.log.insert(report.log.end(), reply.log.begin(), reply.log.end());
}

}  // namespace lab
