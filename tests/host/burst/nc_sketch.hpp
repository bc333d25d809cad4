// netCDF files of any content, right or wrong, for tests of readers.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <netcdf.h>

namespace orvik::test {

class NcSketch {
public:
    explicit NcSketch(const std::string &path) { must(nc_create(path.c_str(), NC_NETCDF4, &id_)); }
    ~NcSketch() { nc_close(id_); }
    NcSketch(const NcSketch &) = delete;
    NcSketch &operator=(const NcSketch &) = delete;

    NcSketch &dimension(const std::string &name, std::size_t length) {
        must(nc_def_dim(id_, name.c_str(), length, &dimensions_[name]));
        return *this;
    }

    // A variable with its unit ("-": no units attribute) and values.
    NcSketch &variable(const std::string &name, const std::vector<std::string> &dimensions,
                       const std::string &units, const std::vector<double> &values,
                       nc_type type = NC_DOUBLE,
                       const std::map<std::string, double> &attributes = {}) {
        std::vector<int> ids;
        for (const std::string &dimension : dimensions) {
            ids.push_back(dimensions_.at(dimension));
        }
        int variable = -1;
        must(nc_def_var(id_, name.c_str(), type, static_cast<int>(ids.size()), ids.data(),
                        &variable));
        if (units != "-") {
            must(nc_put_att_text(id_, variable, "units", units.size(), units.data()));
        }
        for (const auto &[attribute, value] : attributes) {
            const nc_type kind =
                attribute == "_FillValue" || attribute == "missing_value" ? type : NC_DOUBLE;
            must(nc_put_att_double(id_, variable, attribute.c_str(), kind, 1, &value));
        }
        if (!values.empty()) {
            must(nc_put_var_double(id_, variable, values.data()));
        }
        return *this;
    }

    NcSketch &scalar(const std::string &name, const std::string &units, double value) {
        return variable(name, {}, units, {value});
    }

    // Attributes of the file.
    NcSketch &text(const std::string &name, const std::string &value) {
        must(nc_put_att_text(id_, NC_GLOBAL, name.c_str(), value.size(), value.data()));
        return *this;
    }
    NcSketch &number(const std::string &name, double value) {
        must(nc_put_att_double(id_, NC_GLOBAL, name.c_str(), NC_DOUBLE, 1, &value));
        return *this;
    }

private:
    static void must(int status) {
        if (status != NC_NOERR) {
            throw std::runtime_error(nc_strerror(status));
        }
    }
    int id_ = -1;
    std::map<std::string, int> dimensions_;
};

} // namespace orvik::test
