// What the stand-in's sources share: failures on order, and the voice of a misuse.
#pragma once

#include <cstdint>

#include "standin.h"

namespace standin {

__attribute__((format(printf, 1, 2))) void misuse(const char *format, ...);

// Count a call; true when it is one that was told to fail.
bool fails(standin_operation_t operation);

// Each source puts back what it keeps.
void reset_history();
void reset_requests();
void reset_ports();

}  // namespace standin
