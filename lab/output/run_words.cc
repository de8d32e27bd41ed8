#include "output/run_words.h"

#include "switch/names.h"
#include "switch/vlans.h"

namespace lab {
namespace {

struct FindingToText {
  std::string operator()(std::monostate) const { return ""; }
  std::string operator()(const ResultCode &result) const { return code_name(result); }
  std::string operator()(const CheckCode &result) const { return code_name(result); }
  std::string operator()(const std::string &text) const { return text; }
  std::string operator()(const Vlans &vlans) const { return vlan_text(vlans); }

  std::string operator()(const std::vector<uint16_t> &types) const {
    std::vector<std::string> keys;
    for (const uint16_t type : types) keys.push_back(parameter_key(type));
    return join(keys);
  }

  std::string operator()(const std::vector<ParameterRecord> &records) const {
    std::vector<std::string> texts;
    for (const ParameterRecord &record : records) texts.push_back(describe_record(record));
    return join(texts);
  }

  std::string operator()(const TextsByType &texts) const {
    std::vector<std::string> items;
    for (const auto &[type, text] : texts) {
      items.push_back(parameter_key(type) + ": " +
                      (text && !text->empty() ? *text : std::string("nothing")));
    }
    return join(items);
  }
};

}  // namespace

std::string describe_answer(const SwitchReport &report) {
  if (!report.answer) return "none";
  return report.answer->is_accepted ? "accepted" : report.answer->text;
}

std::string describe_record(const ParameterRecord &record) {
  return parameter_key(record.type) + (record.port.empty() ? "" : "@" + record.port);
}

std::string describe_subject(const ExpectationReport &expectation) {
  return (expectation.side ? std::string(switch_names[*expectation.side]) + " " : "") +
         expectation.key + (expectation.subject.empty() ? "" : " of " + expectation.subject);
}

std::string code_name(const ResultCode &result) {
  return result.code == 0 ? "ok" : result_name(result.code);
}

std::string code_name(const CheckCode &result) {
  return result_name(result.code);
}

std::string describe_finding(const Finding &finding) {
  const std::string text = std::visit(FindingToText{}, finding);
  return text.empty() ? "nothing" : text;
}

}  // namespace lab
