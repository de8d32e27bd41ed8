/* Memory: blocks of malloc. A platform with accounting stores service and memory type in front of
 * each block. */
#include <draimiofaf/platform/mtrack.h>
#include <stdlib.h>

void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count) {
  (void)lib_name, (void)service_id, (void)mem_type_names, (void)count;
}

void mtrack_uninit(uint32_t service_id) {
  (void)service_id;
}

void *mtrack_alloc(uint32_t service_id, uint32_t mem_type, uint32_t size) {
  (void)service_id, (void)mem_type;
  return malloc(size);
}

void mtrack_free(void *block) {
  free(block);
}
