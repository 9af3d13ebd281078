#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "storage/Column.h"
#include "storage/EncodingFactory.h"

namespace qve {

/// Appends the pages of a flow's column to a temporary column, encoded as the values suggest. Tokens are copied as they
/// are while the pages refer to one dictionary, which the two columns then share; when a page comes with another one,
/// the target gets a dictionary of its own. A page is staged first; writing it then needs nothing of the source, which
/// may go on to its next page meanwhile.
class ColumnWriter {
public:
    /// Whether the column is read once or a few times by the running statement, or goes to a database: then all kinds
    /// of cells are encoded, not only integers, and get the narrowest type and tokens that hold them.
    enum class Purpose { intermediate, storage };

    /// `encodings` is a mask of EncodingFactory. `target` is empty and of MakeTarget.
    /// Once `progress`, which may be null, says cancelled, long work ends with CancelledException.
    ColumnWriter(RefCntPtr<Column> source, RefCntPtr<Column> target, uint64_t encodings, Purpose purpose,
                 RefCntPtr<ProgressCallback> progress);
    ~ColumnWriter();

    /// An empty column with the properties of `source` on temporary streams.
    static RefCntPtr<Column> MakeTarget(const Column& source);

    /// Does what must not run beside other columns, which may share a dictionary with this one, before StagePage.
    /// `count` rows of the source's page are selected, by `selection` or all.
    void BeginPage(unsigned count, const unsigned* selection);
    /// Takes the cells of the page. Different writers may do so at once.
    void StagePage(unsigned count, const unsigned* selection);
    /// Appends the staged page. Different writers may do so at once, and beside the source's Next.
    void WritePage();
    /// Keeps the dictionary of the source as it is, since other columns of the table refer to it too. Before Finish.
    void KeepDictionary() { m_keepsDictionary = true; }
    /// The dictionary of what was written; null without one.
    const DataStream* GetDictionary() const { return m_target->GetDict().get(); }
    /// Puts the data into the target. Different writers may do so at once.
    void Finish();

private:
    void AdoptFirstPage();
    void MakeFactory();
    void UseOwnDictionary();
    void TranslatePage(unsigned count, const unsigned* selection);
    void PutData();
    bool MayHoldUnused() const;
    void CompactDictionary();

    const RefCntPtr<Column> m_source;
    const RefCntPtr<Column> m_target;
    const uint64_t m_encodings;
    const Purpose m_purpose;
    const RefCntPtr<ProgressCallback> m_progress;
    std::unique_ptr<EncodingFactory> m_factory;  // made with the first page
    RefCntPtr<DataStream> m_stream;
    RefCntPtr<Column> m_translated;  // the page in tokens of the own dictionary
    std::vector<char> m_staged;      // the selected cells of a page
    bool m_ownDictionary = false;
    bool m_keepsDictionary = false;
};

}  // namespace qve
