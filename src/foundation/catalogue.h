// The catalogue: the properties of the twelve type-1 parameters, as data.
#pragma once

#include <cstdint>
#include <span>

#include "draimiofaf/types.h"
#include "foundation/wire.h"

namespace mcec {

enum class Scope : uint8_t { GLOBAL, INTERFACE };

// The texts of a CHOICE: one for each known value, and one for every other word.
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
  const char *name;        // in log lines
  const char *title;       // in the report
  const Choices *choices;  // nullptr unless kind is CHOICE
};

constexpr bool is_word(stp_mcec_kind kind) {
  return kind <= STP_MCEC_KIND_FLAGS;
}

// Returns the parameters of a scope in ascending order of type.
std::span<const Parameter> parameters_of(Scope scope);

// Returns the parameter of a type, or nullptr if there is none.
const Parameter *find_parameter(uint32_t type);

// Returns the mismatch code of a type, or STP_MCEC_ERR_FAILURE if there is no such parameter.
uint32_t mismatch_of(uint32_t type);

// A value shorter than the test needs is not the default.
bool is_default(const Parameter &parameter, Bytes value);

const char *choice_text(const Parameter &parameter, uint32_t value);
const char *port_type_text(uint32_t flags);
const char *enabled_text(bool is_enabled);

}  // namespace mcec
