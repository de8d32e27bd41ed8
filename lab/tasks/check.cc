#include "tasks/check.h"

#include <algorithm>

#include "output/document.h"

namespace lab {
namespace {

// Scopes that are asked at once; between them it is heard of the progress.
constexpr std::size_t scopes_at_once = 128;

Check::Compared compared(const PairScope &scope, std::size_t which) {
  const PairScope::End &end = scope.ends[which];
  Check::Compared compared{{scope.kind == PairScope::Kind::of_switch, end.port}, end.present, {}};
  for (const PairScope::Member &other : end.others) compared.others.push_back(other.port);
  return compared;
}

}  // namespace

Json check_scopes(
    const Asker &ask, const std::vector<PairScope> &scopes, const std::optional<Vlans> &twins,
    const std::function<void(const Requests &, const Replies &, std::size_t)> &replied) {
  Json checks = Json::array();
  for (std::size_t at = 0; at < scopes.size(); at += scopes_at_once) {
    const std::size_t end = std::min(at + scopes_at_once, scopes.size());
    Requests requests;
    for (std::size_t which = 0; which < requests.size(); ++which) {
      Check check{{}, twins};
      for (std::size_t i = at; i < end; ++i) check.scopes.push_back(compared(scopes[i], which));
      requests[which] = Request{false, std::move(check)};
    }
    const Replies replies = ask(requests);
    std::array<const Checked *, 2> checked;
    for (std::size_t which = 0; which < checked.size(); ++which) {
      checked[which] = &std::get<Checked>(replies[which]->said);
      if (checked[which]->views.size() != end - at) throw SwitchFailed("a switch lost a scope");
    }
    for (std::size_t i = 0; i < end - at; ++i) {
      checks.push_back(told_scope(scopes[at + i], {checked[0]->views[i], checked[1]->views[i]}));
    }
    if (replied) replied(requests, replies, end - at);
  }
  return checks;
}

}  // namespace lab
