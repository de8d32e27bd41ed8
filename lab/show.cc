#include "show.h"

#include <fmt/color.h>
#include <fmt/core.h>
#include <libsmartcols/libsmartcols.h>

#include <algorithm>
#include <memory>

namespace lab {
namespace {

constexpr std::size_t least_column = 8;

// What stands at a place of a text: a character with its continuation bytes, or a colour, which takes
// no column.
struct Unit {
  std::size_t bytes;
  std::size_t columns;
};

Unit unit_at(std::string_view text, std::size_t at) {
  if (text[at] == '\033') return {std::min(text.find('m', at), text.size() - 1) + 1 - at, 0};
  std::size_t end = at + 1;
  while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
  return {end - at, 1};
}

// How many bytes of a text fit into some columns.
std::size_t bytes_that_fit(std::string_view text, std::size_t columns) {
  std::size_t at = 0;
  while (at < text.size()) {
    const Unit unit = unit_at(text, at);
    if (unit.columns > columns) break;
    columns -= unit.columns;
    at += unit.bytes;
  }
  return at;
}

std::size_t width_of(std::string_view text) {
  std::size_t columns = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Unit unit = unit_at(text, at);
    columns += unit.columns;
    at += unit.bytes;
  }
  return columns;
}

// The width that a text needs when it is wrapped without cutting a word.
std::size_t least_width(std::string_view text) {
  std::size_t longest = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(" ,"), text.size() - 1) + 1;
    std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    if (word.back() == ' ') word.remove_suffix(1);
    longest = std::max(longest, width_of(word));
  }
  return longest;
}

std::string coloured(const std::string &text, const char *colour, const ShowOptions &options) {
  if (!options.colour || colour == nullptr) return text;
  const std::string_view name = colour;
  const auto of = name == "red"     ? fmt::terminal_color::red
                  : name == "green" ? fmt::terminal_color::green
                  : name == "cyan"  ? fmt::terminal_color::cyan
                                    : fmt::terminal_color::yellow;
  return fmt::format(fmt::fg(of), "{}", text);
}

std::string bold(const std::string &text, const ShowOptions &options) {
  return options.colour ? fmt::format(fmt::emphasis::bold, "{}", text) : text;
}

void print_wrapped(const std::string &text, const ShowOptions &options, std::size_t indent = 0) {
  const std::string margin(indent, ' ');
  std::string lines = wrapped(text, options.width > indent ? options.width - indent : 1);
  for (std::size_t at = 0; at != std::string::npos;) {
    const std::size_t end = lines.find('\n', at);
    fmt::print("{}{}\n", margin, lines.substr(at, end == lines.npos ? end : end - at));
    at = end == lines.npos ? end : end + 1;
  }
}

std::string code_text(const Json &result) {
  return fmt::format("{} (0x{:08X})", result["name"].get<std::string>(),
                     result["code"].get<uint32_t>());
}

std::string verdict_text(const Json &result) {
  return result["code"] == 0 ? result["name"].get<std::string>() : code_text(result);
}

// What is said of a parameter. Where the switches see it differently, each is told; of a parameter
// that one of them lacks, the other's view counts.
std::string state_text(const Json &parameter) {
  const Json &states = parameter["states"];
  std::string text;
  for (const auto &[side, state] : states.items()) {
    if (state == "missing at the peer") {
      return std::string("missing on the ") + (side == "left" ? "right" : "left");
    }
    if (states.size() > 1 && state == "only at the peer") continue;
    if (text.empty()) {
      text = state;
    } else if (text != state) {
      text = "left: " + text + "; right: " + state.get<std::string>();
    }
  }
  return text;
}

bool is_out_of_step(const std::string &state) {
  return state.find("different") != state.npos || state.starts_with("missing");
}

Cell state_cell(const Json &parameter) {
  const std::string text = state_text(parameter);
  if (is_out_of_step(text)) return {text, "red"};
  return {text, text.starts_with("same") ? "green" : "yellow"};
}

Cell value_cell(const Json &parameter, const char *side) {
  return {parameter[side].is_null() ? "-" : parameter[side].get<std::string>()};
}

std::string scope_title(const Json &check) {
  const std::string scope = check["scope"];
  if (scope == "switch") return scope;
  return "port " + scope + (check["pod"].get<bool>() ? " (pod)" : "");
}

void show_vlans(const Json &check, const ShowOptions &options) {
  if (!check.contains("pass")) return;
  for (const char *key : {"pass", "fail"}) {
    const std::string vlans = check[key];
    print_wrapped(fmt::format("twin VLANs that {}: {}", key, vlans.empty() ? "none" : vlans),
                  options, 4);
  }
}

void show_verdicts(const Json &verdicts, const ShowOptions &options) {
  const bool agree = std::all_of(verdicts.begin(), verdicts.end(),
                                 [](const Json &verdict) { return verdict["code"] == 0; });
  if (agree) {
    fmt::print("    {}\n", coloured("the pair agrees", "green", options));
    return;
  }
  for (const auto &[side, verdict] : verdicts.items()) {
    fmt::print("    {:5} {}\n", side,
               coloured(verdict_text(verdict), verdict["code"] == 0 ? "green" : "red", options));
  }
}

void show_check(const Json &check, const ShowOptions &options) {
  fmt::print("    {}\n", bold(scope_title(check), options));
  if (!options.quiet) {
    std::vector<std::vector<Cell>> rows;
    for (const Json &parameter : check["parameters"]) {
      rows.push_back({{parameter["parameter"].get<std::string>()},
                      value_cell(parameter, "left"),
                      value_cell(parameter, "right"),
                      state_cell(parameter)});
    }
    if (rows.empty()) {
      fmt::print("    neither switch has a parameter to send\n");
    } else {
      show_table({"parameter", "left", "right", "comparison"}, rows, options);
    }
    show_vlans(check, options);
  }
  show_verdicts(check["verdicts"], options);
}

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
    if (!record["port"].is_null()) ports.push_back(record["port"]);
  }
  if (ports.empty()) return "";
  constexpr std::size_t told = 4;
  std::string text =
      " on " + std::to_string(ports.size()) + " member port" + (ports.size() > 1 ? "s: " : ": ");
  for (std::size_t i = 0; i < std::min(ports.size(), told); ++i)
    text += (i > 0 ? ", " : "") + ports[i];
  return text + (ports.size() > told ? ", ..." : "");
}

void show_answer(const Json &outcome, const std::string &side, const ShowOptions &options) {
  std::string text;
  const char *colour = "green";
  if (outcome.contains("answer")) {
    const std::string answer = outcome["answer"];
    if (answer == "none") {
      text = "not answered";
      colour = "yellow";
    } else if (outcome.value("accepted", false)) {
      text = "accepted";
    } else {
      text = "refused: " + answer;
      colour = "red";
    }
  } else if (outcome.contains("result")) {
    text = outcome["result"]["code"] == 0 ? "done" : "failed";
    if (outcome["result"]["code"] != 0) colour = "red";
  }
  if (outcome.contains("result") && outcome["result"]["code"] != 0) {
    text += ", " + code_text(outcome["result"]);
  }
  if (!text.empty())
    print_wrapped(fmt::format("{:5} {}", side, coloured(text, colour, options)), options, 4);
  if (outcome.contains("values") && !outcome["values"].empty()) {
    print_wrapped(values_text(outcome["values"]) + records_text(outcome["records"]), options, 10);
  } else if (outcome.value("accepted", false)) {
    fmt::print("          nothing to check with the peer\n");
  }
}

// A table for each scope that was reported.
void show_report(const Json &outcome, const std::string &side, const ShowOptions &options) {
  const Json &report = outcome["report"];
  fmt::print("    {}\n", bold(side, options));
  if (report.empty()) fmt::print("    nothing to report: {}\n", code_text(outcome["result"]));
  for (auto record = report.begin(); record != report.end();) {
    const std::string scope = (*record)["scope"];
    const std::string component = (*record)["component"];
    std::vector<std::vector<Cell>> rows;
    for (; record != report.end() && (*record)["scope"] == scope; ++record) {
      rows.push_back(
          {{(*record)["name"].get<std::string>()}, {(*record)["value"].get<std::string>()}});
    }
    if (scope != "switch") fmt::print("    port {}\n", scope);
    show_table({component, "value"}, rows, options);
  }
}

void show_log(const Json &outcome, const std::string &side, const ShowOptions &) {
  for (const Json &line : outcome.value("log", Json::array())) {
    fmt::print("    {:5} | {}\n", side, line.get<std::string>());
  }
}

// "stp-mode: MST, loop-guard: Enabled", "stp-mode, loop-guard".
std::string shown(const Json &value) {
  if (value.is_null() || value.empty()) return "nothing";
  if (!value.is_structured()) return value.is_string() ? value.get<std::string>() : value.dump();
  std::string text;
  for (const auto &[key, item] : value.items()) {
    text += (text.empty() ? "" : ", ") + (value.is_object() ? key + ": " : "") + shown(item);
  }
  return text;
}

void show_expectations(const Json &step, const ShowOptions &options) {
  for (const Json &expectation : step.value("expectations", Json::array())) {
    if (expectation["holds"]) continue;
    print_wrapped(
        fmt::format("{} {}: expected {}, found {}", coloured("NOT AS EXPECTED", "red", options),
                    expectation["what"].get<std::string>(), shown(expectation["expected"]),
                    shown(expectation["found"])),
        options, 4);
  }
}

std::string on_text(const Json &on) {
  return on.size() == 2 ? "both" : on[0].get<std::string>();
}

bool has_broken_expectation(const Json &step) {
  const Json expectations = step.value("expectations", Json::array());
  return std::any_of(expectations.begin(), expectations.end(),
                     [](const Json &expectation) { return !expectation["holds"]; });
}

void show_heading(const Json &step, const ShowOptions &options) {
  const std::string where = step["action"] == "check" ? "" : " on " + on_text(step["on"]);
  constexpr std::size_t number_width = 5;
  std::string summary =
      wrapped(step["summary"].get<std::string>() + where, options.width - number_width);
  for (std::size_t at = 0; (at = summary.find('\n', at)) != summary.npos;) {
    summary.insert(++at, number_width, ' ');
  }
  fmt::print("{:3}. {}\n", step["step"].get<std::size_t>(), bold(summary, options));
  if (step.contains("note") && !options.quiet) print_wrapped(step["note"], options, 5);
}

void show_change(const char *what, const std::vector<std::string> &keys, const char *colour,
                 const ShowOptions &options) {
  if (keys.empty()) return;
  std::string text = std::string(what) + ":";
  for (const std::string &key : keys) text += " " + key;
  fmt::print("    {}\n", coloured(text, colour, options));
}

// What is now and what would be, of one scope.
void show_now_and_then(const Json &now, const Json &then, const std::string &side,
                       const ShowOptions &options) {
  const std::string peer = side == "left" ? "right" : "left";
  const auto find = [](const Json &scope, const Json &parameter) -> Json {
    for (const Json &candidate : scope["parameters"]) {
      if (candidate["parameter"] == parameter["parameter"]) return candidate;
    }
    return {{"left", nullptr}, {"right", nullptr}, {"states", {{"", "not there"}}}};
  };
  std::vector<std::vector<Cell>> rows;
  std::vector<std::string> out_of_step;
  std::vector<std::string> into_step;
  for (const Json &parameter : then["parameters"]) {
    const Json before = find(now, parameter);
    rows.push_back({{parameter["parameter"].get<std::string>()},
                    value_cell(before, side.c_str()),
                    value_cell(parameter, side.c_str()),
                    value_cell(parameter, peer.c_str()),
                    state_cell(parameter)});
    const bool was_out = is_out_of_step(state_text(before));
    const bool is_out = is_out_of_step(state_text(parameter));
    if (is_out && !was_out) out_of_step.push_back(parameter["parameter"]);
    if (was_out && !is_out) into_step.push_back(parameter["parameter"]);
  }
  if (rows.empty()) return;
  fmt::print("    {}\n", bold(scope_title(then), options));
  show_table({"parameter", side + " now", side + " then", peer, "comparison"}, rows, options);
  show_vlans(then, options);
  print_wrapped(fmt::format("now: {}; then: {}", verdict_text(now["verdicts"][side]),
                            verdict_text(then["verdicts"][side])),
                options, 4);
  show_change("would put out of step", out_of_step, "red", options);
  show_change("would bring into step", into_step, "green", options);
}

}  // namespace

std::string wrapped(const std::string &text, std::size_t width) {
  std::string out;
  std::string_view rest = text;
  while (width_of(rest) > width) {
    std::size_t cut = bytes_that_fit(rest, width);
    std::size_t at = rest.substr(0, cut + 1).find_last_of(" ,");
    if (at == rest.npos || at == 0) at = rest.substr(0, cut).find_last_of('-');
    if (at != rest.npos && at > 0) cut = std::min(at + 1, rest.size());
    // A comma stays on its line, a blank goes.
    std::string_view line = rest.substr(0, cut);
    if (width_of(line) > width && line.back() == ',') {
      cut = bytes_that_fit(rest, width);
      const std::size_t earlier = rest.substr(0, cut).find_last_of(" ,");
      if (earlier != rest.npos && earlier > 0) cut = earlier + 1;
      line = rest.substr(0, cut);
    }
    rest.remove_prefix(line.size());
    while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
    out.append(line).append("\n");
  }
  return out.append(rest);
}

void show_table(const std::vector<std::string> &heading, const std::vector<std::vector<Cell>> &rows,
                const ShowOptions &options) {
  // Columns are as wide as their widest text; what is too much is taken from the widest first.
  const std::size_t margin = 4;
  const std::size_t room = options.width > margin ? options.width - margin : 1;
  std::vector<std::size_t> widths;
  std::vector<std::size_t> least;
  for (std::size_t i = 0; i < heading.size(); ++i) {
    widths.push_back(width_of(heading[i]));
    least.push_back(widths.back());
    for (const auto &row : rows) {
      widths[i] = std::max(widths[i], width_of(row[i].text));
      least[i] = std::max(least[i], least_width(row[i].text));
    }
  }
  const auto total = [&] {
    std::size_t sum = 2 * (widths.size() - 1);
    for (const std::size_t width : widths) sum += width;
    return sum;
  };
  // Words are cut only when the table does not fit otherwise.
  for (const bool cut_words : {false, true}) {
    while (total() > room) {
      std::size_t widest = widths.size();
      for (std::size_t i = 0; i < widths.size(); ++i) {
        const std::size_t enough =
            std::max(width_of(heading[i]), cut_words ? least_column : least[i]);
        if (widths[i] <= enough) continue;
        if (widest == widths.size() || widths[i] > widths[widest]) widest = i;
      }
      if (widest == widths.size()) break;
      --widths[widest];
    }
  }

  const std::unique_ptr<libscols_table, void (*)(libscols_table *)> table(scols_new_table(),
                                                                          scols_unref_table);
  scols_table_enable_colors(table.get(), options.colour ? 1 : 0);
  scols_table_enable_noencoding(table.get(), 1);
  scols_table_set_column_separator(table.get(), "  ");
  scols_table_set_termforce(table.get(), SCOLS_TERMFORCE_NEVER);
  scols_table_new_column(table.get(), "", static_cast<double>(margin - 2), SCOLS_FL_STRICTWIDTH);
  for (std::size_t i = 0; i < heading.size(); ++i) {
    libscols_column *column =
        scols_table_new_column(table.get(), heading[i].c_str(), 0, SCOLS_FL_WRAP);
    scols_column_set_wrapfunc(column, scols_wrapnl_chunksize, scols_wrapnl_nextchunk, nullptr);
    scols_column_set_safechars(column, "\n");
  }
  for (const auto &row : rows) {
    libscols_line *line = scols_table_new_line(table.get(), nullptr);
    scols_line_set_data(line, 0, std::string(margin - 2, ' ').c_str());
    for (std::size_t i = 0; i < row.size(); ++i) {
      scols_line_set_data(line, i + 1, wrapped(row[i].text, widths[i]).c_str());
      if (row[i].colour != nullptr) {
        scols_cell_set_color(scols_line_get_cell(line, i + 1), row[i].colour);
      }
    }
  }
  char *text = nullptr;
  scols_print_table_to_string(table.get(), &text);
  std::string printed = std::string(text != nullptr ? text : "") + "\n";
  std::free(text);
  for (std::size_t at = 0; (at = printed.find(" \n", at)) != printed.npos;) {
    const std::size_t blanks = printed.find_last_not_of(' ', at) + 1;
    printed.erase(blanks, at + 1 - blanks);
    at = blanks;
  }
  fmt::print("{}", printed);
}

void show_title(const Json &scenario, const ShowOptions &options) {
  const std::string title = scenario["title"];
  fmt::print("{}\n",
             bold(title.empty() ? scenario["scenario"].get<std::string>() : title, options));
  std::string about = scenario["about"];
  while (about.ends_with('\n')) about.pop_back();
  if (!about.empty() && !options.quiet) print_wrapped(about, options);
}

void show_step(const Json &step, const ShowOptions &options) {
  const bool is_check = step.contains("checks");
  if (options.quiet && !is_check && !has_broken_expectation(step)) return;
  show_heading(step, options);
  if (is_check) {
    for (const Json &check : step["checks"]) show_check(check, options);
  }
  const Json switches = step.value("switches", Json::object());
  for (const auto &[side, outcome] : switches.items()) {
    if (options.quiet) break;
    show_log(outcome, side, options);
    if (outcome.contains("report")) {
      show_report(outcome, side, options);
    } else {
      show_answer(outcome, side, options);
    }
  }
  show_expectations(step, options);
}

void show_end(const Json &outcome, const ShowOptions &options) {
  std::size_t expected = 0;
  std::size_t held = 0;
  for (const Json &step : outcome["steps"]) {
    for (const Json &expectation : step.value("expectations", Json::array())) {
      ++expected;
      if (expectation["holds"]) ++held;
    }
  }
  const std::string text =
      expected == 0     ? "nothing was expected"
      : held < expected ? fmt::format("{} of {} expectations not met", expected - held, expected)
      : expected == 1   ? "the one expectation holds"
                        : fmt::format("all {} expectations hold", expected);
  fmt::print("{}\n\n", coloured(text, held == expected ? "green" : "red", options));
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
    show_log(would, side, options);
    show_answer(would, side, options);
    for (std::size_t i = 0; i < would["then"].size(); ++i) {
      show_now_and_then(would["now"][i], would["then"][i], side, options);
    }
  }
}

}  // namespace lab
