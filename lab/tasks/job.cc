#include <memory>
#include <utility>

#include "pair/fields.h"
#include "switch/state_file.h"
#include "tasks/pool.h"
#include "text/file.h"

namespace lab {

LAB_FIELDS(InputError, it.line, it.column, it.where, it.found, it.expected)
LAB_FIELDS(Change, it.table, it.key, it.field, it.value)

LAB_FIELDS(PatchOperation, it.op, it.path, it.value)
LAB_FIELDS(VlanGroup, it.vlans, it.words)

// `field` points into a table: its index is encoded.
template <class Archive>
void serialize(Archive &archive, Fix &it) {
  std::ptrdiff_t field = it.field != nullptr ? it.field - fields().data() : -1;
  archive(it.kind, it.type, it.channel, field, it.alone, it.both, it.values, it.groups);
  it.field = field >= 0 ? &fields()[std::size_t(field)] : nullptr;
}

LAB_FIELDS(Acceptance, it.reason, it.until)
LAB_FIELDS(FixReport, it.fix, it.alone, it.both)
LAB_FIELDS(ParameterReport, it.type, it.values, it.states, it.digests, it.fix, it.accepted)
LAB_FIELDS(ScopeReport, it.scope, it.on_pod, it.codes, it.parameters, it.inconsistent, it.pass,
           it.fail, it.missing_row, it.accepted)
LAB_FIELDS(NoteField, it.name, it.values, it.vlans)
LAB_FIELDS(Note, it.kind, it.channel, it.side, it.vlans, it.fields, it.accepted, it.problem,
           it.line, it.until)
LAB_FIELDS(SideReport, it.source, it.name, it.spanning_tree, it.modified)
LAB_FIELDS(IncompleteReport, it.reason, it.accepted)
LAB_FIELDS(PairReport, it.name, it.is_intended, it.is_strict, it.sides, it.twin_vlans, it.checks,
           it.incomplete, it.notes, it.matched)
LAB_FIELDS(AcceptEntry, it.line, it.kind, it.scope, it.pair, it.acceptance, it.type, it.values,
           it.note, it.incomplete)
LAB_FIELDS(CompareOptions, it.name, it.is_intended, it.is_strict, it.accept)
LAB_FIELDS(Source, it.label, it.place, it.name_space)  // enough for a file
LAB_FIELDS(Contents, it.has_rows, it.text)
LAB_FIELDS(SideJob, it.source, it.contents, it.errors, it.is_watched)
LAB_FIELDS(CompareJob, it.sides, it.options)
LAB_FIELDS(SideAnswer, it.errors, it.unreadable, it.contents)
LAB_FIELDS(CompareAnswer, it.problem, it.sides, it.report)

namespace {

Side load_side(SideJob &job, SideAnswer &answer) {
  Side side;
  if (job.contents != nullptr || !job.errors.empty()) {
    side = convert_rows(job.source, {unpack(job.contents), std::move(job.errors)});
  } else {
    std::string bytes;
    if (job.is_watched) {
      answer.unreadable = read_regular_file(job.source.place, bytes);
    } else {
      bytes = read_file(job.source.place, answer.errors);
    }
    if (!answer.unreadable.empty() || !answer.errors.empty()) return side;
    side = parse_side(job.source, bytes, Format::by_content);
  }
  answer.errors = side.errors;
  const bool has_contents = side.errors.empty() || (side.rows && !side.rows->empty());
  if (job.is_watched && has_contents) {
    answer.contents = side.rows
                          ? pack(*side.rows)
                          : std::make_shared<Contents>(Contents{false, write_state(side.settings)});
  }
  return side;
}

// Throws SwitchFailed and Interrupted.
CompareAnswer execute_job(CompareJob job, Pair &pair) {
  CompareAnswer answer;
  Sides sides;
  bool can_compare = true;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    if (job.sides[i]) sides[i] = load_side(*job.sides[i], answer.sides[i]);
    can_compare = can_compare && job.sides[i] && answer.sides[i].unreadable.empty() &&
                  answer.sides[i].errors.empty();
  }
  if (can_compare) answer.report = compare(pair, sides, job.options);
  return answer;
}

// Retries the job with a new pair of processes if a switch process dies.
CompareAnswer execute_with_retries(const CompareJob &job, std::unique_ptr<Pair> &pair) {
  for (int attempt = 1;; ++attempt) {
    try {
      if (pair == nullptr) pair = std::make_unique<Pair>();
      return execute_job(job, *pair);
    } catch (const SwitchFailed &failure) {
      pair.reset();
      if (attempt == max_attempts) return {.problem = failure.what()};
    } catch (const std::bad_alloc &) {
      pair.reset();  // it may still send an answer to this job
      return {.problem = "out of memory"};
    } catch (const std::exception &problem) {
      pair.reset();
      return {.problem = printable(problem.what())};
    }
  }
}

}  // namespace

Bytes encode_job(const CompareJob &job) {
  return encode_record(job);
}

CompareAnswer decode_answer(const Bytes &frame) {
  return decode_record<CompareAnswer>(frame);
}

int serve_jobs() {
  std::unique_ptr<Pair> pair;
  while (const std::optional<Bytes> frame = read_frame(job_file)) {
    const CompareAnswer answer = execute_with_retries(decode_record<CompareJob>(*frame), pair);
    if (!write_frame(job_file, encode_record(answer))) return 1;
  }
  return 0;
}

}  // namespace lab
