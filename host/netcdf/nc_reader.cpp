#include "netcdf/nc_file.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "user_error.hpp"

namespace orvik {

std::optional<std::size_t> NcVariable::axis(const std::string &dimension) const {
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        if (dimensions[i].name == dimension) {
            return i;
        }
    }
    return std::nullopt;
}

std::size_t NcVariable::size() const {
    std::size_t product = 1;
    for (const NcDimension &dimension : dimensions) {
        product *= dimension.length;
    }
    return product;
}

std::string NcVariable::shapeText() const {
    std::string text = "(";
    for (const NcDimension &dimension : dimensions) {
        text += (text.size() > 1 ? ", " : "") + dimension.name;
    }
    return text + ")";
}

// By default each variable may keep 16 MB of chunks: a deployment of any length would fill that for all of them.
void useSmallChunkCaches() {
    constexpr std::size_t kSlots = 1009;
    nc_set_chunk_cache(kChunkCache, kSlots, 0.75F);
}

NcReader::NcReader(const std::string &path) : path_(path) {
    useSmallChunkCaches();
    const int status = nc_open(path.c_str(), NC_NOWRITE, &id_);
    if (status != NC_NOERR) {
        throw UserError("cannot open " + path + ": " + nc_strerror(status) +
                        (status > 0 ? "" : " (is it a complete netCDF file?)"));
    }
}

NcReader::~NcReader() { nc_close(id_); }

void NcReader::check(int status, const std::string &what) const {
    if (status != NC_NOERR) {
        throw UserError("cannot read " + what + " of " + path_ + ": " + nc_strerror(status));
    }
}

std::optional<std::size_t> NcReader::dimensionLength(const std::string &name) const {
    int dimension = -1;
    if (nc_inq_dimid(id_, name.c_str(), &dimension) != NC_NOERR) {
        return std::nullopt;
    }
    std::size_t length = 0;
    check(nc_inq_dimlen(id_, dimension, &length), "dimension " + name);
    return length;
}

NcVariable NcReader::describe(int id) const {
    NcVariable variable;
    variable.id = id;
    char name[NC_MAX_NAME + 1] = {};
    int rank = 0;
    check(nc_inq_var(id_, id, name, &variable.type, &rank, nullptr, nullptr), "a variable");
    variable.name = name;
    std::vector<int> ids(static_cast<std::size_t>(rank));
    check(nc_inq_vardimid(id_, id, ids.data()), variable.name);
    for (const int dimension : ids) {
        char dimensionName[NC_MAX_NAME + 1] = {};
        std::size_t length = 0;
        check(nc_inq_dim(id_, dimension, dimensionName, &length), variable.name);
        variable.dimensions.push_back({dimensionName, length});
    }
    return variable;
}

std::vector<NcVariable> NcReader::variables() const {
    int count = 0;
    check(nc_inq_nvars(id_, &count), "the variables");
    std::vector<NcVariable> all;
    for (int id = 0; id < count; ++id) {
        all.push_back(describe(id));
    }
    return all;
}

std::optional<NcVariable> NcReader::find(const std::string &name) const {
    int id = -1;
    if (nc_inq_varid(id_, name.c_str(), &id) != NC_NOERR) {
        return std::nullopt;
    }
    return describe(id);
}

std::vector<std::string> NcReader::attributeNames() const {
    int count = 0;
    check(nc_inq_natts(id_, &count), "the attributes");
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        char name[NC_MAX_NAME + 1] = {};
        check(nc_inq_attname(id_, NC_GLOBAL, i, name), "the attributes");
        names.emplace_back(name);
    }
    return names;
}

std::optional<std::string> NcReader::text(const NcVariable *variable,
                                          const std::string &attribute) const {
    const int id = variable != nullptr ? variable->id : NC_GLOBAL;
    nc_type type = NC_NAT;
    std::size_t length = 0;
    if (nc_inq_att(id_, id, attribute.c_str(), &type, &length) != NC_NOERR) {
        return std::nullopt;
    }
    if (type == NC_STRING && length == 1) {
        char *value = nullptr;
        check(nc_get_att_string(id_, id, attribute.c_str(), &value), "attribute " + attribute);
        std::string result = value != nullptr ? value : "";
        nc_free_string(1, &value);
        return result;
    }
    if (type != NC_CHAR) {
        return std::nullopt;
    }
    std::string value(length, '\0');
    check(nc_get_att_text(id_, id, attribute.c_str(), value.data()), "attribute " + attribute);
    value.resize(std::min(value.size(), value.find('\0')));
    return value;
}

std::optional<double> NcReader::number(const NcVariable &variable,
                                       const std::string &attribute) const {
    nc_type type = NC_NAT;
    std::size_t length = 0;
    if (nc_inq_att(id_, variable.id, attribute.c_str(), &type, &length) != NC_NOERR) {
        return std::nullopt;
    }
    double value = 0.0;
    if (type == NC_CHAR || type == NC_STRING || length != 1 ||
        nc_get_att_double(id_, variable.id, attribute.c_str(), &value) != NC_NOERR) {
        throw UserError("attribute " + attribute + " of " + variable.name + " in " + path_ +
                        " must be one number");
    }
    return value;
}

// The raw values that stand for "nothing here".
std::vector<double> NcReader::markers(const NcVariable &variable) const {
    std::vector<double> values;
    for (const char *attribute : {"_FillValue", "missing_value"}) {
        if (const auto value = number(variable, attribute)) {
            values.push_back(*value);
        }
    }
    if (!values.empty()) {
        return values;
    }
    // Cells that were never written hold the type's own fill value; bytes have none, all their values may be data.
    switch (variable.type) {
    case NC_SHORT:
        return {NC_FILL_SHORT};
    case NC_USHORT:
        return {NC_FILL_USHORT};
    case NC_INT:
        return {NC_FILL_INT};
    case NC_UINT:
        return {NC_FILL_UINT};
    case NC_FLOAT:
        return {static_cast<double>(NC_FILL_FLOAT)};
    case NC_DOUBLE:
        return {NC_FILL_DOUBLE};
    default:
        return {};
    }
}

// A chunk that does not fit into the cache would be unpacked anew for every burst that lies in it.
void NcReader::makeRoomFor(const NcVariable &variable) const {
    constexpr std::size_t kMost = std::size_t{64} << 20U;
    constexpr std::size_t kSlots = 1009;
    if (!roomMade_.insert(variable.id).second) {
        return;
    }
    int storage = NC_CONTIGUOUS;
    std::vector<std::size_t> lengths(std::max<std::size_t>(variable.dimensions.size(), 1));
    if (nc_inq_var_chunking(id_, variable.id, &storage, lengths.data()) != NC_NOERR ||
        storage != NC_CHUNKED) {
        return;
    }
    std::size_t bytes = 0;
    nc_inq_type(id_, variable.type, nullptr, &bytes);
    for (std::size_t i = 0; i < variable.dimensions.size(); ++i) {
        bytes *= lengths[i];
    }
    if (bytes > kChunkCache) {
        nc_set_var_chunk_cache(id_, variable.id, std::min(2 * bytes, kMost), kSlots, 0.75F);
    }
}

std::vector<double> NcReader::read(const NcVariable &variable,
                                   const std::vector<std::size_t> &start,
                                   const std::vector<std::size_t> &count) const {
    std::size_t total = 1;
    for (const std::size_t length : count) {
        total *= length;
    }
    std::vector<double> values(total);
    makeRoomFor(variable);
    check(nc_get_vara_double(id_, variable.id, start.data(), count.data(), values.data()),
          "variable " + variable.name);
    const std::vector<double> missing = markers(variable);
    const double scale = number(variable, "scale_factor").value_or(1.0);
    const double offset = number(variable, "add_offset").value_or(0.0);
    for (double &value : values) {
        const bool isMissing = std::find(missing.begin(), missing.end(), value) != missing.end();
        value = isMissing ? std::numeric_limits<double>::quiet_NaN() : value * scale + offset;
    }
    return values;
}

std::vector<double> NcReader::readAll(const NcVariable &variable) const {
    std::vector<std::size_t> count;
    for (const NcDimension &dimension : variable.dimensions) {
        count.push_back(dimension.length);
    }
    return read(variable, std::vector<std::size_t>(count.size(), 0), count);
}

std::string NcReader::readText(const NcVariable &variable,
                               const std::vector<std::size_t> &start) const {
    char *value = nullptr;
    check(nc_get_var1_string(id_, variable.id, start.data(), &value), "variable " + variable.name);
    std::string text = value != nullptr ? value : "";
    nc_free_string(1, &value);
    return text;
}

} // namespace orvik
