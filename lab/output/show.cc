#include "output/show.h"

#include <fmt/core.h>

#include <algorithm>

#include "output/checks.h"
#include "output/words.h"

namespace lab {
namespace {

constexpr std::size_t indent = 4;

// What is under a key, or an empty list or mapping.
const Json &list_of(const Json &told, const char *key) {
  static const Json none = Json::array();
  return told.contains(key) ? told[key] : none;
}

// --- answers ---

std::string values_text(const Json &values) {
  std::string text;
  for (const Json &value : values) {
    text += fmt::format("{}{} = {}", text.empty() ? "" : ", ",
                        value["parameter"].get<std::string>(), value["text"].get<std::string>());
  }
  return text;
}

std::string records_text(const Json &records) {
  std::vector<std::string> ports;
  for (const Json &record : records) {
    if (record["port"].is_null()) continue;
    const std::string port = record["port"];
    if (ports.empty() || ports.back() != port) ports.push_back(port);
  }
  if (ports.empty()) return "";
  constexpr std::size_t told = 4;
  std::string text =
      " on " + std::to_string(ports.size()) + " member port" + (ports.size() > 1 ? "s: " : ": ");
  for (std::size_t i = 0; i < std::min(ports.size(), told); ++i) {
    text += (i > 0 ? ", " : "") + ports[i];
  }
  return text + (ports.size() > told ? ", ..." : "");
}

// What became of what a switch was asked.
Cell answer_cell(const Json &outcome) {
  Cell cell{"", Colour::green};
  const bool failed = outcome.contains("result") && outcome["result"]["code"] != 0;
  if (outcome.contains("answer")) {
    const std::string answer = outcome["answer"];
    if (answer == "none") {
      cell = {"not answered", Colour::yellow};
    } else if (outcome.value("accepted", false)) {
      cell.text = "accepted";
    } else {
      cell = {"refused: " + answer, Colour::red};
    }
  } else if (outcome.contains("result")) {
    cell = failed ? Cell{"failed", Colour::red} : Cell{"done", Colour::green};
  }
  if (failed) cell.text += ", " + code_text(outcome["result"]);
  return cell;
}

void show_answer(const Json &outcome, const std::string &side, const ShowOptions &options) {
  constexpr std::size_t under_answer = 10;
  const Cell answer = answer_cell(outcome);
  if (!answer.text.empty()) {
    put_wrapped(coloured(answer.text, answer.colour, options.layout), options.layout, under_answer,
                fmt::format("    {:6}", side));
  }
  if (!list_of(outcome, "values").empty()) {
    put_wrapped(values_text(outcome["values"]) + records_text(list_of(outcome, "records")),
                options.layout, under_answer);
  } else if (outcome.value("accepted", false)) {
    put_line("nothing to check with the peer", under_answer);
  }
}

// A table for each scope that was reported.
void show_report(const Json &outcome, const std::string &side, const ShowOptions &options) {
  const Json &report = outcome["report"];
  put_line(coloured(side, Colour::bold, options.layout), indent);
  if (report.empty()) put_line("nothing to report: " + code_text(outcome["result"]), indent);
  for (auto record = report.begin(); record != report.end();) {
    const std::string scope = (*record)["scope"];
    const std::string component = (*record)["component"];
    std::vector<std::vector<Cell>> rows;
    for (; record != report.end() && (*record)["scope"] == scope; ++record) {
      rows.push_back(
          {{(*record)["name"].get<std::string>()}, {(*record)["value"].get<std::string>()}});
    }
    if (scope != "switch") put_line("port " + scope, indent);
    put_table({component, "value"}, rows, options.layout);
  }
}

void show_log(const Json &outcome, const std::string &side) {
  for (const Json &line : list_of(outcome, "log")) {
    put_line(fmt::format("{:5} | {}", side, line.get<std::string>()), indent);
  }
}

// --- expectations ---

// "stp-mode: MST, loop-guard: Enabled", "stp-mode, loop-guard".
std::string said(const Json &value) {
  if (value.is_null() || value.empty() || value == "") return "nothing";
  if (!value.is_structured()) return value.is_string() ? value.get<std::string>() : value.dump();
  std::string text;
  for (const auto &[key, item] : value.items()) {
    text += (text.empty() ? "" : ", ") + (value.is_object() ? key + ": " : "") + said(item);
  }
  return text;
}

void show_expectations(const Json &step, const ShowOptions &options) {
  for (const Json &expectation : list_of(step, "expectations")) {
    if (expectation["met"]) continue;
    put_wrapped(fmt::format("{} {}: expected {}, found {}",
                            coloured("NOT AS EXPECTED", Colour::red, options.layout),
                            expectation["what"].get<std::string>(), said(expectation["expected"]),
                            said(expectation["found"])),
                options.layout, indent);
  }
}

bool has_broken_expectation(const Json &step) {
  const Json &expectations = list_of(step, "expectations");
  return std::any_of(expectations.begin(), expectations.end(),
                     [](const Json &expectation) { return !expectation["met"]; });
}

// --- steps ---

void show_heading(const Json &step, const ShowOptions &options) {
  const Json &on = step["on"];
  const std::string where = step["action"] == "check"
                                ? ""
                                : " on " + (on.size() == 2 ? "both" : on[0].get<std::string>());
  constexpr std::size_t number_width = 5;
  put_wrapped(coloured(step["summary"].get<std::string>() + where, Colour::bold, options.layout),
              options.layout, number_width, fmt::format("{:3}. ", step["step"].get<std::size_t>()));
  if (step.contains("note") && !options.quiet) {
    put_wrapped(step["note"], options.layout, number_width);
  }
}

}  // namespace

void show_title(const Json &scenario, const ShowOptions &options) {
  const std::string title = scenario["title"];
  put_line(coloured(title.empty() ? scenario["scenario"].get<std::string>() : title, Colour::bold,
                    options.layout));
  std::string about = scenario["about"];
  while (about.ends_with('\n')) about.pop_back();
  if (!about.empty() && !options.quiet) put_wrapped(about, options.layout);
}

void show_step(const Json &step, const ShowOptions &options) {
  const bool is_check = step.contains("checks");
  if (options.quiet && !is_check && !has_broken_expectation(step)) return;
  show_heading(step, options);
  const Json switches = step.value("switches", Json::object());
  for (const auto &[side, outcome] : switches.items()) {
    if (options.quiet) break;
    show_log(outcome, side);
    if (outcome.contains("report")) {
      show_report(outcome, side, options);
    } else {
      show_answer(outcome, side, options);
    }
  }
  if (is_check) show_checks(step["checks"], options);
  show_expectations(step, options);
}

void show_end(const Json &outcome, const ShowOptions &options) {
  std::size_t expected = 0;
  std::size_t snapshot = 0;
  for (const Json &step : outcome["steps"]) {
    for (const Json &expectation : list_of(step, "expectations")) {
      ++expected;
      if (expectation["met"]) ++snapshot;
    }
  }
  const std::string text = expected == 0         ? "nothing was expected"
                           : snapshot < expected ? fmt::format("{} of {} expectations not met",
                                                               expected - snapshot, expected)
                           : expected == 1       ? "the one expectation holds"
                                           : fmt::format("all {} expectations hold", expected);
  put_line(coloured(text, snapshot == expected ? Colour::green : Colour::red, options.layout));
  put_line("");
}

void show_what_if(const Json &outcome, const ShowOptions &options) {
  for (const Json &step : outcome["steps"]) {
    if (!has_broken_expectation(step)) continue;
    show_heading(step, options);
    show_expectations(step, options);
  }
  const Json &step = outcome["what_if"];
  show_heading(step, options);
  for (const auto &[side, would] : step["switches"].items()) {
    show_log(would, side);
    show_answer(would, side, options);
    const std::size_t changed = would["then"].size();
    for (std::size_t i = 0; i < changed; ++i) {
      show_now_and_then(would["now"][i], would["then"][i], side, options);
    }
    const std::size_t looked_at = would["looked-at"];
    put_wrapped(fmt::format("looked at the switch and {} channel{}; {}", looked_at - 1,
                            looked_at == 2 ? "" : "s",
                            changed == 0   ? std::string("nothing changes")
                            : changed == 1 ? std::string("one changes")
                                           : fmt::format("{} change", changed)),
                options.layout, indent);
  }
}

}  // namespace lab
