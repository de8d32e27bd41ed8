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

LAB_FIELDS(PatchOperation, it.op, it.path, it.value)
LAB_FIELDS(VlanGroup, it.vlans, it.words)

// The field is a row of a table: its position travels.
template <class Archive>
void serialize(Archive &archive, Fix &it) {
  std::ptrdiff_t field = it.field != nullptr ? it.field - fields().data() : -1;
  archive(it.kind, it.type, it.channel, field, it.alone, it.both, it.values, it.groups);
  it.field = field >= 0 ? &fields()[std::size_t(field)] : nullptr;
}

LAB_FIELDS(Acceptance, it.reason, it.until)
LAB_FIELDS(FixReport, it.fix, it.alone, it.both)
LAB_FIELDS(ParameterReport, it.type, it.values, it.states, it.digests, it.fix, it.accepted)
LAB_FIELDS(InconsistentPort, it.name, it.types)
LAB_FIELDS(ScopeReport, it.scope, it.on_pod, it.codes, it.parameters, it.inconsistent, it.pass,
           it.fail, it.missing_row, it.accepted)
LAB_FIELDS(NoteField, it.name, it.values, it.vlans)
LAB_FIELDS(Note, it.kind, it.channel, it.side, it.vlans, it.fields)
LAB_FIELDS(SideReport, it.source, it.name, it.spanning_tree, it.modified)
LAB_FIELDS(IncompleteReport, it.reason, it.accepted)
LAB_FIELDS(NoteReport, it.note, it.accepted, it.problem, it.line, it.until)
LAB_FIELDS(PairReport, it.name, it.is_one_of_many, it.is_intended, it.is_strict, it.sides,
           it.twin_vlans, it.checks, it.incomplete, it.notes)
LAB_FIELDS(PairResult, it.name, it.errors, it.report, it.matched)

std::string encode_result(const PairResult &result) {
  std::ostringstream stream;
  cereal::BinaryOutputArchive archive(stream);
  archive(result);
  return std::move(stream).str();
}

std::optional<PairResult> decode_result(const std::string &bytes) {
  try {
    std::istringstream stream(bytes);
    cereal::BinaryInputArchive archive(stream);
    PairResult result;
    archive(result);
    return result;
  } catch (const std::exception &) {
    return std::nullopt;
  }
}

}  // namespace lab
