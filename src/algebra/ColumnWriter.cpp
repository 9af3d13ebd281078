#include "algebra/ColumnWriter.h"

#include <algorithm>
#include <cstring>

#include "algebra/DictionaryCompaction.h"
#include "primitives/column_kernels.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/compaccel.h"
#include "types/usraccel.h"

namespace qve {

namespace {

usrprops TargetProperties(const Column& source) {
    usrprops properties = source.GetProperties();
    properties.erase(usrpropkey::storagetype);
    properties.erase(usrpropkey::encoding);
    return properties;
}

// Puts the values of the selected rows into the rows from 0 on, in the dictionary of `out`.
void PutValues(const usrtype& type, unsigned count, const unsigned* selection, const input_column& tokens,
               const output_column& out) {
    usratom value;
    for (unsigned i = 0; i < count; ++i) {
        type.get(tokens, selection ? selection[i] : i, value);
        type.put(out, i, value);
    }
}

}  // namespace

ColumnWriter::ColumnWriter(RefCntPtr<Column> source, RefCntPtr<Column> target, uint64_t encodings, Purpose purpose,
                           RefCntPtr<ProgressCallback> progress)
    : m_source(std::move(source)),
      m_target(std::move(target)),
      m_encodings(encodings),
      m_purpose(purpose),
      m_progress(std::move(progress)) {}

ColumnWriter::~ColumnWriter() = default;

RefCntPtr<Column> ColumnWriter::MakeTarget(const Column& source) {
    RefCntPtr<DataStream> dictionary = source.GetDict();
    if (!dictionary && source.IsCompressed()) dictionary = MakeRef<TempFileDataStream>();
    return MakeRef<Column>(TargetProperties(source), MakeRef<TempFileDataStream>(), dictionary);
}

// Only now the source's streams and the width of its tokens are sure.
void ColumnWriter::AdoptFirstPage() {
    if (m_source->IsCompressed()) {
        if (m_target->GetDict() != m_source->GetDict()) m_target->SetDict(m_source->GetDict());
        if (m_target->GetTokenSize() != m_source->GetTokenSize()) {
            m_target->SetProperty(usrpropkey::storagewidth, std::to_wstring(m_source->GetTokenSize()));
        }
    }
    MakeFactory();
    m_stream = m_target->GetData();
}

void ColumnWriter::MakeFactory() {
    m_factory = m_purpose == Purpose::storage ? EncodingFactory::CreateStorageFactory(m_encodings, *m_target)
                                              : EncodingFactory::CreateFactory(m_encodings, *m_target);
    m_factory->SetProgressCallback(m_progress);
}

void ColumnWriter::UseOwnDictionary() {
    const auto old = MakeRef<Column>(m_target->GetProperties(), m_stream, m_target->GetDict());
    m_target->ClearProperty(usrpropkey::storagewidth);
    m_target->SetDict(MakeRef<TempFileDataStream>());
    m_target->SetData(MakeRef<TempFileDataStream>());
    for (uint64_t row = 0, rows = old->GetCount(); row < rows;) {
        const auto count = static_cast<unsigned>(std::min<uint64_t>({old->Seek(row, 65536), rows - row, 65536}));
        m_target->Extend(count);
        PutValues(*m_target->GetType(), count, nullptr, old->GetInput(0), m_target->GetOutput(0));
        row += count;
    }
    m_stream = m_target->GetData();
    MakeFactory();
    // What is copied here counts like what comes.
    for (uint64_t row = 0, rows = m_target->GetCount(); row < rows;) {
        const uint64_t count = m_target->Seek(row, 1);
        m_factory->UpdateBuffer(count * m_target->GetTokenSize(), m_target->GetInput(0).data);
        row += count;
    }
    m_translated = MakeRef<Column>(m_target->GetProperties(), MakeRef<TempFileDataStream>(), m_target->GetDict());
    m_ownDictionary = true;
}

void ColumnWriter::BeginPage(unsigned count, const unsigned* selection) {
    if (!m_factory) AdoptFirstPage();
    m_source->GetInput(0);  // may decode, which several columns of one stream must not do at once
    if (!m_source->IsCompressed()) return;
    if (!m_ownDictionary &&
        (m_source->GetDict() != m_target->GetDict() || m_source->GetTokenSize() != m_target->GetTokenSize())) {
        UseOwnDictionary();
    }
    if (m_ownDictionary) TranslatePage(count, selection);
}

void ColumnWriter::TranslatePage(unsigned count, const unsigned* selection) {
    if (m_translated->GetCount() < count) m_translated->Extend(count - m_translated->GetCount());
    m_translated->Seek(0, count);
    PutValues(*m_target->GetType(), count, selection, m_source->GetInput(0), m_translated->GetOutput(0));
}

void ColumnWriter::StagePage(unsigned count, const unsigned* selection) {
    const input_column page = m_ownDictionary ? m_translated->GetInput(0) : m_source->GetInput(0);
    m_staged.resize(count * page.width);
    if (selection && !m_ownDictionary) {
        unsigned char flags = 0;
        const input_column index{selection, nullptr, sizeof(unsigned), count, column_flags::not_null};
        const output_column out{m_staged.data(), nullptr, page.width, count, &flags};
        map_fetch_ulng_col_type_col(page.width)(count, out, index, page, nullptr);
    } else {
        std::memcpy(m_staged.data(), page.data, m_staged.size());
    }
}

void ColumnWriter::WritePage() {
    m_stream = m_factory->AppendStream(m_stream, m_staged.data(), m_staged.size());
}

void ColumnWriter::PutData() {
    m_stream = m_factory->FinaliseStream(m_stream);
    m_target->SetData(m_stream);
    m_factory->ExtractMetadata(m_target);
}

// A dictionary that grew with the rows has nothing else, unless it has more entries than there are rows.
bool ColumnWriter::MayHoldUnused() const {
    const RefCntPtr<DataStream>& dictionary = m_target->GetDict();
    if (m_purpose != Purpose::storage || m_keepsDictionary || !dictionary) return false;
    if (m_target->GetType()->fixed() || dictionary->GetSize() < DictionaryCompaction::least) return false;
    const auto* accelerator = dynamic_cast<const usraccel*>(dictionary->GetAccelerator());
    return !dictionary->CanExtend() || (accelerator && accelerator->cardinality() > m_target->GetCount());
}

void ColumnWriter::CompactDictionary() {
    DictionaryCompaction compaction(*m_target, m_progress);
    if (!compaction.Pays()) return;
    const RefCntPtr<DataStream> dictionary = compaction.MakeDictionary();
    const auto compact = MakeRef<Column>(TargetProperties(*m_target), MakeRef<TempFileDataStream>(), dictionary);
    m_factory = EncodingFactory::CreateStorageFactory(m_encodings, *compact);
    m_factory->SetProgressCallback(m_progress);
    m_stream = compact->GetData();
    for (uint64_t row = 0, rows = m_target->GetCount(); row < rows;) {
        constexpr uint64_t window = 65536;
        const auto count = static_cast<unsigned>(std::min({m_target->Seek(row, 1), rows - row, window}));
        const input_column page = m_target->GetInput();
        const auto* const tokens = static_cast<const char*>(page.data);
        m_staged.assign(tokens, tokens + size_t{count} * page.width);
        compaction.Translate(count, static_cast<unsigned>(page.width), m_staged.data());
        WritePage();
        row += count;
    }
    m_target->SetDict(dictionary);
    PutData();
    // In a dictionary in order one looks up without an index of its own; what another knows is no more than its size.
    if (m_target->HasProperty(usrpropkey::comparable)) {
        auto order = MakeRef<compaccel>(m_target->GetType(), m_target->HasProperty(usrpropkey::distinct));
        order->build(*m_target->GetHeap());
        dictionary->SetAccelerator(std::move(order));
    } else {
        for (const usrpropkey key : {usrpropkey::min_value, usrpropkey::max_value}) m_target->ClearProperty(key);
        m_target->SetProperty(usrpropkey::cardinality, std::to_wstring(compaction.GetCardinality()));
    }
}

void ColumnWriter::Finish() {
    if (m_factory) PutData();
    if (MayHoldUnused()) CompactDictionary();
    if (!m_factory) return;
    if (m_purpose == Purpose::storage && !m_factory->MinimiseIntegerType(m_target)) {
        m_factory->MinimiseTokenWidth(m_target);
    }
    // What a dictionary knows of its values lets later queries work on tokens. Asking one that has no index would build
    // it, for several columns at once when they share the dictionary.
    const RefCntPtr<DataStream>& dictionary = m_target->GetDict();
    if (m_ownDictionary || (dictionary && dictionary->GetAccelerator())) m_target->UpdateAcceleratorProperties();
}

}  // namespace qve
