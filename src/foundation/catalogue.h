// The catalogue: all that the library knows about each of the twelve type-1 parameters, as data.
#pragma once

#include <cstdint>
#include <span>

#include "draimiofaf/types.h"
#include "foundation/wire.h"

namespace mcec {

enum class Scope : uint8_t { GLOBAL, INTERFACE };

// The texts of a CHOICE: of its values, and of every other word.
struct Choices {
  struct Text {
    uint32_t value;
    const char *text;
  };
  uint16_t type;
  std::span<const Text> texts;
  const char *other;
};

struct Parameter {
  uint16_t type;
  Scope scope;
  uint16_t length;
  uint32_t mismatch;
  stp_mcec_kind kind;
  uint32_t default_word;
  stp_mcec_compared compared;
  bool is_compared_on_pod;
  const char *name;        // of log lines
  const char *title;       // of the report
  const Choices *choices;  // of a CHOICE
};

constexpr bool is_word(stp_mcec_kind kind) {
  return kind <= STP_MCEC_KIND_FLAGS;
}

// The parameters of a scope in the order of their types.
std::span<const Parameter> parameters_of(Scope scope);

// The parameter of a type, nullptr when there is none.
const Parameter *find_parameter(uint32_t type);

// The mismatch code of a type, STP_MCEC_ERR_FAILURE when there is no such parameter.
uint32_t mismatch_of(uint32_t type);

// A value that is shorter than what the test reads is not the default.
bool is_default(const Parameter &parameter, Bytes value);

const char *choice_text(const Parameter &parameter, uint32_t value);
const char *port_type_text(uint32_t flags);
const char *enabled_text(bool is_enabled);

}  // namespace mcec
