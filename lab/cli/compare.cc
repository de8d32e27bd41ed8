#include <fmt/core.h>

#include <algorithm>

#include "cli/commands.h"
#include "output/error_json.h"
#include "output/page.h"
#include "output/pair_json.h"
#include "output/pair_text.h"
#include "output/patch_json.h"
#include "report/verdict.h"
#include "switch/names.h"
#include "switch/state_writer.h"
#include "tasks/compare.h"
#include "text/file.h"

namespace lab {
namespace {

Format parse_format(const std::string &format) {
  return format == "dump" ? Format::dump : format == "state" ? Format::state : Format::by_content;
}

// fix.json with a side: fix.left.json.
std::string insert_side(const std::string &path, const char *side) {
  const std::size_t dot = path.rfind('.');
  const std::size_t slash = path.rfind('/');
  const bool has_ending = dot != path.npos && (slash == path.npos || dot > slash + 1);
  const std::size_t at = has_ending ? dot : path.size();
  return path.substr(0, at) + "." + side + path.substr(at);
}

void write_patches(const Sides &sides, const PairReport &report,
                   const std::pair<std::string, std::string> &patch) {
  const auto &[which, path] = patch;
  const std::array<bool, 2> changes = {which != "right", which != "left"};
  const std::array<Patch, 2> patches = collect_patches(sides, report, changes);
  if (which == "both" && path == "-") return write_file("-", format_patches(patches));
  for (std::size_t i = 0; i < patches.size(); ++i) {
    if (!changes[i]) continue;
    write_file(which == "both" ? insert_side(path, switch_names[i]) : path,
               format_patch(patches[i]));
  }
}

// An output that would replace an input or another output is an error; empty: there is none.
std::string find_clashing_output(const CompareArguments &arguments) {
  std::vector<std::pair<std::string, std::string>> files = {{"the left source", arguments.left},
                                                            {"the right source", arguments.right}};
  const std::size_t inputs = files.size();
  if (!arguments.html.empty()) files.emplace_back("--html", arguments.html);
  const auto &[side, patch] = arguments.patch;
  for (const char *name : switch_names) {
    if (side == "both") files.emplace_back("--patch", insert_side(patch, name));
  }
  if (!side.empty() && side != "both") files.emplace_back("--patch", patch);
  for (std::size_t i = inputs; i < files.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (files[i].second == "-" || !is_same_file(files[i].second, files[k].second)) continue;
      return fmt::format("{}: found {}, which is {}; expected another file", files[i].first,
                         printable(files[i].second), files[k].first);
    }
  }
  return "";
}

// Read both sides, and print the errors of both.
bool read_sides(const CompareArguments &arguments, Sides &sides) {
  std::vector<SourceErrors> errors;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide read =
        read_side(i == 0 ? arguments.left : arguments.right, i, parse_format(arguments.format));
    print_errors(read.side.source, read.errors);
    if (!read.errors.empty()) errors.push_back({read.side.source, std::move(read.errors)});
    sides[i] = std::move(read.side);
  }
  if (arguments.json && !errors.empty()) {
    fmt::print("{}", format_errors(errors, JsonForm::indented));
  }
  return errors.empty();
}

// What is wrong with the arguments together; empty: nothing.
std::string find_usage_error(const CompareArguments &arguments) {
  if (arguments.right.empty()) {
    return fmt::format("found {}; expected two sources, left and right, or --pairs",
                       arguments.left.empty() ? "no source" : "one source");
  }
  if (arguments.left == "-" && arguments.right == "-") {
    return "found '-' twice; expected the standard input on one side";
  }
  if (arguments.json + (arguments.html == "-") + (arguments.patch.second == "-") > 1) {
    return "expected one of --json, --html - and --patch SIDE -, which all write to the standard "
           "output";
  }
  return find_clashing_output(arguments);
}

}  // namespace

Status execute(const CompareArguments &arguments) {
  if (!arguments.pairs.empty()) return compare_pairs(arguments);
  if (const std::string error = find_usage_error(arguments); !error.empty()) {
    print_error("mcec-lab compare: " + error);
    return wrong;
  }
  Sides sides;
  if (!read_sides(arguments, sides)) return wrong;
  const bool has_patch = !arguments.patch.first.empty();
  if (has_patch && (!sides[0].rows || !sides[1].rows)) {
    print_error(
        "mcec-lab compare: --patch writes patches of dumps and databases; found a state file");
    return wrong;
  }
  const PairReport report = compare(sides);
  if (has_patch) write_patches(sides, report, arguments.patch);
  if (!arguments.html.empty()) write_file(arguments.html, write_page(report));
  if (arguments.json) {
    fmt::print("{}", format_comparison(report));
  } else if (arguments.html != "-" && arguments.patch.second != "-") {
    print_comparison(
        report, {.layout = standard_layout(arguments.no_color), .only_different = !arguments.all});
  }
  return is_agreed(find_verdict(report)) ? agreed : disagreed;
}

Status execute(const CaptureArguments &arguments) {
  const ReadSide read = read_side(arguments.source, 0, parse_format(arguments.format));
  print_errors(read.side.source, read.errors);
  if (!read.errors.empty()) return wrong;
  fmt::print("{}", state_file(read.side.settings));
  return agreed;
}

}  // namespace lab
