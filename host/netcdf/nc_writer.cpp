#include "netcdf/nc_file.hpp"

#include <cmath>
#include <limits>

#include "user_error.hpp"

namespace orvik {

namespace {

constexpr int kDeflateLevel = 4;

} // namespace

NcWriter::NcWriter(const std::string &path) : part_(path) {
    useSmallChunkCaches();
    const int status = nc_create(part_.path().c_str(), NC_NETCDF4 | NC_CLOBBER, &id_);
    if (status != NC_NOERR) {
        throw WriteError("cannot create " + path + ": " + nc_strerror(status) +
                         " (does the directory exist, and may you write there?)");
    }
    open_ = true;
}

NcWriter::~NcWriter() {
    if (open_) {
        nc_close(id_);
    }
}

void NcWriter::check(int status, const std::string &what) const {
    if (status != NC_NOERR) {
        throw WriteError("cannot write " + what + " to " + part_.target() + ": " +
                         nc_strerror(status) + (status == NC_ERANGE ? "" : " (is the disk full?)"));
    }
}

void NcWriter::checkCount(const std::vector<std::size_t> &count, std::size_t values) const {
    std::size_t total = 1;
    for (const std::size_t length : count) {
        total *= length;
    }
    if (total != values) {
        throw std::logic_error("a write to " + part_.target() + " has " + std::to_string(values) +
                               " values for " + std::to_string(total) + " places");
    }
}

int NcWriter::addDimension(const std::string &name, std::size_t length) {
    int dimension = -1;
    check(nc_def_dim(id_, name.c_str(), length, &dimension), "dimension " + name);
    return dimension;
}

int NcWriter::dimension(const std::string &name) const {
    int dimension = -1;
    check(nc_inq_dimid(id_, name.c_str(), &dimension), "dimension " + name);
    return dimension;
}

int NcWriter::define(const std::string &name, nc_type type, const std::vector<int> &dimensions) {
    int variable = -1;
    check(nc_def_var(id_, name.c_str(), type, static_cast<int>(dimensions.size()),
                     dimensions.data(), &variable),
          "variable " + name);
    if (!dimensions.empty() && type != NC_STRING) {
        check(nc_def_var_deflate(id_, variable, 1, 1, kDeflateLevel), "variable " + name);
    }
    return variable;
}

int NcWriter::addVariable(const std::string &name, nc_type type, const std::vector<int> &dimensions,
                          const Attributes &attributes) {
    const int variable = define(name, type, dimensions);
    if (type == NC_FLOAT) {
        const float fill = std::numeric_limits<float>::quiet_NaN();
        check(nc_def_var_fill(id_, variable, NC_FILL, &fill), "variable " + name);
    } else if (type == NC_DOUBLE) {
        const double fill = std::numeric_limits<double>::quiet_NaN();
        check(nc_def_var_fill(id_, variable, NC_FILL, &fill), "variable " + name);
    }
    for (const auto &[attribute, value] : attributes) {
        setText(variable, attribute, value);
    }
    return variable;
}

int NcWriter::addCoordinate(const std::string &name, nc_type type,
                            const std::vector<int> &dimensions, const Attributes &attributes) {
    const int variable = define(name, type, dimensions);
    for (const auto &[attribute, value] : attributes) {
        setText(variable, attribute, value);
    }
    return variable;
}

void NcWriter::setChunks(int variable, const std::vector<std::size_t> &lengths) {
    check(nc_def_var_chunking(id_, variable, NC_CHUNKED, lengths.data()), "the header");
}

void NcWriter::setFill(int variable, unsigned short value) {
    check(nc_def_var_fill(id_, variable, NC_FILL, &value), "a fill value");
}

void NcWriter::setFill(int variable, short value) {
    check(nc_def_var_fill(id_, variable, NC_FILL, &value), "a fill value");
}

void NcWriter::setFill(int variable, int value) {
    check(nc_def_var_fill(id_, variable, NC_FILL, &value), "a fill value");
}

void NcWriter::setText(int variable, const std::string &attribute, const std::string &value) {
    check(nc_put_att_text(id_, variable, attribute.c_str(), value.size(), value.data()),
          "attribute " + attribute);
}

void NcWriter::setNumber(int variable, const std::string &attribute, double value) {
    check(nc_put_att_double(id_, variable, attribute.c_str(), NC_DOUBLE, 1, &value),
          "attribute " + attribute);
}

void NcWriter::setIntegers(int variable, const std::string &attribute,
                           const std::vector<int> &values) {
    check(nc_put_att_int(id_, variable, attribute.c_str(), NC_INT, values.size(), values.data()),
          "attribute " + attribute);
}

void NcWriter::endDefinitions() { check(nc_enddef(id_), "the header"); }

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::vector<std::size_t> &count, const std::vector<double> &values) {
    checkCount(count, values.size());
    check(nc_put_vara_double(id_, variable, start.data(), count.data(), values.data()), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::vector<std::size_t> &count, const std::vector<float> &values) {
    checkCount(count, values.size());
    check(nc_put_vara_float(id_, variable, start.data(), count.data(), values.data()), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::vector<std::size_t> &count,
                     const std::vector<unsigned short> &values) {
    checkCount(count, values.size());
    check(nc_put_vara_ushort(id_, variable, start.data(), count.data(), values.data()), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::vector<std::size_t> &count,
                     const std::vector<unsigned char> &values) {
    checkCount(count, values.size());
    check(nc_put_vara_uchar(id_, variable, start.data(), count.data(), values.data()), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::vector<std::size_t> &count, const std::vector<short> &values) {
    checkCount(count, values.size());
    check(nc_put_vara_short(id_, variable, start.data(), count.data(), values.data()), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::vector<std::size_t> &count,
                     const std::vector<std::string> &values) {
    checkCount(count, values.size());
    std::vector<const char *> texts;
    texts.reserve(values.size());
    for (const std::string &value : values) {
        texts.push_back(value.c_str());
    }
    check(nc_put_vara_string(id_, variable, start.data(), count.data(), texts.data()), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start, double value) {
    check(nc_put_var1_double(id_, variable, start.data(), &value), "data");
}

void NcWriter::writeCharacters(int variable, const std::vector<std::size_t> &start,
                               const std::vector<std::size_t> &count,
                               const std::string &characters) {
    checkCount(count, characters.size());
    check(nc_put_vara_text(id_, variable, start.data(), count.data(), characters.data()), "data");
}

void NcWriter::publish() {
    check(nc_sync(id_), "data");
    part_.publish();
}

void NcWriter::commit() {
    open_ = false;
    check(nc_close(id_), "data");
    part_.commit();
}

} // namespace orvik
