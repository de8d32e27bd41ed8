// Dumps: their settings, or their errors; of two the notes and the fixes.

#include "texts.h"

namespace {

struct Read {
  lab::Rows rows;
  lab::ReadSettings is;
};

Read read(std::string_view json) {
  lab::ReadRows read = lab::read_dump(json);
  lab::ReadSettings settings = lab::settings_of(read.rows, read.errors);
  must(settings.errors.size() >= read.errors.size(), "no error is lost");
  check_errors(settings.errors, json);
  return {std::move(read.rows), std::move(settings)};
}

}  // namespace

// A dump, or two with an empty line between them.
void check_text(std::string_view all) {
  const std::size_t middle = all.find("\n\n");
  const Read left = read(all.substr(0, middle));
  if (left.is.errors.empty()) write_and_read(left.is.settings);
  if (middle == all.npos) return;
  const Read right = read(all.substr(middle + 2));
  if (!left.is.errors.empty() || !right.is.errors.empty()) return;

  const lab::PairOfSettings pair = {&left.is.settings, &right.is.settings};
  for (const lab::Note &note : lab::find_notes(pair, false)) {
    const std::string text = lab::describe_note(note);
    must(!text.empty() && lab::printable(text) == text, "a note has a text");
  }
  std::vector<std::string> scopes = {""};
  for (const lab::Channel &channel : left.is.settings.channels) scopes.push_back(channel.name);
  for (const std::string &scope : scopes) {
    for (uint16_t type = 1; type <= 12; ++type) {
      const lab::Fix fix = lab::find_fix(pair, {&left.rows, &right.rows}, scope, type);
      for (std::size_t i = 0; i < fix.alone.size(); ++i) {
        if (!fix.alone[i]) continue;
        const lab::Rows &rows = i == 0 ? left.rows : right.rows;
        must(lab::settings_of(lab::apply_changes(rows, *fix.alone[i])).errors.empty(),
             "what is patched can be read again");
        must(lab::format_patch(lab::make_patch(rows, *fix.alone[i])).starts_with("["),
             "a fix is a patch");
      }
    }
  }
}
