#include "output/compare.h"

#include <fmt/core.h>

#include "output/checks.h"
#include "switch/names.h"

namespace lab {
namespace {

std::string side_text(const Json &told, const char *side) {
  const std::string name = told[side]["name"];
  const std::string source = told[side]["source"];
  return fmt::format("{}: {}{}, spanning tree {}", side, name.empty() ? "" : name + ", from ",
                     source, told[side]["spanning-tree"].get<std::string>());
}

}  // namespace

void show_comparison(const Json &told, const ShowOptions &options) {
  const Layout &layout = options.layout;
  for (const char *side : switch_names) put_wrapped(side_text(told, side), layout);
  const bool agree = told["agree"];
  put_line(coloured(agree ? "The pair agrees." : "The pair does NOT agree.",
                    agree ? Colour::green : Colour::red, layout));
  const Json &notes = told["notes"];
  if (told["checks"].empty()) {
    put_wrapped(notes[0], layout);
  } else {
    const std::string twins = told["twin-vlans"];
    put_wrapped("twin VLANs: " + (twins.empty() ? "none" : twins), layout, 4);
    show_checks(told["checks"], options);
  }
  put_line("Notes:");
  for (std::size_t i = told["checks"].empty() ? 1 : 0; i < notes.size(); ++i) {
    put_wrapped(notes[i], layout, 4, "  - ");
  }
}

}  // namespace lab
