// What the stand-in's sources share: injected failures, and the report of a misuse.
#pragma once

#include <cstdint>

#include "standin.h"

namespace standin {

__attribute__((format(printf, 1, 2))) void misuse(const char *format, ...);

// Count a call; true when it is one that must fail.
bool fails(standin_operation_t operation);

// Each source puts back what it keeps.
void reset_history();
void reset_requests();
void reset_ports();

}  // namespace standin
