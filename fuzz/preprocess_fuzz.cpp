// Pre-processing of bursts made of hostile samples, for point and profile instruments.
#include <memory>

#include "fuzz_input.hpp"

namespace {

using namespace orvik::fuzz;

constexpr int kMostSamples = 600;

void sendPoint(OVRecord *record, Input &input, int samples) {
    OVWaveSample sample{};
    for (int i = 0; i < samples; ++i) {
        const auto change = input.take<std::uint8_t>();
        if ((change & 3) ==
            0) { // most samples repeat the one before, so that few bytes make a burst
            sample.pressure = input.number();
            sample.astDistance1 = input.number();
            sample.astDistance2 = input.number();
            sample.velocity[0] = input.number();
        }
        sample.valid = (change & 0x70) != 0 || input.empty() ? 1 : 0;
        OVSetWaveSample_ptr(record, &sample);
    }
}

void sendProfile(OVRecord *record, Input &input, int samples) {
    static OVWaveSampleProfile sample{};
    for (int i = 0; i < samples; ++i) {
        const auto change = input.take<std::uint8_t>();
        if ((change & 3) == 0) {
            sample.pressure = input.number();
            sample.astDistance1 = input.number();
            sample.astDistance2 = input.number();
            sample.profileVelocity[change % 4][change] = input.take<std::int16_t>();
            sample.profileCorrelation[change % 4][change / 8] = change;
            sample.attitude[change % 3] = input.number();
        }
        sample.valid = (change & 0x70) != 0 || input.empty() ? 1 : 0;
        VELTASetWaveSampleProfile_ptr(record, &sample);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const auto output = std::make_unique<OVPreProcessOutput>();
    static const auto outputSuv = std::make_unique<OVPreProcessOutputSUV>();
    Input input(data, size);
    OVRecord *const record = freshRecord();
    OVProfileInstrumentConfig config{};
    const bool profile = (input.take<std::uint8_t>() & 1) != 0;
    config.instrumentType = profile ? 16 : 3;
    config.samplingRate = input.take<std::uint8_t>() % 4;
    config.acousticFrequency = input.number();
    config.slantAngle = input.number();
    config.lagParameter = input.number();
    config.beamCount = input.take<std::int16_t>();
    config.configFlags = input.take<std::uint16_t>();
    VELTASetInstrumentConfig_ptr(record, &config);
    OVProcessingParameters parameters{};
    parameters.processingMethod = input.take<std::uint8_t>() % 6;
    parameters.estimateMask = 31;
    parameters.levelOffset = input.number();
    parameters.profileParamA = input.number();
    OVSetProcPar_ptr(record, &parameters);
    OVWaveHeader header{};
    header.nSamples = static_cast<std::uint16_t>(input.take<std::uint16_t>() % kMostSamples);
    header.nCells = input.take<std::uint16_t>();
    header.directHeight = input.number();
    header.directDepth = input.number();
    profile ? VELTASetWaveHeader_ptr(record, &header) : OVSetWaveHeader_ptr(record, &header);
    const int samples = header.nSamples - input.take<std::uint8_t>() % 64;
    profile ? sendProfile(record, input, samples) : sendPoint(record, input, samples);
    output->useWindow = input.take<std::uint8_t>() & 1;
    output->windowBelow = input.number();
    output->windowAbove = input.number();
    output->skipAstCleaning = input.take<std::uint8_t>() & 1;
    for (int call = 0; call < 2; ++call) {
        profile ? VELTAPreProcess_ptr(record, 0, output.get())
                : OVPreProcess_ptr(record, 0, output.get());
    }
    OVPreProcessSUV_ptr(record, 0, outputSuv.get());
    return 0;
}
