#include <fmt/core.h>

#include <algorithm>
#include <filesystem>

#include "cli/commands.h"
#include "output/json.h"
#include "output/page.h"
#include "output/print.h"
#include "text/file.h"

namespace lab {
namespace {

Format parse_format(const std::string &format) {
  return format == "dump" ? Format::dump : format == "state" ? Format::state : Format::by_content;
}

// "fix.json" becomes "fix.left.json".
std::string insert_side(const std::string &path, const char *side) {
  std::filesystem::path file = path;
  return file.replace_extension(std::string(".") + side + file.extension().string());
}

// Prints the differences that the operator must resolve, with the rows that they concern.
void print_undecided(const Patches &patches, const PairReport &report) {
  const SideNames &names = side_names(report);
  for (const ScopeReport *scope : patches.undecided) {
    const char *side = names[*missing_side(*scope)];
    const std::string missing =
        scope->missing_row.empty() ? "channel " + scope->scope.name : scope->missing_row;
    print_error(fmt::format("not decided: {} is missing on {}", missing, side));
  }
  for (const auto &[scope, parameter] : patches.unfixed) {
    print_error(fmt::format("not decided: {} of {}: {}", parameter_key(parameter->type),
                            scope->scope.name, describe_fix(parameter->fix->fix, names)));
  }
  for (std::size_t side = 0; side < names.size(); ++side) {
    if (report.sides[side].spanning_tree == SpanningTree::off &&
        report.sides[1 - side].spanning_tree != SpanningTree::off) {
      print_error(fmt::format("not decided: spanning tree is off on {}", names[side]));
    }
  }
}

std::array<bool, 2> find_patched_sides(const std::string &which) {
  return {which == "left" || which == "both",
          which == "right" || which == "both" || which == "actual"};
}

void write_patches(const Sides &sides, const PairReport &report,
                   const std::pair<std::string, std::string> &patch) {
  const auto &[which, path] = patch;
  const auto patched = find_patched_sides(which);
  const Patches patches = collect_patches(sides, report, patched);
  print_undecided(patches, report);
  bool is_empty = true;
  for (std::size_t i = 0; i < patched.size(); ++i) {
    if (!patched[i]) continue;
    is_empty = is_empty && patches.of_side[i].empty();
    if (has_mode_change(patches.of_side[i])) {
      print_error(std::string("the patch changes the spanning-tree mode: ") + mode_steps);
    }
    if (which == "both" && path == "-") continue;
    write_file(which == "both" ? insert_side(path, switch_names[i]) : path,
               format_patch(patches.of_side[i]));
  }
  if (which == "both" && path == "-") write_file("-", format_patches(patches.of_side));
  if (is_empty) print_error("the patch is empty");
}

// Returns the error if an output would replace an input or another output, else "".
std::string find_clashing_output(const Arguments &arguments) {
  constexpr std::size_t inputs = 3;
  std::vector<std::pair<std::string, std::string>> files = {
      {"the left source", arguments.left},
      {"the right source", arguments.right},
      {"--accept", arguments.accept},
      {"--html", arguments.html},
      {"--write-accept", arguments.write_accept}};
  const auto &[side, patch] = arguments.patch;
  for (const char *name : switch_names) {
    if (side == "both") files.emplace_back("--patch", insert_side(patch, name));
  }
  if (side != "both") files.emplace_back("--patch", patch);
  for (std::size_t i = inputs; i < files.size(); ++i) {
    if (files[i].second.empty() || files[i].second == "-") continue;
    for (std::size_t k = 0; k < i; ++k) {
      if (!is_same_file(files[i].second, files[k].second)) continue;
      return fmt::format("{}: found {}, which is {}; expected another file", files[i].first,
                         printable(files[i].second), files[k].first);
    }
  }
  return "";
}

// Reads both sides, and reports the errors of both.
void read_both(const Arguments &arguments, Sides &sides, std::vector<SourceErrors> &errors) {
  std::vector<Side> both =
      read_sides({parse_source_argument(arguments.left, 0, arguments.name_space),
                  parse_source_argument(arguments.right, 1, arguments.name_space)},
                 parse_format(arguments.format), limits_of(arguments));
  std::move(both.begin(), both.end(), sides.begin());
  for (const Side &side : sides) report_errors(side.source, side.errors, errors);
}

// Returns the error if the arguments do not fit together, else "".
std::string find_usage_error(const Arguments &arguments) {
  if (arguments.right.empty()) {
    return fmt::format("found {}; expected two sources, left and right, or --pairs",
                       arguments.left.empty() ? "no source" : "one source");
  }
  if (arguments.left == "-" && arguments.right == "-") {
    return "found '-' twice; expected standard input on one side only";
  }
  if (arguments.json + (arguments.html == "-") + (arguments.patch.second == "-") +
          (arguments.write_accept == "-") >
      1) {
    return "expected only one of --json, --html -, --patch SIDE - and --write-accept -, which "
           "write to standard output";
  }
  const bool is_actual = arguments.patch.first == intended_names[1];
  if (!arguments.patch.first.empty() && is_actual == arguments.intended.empty()) {
    return arguments.intended.empty() ? "--patch: found 'actual'; expected left, right or both"
                                      : "--patch: expected actual with --intended";
  }
  return find_clashing_output(arguments);
}

// Returns the error if a side to patch is not a dump or a database, else "".
std::string find_unpatchable(const std::string &which, const Sides &sides) {
  const auto patched = find_patched_sides(which);
  const bool is_patchable = (!patched[0] || sides[0].rows) && (!patched[1] || sides[1].rows);
  return is_patchable ? "" : "--patch: found a state file; expected a dump or a database";
}

void write_outputs(const Arguments &arguments, const Sides &sides, const PairReport &report) {
  if (!arguments.patch.first.empty()) write_patches(sides, report, arguments.patch);
  if (!arguments.html.empty()) write_file(arguments.html, write_page(report));
  if (!arguments.write_accept.empty()) {
    write_file(arguments.write_accept, format_accept_list(report));
  }
  if (arguments.json) {
    fmt::print("{}", format_comparison(report));
  } else if (!arguments.quiet && arguments.html != "-" && arguments.patch.second != "-" &&
             arguments.write_accept != "-") {
    print_comparison(report, {.layout = standard_layout(arguments.color),
                              .only_different = !arguments.all,
                              .is_short = !arguments.all,
                              .sides = side_names(report)});
  }
}

}  // namespace

Status execute_compare(const Arguments &command_line) {
  if (!command_line.pairs.empty()) return compare_pairs(command_line);
  Arguments arguments = command_line;
  const bool is_intended = !arguments.intended.empty();
  if (is_intended) {
    arguments.right = command_line.left;
    arguments.left = command_line.intended;
  }
  if (const std::string error = find_usage_error(arguments); !error.empty()) {
    print_error("mcec-lab compare: " + error);
    return wrong;
  }
  std::vector<SourceErrors> errors;
  const auto accept = read_accept_file(arguments.accept, errors);
  Sides sides;
  read_both(arguments, sides, errors);
  if (!errors.empty()) {
    if (arguments.json) fmt::print("{}", format_errors(errors, JsonForm::indented));
    return wrong;
  }
  if (const std::string error = find_unpatchable(arguments.patch.first, sides); !error.empty()) {
    print_error("mcec-lab compare: " + error);
    return wrong;
  }
  Pair pair;
  const PairReport report = compare(
      pair, sides, {.is_intended = is_intended, .is_strict = arguments.strict, .accept = accept});
  write_outputs(arguments, sides, report);
  return find_status(report);
}

Status execute_capture(const Arguments &arguments) {
  const Side side =
      std::move(read_sides({parse_source_argument(arguments.left, 0, arguments.name_space)},
                           parse_format(arguments.format), limits_of(arguments))[0]);
  print_errors(side.source, side.errors);
  if (!side.errors.empty()) return wrong;
  fmt::print("{}", write_state(side.settings));
  return agreed;
}

}  // namespace lab
