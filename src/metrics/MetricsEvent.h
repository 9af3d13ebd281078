#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "metrics/MetricsValue.h"
#include "system/RefCntObject.h"

namespace qve::Metrics {

/// What happened.
enum class EventKind {
    CreateContext,  ///< `context` was made under `parent`
    OpenContext,    ///< the emitting thread entered `context`; `name` says what for
    CloseContext,   ///< `context` ended
    OpenScope,      ///< scope `name` began in `context`
    CloseScope,     ///< the innermost open scope of `context` ended
    NameValue,      ///< `name` and `value` belong to the innermost open scope of `context`
    Attribute,      ///< `name` and `value` belong to `context` itself, from now on
    Control,        ///< a request to the consumers: `code`, `name`, `value`
};

/// Codes of control events.
enum class ControlCode : int {
    BitsChanged = 1,
    TraceSession = 2,  ///< `name` is "on" or "off", `value` the number of the session
    Reconfigure = 3,   ///< `value` is the new parameter text
};

/// One event. All views in it end with the call that delivers it.
struct MetricsEvent {
    EventKind kind;
    uint64_t bits = 0;     ///< the kind bits under which it was emitted
    uint64_t context = 0;  ///< never 0 but in control events
    uint64_t parent = 0;   ///< CreateContext only; 0 for none
    ControlCode code = ControlCode::BitsChanged;
    std::chrono::steady_clock::time_point time{};
    std::string_view name{};
    MetricsValue value{};
};

/// Receives events. Called on the emitting thread, from many threads at once: it must lock for itself, and must not
/// throw, nor emit events of its own while it handles one. It may see scopes of contexts whose creation it missed, as
/// it may have been added later, and closes of scopes whose opening it missed.
class MetricsConsumer : public RefCntObject {
public:
    virtual void OnMetricsEvent(const MetricsEvent& event) noexcept = 0;
};

}  // namespace qve::Metrics
