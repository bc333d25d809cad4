#include "report/packing.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <zlib.h>

namespace orvik {

namespace {

using Bytes = std::vector<unsigned char>;

Bytes deflated(const Bytes &bytes) {
    uLongf length = compressBound(static_cast<uLong>(bytes.size()));
    Bytes packed(length);
    if (compress2(packed.data(), &length, bytes.data(), static_cast<uLong>(bytes.size()),
                  Z_BEST_COMPRESSION) != Z_OK) {
        throw std::runtime_error("not enough memory to pack the report's data");
    }
    packed.resize(length);
    return packed;
}

std::string base64(const Bytes &bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8U | (k < count ? bytes[i + k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? kDigits[group >> (18U - 6U * k) & 63U] : '=';
        }
    }
    return text;
}

std::string pack(const Bytes &bytes) { return base64(deflated(bytes)); }

} // namespace

std::string packFloats(const std::vector<double> &values) {
    Bytes bytes;
    bytes.reserve(values.size() * 4);
    for (const double value : values) {
        const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(value));
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<unsigned char>(bits >> shift));
        }
    }
    return pack(bytes);
}

std::vector<std::uint16_t> decimalCodes(const std::vector<double> &values, int digits, int lowest) {
    const double first = std::pow(10.0, digits - 1);
    const double end = 10.0 * first;
    std::vector<std::uint16_t> codes;
    codes.reserve(values.size());
    for (const double value : values) {
        if (!std::isfinite(value)) {
            codes.push_back(0);
            continue;
        }
        int exponent = value > 0.0 ? static_cast<int>(std::floor(std::log10(value))) : lowest - 1;
        double mantissa = std::round(value * std::pow(10.0, digits - 1 - exponent));
        if (mantissa >= end) {
            mantissa = first;
            ++exponent;
        }
        if (exponent < lowest) {
            codes.push_back(1);
            continue;
        }
        const double code = 2.0 + (exponent - lowest) * (end - first) + mantissa - first;
        codes.push_back(static_cast<std::uint16_t>(
            std::clamp(code, 2.0, double{std::numeric_limits<std::uint16_t>::max()})));
    }
    return codes;
}

std::vector<std::uint16_t> stepCodes(const std::vector<double> &values, double step) {
    constexpr double kMost = std::numeric_limits<std::uint16_t>::max();
    std::vector<std::uint16_t> codes;
    codes.reserve(values.size());
    for (const double value : values) {
        codes.push_back(std::isfinite(value) ? static_cast<std::uint16_t>(std::clamp(
                                                   1.0 + std::round(value / step), 1.0, kMost))
                                             : std::uint16_t{0});
    }
    return codes;
}

std::string packCodes(const std::vector<std::uint16_t> &codes) {
    Bytes bytes(codes.size() * 2);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(codes[i] >> 8U);
        bytes[codes.size() + i] = static_cast<unsigned char>(codes[i]);
    }
    return pack(bytes);
}

int greatestExponent(const std::vector<double> &values) {
    double most = 0.0;
    for (const double value : values) {
        if (std::isfinite(value)) {
            most = std::max(most, value);
        }
    }
    return most > 0.0 ? static_cast<int>(std::floor(std::log10(most))) : 0;
}

} // namespace orvik
