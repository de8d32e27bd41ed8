#include "tasks/check.h"

#include <algorithm>

namespace lab {
namespace {

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

}  // namespace lab
