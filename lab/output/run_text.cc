#include "output/run.h"

#include <fmt/core.h>

#include <algorithm>

#include "output/check_text.h"
#include "output/words.h"
#include "switch/names.h"
#include "switch/values.h"

namespace lab {
namespace {

constexpr std::size_t indent = 4;

// --- answers ---

std::string describe_entries(const std::vector<Entry> &entries) {
  std::vector<std::string> texts;
  for (const Entry &entry : entries) {
    texts.push_back(parameter_key(entry.type) + " = " + display(entry.type, entry.value));
  }
  return join(texts);
}

// The ports of records that follow one another.
std::string describe_record_ports(const std::vector<ParameterRecord> &records) {
  constexpr std::size_t most = 4;
  std::vector<std::string> ports;
  for (const ParameterRecord &record : records) {
    if (record.port.empty() || (!ports.empty() && ports.back() == record.port)) continue;
    ports.push_back(record.port);
  }
  if (ports.empty()) return "";
  const std::string text =
      fmt::format(" on {} member port{}: ", ports.size(), ports.size() > 1 ? "s" : "");
  const bool has_more = ports.size() > most;
  ports.resize(std::min(ports.size(), most));
  return text + join(ports) + (has_more ? ", ..." : "");
}

Cell answer_cell(const SwitchReport &report) {
  Cell cell{"", Colour::green};
  const bool is_failed = report.result.value_or(0) != 0;
  if (report.is_command && !report.answer) {
    cell = {"not answered", Colour::yellow};
  } else if (report.answer) {
    cell = report.answer->is_accepted ? Cell{"accepted", Colour::green}
                                      : Cell{"refused: " + report.answer->text, Colour::red};
  } else if (report.result) {
    cell = is_failed ? Cell{"failed", Colour::red} : Cell{"done", Colour::green};
  }
  if (is_failed) cell.text += ", " + describe_result(*report.result);
  return cell;
}

void print_answer(const SwitchReport &report, std::size_t side, const Style &style) {
  constexpr std::size_t under_answer = 10;
  const Cell answer = answer_cell(report);
  if (!answer.text.empty()) {
    put_wrapped(coloured(answer.text, answer.colour, style.layout), style.layout, under_answer,
                fmt::format("    {:6}", switch_names[side]));
  }
  if (report.values && !report.values->empty()) {
    const std::string ports = report.records ? describe_record_ports(*report.records) : "";
    put_wrapped(describe_entries(*report.values) + ports, style.layout, under_answer);
  } else if (report.answer && report.answer->is_accepted) {
    put_line("nothing to check with the peer", under_answer);
  }
}

// A table for each scope with display records.
void print_display(const SwitchReport &report, std::size_t side, const Style &style) {
  const std::vector<DisplayRecord> &records = *report.display;
  put_line(coloured(switch_names[side], Colour::bold, style.layout), indent);
  if (records.empty()) {
    put_line("nothing to report: " + describe_result(*report.result), indent);
  }
  for (auto record = records.begin(); record != records.end();) {
    const DisplayRecord &first = *record;
    std::vector<std::vector<Cell>> rows;
    for (; record != records.end() && record->scope == first.scope; ++record) {
      rows.push_back({{record->name}, {record->value}});
    }
    if (first.scope != "switch") put_line("port " + first.scope, indent);
    put_table({first.component, "value"}, rows, style.layout);
  }
}

void print_log(const SwitchReport &report, std::size_t side) {
  for (const std::string &line : report.log) {
    put_line(fmt::format("{:5} | {}", switch_names[side], line), indent);
  }
}

// --- expectations ---

std::string describe_finding(const Finding &finding) {
  const std::string text = std::visit(
      [](const auto &found) {
        const auto words = describe_found(found);
        if constexpr (std::is_same_v<decltype(words), const std::string>) {
          return words;
        } else {
          return join(words);
        }
      },
      finding);
  return text.empty() ? "nothing" : text;
}

// --- steps ---

bool has_unmet_expectation(const StepReport &step) {
  return std::any_of(step.expectations.begin(), step.expectations.end(),
                     [](const ExpectationReport &expectation) { return !expectation.is_met; });
}

void print_unmet(const StepReport &step, const Style &style) {
  for (const ExpectationReport &expectation : step.expectations) {
    if (expectation.is_met) continue;
    put_wrapped(fmt::format("{} {}: expected {}, found {}",
                            coloured("NOT AS EXPECTED", Colour::red, style.layout),
                            describe_subject(expectation), describe_finding(expectation.expected),
                            describe_finding(expectation.found)),
                style.layout, indent);
  }
}

void print_head(const StepHead &head, bool is_check, const Style &style) {
  constexpr std::size_t number_width = 5;
  const char *where = is_check                   ? ""
                      : head.on[0] && head.on[1] ? " on both"
                      : head.on[0]               ? " on left"
                                                 : " on right";
  put_wrapped(coloured(head.summary + where, Colour::bold, style.layout), style.layout,
              number_width, fmt::format("{:3}. ", head.number));
  if (!head.note.empty() && !style.quiet) put_wrapped(head.note, style.layout, number_width);
}

}  // namespace

std::string describe_subject(const ExpectationReport &expectation) {
  return (expectation.side ? std::string(switch_names[*expectation.side]) + " " : "") +
         expectation.key + (expectation.subject.empty() ? "" : " of " + expectation.subject);
}

std::string describe_found(const ResultCode &result) {
  return result.code == 0 ? "ok" : result_name(result.code);
}

std::string describe_found(const CheckCode &result) {
  return result_name(result.code);
}

std::string describe_found(const std::string &text) {
  return text;
}

std::string describe_found(const Vlans &vlans) {
  return vlan_text(vlans);
}

std::vector<std::string> describe_found(const std::vector<uint16_t> &types) {
  std::vector<std::string> keys;
  for (const uint16_t type : types) keys.push_back(parameter_key(type));
  return keys;
}

// stp-mode, ifi-port-type@0x1000
std::vector<std::string> describe_found(const std::vector<ParameterRecord> &records) {
  std::vector<std::string> texts;
  for (const auto &[type, port, is_valid] : records) {
    texts.push_back(parameter_key(type) + (port.empty() ? "" : "@" + port));
  }
  return texts;
}

// "stp-mode: MST, loop-guard: Enabled".
std::vector<std::string> describe_found(const TextsByType &texts) {
  std::vector<std::string> items;
  for (const auto &[type, text] : texts) {
    items.push_back(parameter_key(type) + ": " + (text && !text->empty() ? *text : "nothing"));
  }
  return items;
}

std::string describe_found(std::monostate) {
  return "";
}

void print_title(const std::string &path, const std::string &title, const std::string &about,
                 const Style &style) {
  put_line(coloured(title.empty() ? path : title, Colour::bold, style.layout));
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
  const std::size_t expected = report.expected;
  const std::string text = expected == 0           ? "nothing was expected"
                           : report.met < expected ? fmt::format("{} of {} expectations not met",
                                                                 expected - report.met, expected)
                           : expected == 1         ? "the one expectation holds"
                                           : fmt::format("all {} expectations hold", expected);
  put_line(coloured(text, report.met == expected ? Colour::green : Colour::red, style.layout));
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
      print_now_and_then(tried.now[i], tried.then[i], side, style);
    }
    put_wrapped(fmt::format("looked at the switch and {} channel{}; {}", tried.checked - 1,
                            tried.checked == 2 ? "" : "s",
                            changed == 0   ? std::string("nothing changes")
                            : changed == 1 ? std::string("one changes")
                                           : fmt::format("{} change", changed)),
                style.layout, indent);
  }
}

}  // namespace lab
