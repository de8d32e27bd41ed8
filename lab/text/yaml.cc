#include "text/yaml.h"

#include <fmt/core.h>
#include <yaml-cpp/eventhandler.h>

#include <algorithm>
#include <array>
#include <set>
#include <sstream>
#include <tuple>

namespace lab {
namespace {

std::string describe(const YAML::Node &node) {
  if (!node.IsDefined() || node.IsNull()) return "nothing";
  if (node.IsMap()) return "a mapping";
  if (node.IsSequence()) return "a list";
  return "'" + scalar_text(node) + "'";
}

// Returns a key of a mapping as text, and a description of a key that is not a scalar.
std::string key_text(const YAML::Node &key) {
  return key.IsScalar() ? key.Scalar() : describe(key);
}

// Detects the key '2' without a value in "{vlans: 1,2}".
bool is_split_list(const std::string &key, const YAML::Node &value) {
  return value.IsNull() && parse_ranges(key, UINT32_MAX).fault == RangeError::none;
}

constexpr char no_merge_keys[] =
    "the keys themselves, or an alias for the whole mapping: merge keys are not supported";

// Records where a document begins.
struct DocumentStart : YAML::EventHandler {
  using Style = YAML::EmitterStyle::value;
  YAML::Mark mark = YAML::Mark::null_mark();

  void OnDocumentStart(const YAML::Mark &at) override { mark = at; }
  void OnDocumentEnd() override {}
  void OnNull(const YAML::Mark &, YAML::anchor_t) override {}
  void OnAlias(const YAML::Mark &, YAML::anchor_t) override {}
  void OnScalar(const YAML::Mark &, const std::string &, YAML::anchor_t,
                const std::string &) override {}
  void OnSequenceStart(const YAML::Mark &, const std::string &, YAML::anchor_t, Style) override {}
  void OnSequenceEnd() override {}
  void OnMapStart(const YAML::Mark &, const std::string &, YAML::anchor_t, Style) override {}
  void OnMapEnd() override {}
};

// Finds the first two documents of a text. YAML::LoadAll never returns for a text with a comma
// outside of all lists: it finds empty documents without end.
std::array<DocumentStart, 2> find_documents(const std::string &text) {
  std::istringstream stream(text);
  YAML::Parser parser(stream);
  std::array<DocumentStart, 2> starts;
  if (parser.HandleNextDocument(starts[0])) parser.HandleNextDocument(starts[1]);
  return starts;
}

// Describes a syntax error. Omits the text after a colon: there the parser quotes the file, which
// may contain secrets.
InputError syntax_error(const std::string &text, const YAML::Exception &problem,
                        const std::string &what) {
  const YAML::Mark &mark = problem.mark;
  InputError error{std::max(mark.line, 0) + 1, std::max(mark.column, 0) + 1, "",
                   "invalid YAML: " + problem.msg.substr(0, problem.msg.find(':')),
                   what + " in YAML"};
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line) && number <= error.line; ++number) {
    const std::size_t indent = line.find_first_not_of(" \t");
    const std::size_t tab = line.find('\t');
    if (tab != line.npos && (indent == line.npos || tab < indent) && number + 1 >= error.line) {
      return {number, int(tab) + 1, "", "found a tab in the indentation", "spaces"};
    }
  }
  return error;
}

}  // namespace

std::string scalar_text(const YAML::Node &node) {
  return node.IsScalar() ? printable(node.Scalar()) : "";
}

void Reader::add_error(const YAML::Node &node, const std::string &found,
                       const std::string &expected) {
  const YAML::Mark mark = node.IsDefined() ? node.Mark() : YAML::Mark::null_mark();
  errors.push_back({std::max(mark.line, 0) + 1, std::max(mark.column, 0) + 1, "", found, expected});
}

void Reader::expected(const YAML::Node &node, const std::string &what) {
  add_error(node, "found " + describe(node), what);
}

bool Reader::entries(const YAML::Node &node, const std::string &what,
                     const std::function<void(const YAML::Node &, const YAML::Node &)> &each) {
  if (!node.IsMap()) {
    expected(node, what);
    return false;
  }
  std::set<std::string> seen;
  for (const auto &pair : node) {
    const std::string key = key_text(pair.first);
    if (!seen.insert(key).second) {
      add_error(pair.first, "found '" + printable(key) + "' twice", "each key once");
    } else if (key == "<<") {
      add_error(pair.first, "found '<<'", no_merge_keys);
    } else if (is_split_list(key, pair.second) && seen.size() > 1) {
      add_error(pair.first, "found '" + printable(key) + "' after a comma",
                "a list of numbers in quotation marks: \"1,2\"");
    } else {
      each(pair.first, pair.second);
    }
  }
  return true;
}

bool Reader::mapping(const YAML::Node &node, const std::string &what,
                     const std::vector<std::string> &allowed) {
  return entries(node, what + ", a mapping with " + one_of(allowed),
                 [&](const YAML::Node &key, const YAML::Node &) {
                   const std::string given = key_text(key);
                   if (std::find(allowed.begin(), allowed.end(), given) != allowed.end()) return;
                   add_error(key, "unknown key '" + printable(given) + "' in " + what,
                             one_of(allowed, given));
                 });
}

bool Reader::required(const YAML::Node &node, const char *key, const std::string &what) {
  if (node[key].IsDefined()) return true;
  add_error(node, "missing key '" + std::string(key) + "' in " + what);
  return false;
}

bool Reader::sequence(const YAML::Node &node, const std::string &what) {
  if (node.IsSequence()) return true;
  expected(node, what);
  return false;
}

std::string Reader::text(const YAML::Node &node, const std::string &what) {
  if (node.IsScalar()) return printable_lines(node.Scalar());
  expected(node, what);
  return "";
}

std::string Reader::name(const YAML::Node &node, const std::string &what) {
  const std::string text = verbatim(node, what);
  if (!has_controls(text)) return text;
  expected(node, what + " without control characters");
  return printable(text);
}

std::string Reader::verbatim(const YAML::Node &node, const std::string &what) {
  if (node.IsScalar() && is_utf8(node.Scalar())) return node.Scalar();
  expected(node, what + (node.IsScalar() ? " in UTF-8" : ""));
  return "";
}

bool Reader::boolean(const YAML::Node &node, const std::string &what) {
  bool value = false;
  if (!node.IsScalar() || !YAML::convert<bool>::decode(node, value)) {
    expected(node, what + ": true or false");
  }
  return value;
}

uint32_t Reader::number(const YAML::Node &node, const std::string &what, uint32_t min,
                        uint32_t max) {
  const auto value = node.IsScalar() ? parse_number(node.Scalar()) : std::nullopt;
  if (value && *value >= min && *value <= max) return *value;
  expected(node, what + ": a number from " + std::to_string(min) + " to " + std::to_string(max) +
                     " (decimal, or 0x...)");
  return min;
}

uint32_t Reader::word(const YAML::Node &node, const std::string &what, const Words &words,
                      bool numbers) {
  const std::string given = node.IsScalar() ? node.Scalar() : "";
  const std::string key = key_of(given);
  const std::string suffix = "-port";  // "edge" for "edge-port", and the other way round
  const std::string stem = key.substr(0, key.size() - (key.ends_with(suffix) ? suffix.size() : 0));
  for (const std::string &spelling : {given, key, key + suffix, stem}) {
    if (const auto known = words.find(spelling); known != words.end()) return known->second;
  }
  if (numbers) {
    if (const auto value = parse_number(given)) return *value;
  }
  std::vector<std::string> keys;
  for (const auto &[known, value] : words) keys.push_back(known);
  expected(node, what + ": " + one_of(keys, given) + (numbers ? ", or a number" : ""));
  return 0;
}

Ranges Reader::ranges(const YAML::Node &node, const std::string &what, uint32_t max,
                      const std::string &example) {
  ParsedRanges parsed{{}, RangeError::not_a_list};
  if (node.IsScalar()) parsed = parse_ranges(node.Scalar(), max);
  const bool is_reversed = parsed.fault == RangeError::reversed;
  if (parsed.fault != RangeError::none) {
    expected(node, what + (is_reversed ? ": each range from the lower number to the higher" : "") +
                       ", for instance " + example);
  }
  return parsed.ranges;
}

Bytes Reader::bytes(const YAML::Node &node, const std::string &what) {
  std::string digits = node.IsScalar() ? node.Scalar() : "x";
  digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
  const bool valid = digits.size() % 2 == 0 && digits.size() / 2 <= UINT16_MAX &&
                     digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
  if (!valid) expected(node, what + ": bytes in hexadecimal, for instance 00 00 00 05");
  return valid ? unhex(digits) : Bytes{};
}

void read_yaml(const std::string &text, const std::string &what, Reader &reader,
               const std::function<void(const YAML::Node &)> &read, YamlRoot expected) {
  try {
    const auto [first, second] = find_documents(text);
    if (first.mark.is_null()) {
      reader.errors.push_back({1, 1, "", "the file is empty", what + " in YAML"});
    } else {
      const YAML::Node root = YAML::Load(text);
      const bool is_list = expected == YamlRoot::list;
      if (is_list ? root.IsSequence() : root.IsMap()) {
        read(root);
      } else {
        // Do not quote the contents of a wrong file: they may be secret.
        const std::string wanted = is_list ? "list" : "mapping";
        const bool is_scalar = !root.IsSequence() && !root.IsMap();
        reader.add_error(root, "found " + (is_scalar ? "no " + wanted : describe(root)),
                         what + ", a " + wanted);
      }
    }
    if (!second.mark.is_null()) {
      reader.errors.push_back({second.mark.line + 1, second.mark.column + 1, "",
                               "found a second document", "one document"});
    }
  } catch (const YAML::Exception &problem) {
    reader.errors.push_back(syntax_error(text, problem, what));
  }
}

// Quotes the text, as YAML parses some unquoted texts as numbers, booleans or null. Escapes
// characters that are not printable.
std::string yaml_text(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const std::string_view character = first_character(text);
    if (printable(character) != character) {
      out += fmt::format("\\u{:04x}", code_point(character));
    } else {
      if (character == "\"" || character == "\\") out += '\\';
      out += character;
    }
    text.remove_prefix(character.size());
  }
  return out + '"';
}

void sort_errors(InputErrors &errors) {
  std::stable_sort(errors.begin(), errors.end(),
                   [](const InputError &a, const InputError &b) { return a.line < b.line; });
  std::set<std::tuple<int, int, std::string, std::string, std::string>> seen;
  std::erase_if(errors, [&seen](const InputError &error) {
    return !seen.emplace(error.line, error.column, error.where, error.found, error.expected).second;
  });
}

}  // namespace lab
