#include "host/runtime/leak_report.h"

#include "host/runtime/classes/object_record.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

#include <map>
#include <utility>

namespace host {

std::size_t LeakReport::total() const
{
    std::size_t sum = 0;
    for (const auto& row : rows) sum += row.count;
    return sum;
}

std::size_t LeakReport::count(Kind kind) const
{
    std::size_t sum = 0;
    for (const auto& row : rows) sum += row.kind == kind ? row.count : 0;
    return sum;
}

std::size_t LeakReport::countOfClass(const std::string& className) const
{
    for (const auto& row : rows) {
        if (row.kind == Kind::object && sameName(row.className, className)) return row.count;
    }
    return 0;
}

std::string LeakReport::text() const
{
    std::string lines;
    for (const auto& row : rows) {
        const bool isSingular = row.count == 1 || row.kind == Kind::stringData;
        lines += fmt::format("{} {}{}{}\n", row.count, kindName(row.kind), isSingular ? "" : "s",
                             row.className.empty() ? "" : " of class " + row.className);
    }
    return lines;
}

LeakReport leakReport()
{
    std::map<std::pair<Kind, std::string>, std::size_t> counts;
    for (const void* value : stateOf<LiveValues>().addresses) {
        const Kind kind = kindOf(value);
        ++counts[{kind, kind == Kind::object ? classOf(value).name : ""}];
    }
    LeakReport report;
    for (const auto& [what, count] : counts) report.rows.push_back({what.first, what.second, count});
    return report;
}

} // namespace host
