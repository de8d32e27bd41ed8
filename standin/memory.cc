#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "internal.h"
#include "mtrack.h"

namespace {

// A block of the tracker, or a payload, which has no memory type.
struct Extent {
  std::size_t size;
  uint32_t mem_type = UINT32_MAX;
};

struct Service {
  std::string name;
  std::vector<std::string> mem_types;
};

std::map<const void *, Extent, std::less<>> extents;
std::map<uint32_t, Service> services;

constexpr uint32_t max_block_size = 1U << 30;

bool is_block(const Extent &extent, uint32_t mem_type) {
  return mem_type == STANDIN_ALL_TYPES ? extent.mem_type != UINT32_MAX
                                       : extent.mem_type == mem_type;
}

// Returns the extent of a live block or payload; for any other address, one without a memory type.
Extent block_at(const void *block) {
  const auto found = extents.find(block);
  return found != extents.end() ? found->second : Extent{UINT32_MAX};
}

}  // namespace

namespace standin {

void add_extent(const void *start, std::size_t size) {
  extents[start] = {size};
}

void remove_extent(const void *start) {
  extents.erase(start);
}

std::size_t bytes_to_end(const void *at) {
  auto next = extents.upper_bound(at);
  if (next == extents.begin()) return SIZE_MAX;
  const auto &[start, extent] = *--next;
  const std::size_t offset = reinterpret_cast<uintptr_t>(at) - reinterpret_cast<uintptr_t>(start);
  return offset <= extent.size ? extent.size - offset : SIZE_MAX;
}

}  // namespace standin

void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count) {
  if (!services.try_emplace(service_id, Service{lib_name, {mem_type_names, mem_type_names + count}})
           .second) {
    standin::misuse("service %u is already registered", service_id);
  }
}

void mtrack_uninit(uint32_t service_id) {
  if (services.erase(service_id) == 0) standin::misuse("service %u is not registered", service_id);
}

void *mtrack_alloc(uint32_t service_id, uint32_t mem_type, uint32_t size) {
  const auto service = services.find(service_id);
  if (service == services.end() || mem_type >= service->second.mem_types.size()) {
    standin::misuse("service %u has no memory type %u", service_id, mem_type);
    return nullptr;
  }
  if (standin::fails(STANDIN_ALLOC) || size > max_block_size) return nullptr;
  // Not zeroed: by contract the content is undefined.
  void *block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) return nullptr;
  std::memset(block, 0xA5, size);
  extents[block] = {size, mem_type};
  return block;
}

void mtrack_free(void *block) {
  if (!is_block(block_at(block), STANDIN_ALL_TYPES)) {
    standin::misuse("%p is not a live block", block);
    return;
  }
  extents.erase(block);
  std::free(block);
}

uint32_t standin_live_blocks(uint32_t mem_type) {
  uint32_t count = 0;
  for (const auto &[start, extent] : extents) count += is_block(extent, mem_type) ? 1 : 0;
  return count;
}

uint64_t standin_live_bytes(uint32_t mem_type) {
  uint64_t bytes = 0;
  for (const auto &[start, extent] : extents) {
    if (is_block(extent, mem_type)) bytes += extent.size;
  }
  return bytes;
}

uint32_t standin_block_type(const void *block) {
  return block_at(block).mem_type;
}

uint32_t standin_block_size(const void *block) {
  return static_cast<uint32_t>(block_at(block).size);
}

const char *standin_service_name(uint32_t service_id) {
  const auto found = services.find(service_id);
  return found != services.end() ? found->second.name.c_str() : nullptr;
}

const char *standin_mem_type_name(uint32_t service_id, uint32_t mem_type) {
  const auto found = services.find(service_id);
  if (found == services.end() || mem_type >= found->second.mem_types.size()) return nullptr;
  return found->second.mem_types[mem_type].c_str();
}
