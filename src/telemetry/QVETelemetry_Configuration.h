#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "telemetry/QVETelemetry.h"

namespace qve {

/// What the parameter text of telemetry says.
struct QVETelemetry::Configuration {
    static constexpr unsigned s_leastRotationInterval = 600;
    static constexpr unsigned s_greatestStatsInterval = 3600;

    bool emittolog = false;                               ///< lines go to the log of the server as well
    bool emitopenscope = false;                           ///< a line also where a scope opens
    bool etwmarkers = false;                              ///< accepted, and of no effect on this platform
    bool emitutc = false;                                 ///< times in UTC, else local
    bool sessionspecific = false;                         ///< only scopes of contexts that belong to a session
    bool emitemptyevent = false;                          ///< a line also where a context opens and closes
    bool runforeground = false;                           ///< no thread for statistics of the process
    unsigned rotationinterval = s_leastRotationInterval;  ///< seconds after which the name of the file is made anew
    unsigned statsinterval = 60;                          ///< seconds between statistics of the process
    std::uint64_t set = 0;                                ///< bits of `metrics.set`
    std::uint64_t clear = 0;                              ///< bits of `metrics.clear`
    std::string out;                                      ///< `metrics.out`: the pattern of the file's name

    /// Reads options as on a command line: `--emitutc on --statsinterval 10 --metrics.set "server,query"`. Throws
    /// std::invalid_argument that says what is wrong.
    static Configuration evaluate(std::string_view parameterText);
};

}  // namespace qve
