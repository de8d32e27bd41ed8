/* Shared by the sources of the check. */
#ifndef DRAIMIOFAF_CHECK_H
#define DRAIMIOFAF_CHECK_H

#include "platform_check.h"

typedef struct contract {
  const char *name; /* NULL: the end of a table */
  const char *statement;
  void (*verify)(void); /* returns if the platform keeps the contract */
} contract_t;

/* The contracts of one or a few headers each. */
extern const contract_t object_contracts[];
extern const contract_t memory_contracts[];
extern const contract_t history_contracts[];
extern const contract_t tree_contracts[];
extern const contract_t array_contracts[];
extern const contract_t request_contracts[];
extern const contract_t switch_contracts[];

/* The switch under test. */
extern const platform_check_switch_t *the_switch;

/* Fails the current contract with a reason. */
_Noreturn void fail(const char *format, ...) __attribute__((format(printf, 1, 2)));

#define REQUIRE(condition, ...) ((condition) ? (void)0 : fail(__VA_ARGS__))

/* Returns a buffer of zeros followed by an inaccessible page: an access after its end crashes the
 * process. */
void *guarded_buffer(size_t size);

/* Returns byte i of a pattern. */
uint8_t pattern_byte(size_t seed, size_t i);
void fill_pattern(void *buffer, size_t size, size_t seed);
int has_pattern(const void *buffer, size_t size, size_t seed);

#endif
