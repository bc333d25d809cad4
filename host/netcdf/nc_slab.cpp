#include "netcdf/nc_slab.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace orvik {

namespace {

template <typename Number>
void unpackNumbers(const NcPacking &packing, const std::byte *raw, std::span<double> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        Number number{};
        std::memcpy(&number, raw + i * sizeof(Number), sizeof(Number));
        const auto value = static_cast<double>(number);
        const bool isMissing = std::find(packing.missing.begin(), packing.missing.end(), value) !=
                               packing.missing.end();
        values[i] = isMissing ? std::numeric_limits<double>::quiet_NaN()
                              : value * packing.scale + packing.offset;
    }
}

// Calls `use` with a number of the type; false when it is none.
template <typename Use> bool withNumber(nc_type type, const Use &use) {
    switch (type) {
    case NC_BYTE:
        return use(std::int8_t{}), true;
    case NC_UBYTE:
        return use(std::uint8_t{}), true;
    case NC_SHORT:
        return use(std::int16_t{}), true;
    case NC_USHORT:
        return use(std::uint16_t{}), true;
    case NC_INT:
        return use(std::int32_t{}), true;
    case NC_UINT:
        return use(std::uint32_t{}), true;
    case NC_INT64:
        return use(std::int64_t{}), true;
    case NC_UINT64:
        return use(std::uint64_t{}), true;
    case NC_FLOAT:
        return use(float{}), true;
    case NC_DOUBLE:
        return use(double{}), true;
    default:
        return false;
    }
}

} // namespace

bool isPackable(nc_type type) {
    return withNumber(type, [](auto) {});
}

std::size_t bytesOf(nc_type type) {
    std::size_t bytes = 0;
    withNumber(type, [&bytes](auto number) { bytes = sizeof number; });
    return bytes;
}

void unpack(const NcPacking &packing, const std::byte *raw, std::span<double> values) {
    withNumber(packing.type,
               [&](auto number) { unpackNumbers<decltype(number)>(packing, raw, values); });
}

NcSlab::NcSlab(const NcPacking &packing, Bytes bytes, const std::vector<std::size_t> &held,
               std::vector<std::size_t> count, std::size_t first)
    : packing_(&packing), bytes_(std::move(bytes)), count_(std::move(count)),
      stride_(count_.size()), first_(first) {
    std::size_t step = 1;
    for (std::size_t i = held.size(); i-- > 0;) {
        stride_[i] = step;
        step *= held[i];
    }
}

std::size_t NcSlab::size() const {
    std::size_t product = 1;
    for (const std::size_t length : count_) {
        product *= length;
    }
    return product;
}

void NcSlab::unpackFrom(std::size_t number, std::span<double> values) const {
    unpack(*packing_, bytes_->data() + (first_ + number) * bytesOf(packing_->type), values);
}

} // namespace orvik
