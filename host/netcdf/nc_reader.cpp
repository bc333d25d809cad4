#include "netcdf/nc_file.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "lower_case.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

// The type of as many bytes without a sign: files of the classic formats have none of their own.
nc_type unsignedType(nc_type type) {
    switch (type) {
    case NC_BYTE:
        return NC_UBYTE;
    case NC_SHORT:
        return NC_USHORT;
    case NC_INT:
        return NC_UINT;
    case NC_INT64:
        return NC_UINT64;
    default:
        return type;
    }
}

// What cells that were never written hold where no _FillValue is told; bytes have none, all their values may be data.
std::vector<double> fillOfUnwritten(nc_type type) {
    switch (type) {
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

// A marker as one of the numbers that it is compared with: of no more digits than these have, and without a sign where they
// are taken so.
double asKept(nc_type type, bool signDropped, double marker) {
    constexpr double kMostFloat = std::numeric_limits<float>::max();
    if (type == NC_FLOAT && std::abs(marker) <= kMostFloat) {
        return static_cast<double>(static_cast<float>(marker));
    }
    return signDropped && marker < 0.0
               ? marker + std::ldexp(1.0, 8 * static_cast<int>(bytesOf(type)))
               : marker;
}

} // namespace

std::optional<std::size_t> NcVariable::axis(const std::string &dimension) const {
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
        if (dimensions[i].name == dimension) {
            return i;
        }
    }
    return std::nullopt;
}

std::vector<std::size_t> NcVariable::lengths() const {
    std::vector<std::size_t> all;
    for (const NcDimension &dimension : dimensions) {
        all.push_back(dimension.length);
    }
    return all;
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
    all.reserve(static_cast<std::size_t>(count));
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

std::vector<double> NcReader::numbers(const NcVariable &variable,
                                      const std::string &attribute) const {
    nc_type type = NC_NAT;
    std::size_t length = 0;
    if (nc_inq_att(id_, variable.id, attribute.c_str(), &type, &length) != NC_NOERR) {
        return {};
    }
    std::vector<double> values(length);
    if (type == NC_CHAR || type == NC_STRING || length == 0 ||
        nc_get_att_double(id_, variable.id, attribute.c_str(), values.data()) != NC_NOERR) {
        throw UserError("attribute " + attribute + " of " + variable.name + " in " + path_ +
                        " must be a number");
    }
    return values;
}

std::optional<double> NcReader::number(const NcVariable &variable,
                                       const std::string &attribute) const {
    const std::vector<double> values = numbers(variable, attribute);
    if (values.size() > 1) {
        throw UserError("attribute " + attribute + " of " + variable.name + " in " + path_ +
                        " must be one number");
    }
    return values.empty() ? std::nullopt : std::optional(values.front());
}

// The raw values that stand for "nothing here".
std::vector<double> NcReader::markers(const NcVariable &variable) const {
    std::vector<double> values = numbers(variable, "_FillValue");
    if (values.empty()) {
        values = fillOfUnwritten(variable.type);
    }
    const std::vector<double> told = numbers(variable, "missing_value");
    values.insert(values.end(), told.begin(), told.end());
    return values;
}

// Whether a signed type holds numbers without a sign. Conventions spell the word in small letters, programs do not.
bool NcReader::isUnsigned(const NcVariable &variable) const {
    int attribute = -1;
    if (nc_inq_attid(id_, variable.id, "_Unsigned", &attribute) != NC_NOERR) {
        return false;
    }
    const std::string word = lowerCase(text(&variable, "_Unsigned").value_or(""));
    if (word != "true" && word != "false") {
        throw UserError("attribute _Unsigned of " + variable.name + " in " + path_ +
                        " must be the text \"true\" or \"false\"");
    }
    return word == "true";
}

const NcPacking &NcReader::packing(const NcVariable &variable) const {
    const auto known = packings_.find(variable.id);
    if (known != packings_.end()) {
        return known->second;
    }
    // Of a type that is not of numbers the netCDF library says so when it is asked for numbers.
    NcPacking found{isPackable(variable.type) ? variable.type : NC_DOUBLE, markers(variable),
                    number(variable, "scale_factor").value_or(1.0),
                    number(variable, "add_offset").value_or(0.0)};
    if (isUnsigned(variable)) {
        found.type = unsignedType(found.type);
    }
    for (double &marker : found.missing) {
        marker = asKept(found.type, found.type != variable.type, marker);
    }
    return packings_.emplace(variable.id, found).first->second;
}

std::vector<std::byte> NcReader::readRaw(const NcVariable &variable,
                                         const std::vector<std::size_t> &start,
                                         const std::vector<std::size_t> &count,
                                         std::ptrdiff_t step) const {
    const nc_type type = packing(variable).type;
    std::size_t bytes = bytesOf(type);
    for (const std::size_t length : count) {
        bytes *= length;
    }
    std::vector<std::byte> raw(bytes);
    int status = NC_NOERR;
    if (!isPackable(variable.type)) {
        status = nc_get_vara_double(id_, variable.id, start.data(), count.data(),
                                    reinterpret_cast<double *>(raw.data()));
    } else if (step == 1) {
        status = nc_get_vara(id_, variable.id, start.data(), count.data(), raw.data());
    } else {
        const std::vector<std::ptrdiff_t> steps(count.size(), step);
        status =
            nc_get_vars(id_, variable.id, start.data(), count.data(), steps.data(), raw.data());
    }
    check(status, "variable " + variable.name);
    return raw;
}

std::vector<double> NcReader::unpacked(const NcVariable &variable,
                                       const std::vector<std::byte> &raw) const {
    const NcPacking &packed = packing(variable);
    std::vector<double> values(raw.size() / bytesOf(packed.type));
    unpack(packed, raw.data(), values);
    return values;
}

std::vector<double> NcReader::read(const NcVariable &variable,
                                   const std::vector<std::size_t> &start,
                                   const std::vector<std::size_t> &count) const {
    return unpacked(variable, readRaw(variable, start, count));
}

std::vector<double> NcReader::readEvery(const NcVariable &variable, std::size_t step) const {
    return unpacked(variable, readRaw(variable, {0}, {(variable.size() + step - 1) / step},
                                      static_cast<std::ptrdiff_t>(step)));
}

NcSlab::Bytes NcReader::readPlaces(const NcVariable &variable, std::optional<std::size_t> axis,
                                   std::size_t first, std::size_t places) const {
    std::vector<std::size_t> start(variable.dimensions.size(), 0);
    std::vector<std::size_t> count = variable.lengths();
    if (axis) {
        start.at(*axis) = first;
        count.at(*axis) = places;
    }
    return std::make_shared<const std::vector<std::byte>>(readRaw(variable, start, count));
}

NcSlab NcReader::readSlab(const NcVariable &variable, std::optional<std::size_t> axis,
                          std::size_t first, std::size_t places) const {
    std::vector<std::size_t> count = variable.lengths();
    if (axis) {
        count.at(*axis) = places;
    }
    const auto course = ahead_.find(variable.id);
    if (!axis || course == ahead_.end() || course->second.axis != *axis ||
        course->second.most <= places) {
        return {packing(variable), readPlaces(variable, axis, first, places), count, count, 0};
    }
    Ahead &ahead = course->second;
    if (first < ahead.first || first + places > ahead.first + ahead.places) {
        advance(ahead, variable, first, places);
    }
    std::vector<std::size_t> held = count;
    held.at(*axis) = ahead.places;
    std::size_t number = first - ahead.first;
    for (std::size_t i = *axis + 1; i < held.size(); ++i) {
        number *= held[i];
    }
    return {packing(variable), ahead.bytes, held, count, number};
}

// On to the end of a chunk, lest the next step unpack it once more.
void NcReader::advance(Ahead &ahead, const NcVariable &variable, std::size_t first,
                       std::size_t places) const {
    const std::size_t length = variable.dimensions.at(ahead.axis).length;
    const std::size_t limit = std::min(first + ahead.most, length);
    const std::size_t ofChunks = limit / ahead.chunk * ahead.chunk;
    const std::size_t end = limit == length || ofChunks < first + places ? limit : ofChunks;
    ahead.places = 0;
    ahead.bytes.reset();
    ahead.bytes = readPlaces(variable, ahead.axis, first, end - first);
    ahead.first = first;
    ahead.places = end - first;
}

// Empty when it is not kept in chunks.
std::vector<std::size_t> NcReader::chunkLengths(const NcVariable &variable) const {
    int storage = NC_CONTIGUOUS;
    std::vector<std::size_t> lengths(std::max<std::size_t>(variable.dimensions.size(), 1));
    if (nc_inq_var_chunking(id_, variable.id, &storage, lengths.data()) != NC_NOERR ||
        storage != NC_CHUNKED) {
        lengths.clear();
    }
    return lengths;
}

void NcReader::readAhead(const std::vector<Course> &courses, std::size_t most) const {
    ahead_.clear();
    std::size_t bytes = 0; // of one place of all that are read ahead
    for (const auto &[variable, axis] : courses) {
        const std::vector<std::size_t> chunk = chunkLengths(variable);
        const std::size_t length = variable.dimensions.at(axis).length;
        if (chunk.empty() || chunk.at(axis) == 1 || length == 0 || !isPackable(variable.type)) {
            continue;
        }
        const std::size_t ofPlace = variable.size() / length * bytesOf(variable.type);
        if (2 * chunk[axis] * ofPlace > kChunkCache) { // else the file's own cache serves
            bytes += ofPlace;
            ahead_[variable.id] = {axis, chunk[axis], 0, 0, 0, nullptr};
        }
    }
    const std::size_t places = bytes > 0 ? most / bytes : 0;
    for (auto &[id, ahead] : ahead_) {
        ahead.most = places;
    }
}

std::vector<double> NcReader::readAll(const NcVariable &variable) const {
    return read(variable, std::vector<std::size_t>(variable.dimensions.size(), 0),
                variable.lengths());
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
