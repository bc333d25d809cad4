// netCDF files of any content, right or wrong, for tests of readers.
#pragma once

#include <algorithm>
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

    // Variables that follow are packed in chunks: so long along these dimensions, along others as long as these are.
    NcSketch &packed(const std::map<std::string, std::size_t> &chunks) {
        packed_ = true;
        chunks_ = chunks;
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
        if (packed_ && !ids.empty()) {
            pack(variable, dimensions);
        }
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

    // Attributes of a variable.
    NcSketch &textOf(const std::string &variable, const std::string &name,
                     const std::string &value) {
        must(nc_put_att_text(id_, idOf(variable), name.c_str(), value.size(), value.data()));
        return *this;
    }
    NcSketch &numbersOf(const std::string &variable, const std::string &name,
                        const std::vector<double> &values) {
        must(nc_put_att_double(id_, idOf(variable), name.c_str(), NC_DOUBLE, values.size(),
                               values.data()));
        return *this;
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
    [[nodiscard]] int idOf(const std::string &name) const {
        int variable = -1;
        must(nc_inq_varid(id_, name.c_str(), &variable));
        return variable;
    }
    void pack(int variable, const std::vector<std::string> &dimensions) const {
        std::vector<std::size_t> lengths;
        for (const std::string &dimension : dimensions) {
            std::size_t length = 0;
            must(nc_inq_dimlen(id_, dimensions_.at(dimension), &length));
            const auto chunk = chunks_.find(dimension);
            lengths.push_back(chunk != chunks_.end() ? std::min(chunk->second, length) : length);
        }
        must(nc_def_var_chunking(id_, variable, NC_CHUNKED, lengths.data()));
        must(nc_def_var_deflate(id_, variable, 1, 1, 1));
    }

    int id_ = -1;
    std::map<std::string, int> dimensions_;
    bool packed_ = false;
    std::map<std::string, std::size_t> chunks_;
};

} // namespace orvik::test
