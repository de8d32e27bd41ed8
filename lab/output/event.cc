#include "output/event.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "output/layout.h"
#include "output/told.h"
#include "switch/names.h"

namespace lab {
namespace {

// Of more, the rest is counted.
constexpr std::size_t rows_told = 10;
constexpr std::size_t scopes_told = 4;
constexpr std::size_t longest_value = 60;

std::string time_of(const Json &event) {
  return event["time"].get<std::string>().substr(std::string_view("2024-01-01T").size(), 8);
}

std::string scope_text(const std::string &scope) {
  return scope == "switch" ? "the switch" : scope;
}

// "a, b and 3 more".
std::string counted(const std::vector<std::string> &texts, std::size_t most, const char *between) {
  std::string text;
  for (std::size_t i = 0; i < std::min(texts.size(), most); ++i) {
    text += (i > 0 ? between : "") + texts[i];
  }
  if (texts.size() > most) text += fmt::format(" and {} more", texts.size() - most);
  return text;
}

std::string why_not(const Json &check) {
  if (check.contains("only")) return "on " + check["only"].get<std::string>() + " only";
  return counted(differing(check), 12, ", ");
}

std::string disagreement(const Json &check) {
  return scope_text(check["scope"]) + " (" + why_not(check) + ")";
}

// --- a change ---

std::string value_text(const Json &fields, const std::string &name) {
  if (!fields.is_object() || !fields.contains(name)) return "(none)";
  const Json &value = fields[name];
  std::string text;
  if (value.is_string()) {
    text = value;
  } else {
    for (const Json &member : value) text += (text.empty() ? "" : ",") + member.get<std::string>();
  }
  if (text.empty()) return "''";
  if (text.size() <= longest_value) return text;
  std::size_t end = longest_value;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "...";
}

std::string row_text(const Json &row) {
  const char *arrow = takes_utf8() ? "\u2192" : "->";
  const Json &before = row["before"];
  const Json &after = row["after"];
  std::string text = row["side"].get<std::string>() + " " + row["row"].get<std::string>();
  if (before.is_null() && after.is_null()) return text + " changed";
  if (before.is_null() || after.is_null()) {
    text += before.is_null() ? " added" : " removed";
    std::vector<std::string> fields;
    for (const auto &[name, value] : after.items()) {
      fields.push_back(name + " " + value_text(after, name));
    }
    return fields.empty() ? text : text + " (" + counted(fields, rows_told, ", ") + ")";
  }
  std::vector<std::string> names;
  for (const Json *fields : {&before, &after}) {
    for (const auto &[name, value] : fields->items()) {
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
  }
  std::vector<std::string> fields;
  for (const std::string &name : names) {
    fields.push_back(name + " " + value_text(before, name) + arrow + value_text(after, name));
  }
  return text + " " + counted(fields, rows_told, ", ");
}

// "PortChannel10 now agrees; the pair agrees".
std::string effect_text(const Json &event) {
  const Json &agree = event["agree"];
  const Json &before = event["before"];
  const Json scopes = before.value("scopes", Json::object());
  std::vector<std::string> effects;
  for (const Json &check : event["checks"]) {
    const std::string scope = check["scope"];
    const std::string name = scope_text(scope);
    const bool agrees_now = agrees(check);
    const bool is_new = !scopes.contains(scope);
    const bool agreed = !is_new && scopes[scope] == true;
    if (agrees_now) {
      effects.push_back(name + (is_new   ? " is new and agrees"
                                : agreed ? " still agrees"
                                         : " now agrees"));
    } else {
      effects.push_back(name +
                        (is_new   ? " is new and does not agree"
                         : agreed ? " no longer agrees"
                                  : " still does not agree") +
                        " (" + why_not(check) + ")");
    }
  }
  for (const Json &scope : event.value("gone", Json::array())) {
    effects.push_back(scope_text(scope) + " is gone");
  }
  std::string text = counted(effects, scopes_told, "; ");
  if (agree.is_null()) {
    text = "the verdict is not known";
  } else if (agree != before["agree"]) {
    text += (text.empty() ? "" : "; ") +
            std::string(agree == true ? "the pair agrees" : "the pair does not agree");
  }
  return text.empty() ? "no verdict changes" : text;
}

std::string changed_text(const Json &event) {
  const std::string time = time_of(event);
  const Json &rows = event["rows"];
  if (rows.size() == 1) {
    return fmt::format("{} {}: {}\n", time, row_text(rows[0]), effect_text(event));
  }
  std::string text;
  for (std::size_t i = 0; i < std::min(rows.size(), rows_told); ++i) {
    text += fmt::format("{} {}\n", time, row_text(rows[i]));
  }
  if (rows.size() > rows_told) {
    text += fmt::format("{} and {} more rows\n", time, rows.size() - rows_told);
  }
  return text + fmt::format("{} together: {}\n", time, effect_text(event));
}

// --- the others ---

std::string verdict_text(const Json &comparison) {
  if (comparison["agree"] == true) {
    const bool is_off = comparison["left"]["spanning-tree"] == "off" &&
                        comparison["right"]["spanning-tree"] == "off";
    return is_off ? "the pair agrees: spanning tree is off on both" : "the pair agrees";
  }
  std::vector<std::string> scopes;
  for (const char *side : switch_names) {
    if (comparison[side]["spanning-tree"] == "off") {
      scopes.push_back(std::string("spanning tree is off on ") + side);
    }
  }
  for (const Json &check : comparison["checks"]) {
    if (!agrees(check)) scopes.push_back(disagreement(check));
  }
  return "the pair does not agree: " + counted(scopes, scopes_told, "; ");
}

std::string polled_text(const Json &event) {
  std::string text;
  for (const auto &[side, sends] : event["notifications"].items()) {
    const std::string &source = event["comparison"][side]["source"].get_ref<const std::string &>();
    if (sends == true || source.find("://") == source.npos) continue;
    text += fmt::format("{} {} sends no notifications; it is read again and again\n",
                        time_of(event), side);
  }
  return text;
}

std::string compared_text(const Json &event) {
  const Json &comparison = event["comparison"];
  return fmt::format("{} {}\n", time_of(event), verdict_text(comparison)) + polled_text(event);
}

std::string back_text(const Json &event) {
  const std::string side = event["side"];
  if (event["comparison"].is_null()) {
    return fmt::format("{} {} is connected: the verdict is not known\n", time_of(event), side);
  }
  return fmt::format("{} {} is connected: {}\n", time_of(event), side,
                     verdict_text(event["comparison"])) +
         polled_text(event);
}

std::string mistake_text(const Json &event) {
  const Json &errors = event["errors"];
  const std::string start = time_of(event) + " " + event["side"].get<std::string>();
  std::string text;
  for (std::size_t i = 0; i < std::min(errors.size(), rows_told); ++i) {
    const Json &error = errors[i];
    const std::string where = error["where"];
    const std::string expected = error["expected"];
    text += fmt::format("{} {}: {}{}\n", start, where.empty() ? error["source"] : error["where"],
                        error["found"].get<std::string>(),
                        expected.empty() ? "" : "; expected " + expected);
  }
  if (errors.size() > rows_told) {
    text += fmt::format("{} and {} more errors\n", start, errors.size() - rows_told);
  }
  return text + fmt::format("{}: the verdict is not known\n", start);
}

std::string plain_text(const Json &event) {
  const std::string kind = event["event"];
  if (kind == "changed") return changed_text(event);
  if (kind == "compared") return compared_text(event);
  if (kind == "connected") return back_text(event);
  if (kind == "error") return mistake_text(event);
  return fmt::format("{} {} is disconnected: {}\n", time_of(event),
                     event["side"].get<std::string>(), event["reason"].get<std::string>());
}

}  // namespace

std::string event_text(const Json &event) {
  return as_shown(plain_text(event));
}

}  // namespace lab
