#include "spectral/elevation_spectra.hpp"

#include <algorithm>
#include <cmath>

#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr float kLeastSpectrum = 1e-5F; // [m^2/Hz] stands for a spectrum below its noise
constexpr double kTailExponent = -4.5;
constexpr double kRiseExponent = 10.0;
constexpr float kLeastFirstRunGain = 0.25F;

double noiseVariance(const WaveVariables &rec) {
    const double noise = rec.velocityNoiseMps;
    return noise * noise;
}

float positiveOrLeast(double value) {
    const auto stored = static_cast<float>(value);
    return stored < 0.0F ? kLeastSpectrum : stored;
}

// Pressure spectrum over the squared gain; 0 without a gain.
float elevationFromPressure(float pressureSpectrum, float gain) {
    if (!(gain > 0.0F)) {
        return 0.0F;
    }
    const double g = gain;
    return static_cast<float>(static_cast<double>(pressureSpectrum) / (g * g));
}

float squaredHorizontalGain(const WaveVariables &rec) {
    return rec.horizVelGain[0] * rec.horizVelGain[0];
}

// Auto-spectrum of the series `fromEnd` places before the end of the list.
float autoFromEnd(const WaveVariables &rec, int fromEnd) {
    const int s = std::max(rec.seriesCount - fromEnd, 0);
    return rec.crossSpectralMatrix[s][s];
}

void chooseCutThresholds(WaveVariables &rec) {
    const auto choose = [&rec](float ratio, float pressureFreq, float velocityFreq) {
        rec.pressureCutRatio = ratio;
        rec.velocityCutGain = 0.1F;
        rec.pressureCutMinFreq = pressureFreq;
        rec.velocityCutMinFreq = velocityFreq;
    };
    const float d = rec.instrumentDepth;
    if (d < 5.0F) {
        choose(0.1F, 0.35F, 0.2F);
    } else if (d < 10.0F) {
        choose(0.1F, 0.3F, 0.15F);
    } else if (d < 25.0F) {
        choose(0.1F, 0.2F, 0.1F);
    } else if (d < 30.0F) {
        choose(0.15F, 0.18F, 0.1F);
    } else if (d > 30.0F) { // at exactly 30 m the thresholds stay as they are
        choose(0.2F, 0.15F, 0.1F);
    }
}

// Bins up to where the wavelength gets shorter than twice the depth, or the wavenumbers stop rising.
int upperLimit(const WaveVariables &rec, int n) {
    if (rec.firstRunFlag == 0) {
        return n;
    }
    const int last = n - 1;
    const double deepLimit = 3.1415 / static_cast<double>(rec.instrumentDepth);
    for (int i = 2; i < last; ++i) {
        if (!(static_cast<double>(rec.frequencies[i]) > 0.08)) {
            continue;
        }
        if (rec.waveNumbers[i] > rec.waveNumbers[i + 1]) {
            return i - 2;
        }
        if (static_cast<double>(rec.waveNumbers[i]) > deepLimit) {
            return i - 1;
        }
    }
    return last;
}

// First bin whose pressure response is too weak.
int pressureCut(const WaveVariables &rec, int n) {
    int cut = n - 1;
    for (int i = 0; i < n; ++i) {
        const double response = static_cast<double>(rec.pressureGain[i]) /
                                (kTwoPi * static_cast<double>(rec.frequencies[i]));
        if (static_cast<double>(rec.pressureCutRatio) > response) {
            cut = i;
            break;
        }
    }
    if (rec.firstRunFlag != 0) {
        for (int i = 0; i < n; ++i) {
            if (rec.pressureGain[i] < kLeastFirstRunGain) {
                cut = i;
                break;
            }
        }
    }
    // Where the axis holds waves too long to be deep-water ones at the instrument, the last of them is the cut, whatever
    // the response says. All in single precision, as the axis is.
    const float deepWater = std::sqrt(1.56F / (2.0F * rec.instrumentDepth));
    for (int i = 0; i < n - 1; ++i) {
        if (deepWater > rec.frequencies[i]) {
            cut = i;
        }
    }
    return cut;
}

// First bin whose velocity response is too weak.
int velocityCut(const WaveVariables &rec, int n) {
    for (int i = 0; i < n; ++i) {
        if (rec.vertVelGainSq[i] < rec.velocityCutGain) {
            return i;
        }
    }
    return n - 1;
}

void replaceTail(float *spectrum, const float *frequencies, int cut, int n) {
    const double energy = spectrum[cut];
    const double from = frequencies[cut];
    for (int i = cut; i < n; ++i) {
        const double f = frequencies[i];
        spectrum[i] = static_cast<float>(energy * std::pow(f / from, kTailExponent));
    }
}

// Below the least of the lowest bins the velocity spectrum is noise: it rises steeply towards that bin instead.
void replaceLowEnd(WaveVariables &rec, int n) {
    int least = 0;
    float value = 1e10F;
    for (int i = 0; i < n; ++i) {
        if (static_cast<double>(rec.frequencies[i]) < 0.0801 && rec.spectrumVel[i] < value) {
            value = rec.spectrumVel[i];
            least = i;
        }
    }
    const double energy = rec.spectrumVel[least];
    const double from = rec.frequencies[least];
    for (int j = 0; j < least; ++j) {
        const double f = rec.frequencies[j];
        rec.spectrumVel[j] = static_cast<float>(energy * std::pow(f / from, kRiseExponent));
    }
}

} // namespace

void elevationSpectraFromHorizontal(WaveVariables &rec, int i) {
    const double gain = squaredHorizontalGain(rec);
    const double noise = noiseVariance(rec);
    const double u = rec.crossSpectralMatrix[0][0];
    const double v = rec.crossSpectralMatrix[1][1];
    rec.spectrumVel[i] = positiveOrLeast((u - noise) / gain + (v - noise) / gain);
    rec.spectrumPrs[i] = elevationFromPressure(rec.bandSpectrum[i], rec.pressureGain[i]);
}

void elevationSpectraPerBeam(WaveVariables &rec, int i) {
    const double noise = noiseVariance(rec);
    double sum = 0.0;
    for (int s = 0; s < rec.velocitySeriesCount; ++s) {
        const double measured = rec.crossSpectralMatrix[s][s];
        const double elevation = (measured - noise) / rec.mlmMatrix[s][s];
        rec.beamElevSpectrum[i][s] = static_cast<float>(elevation);
        sum += elevation < 0.0 ? 0.0 : elevation;
    }
    rec.spectrumVel[i] = positiveOrLeast(sum / rec.velocitySeriesCount);
    rec.spectrumPrs[i] = elevationFromPressure(autoFromEnd(rec, 1), rec.pressureGain[i]);
}

void checkRatioAtBin(WaveVariables &rec, int i) {
    const float horizontal = rec.crossSpectralMatrix[1][1] + rec.crossSpectralMatrix[0][0];
    const double fromVelocity =
        static_cast<double>(horizontal) / static_cast<double>(squaredHorizontalGain(rec));
    const double gain = rec.pressureGain[i];
    switch (rec.activeMethod) {
    case 4:
        rec.checkRatio[i] = std::sqrt(static_cast<double>(rec.spectrumVel[i]) /
                                      static_cast<double>(autoFromEnd(rec, 2)));
        break;
    case 2:
        rec.checkRatio[i] = std::sqrt(fromVelocity / static_cast<double>(autoFromEnd(rec, 2)));
        break;
    case 1:
        rec.checkRatio[i] =
            std::sqrt(fromVelocity / (static_cast<double>(autoFromEnd(rec, 1)) / (gain * gain)));
        break;
    default:
        break;
    }
}

void cutAndTailSpectra(WaveVariables &rec) {
    chooseCutThresholds(rec);
    const int n = mainBinCount(rec);
    if (n < 1) {
        return;
    }
    const int limit = upperLimit(rec, n);
    const int pressure = std::min(limit, pressureCut(rec, n));
    int velocity = velocityCut(rec, n);
    if (rec.instrumentType != kProfileInstrument) {
        velocity = std::min(limit, velocity);
    }
    replaceTail(rec.spectrumPrs, rec.frequencies, pressure, n);
    replaceTail(rec.spectrumVel, rec.frequencies, velocity, n);
    replaceLowEnd(rec, n);
    for (int i = 0; i < std::min(n, 8); ++i) {
        if (static_cast<double>(rec.frequencies[i]) < 0.04001) {
            rec.spectraUsed[i] = rec.spectrumPrs[i];
        }
    }
}

} // namespace ov
