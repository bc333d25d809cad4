#include "netcdf/nc_file.hpp"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <system_error>

#include <unistd.h>

#include "user_error.hpp"

namespace orvik {

namespace {

constexpr int kDeflateLevel = 4;

// A hidden neighbour of `path`, so that the final rename stays on one file system.
std::string temporaryName(const std::string &path) {
    const std::filesystem::path target(path);
    std::string name = ".";
    name += target.filename().string();
    name += '.';
    name += std::to_string(getpid());
    name += ".part";
    return (target.parent_path() / name).string();
}

// The process that a part file `name` of `target` belongs to; nothing for other files.
std::optional<pid_t> ownerOfPart(const std::string &name, const std::string &target) {
    const std::string before = "." + target + ".";
    const std::string after = ".part";
    if (!name.starts_with(before) || !name.ends_with(after) ||
        name.size() <= before.size() + after.size()) {
        return std::nullopt;
    }
    const std::string number =
        name.substr(before.size(), name.size() - before.size() - after.size());
    pid_t owner = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), owner);
    const bool whole = error == std::errc{} && end == number.data() + number.size();
    return whole && owner > 0 ? std::optional(owner) : std::nullopt;
}

// A program that was killed could not take its part file with it.
void removeAbandonedParts(const std::string &path) {
    const std::filesystem::path target(path);
    const auto folder =
        target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        const auto owner =
            ownerOfPart(entry.path().filename().string(), target.filename().string());
        if (owner && kill(*owner, 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            std::filesystem::remove(entry.path(), ignored);
        }
    }
}

bool isDirectory(const std::string &path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

} // namespace

NcWriter::NcWriter(const std::string &path) : path_(path), temporaryPath_(temporaryName(path)) {
    if (path.empty() || isDirectory(path)) {
        throw WriteError(path.empty() ? "an output file needs a name"
                                      : "cannot write " + path + ": it is a directory");
    }
    removeAbandonedParts(path);
    useSmallChunkCaches();
    const int status = nc_create(temporaryPath_.c_str(), NC_NETCDF4 | NC_CLOBBER, &id_);
    if (status != NC_NOERR) {
        std::remove(temporaryPath_.c_str());
        throw WriteError("cannot create " + path + ": " + nc_strerror(status) +
                         " (does the directory exist, and may you write there?)");
    }
    open_ = true;
}

NcWriter::~NcWriter() {
    if (open_) {
        nc_close(id_);
    }
    if (!temporaryPath_.empty()) {
        std::remove(temporaryPath_.c_str());
    }
}

void NcWriter::check(int status, const std::string &what) const {
    if (status != NC_NOERR) {
        throw WriteError("cannot write " + what + " to " + path_ + ": " + nc_strerror(status) +
                         " (is the disk full?)");
    }
}

void NcWriter::checkCount(const std::vector<std::size_t> &count, std::size_t values) const {
    std::size_t total = 1;
    for (const std::size_t length : count) {
        total *= length;
    }
    if (total != values) {
        throw std::logic_error("a write to " + path_ + " has " + std::to_string(values) +
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

int NcWriter::addVariable(const std::string &name, nc_type type, const std::vector<int> &dimensions,
                          const Attributes &attributes) {
    int variable = -1;
    check(nc_def_var(id_, name.c_str(), type, static_cast<int>(dimensions.size()),
                     dimensions.data(), &variable),
          "variable " + name);
    if (!dimensions.empty() && type != NC_STRING) {
        check(nc_def_var_deflate(id_, variable, 1, 1, kDeflateLevel), "variable " + name);
    }
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

void NcWriter::write(int variable, const std::vector<std::size_t> &start, double value) {
    check(nc_put_var1_double(id_, variable, start.data(), &value), "data");
}

void NcWriter::write(int variable, const std::vector<std::size_t> &start,
                     const std::string &value) {
    const char *text = value.c_str();
    check(nc_put_var1_string(id_, variable, start.data(), &text), "data");
}

void NcWriter::writeCharacters(int variable, const std::vector<std::size_t> &start,
                               const std::vector<std::size_t> &count,
                               const std::string &characters) {
    checkCount(count, characters.size());
    check(nc_put_vara_text(id_, variable, start.data(), count.data(), characters.data()), "data");
}

void NcWriter::publish() {
    check(nc_sync(id_), "data");
    const std::string copy = temporaryPath_ + ".copy";
    std::error_code error;
    std::filesystem::copy_file(temporaryPath_, copy,
                               std::filesystem::copy_options::overwrite_existing, error);
    if (!error) {
        std::filesystem::rename(copy, path_, error);
    }
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(copy, ignored);
        throw WriteError("cannot write " + path_ + ": " + error.message() + " (is the disk full?)");
    }
}

void NcWriter::commit() {
    open_ = false;
    check(nc_close(id_), "data");
    if (std::rename(temporaryPath_.c_str(), path_.c_str()) != 0) {
        throw WriteError("cannot give the finished file its name " + path_ + ": " +
                         std::strerror(errno));
    }
    temporaryPath_.clear();
}

} // namespace orvik
