#include "types/usrpropkey.h"

#include <tbb/spin_rw_mutex.h>

#include <deque>
#include <map>
#include <ostream>

#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/status.h"

namespace qve {
namespace {

// Numbered from 0 in this order.
constexpr const wchar_t* initial_keys[] = {
    L"",
    L"acceleration",
    L"accelerator-threshold",
    L"allow-remote",
    L"average-vertex-count",
    L"bigint",
    L"bit",
    L"block-length",
    L"builtin",
    L"cardinality",
    L"character-set",
    L"charset-sample-size",
    L"collate",
    L"collation",
    L"comparable",
    L"compression",
    L"computed-by",
    L"count",
    L"count-errors",
    L"count-value",
    L"currency",
    L"data-file",
    L"data-type",
    L"database-access",
    L"database-path",
    L"datatype",
    L"date",
    L"date-alternates",
    L"date-char",
    L"date-order",
    L"datetime",
    L"datetime-char",
    L"datetime-format",
    L"debit-close-char",
    L"debit-open-char",
    L"decimal",
    L"decimal-char",
    L"default-value",
    L"dense",
    L"description",
    L"detailed-query-logging",
    L"dict-file",
    L"dictionary-column-name",
    L"distinct",
    L"domain-name",
    L"dop",
    L"double",
    L"duration",
    L"encoding",
    L"encodings",
    L"endpoint",
    L"escape-char",
    L"exponent-char",
    L"expr-type",
    L"factory",
    L"factory-spatial",
    L"factory-varchar",
    L"family-name",
    L"field-delimiter",
    L"first-error",
    L"fixed",
    L"float",
    L"format-string",
    L"fullparallelism",
    L"generated-by",
    L"header-row",
    L"host",
    L"last-error",
    L"listen",
    L"locale",
    L"log",
    L"log-rotate-interval",
    L"log-utc",
    L"LogicalParallelizer",
    L"long",
    L"max-concurrency",
    L"max-value",
    L"MaxQueryTokenCount",
    L"maxquerytokencount",
    L"median-value",
    L"memorybudgeting",
    L"MemoryMapEntireFile",
    L"MergeGrouping",
    L"metrics.clear",
    L"metrics.enable",
    L"metrics.out",
    L"metrics.parameters",
    L"metrics.set",
    L"min-dop",
    L"min-query-parallelism",
    L"min-value",
    L"minus-char",
    L"name",
    L"name-dictionary",
    L"no",
    L"no-dump-file",
    L"not-null",
    L"oid",
    L"optimize-icu",
    L"ordered",
    L"ordinal",
    L"packaged",
    L"parallelhashing",
    L"parsingconstantfolding",
    L"percent-char",
    L"pid-temp-dir",
    L"plus-char",
    L"port",
    L"precision",
    L"primary-key",
    L"primitive-name",
    L"primitive-op",
    L"primitive-properties",
    L"primitive-storage",
    L"primitive-type",
    L"query",
    L"query-parallelism",
    L"queue-length-logging",
    L"quote-char",
    L"radixsorting",
    L"record-delimiter",
    L"record-separator-textscan-limit",
    L"remote-instance",
    L"remote-query-accelerator-noop",
    L"remote-sessionid",
    L"remoteservers",
    L"resource_manager.check_interval_seconds",
    L"resource_manager.cpu_limit_enabled",
    L"resource_manager.cpu_limit_max_duration_minutes",
    L"resource_manager.cpu_limit_percentage",
    L"resource_manager.cpu_limit_write_mini_dump",
    L"resource_manager.initial_delay_seconds",
    L"resource_manager.logging_multiple",
    L"resource_manager.memory_limit_all_processes_gb",
    L"resource_manager.memory_limit_enabled",
    L"resource_manager.memory_limit_per_process_gb",
    L"resource_manager.memory_limit_write_mini_dump",
    L"resource_manager.port",
    L"result-share-dictionary",
    L"scale",
    L"seed",
    L"sharedhashing",
    L"short",
    L"single-char",
    L"single-quote",
    L"size",
    L"sort-position",
    L"sort-sense",
    L"space-char",
    L"spatial-primitive-flags",
    L"storagetype",
    L"storagewidth",
    L"sum-value",
    L"sum2-value",
    L"suspend-on-crash",
    L"table-name",
    L"temp-dir",
    L"thousands-char",
    L"time-char",
    L"tiny",
    L"track-file-mapping",
    L"true",
    L"type",
    L"type-file",
    L"uchr",
    L"ulng",
    L"unique",
    L"use-heap-merger",
    L"use-memory-tablespace",
    L"usht",
    L"version-fix",
    L"version-major",
    L"version-minor",
    L"whitelist",
    L"work-buffer-size",
    L"worker-threads",
    L"yes",
    L"yy",
};

// The two-way map of keys and texts. A deque, since references to its texts are handed out.
class UsrPropKey_Manager {
public:
    static UsrPropKey_Manager& Get() {
        static UsrPropKey_Manager manager;
        return manager;
    }

    usrpropkey FromString(std::wstring_view text) {
        tbb::spin_rw_mutex::scoped_lock lock(m_mutex, false);
        auto found = m_byText.find(text);
        if (found != m_byText.end()) return found->second;
        if (!lock.upgrade_to_writer()) {
            found = m_byText.find(text);
            if (found != m_byText.end()) return found->second;
        }
        return Add(text);
    }

    const std::wstring* ToString(usrpropkey key) {
        tbb::spin_rw_mutex::scoped_lock lock(m_mutex, false);
        const auto number = static_cast<size_t>(key);
        return number < m_byNumber.size() ? &m_byNumber[number] : nullptr;
    }

private:
    UsrPropKey_Manager() {
        for (const wchar_t* text : initial_keys) Add(text);
    }

    usrpropkey Add(std::wstring_view text) {
        const auto key = static_cast<usrpropkey>(m_byNumber.size());
        m_byText.emplace(m_byNumber.emplace_back(text), key);
        return key;
    }

    tbb::spin_rw_mutex m_mutex;
    std::deque<std::wstring> m_byNumber;
    std::map<std::wstring_view, usrpropkey> m_byText;
};

}  // namespace

usrpropkey UsrPropKey_FromString(std::wstring_view text) {
    return UsrPropKey_Manager::Get().FromString(text);
}

const std::wstring& UsrPropKey_ToString(usrpropkey key) {
    if (const std::wstring* text = UsrPropKey_Manager::Get().ToString(key)) return *text;
    throw QVE_LogicError(status::UsrPropKey_ToString, "Error: map of usrpropkey enum to string did not contain key: " +
                                                          std::to_string(static_cast<unsigned>(key)));
}

std::ostream& operator<<(std::ostream& stream, usrpropkey key) {
    return stream << narrow(UsrPropKey_ToString(key));
}
std::wostream& operator<<(std::wostream& stream, usrpropkey key) {
    return stream << UsrPropKey_ToString(key);
}

}  // namespace qve
