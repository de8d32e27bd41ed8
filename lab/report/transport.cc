#include "report/transport.h"

#include <sstream>

#include "pair/fields.h"

namespace lab {

LAB_FIELDS(InputError, it.line, it.column, it.where, it.found, it.expected)
LAB_FIELDS(SourceErrors, it.source, it.errors)
LAB_FIELDS(PairScope::Member, it.port, it.name)
LAB_FIELDS(PairScope::End, it.present, it.port, it.port_name, it.others)
LAB_FIELDS(PairScope, it.kind, it.name, it.ends)
LAB_FIELDS(Change, it.table, it.key, it.field, it.value)
LAB_FIELDS(Fix, it.alone, it.both, it.text)

template <class Archive>
void save(Archive &archive, const FixReport &it) {
  archive(it.fix);
  for (const auto &patch : it.alone) archive(patch ? patch->dump() : "");
  for (std::size_t i = 0; i < 2; ++i) archive(it.both ? (*it.both)[i].dump() : "");
}

template <class Archive>
void load(Archive &archive, FixReport &it) {
  archive(it.fix);
  std::array<std::string, 4> texts;
  for (std::string &text : texts) archive(text);
  for (std::size_t i = 0; i < 2; ++i) {
    if (!texts[i].empty()) it.alone[i] = Patch::parse(texts[i]);
  }
  if (!texts[2].empty()) it.both = {Patch::parse(texts[2]), Patch::parse(texts[3])};
}

LAB_FIELDS(ParameterReport, it.type, it.values, it.states, it.digests, it.fix)
LAB_FIELDS(InconsistentPort, it.name, it.types)
LAB_FIELDS(ScopeReport, it.scope, it.on_pod, it.codes, it.parameters, it.inconsistent, it.pass,
           it.fail)
LAB_FIELDS(SideReport, it.source, it.name, it.spanning_tree)
LAB_FIELDS(PairReport, it.sides, it.twin_vlans, it.checks, it.notes)
LAB_FIELDS(PairResult, it.name, it.errors, it.report)

Bytes encode_result(const PairResult &result) {
  std::ostringstream stream;
  cereal::BinaryOutputArchive archive(stream);
  archive(result);
  const std::string text = std::move(stream).str();
  return {text.begin(), text.end()};
}

std::optional<PairResult> decode_result(const Bytes &bytes) {
  try {
    std::istringstream stream({bytes.begin(), bytes.end()});
    cereal::BinaryInputArchive archive(stream);
    PairResult result;
    archive(result);
    return result;
  } catch (const std::exception &) {
    return std::nullopt;
  }
}

}  // namespace lab
