// One setter with the fuzzer's bytes as its structure, twice on one record: the second call meets what the first left.
// ORVIK_STRUCTURE and ORVIK_SETTER name the two.
#include "fuzz_input.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace orvik::fuzz;
    Input input(data, size);
    OVRecord *const record = freshRecord();
    // An open burst, so that a sample has a place to go.
    OVInstrumentConfig config{};
    config.instrumentType = input.take<std::uint8_t>() % 2 == 0 ? 16 : 3;
    config.samplingRate = 2;
    OVSetInstrumentConfig_ptr(record, &config);
    OVWaveHeader header{};
    header.nSamples = input.take<std::uint8_t>();
    header.nCells = input.take<std::uint32_t>();
    OVSetWaveHeader_ptr(record, &header);
    for (int call = 0; call < 2; ++call) {
        auto *const structure = guardedStructure(input.take<ORVIK_STRUCTURE>());
        ORVIK_SETTER(record, structure);
    }
    return 0;
}
