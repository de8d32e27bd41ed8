#include <fmt/core.h>

#include "cli/commands.h"
#include "output/json.h"
#include "output/print.h"
#include "switch/names.h"
#include "text/text.h"

namespace lab {

Status execute_explain(const Arguments &arguments) {
  if (explain(arguments.what, standard_layout(arguments.color))) return agreed;
  std::vector<std::string> names = parameter_keys();
  for (const auto &keys : {command_keys(), result_keys()}) {
    names.insert(names.end(), keys.begin(), keys.end());
  }
  print_error(
      fmt::format("mcec-lab explain: found '{}'; expected a result code or its name, a "
                  "parameter or a command: {} (see mcec-lab list)",
                  printable(arguments.what), one_of(names, arguments.what)));
  return wrong;
}

Status execute_list(const Arguments &arguments) {
  if (arguments.json) {
    fmt::print("{}", format_list());
  } else {
    list(arguments.what, standard_layout(arguments.color));
  }
  return agreed;
}

}  // namespace lab
