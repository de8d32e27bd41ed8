/*
 * Checks the contracts of a platform, and writes a line of TAP for each.
 *
 *   draimiofaf-platform-check              all contracts, each in a child process
 *   draimiofaf-platform-check CONTRACT     one contract, in this process, for a debugger
 */
#include <draimiofaf/platform/mtrack.h>
#include <draimiofaf/types.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "check.h"

enum { seconds_per_contract = 30 };

static const contract_t *const tables[] = {object_contracts, memory_contracts, history_contracts,
                                           tree_contracts,   array_contracts,  request_contracts,
                                           switch_contracts};
enum { table_count = sizeof tables / sizeof tables[0] };

/* --- helpers for contracts --- */

const platform_check_switch_t *the_switch;

static int reason_file = -1; /* of a child; -1: this process runs one contract itself */

_Noreturn void fail(const char *format, ...) {
  char reason[400];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(reason, sizeof reason, format, arguments);
  va_end(arguments);
  if (reason_file >= 0) {
    dprintf(reason_file, "%s", reason);
  } else {
    printf("# %s\n", reason);
    fflush(stdout);
  }
  _exit(1);
}

void *guarded_buffer(size_t size) {
  const size_t page = (size_t)sysconf(_SC_PAGESIZE);
  const size_t pages = (size + page - 1) / page;
  unsigned char *start =
      mmap(NULL, (pages + 1) * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED || mprotect(start + pages * page, page, PROT_NONE) != 0) {
    fail("out of memory in the check itself");
  }
  return start + pages * page - size;
}

uint8_t pattern_byte(size_t seed, size_t i) {
  return (uint8_t)(seed * 31 + i * 7 + i / 256 + 1);
}

void fill_pattern(void *buffer, size_t size, size_t seed) {
  uint8_t *bytes = buffer;
  for (size_t i = 0; i < size; ++i) bytes[i] = pattern_byte(seed, i);
}

int has_pattern(const void *buffer, size_t size, size_t seed) {
  const uint8_t *bytes = buffer;
  for (size_t i = 0; i < size; ++i) {
    if (bytes[i] != pattern_byte(seed, i)) return 0;
  }
  return 1;
}

/* --- execution --- */

static void set_up(void) {
  static const char *const mem_type_names[] = {
#define MEM_TYPE_NAME(name, number) "STP_MCEC_LIB_MEM_" #name,
      STP_MCEC_LIB_MEM_TYPES(MEM_TYPE_NAME)
#undef MEM_TYPE_NAME
  };
  /* Ports of every kind, with gaps between them. */
  static const platform_check_port_t ports[] = {
      {.if_index = 0x1000, .type = 22, .has_record = 1, .layer_mode = 2, .record = {1, 7}},
      {.if_index = 0x1001, .type = 26, .is_pod = 1, .has_record = 1, .record = {1, 0x10001}},
      {.if_index = 0x1002, .type = 28, .layer_mode = 1},
      {.if_index = 0x1008, .type = 1, .has_record = 1, .layer_mode = 2, .record = {0, 9}},
      {.if_index = 0x16000000, .type = 37, .layer_mode = 2},
  };
  static const platform_check_switch_t wanted = {.ports = ports,
                                                 .port_count = sizeof ports / sizeof ports[0],
                                                 .internal_channel = 9,
                                                 .other_channel = 7,
                                                 .first_user_vlan = 6,
                                                 .last_user_vlan = 17,
                                                 .has_trunk = 1,
                                                 .partition = 3};
  mtrack_init("STP MCEC Type-1 CFG LIB", STP_MCEC_LIB_SERVICE_ID, mem_type_names,
              STP_MCEC_LIB_MEM_MAX);
  the_switch = platform_check_set_up(&wanted);
  if (the_switch == NULL) fail("platform_check_set_up returned NULL");
}

/* Written by a child after a success, because the platform may also call exit. */
static const char kept[] = "kept";

static _Noreturn void run_in_child(const contract_t *contract, int file) {
  reason_file = file;
  alarm(seconds_per_contract);
  set_up();
  contract->verify();
  dprintf(file, "%s", kept);
  _exit(0);
}

/* Runs a contract and writes the reason of a failure, or "". */
static void run(const contract_t *contract, char *reason, size_t size) {
  int pipe_ends[2];
  fflush(stdout);
  const pid_t child = pipe(pipe_ends) == 0 ? fork() : -1;
  if (child < 0) {
    perror("draimiofaf-platform-check");
    exit(2);
  }
  if (child == 0) run_in_child(contract, pipe_ends[1]);
  close(pipe_ends[1]);
  size_t length = 0;
  for (ssize_t count; (count = read(pipe_ends[0], reason + length, size - 1 - length)) > 0;) {
    length += (size_t)count;
  }
  reason[length] = '\0';
  close(pipe_ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) {
    snprintf(reason, size, "no result after %d seconds", seconds_per_contract);
  } else if (WIFSIGNALED(status)) {
    snprintf(reason, size, "ended by signal %d (%s)", WTERMSIG(status),
             strsignal(WTERMSIG(status)));
  } else if (strcmp(reason, kept) == 0) {
    reason[0] = '\0';
  } else if (length == 0) {
    snprintf(reason, size, "the process ended with status %d", WEXITSTATUS(status));
  }
}

static const contract_t *find_contract(const char *name) {
  for (int table = 0; table < table_count; ++table) {
    for (const contract_t *each = tables[table]; each->name != NULL; ++each) {
      if (strcmp(each->name, name) == 0) return each;
    }
  }
  return NULL;
}

static const char *skip_reason(const contract_t *contract) {
  for (const platform_check_skip_t *skip = platform_check_skips; skip->contract != NULL; ++skip) {
    if (strcmp(skip->contract, contract->name) == 0) return skip->reason;
  }
  return NULL;
}

/* Runs all contracts and returns the number of failures. */
static int run_all(void) {
  int count = 0;
  int failures = 0;
  for (int table = 0; table < table_count; ++table) {
    for (const contract_t *each = tables[table]; each->name != NULL; ++each) {
      char reason[512] = "";
      const char *skip = skip_reason(each);
      if (skip == NULL) run(each, reason, sizeof reason);
      const int is_kept = reason[0] == '\0';
      printf("%s %d - %s: %s%s%s\n", is_kept ? "ok" : "not ok", ++count, each->name,
             each->statement, skip != NULL ? " # SKIP " : "", skip != NULL ? skip : "");
      if (!is_kept) printf("# %s\n", reason);
      failures += !is_kept;
    }
  }
  printf("1..%d\n", count);
  return failures;
}

int main(int argc, char **argv) {
  const contract_t *only = argc == 2 ? find_contract(argv[1]) : NULL;
  if (only == NULL && argc > 1) {
    fprintf(stderr, "usage: %s [CONTRACT]\n", argv[0]);
    return 2;
  }
  if (only != NULL) {
    set_up();
    only->verify();
    printf("# %s is kept\n", only->name);
    return 0;
  }
  puts("TAP version 13");
  for (const platform_check_skip_t *skip = platform_check_skips; skip->contract != NULL; ++skip) {
    if (find_contract(skip->contract) != NULL) continue;
    printf("Bail out! unknown contract in platform_check_skips: %s\n", skip->contract);
    return 2;
  }
  return run_all() == 0 ? 0 : 1;
}
