#include "tasks/replies.h"

#include <algorithm>

#include "switch/arrays.h"

namespace lab {
namespace {

// What a reply is about, and whose it is.
struct ReplyContext {
  const Request &request;
  const Settings &settings;
};

std::string find_port_name(uint32_t index, const Settings &settings) {
  const Port *port = find_port(settings, index);
  return port != nullptr ? port_name(*port) : port_text(index);
}

// "switch", or a port.
std::string name_scope(const ReplyContext &context) {
  return std::visit(
      [&](const auto &asked) -> std::string {
        if constexpr (requires { asked.scope; }) {
          if (!asked.scope.global) return find_port_name(asked.scope.port, context.settings);
        }
        return "switch";
      },
      context.request.asked);
}

void add_result(uint32_t code, SwitchReport &report) {
  if (report.result.value_or(0) == 0) report.result = code;
}

template <class List>
List &make_list(std::optional<List> &list) {
  return list ? *list : list.emplace();
}

void add_answer(const Done &, const ReplyContext &, SwitchReport &) {}

void add_answer(const Checked &, const ReplyContext &, SwitchReport &) {}

void add_answer(const Result &result, const ReplyContext &, SwitchReport &report) {
  add_result(result.code, report);
}

void add_answer(const Extracted &extracted, const ReplyContext &context, SwitchReport &report) {
  add_result(extracted.result, report);
  for (const Extracted::Response &response : extracted.responses) {
    std::string text = printable_lines(response.text);
    while (text.ends_with('\n')) text.pop_back();
    report.answer = CommandAnswer{response.accepted, text};
  }
  for (const Extracted::Record &record : extracted.records) {
    make_list(report.records)
        .push_back({.type = record.type,
                    .port = record.global ? "" : find_port_name(record.port, context.settings),
                    .is_valid = record.valid == 1});
  }
  // The same update of several ports is reported once.
  std::vector<Entry> &values = make_list(report.values);
  for (const Entry &entry : extracted.values) {
    if (std::find(values.begin(), values.end(), entry) == values.end()) values.push_back(entry);
  }
}

void add_answer(const Exported &exported, const ReplyContext &, SwitchReport &report) {
  add_result(exported.result, report);
  report.parameters = entries_of(exported.array);
}

void add_answer(const Reported &reported, const ReplyContext &context, SwitchReport &report) {
  add_result(reported.result, report);
  std::vector<DisplayRecord> &display = make_list(report.display);
  for (const Reported::Record &record : reported.records) {
    display.push_back({.scope = name_scope(context),
                       .type = record.type,
                       .component = printable(record.component),
                       .name = printable(record.name),
                       .value = printable(record.value)});
  }
}

}  // namespace

void add_reply(const Request &request, const Reply &reply, const Settings &settings,
               SwitchReport &report) {
  const ReplyContext context{request, settings};
  report.is_command = report.is_command || std::holds_alternative<Command>(request.asked);
  std::visit([&](const auto &answer) { add_answer(answer, context, report); }, reply.answer);
  report.log.insert(report.log.end(), reply.log.begin(), reply.log.end());
}

}  // namespace lab
