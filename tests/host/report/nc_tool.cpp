// Reads and damages netCDF files for the tests of the page:
//
//   orvik_nc_tool values FILE VARIABLE         every value, one a line, to 9 digits; "nan" where missing
//   orvik_nc_tool blank FILE VARIABLE [ROW]    fills the variable, or a row of it, with NaN
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <string>
#include <vector>

#include "netcdf/nc_file.hpp"

namespace {

int printValues(const char *path, const char *name) {
    const orvik::NcReader file(path);
    for (const double value : file.readAll(file.find(name).value())) {
        std::printf("%.9g\n", value);
    }
    return 0;
}

int blank(const char *path, const char *name, const char *row) {
    std::vector<std::size_t> start;
    std::vector<std::size_t> count;
    {
        const orvik::NcReader file(path);
        const orvik::NcVariable variable = file.find(name).value();
        for (const orvik::NcDimension &dimension : variable.dimensions) {
            start.push_back(0);
            count.push_back(dimension.length);
        }
    }
    if (row != nullptr) {
        start.at(0) = std::strtoul(row, nullptr, 10);
        count.at(0) = 1;
    }
    std::size_t total = 1;
    for (const std::size_t length : count) {
        total *= length;
    }
    const std::vector<float> nothing(total, std::numeric_limits<float>::quiet_NaN());
    int file = -1;
    int variable = -1;
    const bool isDone =
        nc_open(path, NC_WRITE, &file) == NC_NOERR &&
        nc_inq_varid(file, name, &variable) == NC_NOERR &&
        nc_put_vara_float(file, variable, start.data(), count.data(), nothing.data()) == NC_NOERR &&
        nc_close(file) == NC_NOERR;
    return isDone ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    try {
        const std::string what = argc >= 4 ? argv[1] : "";
        if (what == "values") {
            return printValues(argv[2], argv[3]);
        }
        if (what == "blank") {
            return blank(argv[2], argv[3], argc > 4 ? argv[4] : nullptr);
        }
        std::fputs("usage: orvik_nc_tool values|blank FILE VARIABLE [ROW]\n", stderr);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
