#include "report/summary.h"

#include "report/verdict.h"

namespace lab {

Summary summarize(const std::vector<ScopeReport> &checks) {
  Summary summary{.scopes = checks.size(), .parameters = {}};
  for (const ScopeReport &scope : checks) {
    const auto missing = missing_side(scope);
    if (!is_agreed(find_verdict(scope))) ++summary.disagreeing;
    if (has_inconsistent_ports(scope)) ++summary.inconsistent;
    if (missing) ++summary.missing[*missing];
    for (const ParameterReport &parameter : scope.parameters) {
      ScopeCount &count = summary.parameters[parameter.type];
      ++count.scopes;
      if (!missing && is_different(parameter)) count.differ.push_back(&scope);
    }
  }
  return summary;
}

}  // namespace lab
