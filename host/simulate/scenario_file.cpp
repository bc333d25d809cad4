#include "simulate/scenario_file.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include <fmt/format.h>
#include <toml++/toml.h>

#include "simulate/scenario_settings.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kMostHours = 1e6;

// The keys of one table, some of which are spoken for by what reads it.
class Keys {
public:
    Keys(const std::string &path, const toml::table &table) : path_(path), table_(table) {}

    [[nodiscard]] std::string nameOf(std::string_view key) const {
        const toml::node *node = table_.get(key);
        return fmt::format("{}, line {}: {}", path_, node->source().begin.line, key);
    }

    const toml::node *take(std::string_view key) {
        const toml::node *node = table_.get(key);
        if (node != nullptr) {
            taken_.emplace_back(key);
        }
        return node;
    }

    template <typename Target>
    void takeNumbers(const std::vector<NumberSetting<Target>> &settings, Target &target) {
        for (const auto &setting : settings) {
            if (const toml::node *node = take(setting.name)) {
                storeNumber(setting, nameOf(setting.name), number(setting.name, *node), target);
            }
        }
    }

    [[nodiscard]] double number(std::string_view key, const toml::node &node) const {
        if (!node.is_number()) {
            throw UserError(nameOf(key) + ": must be a number");
        }
        return *node.value<double>();
    }

    [[nodiscard]] std::vector<double> numbers(std::string_view key, const toml::node &node) const {
        const toml::array *array = node.as_array();
        if (array == nullptr) {
            throw UserError(nameOf(key) + ": must be a list of numbers in [ ]");
        }
        std::vector<double> values;
        for (const toml::node &element : *array) {
            values.push_back(number(key, element));
        }
        return values;
    }

    [[nodiscard]] std::string text(std::string_view key, const toml::node &node) const {
        if (!node.is_string()) {
            throw UserError(nameOf(key) + ": must be a text in quotes");
        }
        return *node.value<std::string>();
    }

    // The tables of [[key]]; none when there are none.
    std::vector<const toml::table *> takeTables(std::string_view key) {
        std::vector<const toml::table *> tables;
        const toml::node *node = take(key);
        if (node == nullptr) {
            return tables;
        }
        const toml::array *array = node->as_array();
        if (array == nullptr || !array->is_homogeneous<toml::table>()) {
            throw UserError(
                fmt::format("{}: must be tables that begin with [[{}]]", nameOf(key), key));
        }
        for (const toml::node &element : *array) {
            tables.push_back(element.as_table());
        }
        return tables;
    }

    // A key that nobody took is a slip of the pen.
    void refuseOthers() const {
        for (const auto &[key, node] : table_) {
            if (std::find(taken_.begin(), taken_.end(), key.str()) == taken_.end()) {
                throw UserError(nameOf(key.str()) +
                                ": is no setting of a scenario here; see docs/simulate.md");
            }
        }
    }

private:
    const std::string &path_;
    const toml::table &table_;
    std::vector<std::string> taken_;
};

void readSystem(Keys &keys, WaveSystem &system) {
    keys.takeNumbers(systemSettings(), system);
    if (const toml::node *shape = keys.take("shape")) {
        storeShape(keys.nameOf("shape"), keys.text("shape", *shape), system);
    }
}

// The sea at one time: place, current, the first wave system by plain keys, further ones as [[system]].
void readSea(const std::string &path, Keys &keys, SeaState &sea) {
    keys.takeNumbers(placeSettings(), sea);
    if (const toml::node *current = keys.take("current")) {
        storeCurrent(keys.nameOf("current"), keys.numbers("current", *current), sea);
    }
    readSystem(keys, sea.systems.front());
    const auto tables = keys.takeTables("system");
    if (!tables.empty()) {
        sea.systems.resize(1);
    }
    for (const toml::table *table : tables) {
        Keys systemKeys(path, *table);
        readSystem(systemKeys, sea.systems.emplace_back());
        systemKeys.refuseOthers();
    }
}

void readStart(const Keys &keys, const toml::node &node, Scenario &scenario) {
    std::ostringstream text;
    if (const auto *dateTime = node.as_date_time()) {
        text << dateTime->get();
    } else if (const auto *date = node.as_date()) {
        text << date->get();
    } else {
        text << keys.text("start", node);
    }
    storeStart(keys.nameOf("start"), text.str(), scenario);
}

void readDeployment(Keys &keys, Scenario &scenario) {
    keys.takeNumbers(deploymentSettings(), scenario);
    if (const toml::node *start = keys.take("start")) {
        readStart(keys, *start, scenario);
    }
    if (const toml::node *system = keys.take("velocity_system")) {
        storeVelocitySystem(keys.nameOf("velocity_system"), keys.text("velocity_system", *system),
                            scenario);
    }
    if (const toml::node *azimuth = keys.take("beam_azimuth")) {
        storeBeamAzimuth(keys.nameOf("beam_azimuth"), keys.numbers("beam_azimuth", *azimuth),
                         scenario);
    }
}

// Each state is the sea of the plain keys with what it says itself.
void readStates(const std::string &path, const std::vector<const toml::table *> &tables,
                Scenario &scenario) {
    static const NumberSetting<SeaAtHour> kHours{
        "hours", "after the start of the deployment", 0, kMostHours,
        [](SeaAtHour &state, double v) { state.hours = v; }};
    const SeaState common = scenario.states.front().sea;
    scenario.states.clear();
    for (const toml::table *table : tables) {
        Keys keys(path, *table);
        SeaAtHour state{0.0, common};
        const toml::node *hours = keys.take("hours");
        if (hours == nullptr) {
            throw UserError(
                fmt::format("{}, line {}: this state does not say when: give hours = ...", path,
                            table->source().begin.line));
        }
        storeNumber(kHours, keys.nameOf("hours"), keys.number("hours", *hours), state);
        readSea(path, keys, state.sea);
        keys.refuseOthers();
        scenario.states.push_back(state);
    }
}

std::string contents(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file || std::filesystem::is_directory(path)) {
        throw UserError(path + ": cannot be read; check the name and that it may be read");
    }
    return text.str();
}

} // namespace

Scenario readScenarioFile(const std::string &path) {
    toml::table table;
    try {
        table = toml::parse(contents(path));
    } catch (const toml::parse_error &error) {
        throw UserError(
            fmt::format("{}, line {}: {}", path, error.source().begin.line, error.description()));
    }
    Scenario scenario = plainScenario();
    Keys keys(path, table);
    readDeployment(keys, scenario);
    readSea(path, keys, scenario.states.front().sea);
    const auto states = keys.takeTables("state");
    keys.refuseOthers();
    if (!states.empty()) {
        readStates(path, states, scenario);
    }
    try {
        checkScenario(scenario);
    } catch (const UserError &error) {
        throw UserError(path + ": " + error.what());
    }
    return scenario;
}

} // namespace orvik
