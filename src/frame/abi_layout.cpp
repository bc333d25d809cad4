// Nothing but assertions: a host exchanges the record and the structures as raw bytes, so their layout never moves.
#include <cstddef>
#include <type_traits>

#include "frame/record.hpp"
#include "orvikbase/orvikbase.h"

#define OV_FIELD(S, field, at, bytes)                                                              \
    static_assert(offsetof(S, field) == (at) && sizeof(S::field) == (bytes), #S "." #field " move" \
                                                                                "d")
#define OV_PACKED(S, bytes)                                                                        \
    static_assert(sizeof(S) == (bytes) && alignof(S) == 1 && std::is_trivially_copyable_v<S>,      \
                  #S " changed size")

static_assert(sizeof(OVRecord) == OV_RECORD_BYTES);
static_assert(std::is_trivially_copyable_v<OVRecord> && std::is_standard_layout_v<OVRecord>);
static_assert(offsetof(OVRecord, processedFlag) == OV_RECORD_BYTES - 2);
static_assert(offsetof(OVRecord, surfaceTrackValid) == OV_RECORD_BYTES - 1);
// The samples that are read as one storage: pressure, velocities, fourth velocity.
static_assert(offsetof(OVRecord, velocitySeries) ==
              offsetof(OVRecord, pressureSeries) + sizeof(OVRecord::pressureSeries));
static_assert(offsetof(OVRecord, astDistance2Series) ==
              offsetof(OVRecord, velocitySeries) + sizeof(OVRecord::velocitySeries));
static_assert(offsetof(OVRecord, fftWork) % alignof(double) == 0);

OV_PACKED(OVInstrumentConfig, 64);
OV_FIELD(OVInstrumentConfig, pingsPerSample, 0, 4);
OV_FIELD(OVInstrumentConfig, samplingRate, 4, 4);
OV_FIELD(OVInstrumentConfig, burstSamples, 8, 4);
OV_FIELD(OVInstrumentConfig, acousticFrequency, 12, 4);
OV_FIELD(OVInstrumentConfig, slantAngle, 16, 4);
OV_FIELD(OVInstrumentConfig, instrumentType, 20, 4);
OV_FIELD(OVInstrumentConfig, attitudeMode, 24, 4);
OV_FIELD(OVInstrumentConfig, transformMatrix, 28, 32);
OV_FIELD(OVInstrumentConfig, cellSizeCounts, 60, 2);
OV_FIELD(OVInstrumentConfig, configFlags, 62, 2);

OV_PACKED(OVProcessingParameters, 65);
OV_FIELD(OVProcessingParameters, processingMethod, 0, 4);
OV_FIELD(OVProcessingParameters, freqMin, 4, 4);
OV_FIELD(OVProcessingParameters, freqMax, 8, 4);
OV_FIELD(OVProcessingParameters, fineFreqMin, 12, 4);
OV_FIELD(OVProcessingParameters, fineFreqMax, 16, 4);
OV_FIELD(OVProcessingParameters, freqStep, 20, 4);
OV_FIELD(OVProcessingParameters, levelOffset, 24, 4);
OV_FIELD(OVProcessingParameters, headingOffset, 28, 4);
OV_FIELD(OVProcessingParameters, dirBandWidth, 32, 4);
OV_FIELD(OVProcessingParameters, specBandWidth, 36, 4);
OV_FIELD(OVProcessingParameters, directionalInputMode, 40, 4);
OV_FIELD(OVProcessingParameters, estimateMask, 44, 4);
OV_FIELD(OVProcessingParameters, nDirections, 48, 4);
OV_FIELD(OVProcessingParameters, pressureOffset, 52, 4);
OV_FIELD(OVProcessingParameters, reverseDirections, 56, 1);
OV_FIELD(OVProcessingParameters, profileParamA, 57, 4);
OV_FIELD(OVProcessingParameters, profileParamB, 61, 4);

OV_PACKED(OVWaveHeader, 57);
OV_FIELD(OVWaveHeader, nSamples, 0, 2);
OV_FIELD(OVWaveHeader, pressureCounts, 2, 2);
OV_FIELD(OVWaveHeader, headerValueA, 4, 4);
OV_FIELD(OVWaveHeader, headerValueB, 8, 4);
OV_FIELD(OVWaveHeader, heading, 12, 4);
OV_FIELD(OVWaveHeader, pitch, 16, 4);
OV_FIELD(OVWaveHeader, roll, 20, 4);
OV_FIELD(OVWaveHeader, headerValueC, 24, 4);
OV_FIELD(OVWaveHeader, distanceCounts, 28, 2);
OV_FIELD(OVWaveHeader, headerWords, 30, 6);
OV_FIELD(OVWaveHeader, reserved, 36, 2);
OV_FIELD(OVWaveHeader, headerFlag, 38, 1);
OV_FIELD(OVWaveHeader, depthOffset, 39, 4);
OV_FIELD(OVWaveHeader, directDepth, 43, 4);
OV_FIELD(OVWaveHeader, directHeight, 47, 4);
OV_FIELD(OVWaveHeader, nCells, 51, 4);
OV_FIELD(OVWaveHeader, surfaceTimeOffset, 55, 2);

OV_PACKED(OVWaveSample, 33);
OV_FIELD(OVWaveSample, valid, 0, 1);
OV_FIELD(OVWaveSample, pressure, 1, 4);
OV_FIELD(OVWaveSample, astDistance1, 5, 4);
OV_FIELD(OVWaveSample, velocity, 9, 12);
OV_FIELD(OVWaveSample, astDistance2, 21, 4);
OV_FIELD(OVWaveSample, amplitude, 25, 8);

OV_PACKED(OVWaveSampleSUV, 45);
OV_FIELD(OVWaveSampleSUV, valid, 0, 1);
OV_FIELD(OVWaveSampleSUV, spare, 1, 4);
OV_FIELD(OVWaveSampleSUV, suvChannel1, 5, 4);
OV_FIELD(OVWaveSampleSUV, suvChannel2, 9, 4);
OV_FIELD(OVWaveSampleSUV, pressure, 13, 4);
OV_FIELD(OVWaveSampleSUV, astDistance1, 17, 4);
OV_FIELD(OVWaveSampleSUV, velocity, 21, 12);
OV_FIELD(OVWaveSampleSUV, astDistance2, 33, 4);
OV_FIELD(OVWaveSampleSUV, amplitude, 37, 8);

OV_PACKED(OVPreProcessRow, 44);
OV_FIELD(OVPreProcessRow, attitude, 0, 12);
OV_FIELD(OVPreProcessRow, astOut, 12, 4);
OV_FIELD(OVPreProcessRow, pressureOut, 16, 4);
OV_FIELD(OVPreProcessRow, velocity, 20, 16);
OV_FIELD(OVPreProcessRow, amplitude, 36, 4);
OV_FIELD(OVPreProcessRow, correlation, 40, 4);

OV_PACKED(OVPreProcessOutput, 1441812);
OV_FIELD(OVPreProcessOutput, sampleCount, 0, 4);
OV_FIELD(OVPreProcessOutput, cellVerticalRange, 4, 4);
OV_FIELD(OVPreProcessOutput, rows, 8, 1441792);
OV_FIELD(OVPreProcessOutput, windowBelow, 1441800, 4);
OV_FIELD(OVPreProcessOutput, windowAbove, 1441804, 4);
OV_FIELD(OVPreProcessOutput, useWindow, 1441808, 1);
OV_FIELD(OVPreProcessOutput, astValidOut, 1441809, 1);
OV_FIELD(OVPreProcessOutput, skipAstCleaning, 1441810, 1);
OV_FIELD(OVPreProcessOutput, done, 1441811, 1);

OV_PACKED(OVPreProcessOutputSUV, 262156);
OV_FIELD(OVPreProcessOutputSUV, astOut, 0, 131072);
OV_FIELD(OVPreProcessOutputSUV, pressureOut, 131072, 131072);
OV_FIELD(OVPreProcessOutputSUV, windowBelow, 262144, 4);
OV_FIELD(OVPreProcessOutputSUV, windowAbove, 262148, 4);
OV_FIELD(OVPreProcessOutputSUV, useWindow, 262152, 1);
OV_FIELD(OVPreProcessOutputSUV, astValidOut, 262153, 1);
OV_FIELD(OVPreProcessOutputSUV, skipAstCleaning, 262154, 1);
OV_FIELD(OVPreProcessOutputSUV, done, 262155, 1);

OV_PACKED(OVWaveParameterSet, 108);
OV_FIELD(OVWaveParameterSet, waveParameters, 0, 56);
OV_FIELD(OVWaveParameterSet, instrumentDepth, 56, 4);
OV_FIELD(OVWaveParameterSet, astInitialBadCount, 60, 4);
OV_FIELD(OVWaveParameterSet, astSpikeCount, 64, 4);
OV_FIELD(OVWaveParameterSet, qualityFlags, 68, 4);
OV_FIELD(OVWaveParameterSet, spectrumSource, 72, 4);
OV_FIELD(OVWaveParameterSet, astLevel, 76, 4);
OV_FIELD(OVWaveParameterSet, astLevelEven, 80, 4);
OV_FIELD(OVWaveParameterSet, aliasingFrequency, 84, 4);
OV_FIELD(OVWaveParameterSet, checkedHeight, 88, 4);
OV_FIELD(OVWaveParameterSet, checkedMeanPeriod, 92, 4);
OV_FIELD(OVWaveParameterSet, cellVerticalRange, 96, 4);
OV_FIELD(OVWaveParameterSet, energyPeriod, 100, 4);
OV_FIELD(OVWaveParameterSet, selectedCell, 104, 4);

OV_PACKED(OVFourierCoefficientSpectra, 12009);
OV_FIELD(OVFourierCoefficientSpectra, spectrumKind, 0, 1);
OV_FIELD(OVFourierCoefficientSpectra, count, 1, 4);
OV_FIELD(OVFourierCoefficientSpectra, fineCount, 5, 4);
OV_FIELD(OVFourierCoefficientSpectra, energySpectrum, 9, 800);
OV_FIELD(OVFourierCoefficientSpectra, binInfo, 809, 3200);
OV_FIELD(OVFourierCoefficientSpectra, secondSpectrum, 4009, 800);
OV_FIELD(OVFourierCoefficientSpectra, fineSpectrum, 4809, 1600);
OV_FIELD(OVFourierCoefficientSpectra, direction, 6409, 800);
OV_FIELD(OVFourierCoefficientSpectra, spread, 7209, 800);
OV_FIELD(OVFourierCoefficientSpectra, coefP, 8009, 800);
OV_FIELD(OVFourierCoefficientSpectra, coefQ, 8809, 800);
OV_FIELD(OVFourierCoefficientSpectra, coefR, 9609, 800);
OV_FIELD(OVFourierCoefficientSpectra, coefS, 10409, 800);
OV_FIELD(OVFourierCoefficientSpectra, bandValue, 11209, 800);

OV_PACKED(OVEnergySpectrumBlock, 804);
OV_FIELD(OVEnergySpectrumBlock, count, 0, 4);
OV_FIELD(OVEnergySpectrumBlock, values, 4, 800);

OV_PACKED(OVScaledEnergySpectrum, 804);
OV_FIELD(OVScaledEnergySpectrum, scaleMax, 0, 4);
OV_FIELD(OVScaledEnergySpectrum, values, 4, 800);

OV_PACKED(OVMeanCurrentQuery, 16);
OV_FIELD(OVMeanCurrentQuery, selector, 0, 4);
OV_FIELD(OVMeanCurrentQuery, valueA, 4, 4);
OV_FIELD(OVMeanCurrentQuery, valueB, 8, 4);
OV_FIELD(OVMeanCurrentQuery, valueC, 12, 4);

OV_PACKED(OVSpectraUsedInput, 1612);
OV_FIELD(OVSpectraUsedInput, selector, 0, 4);
OV_FIELD(OVSpectraUsedInput, count1, 4, 4);
OV_FIELD(OVSpectraUsedInput, count2, 8, 4);
OV_FIELD(OVSpectraUsedInput, values, 12, 1600);

OV_PACKED(OVBandEstimate, 40);
OV_FIELD(OVBandEstimate, fLow, 0, 4);
OV_FIELD(OVBandEstimate, fHigh, 4, 4);
OV_FIELD(OVBandEstimate, bandHm0, 8, 4);
OV_FIELD(OVBandEstimate, bandTm02, 12, 4);
OV_FIELD(OVBandEstimate, bandZero, 16, 4);
OV_FIELD(OVBandEstimate, bandPeakDirection, 20, 4);
OV_FIELD(OVBandEstimate, bandMeanDirection, 24, 4);
OV_FIELD(OVBandEstimate, bandPeakSpread, 28, 4);
OV_FIELD(OVBandEstimate, bandMeanSpread, 32, 4);
OV_FIELD(OVBandEstimate, bandStatus, 36, 2);
OV_FIELD(OVBandEstimate, bandSpectrumSource, 38, 2);

OV_PACKED(OVProfileInstrumentConfig, 86);
OV_FIELD(OVProfileInstrumentConfig, transformMatrix, 28, 32);
OV_FIELD(OVProfileInstrumentConfig, cellSizeCounts, 60, 2);
OV_FIELD(OVProfileInstrumentConfig, configFlags, 62, 2);
OV_FIELD(OVProfileInstrumentConfig, beamAzimuth, 64, 16);
OV_FIELD(OVProfileInstrumentConfig, beamCount, 80, 2);
OV_FIELD(OVProfileInstrumentConfig, lagParameter, 82, 4);

OV_PACKED(OVWaveSampleProfile, 4123);
OV_FIELD(OVWaveSampleProfile, valid, 0, 1);
OV_FIELD(OVWaveSampleProfile, reserved, 1, 2);
OV_FIELD(OVWaveSampleProfile, pressure, 3, 4);
OV_FIELD(OVWaveSampleProfile, astDistance1, 7, 4);
OV_FIELD(OVWaveSampleProfile, astDistance2, 11, 4);
OV_FIELD(OVWaveSampleProfile, profileVelocity, 15, 2048);
OV_FIELD(OVWaveSampleProfile, profileAmplitude, 2063, 1024);
OV_FIELD(OVWaveSampleProfile, profileCorrelation, 3087, 1024);
OV_FIELD(OVWaveSampleProfile, attitude, 4111, 12);
