// compare_values FILE OTHER
// Compares two files of burst_values. Integers must be equal and floats within 2 units in the last place: what
// platforms may differ by because the mathematics of their C libraries does. Ends with 1 otherwise.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

namespace {

constexpr std::int64_t kAllowedUlp = 2;
constexpr std::int64_t kIncomparable = std::numeric_limits<std::int64_t>::max();

struct Summary {
    std::int64_t values = 0;
    std::int64_t different = 0;
    std::int64_t beyond = 0; // more than is allowed
    std::int64_t greatestUlp = 0;
    std::string greatestAt = "none";
};

// Neighbouring floats have neighbouring numbers, through zero, which has one for both its signs.
std::int64_t ordinal(std::uint32_t bits) {
    const auto magnitude = static_cast<std::int64_t>(bits & 0x7fffffffU);
    return (bits & 0x80000000U) != 0 ? -magnitude : magnitude;
}

bool readNumber(const std::string &word, int base, std::int64_t &number) {
    const char *const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number, base);
    return error == std::errc{} && stop == end;
}

std::int64_t ulpBetween(const std::string &a, const std::string &b) {
    std::int64_t first = 0;
    std::int64_t second = 0;
    if (!readNumber(a, 16, first) || !readNumber(b, 16, second)) {
        return kIncomparable;
    }
    const auto firstBits = static_cast<std::uint32_t>(first);
    const auto secondBits = static_cast<std::uint32_t>(second);
    if (std::isnan(std::bit_cast<float>(firstBits)) ||
        std::isnan(std::bit_cast<float>(secondBits))) {
        return kIncomparable; // the words differ, so one of the two is a number
    }
    return std::abs(ordinal(firstBits) - ordinal(secondBits));
}

void addDifference(bool isFloat, const std::string &place, const std::string &a,
                   const std::string &b, Summary &summary) {
    ++summary.different;
    const std::int64_t ulp = isFloat ? ulpBetween(a, b) : kIncomparable;
    if (isFloat && ulp > summary.greatestUlp) {
        summary.greatestUlp = ulp;
        summary.greatestAt = place;
    }
    if (ulp > kAllowedUlp) {
        ++summary.beyond;
        constexpr std::int64_t kShown = 20;
        if (summary.beyond <= kShown) {
            std::printf("%s: %s and %s\n", place.c_str(), a.c_str(), b.c_str());
        }
    }
}

// False when the two lines are not of the same field or not of the same length.
bool compareLines(const std::string &a, const std::string &b, Summary &summary) {
    std::istringstream first(a);
    std::istringstream second(b);
    std::string kind, burst, field, otherKind, otherBurst, otherField;
    first >> kind >> burst >> field;
    second >> otherKind >> otherBurst >> otherField;
    if (kind != otherKind || burst != otherBurst || field != otherField) {
        return false;
    }
    std::string value;
    std::string otherValue;
    for (int i = 0; first >> value; ++i) {
        if (!(second >> otherValue)) {
            return false;
        }
        ++summary.values;
        if (value != otherValue) {
            addDifference(kind == "f", burst + " " + field + "[" + std::to_string(i) + "]", value,
                          otherValue, summary);
        }
    }
    return !(second >> otherValue);
}

// False when the files do not hold the same fields.
bool compareFiles(std::ifstream &first, std::ifstream &second, Summary &summary) {
    std::string a;
    std::string b;
    while (std::getline(first, a)) {
        if (!std::getline(second, b) || !compareLines(a, b, summary)) {
            std::printf("other fields, or another number of values:\n%.80s\n%.80s\n", a.c_str(),
                        b.c_str());
            return false;
        }
    }
    return !std::getline(second, b);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fputs("usage: compare_values FILE OTHER\n", stderr);
        return 2;
    }
    std::ifstream first(argv[1]);
    std::ifstream second(argv[2]);
    if (!first || !second) {
        std::fprintf(stderr, "%s cannot be read\n", first ? argv[2] : argv[1]);
        return 2;
    }
    Summary summary;
    const bool sameFields = compareFiles(first, second, summary);
    std::printf("%lld values, %lld differ, %lld of them by more than %lld ulp or in an integer\n",
                static_cast<long long>(summary.values), static_cast<long long>(summary.different),
                static_cast<long long>(summary.beyond), static_cast<long long>(kAllowedUlp));
    std::printf("greatest difference: %lld ulp (%s)\n", static_cast<long long>(summary.greatestUlp),
                summary.greatestAt.c_str());
    return sameFields && summary.values > 0 && summary.beyond == 0 ? 0 : 1;
}
