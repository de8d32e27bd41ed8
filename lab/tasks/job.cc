#include "tasks/job.h"

#include <utility>

#include "pair/fields.h"
#include "switch/state_file.h"
#include "text/file.h"

namespace lab {

LAB_FIELDS(InputError, it.line, it.column, it.where, it.found, it.expected)
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
LAB_FIELDS(Comparison, it.report, it.matched)
LAB_FIELDS(CompareOptions, it.name, it.is_one_of_many, it.is_intended, it.is_strict)
LAB_FIELDS(SideJob, it.source, it.rows, it.errors, it.path, it.name_space, it.is_watched)
LAB_FIELDS(AcceptEntry, it.line, it.kind, it.scope, it.pair, it.acceptance, it.type, it.values,
           it.note, it.incomplete)
LAB_FIELDS(CompareJob, it.sides, it.options, it.accept)
LAB_FIELDS(FileContents, it.lost, it.rows, it.state)
LAB_FIELDS(CompareAnswer, it.problem, it.files, it.errors, it.comparison)

namespace {

// What a job finds out about a side, for the answer and for the comparison.
Side read_job_side(const SideJob &job, FileContents &contents, InputErrors &errors) {
  Side side{.source = job.source, .settings = {}, .rows = {}, .modified = {}};
  if (job.rows) {
    ReadSettings read = settings_of(*job.rows, job.errors);
    errors = std::move(read.errors);
    side.settings = std::move(read.settings);
    side.rows = job.rows;
    return side;
  }
  std::string bytes;
  if (job.is_watched) {
    contents.lost = read_regular_file(job.path, bytes);
    if (!contents.lost.empty()) return side;
  } else {
    bytes = read_file(job.path, errors);
    if (!errors.empty()) return side;
  }
  side.modified = find_modified(job.path);
  ReadText text = read_text(bytes, Format::by_content, job.name_space);
  errors = std::move(text.errors);
  side.settings = std::move(text.settings);
  side.rows = std::move(text.rows);
  if (!job.is_watched) return side;
  contents.rows = side.rows;
  if (!side.rows && errors.empty()) contents.state = write_state(side.settings);
  return side;
}

}  // namespace

Bytes encode(const CompareJob &job) {
  return encode_record(job);
}

Bytes encode(const CompareAnswer &answer) {
  return encode_record(answer);
}

CompareJob decode_job(const Bytes &frame) {
  return decode_record<CompareJob>(frame);
}

CompareAnswer decode_answer(const Bytes &frame) {
  return decode_record<CompareAnswer>(frame);
}

CompareAnswer perform(const CompareJob &job, Pair &pair) {
  CompareAnswer answer;
  Sides sides;
  bool can_compare = true;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    if (job.sides[i]) sides[i] = read_job_side(*job.sides[i], answer.files[i], answer.errors[i]);
    can_compare =
        can_compare && job.sides[i] && answer.files[i].lost.empty() && answer.errors[i].empty();
  }
  if (!can_compare) return answer;
  CompareOptions options = job.options;
  options.accept = &job.accept;
  answer.comparison = compare(pair, sides, options);
  return answer;
}

}  // namespace lab
