// A stream of calls over the whole interface, in any order and with hostile values, on one guarded record.
#include <memory>
#include <vector>

#include "fuzz_input.hpp"

namespace {

using namespace orvik::fuzz;

constexpr int kMostCalls = 60;
constexpr int kMostSamplesACall = 700;

template <class Structure, class Setter>
void callWithBytes(OVRecord *record, Input &input, Setter setter) {
    setter(record, guardedStructure(input.take<Structure>()));
}

// A configuration that often makes sense, so that the calls after it get further than the first check.
void configure(OVRecord *record, Input &input) {
    OVProfileInstrumentConfig config{};
    const int types[] = {0, 1, 3, 16};
    config.instrumentType = types[input.take<std::uint8_t>() % 4];
    config.samplingRate = input.take<std::uint8_t>() % 4;
    config.attitudeMode = input.take<std::uint8_t>() % 4;
    config.pingsPerSample = 60;
    config.acousticFrequency = 1e6F;
    config.slantAngle = 25.0F;
    config.cellSizeCounts = 100;
    config.beamCount = static_cast<std::int16_t>(3 + input.take<std::uint8_t>() % 2);
    config.lagParameter = 1.0F;
    for (int i = 0; i < 16; i += input.take<std::uint8_t>() % 2 == 0 ? 5 : 4) {
        config.transformMatrix[i] = 4096;
    }
    VELTASetInstrumentConfig_ptr(record, &config);
}

void chooseParameters(OVRecord *record, Input &input) {
    OVProcessingParameters parameters{};
    parameters.processingMethod = input.take<std::uint8_t>() % 6;
    parameters.directionalInputMode = input.take<std::uint8_t>() % 5;
    parameters.estimateMask = input.take<std::uint8_t>() % 33;
    parameters.nDirections = input.take<std::int8_t>();
    parameters.freqStep = 0.05F;
    parameters.levelOffset = input.number();
    parameters.headingOffset = input.number();
    parameters.dirBandWidth = input.take<std::int16_t>();
    parameters.specBandWidth = input.take<std::int16_t>();
    OVSetProcPar_ptr(record, &parameters);
}

void openBurst(OVRecord *record, Input &input) {
    OVWaveHeader header{};
    header.nSamples = static_cast<std::uint16_t>(input.take<std::uint16_t>() % 1100);
    header.pressureCounts = input.take<std::int16_t>();
    header.heading = input.number();
    header.pitch = input.number();
    header.roll = input.number();
    header.directDepth = input.number();
    header.directHeight = input.number();
    header.nCells = input.take<std::uint16_t>();
    header.surfaceTimeOffset = input.take<std::int16_t>();
    (input.take<std::uint8_t>() & 1) != 0 ? VELTASetWaveHeader_ptr(record, &header)
                                          : OVSetWaveHeader_ptr(record, &header);
}

void sendSamples(OVRecord *record, Input &input) {
    OVWaveSample sample{};
    const int count = input.take<std::uint16_t>() % kMostSamplesACall;
    const float level = input.number();
    const float step = input.number();
    for (int i = 0; i < count; ++i) {
        const float wave = static_cast<float>((i * 37) % 23 - 11) * step;
        sample.valid = 1;
        sample.pressure = level + wave;
        sample.astDistance1 = level - wave;
        sample.astDistance2 = level + wave / 2.0F;
        sample.velocity[0] = wave;
        sample.velocity[1] = -wave;
        sample.velocity[2] = wave * 0.3F;
        OVSetWaveSample_ptr(record, &sample);
    }
}

void callGetters(OVRecord *record, Input &input) {
    static std::vector<float> rows(OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS);
    OVWaveParameterSet parameters{};
    OVGetWavePar_ptr(record, guardedStructure(parameters));
    OVGetWaveSpectrum_ptr(record, guardedStructure(OVFourierCoefficientSpectra{}));
    OVGetEnergySpecStruct_ptr(record, guardedStructure(OVEnergySpectrumBlock{}));
    OVGetScaledEnergySpec_ptr(record, guardedStructure(OVScaledEnergySpectrum{}));
    OVGetScaledEnergySpecAllType_ptr(record, input.take<std::int8_t>(),
                                     guardedStructure(OVScaledEnergySpectrum{}));
    OVMeanCurrentQuery query{};
    query.selector = input.take<std::int8_t>();
    OVGetMeanBurstCurrent_ptr(record, guardedStructure(query));
    OVBandEstimate band{};
    band.fLow = input.number();
    band.fHigh = input.number();
    OVGetBandEst_ptr(record, guardedStructure(band));
    OVGetDirectionalSpectrum_ptr(record, guardedStructure(OVFourierCoefficientSpectra{}));
    OVGetFullDirSpectraWithEnergy_ptr(record, rows.data());
    OVGetFullWaveDirSpectrum_ptr(record, rows.data());
}

void callOne(OVRecord *record, Input &input) {
    static const auto output = std::make_unique<OVPreProcessOutput>();
    switch (input.take<std::uint8_t>() % 16) {
    case 0:
        return configure(record, input);
    case 1:
        return chooseParameters(record, input);
    case 2:
        return openBurst(record, input);
    case 3:
    case 4:
        return sendSamples(record, input);
    case 5:
        OVPreProcess_ptr(record, 0, output.get());
        return;
    case 6:
        VELTAPreProcess_ptr(record, 0, output.get());
        return;
    case 7:
        OVProcess_ptr(record);
        return;
    case 8:
        return callGetters(record, input);
    case 9:
        return callWithBytes<OVInstrumentConfig>(record, input, OVSetInstrumentConfig_ptr);
    case 10:
        return callWithBytes<OVProcessingParameters>(record, input, OVSetProcPar_ptr);
    case 11:
        return callWithBytes<OVWaveHeader>(record, input, OVSetWaveHeader_ptr);
    case 12:
        return callWithBytes<OVWaveSample>(record, input, OVSetWaveSample_ptr);
    case 13:
        return callWithBytes<OVWaveSampleProfile>(record, input, VELTASetWaveSampleProfile_ptr);
    case 14:
        return callWithBytes<OVFourierCoefficientSpectra>(record, input,
                                                          OVSetFourierCoefficientSpectra_ptr);
    default:
        return callWithBytes<OVSpectraUsedInput>(record, input, OVSetSpectraUsed_ptr);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    Input input(data, size);
    OVRecord *const record = freshRecord();
    for (int call = 0; call < kMostCalls && !input.empty(); ++call) {
        callOne(record, input);
    }
    callGetters(record, input);
    return 0;
}
