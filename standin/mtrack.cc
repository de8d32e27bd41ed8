#include "mtrack.h"

#include <cstdlib>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "extents.h"
#include "state.h"

namespace {

struct BlockInfo {
  uint32_t mem_type;
  uint32_t size;
};

struct Service {
  std::string name;
  std::vector<std::string> mem_types;
};

std::unordered_map<const void *, BlockInfo> blocks;
std::map<uint32_t, Service> services;
uint32_t registrations = 0;

constexpr uint32_t greatest_block = 1U << 30;

}  // namespace

void mtrack_init(const char *lib_name, uint32_t service_id, const char *const *mem_type_names,
                 uint32_t count) {
  ++registrations;
  if (!services.try_emplace(service_id, Service{lib_name, {mem_type_names, mem_type_names + count}})
           .second) {
    standin::misuse("service %u is registered already", service_id);
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
  if (standin::fails(STANDIN_ALLOC) || size > greatest_block) return nullptr;
  // Not zeroed: the contract leaves the content open.
  void *block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) return nullptr;
  __builtin_memset(block, 0xA5, size);
  blocks[block] = {mem_type, size};
  standin::note_extent(block, size);
  return block;
}

void mtrack_free(void *block) {
  if (blocks.erase(block) == 0) {
    standin::misuse("%p is no live block", block);
    return;
  }
  standin::forget_extent(block);
  std::free(block);
}

uint32_t standin_live_blocks(uint32_t mem_type) {
  uint32_t count = 0;
  for (const auto &[block, info] : blocks) {
    if (mem_type == STANDIN_ALL_TYPES || info.mem_type == mem_type) ++count;
  }
  return count;
}

uint64_t standin_live_bytes(uint32_t mem_type) {
  uint64_t bytes = 0;
  for (const auto &[block, info] : blocks) {
    if (mem_type == STANDIN_ALL_TYPES || info.mem_type == mem_type) bytes += info.size;
  }
  return bytes;
}

uint32_t standin_block_type(const void *block) {
  const auto found = blocks.find(block);
  return found != blocks.end() ? found->second.mem_type : UINT32_MAX;
}

uint32_t standin_block_size(const void *block) {
  const auto found = blocks.find(block);
  return found != blocks.end() ? found->second.size : UINT32_MAX;
}

uint32_t standin_registered() {
  return static_cast<uint32_t>(services.size());
}

uint32_t standin_registrations() {
  return registrations;
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
