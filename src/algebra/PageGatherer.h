#pragma once

#include <vector>

#include "primitives/primitive_func.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usrprops.h"

namespace qve {

class Column;

/// Collects rows of the pages of one column in a page of its own.
class PageGatherer : public RefCntObject {
public:
    /// `output` has the properties that PageProperties gives for `source`; its page may be filled anew any number of
    /// times.
    PageGatherer(RefCntPtr<Column> source, RefCntPtr<Column> output);
    ~PageGatherer() override;

    /// What holds of a page that has some of the rows of a column: its properties without those about its storage or
    /// all its rows.
    static usrprops PageProperties(const Column& source);

    /// Whether cells of the source's present page may stand beside those in the output: it has the same dictionary, and
    /// cells of the same width.
    bool Fits() const;
    /// Makes an empty output ready for the cells of the source's present page.
    void Adopt();
    /// Puts `count` rows of the source's page into the output from row `at` on: those that `selection` lists from
    /// `first` on, or without one those from row `first` on.
    void Overlay(unsigned at, unsigned first, unsigned count, const unsigned* selection);

    const RefCntPtr<Column>& GetOutput() const { return m_output; }

private:
    void Fetch(unsigned count, output_column out, const unsigned* rows, input_column in) const;

    const RefCntPtr<Column> m_source;
    const RefCntPtr<Column> m_output;
    binary_func m_fetch = nullptr;
    std::vector<unsigned> m_zeros;
};

}  // namespace qve
