#include <fmt/core.h>

#include <algorithm>

#include "cli/commands.h"
#include "output/compare.h"
#include "output/page.h"
#include "output/told.h"
#include "switch/names.h"
#include "switch/state_writer.h"
#include "tasks/compare.h"
#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

Format format_of(const Arguments &arguments) {
  return arguments.format == "dump"    ? Format::dump
         : arguments.format == "state" ? Format::state
                                       : Format::by_content;
}

// fix.json with a side: fix.left.json.
std::string with_side(const std::string &path, const char *side) {
  const std::size_t dot = path.rfind('.');
  const std::size_t slash = path.rfind('/');
  const bool has_ending = dot != path.npos && (slash == path.npos || dot > slash + 1);
  const std::size_t at = has_ending ? dot : path.size();
  return path.substr(0, at) + "." + side + path.substr(at);
}

void write_patches(const Sides &sides, const Json &told, const Arguments &arguments) {
  const std::string &which = arguments.fix.first;
  const std::string &path = arguments.fix.second;
  const std::array<bool, 2> changes = {which != "right", which != "left"};
  const std::array<Json, 2> patches = fixes(sides, told, changes);
  if (which == "both" && path == "-") {
    return print_json({{"left", patches[0]}, {"right", patches[1]}});
  }
  for (std::size_t i = 0; i < patches.size(); ++i) {
    if (!changes[i]) continue;
    write_file(which == "both" ? with_side(path, switch_names[i]) : path,
               patches[i].dump(2) + "\n");
  }
}

// An output that would replace an input or another output is an error.
bool has_own_outputs(const Arguments &arguments) {
  std::vector<std::pair<std::string, std::string>> files = {{"the left source", arguments.left},
                                                            {"the right source", arguments.right}};
  const std::size_t inputs = files.size();
  if (!arguments.html.empty()) files.emplace_back("--html", arguments.html);
  const auto &[side, patch] = arguments.fix;
  for (const char *name : switch_names) {
    if (side == "both") files.emplace_back("--patch", with_side(patch, name));
  }
  if (!side.empty() && side != "both") files.emplace_back("--patch", patch);
  for (std::size_t i = inputs; i < files.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (files[i].second == "-" || !is_same_file(files[i].second, files[k].second)) continue;
      print_error(fmt::format("mcec-lab compare: {}: found {}, which is {}; expected another file",
                              files[i].first, printable(files[i].second), files[k].first));
      return false;
    }
  }
  return true;
}

// Read both sides; the errors of both are told at once.
bool read_sides(const Arguments &arguments, Sides &sides) {
  Json told = Json::array();
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide read = read_side(i == 0 ? arguments.left : arguments.right, i, format_of(arguments));
    print_errors(read.side.source, read.errors);
    for (Json &error : errors_to_json(read.side.source, read.errors)) {
      told.push_back(std::move(error));
    }
    sides[i] = std::move(read.side);
  }
  if (arguments.json && !told.empty()) print_json({{"version", 1}, {"errors", told}});
  return told.empty();
}

}  // namespace

Status compare_sides(const Arguments &arguments) {
  if (!arguments.pairs.empty()) return compare_pairs(arguments);
  if (arguments.right.empty()) {
    print_error(
        fmt::format("mcec-lab compare: found {}; expected two sources, left and right, or --pairs",
                    arguments.left.empty() ? "no source" : "one source"));
    return wrong;
  }
  if (arguments.left == "-" && arguments.right == "-") {
    print_error("mcec-lab compare: found '-' twice; expected the standard input on one side");
    return wrong;
  }
  if (arguments.json + (arguments.html == "-") + (arguments.fix.second == "-") > 1) {
    print_error(
        "mcec-lab compare: expected one of --json, --html - and --patch SIDE -, which all write "
        "to the standard output");
    return wrong;
  }
  const std::vector<std::string> patched = {"left", "right", "both"};
  if (!arguments.fix.first.empty() &&
      std::find(patched.begin(), patched.end(), arguments.fix.first) == patched.end()) {
    print_error(fmt::format("mcec-lab compare: --patch: found '{}'; expected {}",
                            printable(arguments.fix.first), one_of(patched, arguments.fix.first)));
    return wrong;
  }
  if (!has_own_outputs(arguments)) return wrong;
  Sides sides;
  if (!read_sides(arguments, sides)) return wrong;
  if (!arguments.fix.first.empty() && (!sides[0].rows || !sides[1].rows)) {
    print_error(
        "mcec-lab compare: --patch writes patches of dumps and databases; found a state file");
    return wrong;
  }
  const Json told = compare(sides);
  if (!arguments.fix.first.empty()) write_patches(sides, told, arguments);
  if (!arguments.html.empty()) write_file(arguments.html, page_of(told));
  if (arguments.json) {
    print_json(told);
  } else if (arguments.html != "-" && arguments.fix.second != "-") {
    ShowOptions options = show_options(arguments);
    options.only_different = !arguments.all;
    show_comparison(told, options);
  }
  return told["agree"] ? agreed : disagreed;
}

Status capture_side(const Arguments &arguments) {
  const ReadSide read = read_side(arguments.file, 0, format_of(arguments));
  print_errors(read.side.source, read.errors);
  if (!read.errors.empty()) return wrong;
  fmt::print("{}", state_file(read.side.settings));
  return agreed;
}

}  // namespace lab
