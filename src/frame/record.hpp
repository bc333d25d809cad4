// The wave-variables record: one flat block with every input, intermediate series and result of one burst.
//
// A plain aggregate without pointers, so that zeroed memory is a valid record and a byte copy behaves like the
// original. Capacities are fixed; the counts beside the arrays say how much of each is in use. Arrays with 16384
// samples times 256 cells belong to the profile instrument alone: other types never touch their pages.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orvikbase/ov_types.h"

namespace ov {

inline constexpr int kMaxFreq = OV_MAX_FREQUENCIES;
inline constexpr int kMaxFreqFine = OV_MAX_FREQUENCIES_FINE;
inline constexpr int kMaxDir = OV_MAX_DIRECTIONS;
inline constexpr int kMaxSeries = OV_MAX_SERIES;
inline constexpr int kMaxSamples = OV_MAX_SAMPLES;
inline constexpr int kMaxTrack = OV_MAX_TRACK_SAMPLES;
inline constexpr int kMaxCells = OV_MAX_CELLS;
inline constexpr int kMaxBeams = OV_MAX_BEAMS;
inline constexpr int kSlotBins = kMaxSamples / 2; // values of one spectrum half
inline constexpr std::size_t kReservedBytes = 64038;

} // namespace ov

struct OVRecord {
    // ---- Instrument configuration
    std::int32_t instrumentType;
    std::int32_t samplingRate;  // [Hz], 0 stands for 0.75 Hz
    std::uint32_t burstSamples; // replaced by the header
    float acousticFrequency;    // [Hz]
    float slantAngle;           // [degrees] from the vertical
    float beamAzimuth[4];       // [degrees]
    std::int32_t attitudeMode;  // velocities are 0 east-north-up, 1 XYZ, 2 beam
    float cellSize;             // [cm] along the beam
    std::uint32_t pingsPerSample;
    float lagParameter; // [m/s] ambiguity velocity, profile instrument
    std::int16_t transformMatrix[16];
    std::int16_t beamCount;
    std::uint16_t cellSizeCounts; // read as signed
    std::uint16_t splitEstimateFlag;
    std::uint16_t reservedConfig;

    // ---- Processing parameters
    std::int32_t processingMethod;
    std::int32_t nFrequencies;
    std::int32_t nFrequenciesFine;
    std::int32_t dirBandWidth;
    double freqMin;
    double freqMax;
    double fineFreqMin;
    double fineFreqMax;
    double freqStep;
    double levelOffset;    // [m]
    double headingOffset;  // [degrees]
    double pressureOffset; // [m]
    std::int32_t specBandWidth;
    std::int32_t directionalInputMode; // of the run: settled by the driver
    std::int32_t estimateMask;         // of the run: settled by the driver
    std::int32_t configuredInputMode; // the host's directionalInputMode, from which each run starts
    std::int32_t configuredEstimateMask; // the host's estimateMask, from which each run starts
    std::int32_t nDirections;
    float profileParamA;
    std::uint32_t profileParamB;

    // ---- Burst header
    std::int32_t burstLength;
    float sensorDepth;  // [m]
    float sensorHeight; // [m]
    float headerDepth;  // [m] slant range from the head to the measurement cell
    float depthOffset;  // [m]
    float heading;      // [degrees]
    float pitch;        // [degrees]
    float roll;         // [degrees]
    float headerValueA;
    float headerValueC;
    std::uint16_t headerWords[3];
    std::uint8_t headerFlag;
    std::uint8_t reverseDirections; // processing parameter
    std::uint32_t nCells;
    std::int32_t surfaceTimeOffset; // [0.1 ms]
    std::int32_t sampleCursor;
    std::int32_t missingSampleCount;
    std::int32_t qualityFlags;
    std::uint8_t readyFlag;
    std::uint8_t useAstWindow;
    std::uint8_t firstRunFlag;
    std::uint8_t trackVerdict; // pre-processing's surfaceTrackValid, from which each run starts

    // ---- Results of pre-processing
    float minPressure;     // [m] profile instrument
    float instrumentDepth; // [m]
    float waterDepth;      // [m]
    float astSamplingRate; // [Hz]
    std::int32_t astLength;
    std::int32_t astBadCount;
    std::int32_t astSpikeCount;
    std::int32_t astInitialBadCount;
    float astWindowBelow;  // [m]
    float astWindowAbove;  // [m]
    float astLevel;        // [m]
    float astLevelEven;    // [m]
    double trendSlope;     // per element
    double trendIntercept; // at element 0
    std::int32_t selectedCell;

    // ---- Scalar results
    float waveParameters[OV_WAVE_PARAMETERS];
    float aliasingFrequency; // [Hz]
    float directionOffset;   // [degrees] heading and declination, added to every direction
    float energyPeriod;      // [s]
    float checkedHeight;     // [m] companion of Hm0
    float checkedMeanPeriod; // [s] companion of Tm02
    std::int32_t spectrumSource;
    float meanVelocity[4];      // [m/s] east, north, up
    float meanCurrentSpeed;     // [m/s]
    float meanCurrentDirection; // [rad]
    float tiltAngle;            // [degrees]
    std::int32_t lastValidFreqIndex;
    std::int32_t validFreqCount;

    // ---- Derived processing settings
    float samplingRateHz;
    float convergenceTolerance;
    std::int32_t iterationLimit;
    float velocityNoise;    // [cm/s]
    float velocityNoiseMps; // [m/s]
    std::int32_t activeMethod;
    std::int32_t passCount;
    float pressureCutRatio;
    float velocityCutGain;
    float pressureCutMinFreq; // [Hz]
    float velocityCutMinFreq; // [Hz]

    // ---- Series list and sensor geometry
    std::int32_t seriesCount;
    std::int32_t velocitySeriesCount;
    std::int32_t nMlmSeries;
    std::int32_t pressureSeriesIndex;
    std::int32_t seriesType[ov::kMaxSeries];
    float seriesX[ov::kMaxSeries];     // [m]
    float seriesY[ov::kMaxSeries];     // [m]
    float seriesDepth[ov::kMaxSeries]; // [m]
    float beamDirX[ov::kMaxSeries];
    float beamDirY[ov::kMaxSeries];
    float beamDirZ[ov::kMaxSeries];
    float surfaceTrackCosine;
    float horizVelGain[ov::kMaxSeries]; // of the bin in hand
    float vertVelGain[ov::kMaxSeries];  // of the bin in hand
    std::int32_t mlmSeriesOrder[ov::kMaxSeries];
    float crossSpectralMatrix[ov::kMaxSeries]
                             [ov::kMaxSeries];        // of the bin in hand, packed Hermitian
    double mlmMatrix[ov::kMaxSeries][ov::kMaxSeries]; // of the bin in hand, packed Hermitian
    double transferRe[ov::kMaxSeries][ov::kMaxDir];   // of the bin in hand
    double transferIm[ov::kMaxSeries][ov::kMaxDir];
    double directionalDistribution[ov::kMaxDir];
    double mlmFirstEstimate[ov::kMaxDir];
    double imlmEstimate[ov::kMaxDir];
    double imlmWork[ov::kMaxDir];

    // ---- Frequency axes
    float frequencies[ov::kMaxFreq];      // [Hz]
    float fineFreqAxis[ov::kMaxFreqFine]; // [Hz]

    // ---- Per-frequency series
    float waveNumbers[ov::kMaxFreq]; // [rad/m]
    float pressureGain[ov::kMaxFreq];
    float vertVelGainSq[ov::kMaxFreq];
    float currentAlongWave[ov::kMaxFreq];                 // [m/s]
    float spectrumVel[ov::kMaxFreq];                      // [m^2/Hz] elevation from velocity
    float spectrumPrs[ov::kMaxFreq];                      // [m^2/Hz] elevation from pressure
    float bandSpectrum[ov::kMaxFreq];                     // [m^2/Hz] pressure, no depth correction
    float bandSpectrumFine[ov::kMaxFreqFine];             // [m^2/Hz] surface track
    float spectraUsed[ov::kMaxFreqFine];                  // [m^2/Hz] behind the wave parameters
    float paramFrequencies[ov::kMaxFreqFine];             // [Hz] axis of spectraUsed
    float beamElevSpectrum[ov::kMaxFreq][ov::kMaxSeries]; // [m^2/Hz] by beam
    float meanDirection[ov::kMaxFreq];                    // [degrees]
    float directionalSpread[ov::kMaxFreq];                // [degrees]
    float fourierA1[ov::kMaxFreqFine];                    // entries past the main axis stay 0
    float fourierB1[ov::kMaxFreqFine];
    float fourierA2[ov::kMaxFreq];
    float fourierB2[ov::kMaxFreq];
    double checkRatio[ov::kMaxFreq];
    double depthAttenuation[ov::kMaxFreq]; // pressure response without the gain floor
    double spectrumPrsWide[ov::kMaxFreq];  // spectrumPrs before narrowing
    double lastPairCross[4][ov::kMaxFreq]; // cross-spectra of the last two series, times 1000
    double dirSpectrum[ov::kMaxFreq][ov::kMaxDir];

    // ---- Burst samples. The order matters: pressure, the three velocities and the fourth (astDistance2) are contiguous.
    float pressureSeries[ov::kMaxSamples];    // [m]
    float velocitySeries[3][ov::kMaxSamples]; // [m/s]
    float astDistance2Series[ov::kMaxSamples];
    float astSeries[ov::kMaxTrack]; // [m] two elements a sample
    float astSampleRateSeries[ov::kMaxSamples];
    float suvChannel1Series[ov::kMaxSamples];
    float suvChannel2Series[ov::kMaxSamples];
    float attitudeSeries[3][ov::kMaxSamples]; // [degrees] heading, pitch, roll; profile instrument
    float seriesSpecRe[ov::kMaxSeries][ov::kSlotBins];
    float seriesSpecIm[ov::kMaxSeries][ov::kSlotBins];
    float astSpecRe[ov::kMaxSamples];
    float astSpecIm[ov::kMaxSamples];
    float fftWork[2 * ov::kMaxTrack]; // interleaved complex; scratch between transforms
    std::int16_t profileVelocityStore[ov::kMaxBeams][ov::kMaxSamples][ov::kMaxCells]; // [mm/s]
    std::uint8_t profileAmplitudeStore[ov::kMaxBeams][ov::kMaxSamples][ov::kMaxCells];
    std::uint8_t profileCorrelationStore[ov::kMaxBeams][ov::kMaxSamples][ov::kMaxCells];

    std::uint8_t reserved[ov::kReservedBytes];
    std::uint8_t processedFlag;
    std::uint8_t surfaceTrackValid; // of the run: settled by the driver
};

namespace ov {

using WaveVariables = OVRecord;

// The pressure storage at element i: the velocities follow the pressure in the record, and a host that asks for the
// pressure at double rate reads on into them.
inline float pressureStorage(const WaveVariables &rec, int i) {
    if (i < kMaxSamples) {
        return rec.pressureSeries[i];
    }
    return rec.velocitySeries[(i - kMaxSamples) / kMaxSamples][(i - kMaxSamples) % kMaxSamples];
}

// The four velocity series by number: the second surface-track distance takes the place of a fourth beam.
inline float *velocitySeriesData(WaveVariables &rec, int series) {
    return series < 3 ? rec.velocitySeries[series] : rec.astDistance2Series;
}

// Counts of the main and fine axes that are safe to loop over (a host's limits may make them negative).
inline int mainBinCount(const WaveVariables &rec) {
    return rec.nFrequencies < 0 ? 0 : (rec.nFrequencies > kMaxFreq ? kMaxFreq : rec.nFrequencies);
}
inline int fineBinCount(const WaveVariables &rec) {
    return rec.nFrequenciesFine < 0
               ? 0
               : (rec.nFrequenciesFine > kMaxFreqFine ? kMaxFreqFine : rec.nFrequenciesFine);
}
inline int directionCount(const WaveVariables &rec) {
    return rec.nDirections < 0 ? 0 : (rec.nDirections > kMaxDir ? kMaxDir : rec.nDirections);
}

} // namespace ov
