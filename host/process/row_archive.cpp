#include "process/row_archive.hpp"

#include <sstream>

#include <cereal/archives/binary.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>

namespace orvik {

namespace {

// Structures of numbers without pointers, whose bytes are their value.
template <typename Archive, typename Value> void asMemory(Archive &archive, Value &value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    archive(cereal::binary_data(&value, sizeof value));
}

template <typename Archive> void transfer(Archive &archive, BurstResult &result) {
    archive(result.processed, result.reason, result.notes);
    asMemory(archive, result.parameters);
    asMemory(archive, result.waves);
    asMemory(archive, *result.spectra.get());
    archive(result.energy, result.directionWeights, result.currentSpeed, result.currentDirection);
}

template <typename Archive> void transfer(Archive &archive, ResultRow &row) {
    bool hasTruth = row.truth.has_value();
    archive(row.startTime, row.burst, hasTruth);
    if (hasTruth) {
        Truth truth = row.truth.value_or(Truth{});
        asMemory(archive, truth);
        row.truth = truth;
    }
    asMemory(archive, row.facts);
    transfer(archive, row.result);
}

} // namespace

std::string bytesOfRow(const JournalRow &row) {
    std::ostringstream text;
    cereal::BinaryOutputArchive archive(text);
    JournalRow copy = row; // one function reads and writes
    archive(copy.file);
    transfer(archive, copy.row);
    return std::move(text).str();
}

JournalRow rowOfBytes(const std::string &bytes) {
    std::istringstream text(bytes);
    cereal::BinaryInputArchive archive(text);
    JournalRow row;
    archive(row.file);
    transfer(archive, row.row);
    return row;
}

} // namespace orvik
