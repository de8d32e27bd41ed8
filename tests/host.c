/*
 * A host process in C that is not position-independent. It uses the exported globals and functions
 * of the library directly, and defines some operations of the platform. Exits with 0 if loading,
 * use and unloading succeed.
 */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "avl.h"
#include "draimiofaf/cache.h"
#include "draimiofaf/foundation.h"
#include "mtrack.h"

enum { service = 633, wrong = 1 };

static int steps; /* 1 registered, 2 tree created, 3 used, 4 tree released */

static void step(int number, int is_correct) {
  if (steps == number - 1 && is_correct) {
    steps = number;
  } else {
    fprintf(stderr, "step %d failed\n", number);
    _exit(wrong);
  }
}

static void *next(const char *name) {
  return dlsym(RTLD_NEXT, name);
}

#define EXPORTED __attribute__((visibility("default")))

EXPORTED void mtrack_init(const char *lib_name, uint32_t service_id,
                          const char *const *mem_type_names, uint32_t count) {
  void (*standin)(const char *, uint32_t, const char *const *, uint32_t);
  *(void **)&standin = next("mtrack_init");
  standin(lib_name, service_id, mem_type_names, count);
  step(1, strcmp(lib_name, "STP MCEC Type-1 CFG LIB") == 0 && service_id == service &&
              count == 21 && strcmp(mem_type_names[0], "STP_MCEC_LIB_MEM_NONE") == 0);
}

EXPORTED avl_tree_t *avl_create(int (*compare)(const void *, const void *), uint32_t flags) {
  avl_tree_t *(*standin)(int (*)(const void *, const void *), uint32_t);
  *(void **)&standin = next("avl_create");
  step(2, compare == stp_mcec_type1_cfg_avl_cmp_func && flags == 0);
  return standin(compare, flags);
}

EXPORTED void avl_destroy(avl_tree_t *tree, void (*release)(void *)) {
  void (*standin)(avl_tree_t *, void (*)(void *));
  *(void **)&standin = next("avl_destroy");
  step(4, tree == stp_mcec_type1_cfg_avl && release == stp_mcec_type1_cfg_avl_free);
  standin(tree, release);
}

EXPORTED void mtrack_uninit(uint32_t service_id) {
  _exit(steps == 4 && service_id == service ? 0 : wrong);
}

int main(void) {
  bmp4096_t record = {512, {0x40}};
  stp_mcec_lib_sdwrap_init_done = 1;
  const char *text = stp_mcec_lib_bmp4096_to_str(&record);
  void *array = NULL;
  step(3, text == stp_vlan_bmp_str_buf && strcmp(stp_vlan_bmp_str_buf, "1") == 0 &&
              stp_mcec_type1_cfg_avl != NULL && stp_mcec_lib_debug_file == NULL &&
              stp_mcec_type1_cfg_get_params(1, 0, &array) == 0 && array != NULL);
  mtrack_free(array);
  return wrong; /* mtrack_uninit ends the process */
}
