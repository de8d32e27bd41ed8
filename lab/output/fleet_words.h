// The words for the verdicts of watched pairs.
#pragma once

#include <optional>

#include "output/words.h"

namespace lab {

// What needs a look first; nothing: not known.
inline constexpr std::optional<Outcome> all_outcomes[] = {Outcome::disagree, std::nullopt,
                                                          Outcome::incomplete, Outcome::agree};

inline const char *outcome_word(std::optional<Outcome> outcome) {
  return outcome ? outcome_name(*outcome) : "unknown";
}

}  // namespace lab
