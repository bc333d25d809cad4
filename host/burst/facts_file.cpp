#include "burst/facts_file.hpp"

#include <cmath>
#include <optional>
#include <sstream>

#include <fmt/format.h>
#include <toml++/toml.h>

#include "burst/date_text.hpp"

namespace orvik {

namespace {

[[noreturn]] void refuse(const std::string &path, const toml::node &node, const std::string &why) {
    throw UserError(fmt::format("{} line {}: {}", path, node.source().begin.line, why));
}

std::string numberText(const std::string &path, const std::string &name, const toml::node &node) {
    const auto value = node.value<double>();
    if (!node.is_number() || !value || !std::isfinite(*value)) {
        refuse(path, node, name + " must be a number, without quotes");
    }
    return fmt::format("{}", *value); // the shortest text that reads back the same
}

// A date of TOML, or one in quotes; without an offset it is of UTC.
std::optional<std::string> dateText(const toml::node &node) {
    const auto date = node.value<toml::date_time>();
    if (!date) {
        return node.value<std::string>();
    }
    std::ostringstream text;
    text << *date;
    return text.str();
}

std::string timeText(const std::string &path, const std::string &name, const toml::node &node) {
    if (node.is_number()) {
        return numberText(path, name, node);
    }
    const auto text = dateText(node);
    if (!text || !parsedDate(*text)) {
        refuse(path, node,
               name + " must be a date of UTC such as 2008-09-09T00:00:00Z, or a number of seconds "
                      "since 1970, without quotes");
    }
    return *text;
}

std::string valueText(const std::string &path, const Fact &fact, const toml::node &node) {
    const toml::array *list = node.as_array();
    const std::size_t count = list != nullptr ? list->size() : 1;
    if (!fact.takes(count) || (list == nullptr) != (fact.most == 1)) {
        refuse(path, node,
               fact.most == 1 ? std::string(fact.name) + " must be one number"
                              : std::string(fact.name) + " must be a list of " + countText(fact) +
                                    " numbers: " + fact.example);
    }
    if (list == nullptr) {
        return fact.name == std::string("time") ? timeText(path, fact.name, node)
                                                : numberText(path, fact.name, node);
    }
    std::string text;
    for (const toml::node &element : *list) {
        if (!text.empty()) {
            text += ',';
        }
        text += numberText(path, fact.name, element);
    }
    return text;
}

toml::table parsedFile(const std::string &path) {
    try {
        return toml::parse_file(path);
    } catch (const toml::parse_error &error) {
        const auto line = error.source().begin.line;
        throw UserError(line > 0 ? fmt::format("{} line {}: {}", path, line, error.description())
                                 : fmt::format("cannot read {}: {}", path, error.description()));
    }
}

} // namespace

Overrides readFacts(const std::string &path) {
    Overrides facts;
    for (const auto &[key, node] : parsedFile(path)) {
        const std::string name(key.str());
        const Fact *fact = findFact(name);
        if (fact == nullptr) {
            std::string known;
            for (const Fact &candidate : factTable()) {
                known += known.empty() ? "" : ", ";
                known += candidate.name;
            }
            refuse(path, node, fmt::format("{} is no fact; known are {}", name, known));
        }
        facts[name] = valueText(path, *fact, node);
        facts.factsFiles[name] = path;
    }
    return facts;
}

} // namespace orvik
