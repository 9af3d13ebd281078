#include "telemetry/log_time.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <time.h>

#include "system/unicode.h"

namespace qve {

namespace {

// The calendar fields of a time. Not cached: localtime_r follows a change of the time zone.
tm calendar(std::chrono::system_clock::time_point time, bool utc) {
    const time_t seconds = std::chrono::duration_cast<std::chrono::seconds>(
                               std::chrono::floor<std::chrono::seconds>(time).time_since_epoch())
                               .count();
    tm fields = {};
    if (utc)
        ::gmtime_r(&seconds, &fields);
    else
        ::localtime_r(&seconds, &fields);
    return fields;
}

}  // namespace

std::string FormatHeader(std::chrono::system_clock::time_point time, std::thread::id thread, bool utc) {
    const tm fields = calendar(time, utc);
    const auto fraction = time - std::chrono::floor<std::chrono::seconds>(time);
    const auto ticks = std::chrono::duration_cast<std::chrono::microseconds>(fraction).count() / 100;
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:04} ({}): ", fields.tm_year + 1900, fields.tm_mon + 1,
                       fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec, ticks, fmt::streamed(thread));
}

std::wstring FormatHeaderW(std::chrono::system_clock::time_point time, std::thread::id thread, bool utc) {
    return widen(FormatHeader(time, thread, utc));
}

std::wstring FormatRotationTime(std::chrono::system_clock::time_point time, bool utc) {
    const tm fields = calendar(time, utc);
    return widen(fmt::format("_{}_{}_{}_{}_{}_{}", fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
                             fields.tm_hour, fields.tm_min, fields.tm_sec));
}

}  // namespace qve
