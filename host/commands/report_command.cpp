#include "commands/report_command.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

#include "files/text_file.hpp"
#include "netcdf/nc_file.hpp"
#include "report/page.hpp"
#include "report/report_data.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

void runReport(const std::string &input, const std::string &output) {
    const std::string_view page = reportPage();
    if (page.empty()) {
        throw UserError("this orvik has no report page: " + std::string(reportPageMissing()));
    }
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored)) {
        throw UsageError("--output is the result file " + input + ": give the page another name");
    }
    const std::string data = reportData(NcReader(input));
    const std::size_t at = page.find(kDataMark);
    TextFile file(output);
    for (const std::string_view part :
         {page.substr(0, at), std::string_view(data), page.substr(at + kDataMark.size())}) {
        file.write(part);
    }
    file.commit();
}

} // namespace

void addReportCommand(CLI::App &app) {
    struct Options {
        std::string input;
        std::string output;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *command = app.add_subcommand(
        "report", "a page with pictures of a result file, for any browser, without network");
    command->add_option("input", options->input, "result file to read")->required();
    command->add_option("-o,--output", options->output, "page to write (HTML)")->required();
    command->footer("Example: orvik report waves.nc -o report.html");
    command->callback([options] { runReport(options->input, options->output); });
}

} // namespace orvik
