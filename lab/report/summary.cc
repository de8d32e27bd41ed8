#include "report/summary.h"

#include "report/verdict.h"

namespace lab {

Summary summarize(const std::vector<ScopeReport> &checks) {
  Summary summary{.scopes = checks.size(), .parameters = {}};
  for (const ScopeReport &scope : checks) {
    const auto missing = missing_side(scope);
    if (!is_agreed(find_verdict(scope))) ++summary.disagreeing;
    if (has_inconsistent_ports(scope)) ++summary.inconsistent;
    if (has_accepted(scope)) ++summary.accepted;
    if (missing && !scope.accepted) ++summary.missing[*missing];
    for (const ParameterReport &parameter : scope.parameters) {
      ScopeCount &count = summary.parameters[parameter.type];
      ++count.scopes;
      if (!missing && is_different(parameter) && !parameter.accepted)
        count.differ.push_back(&scope);
    }
  }
  return summary;
}

}  // namespace lab
