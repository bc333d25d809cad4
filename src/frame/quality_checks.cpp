#include "frame/quality_checks.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr double kFlatTolerance = 5e-5;
constexpr double kLeastSignal = 0.001;  // [m] mean absolute pressure
constexpr double kClearance = 0.5;      // [m]
constexpr double kGreatestTilt = 10.0;  // [degrees]
constexpr double kBreakingFactor = 1.3; // heights are limited by the water depth

double radians(float degrees) { return static_cast<double>(degrees) * kPi / 180.0; }

void missWhen(float &value, bool condition) {
    if (condition) {
        value = kMissing;
    }
}

// Acoustic range [m] at the record's frequency; 0 where none is known.
double acousticRange(const WaveVariables &rec, bool &known) {
    known = true;
    const float f = rec.acousticFrequency;
    if (f == 400000.0F) {
        return 110.0;
    }
    if (f == 600000.0F) {
        return 62.2;
    }
    if (f == 1000000.0F) {
        return 44.0;
    }
    if (rec.instrumentType == kProfileInstrument && (f == 500000.0F || f == 250000.0F)) {
        return 62.2;
    }
    known = false;
    return 0.0;
}

// Least-squares line through the running sums of bins 2 to n - 1, tested against every one of them.
bool runningSumIsStraight(const double *sums, int n) {
    double count = 0.0;
    double sx = 0.0;
    double sy = 0.0;
    double sxx = 0.0;
    double sxy = 0.0;
    for (int i = 2; i < n; ++i) {
        const double x = i;
        count += 1.0;
        sx += x;
        sy += sums[i];
        sxx += x * x;
        sxy += x * sums[i];
    }
    const double spread = count * sxx - sx * sx;
    const double slope = spread > 0.0 ? (count * sxy - sx * sy) / spread : 0.0;
    const double intercept = (sy - slope * sx) / count;
    for (int i = 2; i < n; ++i) {
        if (!(std::abs(sums[i] - (slope * i + intercept)) <= kFlatTolerance)) {
            return false;
        }
    }
    return true;
}

} // namespace

void checkTrackRange(WaveVariables &rec) {
    float *const w = rec.waveParameters;
    const double rate = rec.astSamplingRate;
    const double depth = rec.waterDepth;
    missWhen(w[OV_H_THIRD], w[OV_H_THIRD] > 20.0F);
    missWhen(w[OV_H_TENTH], w[OV_H_TENTH] > 25.0F);
    missWhen(w[OV_H_MAX], w[OV_H_MAX] > 35.0F);
    missWhen(w[OV_T_CROSSING], w[OV_T_CROSSING] > 35.0F || w[OV_T_CROSSING] < 0.5F);
    missWhen(w[OV_T_THIRD], static_cast<double>(w[OV_T_THIRD]) > 25.0 * rate);
    missWhen(w[OV_T_TENTH], static_cast<double>(w[OV_T_TENTH]) > 30.0 * rate);
    missWhen(w[OV_T_MAX], static_cast<double>(w[OV_T_MAX]) > 35.0 * rate);
    missWhen(w[OV_H_THIRD], kBreakingFactor * static_cast<double>(w[OV_H_THIRD]) > depth);
    // A highest tenth too high for the depth makes the highest third missing.
    missWhen(w[OV_H_THIRD], kBreakingFactor * static_cast<double>(w[OV_H_TENTH]) > depth);
    if (std::any_of(w + OV_H_THIRD, w + OV_T_CROSSING + 1,
                    [](float value) { return value == kMissing; })) {
        rec.qualityFlags |= OV_FLAG_TRACK_RANGE;
        std::fill(w + OV_H_THIRD, w + OV_T_CROSSING + 1, kMissing);
        rec.surfaceTrackValid = 0;
    }
}

// A frequency without a known range always sets the bit.
void checkClearance(WaveVariables &rec) {
    bool known = false;
    const double range = acousticRange(rec, known);
    const double reach =
        static_cast<double>(rec.waveParameters[OV_H_MAX]) / 2.0 + static_cast<double>(rec.astLevel);
    const double margin = known ? range - reach : 0.0;
    if (std::abs(margin) < kClearance) {
        rec.qualityFlags |= OV_FLAG_CLEARANCE;
    }
}

void checkDepth(WaveVariables &rec) {
    if (rec.instrumentDepth < 1.0F) {
        rec.qualityFlags |= OV_FLAG_SHALLOW;
    }
}

void checkSpectrumShape(WaveVariables &rec) {
    const int n = mainBinCount(rec);
    double sums[kMaxFreq] = {};
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        sum += static_cast<double>(rec.spectrumPrs[i]);
        sums[i] = sum;
    }
    if (n < 3 || runningSumIsStraight(sums, n)) {
        rec.qualityFlags |= OV_FLAG_FLAT_SPECTRUM;
        rec.checkedHeight = kMissing;
    }
}

void checkValidity(WaveVariables &rec) {
    float *const w = rec.waveParameters;
    for (const int slot : {OV_HM0, OV_H_THIRD, OV_H_TENTH, OV_H_MAX, OV_TM02, OV_TP,
                           OV_MEAN_DIRECTION, OV_PEAK_SPREAD, OV_RESULTANT_LENGTH}) {
        if (std::isnan(w[slot])) {
            w[slot] = kMissing;
            rec.qualityFlags |= OV_FLAG_INVALID_PARAMETERS;
        }
    }
    const auto outside = [w](int slot, float low, float high) {
        missWhen(w[slot], w[slot] < low || w[slot] > high);
    };
    missWhen(w[OV_HM0], w[OV_HM0] > 20.0F);
    missWhen(w[OV_TM02], w[OV_TM02] > 35.0F || w[OV_TM02] < 0.5F);
    missWhen(w[OV_TP], w[OV_TP] >= 50.0F || w[OV_TP] < 0.5F);
    outside(OV_PEAK_DIRECTION, 0.0F, 360.0F);
    outside(OV_MEAN_DIRECTION, 0.0F, 360.0F);
    outside(OV_PEAK_SPREAD, 0.0F, 90.0F);
    outside(OV_RESULTANT_LENGTH, 0.0F, 1.0F);
    const int decisive[] = {
        OV_HM0, OV_TM02, OV_TP, OV_MEAN_DIRECTION, OV_PEAK_SPREAD, OV_RESULTANT_LENGTH};
    if (std::any_of(std::begin(decisive), std::end(decisive),
                    [w](int slot) { return w[slot] == kMissing; })) {
        rec.qualityFlags |= OV_FLAG_INVALID_PARAMETERS;
        for (const int slot : {OV_TM02, OV_PEAK_DIRECTION, OV_PEAK_SPREAD, OV_MEAN_DIRECTION,
                               OV_RESULTANT_LENGTH, OV_T_CROSSING}) {
            w[slot] = kMissing;
        }
        rec.checkedMeanPeriod = kMissing;
    }
}

void checkTilt(WaveVariables &rec) {
    const double cosine = std::cos(radians(rec.roll)) * std::cos(radians(rec.pitch));
    rec.tiltAngle = static_cast<float>(std::acos(cosine) * 180.0 / kPi);
    if (std::abs(static_cast<double>(rec.tiltAngle)) > kGreatestTilt) {
        rec.qualityFlags |= OV_FLAG_TILT;
    }
}

void checkSpectrumRise(WaveVariables &rec) {
    const int n = mainBinCount(rec);
    // Bin 0 is left out: a drop behind it alone is noise of the longest waves.
    for (int i = 2; i < n; ++i) {
        if (rec.spectrumPrs[i] < rec.spectrumPrs[i - 1]) {
            return;
        }
    }
    rec.qualityFlags |= OV_FLAG_RISING_SPECTRUM;
}

void checkSignal(WaveVariables &rec) {
    double sum = 0.0;
    for (int i = 0; i < rec.burstLength; ++i) {
        sum += static_cast<double>(std::fabs(rec.pressureSeries[i]));
    }
    if (rec.burstLength < 1 || sum / rec.burstLength < kLeastSignal) {
        rec.qualityFlags |= OV_FLAG_NO_SIGNAL;
    }
}

} // namespace ov
