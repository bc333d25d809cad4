// The settings of a scenario by name, for scenario files and the command line alike.
#pragma once

#include <string>
#include <vector>

#include "simulate/scenario.hpp"

namespace orvik {

// A setting that is one number. Scenario files use the name as it is, options have '-' for '_'.
template <typename Target> struct NumberSetting {
    const char *name;
    const char *meaning;
    double lowest;
    double highest;
    void (*store)(Target &, double);
    bool whole = false;
};

const std::vector<NumberSetting<Scenario>> &
deploymentSettings();                                           // instrument, bursts, faults, tide
const std::vector<NumberSetting<SeaState>> &placeSettings();    // depth and attitude
const std::vector<NumberSetting<WaveSystem>> &systemSettings(); // one wave system

// In all that follows `name` is the option or key as the user wrote it; the text of a UserError begins with it.

// Throws UserError when `value` is not from `lowest` to `highest`.
void checkNumber(const std::string &name, double value, double lowest, double highest, bool whole,
                 const char *meaning);

// Throws UserError when `value` is outside what the setting allows.
template <typename Target>
void storeNumber(const NumberSetting<Target> &setting, const std::string &name, double value,
                 Target &target) {
    checkNumber(name, value, setting.lowest, setting.highest, setting.whole, setting.meaning);
    setting.store(target, value);
}

void storeStart(const std::string &name, const std::string &text, Scenario &scenario);
void storeVelocitySystem(const std::string &name, const std::string &text, Scenario &scenario);
void storeBeamAzimuth(const std::string &name, const std::vector<double> &degrees,
                      Scenario &scenario);
void storeCurrent(const std::string &name, const std::vector<double> &speedAndDirection,
                  SeaState &sea);
void storeShape(const std::string &name, const std::string &text, WaveSystem &system);

// "hs=1,tp=12,dir=200,spread=15": the settings of a wave system, long or short names.
WaveSystem systemOfText(const std::string &name, const std::string &text);

} // namespace orvik
