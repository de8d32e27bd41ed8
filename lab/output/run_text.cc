#include <fmt/core.h>

#include <algorithm>

#include "output/json.h"
#include "output/print.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr std::size_t step_indent = 4;

// --- answers ---

std::string describe_entries(const std::vector<Entry> &entries) {
  return join(describe_each(entries, [](const Entry &entry) {
    return parameter_key(entry.type) + " = " + display(entry.type, entry.value);
  }));
}

// " on 2 member ports: 0x1001, 0x1003". Consecutive records of a port count once.
std::string describe_record_ports(const std::vector<ParameterRecord> &records) {
  constexpr std::size_t most_ports = 4;
  auto ports = describe_each(records, [](const ParameterRecord &record) { return record.port; });
  std::erase(ports, "");
  ports.erase(std::unique(ports.begin(), ports.end()), ports.end());
  if (ports.empty()) return "";
  return fmt::format(" on {}: {}", format_count(ports.size(), "member port"),
                     list_first(ports, most_ports));
}

Cell answer_cell(const SwitchReport &report) {
  const bool is_failed = report.result.value_or(0) != 0;
  Cell cell("");
  if (report.is_command && !report.answer) {
    cell = {"not answered", Color::yellow};
  } else if (report.answer && report.answer->is_accepted) {
    cell = {"accepted", Color::green};
  } else if (report.answer) {
    cell = {"refused: " + report.answer->text, Color::red};
  } else if (report.result) {
    cell = is_failed ? Cell("failed", Color::red) : Cell("done", Color::green);
  }
  if (is_failed) cell.text += ", " + describe_result(*report.result);
  return cell;
}

void print_answer(const SwitchReport &report, std::size_t side, const Style &style) {
  constexpr std::size_t under_answer = 10;
  const Cell answer = answer_cell(report);
  if (!answer.text.empty()) {
    put_wrapped(answer, style.layout, under_answer, fmt::format("    {:6}", switch_names[side]));
  }
  if (report.values && !report.values->empty()) {
    const std::string ports = report.records ? describe_record_ports(*report.records) : "";
    put_wrapped(describe_entries(*report.values) + ports, style.layout, under_answer);
  } else if (report.answer && report.answer->is_accepted) {
    put_line("no parameter to check with the peer", under_answer);
  }
}

// Prints a table for each scope.
void print_display(const SwitchReport &report, std::size_t side, const Style &style) {
  const std::vector<DisplayRecord> &records = *report.display;
  put_line(add_color({switch_names[side], Color::bold}, style.layout), step_indent);
  if (records.empty()) {
    put_line("nothing to report: " + describe_result(*report.result), step_indent);
  }
  for (auto record = records.begin(); record != records.end();) {
    const DisplayRecord &first = *record;
    std::vector<std::vector<Cell>> rows;
    for (; record != records.end() && record->scope == first.scope; ++record) {
      rows.push_back({record->name, record->value});
    }
    if (first.scope != "switch") put_line("port " + first.scope, step_indent);
    put_table({first.component, "value"}, rows, style.layout);
  }
}

void print_log(const SwitchReport &report, std::size_t side) {
  for (const std::string &line : report.log) {
    put_line(fmt::format("{:5} | {}", switch_names[side], line), step_indent);
  }
}

// --- steps ---

bool has_unmet_expectation(const StepReport &step) {
  return !std::ranges::all_of(step.expectations, &ExpectationReport::is_met);
}

void print_unmet(const StepReport &step, const Style &style) {
  for (const ExpectationReport &expectation : step.expectations) {
    if (expectation.is_met) continue;
    put_wrapped(fmt::format("{} {}: expected {}, found {}",
                            add_color({"NOT AS EXPECTED", Color::red}, style.layout),
                            describe_subject(expectation), describe_finding(expectation.expected),
                            describe_finding(expectation.found)),
                style.layout, step_indent);
  }
}

void print_head(const StepHead &head, bool is_check, const Style &style) {
  constexpr std::size_t number_width = 5;
  const char *where = is_check                   ? ""
                      : head.on[0] && head.on[1] ? " on both"
                      : head.on[0]               ? " on left"
                                                 : " on right";
  put_wrapped({head.summary + where, Color::bold}, style.layout, number_width,
              fmt::format("{:3}. ", head.number));
  if (!head.note.empty() && !style.quiet) put_wrapped(head.note, style.layout, number_width);
}

}  // namespace

void print_title(const std::string &path, const std::string &title, const std::string &about,
                 const Style &style) {
  put_line(add_color({title.empty() ? path : title, Color::bold}, style.layout));
  const std::string text = about.substr(0, about.find_last_not_of('\n') + 1);
  if (!text.empty() && !style.quiet) put_wrapped(text, style.layout);
}

void print_step(const StepReport &step, const Style &style) {
  const bool is_check = step.checks.has_value();
  if (style.quiet && !is_check && !has_unmet_expectation(step)) return;
  print_head(step.head, is_check, style);
  for (std::size_t side = 0; !style.quiet && side < step.switches.size(); ++side) {
    if (!step.switches[side]) continue;
    print_log(*step.switches[side], side);
    if (step.switches[side]->display) {
      print_display(*step.switches[side], side, style);
    } else {
      print_answer(*step.switches[side], side, style);
    }
  }
  if (is_check) print_checks(*step.checks, style);
  print_unmet(step, style);
}

void print_unmet_step(const StepReport &step, const Style &style) {
  if (!has_unmet_expectation(step)) return;
  print_head(step.head, step.checks.has_value(), style);
  print_unmet(step, style);
}

void print_end(const RunReport &report, const Style &style) {
  const std::size_t count = report.expected;
  const std::size_t unmet = count - report.met;
  const std::string text = count == 0   ? "nothing was expected"
                           : unmet > 0  ? fmt::format("{} of {} expectations not met", unmet, count)
                           : count == 1 ? "the one expectation holds"
                                        : fmt::format("all {} expectations hold", count);
  put_line(add_color({text, unmet == 0 ? Color::green : Color::red}, style.layout));
  put_line("");
}

void print_what_if(const WhatIfReport &report, const Style &style) {
  print_head(report.head, false, style);
  for (std::size_t side = 0; side < report.sides.size(); ++side) {
    if (!report.sides[side]) continue;
    const WhatIfSide &tried = *report.sides[side];
    print_log(tried.answer, side);
    print_answer(tried.answer, side, style);
    const std::size_t changed = tried.then.size();
    for (std::size_t i = 0; i < changed; ++i) {
      print_scope_change(tried.now[i], tried.then[i], side, style);
    }
    put_wrapped(
        fmt::format("checked the switch and {}; {}", format_count(tried.checked - 1, "channel"),
                    format_verb(changed, "change")),
        style.layout, step_indent);
  }
}

}  // namespace lab
