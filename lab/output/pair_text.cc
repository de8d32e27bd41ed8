#include "output/pair_text.h"

#include <fmt/core.h>

#include "output/check_text.h"
#include "output/notes.h"
#include "report/verdict.h"
#include "switch/names.h"

namespace lab {
namespace {

std::string describe_side(const SideReport &side, const char *name) {
  return fmt::format("{}: {}{}, spanning tree {}", name,
                     side.name.empty() ? "" : side.name + ", from ", side.source,
                     spanning_tree_name(side.spanning_tree));
}

}  // namespace

const char *spanning_tree_name(SpanningTree spanning_tree) {
  constexpr const char *names[] = {"off", "rapid-pvst", "mst", "unknown"};
  return names[std::size_t(spanning_tree)];
}

std::string describe_spanning_tree_off(const PairReport &report) {
  const bool left = report.sides[0].spanning_tree == SpanningTree::off;
  const bool right = report.sides[1].spanning_tree == SpanningTree::off;
  if (!left && !right) return "";
  if (left && right) return "Spanning tree is off on both switches: nothing runs.";
  return fmt::format("Spanning tree is off on the {} switch: no check is made.",
                     switch_names[left ? 0 : 1]);
}

void print_comparison(const PairReport &report, const Style &style) {
  const Layout &layout = style.layout;
  for (std::size_t side = 0; side < switch_names.size(); ++side) {
    put_wrapped(describe_side(report.sides[side], switch_names[side]), layout);
  }
  const bool agrees = is_agreed(find_verdict(report));
  put_line(coloured(agrees ? "The pair agrees." : "The pair does NOT agree.",
                    agrees ? Colour::green : Colour::red, layout));
  if (const std::string off = describe_spanning_tree_off(report); !off.empty()) {
    put_wrapped(off, layout);
  } else {
    const Vlans &twins = report.twin_vlans;
    put_wrapped("twin VLANs: " + (twins.none() ? "none" : vlan_text(twins)), layout, 4);
    print_checks(report.checks, style);
  }
  put_line("Notes:");
  for (const Note &note : report.notes)
    put_wrapped(describe_note_of_scope(note), layout, 4, "  - ");
}

}  // namespace lab
