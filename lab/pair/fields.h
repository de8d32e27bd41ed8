// Serialization of the records that processes of the lab exchange: the fields of each, in order.
#pragma once

#include <cereal/archives/binary.hpp>
#include <cereal/types/array.hpp>
#include <cereal/types/bitset.hpp>
#include <cereal/types/map.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/utility.hpp>
#include <cereal/types/variant.hpp>
#include <cereal/types/vector.hpp>
#include <sstream>

#include "pair/wire.h"

#define LAB_FIELDS(Record, ...)                  \
  template <class Archive>                       \
  void serialize(Archive &archive, Record &it) { \
    archive(__VA_ARGS__);                        \
  }

namespace lab {

LAB_FIELDS(PairScope::Member, it.port, it.name)
LAB_FIELDS(PairScope::End, it.present, it.port, it.port_name, it.others)
LAB_FIELDS(PairScope, it.kind, it.name, it.ends)
LAB_FIELDS(InconsistentPort, it.name, it.types)

template <class Record>
Bytes encode_record(const Record &record) {
  std::ostringstream stream;
  cereal::BinaryOutputArchive archive(stream);
  archive(record);
  const std::string text = std::move(stream).str();
  return {text.begin(), text.end()};
}

// Throws DecodeError. Lengths inside a frame have no limit of their own: frames come from the lab's
// own processes, and a length that cannot be allocated throws too.
template <class Record>
Record decode_record(const Bytes &frame) {
  try {
    std::istringstream stream({frame.begin(), frame.end()});
    cereal::BinaryInputArchive archive(stream);
    Record record;
    archive(record);
    return record;
  } catch (const std::exception &problem) {
    throw DecodeError(problem.what());
  }
}

}  // namespace lab
