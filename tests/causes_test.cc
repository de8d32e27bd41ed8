// Every path to STP_MCEC_ERR_FAILURE and STP_MCEC_ERR_INVALID_ARG, and the results for missing
// arrays: the call, the last log line, and the cause. docs/causes.md has this table.

#include <fnmatch.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>

#include "extract.h"
#include "files.h"

namespace {

using namespace test;

// --- calls, which return their outcomes ---

using Checker = uint32_t (*)(void *local, void *remote);

uint32_t check_all(void *local, void *remote) {
  return stp_mcec_type1_cfg_compat_check_common(0, 0, local, remote, 1, nullptr, nullptr, nullptr);
}

uint32_t check_mst(void *local, void *remote) {
  return stp_mcec_mst_type1_cfg_compat_check(0, 0, local, remote);
}

uint32_t check_rapid_pvst(void *local, void *remote) {
  return stp_mcec_pvrst_type1_cfg_compat_check(0, 0, local, remote, 1, nullptr, nullptr, nullptr);
}

// Passes NULL for an array without bytes.
std::string check_arrays(Checker checker, Bytes local, Bytes remote) {
  return in_hex(
      checker(local.empty() ? nullptr : local.data(), remote.empty() ? nullptr : remote.data()));
}

std::string check_in_mode(const Bytes &mode) {
  cache(0, STP_MCEC_TYPE1_STP_MODE, mode);
  return check_arrays(check_all, array({{6, word(1)}}), array({{6, word(1)}}));
}

using CommandExtractor = uint32_t (*)(void *, uint32_t, uint8_t **, uint32_t *, uint32_t *,
                                      mcecm_app_cmd_extract_info_t **);

// Calls an extractor with a command of another one.
std::string call_extractor(CommandExtractor extractor) {
  const Message made(standin_command(9, 1, nullptr, 0));
  void *handle = standin_handle(made.msg);
  standin_answers_clear();
  uint32_t count = 3;
  const std::string result = in_hex(extractor(handle, 9, nullptr, &count, nullptr, nullptr));
  EXPECT_EQ(count, 3U);
  const bool is_answered = standin_answer_count() > 0;
  const std::string answer = is_answered ? standin_answer_at(0).text : "";
  standin_handle_free(handle);
  return result + " | " + answer;
}

std::string report_on(Bytes entries) {
  void *records = nullptr;
  const uint32_t result =
      stp_mcec_type1_cfg_get_param_info(entries.empty() ? nullptr : entries.data(), &records);
  const std::string count =
      records == nullptr ? "" : std::to_string(static_cast<uint32_t *>(records)[0]);
  if (records != nullptr) mtrack_free(records);
  return in_hex(result) + " | " + count;
}

// --- the table ---

struct Cause {
  const char *caller;
  const char *line;  // a pattern of fnmatch(); "": no line
  const char *cause;
  std::string outcome;  // starts with the result
  std::function<std::string()> act;
};

constexpr char checked[] = "check";
constexpr char both_missing[] = "Both arrays are NULL.";
constexpr char local_missing[] = "The local array is NULL.";
constexpr char peer_missing[] = "The peer's array is NULL.";
constexpr char at_peer[] = "The peer's array lacks the parameter, or ends before it.";
constexpr char other_mode[] = "The cached mode is neither MST nor Rapid-PVST.";
constexpr char no_type[] = "The type is not a parameter.";
constexpr char commanded[] = "extraction of a command";
constexpr char other_command[] =
    "The command belongs to another extractor. From a message only 62 causes this.";
constexpr char vlans_missing[] =
    "`STP_ENDIS` without `VLAN_LIST`, or the count of the list exceeds its length.";
constexpr char ports_missing[] =
    "An interface command without `IFINDEX`, or the count of the list exceeds its length.";
constexpr char no_value[] = "40dd0003 | internal error: Failed to get param val\n";
constexpr char updated[] = "extraction of an update message";
constexpr char reported[] = "report";

std::vector<Cause> causes_of_checks() {
  static constexpr char invalid[] = "type-1 compat check invalid args";
  static constexpr char local[] = "type-1 compat check failed Local param is Null";
  static constexpr char peer[] = "type-1 compat check failed Remote Param is Null";
  const auto with_arrays = [](Checker checker, const Bytes &ours, const Bytes &theirs) {
    return [=] { return check_arrays(checker, ours, theirs); };
  };
  std::vector<Cause> causes;
  for (const auto &[checker, type] :
       {std::pair<Checker, uint16_t>{check_all, 6}, {check_mst, 3}, {check_rapid_pvst, 2}}) {
    const Bytes none = array({});
    causes.insert(causes.end(),
                  {{checked, invalid, both_missing, "40dd0003", with_arrays(checker, {}, {})},
                   {checked, local, local_missing, "40dd003a", with_arrays(checker, {}, none)},
                   {checked, peer, peer_missing, "40dd003a", with_arrays(checker, none, {})},
                   {checked, "failed (rc=*) get_next_tlv", at_peer, "40dd0001",
                    [checker = checker, type = type] {
                      cache(0, STP_MCEC_TYPE1_STP_MODE, word(STP_MCEC_STP_MODE_MST));
                      return check_arrays(checker, array({{type, word(1)}}), array({{1, word(1)}}));
                    }}});
  }
  causes.insert(causes.end(),
                {
                    {checked, "STP mode not found in cache", "No mode is cached yet.", "40dd0001",
                     [] { return check_arrays(check_all, array({}), array({})); }},
                    {checked, "current STP mode MST", other_mode, "40dd0001",
                     [] { return check_in_mode(word(1)); }},
                    {checked, "current STP mode MST", other_mode, "40dd0001",
                     [] { return check_in_mode({}); }},
                    {checked, "current STP mode MST", other_mode, "40dd0001",
                     [] {
                       return check_in_mode({0, 0, 0});
                     }},
                    {"`stp_mcec_pvrst_endis_check_for_twin_vlans`", "compatcheck fail vlans: *",
                     no_type, "40dd0001",
                     [] {
                       Bytes ours = vlans("1"), theirs = vlans(""), twins = ours, pass = ours,
                             fail = ours;
                       return in_hex(stp_mcec_pvrst_endis_check_for_twin_vlans(
                           13, ours.data(), theirs.data(), twins.data(), pass.data(), fail.data()));
                     }},
                    {"`stp_mcec_get_type1_cfg_compat_chk_errcode`", "", no_type, "40dd0001",
                     [] { return in_hex(stp_mcec_get_type1_cfg_compat_chk_errcode(13)); }},
                });
  return causes;
}

std::vector<Cause> causes_of_commands() {
  const auto extractor = [](CommandExtractor called) {
    return [=] { return call_extractor(called); };
  };
  const auto with_ports = [](uint32_t id, uint32_t attribute, uint32_t value) {
    return [=] {
      return command(id, set_form, {ports({0x1001, 0x1001}), {attribute, host_words({value})}});
    };
  };
  static constexpr char other[] = "Invalid cmd id *";
  static constexpr char values[] = "extract interface params";
  return {
      {"extraction", "type-1 param extractor",
       "The opcode is neither a command nor an update message.", "40dd0003 | | | |",
       [] { return extract_message(5, {'x'}); }},
      {commanded, "Failed to get CMI (TLV) request handle",
       "The message has no usable request, or its handle is larger than 64 KiB.",
       "40dd0003 | | | |", [] { return extract_message(STP_MCEC_MTS_OPC_CMD_REQ, {'x'}); }},
      {commanded, "CLI extractor", "The command is not in `STP_MCEC_COMMANDS`.",
       "40dd0003 | | count 0 | |", [] { return command(3, set_form); }},
      {commanded, other, other_command, "40dd0003 | Invalid command ID 62 | count 0 | |",
       [] { return command(routed_command, set_form); }},
      {commanded, other, other_command, "40dd0003 | Invalid cmd id 9\n",
       extractor(stp_mcec_extract_stp_mode_param)},
      {commanded, other, other_command, "40dd0003 | Invalid Command ID 9",
       extractor(stp_mcec_extract_stp_endis_param)},
      {commanded, other, other_command, "40dd0003 | ",
       extractor(stp_mcec_extract_reset_mst_region_cfg)},
      {commanded, other, other_command, "40dd0003 | Invalid command ID 9",
       extractor(stp_mcec_extract_gbl_port_type_param)},
      {commanded, "Invalid arg", vlans_missing,
       "40dd0003 | internal error: Failed to get vlan | count 0 | |",
       [] { return command(STP_MCEC_CMD_STP_ENDIS, set_form); }},
      {commanded, values, "The command is not an interface command.", no_value,
       extractor(stp_mcec_extract_if_params)},
      {commanded, "Portfast mode unknown!!", "The value of the port mode or port type is unknown.",
       std::string(no_value) + " | count 0 | |",
       with_ports(STP_MCEC_CMD_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE, 6)},
      {commanded, "guard type unknown!!", "The value of the guard is unknown.",
       std::string(no_value) + " | count 0 | |",
       with_ports(STP_MCEC_CMD_IF_GUARD, STP_MCEC_ATTR_IF_GUARD, 0)},
      {commanded, "param_val=*, param_type=*", ports_missing,
       "40dd0003 | internal error: Failed to get IFINDEX | count 0 | |",
       [] { return command(STP_MCEC_CMD_IF_PORT_MODE, set_form); }},
  };
}

std::vector<Cause> causes_of_arrays() {
  const Entries two = {{6, word(1)}, {7, word(1)}};
  return {
      {updated, "null payload", "The message has no payload.", "40dd0003 | | | |",
       [] { return extract_message(STP_MCEC_MTS_OPC_TYPE1_UPD, {}); }},
      {updated, "Invalid param len=0", "The length in the header is 0.", "40dd0003 | | | |",
       [=] { return update(1, 0, two, 0); }},
      {updated, "type-1 (*) param extractor", "The array has no entry.", "40dd0003 | | | |",
       [] { return update(1, 0, {}); }},
      {updated, "Failed (rc=0x40dd0003, *) to retrieve tlv",
       "An entry exceeds the length in the header; the entries before it are cached.",
       "40dd0003 | | cmd 0 count 2 | type 20 6,1,1,0 0,0,0,0 |",
       [=] { return update(1, 0, two, 4 + tlv_aligned_data_size_get(4)); }},
      {reported, "", "The array is NULL or has no entry.", "40dd0003 | ",
       [] { return report_on({}); }},
      {reported, "", "The array is NULL or has no entry.", "40dd0003 | ",
       [] { return report_on(array({})); }},
      {reported, "Type * - val = *",
       "The type of the entry after the one in the line is not 1 to 12. Without a line: of the "
       "first entry.",
       "40dd0003 | 3",
       [] {
         return report_on(array({{6, word(1)}, {13, word(1)}, {7, word(1)}}));
       }},
      {"`stp_mcec_type1_cfg_cache_rebuild`", "rebuilding type-1 cache", "The array is NULL.",
       "40dd0003", [] { return in_hex(stp_mcec_type1_cfg_cache_rebuild(nullptr, 0, 0)); }},
  };
}

std::vector<Cause> all_causes() {
  std::vector<Cause> causes;
  for (const auto &some : {causes_of_checks(), causes_of_commands(), causes_of_arrays()}) {
    causes.insert(causes.end(), some.begin(), some.end());
  }
  return causes;
}

struct Causes : Extract {};

TEST_F(Causes, ResultsAndLastLinesIdentifyCauses) {
  for (const Cause &cause : all_causes()) {
    SCOPED_TRACE(cause.cause);
    empty_cache();
    standin_history_clear();
    EXPECT_EQ(cause.act(), cause.outcome);
    const Lines lines = log();
    ASSERT_EQ(lines.empty(), *cause.line == '\0');
    const std::string pattern = std::string("stp_mcec_*: ") + cause.line;
    EXPECT_TRUE(lines.empty() || fnmatch(pattern.c_str(), lines.back().c_str(), 0) == 0)
        << lines.back();
  }
}

std::string row_of(const Cause &cause) {
  const std::pair<const char *, const char *> results[] = {
      {"40dd0001", "STP_MCEC_ERR_FAILURE"},
      {"40dd0003", "STP_MCEC_ERR_INVALID_ARG"},
      {"40dd003a", "STP_MCEC_ERR_TYPE1_PARAM_NULL"}};
  std::string result;
  for (const auto &[code, name] : results) {
    if (cause.outcome.starts_with(code)) result = name;
  }
  const std::string line = std::regex_replace(cause.line, std::regex("\\*"), "...");
  return "| `" + result + "` | " + cause.caller + " | " +
         (line.empty() ? "none" : "`" + line + "`") + " | " + cause.cause + " |\n";
}

TEST_F(Causes, GuideContainsTheTable) {
  std::string table = "| result | returned by | last line | cause |\n| --- | --- | --- | --- |\n";
  for (const Cause &cause : all_causes()) {
    const std::string row = row_of(cause);
    if (table.find(row) == table.npos) table += row;
  }
  const std::string guide = read_file(SOURCES "/../docs/causes.md");
  EXPECT_NE(guide.find("\n" + table), std::string::npos) << "docs/causes.md must contain\n"
                                                         << table;
}

// If this fails, add a row for the new path.
TEST_F(Causes, SourcesHaveNoOtherPaths) {
  std::string code;
  for (const auto &file : std::filesystem::recursive_directory_iterator(SOURCES)) {
    std::ifstream in(file.path());
    for (std::string line; std::getline(in, line);) code += line.substr(0, line.find("//")) + '\n';
  }
  const std::regex constant("STP_MCEC_ERR_(FAILURE|INVALID_ARG)\\b");
  const std::sregex_iterator paths(code.begin(), code.end(), constant);
  EXPECT_EQ(std::distance(paths, {}), 22);
}

}  // namespace
