// What dumps and state files may hold: from their bytes to what is written of them, and to a pair.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "outcome/cure.h"
#include "read/rows.h"
#include "read/state_writer.h"
#include "read/switch.h"
#include "settings/pairing.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

// What is written can be read again, and says the same.
void write_and_read(const lab::Settings &settings) {
  const lab::ReadSettings again = lab::read_state(lab::state_file(settings));
  require(again.mistakes.empty() && again.settings == settings);
}

struct Read {
  lab::Rows rows;
  lab::ReadSettings is;
};

Read read(std::string_view json) {
  lab::ReadRows read = lab::read_dump(json);
  lab::ReadSettings settings = lab::settings_of(read.rows, read.mistakes);
  for (const lab::Mistake &mistake : settings.mistakes) require(!mistake.found.empty());
  return {std::move(read.rows), std::move(settings)};
}

}  // namespace

// Two dumps with an empty line between them, or a state file.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string_view all(reinterpret_cast<const char *>(data), size);
  const std::size_t middle = all.find("\n\n");
  const Read left = read(all.substr(0, middle));
  if (!left.is.mistakes.empty()) {
    const lab::ReadSettings state = lab::read_state(std::string(all));
    if (state.mistakes.empty()) write_and_read(state.settings);
    return 0;
  }
  write_and_read(left.is.settings);
  if (middle == all.npos) return 0;
  const Read right = read(all.substr(middle + 2));
  if (!right.is.mistakes.empty()) return 0;

  const lab::PairOfSettings pair = {&left.is.settings, &right.is.settings};
  require(!lab::notes_of(pair).empty());
  std::vector<std::string> scopes = {""};
  for (const lab::Channel &channel : left.is.settings.channels) scopes.push_back(channel.name);
  for (const std::string &scope : scopes) {
    for (uint16_t type = 1; type <= 12; ++type) {
      const lab::Cure cure = lab::cure_of(pair, {&left.rows, &right.rows}, scope, type);
      if (!cure.alone[0]) continue;
      // Whatever is changed can be read again.
      const lab::Rows after = lab::changed(left.rows, *cure.alone[0]);
      require(lab::settings_of(after).mistakes.empty());
      require(lab::patch_of(left.rows, *cure.alone[0]).is_array());
    }
  }
  return 0;
}
