#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ingest/TextColumnParser.h"
#include "types/usrprops.h"

namespace qve {

class TextFileDataStream;

/// What scans have found out about text files, so that a statement that scans one file twice detects once. An entry
/// holds for a file of the same path, length and time of change, and for the same properties asked for. Any thread.
class TextSchemaCache {
public:
    struct Entry {
        usrprops properties;
        std::vector<usrprops> schema;
        TextColumnParsers prototypes;  ///< only to be cloned
    };
    /// What an entry is found by. A text that is no file has no key: it is never found and never kept.
    class Key {
    public:
        Key(const TextFileDataStream* file, const std::vector<usrprops>& columns, const usrprops& properties);

    private:
        friend class TextSchemaCache;
        std::wstring m_text;
    };

    static std::optional<Entry> Find(const Key& key);
    static void Add(const Key& key, Entry entry);
};

}  // namespace qve
