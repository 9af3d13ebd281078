#include "ingest/TextSchemaCache.h"

#include <tbb/concurrent_hash_map.h>

#include <sstream>

#include "ingest/TextFileDataStream.h"

namespace qve {
namespace {

// Entries are small, but files may be without number.
constexpr size_t most_entries = 1000;

using Map = tbb::concurrent_hash_map<std::wstring, TextSchemaCache::Entry>;

Map& Entries() {
    static Map entries;
    return entries;
}

}  // namespace

TextSchemaCache::Key::Key(const TextFileDataStream* file, const std::vector<usrprops>& columns,
                          const usrprops& properties) {
    if (!file) return;
    std::wostringstream text;
    text << file->GetPath() << L'\n' << file->GetSize() << L'\n' << file->GetModificationTime() << L'\n' << properties;
    for (const usrprops& column : columns) text << L"\n" << column;
    m_text = text.str();
}

std::optional<TextSchemaCache::Entry> TextSchemaCache::Find(const Key& key) {
    Map::const_accessor found;
    if (key.m_text.empty() || !Entries().find(found, key.m_text)) return std::nullopt;
    return found->second;
}

void TextSchemaCache::Add(const Key& key, Entry entry) {
    if (key.m_text.empty() || Entries().size() >= most_entries) return;
    Entries().insert({key.m_text, std::move(entry)});
}

}  // namespace qve
