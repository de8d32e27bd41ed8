// Dumps: reading one; the notes and fixes of two.

#include "texts.h"

namespace {

struct Dump {
  lab::Rows rows;
  lab::ReadSettings read;
};

Dump read_json(std::string_view json) {
  lab::ReadRows read = lab::read_dump(json);
  lab::ReadSettings settings = lab::interpret_rows(read.rows, read.errors);
  must(settings.errors.size() >= read.errors.size(), "interpret_rows keeps the errors of the rows");
  check_errors(settings.errors, json);
  return {std::move(read.rows), std::move(settings)};
}

}  // namespace

// The input is a dump, or two with an empty line between them.
void check_text(std::string_view all) {
  const std::size_t middle = all.find("\n\n");
  const Dump left = read_json(all.substr(0, middle));
  if (left.read.errors.empty()) write_and_read(left.read.settings);
  if (middle == all.npos) return;
  const Dump right = read_json(all.substr(middle + 2));
  if (!left.read.errors.empty() || !right.read.errors.empty()) return;

  const lab::SettingsPairView pair = {&left.read.settings, &right.read.settings};
  for (const lab::Note &note : lab::find_notes(pair, false)) {
    const std::string text = lab::describe_note(note);
    must(!text.empty() && lab::printable(text) == text, "a note has a printable text");
  }
  std::vector<std::string> scopes = {""};
  for (const lab::Channel &channel : left.read.settings.channels) scopes.push_back(channel.name);
  for (const std::string &scope : scopes) {
    for (uint16_t type = 1; type <= 12; ++type) {
      const lab::Fix fix = lab::find_fix(pair, {&left.rows, &right.rows}, scope, type);
      for (std::size_t i = 0; i < fix.alone.size(); ++i) {
        if (!fix.alone[i]) continue;
        const lab::Rows &rows = i == 0 ? left.rows : right.rows;
        must(lab::interpret_rows(lab::apply_changes(rows, *fix.alone[i])).errors.empty(),
             "patched rows can be read");
        must(lab::format_patch(lab::make_patch(rows, *fix.alone[i])).starts_with("["),
             "a patch is a list");
      }
    }
  }
}
