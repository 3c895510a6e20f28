#include "host/kvx/doctor/doctor.h"

#include "host/kvx/doctor/checks.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace kvx {
namespace {

using nlohmann::ordered_json;

void printJson(const std::vector<Check>& checks, bool isAble)
{
    ordered_json rows = ordered_json::array();
    for (const Check& check : checks)
        rows.push_back({{"subject", check.subject},
                        {"isGood", check.isGood},
                        {"finding", check.finding},
                        {"advice", check.advice}});
    const ordered_json report = {{"canPlay", isAble}, {"checks", rows}};
    fmt::print("{}\n", report.dump(2, ' ', false, ordered_json::error_handler_t::replace));
}

} // namespace

int runDoctor(const DoctorOptions& options)
{
    const SystemFacts facts = readSystemFacts(options.library);
    const std::vector<Check> checks = checksOf(facts);
    const bool isAble = canPlay(facts);
    if (options.isJson)
        printJson(checks, isAble);
    else
        for (const Check& check : checks) fmt::print("{}\n", formatCheck(check));
    return isAble ? 0 : 1;
}

} // namespace kvx
